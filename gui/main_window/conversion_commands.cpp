// conversion_commands.cpp - the commands that write the result as a system in a form of choice, and that convert
// systems.
#include "engine/core/system_conversion.h"
#include "engine/files/system_file.h"
#include "engine/files/text_file.h"
#include "gui/dialogs/conversion_dialogs.h"
#include "gui/main_window/brisel_app.h"

namespace brisel {

void cBriselApp::write_system(const ConvertibleSystem &system) {
  const SavingOutcome outcome = save_system(system, design_state.FrequencyMode);
  if (const auto *refused = std::get_if<SavingRefusal>(&outcome)) return post_message(refused->number, refused->reason);
  write_saved(std::get<SavedFilter>(outcome));
}

// One file a form, "name_ratio.inp" and so on, all or none of them. Forms that are left out are told.
void cBriselApp::write_all_forms(Domain domain) {
  FileSet set;
  QStringList paths;
  std::string left_out, notes;
  const QString base = files.save(this, FileCommand::create_system);
  if (base.isEmpty()) return;
  const QString stem = base.left(base.size() - QString(".inp").size());
  for (const OutputForm &form : output_forms) {
    const SystemPointer system = current_iir_result(domain, form.option);
    const char *const name = input_options[static_cast<std::size_t>(code(form.option))].name.data();
    const SavingOutcome outcome = system ? save_system(*system, design_state.FrequencyMode)
                                         : SavingRefusal{.reason = why_no_form(domain, form.option)};
    if (const auto *refused = std::get_if<SavingRefusal>(&outcome)) {
      appendf(left_out, "\n%s: %s", name, refused->reason.c_str());
      continue;
    }
    const auto &saved = std::get<SavedFilter>(outcome);
    if (!saved.note.empty()) appendf(notes, "\n%s: %s", name, saved.note.c_str());
    paths.append(stem + form.suffix + ".inp");
    set.add(paths.last().toStdString(), saved.text);
  }
  std::string why;
  if (paths.isEmpty()) return post_message(Message::file_loses_filter, left_out);
  if (!may_replace(this, file_command(FileCommand::create_system).title, paths)) return;
  if (!set.commit(why)) return post_message(Message::write_failed, why);
  for (const QString &path : paths) written(FileCommand::create_system, path);
  if (!left_out.empty()) front.show_text("These forms were left out:" + left_out);
  if (!notes.empty()) front.show_text("About the files:" + notes);
}

void cBriselApp::write_iir_form() {
  cIirFilterOutputDialogImpl dialog(this);
  if (dialog.exec() != QDialog::Accepted) return;
  dialog.all_forms() ? write_all_forms(dialog.domain()) : write_system(dialog.system());
}

void cBriselApp::Analysis_IIRFilterOutput() {
  if (!needs_result()) return;
  if (is_fir_result()) return post_message(Message::needs_iir_design);
  write_iir_form();
}

void cBriselApp::Analysis_FIRFilterOutput() {
  if (!needs_result()) return;
  const SystemPointer filter = current_fir_result();
  if (!filter) return post_message(Message::needs_fir_design);
  write_system(*filter);
}

void cBriselApp::Analysis_IIRFormConversion() {
  if (cIirFormConversionDialogImpl(this, files).exec() == QDialog::Accepted) start_analysis();
}

void cBriselApp::Analysis_FIRFormConversion() {
  if (cFirFormConversionDialogImpl(this, files).exec() == QDialog::Accepted) start_analysis();
}

void cBriselApp::Analysis_DomainConversion() {
  if (cDomainConversionDialogImpl(this, files).exec() == QDialog::Accepted) start_analysis();
}

} // namespace brisel
