// optimality_check_test.cpp - amplitudes, the alternation that proves an optimum, peak errors and transition gain.
#include "engine/fir/optimality_check.h"

#include "tests/engine/fir/fir_specs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>

namespace brisel {
namespace {

// Spectrum of all taps, times the delay to the centre: real for symmetric responses, imaginary for antisymmetric ones.
double amplitude_of_taps(const std::vector<double> &half, FirSymmetry symmetry, bool odd, double f) {
  const double sign = symmetry == FirSymmetry::symmetric ? 1 : -1;
  std::complex<double> sum = 0;
  for (std::size_t k = 0; k < half.size(); k++) {
    const double t = static_cast<double>(k) + (odd ? 0 : 0.5);
    if (odd && k == 0) {
      sum += sign > 0 ? half[0] : 0;
      continue;
    }
    sum += half[k] * (std::polar(1.0, two_pi * f * t) + sign * std::polar(1.0, -two_pi * f * t));
  }
  return sign > 0 ? sum.real() : sum.imag();
}

TEST(HalfResponseAmplitude, IsTheSpectrumOfTheTaps) {
  std::vector<double> half(40), f;
  for (std::size_t k = 0; k < half.size(); k++) half[k] = std::sin(0.3 * static_cast<double>(k * k) + 1);
  for (int i = 0; i <= 100; i++) f.push_back(0.005 * i);
  for (const FirSymmetry symmetry : {FirSymmetry::symmetric, FirSymmetry::antisymmetric}) {
    for (const bool odd : {true, false}) {
      const std::vector<double> amplitude = half_response_amplitude(half, symmetry, odd, f);
      for (std::size_t i = 0; i < f.size(); i++)
        EXPECT_NEAR(amplitude[i], amplitude_of_taps(half, symmetry, odd, f[i]), 1e-12) << f[i];
    }
  }
}

struct Designed {
  BandPlan plan;
  DesignGrid grid;
  std::vector<double> half;
};
Designed designed(const FilterSpec &spec, FirSymmetry symmetry) {
  Designed d;
  PlanRefusal refusal;
  EXPECT_TRUE(plan_bands(spec, {.symmetry = symmetry}, d.plan, refusal));
  d.grid = remez_grid(d.plan, 16);
  DesignGrid transformed = d.grid;
  case_transform(d.plan, transformed);
  const ExchangeResult exchange = remez_exchange(transformed, cosine_count(d.plan.length, d.plan.symmetric()), nullptr);
  d.half = remez_to_taps(d.plan, cosine_series(exchange, d.grid.frequency.front(), d.grid.frequency.back()));
  return d;
}

TEST(OptimalityCheck, TakesTheOptimumAndNothingElse) {
  const Designed d = designed(edge_spec(FilterType::band_pass, 41, {0.14, 0.26}, {0.08, 0.32}), FirSymmetry::symmetric);
  const OptimalReport best = check_optimality(d.plan, d.grid, d.half);
  EXPECT_TRUE(best.optimal());
  EXPECT_EQ(best.required, 22);
  struct Case {
    const char *name;
    std::size_t tap;
    double factor;
  };
  for (const Case &c : {Case{"centre tap 1 % up", 0, 1.01}, Case{"outermost tap missing", 20, 0},
                        Case{"one tap negated", 7, -1}, Case{"not a number", 3, std::nan("")}}) {
    std::vector<double> wrong = d.half;
    wrong[c.tap] *= c.factor;
    const OptimalReport report = check_optimality(d.plan, d.grid, wrong);
    EXPECT_FALSE(report.optimal()) << c.name;
    EXPECT_FALSE(report.peak_error <= best.peak_error) << c.name;
  }
  // The optimum of another weighting.
  FilterSpec other = edge_spec(FilterType::band_pass, 41, {0.14, 0.26}, {0.08, 0.32});
  other.stopband_ripple = 50;
  EXPECT_FALSE(check_optimality(d.plan, d.grid, designed(other, FirSymmetry::symmetric).half).optimal());
}

TEST(OptimalityCheck, PeaksBetweenTheGridPointsAndBetweenTheBands) {
  struct Case {
    const char *name;
    FilterSpec spec;
    FirSymmetry symmetry;
  };
  FilterSpec unequal = edge_spec(FilterType::band_pass, 55, {0.2, 0.3}, {0.17, 0.42});
  unequal.passband_ripple = 0.1;
  for (const Case &c :
       {Case{"lowpass", edge_spec(FilterType::low_pass, 40, {0.15, 0}, {0.2, 0}), FirSymmetry::symmetric},
        Case{"unequal transitions", unequal, FirSymmetry::symmetric},
        Case{"Hilbert transformer", edge_spec(FilterType::hilbert, 31, {0.05, 0.45}), FirSymmetry::antisymmetric}}) {
    SCOPED_TRACE(c.name);
    const Designed d = designed(c.spec, c.symmetry);
    const OptimalReport report = check_optimality(d.plan, d.grid, d.half);
    // Every point of a grid eight times denser, straight from the taps.
    double dense = 0;
    for (std::size_t i = 0; i + 1 < d.grid.size(); i++) {
      for (int step = 0; step <= 8 && d.grid.band[i] == d.grid.band[i + 1]; step++) {
        const double f = std::lerp(d.grid.frequency[i], d.grid.frequency[i + 1], step / 8.0);
        const double a = amplitude_of_taps(d.half, c.symmetry, d.plan.odd_length(), f);
        const int b = d.grid.band[i];
        dense = std::max(dense, std::abs(a - band_desired(d.plan, two_pi * f, b)) * band_weight(d.plan, two_pi * f, b));
      }
    }
    EXPECT_NEAR(report.dense_peak_error, dense, 1e-12);
    EXPECT_GT(report.dense_peak_error, report.peak_error);
    double gain = 0, where = 0;
    for (int i = 0; i <= 100000; i++) {
      const double f = i * 5e-6;
      bool inside = false;
      for (int b = 0; b < d.plan.band_count; b++)
        inside |= two_pi * f >= d.plan.bands[b].lower && two_pi * f <= d.plan.bands[b].upper;
      if (inside) continue;
      const double a = std::abs(amplitude_of_taps(d.half, c.symmetry, d.plan.odd_length(), f));
      if (a > gain) where = f;
      gain = std::max(gain, a);
    }
    EXPECT_NEAR(report.transition_gain, gain, 1e-3 * gain); // 1/128 of a lobe from its top at most
    EXPECT_NEAR(report.transition_frequency, where, 1e-3);
  }
}

} // namespace
} // namespace brisel
