// file_commands.cpp - the commands of the File menu, and loading.
#include "engine/core/design_state.h"
#include "engine/files/coefficient_file.h"
#include "engine/files/spec_file.h"
#include "engine/files/system_file.h"
#include "engine/files/text_file.h"
#include "gui/dialogs/option_dialogs.h"
#include "gui/main_window/brisel_app.h"
#include "gui/main_window/printing.h"
#include "gui/main_window/recent_files.h"
#include "gui/main_window/text_viewer.h"

#include <QFileInfo>

namespace brisel {

void cBriselApp::load_file(const QString &path) {
  const QString extension = QFileInfo(path).suffix().toLower();
  if (extension == "spc")
    load_specification(path);
  else if (extension == "inp")
    load_system(path);
  else if (extension == "flt")
    load_coefficients(path);
  else
    post_message(Message::unknown_kind_of_file, path.toStdString());
}

void cBriselApp::load_specification(const QString &path) {
  const Status result = load_filter_spec(path.toStdString());
  if (result == cannot_open)
    return post_message(Message::cannot_read_file, path.toStdString() + ": " + unreadable(path.toStdString()));
  if (result != success) return; // told by the reader
  remember(FileCommand::load_specification, path);
  design_state.FrequencyMode = current_spec->unit == 'R';
  const int method = design_state.DesignOrAnalysisType;
  is_fir_method(method) ? Design_FIR(method) : Design_IIR();
}

void cBriselApp::load_system(const QString &path) {
  if (load_system_file(path.toStdString()) != success) return; // told by the reader
  remember(FileCommand::load_system, path);
  start_analysis();
}

void cBriselApp::load_coefficients(const QString &path) {
  CoefficientReading reading;
  if (load_coefficient_file(path.toStdString(), &reading) != success) {
    const std::string line = reading.line > 0 ? formatf(":%d", reading.line) : "";
    return post_message(Message::coefficient_file_refused, path.toStdString() + line + ": " + reading.reason);
  }
  const Status converted = analyze_coefficient_file();
  release_coefficient_file();
  if (converted != success) return; // told by the engine
  remember(FileCommand::load_coefficients, path);
  start_analysis();
}

void cBriselApp::remember(FileCommand command, const QString &path) {
  files.remember(command, path);
  remember_recent_file(path);
}

void cBriselApp::File_LoadSpecifications() {
  const QString path = files.open(this, FileCommand::load_specification);
  if (!path.isEmpty()) load_specification(path);
}

void cBriselApp::File_LoadSystemAnalysis() {
  const QString path = files.open(this, FileCommand::load_system);
  if (!path.isEmpty()) load_system(path);
}

void cBriselApp::File_LoadFilterCoefficients() {
  const QString path = files.open(this, FileCommand::load_coefficients);
  if (!path.isEmpty()) load_coefficients(path);
}

void cBriselApp::File_Print() {
  if (!has_result()) return post_message(Message::nothing_to_print);
  printing = true;
  print_plots(*this);
  printing = false;
  front.announce("Ready");
}

void cBriselApp::File_SystemSettings() {
  cSystemSettingsDialogImpl(this, exit_mode).exec();
}

void cBriselApp::File_UserInformation() {
  cUserInfoDialogImpl(this).exec();
}

void cBriselApp::File_AboutBrisel() {
  post_message(Message::about);
}

void cBriselApp::View_ViewFilterFile() {
  const QString path = files.open(this, FileCommand::view_file);
  if (!path.isEmpty()) show_text_file(path, this);
}

} // namespace brisel
