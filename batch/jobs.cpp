#include "batch/jobs.h"

#include "batch/command_line.h"
#include "batch/json_output.h"
#include "batch/pictures.h"
#include "batch/summary.h"
#include "batch/units.h"
#include "engine/analysis/plot_arrays.h"
#include "engine/core/design_driver.h"
#include "engine/core/method_rule.h"
#include "engine/files/coefficient_file.h"
#include "engine/files/plot_data.h"
#include "engine/files/spec_file.h"
#include "engine/files/text_file.h"
#include "engine/fir/length_estimate.h"
#include "engine/fir/optimal_length.h"
#include "engine/iir/order_estimate.h"
#include "engine/iir/selectivity.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <vector>

namespace brisel {

namespace {

[[noreturn]] void fail(const std::string &text) {
  throw JobFailure(exit_failed, text);
}

std::string plot_data_path(const Job &job, const PlotDataFile &file) {
  return job.plot_data + "." + std::string(file.extension);
}

void add_plot_data(const Job &job, FileSet &files) {
  if (job.plot_data.empty()) return;
  for (std::size_t i = 0; i < plot_data_files.size(); i++) {
    auto text = plot_data_text(i, plot_arrays, plot_state.factor, plot_state.radians);
    const std::string path = plot_data_path(job, plot_data_files[i]);
    if (!text) fail(path + ": the response has values that are not finite");
    files.add(path, std::move(*text));
  }
}

/// Every file that the job will write, by the name it was given.
std::vector<std::string> targets(const Job &job) {
  std::vector<std::string> all;
  for (const std::string *path : {&job.json, &job.spc, &job.flt})
    if (!path->empty() && *path != standard_output) all.push_back(*path);
  if (!job.plot_data.empty())
    for (const PlotDataFile &file : plot_data_files) all.push_back(plot_data_path(job, file));
  for (std::string &path : picture_targets(job)) all.push_back(std::move(path));
  return all;
}

/// Two outputs under one name would leave only the later one.
void refuse_shared_targets(const Job &job) {
  std::vector<std::string> seen;
  for (const std::string &path : targets(job)) {
    std::error_code error;
    const auto resolved = std::filesystem::weakly_canonical(std::filesystem::absolute(path, error), error);
    if (!error && std::filesystem::exists(resolved, error) && !std::filesystem::is_regular_file(resolved, error))
      continue; // a device takes any number of outputs, and a folder is refused when it is written
    const std::string name = resolved.empty() ? path : resolved.string();
    if (std::find(seen.begin(), seen.end(), name) != seen.end())
      throw JobFailure(exit_usage, "two outputs would be written to " + path);
    seen.push_back(name);
  }
}

void load_specification(const Job &job, const BatchFrontEnd &front_end) {
  const Status loaded = load_filter_spec(job.input);
  if (loaded == cannot_open) fail(job.input + ": cannot be opened for reading");
  if (loaded != success) fail(front_end.failure(job.input + ": is no filter specification file"));
  design_state.FrequencyMode = in_radians(*current_spec);
  apply_frequency_mode();
}

void choose_method(const Job &job) {
  const int type = design_state.filter_type;
  const int method = job.method.value_or(ruled_method(code(DesignMethod::iir), type));
  if (ruled_method(method, type) != method) {
    std::string allowed;
    for (std::size_t i = 0; i < design_methods.size(); i++)
      if (ruled_method(static_cast<int>(i), type) == static_cast<int>(i))
        allowed += (allowed.empty() ? "" : ", ") + std::string(design_methods[i].option);
    throw JobFailure(exit_usage, formatf("--method: a filter of type %s cannot have method %s, only ",
                                         std::string(filter_types[type].file_name).c_str(),
                                         std::string(design_methods[method].option).c_str()) +
                                     allowed);
  }
  refuse_unused_options(job, method);
  design_state.DesignOrAnalysisType = static_cast<std::int8_t>(method);
}

void choose_plot_settings(const Job &job) {
  if (job.frequency_points) plot_settings.nfpts = *job.frequency_points;
  if (job.time_points) plot_settings.dnimp = *job.time_points;
  plot_settings.PlotType0Linear1Log = job.log_frequency;
  if (!job.frequency_range) return;
  const double sampling = current_spec->sampling_frequency;
  for (std::size_t i = 0; i < 2; i++)
    plot_settings.frequency_range[i] = (*job.frequency_range)[i] * design_state.unit_factor;
  if (plot_settings.frequency_range[1] > sampling)
    throw JobFailure(exit_usage, formatf("--frequency-range: %g is above the sampling frequency, %g",
                                         (*job.frequency_range)[1], in_user_unit(sampling, design_state.unit_factor)));
  plot_settings.autoreset = 0; // or the run would take its own range
}

void choose_compensation(const Job &job) {
  if (job.compensation.value_or(0) == 0) return;
  design_state.CompensationOption = 1;
  design_state.CompensationType = static_cast<std::uint8_t>(*job.compensation - 1);
  design_state.CompensationRateChange = static_cast<std::uint8_t>(job.rate_change.value_or(1));
  design_state.CompensationDifferentialDelay = static_cast<std::uint8_t>(job.differential_delay.value_or(1));
  design_state.CompensationNumberOfStages = static_cast<std::uint8_t>(job.stages.value_or(1));
}

void choose_iir(const Job &job) {
  const FilterType type{design_state.filter_type};
  if (job.order.value_or(0) % 2 != 0 && (type == FilterType::band_pass || type == FilterType::band_stop))
    throw JobFailure(exit_usage, formatf("--order: %d is odd; a %s filter has an even order", *job.order,
                                         std::string(filter_types[code(type)].file_name).c_str()));
  if (job.mapping) design_state.ZTransformMethod = static_cast<std::int8_t>(*job.mapping);
  if (job.impulse_path) design_state.ImpulseInvariantDesignPath = static_cast<std::uint8_t>(*job.impulse_path);
  if (job.realization) design_state.RealizationType = static_cast<std::int8_t>(*job.realization);
  if (job.structure) quantization_settings.rtype1 = *job.structure;
}

void choose_quantization(const Job &job) {
  const Quantize chosen{job.quantize.value_or(static_cast<int>(Quantize::off))};
  quantization_settings.quant = chosen != Quantize::off;
  quantization_settings.qtype = chosen != Quantize::floating;
  if (job.bits) quantization_settings.ibit = *job.bits;
  if (job.scaling) design_state.GainOption = static_cast<std::uint8_t>(*job.scaling);
}

std::string specification_text() {
  FilterSpec saved = design_record.loaded;
  saved.unit = design_record.selections.FrequencyMode;
  auto text = format_filter_spec(saved);
  if (!text) fail("the specification holds a value that its file cannot");
  return std::move(*text);
}

std::string coefficient_text(const Job &job, const BatchFrontEnd &front_end) {
  auto text = format_current_coefficient_file(design_state.fleng);
  if (!text) fail(front_end.failure(job.flt + ": the design has values that a coefficient file cannot hold"));
  return std::move(*text);
}

/// Makes a folder where there is none, and removes it again unless it is kept.
class NewFolder {
public:
  explicit NewFolder(const std::string &path) : path(path) {
    std::error_code error;
    if (path.empty() || std::filesystem::is_directory(path, error)) return;
    made = std::filesystem::create_directory(path, error);
    if (!made) fail(path + ": cannot be made: " + error.message());
  }
  ~NewFolder() {
    std::error_code ignored;
    if (made) std::filesystem::remove(path, ignored);
  }
  NewFolder(const NewFolder &) = delete;
  NewFolder &operator=(const NewFolder &) = delete;
  void keep() { made = false; }

private:
  std::string path;
  bool made = false;
};

void add_output(const std::string &path, std::string content, FileSet &files) {
  if (path == standard_output)
    files.add_standard_output(std::move(content));
  else
    files.add(path, std::move(content));
}

/// True when text for a person would be mixed into this output.
bool is_standard_output(const std::string &path) {
  std::error_code error;
  return path == standard_output || std::filesystem::equivalent(path, "/dev/stdout", error);
}

} // namespace

void run_design(const Job &job, BatchFrontEnd &front_end) {
  refuse_missing_pictures(job);
  refuse_shared_targets(job);
  load_specification(job, front_end);
  choose_method(job);
  choose_plot_settings(job);
  choose_compensation(job);
  choose_iir(job);
  choose_quantization(job);
  design_filter();
  if (!design_record.valid) fail(front_end.failure(job.input + ": the design run ended without a result"));
  front_end.messages_to_notes();

  FileSet files;
  if (!job.spc.empty()) files.add(job.spc, specification_text());
  if (!job.flt.empty()) files.add(job.flt, coefficient_text(job, front_end));
  add_plot_data(job, files);
  add_pictures(job, files);
  if (!job.json.empty()) add_output(job.json, design_json(), files);
  if (!is_standard_output(job.json)) files.add_standard_output(design_summary());
  NewFolder folder(job.plots);
  std::string why;
  if (!files.commit(why)) fail(why);
  folder.keep();
}

namespace {

std::string estimate_table(const char *title, const std::vector<Estimate> &estimates) {
  std::string out = estimates.empty() ? "" : std::string(title) + "\n";
  for (const Estimate &estimate : estimates) appendf(out, "  %-22s %6d\n", estimate.name.c_str(), estimate.value);
  return out;
}

std::vector<Estimate> length_estimates(FilterType type) {
  std::array<int, offered_window_count> taps;
  fir_length_estimate(*current_spec, taps);
  std::vector<Estimate> lengths;
  for (std::size_t i = 0; i < taps.size(); i++) lengths.push_back({std::string(windows[i].option), taps[i]});
  // Both optimal methods approximate in the same sense and need the same length.
  const bool odd = type == FilterType::differentiator || type == FilterType::hilbert;
  const int optimal =
      optimal_length(normalised(*current_spec), odd ? FirSymmetry::antisymmetric : FirSymmetry::symmetric);
  for (const DesignMethod method : {DesignMethod::equiripple, DesignMethod::linear_programming})
    lengths.push_back({std::string(design_methods[code(method)].option), optimal});
  return lengths;
}

std::vector<Estimate> order_estimates(FilterType type) {
  if (type > FilterType::band_stop) return {};
  const FilterSpec spec = normalised(*current_spec);
  std::array<int, analog_prototypes.size()> orders{};
  estimate_iir_orders(orders, iir_selectivity(spec, ZTransform::bilinear), spec.passband_ripple, spec.stopband_ripple,
                      type);
  std::vector<Estimate> estimates;
  for (std::size_t i = 0; i < orders.size(); i++)
    estimates.push_back({std::string(analog_prototypes[i].option), orders[i]});
  return estimates;
}

} // namespace

void run_estimate(const Job &job, BatchFrontEnd &front_end) {
  load_specification(job, front_end);
  const FilterType type{design_state.filter_type};
  if (type == FilterType::arbitrary_group_delay)
    fail(job.input + ": there is no estimate for a group delay specification");
  current_spec->sampling_period = two_pi / current_spec->sampling_frequency;
  const std::vector<Estimate> lengths = length_estimates(type), orders = order_estimates(type);

  // Types without a transition of their own were given one; the reader of the figures must know it.
  const bool assumed =
      type == FilterType::differentiator || type == FilterType::hilbert || type == FilterType::arbitrary_magnitude;
  const double width = assumed ? in_user_unit(transition_width(*current_spec), design_state.unit_factor) : 0;

  FileSet files;
  if (!job.json.empty()) add_output(job.json, estimate_json(lengths, orders, width), files);
  std::string text = estimate_table("Estimated number of taps:", lengths) +
                     estimate_table("Estimated order, bilinear transformation:", orders);
  if (assumed) appendf(text, "Transition width used: %.6g %s\n", width, design_state.FrequencyMode ? "rad/s" : "Hz");
  if (!is_standard_output(job.json)) files.add_standard_output(text);
  std::string why;
  if (!files.commit(why)) fail(why);
}

} // namespace brisel
