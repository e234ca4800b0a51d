// droop_probe.h - the droops that are compensated, from their impulse responses instead of their closed forms.
#pragma once

#include "engine/fir/compensation.h"
#include "section_probe.h"

#include <cmath>
#include <numbers>

namespace brisel {

/// Gain at `w` radians per sample of what stands before or behind the filter.
/// Hold: the integral of e^(-jwt) over one sample, by the mean of many short steps. Comb: at the rate of its input, R
/// times that of the filter, every stage is the mean of R D samples.
inline long double droop_gain(const Compensation &droop, long double w) {
  if (!is_active(droop)) return 1;
  const bool hold = droop.type == CompensationCurve::sinc;
  // The mean of n points over a sample falls as sin(w/2) / (n sin(w/2n)): 500 are the integral to 2e-6, or 2e-5 dB.
  const int points = hold ? 500 : droop.rate_change * droop.differential_delay;
  const long double step = w / (hold ? points : droop.rate_change);
  Probe sum = 0;
  for (int i = 0; i < points; i++) sum += std::polar(1.0L, step * i);
  return std::pow(std::abs(sum) / points, hold ? 1 : droop.stages);
}

inline long double decibels(long double ratio) {
  return 20 * std::log10(ratio);
}

} // namespace brisel
