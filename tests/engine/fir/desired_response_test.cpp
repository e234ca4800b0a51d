// What a FIR specification asks for: compensation curves, band tables, raised cosines, the halfband fold.
#include "engine/fir/compensation.h"
#include "engine/fir/desired_response.h"
#include "engine/fir/halfband.h"

#include "engine/core/code_tables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <memory>
#include <string>

namespace brisel {
namespace {

constexpr double pi = std::numbers::pi;

// The comb written out: `stages` boxcars of R D samples at the fast rate, seen at w / R.
double comb_gain(int r, int d, int stages, double w) {
  std::complex<double> sum = 0;
  for (int n = 0; n < r * d; n++) sum += std::polar(1.0, -w / r * n);
  return std::pow(std::abs(sum) / (r * d), stages);
}

TEST(Compensation, CombCurveIsTheInverseOfCascadedBoxcars) {
  struct Case {
    int r, d, stages;
  };
  for (const auto &[r, d, stages] : {Case{1, 1, 1}, Case{8, 1, 5}, Case{127, 1, 4}, Case{16, 2, 3}, Case{5, 3, 2}}) {
    const auto c = make_compensation(true, 1, r, d, stages);
    ASSERT_TRUE(c);
    for (double w = 0; w < pi; w += 0.01) {
      const double gain = comb_gain(r, d, stages, w);
      if (gain > 1e-6) {
        EXPECT_NEAR(compensation_factor(*c, w) * gain, 1, 1e-9) << r << ' ' << d << ' ' << stages << " at " << w;
      }
    }
  }
}

TEST(Compensation, SincCurveUndoesAZeroOrderHold) {
  const auto c = make_compensation(true, 0, 0, 0, 0);
  EXPECT_EQ(compensation_factor(*c, 0), 1);
  EXPECT_NEAR(compensation_factor(*c, pi), pi / 2, 1e-15); // 3.92 dB at half the sampling frequency
  EXPECT_NEAR(compensation_factor(*c, pi / 2), pi / 4 * std::sqrt(2.0), 1e-15);
}

TEST(Compensation, SettingsOfZeroCountAsOneAndThoseAboveTheLimitAreRefused) {
  const auto zeros = make_compensation(true, 1, 0, 0, 0);
  ASSERT_TRUE(zeros);
  EXPECT_NEAR(compensation_factor(*zeros, 1.0), 1, 1e-15); // R = D = 1: the comb passes everything
  EXPECT_FALSE(make_compensation(true, 1, 128, 1, 1));
  EXPECT_FALSE(make_compensation(true, 1, 1, 128, 1));
  EXPECT_FALSE(make_compensation(true, 1, 1, 1, 128));
  EXPECT_TRUE(make_compensation(true, 0, 128, 128, 128)); // the sinc curve reads none of them
  EXPECT_TRUE(make_compensation(false, 1, 128, 128, 128));
  EXPECT_EQ(compensation_factor(*make_compensation(true, 2, 4, 1, 3), 1.0), 1);
  EXPECT_EQ(compensation_factor(*make_compensation(false, 0, 0, 0, 0), 1.0), 1);
}

TEST(Compensation, NullsOfTheCombAreFound) {
  struct Case {
    int d;
    double lower, upper;
    double null; // 0: none
  };
  for (const auto &[d, lower, upper, null] : {
           Case{1, 0, pi, 0},
           Case{2, 0, 0.99 * pi, 0},
           Case{2, 0, pi, pi},
           Case{3, 0, 2 * pi / 3, 2 * pi / 3},
           Case{3, 0.7 * pi, pi, 0},
           Case{8, 0, pi, pi / 4},
           Case{8, 0.3 * pi, pi, pi / 2},
           Case{8, 0.26 * pi, 0.49 * pi, 0},
           Case{8, pi / 4, 0.3 * pi, pi / 4},
       }) {
    const auto found = comb_null(*make_compensation(true, 1, 4, d, 2), lower, upper);
    EXPECT_NEAR(found.value_or(0), null, 1e-12) << d << ' ' << lower << ' ' << upper;
  }
  EXPECT_FALSE(comb_null(*make_compensation(true, 0, 4, 8, 2), 0, pi));
  EXPECT_FALSE(comb_null(*make_compensation(false, 1, 4, 8, 2), 0, pi));
}

FilterSpec two_bands() {
  FilterSpec spec{};
  spec.type = code(FilterType::arbitrary_magnitude);
  spec.band_count = 3;
  spec.band_lower = {0.1, 1.0, 2.6};
  spec.band_upper = {0.8, 2.0, 3.0};
  return spec;
}

TEST(BandStretches, MeetInTheMiddleOfTheGaps) {
  const BandStretches s = band_stretches(two_bands());
  EXPECT_EQ(s.count, 3);
  EXPECT_EQ(s.edge[0], 0);
  EXPECT_NEAR(s.edge[1], 0.9, 1e-15);
  EXPECT_NEAR(s.edge[2], 2.3, 1e-15);
  EXPECT_EQ(s.edge[3], pi);
}

TEST(MagnitudeTable, InterpolatesGainsNotDecibels) {
  FilterSpec spec = two_bands();
  spec.list_flag[1] = 1;
  spec.point_count[1] = 3;
  spec.function_frequency[50] = 1.2, spec.function_value[50] = 0;   // gain 1
  spec.function_frequency[51] = 1.4, spec.function_value[51] = 20;  // gain 0.1: values are attenuations
  spec.function_frequency[52] = 1.8, spec.function_value[52] = -20; // gain 10
  const MagnitudeTable table = magnitude_table(spec, 1);
  for (const auto &[w, gain] : {std::pair{1.2, 1.0},
                                {1.3, 0.55},
                                {1.4, 0.1},
                                {1.6, 5.05},
                                {1.8, 10.0},
                                {0.9, 1.0},
                                {1.0, 1.0},
                                {2.0, 10.0},
                                {2.3, 10.0}})
    EXPECT_NEAR(interpolate(table, w), gain, 1e-13) << w;
}

TEST(MagnitudeTable, FixedGainIsTheBandsValue) {
  FilterSpec spec = two_bands();
  spec.fixed_gain = {1, 1, 1};
  spec.band_value = {0.25, 40, 0};
  spec.list_flag[1] = 1;
  EXPECT_EQ(interpolate(magnitude_table(spec, 0), 0.5), 0.25);
  EXPECT_NEAR(interpolate(magnitude_table(spec, 1), 0.5), 0.01, 1e-15);
  EXPECT_EQ(interpolate(magnitude_table(spec, 2), 3.0), 0);
}

TEST(RaisedCosine, FallsOverTheTransitionAndIsTheSquareOfItsRoot) {
  for (double w = 0; w < pi; w += 0.01) {
    const double expected = w <= 0.5 ? 1 : w >= 1.5 ? 0 : 0.5 + 0.5 * std::cos((w - 0.5) * pi);
    EXPECT_NEAR(raised_cosine(w, 0.5, 1.5), expected, 1e-15) << w;
    EXPECT_NEAR(root_raised_cosine(w, 0.5, 1.5), std::sqrt(expected), 1e-8) << w; // the root doubles the digits lost
  }
  EXPECT_EQ(raised_cosine(1.0, 1.0, 1.0), 1); // no rolloff: a step
  EXPECT_EQ(raised_cosine(1.001, 1.0, 1.0), 0);
}

TEST(Differentiator, IsSlopeTimesFrequencyInItsPassband) {
  FilterSpec spec{};
  spec.passband_edge = {0.2, 2.0};
  spec.slope = 0.5;
  for (const auto &[w, value] : {std::pair{0.1, 0.0}, {0.2, 0.1}, {1.0, 0.5}, {2.0, 1.0}, {2.1, 0.0}})
    EXPECT_DOUBLE_EQ(differentiator_amplitude(spec, w), value);
}

// H(w) = 1/2 + G(2w)/2, on a dense grid, for every residue of the length modulo 4 that is odd.
TEST(Halfband, FoldKeepsTheResponseOfItsLowpass) {
  for (int length : {3, 5, 7, 9, 11, 13, 15}) {
    FilterSpec spec{};
    spec.length = length;
    spec.sampling_frequency = two_pi;
    spec.passband_edge[0] = 1.2;
    const FilterSpec lowpass = halfband_prototype(spec);
    EXPECT_EQ(lowpass.type, 0);
    EXPECT_EQ(lowpass.passband_edge[0], 2.4);
    EXPECT_EQ(lowpass.stopband_edge[0], pi);
    ASSERT_EQ(lowpass.length % 2, 0);
    const auto entry = std::make_unique<FirEntry>();
    entry->coeff.fill(-7); // what an earlier design left
    const int taps = lowpass.length / 2;
    for (int k = 0; k < taps; k++) entry->coeff[k] = 1.0 / (k + 1);
    halfband_fold(*entry, length);
    EXPECT_EQ(entry->length, length);
    EXPECT_EQ(entry->unique_count, (length + 1) / 2);
    EXPECT_EQ(entry->odd_length, 1);
    for (double w = 0; w < pi; w += 0.05) {
      double h = entry->coeff[0], g = 0;
      for (int k = 1; k < entry->unique_count; k++) h += 2 * entry->coeff[k] * std::cos(k * w);
      for (int k = 0; k < taps; k++) g += 2.0 / (k + 1) * std::cos((k + 0.5) * 2 * w);
      EXPECT_NEAR(h, 0.5 + g / 2, 1e-14) << length << " at " << w;
    }
  }
}

} // namespace
} // namespace brisel
