// window_design.cpp - the window method: ideal response, window, and what the user should know about the result.
#include "engine/fir/window_design.h"

#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "engine/fir/desired_response.h"
#include "engine/fir/forced_zeros.h"
#include "engine/fir/halfband.h"
#include "engine/fir/ideal_response.h"
#include "engine/fir/length_estimate.h"
#include "engine/fir/run_selections.h"
#include "engine/fir/windows.h"

#include <unsupported/Eigen/FFT>

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <numbers>
#include <span>
#include <vector>

namespace brisel {

double window_attenuation(const FilterSpec &spec) {
  switch (static_cast<FilterType>(spec.type)) {
  case FilterType::differentiator:
  case FilterType::hilbert:
  case FilterType::arbitrary_magnitude:
    return 60;
  case FilterType::multiband:
    return multiband_attenuation(spec);
  default:
    return spec.stopband_ripple;
  }
}

/// The length to design; nothing, after a message, when it is out of limits.
static std::optional<int> design_length(const FilterSpec &spec) {
  int length = spec.length;
  const char *origin = "asked for";
  if (length == 0) {
    if (spec.window_type >= offered_window_count) {
      post_message(Message::length_out_of_limits, formatf("there is no length estimate for the %s window",
                                                          std::string(windows[spec.window_type].name).c_str()));
      return std::nullopt;
    }
    const double rate = design_record.loaded.sampling_frequency;
    const double entered = rate > 0 ? design_record.selections.transition_width * two_pi / rate : 0;
    std::array<int, offered_window_count> lengths;
    fir_length_estimate(spec, lengths, entered);
    length = lengths[spec.window_type];
    origin = "estimated";
  }
  const bool raised = spec.type == code(FilterType::half_band) && length % 2 == 0;
  if (length < min_taps || length > max_taps - raised) {
    post_message(Message::length_out_of_limits, formatf("%d taps are %s", length, origin));
    return std::nullopt;
  }
  if (raised)
    design_notes.push_back(formatf("A halfband filter has an odd length: %d was raised to %d.", length, length + 1));
  return length + raised;
}

/// Largest deviation of the halfband filter from 1 in its passband, which is also its largest gain in the stopband.
/// The lowpass G of which it was made is seen on a grid of at least sixteen points a ripple, H = 1/2 + G/2.
static double halfband_deviation(const FirEntry &entry, double passband_edge) {
  const int count = halfband_prototype_length(entry.length) / 2;
  const auto tap = [&](int k) { return entry.coeff[2 * k + 1] * entry.window[2 * k + 1]; };
  const std::size_t points = std::bit_ceil(static_cast<std::size_t>(count) * 32);
  std::vector<double> taps(points);
  for (int k = 0; k < count; k++) taps[k] = tap(k);
  std::vector<std::complex<double>> spectrum;
  Eigen::FFT<double> fft;
  fft.SetFlag(Eigen::FFT<double>::HalfSpectrum);
  fft.fwd(spectrum, taps);
  const double centre = entry.coeff[0] * entry.window[0];
  double at_edge = centre; // the edge itself lies between two points
  for (int k = 0; k < count; k++) at_edge += 2 * tap(k) * std::cos((2 * k + 1) * passband_edge);
  double deviation = std::abs(1 - at_edge);
  for (std::size_t i = 0; i < spectrum.size(); i++) {
    const double w = std::numbers::pi * static_cast<double>(i) / static_cast<double>(points); // of H; G runs at 2w
    if (w > passband_edge) break;
    const double h = centre + 2 * (spectrum[i] * std::polar(1.0, -w)).real();
    deviation = std::max(deviation, std::abs(1 - h));
  }
  return deviation;
}

static void note_halfband_miss(const FilterSpec &spec, bool compensated, const FirEntry &entry) {
  const double reached = -20 * std::log10(halfband_deviation(entry, spec.passband_edge[0]));
  if (reached >= spec.stopband_ripple) return;
  std::string note = formatf("The stopband of the halfband filter is down %.1f dB, %.1f dB less than asked for. ",
                             reached, spec.stopband_ripple - reached);
  note += compensated ? "It is the image of the passband: what the compensation adds there comes back here. Compensate "
                        "with a lowpass filter instead."
                      : "The window method places the cutoff of a halfband filter only roughly; the equiripple method "
                        "does better with the same length.";
  design_notes.push_back(note);
}

/// The square root of a raised cosine ends in a slope without bound, which a window follows only slowly.
static void note_root_raised_cosine_miss(const FilterSpec &spec, const FirEntry &entry) {
  const double edge = spec.stopband_edge[0], offset = entry.odd_length ? 0 : 0.5;
  double gain = entry.odd_length ? -entry.coeff[0] * entry.window[0] : 0; // the centre is there once only
  for (int k = 0; k < entry.unique_count; k++)
    gain += 2 * entry.coeff[k] * entry.window[k] * std::cos((k + offset) * edge);
  const double reached = -20 * std::log10(std::abs(gain));
  if (edge > std::numbers::pi || reached >= spec.stopband_ripple) return;
  design_notes.push_back(
      formatf("At the edge of its stopband the root raised cosine filter is down %.1f dB, %.1f dB less "
              "than asked for: so steep an end takes the window method very many taps. The "
              "equiripple method needs fewer.",
              reached, spec.stopband_ripple - reached));
}

/// Kept: without a centre tap a highpass or bandstop filter of even length comes out inverted.
static void note_inverted(const FilterSpec &spec, bool compensated, const FirEntry &entry) {
  const auto type = static_cast<FilterType>(spec.type);
  const bool high_pass = type == FilterType::high_pass;
  if (entry.odd_length || compensated || (!high_pass && type != FilterType::band_stop)) return;
  design_notes.push_back(formatf("The response of this %s is that of the %s, inverted: it does not do its work.",
                                 high_pass ? "highpass filter" : "bandstop filter",
                                 high_pass ? "lowpass with the same cutoff" : "bandpass with the same cutoffs"));
}

/// The ideal gain of a differentiator falls to 0 at its edges; the filter passes through the middle of that fall.
static void note_differentiator_edges(const FilterSpec &spec) {
  if (spec.type != code(FilterType::differentiator)) return;
  std::string edges;
  if (spec.passband_edge[0] > 0) edges = in_users_unit(spec.passband_edge[0]);
  if (spec.passband_edge[1] < std::numbers::pi)
    edges += (edges.empty() ? "" : " and ") + in_users_unit(spec.passband_edge[1]);
  if (edges.empty()) return;
  design_notes.push_back("The window method gives a differentiator half of the gain asked for at " + edges +
                         ", whatever its length. The equiripple method keeps the ripple up to the edges.");
}

/// Bands without a gap between them whose gains differ.
static void note_jump(const FilterSpec &spec) {
  if (const auto b = band_that_jumps(spec))
    design_notes.push_back(formatf("Bands %d and %d touch and their gains differ there: at the common edge the filter "
                                   "has the mean of both, whatever its length. Leave a gap between the bands.",
                                   *b, *b + 1));
}

/// At the high trace level, what stands for numerical integrals: taps without the factor 1/pi.
static void trace_integrals(const FilterSpec &spec, const Compensation &compensation, std::span<const double> taps) {
  const auto type = static_cast<FilterType>(spec.type);
  const bool integrated = is_active(compensation) || type == FilterType::arbitrary_magnitude ||
                          type == FilterType::raised_cosine || type == FilterType::root_raised_cosine;
  if (trace_on < 2 || !integrated) return;
  for (const double tap : taps) trace(" integraten = % 20.15e\n", tap * std::numbers::pi);
}

bool fir_window_design(const FilterSpec &spec, FirEntry &entry) {
  const bool known_type =
      spec.type >= 0 && spec.type < filter_type_count && spec.type != code(FilterType::arbitrary_group_delay);
  if (!known_type) {
    post_message(Message::method_not_available, "window method");
    return false;
  }
  if (spec.window_type < 0 || spec.window_type >= static_cast<int>(windows.size())) {
    post_message(Message::setting_out_of_limits, formatf("there is no window of code %d", spec.window_type));
    return false;
  }
  const auto compensation = selected_compensation();
  if (!compensation) return false;
  const auto length = design_length(spec);
  if (!length) return false;
  if (const auto pole = compensation_pole(spec, *compensation)) {
    post_message(Message::compensation_null, "the comb has a null at " + in_users_unit(*pole));
    return false;
  }

  const bool halfband = spec.type == code(FilterType::half_band);
  entry.length = halfband ? halfband_prototype_length(*length) : *length;
  entry.unique_count = (entry.length + 1) / 2;
  entry.odd_length = entry.length & 1;
  entry.fir_type = code(antisymmetric_by_default(spec.type) ? FirSymmetry::antisymmetric : FirSymmetry::symmetric);
  entry.has_window = spec.window_type;
  entry.sample_rate = spec.sampling_frequency;
  entry.gain = 1;
  entry.shift = 0;
  const auto taps = std::span(entry.coeff).first(entry.unique_count);
  ideal_response(spec, *compensation, antisymmetric_by_default(spec.type), entry.length, taps);
  trace_integrals(spec, *compensation, taps);
  // Kept: the lowpass of a halfband filter has its cutoff in the middle of its own transition, not at pi, so the
  // halfband response is 1/2 around half of half the sampling frequency and a longer filter does not narrow that.
  if (halfband) halfband_fold(entry, *length);
  make_window(spec.window_type, entry.length, window_attenuation(spec),
              std::span(entry.window).first(entry.unique_count));
  for (int k = 0; k < entry.unique_count; k++)
    if (!std::isfinite(entry.coeff[k] * entry.window[k])) {
      post_message(Message::result_not_finite, formatf("tap %d from the centre", k));
      return false;
    }

  note_jump(spec);
  note_differentiator_edges(spec);
  for (std::string &note : forced_zero_notes(spec, FirSymmetry{entry.fir_type}, entry.odd_length))
    design_notes.push_back(std::move(note));
  note_inverted(spec, is_active(*compensation), entry);
  if (spec.type == code(FilterType::root_raised_cosine)) note_root_raised_cosine_miss(spec, entry);
  if (halfband) note_halfband_miss(spec, is_active(*compensation), entry);
  trace("\n Fir Filter Design\n");
  dump(entry);
  return true;
}

} // namespace brisel
