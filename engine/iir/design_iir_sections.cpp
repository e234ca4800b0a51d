#include "engine/iir/design_iir_sections.h"

#include "engine/analysis/form_digits.h"
#include "engine/analysis/pole_zero_form.h"
#include "engine/analysis/polynomial_roots.h"
#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "engine/iir/analog_prototype.h"
#include "engine/iir/band_transform.h"
#include "engine/iir/bessel_prototype.h"
#include "engine/iir/bilinear_map.h"
#include "engine/iir/cascade_gain.h"
#include "engine/iir/compensate_cascade.h"
#include "engine/iir/delay_design.h"
#include "engine/iir/digital_transform.h"
#include "engine/iir/elliptic_prototype.h"
#include "engine/iir/form_notes.h"
#include "engine/iir/impulse_invariant_map.h"
#include "engine/iir/matched_z_map.h"
#include "engine/iir/order_estimate.h"
#include "engine/iir/pole_grid.h"
#include "engine/iir/reorder.h"
#include "engine/iir/selectivity.h"
#include "engine/iir/wide_impulse_invariance.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace brisel {

using Complex = std::complex<double>;

namespace {

bool refuse(Message number, std::string_view detail = {}) {
  post_message(number, detail);
  return false;
}

bool is_band_filter(FilterType type) {
  return type == FilterType::band_pass || type == FilterType::band_stop;
}

// The order to design, 0 after a refusal.
int accepted_order(const FilterSpec &spec, const DesignState &selections, double k) {
  const FilterType type = static_cast<FilterType>(spec.type);
  const auto refused = [](const std::string &detail) { return refuse(Message::order_out_of_limits, detail) ? 1 : 0; };
  int order = selections.order;
  if (order == 0) {
    std::array<int, analog_prototypes.size()> estimates{};
    estimate_iir_orders(estimates, k, spec.passband_ripple, spec.stopband_ripple, type);
    order = estimates[selections.analog_type];
    if (order > max_order)
      return refused(formatf("the %s prototype needs order %d, the limit is %d",
                             analog_prototypes[selections.analog_type].name.data(), order, max_order));
  }
  if (order < 1 || order > max_order) return refused(formatf("order %d is not within 1 to %d", order, max_order));
  if (is_band_filter(type) && order % 2) return refused(formatf("a band filter has an even order, not %d", order));
  return order;
}

// The elliptic poles take the stopband for infinitely deep, which orders far below the estimate do not come near.
void note_elliptic_ripple(int order, double k, double asked_db) {
  const double ripple_db = elliptic_ripple(order, k, asked_db);
  if (std::fabs(ripple_db / asked_db - 1) <= 0.01) return;
  design_notes.push_back(formatf("The elliptic prototype of order %d has a passband ripple of %.3g dB, not the %.3g dB "
                                 "asked for: its order is too low.",
                                 order, ripple_db, asked_db));
}

// Lists a form in the trace under its heading.
template <class Entry> void list(const char *heading, const Entry &entry) {
  trace("%s", heading);
  dump(entry);
}

// What a conversion refuses has no such form: its record is left empty.
template <class Entry> void keep_if(bool made, Entry &entry) {
  if (!made) entry = {};
}

std::span<const std::complex<double>> poles_of(const PoleZeroEntry &entry) {
  return std::span(entry.poles).first(pole_count(entry));
}

// Decimal digits in which the partial fractions of an analog filter are the filter.
double digits_of_sum(const IirForms &forms) {
  const Values x = comparison_points(Domain::s, poles_of(forms.pole_zero));
  return digits_kept(x, cascade_values(forms.cascade, x), parallel_values(forms.parallel, x));
}

// Decimal digits of the response that the rounding of the section coefficients leaves: poles and zeros very near the
// unit circle move with the last digit of their coefficients by much of their distance from it.
double digits_of_coefficients(const SectionEntry &cascade) {
  Values poles;
  for (int i = 0; i < cascade.section_count; i++) poles.push_back(quadratic_roots(cascade.denominators[i]).first);
  const Values z = comparison_points(Domain::z, poles), h = cascade_values(cascade, z);
  double peak = 0, error = 0;
  for (std::size_t k = 0; k < z.size(); k++) {
    double relative = 0;
    for (int i = 0; i < cascade.section_count; i++) {
      for (const Triple &t : {cascade.numerators[i], cascade.denominators[i]}) {
        const double value = std::abs((t[0] * z[k] + t[1]) * z[k] + t[2]);
        if (value != 0) relative += (std::fabs(t[1]) + std::fabs(t[2])) / value; // t[0] is 1 or a common factor
      }
    }
    peak = std::max(peak, std::abs(h[k]));
    error = std::max(error, relative * std::abs(h[k]));
  }
  return -std::log10(0.5 * std::numeric_limits<double>::epsilon() * error / peak);
}

// Decimal digits in which the terms of a digital sum add up to `meant`, a function of z.
template <class Meant> double digits_of_terms(const SectionEntry &parallel, Meant meant) {
  Values poles;
  for (int i = 0; i < parallel.section_count; i++) poles.push_back(quadratic_roots(parallel.denominators[i]).first);
  const Values z = comparison_points(Domain::z, poles);
  return digits_kept(z, meant(z), parallel_values(parallel, z));
}

// Every pole inside the unit circle and every number finite, for sections with a leading coefficient of 1.
bool holds_in_double(const SectionEntry &e) {
  if (!std::isfinite(e.gain) || e.gain == 0) return false;
  for (int i = 0; i < e.section_count; i++) {
    const auto [a0, a1, a2] = e.denominators[i];
    if (!(std::fabs(a2) < 1 && std::fabs(a1) < 1 + a2)) return false;
    for (const double b : e.numerators[i])
      if (!std::isfinite(b)) return false;
  }
  return true;
}

constexpr double enough_digits = 9; // fewer are told to the user
constexpr double least_digits = 3;  // fewer make no filter

std::string in_user_unit(const DesignState &selections, double frequency) {
  return formatf("%g %s", frequency / unit_row(selections.FrequencyMode).factor,
                 selections.FrequencyMode ? "rad/s" : "Hz");
}

bool map_bilinear(const SectionEntry &analog, const Prewarp &prewarp, const DesignState &selections,
                  SectionEntry &digital) {
  if (!prewarp.every_root) {
    bilinear_map(analog, digital, prewarp.frequency);
    if (prewarp.frequency > 0)
      design_notes.push_back(formatf("The bilinear transformation is prewarped: it is exact at %s.",
                                     in_user_unit(selections, prewarp.frequency).c_str()));
    return true;
  }
  SectionEntry prewarped;
  if (const auto beyond = prewarp_roots(analog, prewarped))
    return refuse(Message::prewarp_impossible,
                  formatf("a pole or zero has the frequency %s, half the sampling frequency is %s",
                          in_user_unit(selections, *beyond).c_str(),
                          in_user_unit(selections, analog.sample_rate / 2).c_str()));
  bilinear_map(prewarped, digital);
  design_notes.push_back("Every pole and zero is prewarped to its own frequency.");
  return true;
}

// Bilinear and matched Z: section by section, then ordered, then to a peak of 1 unless the system keeps its gain.
bool map_cascade(DesignRecord &r, ZTransform method, const Prewarp &prewarp) {
  IirForms &analog = r.s_unnormalized;
  list(" S Domain Unnormalized: cascaded\n", analog.cascade);
  keep_if(cascade_to_parallel(Domain::s, analog.cascade, analog.parallel), analog.parallel);
  list(" S Domain Unnormalized: parallel\n", analog.parallel);
  keep_if(cascade_to_pole_zero(Domain::s, analog.cascade, analog.pole_zero), analog.pole_zero);
  list(" S Domain Unnormalized: pole/zero\n", analog.pole_zero);
  keep_if(cascade_to_ratio(Domain::s, analog.cascade, analog.ratio), analog.ratio);
  list(" S Domain Unnormalized: ratio\n", analog.ratio);

  SectionEntry &cascade = r.z.cascade;
  if (method == ZTransform::bilinear) {
    if (!map_bilinear(analog.cascade, prewarp, r.selections, cascade)) return false;
    list(" Z Domain Unnormalized: cascaded - bilinear\n", cascade);
  } else {
    matched_z_map(analog.cascade, cascade, static_cast<FilterType>(r.spec.type));
    list(" Z Domain Unnormalized: cascaded - matched Z\n", cascade);
  }
  PoleZeroEntry work{};
  int dropped_delay = 0;
  if (!reorder_sections(cascade, work, dropped_delay)) return refuse(Message::result_not_finite);
  note_dropped_delay(dropped_delay);
  list(" Z Domain Unnormalized: cascaded - reorder sections\n", cascade);
  // Roots that were moved one by one, and zeros put at the end of the band, are not the analog filter's: the gain of an
  // entered system comes back from its largest magnitude.
  const bool keep_gain = analog.cascade.keep_gain != 0, moved = method == ZTransform::matched_z || prewarp.every_root;
  // The sign, which a peak does not know: matched sections have lost it, but their roots stand for the analog ones.
  const double sign = std::copysign(1.0, method == ZTransform::matched_z ? analog.pole_zero.gain : cascade.gain);
  if (!keep_gain || moved) compute_cas_gain(cascade);
  if (keep_gain && moved) cascade.gain *= sign * analog_peak(analog.cascade);
  list(" Z Domain Unnormalized: cascaded - compute cas_gain\n", cascade);
  return true;
}

// The cascade of wide partial fractions, if it is the filter to more digits than the sum of rounded ones.
std::optional<double> take_wide_cascade(DesignRecord &r, const SectionEntry &analog, double step, const BandMove &move,
                                        double digits) {
  const auto wide = wide_impulse_invariance(analog, step, move);
  if (!wide || !(wide->digits > digits)) return std::nullopt;
  SectionEntry &cascade = r.z.cascade;
  cascade = wide->cascade;
  note_dropped_delay(wide->dropped_delay);
  const double sign = std::copysign(1.0, cascade.gain);
  if (!analog.keep_gain) {
    compute_cas_gain(cascade);
    cascade.gain *= sign;
  }
  return wide->digits;
}

// Impulse invariance: term by term of the partial fractions, by way of the analog filter or of the digital lowpass.
// Returns the form that was made, nothing after a refusal.
std::optional<RealizationForm> map_parallel(DesignRecord &r, bool designed) {
  const auto refused = [](Message number) -> std::optional<RealizationForm> {
    static_cast<void>(refuse(number));
    return std::nullopt;
  };
  const double step = two_pi / r.spec.sampling_frequency;
  const bool digital_path = designed && r.selections.ImpulseInvariantDesignPath != 0;
  IirForms &analog = digital_path ? r.s_normalized : r.s_unnormalized;
  if (designed) { // an entered system has no prototype
    impulse_invariant_map(r.s_normalized.parallel, r.z_normalized, normalized_step(step));
    list(" Z Domain Normalized: parallel\n", r.z_normalized);
  }
  if (!digital_path) {
    if (!cascade_to_parallel(Domain::s, analog.cascade, analog.parallel) ||
        !cascade_to_pole_zero(Domain::s, analog.cascade, analog.pole_zero))
      return refused(Message::result_not_finite);
    list(" S Domain Unnormalized: parallel\n", analog.parallel);
  }
  double digits = digits_of_sum(analog);
  BandMove move;
  const double theta_p = r.wp * normalized_step(step);
  if (digital_path) {
    move = {[&](std::complex<double> z) { return lowpass_place(r.spec, theta_p, z); },
            [&](std::optional<std::complex<long double>> z) { return moved_places(r.spec, theta_p, z); }};
    digital_transform(r.z_normalized, r.z.parallel, r.spec, theta_p);
    digits = std::min(digits, digits_of_terms(r.z.parallel, [&](Values z) {
                        for (auto &place : z) place = lowpass_place(r.spec, theta_p, place);
                        return impulse_invariant_values(analog.parallel, normalized_step(step), z);
                      }));
  } else {
    impulse_invariant_map(analog.parallel, r.z.parallel, step);
    list(" Z Domain Unnormalized: parallel\n", r.z.parallel);
    digits = std::min(digits, digits_of_terms(r.z.parallel, [&](const Values &z) {
                        return impulse_invariant_values(analog.parallel, step, z);
                      }));
  }
  auto form = RealizationForm::parallel;
  if (digits < enough_digits) {
    const double sampling_step = digital_path ? normalized_step(step) : step;
    if (const auto wide = take_wide_cascade(r, analog.cascade, sampling_step, move, digits)) {
      form = RealizationForm::cascade;
      digits = *wide;
    }
  }
  if (digits < least_digits) return refused(Message::partial_fractions_lost);
  if (digits < enough_digits)
    design_notes.push_back("The partial fractions, of which an impulse-invariant filter is made, keep " +
                           digits_text(digits) + " of the filter.");
  if (!designed)
    if (const auto folded = folding(analog, r.z, r.spec.sampling_frequency))
      design_notes.push_back(formatf(
          "At half the sampling frequency the analog system still has %.1f dB of its largest gain. The "
          "impulse-invariant "
          "transformation folds back what lies above: the digital gain departs by up to %.1f dB, at %.4g %s. The "
          "bilinear transformation folds nothing back.",
          folded->gain_at_half, folded->departure, folded->at * design_state.unit_factor_inverse,
          design_state.FrequencyMode ? "rad/s" : "Hz"));
  cancel_delays(r.z.parallel);
  if (!analog.cascade.keep_gain) regain_parallel(r.z.parallel);
  list(" Z Domain Unnormalized: parallel - regain\n", r.z.parallel);
  return form;
}

} // namespace

double analog_peak(const SectionEntry &analog) {
  const double end = analog.sample_rate / 2;
  std::vector<double> steps(gain_grid_points);
  for (int i = 0; i < gain_grid_points; i++) steps[i] = end * i / (gain_grid_points - 1);
  const auto magnitudes = [&](const std::vector<double> &frequencies) {
    Values s(frequencies.size());
    std::transform(frequencies.begin(), frequencies.end(), s.begin(), [](double w) { return Complex(0, w); });
    std::vector<double> found;
    for (const auto &value : cascade_values(analog, s))
      found.push_back(std::isnan(std::abs(value)) ? 0 : std::abs(value)); // a pole at 0
    return found;
  };
  std::vector<Resonance> poles;
  for (const Complex pole : section_poles(analog)) poles.push_back({std::fabs(pole.imag()), std::fabs(pole.real())});
  const std::vector<double> seen = magnitudes(steps), near_poles = panel_nodes(0, end, poles, analog.order + 8).place;
  const double peak =
      peak_or_missed({*std::max_element(seen.begin(), seen.end()), 0}, near_poles, magnitudes(near_poles), magnitudes)
          .magnitude;
  return std::isfinite(peak) && peak > 0 ? peak : 1;
}

// Every other form, from the one that was made, with notes about those that do not hold it.
static bool complete_forms(RealizationForm source, AcceptPoles accepted) {
  DesignRecord &r = design_record;
  const bool by_sum = source == RealizationForm::parallel, designed = accepted == AcceptPoles::inside_only;
  FormReport found{};
  if (!derive_forms(Domain::z, source, r.z, found) || found.cascade < 0) return refuse(Message::result_not_finite);
  const bool held = holds_in_double(r.z.cascade);
  const double digits = held && !by_sum ? digits_of_coefficients(r.z.cascade) : enough_digits;
  if (designed && (!held || digits < least_digits)) return refuse(Message::poles_on_unit_circle);
  if (digits < enough_digits)
    design_notes.push_back("Poles or zeros lie so near the unit circle that the coefficients hold the response to " +
                           digits_text(digits) + ".");
  const RealizationForm chosen{r.selections.RealizationType};
  const double kept = digits_of(found, chosen);
  if (designed && kept >= 0 && kept < least_digits)
    return refuse(Message::realization_lost, "it keeps " + digits_text(kept) + " of the response");
  note_forms(found, chosen);
  if (by_sum)
    list(" Z Domain Unnormalized: cascaded form\n", r.z.cascade);
  else
    list(" Z Domain Unnormalized: parallel form\n", r.z.parallel);
  list(" Z Domain Unnormalized: pole/zero form\n", r.z.pole_zero);
  list(" Z Domain Unnormalized: ratio form\n", r.z.ratio);
  dump(r.z.lattice);
  dump(r.z.ladder_1);
  dump(r.z.ladder_2);
  return true;
}

// Compensation and equalizer behind the filter's cascade, which is made of its partial fractions where these came
// first.
static bool append_stages(DesignRecord &r, RealizationForm &source, const CompensationPlan &compensation) {
  const bool compensated = is_active(compensation.droop), equalized = r.selections.PhaseEqualizationOption;
  if (!compensated && !equalized) return true;
  if (source == RealizationForm::parallel) {
    int dropped_delay = 0;
    if (!parallel_to_cascade(Domain::z, r.z.parallel, r.z.cascade, dropped_delay))
      return refuse(Message::result_not_finite);
    note_dropped_delay(dropped_delay);
    source = RealizationForm::cascade;
  }
  if (compensated) {
    if (!compensate_cascade(compensation)) return false;
    list(" Z Domain Unnormalized: cascaded - compensation\n", r.z.cascade);
  }
  return !equalized || equalize_phase();
}

static bool digitize(ZTransform method, AcceptPoles accepted, const Prewarp &prewarp,
                     const CompensationPlan &compensation) {
  DesignRecord &r = design_record;
  const bool by_sum = method == ZTransform::impulse_invariant, designed = accepted == AcceptPoles::inside_only;
  RealizationForm source = RealizationForm::cascade;
  if (by_sum) {
    const auto made = map_parallel(r, designed);
    if (!made) return false;
    source = *made;
  } else if (!map_cascade(r, method, prewarp)) {
    return false;
  }
  if (designed && !append_stages(r, source, compensation)) return false;
  return complete_forms(source, accepted);
}

bool digitize_analog(ZTransform method, AcceptPoles accepted, const Prewarp &prewarp) {
  return digitize(method, accepted, prewarp, {});
}

bool design_group_delay_filter() {
  design_record.selections.ZTransformMethod = code(ZTransform::bilinear);
  return design_group_delay() && complete_forms(RealizationForm::cascade, AcceptPoles::inside_only);
}

bool design_iir_sections() {
  DesignRecord &r = design_record;
  const FilterSpec &spec = r.spec;
  const DesignState &selections = r.selections;
  const ZTransform method{selections.ZTransformMethod};
  const AnalogPrototype family{selections.analog_type};
  // A system that was analysed before may have kept its gain there; a design never does.
  for (IirForms *forms : {&r.s_normalized, &r.s_unnormalized, &r.z})
    forms->cascade.keep_gain = forms->parallel.keep_gain = 0;
  if (selections.analog_type < 0 || selections.analog_type >= static_cast<int>(analog_prototypes.size()) ||
      selections.ZTransformMethod < 0 || method >= ZTransform::s_domain_only ||
      spec.type < code(FilterType::low_pass) || spec.type > code(FilterType::band_stop))
    return refuse(Message::method_not_available);
  const double k = iir_selectivity(spec, method);
  if (!(k > 0 && k < 1))
    return refuse(Message::impossible_specification,
                  formatf("the selectivity of its edges is %g, it must lie between 0 and 1", k));
  if (!(spec.passband_ripple > 0 && spec.stopband_ripple > spec.passband_ripple))
    return refuse(Message::impossible_specification, "the stopband attenuation is not above the passband ripple");
  const int order = accepted_order(spec, selections, k);
  if (order == 0) return false;

  const auto compensation = plan_compensation();
  if (!compensation) return false;
  FilterSpec planned = spec;
  planned.passband_ripple = ripple_beside(*compensation, spec.passband_ripple);
  const auto [wp, approximate] = design_analog_prototype(family, planned, method, order, r.s_normalized.cascade);
  r.wp = wp;
  if (approximate)
    design_notes.push_back(
        formatf("The poles of a Bessel prototype above order %d are approximate.", max_refined_bessel_order));
  if (family == AnalogPrototype::elliptic)
    note_elliptic_ripple(prototype_order(static_cast<FilterType>(spec.type), order), k, planned.passband_ripple);
  trace(" S Domain Normalized, wp = %g\n", wp);
  IirForms &normalized = r.s_normalized;
  dump(normalized.cascade);
  keep_if(cascade_to_parallel(Domain::s, normalized.cascade, normalized.parallel), normalized.parallel);
  keep_if(cascade_to_pole_zero(Domain::s, normalized.cascade, normalized.pole_zero), normalized.pole_zero);
  keep_if(cascade_to_ratio(Domain::s, normalized.cascade, normalized.ratio), normalized.ratio);
  keep_if(cascade_to_lattice(Domain::s, normalized.cascade, normalized.lattice), normalized.lattice);
  list(" S Domain Normalized, parallel form\n", normalized.parallel);
  dump(normalized.pole_zero);
  dump(normalized.ratio);
  dump(normalized.lattice);

  transform_analog_lowpass(normalized.cascade, r.s_unnormalized.cascade, spec, method, wp);
  return digitize(method, AcceptPoles::inside_only, {}, *compensation);
}

} // namespace brisel
