// conversion_commands.cpp - the commands that write the result as a system in a form of choice, and that convert
// systems.
#include "engine/core/system_conversion.h"
#include "engine/files/system_file.h"
#include "engine/files/text_file.h"
#include "gui/dialogs/conversion_dialogs.h"
#include "gui/main_window/brisel_app.h"

namespace brisel {

void cBriselApp::write_system(const ConvertibleSystem &system) {
  const auto text = format_system(system, design_state.FrequencyMode);
  if (!text) return post_message(Message::result_not_finite);
  if (file_digits(system) < 0) return post_message(Message::system_file_loses_form);
  const QString path = files.save(this, FileCommand::create_system);
  if (path.isEmpty()) return;
  if (write_system_file(path.toStdString(), *text) == success) written(FileCommand::create_system, path);
}

// One file a form, "name_ratio.inp" and so on, all or none of them. Forms that are left out are told.
void cBriselApp::write_all_forms(Domain domain) {
  FileSet set;
  QStringList paths;
  std::string left_out;
  const QString base = files.save(this, FileCommand::create_system);
  if (base.isEmpty()) return;
  const QString stem = base.left(base.size() - QString(".inp").size());
  for (const OutputForm &form : output_forms) {
    const SystemPointer system = current_iir_result(domain, form.option);
    const bool in_file = system && file_digits(*system) >= 0;
    const auto text = in_file ? format_system(*system, design_state.FrequencyMode) : std::nullopt;
    if (!text) {
      appendf(left_out, "\n%s: %s", input_options[static_cast<std::size_t>(code(form.option))].name.data(),
              system ? why_no_file : why_no_form(domain, form.option));
      continue;
    }
    paths.append(stem + form.suffix + ".inp");
    set.add(paths.last().toStdString(), *text);
  }
  std::string why;
  if (paths.isEmpty()) return post_message(Message::system_file_loses_form, left_out);
  if (!may_replace(this, file_command(FileCommand::create_system).title, paths)) return;
  if (!set.commit(why)) return post_message(Message::write_failed, why);
  for (const QString &path : paths) written(FileCommand::create_system, path);
  if (!left_out.empty()) front.show_text("These forms were left out:" + left_out);
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
