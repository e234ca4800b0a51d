#include "engine/fir/minimum_phase_design.h"

#include "engine/core/front_end.h"
#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "engine/fir/minimum_phase.h"
#include "engine/fir/peak_gain.h"
#include "engine/fir/unfold.h"

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

// The square of a stopband of more than this is lost in the rounding of the taps.
constexpr double max_factored_attenuation_db = 120;

constexpr bool is_spectral(MinimumPhaseType type) {
  return type == MinimumPhaseType::spectral_factor;
}

std::optional<std::string> factor_refusal(const FilterSpec &spec, const DesignState &selections) {
  switch (static_cast<FilterType>(spec.type)) {
  case FilterType::differentiator:
    return "a differentiator has no spectral factor: its response changes its sign at 0";
  case FilterType::arbitrary_magnitude:
    return "an arbitrary magnitude has no spectral factor design; the DFT method keeps the magnitude";
  case FilterType::root_raised_cosine:
    return "choose a raised cosine filter: its spectral factor is the root raised cosine";
  case FilterType::multiband:
    for (int b = 0; b < spec.band_count; b++)
      if (spec.band_value[static_cast<std::size_t>(b)] < 0)
        return formatf("the desired value of band %d is negative, which has no root", b + 1);
    break;
  case FilterType::half_band:
  case FilterType::raised_cosine:
    break;
  default:
    if (spec.stopband_ripple > max_factored_attenuation_db)
      return formatf("a spectral factor holds at most %g dB of stopband attenuation", max_factored_attenuation_db);
    break;
  }
  if (selections.CompensationOption) return "a compensated response has no spectral factor design; use the DFT method";
  const bool has_symmetry = selections.DesignOrAnalysisType != code(DesignMethod::window);
  if (has_symmetry && selections.symmetry == code(FirSymmetry::antisymmetric))
    return "antisymmetric taps have no spectral factor";
  return std::nullopt;
}

// Taps of the linear phase filter for `taps` of minimum phase.
int linear_phase_length(int taps, MinimumPhaseType type) {
  return is_spectral(type) ? 2 * taps - 1 : taps;
}

std::string length_limit(MinimumPhaseType type) {
  return formatf("a minimum phase filter by this method has at most %d taps",
                 is_spectral(type) ? (max_minimum_phase_taps + 1) / 2 : max_minimum_phase_taps);
}

} // namespace

std::optional<std::string> minimum_phase_refusal(const FilterSpec &spec, const DesignState &selections) {
  const MinimumPhaseType type{selections.MinimumPhaseType};
  if (type == MinimumPhaseType::none) return std::nullopt;
  if (spec.type == code(FilterType::hilbert)) return "a Hilbert transformer is its phase; nothing of it would be left";
  if (spec.length > max_taps || linear_phase_length(spec.length, type) > max_minimum_phase_taps)
    return formatf("%d taps are asked for, ", spec.length) + length_limit(type);
  return is_spectral(type) ? factor_refusal(spec, selections) : std::nullopt;
}

FilterSpec linear_phase_spec(const FilterSpec &spec, MinimumPhaseType type) {
  FilterSpec out = spec;
  if (!is_spectral(type)) return out;
  if (spec.length > 0) out.length = linear_phase_length(spec.length, type);
  switch (static_cast<FilterType>(spec.type)) {
  case FilterType::low_pass:
  case FilterType::high_pass:
  case FilterType::band_pass:
  case FilterType::band_stop:
    out.passband_ripple = 2 * spec.passband_ripple;
    out.stopband_ripple = 2 * spec.stopband_ripple + 20 * std::log10(2.0);
    break;
  case FilterType::multiband:
    for (std::size_t b = 0; b < static_cast<std::size_t>(spec.band_count); b++) {
      const double value = spec.band_value[b], ripple = spec.band_ripple[b];
      out.band_value[b] = value * value;
      out.band_ripple[b] = value == 0       ? ripple * ripple / 2
                           : ripple < value ? ripple * (2 * value - ripple)
                                            : value * value;
    }
    break;
  default: // Nyquist filters: the factor is one of the two halves of which they are made
    break;
  }
  return out;
}

bool convert_to_minimum_phase() {
  DesignRecord &r = design_record;
  const MinimumPhaseType type{r.selections.MinimumPhaseType};
  FirEntry &designed = r.fir_designed, &whole = r.fir; // the working entry is filled later
  trace("\n Minimum phase: %s\n", minimum_phase_types[code(type)].name.data());
  if (designed.length > max_minimum_phase_taps) {
    post_message(Message::length_out_of_limits,
                 formatf("the linear phase filter needs %d taps, ", designed.length) + length_limit(type));
    return false;
  }
  fir_entry_unfold(designed, whole);
  const std::span<const double> taps(whole.coeff.data(), static_cast<std::size_t>(whole.length));
  const bool symmetric = whole.fir_type == code(FirSymmetry::symmetric);
  if (is_spectral(type)) {
    const auto [smallest, largest] = amplitude_range(taps);
    if (-smallest > largest / 2) {
      post_message(Message::minimum_phase_refused,
                   formatf("the response of the linear phase filter reaches from %.6g to %.6g, too far below zero for "
                           "a root",
                           smallest, largest));
      return false;
    }
  }
  const auto found = is_spectral(type) ? spectral_factor(taps, go_on) : minimum_phase(taps, symmetric, go_on);
  if (stop_asked) return false;
  if (!found) {
    post_message(Message::minimum_phase_refused,
                 formatf("the magnitude is not reached to %g of its peak", minimum_phase_tolerance));
    return false;
  }
  const int length = static_cast<int>(found->taps.size());
  if (is_spectral(type)) { // whose ripples are not those that the method told of
    for (std::string &note : design_notes) note = "Linear phase filter: " + note;
    design_notes.push_back(formatf("The squared magnitude of these %d taps is the response of a linear phase filter of "
                                   "%d taps, raised by %.3g so that it is nowhere negative.",
                                   length, whole.length, found->raise));
  } else {
    design_notes.push_back(formatf("The magnitude is that of the linear phase filter to %.1g of its peak.",
                                   std::max(found->error, 1e-16)));
  }
  if (r.spec.type == code(FilterType::differentiator))
    design_notes.push_back("Minimum phase keeps the magnitude of a differentiator, not its phase of 90 degrees.");
  const bool half_of_nyquist =
      r.spec.type == code(FilterType::half_band) || r.spec.type == code(FilterType::raised_cosine);
  if (is_spectral(type) && half_of_nyquist)
    design_notes.push_back("It is one of the two halves of the Nyquist filter asked for: both together have its ripple "
                           "and attenuation, each alone has about half of them in dB.");
  designed.length = length;
  designed.odd_length = length % 2;
  designed.unique_count = length;
  designed.has_window = rectangular_window;
  designed.fir_type = code(FirSymmetry::nonsymmetric);
  std::copy(found->taps.begin(), found->taps.end(), designed.coeff.begin());
  dump(designed);
  return true;
}

void set_maximum_gain() {
  FirEntry &designed = design_record.fir_designed, &whole = design_record.fir;
  fir_entry_unfold(designed, whole);
  const double peak = peak_gain({whole.coeff.data(), static_cast<std::size_t>(whole.length)});
  if (!(peak > 0) || !std::isfinite(1 / peak)) return; // nothing to scale; refused further on
  for (double &h : std::span(designed.coeff).first(static_cast<std::size_t>(designed.length))) h /= peak;
  trace("\n Maximum gain: %20.12e, set to 1\n", peak);
}

} // namespace brisel
