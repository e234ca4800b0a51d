#include "batch/outputs.h"

#include "batch/json_output.h"
#include "batch/pictures.h"
#include "batch/summary.h"
#include "codegen/c_code.h"
#include "codegen/c_support.h"
#include "codegen/data_files.h"
#include "codegen/dsp_checks.h"
#include "codegen/dsp_code.h"
#include "codegen/dspic30.h"
#include "engine/analysis/plot_arrays.h"
#include "engine/core/messages.h"
#include "engine/core/start_up.h"
#include "engine/files/design_report.h"
#include "engine/files/plot_data.h"
#include "engine/files/saved_filter.h"
#include "engine/files/spec_file.h"
#include "engine/judge/design_judgement.h"

#include <filesystem>
#include <unistd.h>

namespace brisel {

namespace {

[[noreturn]] void fail(const std::string &text) {
  throw JobFailure(exit_failed, text);
}

bool is_same_file(const std::string &a, const char *b) {
  std::error_code error;
  return std::filesystem::equivalent(a, b, error);
}

/// Where it leads to, a pipe or a file that is appended to, has been opened already.
bool names_standard_output(const std::string &path) {
  return path == standard_output || path == "/dev/stdout" || path == "/dev/fd/1" || path == "/proc/self/fd/1";
}

} // namespace

void Outputs::add(const std::string &path, std::string content) {
  if (names_standard_output(path)) {
    standard_output_taken = true;
    return files.add_standard_output(std::move(content));
  }
  if (is_same_file(path, "/dev/stdout")) standard_output_taken = true;
  std::error_code error;
  const auto name = std::filesystem::weakly_canonical(std::filesystem::absolute(path, error), error);
  // A device takes any number of outputs.
  const bool shareable = std::filesystem::exists(path, error) && !std::filesystem::is_regular_file(path, error);
  if (!shareable && !names.insert(name.empty() ? path : name.string()).second)
    throw JobFailure(exit_usage, "two outputs would be written to " + path);
  files.add(path, std::move(content));
}

void Outputs::add_summary(std::string text) {
  if (!standard_output_taken) files.add_standard_output(std::move(text));
}

void Outputs::commit(const std::string &new_folder) {
  std::error_code error;
  const bool made = !new_folder.empty() && !std::filesystem::is_directory(new_folder, error);
  if (made && !std::filesystem::create_directory(new_folder, error))
    fail(new_folder + ": cannot be made: " + (error ? error.message() : "a file of that name exists"));
  std::string why;
  if (files.commit(why)) return;
  if (made) std::filesystem::remove(new_folder, error);
  fail(why);
}

namespace {

/// A text that the engine gave, or its reason why it could not.
std::string text_or_failure(std::optional<std::string> text, const std::string &path, const BatchFrontEnd &front_end) {
  if (!text) fail(front_end.failure(path + ": the result holds values that this file cannot"));
  return std::move(*text);
}

void add_saved(const std::string &path, std::optional<SavedFilter> saved, const BatchFrontEnd &front_end,
               Outputs &outputs) {
  if (!saved) fail(front_end.failure(path + ": the result holds values that this file cannot"));
  if (!saved->note.empty()) design_notes.push_back(saved->note);
  outputs.add(path, std::move(saved->text));
}

std::string specification_text(const std::string &path, const BatchFrontEnd &front_end) {
  FilterSpec saved = design_record.loaded;
  saved.unit = design_record.selections.FrequencyMode;
  if (std::string note = changed_by_columns(saved); !note.empty()) design_notes.push_back(std::move(note));
  return text_or_failure(format_filter_spec(saved), path, front_end);
}

void add_plot_data(const std::string &base, const BatchFrontEnd &front_end, Outputs &outputs) {
  for (std::size_t i = 0; i < plot_data_files.size(); i++) {
    const std::string path = base + "." + std::string(plot_data_files[i].extension);
    auto text = plot_data_text(i, plot_arrays, plot_state.factor, plot_state.radians);
    outputs.add(path, text_or_failure(std::move(text), path, front_end));
  }
}

/// Who made a generated file, when. A job gives the same bytes whenever it runs, so the time is the one that the caller
/// fixes for reproducible builds, or none.
Origin origin() {
  const char *epoch = std::getenv("SOURCE_DATE_EPOCH");
  const auto seconds = epoch ? parse_integer(epoch) : std::nullopt;
  Origin made{.user = "brisel " BRISEL_VERSION, .date = "unrecorded", .time = "time"};
  if (!seconds) return made;
  const std::time_t moment = static_cast<std::time_t>(*seconds);
  std::tm parts{};
  char date[32] = "", time[32] = "";
  if (!gmtime_r(&moment, &parts)) return made;
  std::strftime(date, sizeof date, "%Y-%m-%d", &parts);
  std::strftime(time, sizeof time, "%H:%M:%S UTC", &parts);
  made.date = date;
  made.time = time;
  return made;
}

/// The generators for DSPs write the result to a temporary file and read it back. Where they stop in between, it is
/// removed, unless it was there before.
class TemporaryFile {
public:
  explicit TemporaryFile(const std::string &path) : path(path), existed(::access(path.c_str(), F_OK) == 0) {}
  ~TemporaryFile() {
    if (!existed) ::unlink(path.c_str());
  }
  TemporaryFile(const TemporaryFile &) = delete;
  TemporaryFile &operator=(const TemporaryFile &) = delete;

private:
  std::string path;
  bool existed;
};

[[noreturn]] void fail_generator(const char *option, int status, const BatchFrontEnd &front_end) {
  const auto number = status == form_not_supported ? Message::unsupported_form
                      : status == not_finite       ? Message::result_not_finite
                                                   : Message::cannot_create_file;
  fail(front_end.failure(std::string(option) + ": " + one_line(message_text(number))));
}

void add_c_code(const Job &job, const BatchFrontEnd &front_end, Outputs &outputs) {
  const std::string &path = job.c;
  const Origin made = origin();
  std::string text;
  if (const Status status = format_c_code(path, design_record, made.user, made.date, made.time, text);
      status != success)
    fail_generator("--c", status, front_end);
  outputs.add(path, std::move(text));
  std::error_code error;
  if (std::filesystem::exists(path, error) && !std::filesystem::is_regular_file(path, error)) {
    if (job.c_support) fail("--c-support: " + path + " is no file that others could lie beside");
    return;
  }
  std::vector<GeneratedFile> support;
  if (job.c_support) support = missing_c_support(path);
  std::string note = c_support_note(path, support);
  design_notes.push_back(std::move(note));
  for (GeneratedFile &file : support) outputs.add(file.path, std::move(file.text));
}

void add_data(const char *option, const std::string &path, DataText made, Outputs &outputs) {
  if (const auto *refusal = std::get_if<DataRefusal>(&made))
    fail(std::string(option) + ": " + one_line(message_text(refusal->number)) +
         (refusal->detail.empty() ? "" : " (" + refusal->detail + ")"));
  outputs.add(path, std::get<std::string>(std::move(made)));
}

void add_data_files(const Job &job, Outputs &outputs) {
  if (!job.matlab.empty()) add_data("--matlab", job.matlab, matlab_text(), outputs);
  if (!job.cocentric.empty()) {
    const auto format =
        static_cast<DatasetFormat>(job.cocentric_format.value_or(static_cast<int>(DatasetFormat::real)));
    add_data("--cocentric", job.cocentric, cocentric_text(format, job.cocentric_comments), outputs);
  }
  if (!job.data.empty()) {
    DataFileOptions options;
    if (job.data_stage) options.stage = CoefficientStage{*job.data_stage};
    if (job.data_notation) options.notation = NumberNotation{*job.data_notation};
    if (job.data_layout) options.layout = DataLayout{*job.data_layout};
    add_data("--data", job.data, data_file_text(job.data, options), outputs);
  }
}

void require_dsp(const char *option, DspFamily family) {
  if (const char *why = dsp_refusal(design_record, family)) fail(std::string(option) + ": " + why);
}

void add_dsp_code(const char *option, DspFamily family, const std::string &path, const BatchFrontEnd &front_end,
                  Outputs &outputs) {
  require_dsp(option, family);
  const TemporaryFile temporary(path + "_BRISELSYS");
  std::string text, note;
  if (const int status = prepare_dsp_code(family, path, design_record.selections, origin(), text, &note);
      status != success)
    fail_generator(option, status, front_end);
  outputs.add(path, std::move(text));
  if (!note.empty()) design_notes.push_back(note);
}

void add_dspic30(const Job &job, const BatchFrontEnd &front_end, Outputs &outputs) {
  require_dsp("--dspic30", DspFamily::dspic30);
  DsPic30Options options;
  options.header = job.dspic30_header;
  options.simulation = job.dspic30_simulation;
  if (job.dspic30_space) options.space = CoefficientSpace{*job.dspic30_space};
  if (job.dspic30_script) options.script = PlotScript{*job.dspic30_script};
  const TemporaryFile temporary(job.dspic30);
  std::vector<GeneratedFile> generated;
  std::string note;
  if (const int status = prepare_dspic30(job.dspic30, options, generated, &note); status != success)
    fail_generator("--dspic30", status, front_end);
  for (GeneratedFile &file : generated) outputs.add(file.path, std::move(file.text));
  if (!note.empty()) design_notes.push_back(note);
}

} // namespace

void add_results(const Job &job, BatchFrontEnd &front_end, Outputs &outputs) {
  front_end.messages_to_notes();
  if (!job.spc.empty()) outputs.add(job.spc, specification_text(job.spc, front_end));
  const int digits = job.digits.value_or(0);
  if (!job.flt.empty()) add_saved(job.flt, save_current_coefficients(digits), front_end, outputs);
  if (!job.inp.empty()) add_saved(job.inp, save_current_system(digits), front_end, outputs);
  if (!job.plot_data.empty()) add_plot_data(job.plot_data, front_end, outputs);
  add_pictures(job, outputs);
  add_data_files(job, outputs);
  if (!job.c.empty()) add_c_code(job, front_end, outputs);
  if (!job.adsp218x.empty()) add_dsp_code("--adsp218x", DspFamily::adsp218x, job.adsp218x, front_end, outputs);
  if (!job.dsp56800.empty()) add_dsp_code("--dsp56800", DspFamily::dsp56800, job.dsp56800, front_end, outputs);
  if (!job.dspic30.empty()) add_dspic30(job, front_end, outputs);
  if (job.detail && !fits_response_tables())
    fail(job.report + ": the result holds values that the tables of its responses cannot; leave out --detail");
  if (!job.report.empty()) outputs.add(job.report, report_text());
  if (!job.trace.empty()) outputs.add(job.trace, trace_text());
  const std::vector<Judgement> judgements = judge_design();
  if (!job.json.empty()) outputs.add(job.json, design_json(judgements));
  outputs.add_summary(design_summary(judgements));
}

} // namespace brisel
