// length_estimate.cpp - window lengths from attenuation and transition width, by Kaiser's formula and fits of its kind.
//
// [Kaiser74] J. F. Kaiser, Nonrecursive digital filter design using the I0-sinh window function, Proc. ISCAS (1974).
#include "engine/fir/length_estimate.h"

#include "engine/fir/desired_response.h"
#include "engine/fir/halfband.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace brisel {

double multiband_attenuation(const FilterSpec &spec) {
  double smallest = std::numeric_limits<double>::infinity();
  for (int b = 0; b < std::clamp(spec.band_count, 0, max_bands); b++)
    smallest = std::min(smallest, spec.band_ripple[b]);
  return -20 * std::log10(smallest);
}

/// Attenuation that one ripple allowed in both bands stands for, dB.
static double effective_attenuation(const FilterSpec &spec) {
  if (spec.type == code(FilterType::multiband)) return multiband_attenuation(spec);
  const double passband_db = spec.passband_ripple > 0 ? spec.passband_ripple : 0.01;
  const double stopband_db = spec.stopband_ripple > 0 ? spec.stopband_ripple : 40;
  const double passband = 1 - std::pow(10, -passband_db / 20);
  const double stopband = 2 * std::pow(10, -stopband_db / 20) / (2 - passband);
  return -20 * std::log10(stopband);
}

constexpr double none = std::numeric_limits<double>::infinity();

/// The narrowest gap in which the desired gain has a step to make. Bands that touch leave no room for one.
static double narrowest_transition(const FilterSpec &spec, int most_bands) {
  double narrowest = none;
  for (int b = 1; b < std::min(spec.band_count, most_bands); b++) {
    const double gap = spec.band_lower[b] - spec.band_upper[b - 1];
    if (gap > 0 && gap < narrowest && step_below_band(spec, b) > 0) narrowest = gap;
  }
  return narrowest;
}

double transition_width(const FilterSpec &spec, double entered) {
  const auto &pass = spec.passband_edge, &stop = spec.stopband_edge;
  const double half_rate = spec.sampling_frequency / 2;
  const auto nonzero = [](double width) { return width > 0 ? width : none; };
  double width = none;
  switch (static_cast<FilterType>(spec.type)) {
  case FilterType::low_pass:
  case FilterType::high_pass:
  case FilterType::raised_cosine:
  case FilterType::root_raised_cosine:
    return std::abs(stop[0] - pass[0]);
  case FilterType::half_band:
    return std::abs(halfband_stopband_edge(spec) - pass[0]);
  case FilterType::band_pass:
  case FilterType::band_stop:
    return std::min(std::abs(stop[0] - pass[0]), std::abs(stop[1] - pass[1]));
  case FilterType::multiband:
    width = narrowest_transition(spec, max_bands);
    break;
  case FilterType::differentiator:
  case FilterType::hilbert:
    width = entered > 0 ? entered : std::min(nonzero(pass[0]), nonzero(half_rate - pass[1]));
    break;
  case FilterType::arbitrary_magnitude:
    width = entered > 0 ? entered : narrowest_transition(spec, max_arbitrary_bands);
    break;
  case FilterType::arbitrary_group_delay:
    break;
  }
  return width < none ? width : 0.05 * spec.sampling_frequency;
}

std::string length_text(int estimate) {
  return std::to_string(estimate) + (estimate == longest_estimate ? " or more" : "");
}

/// Whole, odd and at least 3; what an integer cannot hold becomes the longest estimate.
static int adjusted(double length) {
  const double whole = std::trunc(length);
  if (!(whole >= 0 && whole <= std::numeric_limits<int>::max())) return longest_estimate;
  return std::max(static_cast<int>(whole), 3) | 1;
}

void fir_length_estimate(const FilterSpec &spec, std::array<int, offered_window_count> &lengths, double entered_width) {
  const double attenuation = effective_attenuation(spec);
  const double ratio = spec.sampling_frequency / transition_width(spec, entered_width);
  /// Length factor of codes 14 to 17: a line over the attenuation, or what it is for up to 21 dB; then an addition.
  struct Line {
    double slope, offset, low_attenuation, addition;
  };
  constexpr std::array lines{
      Line{1 / 14.36, -7.95 / 14.36, 0.9222, 2.5}, // [Kaiser74]
      Line{0.06962, -0.45528, 1.2, 2.5},
      Line{0.0696, -0.47443, 0.955, 2.5},
      Line{0.06964, -0.48398, 0.99, 1.5},
  };
  for (std::size_t window = 0; window < lengths.size(); window++) {
    if (window < kaiser_window) {
      lengths[window] = adjusted(windows[window].length_factor * ratio);
      continue;
    }
    const Line &line = lines[window - kaiser_window];
    const double factor = attenuation <= 21 ? line.low_attenuation : line.slope * attenuation + line.offset;
    lengths[window] = adjusted(ratio * factor + line.addition);
  }
  // A raised cosine is designed without a window; its length is Kaiser's all the same.
  if (spec.type >= code(FilterType::raised_cosine)) lengths[rectangular_window] = lengths[kaiser_window];
}

} // namespace brisel
