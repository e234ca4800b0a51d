// response_references.h - responses summed term by term in long double, for comparison.
#pragma once

#include "engine/analysis/response_arrays.h"

#include <cmath>
#include <complex>
#include <numbers>
#include <random>
#include <span>
#include <vector>

namespace brisel {

using Wide = std::complex<long double>;
inline constexpr long double wide_two_pi = 2 * std::numbers::pi_v<long double>;

/// Sum of c[k] e^(-j k w).
inline Wide direct_sum(std::span<const double> c, long double w) {
  Wide sum = 0;
  for (std::size_t k = 0; k < c.size(); ++k) {
    const long double angle = std::fmod(w * static_cast<long double>(k), wide_two_pi);
    sum += static_cast<long double>(c[k]) * Wide(std::cos(angle), -std::sin(angle));
  }
  return sum;
}

inline std::vector<double> random_values(std::size_t count, unsigned seed) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> uniform(-1, 1);
  std::vector<double> values(count);
  for (double &v : values) v = uniform(generator);
  return values;
}

/// Arrays of a response with views of them.
struct FrequencyArrays {
  explicit FrequencyArrays(std::size_t n) : magnitude(n), phase(n), group_delay(n) {}
  FrequencyResponse view() { return {magnitude, phase, group_delay}; }
  std::complex<double> at(std::size_t i) const { return std::polar(magnitude[i], phase[i]); }
  std::vector<double> magnitude, phase, group_delay;
};
struct TimeArrays {
  explicit TimeArrays(std::size_t n) : impulse(n), step(n) {}
  TimeResponse view() { return {impulse, step}; }
  std::vector<double> impulse, step;
};

} // namespace brisel
