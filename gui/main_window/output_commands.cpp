// output_commands.cpp - the commands that write files.
#include "codegen/c_code.h"
#include "codegen/dsp_code.h"
#include "codegen/dspic30.h"
#include "engine/files/coefficient_file.h"
#include "engine/files/plot_data.h"
#include "engine/files/spec_file.h"
#include "engine/files/system_file.h"
#include "engine/files/text_file.h"
#include "gui/dialogs/cPlotDataOutputDialogImpl.h"
#include "gui/dialogs/microchip_dialog.h"
#include "gui/main_window/brisel_app.h"
#include "gui/main_window/recent_files.h"
#include "gui/main_window/text_viewer.h"

#include <QMessageBox>

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
  current_spec->unit = design_state.FrequencyMode;
  std::string why;
  if (!write_filter_spec(path.toStdString(), *current_spec, &why)) return post_message(Message::write_failed, why);
  written(FileCommand::create_specification, path);
}

void cBriselApp::Output_CreateFilterCoefficientFile() {
  if (!needs_result()) return;
  const QString path = files.save(this, FileCommand::create_coefficients);
  if (path.isEmpty()) return;
  if (write_coefficient_file(path.toStdString()) == success) written(FileCommand::create_coefficients, path);
}

void cBriselApp::Output_CreateSystemAnalysisFile() {
  if (!needs_result()) return;
  if (is_iir_design()) return write_iir_form();
  const auto text = format_current_system_file();
  if (!text) return; // told by the engine
  const QString path = files.save(this, FileCommand::create_system);
  if (path.isEmpty()) return;
  if (write_system_file(path.toStdString(), *text) == success) written(FileCommand::create_system, path);
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
  written(FileCommand::c_code, path);
}

static bool is_iir_of_dsp(const DesignRecord &r) {
  const int method = r.selections.DesignOrAnalysisType;
  return (method == code(DesignMethod::iir) || method == code(DesignMethod::z_analysis)) && !is_fir_result();
}

static void refuse(QWidget *parent, const QString &caption, const char *text) {
  QMessageBox::critical(parent, caption, text);
}

bool cBriselApp::suits_dsp(const QString &caption, bool canonic_only) {
  const DesignRecord &r = design_record;
  const QuantizationSettings &q = r.quantization;
  if (is_iir_of_dsp(r)) {
    if (r.realization == code(RealizationForm::parallel)) {
      refuse(this, caption, "Only cascaded 2nd order sections supported for IIR designs.");
      return false;
    }
    const bool fixed = q.quant && q.qtype;
    if (canonic_only && !(fixed && q.rtype1 == code(SectionStructure::canonic))) {
      refuse(this, caption, "IIR output requires canonic fixed point quantization");
      return false;
    }
    if (!fixed) {
      refuse(this, caption, "IIR output requires fixed point quantization");
      return false;
    }
  }
  if (q.ibit != dsp_word_bits) {
    refuse(this, caption, "The number of quantized bits must be 16");
    return false;
  }
  return true;
}

void cBriselApp::write_dsp_code(FileCommand command, const QString &caption, bool canonic_only) {
  if (!needs_result() || !suits_dsp(caption, canonic_only)) return;
  const QString path = files.save(this, command);
  if (path.isEmpty()) return;
  const TimeStamp now = time_stamp(std::time(nullptr));
  const auto generate = command == FileCommand::adsp218x ? generate_adsp218x : generate_dsp56800;
  const int result =
      generate(path.toStdString(), design_record.selections, workplace_names.user_name, now.date, now.time);
  if (result == success) return written(command, path);
  // Any other result was told by the engine.
  if (result == form_not_supported || result == cannot_create)
    post_message(static_cast<Message>(result), path.toStdString());
}

void cBriselApp::Codegen_ADSP218X() {
  write_dsp_code(FileCommand::adsp218x, "ADSP218X", false);
}

void cBriselApp::Codegen_DSP56800() {
  write_dsp_code(FileCommand::dsp56800, "DSP56800", true);
}

void cBriselApp::Codegen_dsPIC30() {
  if (!needs_result() || !suits_dsp("dsPIC30", false)) return;
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
  if (!needs_result() || !is_iir_of_dsp(design_record)) return;
  const QString caption = "Performance Audio";
  const QuantizationSettings &q = design_record.quantization;
  if (design_record.realization == code(RealizationForm::parallel))
    refuse(this, caption, "Only cascaded 2nd order sections supported for IIR designs.");
  else if (!(q.quant && !q.qtype && q.rtype1 == code(SectionStructure::float_4_multiplies)))
    refuse(this, caption, "IIR output requires 4 multiply floating point quantization");
  // Kept: a placeholder. With a suitable design the command does nothing further; there is no such generator.
}

} // namespace brisel
