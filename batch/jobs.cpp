#include "batch/jobs.h"

#include "batch/command_line.h"
#include "batch/json_output.h"
#include "batch/outputs.h"
#include "batch/pictures.h"
#include "batch/units.h"
#include "engine/analysis/plot_arrays.h"
#include "engine/core/design_driver.h"
#include "engine/core/method_rule.h"
#include "engine/core/phase_shift_design.h"
#include "engine/core/system_analysis.h"
#include "engine/files/coefficient_file.h"
#include "engine/files/design_report.h"
#include "engine/files/spec_file.h"
#include "engine/files/system_file.h"
#include "engine/fir/length_estimate.h"
#include "engine/fir/optimal_length.h"
#include "engine/iir/allpass_delay.h"
#include "engine/iir/iir_quantize.h"
#include "engine/iir/order_estimate.h"
#include "engine/iir/prewarp.h"
#include "engine/iir/selectivity.h"

#include <algorithm>
#include <array>
#include <vector>

namespace brisel {

namespace {

[[noreturn]] void fail(const std::string &text) {
  throw JobFailure(exit_failed, text);
}

void load_specification(const Job &job, const BatchFrontEnd &front_end) {
  const Status loaded = load_filter_spec(job.input);
  if (loaded == cannot_open) fail(job.input + ": " + unreadable(job.input));
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

/// Settings that designs and analyses share. `sampling` is the highest frequency to show, radians per second; 0 none.
void choose_results(const Job &job, double sampling) {
  const Quantize chosen{job.quantize.value_or(static_cast<int>(Quantize::off))};
  quantization_settings.quant = chosen != Quantize::off;
  quantization_settings.qtype = chosen != Quantize::floating;
  if (job.bits) quantization_settings.ibit = *job.bits;
  set_realization_codes(quantization_settings, job.structure.value_or(code(SectionStructure::transposed)));
  quantization_settings.optimize = job.optimize.has_value();
  if (job.optimize) quantization_settings.op_num = *job.optimize;
  if (job.scaling) design_state.GainOption = static_cast<std::uint8_t>(*job.scaling);
  report_off = job.report.empty();
  plot_settings.detout = job.detail;
  if (job.frequency_points) plot_settings.nfpts = *job.frequency_points;
  if (job.time_points) plot_settings.dnimp = *job.time_points;
  plot_settings.PlotType0Linear1Log = job.log_frequency;
  if (!job.frequency_range) return;
  for (std::size_t i = 0; i < 2; i++)
    plot_settings.frequency_range[i] = (*job.frequency_range)[i] * design_state.unit_factor;
  if (sampling > 0 && plot_settings.frequency_range[1] > sampling)
    throw JobFailure(exit_usage, formatf("--frequency-range: %g is above the sampling frequency, %g",
                                         (*job.frequency_range)[1], in_user_unit(sampling, design_state.unit_factor)));
  if (!is_plottable(plot_settings.frequency_range, job.log_frequency))
    throw JobFailure(exit_usage, formatf("--frequency-range: %g:%g is no range of an axis", (*job.frequency_range)[0],
                                         (*job.frequency_range)[1]));
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

[[noreturn]] void refuse_for_type(const char *option) {
  throw JobFailure(exit_usage, formatf("%s: has no meaning for a filter of type %s", option,
                                       std::string(filter_types[design_state.filter_type].file_name).c_str()));
}

void choose_fir(const Job &job) {
  if (job.minimum_phase) design_state.MinimumPhaseType = static_cast<std::uint8_t>(*job.minimum_phase);
  if (job.gain) design_state.gain_specification_mode = static_cast<std::uint8_t>(*job.gain);
  if (job.split && design_state.filter_type != code(FilterType::band_pass)) refuse_for_type("--split");
  const FilterType type{design_state.filter_type};
  const bool has_slope = type == FilterType::low_pass || type == FilterType::high_pass ||
                         type == FilterType::band_pass || type == FilterType::raised_cosine ||
                         type == FilterType::root_raised_cosine;
  if (job.stopband_slope.value_or(0) != 0 && !has_slope) refuse_for_type("--stopband-slope");
  if (job.optimize && design_state.filter_type > code(FilterType::band_stop)) refuse_for_type("--optimize");
}

// Phase equalizers and group delay filters.
void choose_delay(const Job &job) {
  const bool group_delay = design_state.filter_type == code(FilterType::arbitrary_group_delay);
  const bool equalized = job.phase_equalizer || job.delay_ripple;
  if (job.delay_method) design_state.GroupDelayDesignMethod = static_cast<std::uint8_t>(*job.delay_method);
  if (!group_delay) {
    if (job.delay_sections) refuse_for_type("--sections");
    if (job.delay_method && !equalized) throw JobFailure(exit_usage, "--delay-method: needs --phase-equalizer");
    design_state.PhaseEqualizationOption = equalized;
    return;
  }
  for (const auto &[option, given] :
       std::array<std::pair<const char *, bool>, 6>{{{"--compensation", job.compensation.value_or(0) != 0},
                                                     {"--phase-equalizer", job.phase_equalizer.has_value()},
                                                     {"--delay-ripple", job.delay_ripple.has_value()},
                                                     {"--prototype", job.prototype.has_value()},
                                                     {"--mapping", job.mapping.has_value()},
                                                     {"--impulse-path", job.impulse_path.has_value()}}})
    if (given) refuse_for_type(option);
  if (!job.order) return;
  if (job.delay_sections) throw JobFailure(exit_usage, "--sections: --order says how many there are");
  if (*job.order % 2 != 0 || *job.order > 2 * max_delay_sections)
    throw JobFailure(exit_usage, formatf("--order: %d is no even number up to %d, two for every all-pass section",
                                         *job.order, 2 * max_delay_sections));
}

void choose_iir(const Job &job) {
  const FilterType type{design_state.filter_type};
  if (job.order.value_or(0) % 2 != 0 && (type == FilterType::band_pass || type == FilterType::band_stop))
    throw JobFailure(exit_usage, formatf("--order: %d is odd; a %s filter has an even order", *job.order,
                                         std::string(filter_types[code(type)].file_name).c_str()));
  if (job.mapping) design_state.ZTransformMethod = static_cast<std::int8_t>(*job.mapping);
  if (job.impulse_path) design_state.ImpulseInvariantDesignPath = static_cast<std::uint8_t>(*job.impulse_path);
  if (job.realization) design_state.RealizationType = static_cast<std::int8_t>(*job.realization);
}

bool is_coefficient_file(const std::string &path) {
  LineReader file(100);
  return file.open(path) && file.next() && file.line().starts_with("FILTER COEFFICIENT FILE");
}

void load_system(const Job &job, const BatchFrontEnd &front_end) {
  if (is_coefficient_file(job.input)) {
    CoefficientReading reading;
    if (load_coefficient_file(job.input, &reading) != success)
      fail(formatf("%s:%d: %s", job.input.c_str(), reading.line, reading.reason.c_str()));
    if (analyze_coefficient_file() != success) fail(front_end.failure(job.input + ": has no form to analyse"));
    return;
  }
  LineReader file(100);
  if (!file.open(job.input)) fail(job.input + ": " + unreadable(job.input));
  if (load_system_file(job.input) != success) fail(front_end.failure(job.input + ": is no system analysis file"));
}

void choose_prewarp(const Job &job) {
  design_state.PrewarpOption = job.prewarp_all;
  design_state.prewarp_frequency = job.prewarp.value_or(0) * design_state.unit_factor;
  if (job.prewarp && !can_prewarp(design_state.prewarp_frequency, entered_sample_rate()))
    throw JobFailure(exit_usage, formatf("--prewarp: %g is not below half the sampling frequency, %g", *job.prewarp,
                                         in_user_unit(entered_sample_rate() / 2, design_state.unit_factor)));
}

void write_results(const Job &job, BatchFrontEnd &front_end) {
  Outputs outputs;
  add_results(job, front_end, outputs);
  outputs.commit(job.plots);
}

} // namespace

void run_design(const Job &job, BatchFrontEnd &front_end) {
  refuse_missing_pictures(job);
  load_specification(job, front_end);
  choose_method(job);
  choose_results(job, current_spec->sampling_frequency);
  choose_compensation(job);
  choose_fir(job);
  choose_iir(job);
  choose_delay(job);
  design_filter();
  if (!design_record.valid) fail(front_end.failure(job.input + ": the design run ended without a result"));
  write_results(job, front_end);
}

void run_analyze(const Job &job, BatchFrontEnd &front_end) {
  refuse_missing_pictures(job);
  load_system(job, front_end);
  apply_frequency_mode();
  refuse_unused_options(job, design_state.DesignOrAnalysisType);
  const bool digital = design_state.DesignOrAnalysisType == code(DesignMethod::z_analysis);
  if (job.scaling && !(digital && is_fir_option(design_state.z_input_option)))
    throw JobFailure(exit_usage, "--scaling: has a meaning for FIR systems only");
  const bool digitized = digital || job.mapping != code(ZTransform::s_domain_only);
  choose_results(job, digitized ? entered_sample_rate() : 0);
  if (job.mapping) design_state.SDomainAnalysisRealizationMethod = static_cast<std::uint8_t>(*job.mapping);
  design_state.SDomainAnalysisMaximumGainOption = job.unity_gain;
  choose_prewarp(job);
  analyze_system();
  if (!design_record.valid) fail(front_end.failure(job.input + ": the analysis ended without a result"));
  write_results(job, front_end);
}

void run_phase_shift(const Job &job, BatchFrontEnd &front_end) {
  refuse_missing_pictures(job);
  refuse_unused_options(job, code(DesignMethod::z_analysis));
  design_state.FrequencyMode = job.radians;
  apply_frequency_mode();
  const double unit = design_state.unit_factor;
  PhaseShiftSpec wanted;
  struct Row {
    const char *option;
    std::optional<double> given;
    double &place, factor;
  };
  // In the order of PhaseShiftField.
  const Row rows[] = {{"--sampling-frequency", job.sampling_frequency, wanted.sampling_frequency, unit},
                      {"--first-passband", job.first_passband, wanted.first_passband, unit},
                      {"--second-passband", job.second_passband, wanted.second_passband, unit},
                      {"--phase-shift", job.phase_shift, wanted.degrees, 1},
                      {"--real-zero", job.real_zero, wanted.real_zero, 1}};
  const std::string missing = ": has to be given";
  for (const Row &row : rows) {
    if (!row.given && &row.place != &wanted.real_zero) throw JobFailure(exit_usage, row.option + missing);
    row.place = row.given.value_or(0) * row.factor;
  }
  if (!job.real_zero) wanted.real_zero = middle_zero(wanted).value_or(0);
  choose_results(job, wanted.sampling_frequency);
  if (const auto complaint = phase_shift_design(wanted)) {
    const Row &row = rows[static_cast<std::size_t>(complaint->field)];
    std::string reason = row.option + formatf(": %.10g ", row.given.value_or(0)) + complaint->reason;
    if (complaint->field == PhaseShiftField::real_zero)
      reason += "; values that work here: " + working_zeros_text(wanted);
    throw JobFailure(exit_usage, reason);
  }
  if (!design_record.valid) fail(front_end.failure("the phase shift filter has no result"));
  if (!job.real_zero)
    design_notes.push_back(formatf("The real zero is %.12g; values that work here: ", wanted.real_zero) +
                           working_zeros_text(wanted) + ".");
  write_results(job, front_end);
}

namespace {

std::string estimate_table(const char *title, const std::vector<Estimate> &estimates) {
  std::string out = estimates.empty() ? "" : std::string(title) + "\n";
  for (const Estimate &estimate : estimates)
    appendf(out, "  %-22s %6s\n", estimate.name.c_str(), length_text(estimate.value).c_str());
  return out;
}

std::vector<Estimate> length_estimates(FilterType type) {
  std::array<int, offered_window_count> taps;
  fir_length_estimate(*current_spec, taps);
  std::vector<Estimate> lengths;
  for (std::size_t i = 0; i < taps.size(); i++) lengths.push_back({std::string(windows[i].option), taps[i]});
  if (band_that_jumps(*current_spec)) return lengths; // which the optimal methods refuse
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
  const bool assumed = type == FilterType::differentiator || type == FilterType::hilbert ||
                       type == FilterType::arbitrary_magnitude || type == FilterType::multiband;
  // A difference of edges, shown without the rounding of its last digits.
  const double width =
      !assumed ? 0
               : parse_number(formatf("%.12g", transition_width(*current_spec) / design_state.unit_factor)).value_or(0);

  Outputs outputs;
  if (!job.json.empty()) outputs.add(job.json, estimate_json(lengths, orders, width));
  std::string text = estimate_table("Estimated number of taps:", lengths) +
                     estimate_table("Estimated order, bilinear transformation:", orders);
  if (assumed) appendf(text, "Transition width used: %.6g %s\n", width, design_state.FrequencyMode ? "rad/s" : "Hz");
  outputs.add_summary(std::move(text));
  outputs.commit("");
}

} // namespace brisel
