// optimal_length.cpp - length formulas for minimax filters, applied to every transition of a specification.
#include "engine/fir/optimal_length.h"

#include "engine/fir/band_setup.h"
#include "engine/fir/length_estimate.h"

#include <algorithm>
#include <cmath>

namespace brisel {

constexpr double largest_fitted_deviation = 0.1;

double kaiser_length(double passband, double stopband, double width) {
  return (-10 * std::log10(passband * stopband) - 13) / (14.6 * width) + 1;
}

double herrmann_length(double passband, double stopband, double width) {
  const double large = std::max(passband, stopband);
  const double small = std::min(passband, stopband);
  if (large > largest_fitted_deviation) return kaiser_length(passband, stopband, width);
  const double p = std::log10(large);
  const double s = std::log10(small);
  const double d_infinity = ((0.005309 * p + 0.07114) * p - 0.4761) * s + ((-0.00266 * p - 0.5941) * p - 0.4278);
  const double f = 11.01217 + 0.51244 * (p - s);
  return d_infinity / width - f * width + 1;
}

// The longest of what the steps between neighbouring bands need, each in parts of its step; without a step, what the
// smallest ripple needs.
static double banded_length(const FilterSpec &spec, double entered_width) {
  const int most = static_cast<FilterType>(spec.type) == FilterType::multiband ? max_bands : max_arbitrary_bands;
  const int bands = std::clamp(spec.band_count, 1, most);
  double length = 0;
  for (int b = 1; b < bands; b++) {
    const double step = step_below_band(spec, b);
    const double lower = spec.band_ripple[b - 1] / step;
    const double upper = spec.band_ripple[b] / step;
    const double gap = entered_width > 0 ? entered_width : spec.band_lower[b] - spec.band_upper[b - 1];
    if (gap > 0 && std::max(lower, upper) < 1) length = std::max(length, herrmann_length(lower, upper, gap / two_pi));
  }
  if (length > 0) return length;
  const double ripple = *std::min_element(spec.band_ripple.begin(), spec.band_ripple.begin() + bands);
  return kaiser_length(ripple, ripple, transition_width(spec, entered_width) / two_pi);
}

// Raised cosines prescribe their transition, which the formulas leave free. The error that a filter of n cosines leaves
// at a kink of slope J is 0.28 J / (2 n) (Bernstein's constant); at a jump J of the second derivative, which the square
// of that curve has at both ends, it was found to be 0.12 J / n^2.
static double curve_length(const BandDeviations &d, double width, bool root) {
  const double pi = std::numbers::pi;
  const double deviation = 2 / (1 / d.passband + 1 / d.stopband);
  const double n = root ? 0.2802 * pi / (4 * width * deviation) : pi / width * std::sqrt(0.12 / (2 * deviation));
  return 2 * n + 1;
}

// The amplitude of a differentiator of odd length is sin w times a polynomial of degree n in cos w, for 2 n + 3 taps,
// and w / sin w goes to infinity at pi. The interval of cos w is the segment between the foci of an ellipse through
// that point, and rho the sum of its half axes: the error falls as rho^-n / sqrt(n) [Bernstein26]. The factor 0.9 was
// found by designing: estimated lengths meet their ripple, most of them with no more than two taps too many.
static double differentiator_length(double lower, double upper, double ripple) {
  const double sine = std::sin(upper / 2), from = std::sin(lower / 2);
  const double log_rho = 2 * std::asinh(std::cos(upper / 2) / std::sqrt((sine - from) * (sine + from)));
  const double wanted = std::log(0.9 / std::min(ripple, 1.0));
  double y = std::max(wanted, 0.5); // n log rho; y + log(y) / 2 = wanted, by Newton
  for (int pass = 0; pass < 8; pass++) y *= (wanted + 0.5 - 0.5 * std::log(y)) / (y + 0.5);
  return 2 * y / log_rho + 3;
}

// One of even length that reaches pi has a kink there, where the desired line turns down again: its error falls only as
// 1 / n. Bernstein's constant gives 0.1784 for the factor; a lower edge shortens the interval of cos w and with it the
// error. The rest makes up for the error between the points of the design grid.
static double full_band_differentiator_length(double lower, double ripple) {
  return 0.181 * std::cos(lower / 2) / ripple + 6;
}

int optimal_length(const FilterSpec &spec, FirSymmetry symmetry, double entered_width) {
  const double pi = std::numbers::pi;
  const BandDeviations d = band_deviations(spec.passband_ripple, spec.stopband_ripple);
  const auto type = static_cast<FilterType>(spec.type);
  const double width = transition_width(spec, entered_width) / two_pi;
  bool passes_half = type == FilterType::high_pass || type == FilterType::band_stop;
  double length = 0;
  switch (type) {
  case FilterType::low_pass:
  case FilterType::high_pass:
  case FilterType::band_pass:
  case FilterType::band_stop:
    length = herrmann_length(d.passband, d.stopband, width);
    break;
  case FilterType::raised_cosine:
  case FilterType::root_raised_cosine:
    length = std::max(herrmann_length(d.passband, d.stopband, width),
                      curve_length(d, two_pi * width, type == FilterType::root_raised_cosine));
    break;
  case FilterType::differentiator:
  case FilterType::hilbert: {
    passes_half = pi - spec.passband_edge[1] < 1e-9;
    const double ripple = spec.passband_ripple / 100;
    // An antisymmetric amplitude crosses zero from the desired value to its negative: twice the gap wide, with half the
    // relative deviation.
    if (type == FilterType::hilbert)
      length = herrmann_length(ripple / 2, ripple / 2, 2 * width);
    else if (passes_half)
      length = full_band_differentiator_length(spec.passband_edge[0], ripple);
    else
      length = differentiator_length(spec.passband_edge[0], spec.passband_edge[1], ripple);
    break;
  }
  case FilterType::multiband:
  case FilterType::arbitrary_magnitude:
    length = banded_length(spec, entered_width);
    break;
  case FilterType::half_band: {
    const double deviation = std::pow(10, -spec.stopband_ripple / 20);
    length = herrmann_length(deviation, deviation, width);
    break;
  }
  case FilterType::arbitrary_group_delay:
    break;
  }
  // Compared as doubles: a vanishing transition gives infinity, ripples beyond 1 large negative numbers.
  if (!(length < longest_estimate)) return longest_estimate;
  int taps = static_cast<int>(std::ceil(std::max<double>(min_taps, length)));
  if (type == FilterType::half_band) return std::min(longest_estimate, taps + (3 - taps % 4 + 4) % 4);
  const bool even = symmetry == FirSymmetry::antisymmetric && passes_half;
  if ((taps % 2 == 0) != even) taps++;
  return taps;
}

} // namespace brisel
