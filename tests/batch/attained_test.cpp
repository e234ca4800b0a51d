#include "batch/attained.h"

#include "engine/core/code_tables.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <utility>
#include <vector>

namespace brisel {
namespace {

constexpr double pi = std::numbers::pi;

double db(double gain) {
  return 20 * std::log10(gain);
}

FilterSpec specification(FilterType type, std::array<double, 2> pass, std::array<double, 2> stop) {
  FilterSpec spec{};
  spec.type = code(type);
  spec.sampling_frequency = 2 * pi;
  spec.passband_edge = pass;
  spec.stopband_edge = stop;
  spec.passband_ripple = 0.1;
  spec.stopband_ripple = 60;
  return spec;
}

std::vector<double> measure(const FilterSpec &spec, const std::vector<double> &taps, double gain = 1,
                            const Compensation &compensation = {}) {
  return attained(requirements(spec, compensation), fir_sampler(taps, gain));
}

/// Gain of the mean of n samples, in closed form.
double mean_gain(int n, double w) {
  return w == 0 ? 1 : std::abs(std::sin(n * w / 2) / (n * std::sin(w / 2)));
}

/// Largest gain of the mean in a band, by brute force.
double mean_peak(int n, double low, double high) {
  double largest = 0;
  constexpr int steps = 400000;
  for (int i = 0; i <= steps; i++) largest = std::max(largest, mean_gain(n, low + (high - low) * i / steps));
  return largest;
}

TEST(Attained, FiguresAtBandEdgesAreExact) {
  // (1 + z^-1)^2 / 4 has the gain cos(w/2)^2, which falls all the way.
  const std::vector<double> taps{0.25, 0.5, 0.25};
  const auto gain = [](double w) { return std::pow(std::cos(w / 2), 2); };
  struct Case {
    const char *name;
    FilterType type;
    std::array<double, 2> pass, stop;
    std::array<double, 3> figures;
  };
  const Case cases[]{
      {"lowpass", FilterType::low_pass, {0.2, 0}, {2, 0}, {-db(gain(0.2)), -db(gain(2)), db(gain(0.2))}},
      {"bandpass takes its worse stopband and its peak as reference",
       FilterType::band_pass,
       {1, 1.5},
       {0.5, 2.5},
       {db(gain(1) / gain(1.5)), db(gain(1) / gain(0)), db(gain(0.5))}},
      {"halfband mirrors its stopband",
       FilterType::half_band,
       {0.5, 0},
       {0, 0},
       {-db(gain(0.5)), -db(gain(pi - 0.5)), db(gain(0.5))}},
  };
  for (const Case &c : cases) {
    const std::vector<double> figures = measure(specification(c.type, c.pass, c.stop), taps);
    ASSERT_EQ(figures.size(), 3u) << c.name;
    for (int i = 0; i < 3; i++) EXPECT_NEAR(figures[i], c.figures[i], 1e-9) << c.name << " figure " << i;
  }
}

TEST(Attained, PeaksThatCrowdAtABandEdgeAreFound) {
  // cos(w/2)^2 T_n(x0 cos(w)): next to a steep transition the peaks of a Chebyshev polynomial stand far closer than 2
  // pi over the number of taps, and the factor makes the first of them the largest.
  constexpr int n = 100;
  const double x0 = std::cosh(0.11);
  std::vector<double> before{1}, taps{x0 / 2, 0, x0 / 2}; // T_0 and T_1, each of 2k + 1 taps
  for (int k = 1; k < n; k++) {
    std::vector<double> next(taps.size() + 2);
    for (std::size_t i = 0; i < taps.size(); i++) next[i] += x0 * taps[i], next[i + 2] += x0 * taps[i];
    for (std::size_t i = 0; i < before.size(); i++) next[i + 2] -= before[i];
    before = std::exchange(taps, next);
  }
  std::vector<double> smoothed(taps.size() + 2);
  for (std::size_t i = 0; i < taps.size(); i++)
    for (int j = 0; j < 3; j++) smoothed[i + static_cast<std::size_t>(j)] += taps[i] * (j == 1 ? 0.5 : 0.25);
  const double edge = std::acos(std::cos(pi / (2 * n)) / x0), end = std::acos(-std::cos(pi / (2 * n)) / x0);
  double largest = 0;
  for (int i = 0; i <= 1000000; i++) {
    const double w = edge + (end - edge) * i / 1000000;
    largest = std::max(largest, std::abs(std::pow(std::cos(w / 2), 2) * std::cos(n * std::acos(x0 * std::cos(w)))));
  }
  const auto figures = attained({{"peak", Measure::peak_db, {{edge, end}}, {}}}, fir_sampler(smoothed, 1));
  EXPECT_NEAR(figures.at(0), db(largest), 1e-5);
}

TEST(Attained, ABandstopPoolsItsPassbands) {
  // (0.2, 0.6, 0.2) has the gain 0.6 + 0.4 cos(w).
  const auto figures = measure(specification(FilterType::band_stop, {0.5, 2}, {1, 1.5}), {0.2, 0.6, 0.2});
  EXPECT_NEAR(figures[0], db(1 / 0.2), 1e-9);
  EXPECT_NEAR(figures[1], -db(0.6 + 0.4 * std::cos(1)), 1e-9);
  EXPECT_NEAR(figures[2], db(0.6 + 0.4 * std::cos(0.5)), 1e-9);
}

TEST(Attained, PeaksBetweenGridPointsAreFound) {
  // The largest side lobe of a mean lies inside the band. 16 samples a lobe and a parabola leave 1e-3 dB at most.
  for (const int n : {8, 63, 500}) {
    const double first_null = 2 * pi / n;
    const std::vector<double> figures =
        measure(specification(FilterType::low_pass, {first_null / 4, 0}, {first_null, 0}),
                std::vector<double>(static_cast<std::size_t>(n), 1.0 / n));
    EXPECT_NEAR(figures[1], -db(mean_peak(n, first_null, std::min(pi, 3 * first_null))), 1e-3) << n << " taps";
  }
}

TEST(Attained, AConstantFactorChangesErrorsButNotRatios) {
  const std::vector<double> taps{0.25, 0.5, 0.25};
  const FilterSpec spec = specification(FilterType::low_pass, {0.2, 0}, {2, 0});
  const auto plain = measure(spec, taps), scaled = measure(spec, taps, 0.5);
  EXPECT_NEAR(plain[0], scaled[0], 1e-9);
  EXPECT_NEAR(plain[1], scaled[1], 1e-9);
  EXPECT_NEAR(plain[2] + db(0.5), scaled[2], 1e-9);

  FilterSpec hilbert = specification(FilterType::hilbert, {0.5, 1}, {});
  EXPECT_NEAR(measure(hilbert, {0.5, 0, -0.5})[0], 100 - 100 * std::sin(0.5), 1e-9); // gain sin(w), in percent
  EXPECT_NEAR(measure(hilbert, {0.5, 0, -0.5}, 2)[0], 200 * std::sin(1) - 100, 1e-9);
}

TEST(Attained, ErrorsAreTakenFromTheDesiredGain) {
  // The gain of (1, 0, -1) / 2 is sin(w): a differentiator of slope 1 whose error grows with w.
  FilterSpec differentiator = specification(FilterType::differentiator, {0, 0.3}, {});
  differentiator.slope = 1;
  EXPECT_NEAR(measure(differentiator, {0.5, 0, -0.5})[0], 100 - 100 * std::sin(0.3) / 0.3, 1e-9);

  // sinc compensation asks for (w/2) / sin(w/2).
  const FilterSpec lowpass = specification(FilterType::low_pass, {1, 0}, {2, 0});
  const std::vector<double> one{1};
  EXPECT_NEAR(measure(lowpass, one, 1, {.on = true, .type = CompensationCurve::sinc})[0], db(0.5 / std::sin(0.5)),
              1e-9);

  FilterSpec bands{};
  bands.type = code(FilterType::multiband);
  bands.sampling_frequency = 2 * pi;
  bands.band_count = 2;
  bands.band_lower = {0, 2};
  bands.band_upper = {1, pi};
  bands.band_value = {1, 0};
  const auto figures = measure(bands, {0.25, 0.5, 0.25});
  ASSERT_EQ(figures.size(), 2u);
  EXPECT_NEAR(figures[0], 1 - std::pow(std::cos(0.5), 2), 1e-9);
  EXPECT_NEAR(figures[1], std::pow(std::cos(1.0), 2), 1e-9);
}

} // namespace
} // namespace brisel
