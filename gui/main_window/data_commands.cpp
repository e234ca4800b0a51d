// data_commands.cpp - the commands that write coefficients as plain numbers.
#include "engine/files/text_file.h"
#include "gui/dialogs/data_dialogs.h"
#include "gui/main_window/brisel_app.h"

#include <QApplication>

namespace brisel {

namespace {

/// The text, or nothing after its refusal was told.
const std::string *accepted(const DataText &text) {
  if (const auto *refusal = std::get_if<DataRefusal>(&text)) post_message(refusal->number, refusal->detail);
  return std::get_if<std::string>(&text);
}

bool saved(const QString &path, const std::string &text) {
  std::string why;
  if (save_file(path.toStdString(), text, why)) return true;
  post_message(Message::write_failed, why);
  return false;
}

} // namespace

void cBriselApp::save_numbers(FileCommand command, const DataText &text) {
  const std::string *numbers = accepted(text);
  if (!numbers) return;
  const QString path = files.save(this, command);
  if (!path.isEmpty() && saved(path, *numbers)) written(command, path);
}

void cBriselApp::Output_CreateMatlabFile() {
  if (!needs_result()) return;
  save_numbers(is_iir_design() ? FileCommand::matlab_iir : FileCommand::matlab_fir, matlab_text());
}

// The dataset is made in memory from what a coefficient file would hold, so that there is no temporary file that could
// be in the way of another one or stay behind.
void cBriselApp::Output_CreateCOSSAPDataset() {
  if (!needs_result() || !accepted(cocentric_text(DatasetFormat::real, false))) return;
  if (cCossapFormatDialogImpl(this).exec() != QDialog::Accepted) return;
  save_numbers(FileCommand::cocentric,
               cocentric_text(DatasetFormat{design_state.COSSAPDataFormat}, design_state.COSSAPDataCommentSwitch != 0));
}

void cBriselApp::Output_CreateCoefficientDataset() {
  if (!needs_result()) return;
  QWidget *const view = QApplication::activeModalWidget(); // which has the button
  QWidget *const parent = view ? view : this;
  const QString path = files.save(parent, FileCommand::data_file);
  if (path.isEmpty()) return;
  cCreateCoefDataDialogImpl dialog(parent);
  if (dialog.exec() != QDialog::Accepted) return;
  const DataText text = data_file_text(path.toStdString(), dialog.options());
  if (const std::string *numbers = accepted(text); numbers && saved(path, *numbers))
    written(FileCommand::data_file, path);
}

} // namespace brisel
