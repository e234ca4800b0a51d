// response_arrays.h - where the response kernels put their results, and the rules that all of them share.
#pragma once

#include <cmath>
#include <complex>
#include <numbers>
#include <span>

namespace brisel {

/// A sum this small against the magnitudes of its terms is nothing but their rounding. Its logarithmic derivative would
/// give a group delay of any size, where a filter has a zero on the unit circle; such a point repeats the one before.
inline constexpr double rounding_floor = 1e-14;

/// As many values each as the frequency grid has points.
struct FrequencyResponse {
  std::span<double> magnitude;
  std::span<double> phase;       // radians, principal value
  std::span<double> group_delay; // seconds

  /// A point where the response vanishes repeats the phase (and, where a form says so, the group delay) before it.
  void repeat_phase(std::size_t i) const { phase[i] = i > 0 ? phase[i - 1] : 0; }
  void repeat_group_delay(std::size_t i) const { group_delay[i] = i > 0 ? group_delay[i - 1] : 0; }
  /// Magnitude and phase of `factor` times the response; a negative one turns the phase by pi.
  void set(std::size_t i, std::complex<double> response, double factor) const {
    magnitude[i] = std::abs(response) * std::abs(factor);
    if (std::signbit(factor)) response = -response;
    if (magnitude[i] != 0)
      phase[i] = std::atan2(response.imag(), response.real());
    else
      repeat_phase(i);
  }
};

/// Both of the same size: the number of samples to compute.
struct TimeResponse {
  std::span<double> impulse;
  std::span<double> step;
};

/// Keeps the samples of an unstable recursion finite; an undefined value becomes the lower limit.
template <class Real> Real clamp_sample(Real y) {
  constexpr double limit = 1e30;
  if (y > limit) return limit;
  return y >= -limit ? y : Real(-limit);
}

} // namespace brisel
