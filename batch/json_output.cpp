#include "batch/json_output.h"

#include "batch/job.h"
#include "batch/units.h"
#include "engine/analysis/form_conversions.h"
#include "engine/analysis/plot_arrays.h"
#include "engine/core/code_tables.h"
#include "engine/fir/length_estimate.h"
#include "engine/fir/run_selections.h"
#include "engine/iir/iir_quantize.h"
#include "engine/judge/judgement_text.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <span>

namespace brisel {

namespace {

using Json = nlohmann::ordered_json;

/// Values that must be finite: a coefficient that is not would be a filter that only looks like one.
Json coefficients(std::span<const double> values) {
  for (const double value : values)
    if (!std::isfinite(value)) throw JobFailure(exit_failed, "the design has coefficients that are not finite");
  return Json(std::vector<double>(values.begin(), values.end()));
}

double coefficient(double value) {
  return coefficients({&value, 1})[0];
}

template <std::size_t size> Json response(const std::array<double, size> &values, int count) {
  return Json(std::vector<double>(values.begin(), values.begin() + count)); // what is not finite is shown as null
}

std::span<const double> taps(const FirEntry &entry) {
  return {entry.coeff.data(), static_cast<std::size_t>(entry.length)};
}

/// The taps of a lattice are those of a filter without symmetry.
std::string_view symmetry_name(const FirEntry &fir) {
  return fir_symmetries[std::min<std::size_t>(static_cast<std::size_t>(fir.fir_type), fir_symmetries.size() - 1)];
}

/// The droop that the filter makes up for, and what the sections of an IIR filter attain.
void add_compensation(Json &out) {
  const DesignState &chosen = design_record.selections;
  if (chosen.DesignOrAnalysisType > code(DesignMethod::least_squares) || !chosen.CompensationOption) return;
  const auto compensation = selected_compensation();
  if (!compensation || !is_active(*compensation)) return;
  Json &found = out["compensation"];
  if (compensation->type == CompensationCurve::sinc)
    found["curve"] = "sinc";
  else
    found = Json{{"curve", "comb"},
                 {"rate_change", compensation->rate_change},
                 {"differential_delay", compensation->differential_delay},
                 {"stages", compensation->stages}};
  if (is_fir_result()) return;
  const CompensationResult &attained = design_record.compensation;
  found["sections"] = attained.sections;
  found["droop"] = attained.droop;
  found["residual"] = attained.residual;
}

Json fir_json() {
  const FirEntry &fir = design_record.fir;
  Json out{{"length", fir.length}, {"symmetry", symmetry_name(fir)}};
  if (design_record.selections.DesignOrAnalysisType == code(DesignMethod::window))
    out["window"] = windows[static_cast<std::size_t>(design_record.spec.window_type)].option;
  const DesignState &chosen = design_record.selections;
  if (is_fir_method(chosen.DesignOrAnalysisType) && chosen.MinimumPhaseType)
    out["minimum_phase"] = minimum_phase_types[chosen.MinimumPhaseType].option;
  add_compensation(out);
  out["gain"] = coefficient(fir.gain);
  out["shift"] = fir.shift;
  out["coefficients"] = coefficients(taps(fir));
  out["unquantized"] = coefficients(taps(design_record.fir_unquantized));
  return out;
}

Json triple_list(const SectionEntry &entry) {
  Json list = Json::array();
  for (int i = 0; i < entry.section_count; i++)
    list.push_back(
        Json{{"numerator", coefficients(entry.numerators[i])}, {"denominator", coefficients(entry.denominators[i])}});
  return list;
}

Json cascade_json(const SectionEntry &entry) {
  return Json{{"gain", coefficient(entry.gain)}, {"sections", triple_list(entry)}};
}

Json parallel_json(const SectionEntry &entry) {
  return Json{
      {"direct", coefficient(entry.gain)}, {"scale", coefficient(entry.pars)}, {"sections", triple_list(entry)}};
}

template <std::size_t size> Json leading(const std::array<double, size> &values, int count, int from = 0) {
  return coefficients({values.data() + from, static_cast<std::size_t>(count)});
}

Json root_list(std::span<const std::complex<double>> roots) {
  Json list = Json::array();
  for (const std::complex<double> root : roots) list.push_back({coefficient(root.real()), coefficient(root.imag())});
  return list;
}

Json ladder_json(const LadderEntry &ladder) {
  return Json{{"gain", coefficient(ladder.gain)},
              {"lead", leading(ladder.alpha, ladder.lead)},
              {"alpha", leading(ladder.alpha, 2 * ladder.order + 1, ladder.lead)}};
}

/// The forms that exist; one that could not be derived has no coefficients.
void add_forms(const IirForms &forms, Json &out) {
  const auto exists = [&](RealizationForm form) { return form_exists(forms, form); };
  if (exists(RealizationForm::cascade)) out["cascade"] = cascade_json(forms.cascade);
  if (exists(RealizationForm::parallel)) out["parallel"] = parallel_json(forms.parallel);
  const RatioEntry &ratio = forms.ratio;
  if (exists(RealizationForm::ratio))
    out["ratio"] = Json{{"gain", coefficient(ratio.gain)},
                        {"numerator", leading(ratio.numerator, ratio.numerator_order + 1)},
                        {"denominator", leading(ratio.denominator, ratio.denominator_order + 1)}};
  const PoleZeroEntry &roots = forms.pole_zero;
  const auto poles = static_cast<std::size_t>(roots.real_poles + roots.complex_poles);
  const auto zeros = static_cast<std::size_t>(roots.real_zeros + roots.complex_zeros);
  if (roots.gain != 0)
    out["pole_zero"] = Json{{"gain", coefficient(roots.gain)},
                            {"poles", root_list({roots.poles.data(), poles})},
                            {"zeros", root_list({roots.zeros.data(), zeros})}};
  const LatticeEntry &lattice = forms.lattice;
  if (exists(RealizationForm::lattice))
    out["lattice"] = Json{{"gain", coefficient(lattice.gain)},
                          {"kappa", leading(lattice.kappa, lattice.order, 1)},
                          {"gamma", leading(lattice.gamma, lattice.order + lattice.lead + 1)}};
  if (exists(RealizationForm::ladder_1)) out["ladder_1"] = ladder_json(forms.ladder_1);
  if (exists(RealizationForm::ladder_2)) out["ladder_2"] = ladder_json(forms.ladder_2);
}

/// `delay_ripple`: of the sections that make a delay, where there are any.
Json iir_json(double delay_ripple) {
  const DesignState &chosen = design_record.selections;
  const int method = chosen.DesignOrAnalysisType;
  const bool design = method == code(DesignMethod::iir), analog = method == code(DesignMethod::s_analysis);
  const auto mapping =
      static_cast<std::size_t>(design ? chosen.ZTransformMethod : chosen.SDomainAnalysisRealizationMethod);
  const bool analog_only = analog && mapping == static_cast<std::size_t>(code(ZTransform::s_domain_only));
  const IirForms &forms = analog_only ? design_record.s_unnormalized : design_record.z;
  Json out{{"order", forms.cascade.order}};
  const DelayResult &delay = design_record.delay;
  const bool all_pass = design && chosen.filter_type == code(FilterType::arbitrary_group_delay);
  const bool prototyped = design && !all_pass;
  add_compensation(out);
  if (design && delay.sections > 0) {
    out["delay"] =
        Json{{"sections", delay.sections},
             {"method",
              delay_methods[std::min<std::size_t>(chosen.GroupDelayDesignMethod, delay_methods.size() - 1)].option},
             {"ripple", delay_ripple},
             {"ripple_without", delay.before},
             {"constant", delay.constant}};
    if (delay.asked > 0) out["delay"]["asked"] = delay.asked;
  }
  if (prototyped) out["prototype"] = analog_prototypes[static_cast<std::size_t>(chosen.analog_type)].option;
  if (prototyped || analog) out["mapping"] = z_transforms[mapping].option;
  if (!analog_only) out["realization"] = realization_forms[static_cast<std::size_t>(design_record.realization)].option;
  if (prototyped)
    out["analog"] = Json{{"passband_edge", coefficient(design_record.wp)},
                         {"normalized", cascade_json(design_record.s_normalized.cascade)}};
  if (prototyped || analog) out["analog"]["unnormalized"] = cascade_json(design_record.s_unnormalized.cascade);
  if (!analog_only) add_forms(design_record.z_quantized, out);
  return out;
}

/// Scaling and noise, of the forms that have them.
Json iir_quantization_json() {
  const QuantizationResult &noise = design_record.noise;
  const bool cascade = design_record.realization == code(RealizationForm::cascade);
  const bool parallel = design_record.realization == code(RealizationForm::parallel);
  Json out = Json::object();
  if (!cascade && !parallel) return out;
  const SectionEntry &sections = cascade ? design_record.z_quantized.cascade : design_record.z_quantized.parallel;
  if (cascade)
    out["structure"] = section_structures[static_cast<std::size_t>(design_record.quantization.rtype1)].option;
  out["input_noise_power"] = noise.input_noise_power;
  out["output_noise_power"] = noise.output_noise_power;
  out["output_noise_power_db"] = noise.output_noise_db;
  out["standard_deviation"] = noise.standard_deviation;
  out["noise_floor_bits"] = noise.noise_floor_bits;
  out["noise_floor_db"] = noise.noise_floor_db;
  out["section_noise_gains"] = response(noise.section_noise_gain, sections.section_count);
  out["section_shifts"] = std::vector<int>(sections.shift.begin(), sections.shift.begin() + sections.section_count);
  if (noise.node_count == 0) return out;
  out["node_peaks"] = response(noise.node_peak, noise.node_count);
  Json &frequencies = out["node_peak_frequencies"];
  for (int i = 0; i < noise.node_count; i++)
    frequencies.push_back(in_user_unit(noise.node_peak_frequency[i], design_record.selections.unit_factor));
  out["scaled_node_peaks"] = response(noise.scaled_node_peak, noise.node_count);
  return out;
}

Json quantization_json() {
  const QuantizationSettings &settings = design_record.quantization;
  const bool fixed =
      is_fir_result() ? settings.qtype != 0 : in_fixed_point(settings, RealizationForm{design_record.realization});
  Json out{{"type", fixed ? "fixed" : "floating"}, {"bits", settings.ibit}};
  if (!is_fir_result()) out.update(iir_quantization_json());
  return out;
}

Json optimum_json() {
  const OptimumResult &optimum = design_record.optimum;
  return Json{{"exchange", optima[optimum.exchange].option},
              {"bound", optimum.bound},
              {"alternations", optimum.alternations},
              {"needed", optimum.needed},
              {"gap_bounded", optimum.gap_bounded != 0}};
}

Json responses_json() {
  const int points = plot_arrays.frequency_count, samples = plot_arrays.time_count;
  std::vector<double> frequency(static_cast<std::size_t>(points)), time(static_cast<std::size_t>(samples));
  const double unit = design_record.selections.unit_factor;
  const double low = in_user_unit(plot_state.frequency[0], unit), high = in_user_unit(plot_state.frequency[1], unit);
  for (int i = 0; i < points; i++)
    frequency[i] = plot_state.log_axis ? plot_arrays.frequency[i] / plot_state.factor / unit
                                       : low + (high - low) * i / (points - 1); // 20, where the radians say 20.000...4
  for (int i = 0; i < samples; i++) time[i] = i * plot_state.factor;
  return Json{{"frequency", frequency},
              {"magnitude", response(plot_arrays.magnitude, points)},
              {"log_magnitude", response(plot_arrays.log_magnitude, points)},
              {"phase", response(plot_arrays.phase, points)},
              {"group_delay", response(plot_arrays.group_delay, points)},
              {"time", time},
              {"impulse", response(plot_arrays.impulse, samples)},
              {"step", response(plot_arrays.step, samples)}};
}

bool holds_object(const Json &value) {
  return value.is_object() || (value.is_array() && !value.empty() && holds_object(value.front()));
}

/// Objects indented, one key a line; lists of plain values on one line.
void write(const Json &value, int indent, std::string &out) {
  if (!holds_object(value)) {
    out += value.dump(-1, ' ', false, Json::error_handler_t::replace);
    return;
  }
  const std::string inner(static_cast<std::size_t>(indent) + 2, ' ');
  out += value.is_object() ? "{\n" : "[\n";
  bool first = true;
  for (const auto &[key, item] : value.items()) {
    if (!first) out += ",\n";
    first = false;
    out += inner;
    if (value.is_object()) out += Json(key).dump() + ": ";
    write(item, indent + 2, out);
  }
  out += "\n" + std::string(static_cast<std::size_t>(indent), ' ') + (value.is_object() ? "}" : "]");
}

/// A zero that rounding reached from below is a zero.
void drop_negative_zeros(Json &value) {
  if (value.is_structured())
    for (Json &item : value) drop_negative_zeros(item);
  else if (value.is_number_float() && value == 0.0)
    value = 0.0;
}

std::string text_of(Json value) {
  drop_negative_zeros(value);
  std::string out;
  write(value, 0, out);
  return out + "\n";
}

} // namespace

namespace {

/// What the design attains, an entry a band and quantity. A figure that is no number is null, and a sentence says why.
Json attained_json(std::span<const Judgement> judgements) {
  const auto shown = [](double w) {
    const DesignRecord &r = design_record;
    return in_user_unit(w * r.loaded.sampling_frequency / two_pi, r.selections.unit_factor);
  };
  Json list = Json::array();
  for (const Judgement &judgement : judgements) {
    const Goal &goal = judgement.goal;
    const QuantityRow &quantity = quantity_row(goal.quantity);
    Json entry{{"band", goal.band},
               {"from", shown(goal.bands.front().low)},
               {"to", shown(goal.bands.back().high)},
               {"quantity", quantity.name},
               {"unit", quantity.unit}};
    entry["asked"] = goal.asked ? Json(*goal.asked) : Json(nullptr);
    entry["attained"] = judgement.attained.value + 0.0; // a gain of -0 dB is one of 0
    if (judgement.quantized) entry["quantized"] = judgement.quantized->value + 0.0;
    if (judgement.met) entry["met"] = *judgement.met;
    const Figure &delivered = judgement.delivered();
    entry["worst_at"] = shown(delivered.worst_at);
    if (delivered.trouble != Trouble::none)
      entry["reason"] = trouble_text(delivered, in_users_unit(delivered.worst_at));
    list.push_back(std::move(entry));
  }
  return list;
}

double delay_ripple(std::span<const Judgement> judgements) {
  for (const Judgement &judgement : judgements)
    if (judgement.goal.quantity == Quantity::delay_ripple) return judgement.delivered().value;
  return NAN;
}

} // namespace

std::string design_json(std::span<const Judgement> judgements) {
  const DesignState &chosen = design_record.selections;
  Json out{{"version", BRISEL_VERSION}};
  if (const auto method = static_cast<std::size_t>(chosen.DesignOrAnalysisType); method < design_methods.size()) {
    out["filter_type"] = filter_types[static_cast<std::size_t>(chosen.filter_type)].file_name;
    out["method"] = design_methods[method].option;
  }
  out["unit"] = unit_row(chosen.FrequencyMode).option;
  out["sampling_frequency"] = in_user_unit(design_record.loaded.sampling_frequency, chosen.unit_factor);
  if (const auto met = all_met(judgements)) out["met"] = *met;
  if (!judgements.empty()) out["attained"] = attained_json(judgements);
  out[is_fir_result() ? "fir" : "iir"] = is_fir_result() ? fir_json() : iir_json(delay_ripple(judgements));
  if (chosen.DesignOrAnalysisType == code(DesignMethod::equiripple) && design_record.optimum.needed > 0)
    out["optimum"] = optimum_json();
  if (design_record.quantization.quant) out["quantization"] = quantization_json();
  out["responses"] = responses_json();
  if (!design_notes.empty()) out["notes"] = design_notes;
  return text_of(out);
}

std::string estimate_json(const std::vector<Estimate> &lengths, const std::vector<Estimate> &orders,
                          double transition_width) {
  Json out = Json::object();
  if (transition_width != 0) out["transition_width"] = transition_width;
  const auto list = [&](const char *key, const std::vector<Estimate> &estimates) {
    for (const Estimate &estimate : estimates)
      out[key][estimate.name] = estimate.value == longest_estimate ? Json() : Json(estimate.value);
  };
  list("lengths", lengths);
  list("orders", orders);
  return text_of(out);
}

} // namespace brisel
