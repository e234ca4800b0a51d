// output_commands.cpp - the commands that write files.
#include "codegen/c_code.h"
#include "codegen/c_support.h"
#include "codegen/dsp_code.h"
#include "codegen/dspic30.h"
#include "engine/files/plot_data.h"
#include "engine/files/saved_filter.h"
#include "engine/files/spec_file.h"
#include "engine/files/text_file.h"
#include "gui/dialogs/cPlotDataOutputDialogImpl.h"
#include "gui/dialogs/microchip_dialog.h"
#include "gui/main_window/brisel_app.h"
#include "gui/main_window/recent_files.h"
#include "gui/main_window/text_viewer.h"

#include <QFileInfo>
#include <QMessageBox>
#include <QStatusBar>

#include <ctime>

namespace brisel {

bool cBriselApp::needs_result() const {
  if (!has_result()) post_message(Message::no_design);
  return has_result();
}

void cBriselApp::written(FileCommand command, const QString &path) {
  if (command <= FileCommand::create_coefficients) remember_recent_file(path); // kinds that Brisel loads
  if (design_state.fview) show_text_file(path, this);
}

void cBriselApp::Output_CreateSpecficationFile() {
  if (!needs_result()) return;
  const int method = design_record.selections.DesignOrAnalysisType;
  if (method == code(DesignMethod::z_analysis) || method == code(DesignMethod::s_analysis))
    return Output_CreateSystemAnalysisFile();
  const QString path = files.save(this, FileCommand::create_specification);
  if (path.isEmpty()) return;
  // That of the filter shown: the current one may be of a run that failed since.
  FilterSpec shown = design_record.loaded;
  shown.unit = design_record.selections.FrequencyMode;
  std::string why;
  if (!write_filter_spec(path.toStdString(), shown, &why)) return post_message(Message::write_failed, why);
  if (const std::string note = changed_by_columns(shown); !note.empty()) front.show_text(note);
  written(FileCommand::create_specification, path);
}

void cBriselApp::Output_CreateFilterCoefficientFile() {
  if (!needs_result()) return;
  const QString path = files.save(this, FileCommand::create_coefficients);
  if (path.isEmpty()) return;
  std::string note;
  if (write_coefficient_file(path.toStdString(), &note) != success) return;
  if (!note.empty()) front.show_text(note);
  written(FileCommand::create_coefficients, path);
}

void cBriselApp::write_saved(const SavedFilter &saved) {
  const QString path = files.save(this, FileCommand::create_system);
  if (path.isEmpty() || write_system_file(path.toStdString(), saved.text) != success) return;
  if (!saved.note.empty()) front.show_text(saved.note);
  written(FileCommand::create_system, path);
}

void cBriselApp::Output_CreateSystemAnalysisFile() {
  if (!needs_result()) return;
  if (is_iir_design()) return write_iir_form();
  if (const auto saved = save_current_system()) write_saved(*saved); // a refusal was told by the engine
}

void cBriselApp::Output_CreatePlotDataFiles() {
  if (!needs_result()) return;
  cPlotDataOutputDialogImpl selection(this);
  if (selection.exec() != QDialog::Accepted) return;
  const QString base = files.save(this, FileCommand::plot_data);
  if (base.isEmpty()) return;
  const auto path_of = [&](std::size_t index) {
    return base.toStdString() + "." + std::string(plot_data_files[index].extension);
  };
  QStringList paths;
  for (std::size_t index = 0; index < plot_data_files.size(); index++)
    if (selection.is_checked(index)) paths.append(QString::fromStdString(path_of(index)));
  if (!may_replace(this, file_command(FileCommand::plot_data).title, paths)) return;
  for (std::size_t index = 0; index < plot_data_files.size(); index++) {
    if (!selection.is_checked(index)) continue;
    const std::string path = path_of(index);
    std::string why;
    auto text = plot_data_text(index, plot_arrays, plot_state.factor, plot_state.radians);
    if (!text) return post_message(Message::result_not_finite, path);
    if (save_file(path, std::move(*text), why)) continue;
    QMessageBox box(QMessageBox::Information, "Brisel", QString(), QMessageBox::Ok, this);
    box.setTextFormat(Qt::PlainText);
    box.setText(QString::fromStdString("Unable to open " + path + "\nfor write access. Aborting."));
    box.exec();
    return;
  }
}

// --- generated code

void cBriselApp::Codegen_CCode() {
  if (!needs_result()) return;
  const QString path = files.save(this, FileCommand::c_code);
  if (path.isEmpty()) return;
  const TimeStamp now = time_stamp(std::time(nullptr));
  const int result = generate_c_code(path.toStdString(), design_record, workplace_names.user_name, now.date, now.time);
  if (result != success) return post_message(static_cast<Message>(result), path.toStdString());
  bring_c_support(path.toStdString());
  written(FileCommand::c_code, path);
}

void cBriselApp::bring_c_support(const std::string &source) {
  std::vector<GeneratedFile> support = missing_c_support(source);
  if (!support.empty() && !c_support_wanted) {
    QStringList names;
    for (const GeneratedFile &file : support) names.append(QFileInfo(QString::fromStdString(file.path)).fileName());
    QMessageBox box(QMessageBox::Question, file_command(FileCommand::c_code).title, QString(),
                    QMessageBox::Yes | QMessageBox::No, this);
    box.setTextFormat(Qt::PlainText);
    box.setText(QString::fromStdString(c_support_note(source, {})) + "\n\nWrite " + names.join(" and ") + " too?");
    c_support_wanted = box.exec() == QMessageBox::Yes;
  }
  if (!c_support_wanted.value_or(false)) support.clear();
  statusBar()->showMessage(QString::fromStdString(c_support_note(source, support)));
  FileSet set;
  for (GeneratedFile &file : support) set.add(file.path, std::move(file.text));
  if (std::string why; !set.commit(why)) post_message(Message::write_failed, why);
}

static bool refused(QWidget *parent, const QString &caption, const char *why) {
  if (why) QMessageBox::critical(parent, caption, why);
  return why != nullptr;
}

void cBriselApp::write_dsp_code(FileCommand command, const QString &caption, DspFamily family) {
  if (!needs_result() || refused(this, caption, dsp_refusal(design_record, family))) return;
  const QString path = files.save(this, command);
  if (path.isEmpty()) return;
  const TimeStamp now = time_stamp(std::time(nullptr));
  const auto generate = family == DspFamily::adsp218x ? generate_adsp218x : generate_dsp56800;
  std::string note;
  const int result =
      generate(path.toStdString(), design_record.selections, workplace_names.user_name, now.date, now.time, &note);
  // Any other result was told by the engine.
  if (result == form_not_supported || result == cannot_create)
    post_message(static_cast<Message>(result), path.toStdString());
  if (result != success) return;
  if (!note.empty()) front.show_text(note);
  written(command, path);
}

void cBriselApp::Codegen_ADSP218X() {
  write_dsp_code(FileCommand::adsp218x, "ADSP218X", DspFamily::adsp218x);
}

void cBriselApp::Codegen_DSP56800() {
  write_dsp_code(FileCommand::dsp56800, "DSP56800", DspFamily::dsp56800);
}

void cBriselApp::Codegen_dsPIC30() {
  if (!needs_result() || refused(this, "dsPIC30", dsp_refusal(design_record, DspFamily::dspic30))) return;
  cMicrochipCodegenDialogImpl dialog(this);
  if (dialog.exec() != QDialog::Accepted) return;
  const QString base = files.save(this, FileCommand::dspic30);
  if (base.isEmpty()) return;
  std::vector<GeneratedFile> generated;
  std::string note, why;
  const int result = prepare_dspic30(base.toStdString(), dialog.options(), generated, &note);
  if (result == form_not_supported || result == cannot_create)
    return post_message(static_cast<Message>(result), base.toStdString());
  if (result != success) return; // told by the generator
  QStringList paths;
  for (const GeneratedFile &file : generated) paths.append(QString::fromStdString(file.path));
  if (!may_replace(this, file_command(FileCommand::dspic30).title, paths)) return;
  FileSet set;
  for (GeneratedFile &file : generated) set.add(file.path, std::move(file.text));
  if (!set.commit(why)) return post_message(Message::write_failed, why);
  if (!note.empty()) front.show_text(note);
  written(FileCommand::dspic30, QString::fromStdString(generated.back().path));
}

void cBriselApp::Codegen_PA() {
  // Kept: a placeholder. With a suitable design the command does nothing further; there is no such generator.
  if (needs_result()) refused(this, "Performance Audio", performance_audio_refusal(design_record));
}

} // namespace brisel
