// ideal_response.cpp - each FIR type as an amplitude over frequency, and its taps.
//
// A symmetric half response h has the amplitude A(w) = h(0) + 2 sum h(k) cos(kw), an antisymmetric one
// 2 sum h(k) sin(kw) (half-integer k when the length is even), so the taps are 1/pi times the integral of A(w) cos(kw)
// or A(w) sin(kw) from 0 to pi. For a band of gain 1 that is (sin(k w2) - sin(k w1)) / (k pi).
#include "engine/fir/ideal_response.h"

#include "engine/core/code_tables.h"
#include "engine/fir/desired_response.h"
#include "engine/fir/fourier_taps.h"
#include "engine/fir/halfband.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace brisel {

static constexpr double pi = std::numbers::pi;

namespace {

/// A piece of the ideal amplitude, not yet compensated.
struct IdealStretch {
  double lower;
  double upper;
  double lower_gain = 1;
  double upper_gain = 1;
  double (*curve)(double w, double passband_edge, double stopband_edge) = nullptr; // in place of the straight line
  double curve_end = 0; // its stopband edge; its passband edge is `lower`

  double operator()(double w) const {
    if (curve) return curve(w, lower, curve_end);
    return std::lerp(lower_gain, upper_gain, (w - lower) / (upper - lower));
  }
};

/// Straight lines of a band's magnitude table over the stretch that the band answers for.
void add_table(const MagnitudeTable &table, double lower, double upper, std::vector<IdealStretch> &out) {
  double from = lower;
  for (int i = 0; i <= table.count; i++) {
    const double to = i < table.count ? std::clamp(table.frequency[i], from, upper) : upper;
    if (to > from) {
      // The gain just inside both ends: at a step of the table the two sides differ.
      const double first = i == 0 ? table.gain[0] : interpolate(table, from);
      const double last = i == table.count          ? table.gain[i - 1]
                          : to < table.frequency[i] ? interpolate(table, to)
                                                    : table.gain[i];
      out.push_back({from, to, first, last});
    }
    from = to;
  }
}

struct Band {
  double lower;
  double upper;
};
/// The band that types 0 and 2 pass and types 1 and 3 stop, its cutoffs in the middle of the transitions; with two
/// transitions half the narrower one away from the passband edges.
Band selected_band(const FilterSpec &spec) {
  const auto &pass = spec.passband_edge, &stop = spec.stopband_edge;
  const auto type = static_cast<FilterType>(spec.type);
  if (type == FilterType::low_pass || type == FilterType::high_pass) return {0, (pass[0] + stop[0]) / 2};
  const double half_transition = std::min(std::abs(stop[0] - pass[0]), std::abs(stop[1] - pass[1])) / 2;
  const double outward = type == FilterType::band_pass ? half_transition : -half_transition;
  return {pass[0] - outward, pass[1] + outward};
}

/// What the type asks for where its amplitude is not 0.
std::vector<IdealStretch> ideal_amplitude(const FilterSpec &spec) {
  const double edge = spec.passband_edge[0], stop = spec.stopband_edge[0];
  const auto [lower, upper] = selected_band(spec);
  switch (static_cast<FilterType>(spec.type)) {
  case FilterType::low_pass:
  case FilterType::band_pass:
    return {{lower, upper}};
  case FilterType::high_pass:
  case FilterType::band_stop:
    return {{0, lower}, {upper, pi}};
  case FilterType::differentiator:
    return {{edge, spec.passband_edge[1], spec.slope * edge, spec.slope * spec.passband_edge[1]}};
  case FilterType::hilbert:
    return {{0, pi}};
  case FilterType::multiband: {
    const BandStretches bands = band_stretches(spec);
    std::vector<IdealStretch> result;
    for (int b = 0; b < bands.count; b++)
      result.push_back({bands.edge[b], bands.edge[b + 1], spec.band_value[b], spec.band_value[b]});
    return result;
  }
  case FilterType::arbitrary_magnitude: {
    const BandStretches bands = band_stretches(spec);
    std::vector<IdealStretch> result;
    for (int b = 0; b < std::min(bands.count, max_arbitrary_bands); b++)
      add_table(magnitude_table(spec, b), bands.edge[b], bands.edge[b + 1], result);
    return result;
  }
  case FilterType::half_band: // of its lowpass, whose cutoff lies between twice the passband edge and pi
    return {{0, edge + pi / 2}};
  case FilterType::raised_cosine:
    return {{0, edge}, {edge, std::min(stop, pi), 0, 0, raised_cosine, stop}};
  case FilterType::root_raised_cosine:
    return {{0, edge}, {edge, std::min(stop, pi), 0, 0, root_raised_cosine, stop}};
  case FilterType::arbitrary_group_delay:
    break;
  }
  return {};
}

bool is_empty(const IdealStretch &s) {
  return !(s.lower < s.upper) || (!s.curve && s.lower_gain == 0 && s.upper_gain == 0);
}

} // namespace

bool antisymmetric_by_default(int filter_type) {
  return filter_type == code(FilterType::differentiator) || filter_type == code(FilterType::hilbert);
}

void lowpass_ideal(double fs, double passband_edge, double stopband_edge, int length, std::span<double> half) {
  std::vector<LegendreStretch> passband;
  add_line(passband, 0, (passband_edge + stopband_edge) / 2 * (two_pi / fs), 1, 1);
  std::ranges::fill(half, 0);
  add_fourier_taps(passband, TapSymmetry::cosine, length % 2, half);
}

std::optional<double> compensation_pole(const FilterSpec &spec, const Compensation &compensation) {
  std::optional<double> lowest;
  // The lowpass of a halfband filter runs at half the rate: its w is half of that for the filter.
  const double rate = spec.type == code(FilterType::half_band) ? 0.5 : 1;
  for (const IdealStretch &s : ideal_amplitude(spec))
    if (!is_empty(s))
      if (const auto null = comb_null(compensation, s.lower * rate, s.upper * rate))
        lowest = std::min(lowest.value_or(*null), *null);
  return lowest;
}

/// 2/(k pi) at odd k and exactly 0 at even k; 1/(t pi) at half-integer t.
static void hilbert_ideal(bool odd_length, std::span<double> half) {
  for (std::size_t k = 0; k < half.size(); k++) {
    const double t = static_cast<double>(k);
    half[k] = !odd_length ? 1 / ((t + 0.5) * pi) : k % 2 ? 2 / (t * pi) : 0;
  }
}

/// Appends the compensated amplitude of the type.
static void add_ideal(const FilterSpec &spec, const Compensation &compensation, std::vector<LegendreStretch> &out) {
  const double steepness = compensation.type == CompensationCurve::comb ? compensation.stages : 1;
  for (const IdealStretch &s : ideal_amplitude(spec)) {
    if (is_empty(s)) continue;
    if (!is_active(compensation) && !s.curve) {
      add_line(out, s.lower, s.upper, s.lower_gain, s.upper_gain);
    } else if (spec.type == code(FilterType::half_band)) {
      const auto gain = [&](double w) { return halfband_prototype_gain(compensation_factor(compensation, w / 2)); };
      add_smooth(out, s.lower, s.upper, gain, steepness);
    } else {
      const auto gain = [&](double w) { return s(w) * compensation_factor(compensation, w); };
      add_smooth(out, s.lower, s.upper, gain, steepness);
    }
  }
}

void ideal_response(const FilterSpec &spec, const Compensation &compensation, bool antisymmetric, int length,
                    std::span<double> half) {
  const bool odd = length % 2;
  const auto type = static_cast<FilterType>(spec.type);
  const bool compensated = is_active(compensation);
  const TapSymmetry symmetry = antisymmetric ? TapSymmetry::sine : TapSymmetry::cosine;
  std::ranges::fill(half, 0);
  if (!compensated) {
    if (type == FilterType::low_pass && !antisymmetric)
      return lowpass_ideal(two_pi, spec.passband_edge[0], spec.stopband_edge[0], length, half);
    if (type == FilterType::hilbert && antisymmetric) return hilbert_ideal(odd, half);
  }

  // Kept: a symmetric highpass or bandstop is a centre tap of 1 less the lowpass or bandpass of its stopband. An even
  // length has no centre tap, so what remains is that lowpass or bandpass with its sign inverted: the filter passes
  // what it should stop.
  std::vector<LegendreStretch> stretches;
  if (!compensated && !antisymmetric && (type == FilterType::high_pass || type == FilterType::band_stop)) {
    const auto [lower, upper] = selected_band(spec);
    add_line(stretches, lower, upper, -1, -1);
    if (odd) half[0] = 1;
  } else {
    add_ideal(spec, compensation, stretches);
  }
  add_fourier_taps(stretches, symmetry, odd, half);
  // Kept: the antisymmetric highpass and bandpass turn the phase the other way than the Hilbert transformer.
  if (antisymmetric && (type == FilterType::high_pass || type == FilterType::band_pass))
    for (double &tap : half) tap = -tap;
}

} // namespace brisel
