// Length estimates against an independent evaluation of the published formulas (a Python script), and their limits.
#include "engine/fir/length_estimate.h"

#include <gtest/gtest.h>

#include <string>

namespace brisel {
namespace {

using Lengths = std::array<int, offered_window_count>;

FilterSpec specification(FilterType type, double passband_db, double stopband_db) {
  FilterSpec s{};
  s.type = code(type);
  s.sampling_frequency = 8000;
  s.passband_ripple = passband_db;
  s.stopband_ripple = stopband_db;
  return s;
}

FilterSpec lowpass(double pass, double stop, double passband_db, double stopband_db) {
  FilterSpec s = specification(FilterType::low_pass, passband_db, stopband_db);
  s.passband_edge[0] = pass;
  s.stopband_edge[0] = stop;
  return s;
}

Lengths estimate(const FilterSpec &spec, double entered = 0) {
  Lengths lengths;
  fir_length_estimate(spec, lengths, entered);
  return lengths;
}

TEST(LengthEstimate, AgreesWithTheFormulas) {
  EXPECT_EQ(estimate(lowpass(1000, 1500, 0.1, 60)),
            (Lengths{15, 63, 51, 53, 89, 93, 85, 83, 95, 83, 101, 95, 93, 107, 61, 61, 61, 61}));
  // below 21 dB: fixed factors for the last four
  EXPECT_EQ(estimate(lowpass(1000, 1150, 0.5, 20)),
            (Lengths{51, 211, 167, 177, 293, 307, 285, 275, 315, 273, 339, 317, 307, 359, 51, 67, 53, 55}));
  // raised cosine: Kaiser's length for the rectangular window
  FilterSpec cosine = lowpass(1000, 1400, 0.2, 50);
  cosine.type = code(FilterType::raised_cosine);
  EXPECT_EQ(estimate(cosine),
            (Lengths{61, 79, 63, 67, 111, 115, 107, 103, 119, 103, 127, 119, 115, 135, 61, 63, 63, 61}));
}

TEST(LengthEstimate, MultibandTakesItsSmallestDeviationAndItsSmallestGap) {
  FilterSpec s = specification(FilterType::multiband, 0, 0);
  s.band_count = 3;
  s.band_lower = {0, 1500, 3000};
  s.band_upper = {1000, 2300, 4000};
  s.band_value = {1, 0, 1};
  s.band_ripple = {0.01, 0.003, 0.05};
  EXPECT_EQ(transition_width(s), 500);
  EXPECT_EQ(estimate(s), (Lengths{15, 63, 51, 53, 89, 93, 85, 83, 95, 83, 101, 95, 93, 107, 49, 51, 51, 49}));
}

TEST(LengthEstimate, RipplesThatAreNotGivenAreReplaced) {
  const Lengths defaults = estimate(lowpass(1000, 1200, 0.01, 40));
  EXPECT_EQ(estimate(lowpass(1000, 1200, 0, 0)), defaults);
  EXPECT_EQ(estimate(lowpass(1000, 1200, -1, -3)), defaults);
}

TEST(LengthEstimate, IsOddAtLeast3AndInRange) {
  EXPECT_EQ(estimate(lowpass(1000, 3900, 0.1, 60))[0], 3);                            // 0.94 * 2.76 = 2.6
  EXPECT_EQ(estimate(lowpass(1000, 2870, 0.1, 60))[0], 5);                            // 0.94 * 4.278 = 4.02: even
  for (int length : estimate(lowpass(1000, 1000, 0.1, 60))) EXPECT_EQ(length, 32767); // no transition
  for (int length : estimate(lowpass(1000, 1000 + 1e-6, 0.1, 60))) EXPECT_EQ(length, 32767); // beyond 32 bits
  EXPECT_EQ(estimate(lowpass(1000, 1000.125, 0.1, 60))[7], 330881); // 5.17 * 64000: long, but a number
}

TEST(TransitionWidth, OfEveryType) {
  const auto with = [](FilterType type, std::array<double, 2> pass, std::array<double, 2> stop) {
    FilterSpec s = specification(type, 0.1, 60);
    s.passband_edge = pass;
    s.stopband_edge = stop;
    return s;
  };
  FilterSpec arbitrary = specification(FilterType::arbitrary_magnitude, 0, 0);
  arbitrary.band_count = 3;
  arbitrary.band_lower = {0, 1000, 2100};
  arbitrary.band_upper = {1000, 2000, 4000};
  arbitrary.fixed_gain = {1, 1, 1};
  arbitrary.band_value = {1, 1, 0}; // the first two touch, and narrower gaps without a step count no more than that
  FilterSpec no_step = arbitrary;
  no_step.band_value[2] = 1;
  FilterSpec multiband = arbitrary;
  multiband.type = code(FilterType::multiband);
  FilterSpec jump = multiband;
  jump.band_value[0] = 2;
  struct Case {
    FilterSpec spec;
    double entered, width;
  };
  for (const auto &[spec, entered, width] : {
           Case{with(FilterType::high_pass, {1500, 0}, {1000, 0}), 0, 500},
           Case{with(FilterType::low_pass, {1000, 0}, {1500, 0}), 77, 500}, // its own, whatever was entered
           Case{with(FilterType::band_pass, {1000, 2000}, {700, 2200}), 0, 200},
           Case{with(FilterType::band_stop, {1000, 2000}, {1100, 1800}), 0, 100},
           Case{with(FilterType::half_band, {1800, 0}, {0, 0}), 0, 400},
           Case{with(FilterType::root_raised_cosine, {900, 0}, {1100, 0}), 0, 200},
           Case{with(FilterType::differentiator, {0, 3700}, {}), 0, 300},
           Case{with(FilterType::differentiator, {0, 3700}, {}), 120, 120},
           Case{with(FilterType::hilbert, {200, 3700}, {}), 0, 200},
           Case{with(FilterType::hilbert, {0, 4000}, {}), 0, 400}, // 0.05 of the sampling frequency
           Case{arbitrary, 0, 100},
           Case{arbitrary, 50, 50},
           Case{no_step, 0, 400},
           Case{multiband, 0, 100},
           Case{jump, 0, 100},
       })
    EXPECT_NEAR(transition_width(spec, entered), width, 1e-9) << filter_types[spec.type].dialog_name;
}

} // namespace
} // namespace brisel
