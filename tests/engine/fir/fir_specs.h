// fir_specs.h - specifications for the tests of the optimal FIR methods: sampling frequency 2 pi, edges given as
// fractions of it.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

#include <initializer_list>

namespace brisel {

inline FilterSpec empty_spec(FilterType type, int length) {
  FilterSpec spec{};
  spec.type = code(type);
  spec.length = length;
  spec.sampling_frequency = two_pi;
  spec.sampling_period = 1;
  spec.passband_ripple = 0.5;
  spec.stopband_ripple = 40;
  return spec;
}

/// Types with passband and stopband edges.
inline FilterSpec edge_spec(FilterType type, int length, std::array<double, 2> pass, std::array<double, 2> stop = {}) {
  FilterSpec spec = empty_spec(type, length);
  spec.passband_edge = {pass[0] * two_pi, pass[1] * two_pi};
  spec.stopband_edge = {stop[0] * two_pi, stop[1] * two_pi};
  return spec;
}

inline FilterSpec differentiator_spec(int length, double lower, double upper, double percent, double slope = 1) {
  FilterSpec spec = edge_spec(FilterType::differentiator, length, {lower, upper});
  spec.passband_ripple = percent;
  spec.slope = slope;
  return spec;
}

struct TestBand {
  double lower, upper, value, ripple;
};
inline FilterSpec banded_spec(FilterType type, int length, std::initializer_list<TestBand> bands) {
  FilterSpec spec = empty_spec(type, length);
  for (const TestBand &band : bands) {
    const int b = spec.band_count++;
    spec.band_lower[b] = band.lower * two_pi;
    spec.band_upper[b] = band.upper * two_pi;
    spec.band_value[b] = band.value;
    spec.band_ripple[b] = band.ripple;
    if (b < max_arbitrary_bands) spec.fixed_gain[b] = 1;
  }
  return spec;
}

/// Symbol rate as a fraction of the sampling frequency.
inline FilterSpec cosine_spec(FilterType type, int length, double symbol_rate, double rolloff) {
  const double half = symbol_rate / 2;
  FilterSpec spec = edge_spec(type, length, {half * (1 - rolloff), 0}, {half * (1 + rolloff), 0});
  spec.symbol_rate = symbol_rate * two_pi;
  spec.rolloff = rolloff;
  return spec;
}

} // namespace brisel
