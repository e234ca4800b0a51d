#include "engine/iir/cascade_gain.h"
#include "engine/iir/iir_scaling.h"
#include "engine/iir/noise.h"

#include "tests/engine/analysis/iir_systems.h"

#include <gtest/gtest.h>

namespace brisel::test {

static long double magnitude(const Triple &t, long double w) {
  return std::abs(triple(t, std::polar<long double>(1, w)));
}

TEST(Scaling, TransposedNodesAllPeakAtOneAndTheFilterStays) {
  for (SectionEntry cascade : {elliptic_5(), butterworth(20, 0.1), resonators(10, 0.99)}) {
    compute_cas_gain(cascade);
    const SectionEntry before = cascade;
    QuantizationResult result{};
    const int n = cascade.section_count;
    ASSERT_GT(scale_cascade(cascade, SectionStructure::transposed, result), 0);
    EXPECT_EQ(cascade.gain, 1) << "to the last bit";
    EXPECT_EQ(result.node_count, n + 1);
    EXPECT_EQ(result.scale_factor[0], 1);
    EXPECT_EQ(result.node_peak[n], 0);
    for (int j = 0; j < n; j++) {
      long double peak_before = 0, peak = 0;
      for (int i = 0; i <= 1000; i++) {
        long double node_before = 1, node = 1;
        for (int k = 0; k <= j; k++) {
          const long double w = pi * i / 1000, d = magnitude(cascade.denominators[k], w);
          node *= magnitude(cascade.numerators[k], w) / d;
          node_before *= magnitude(before.numerators[k], w) / d;
        }
        peak = std::max(peak, node);
        peak_before = std::max(peak_before, node_before);
      }
      EXPECT_NEAR(static_cast<double>(peak), 1, 1e-12);
      EXPECT_NEAR(result.node_peak[j] / static_cast<double>(peak_before), 1, 1e-12);
      EXPECT_EQ(result.scale_factor[j + 1], 1 / result.node_peak[j]);
    }
    EXPECT_LT(distance([&](Complex z) { return response(before, z, false); },
                       [&](Complex z) { return response(cascade, z, false); }),
              1e-13);
  }
}

TEST(Scaling, CanonicStatesAllPeakAlikeAndTheGainBringsThemToOne) {
  SectionEntry cascade = elliptic_5();
  compute_cas_gain(cascade);
  const SectionEntry before = cascade;
  QuantizationResult result{};
  EXPECT_DOUBLE_EQ(scale_cascade(cascade, SectionStructure::canonic, result), 1 / before.gain);
  const int n = cascade.section_count;
  EXPECT_DOUBLE_EQ(result.node_peak[n], 1 / before.gain);
  EXPECT_DOUBLE_EQ(cascade.gain, 1 / result.node_peak[0]);
  for (int j = 0; j < n; j++) {
    long double peak = 0;
    for (int i = 0; i <= 1000; i++) {
      const long double w = pi * i / 1000;
      long double node = cascade.gain / magnitude(cascade.denominators[0], w);
      for (int k = 1; k <= j; k++)
        node *= magnitude(cascade.numerators[k - 1], w) / magnitude(cascade.denominators[k], w);
      peak = std::max(peak, node);
    }
    EXPECT_NEAR(static_cast<double>(peak), 1, 1e-13);
    EXPECT_NEAR(cascade.numerators[j][0] / before.numerators[j][0], result.node_peak[j] / result.node_peak[j + 1],
                1e-13);
  }
  EXPECT_LT(distance([&](Complex z) { return response(before, z, false); },
                     [&](Complex z) { return response(cascade, z, false); }),
            1e-13);
}

TEST(Scaling, ASumIsDividedByItsLargestPeakAndTheScalerTakesIt) {
  SectionEntry sum = sections(0.25, {{{{0, 2, 0}, {1, -0.5, 0}}}, {{{0, -1, 0}, {1, 0.5, 0}}}}); // 4 at 0, 2 at pi
  sum.sample_rate = 1000;
  const SectionEntry before = sum;
  QuantizationResult result{};
  EXPECT_DOUBLE_EQ(scale_parallel(sum, result), 4);
  EXPECT_DOUBLE_EQ(sum.pars, 4);
  EXPECT_DOUBLE_EQ(sum.gain, 0.0625);
  EXPECT_DOUBLE_EQ(sum.numerators[0][1], 0.5);
  EXPECT_DOUBLE_EQ(result.node_peak[0], 4);
  EXPECT_DOUBLE_EQ(result.node_peak[1], 2);
  EXPECT_DOUBLE_EQ(result.node_peak_frequency[0], 0);
  EXPECT_DOUBLE_EQ(result.node_peak_frequency[1], 500) << "half the rate, in the unit of the rate";
  EXPECT_LT(
      distance([&](Complex z) { return response(before, z, true); }, [&](Complex z) { return response(sum, z, true); }),
      1e-15);
}

TEST(Scaling, APeakOfZeroIsRefused) {
  QuantizationResult result{};
  SectionEntry silent = sections(1, {{{{0, 0, 0}, {1, 0, 0.5}}}});
  EXPECT_EQ(scale_cascade(silent, SectionStructure::transposed, result), 0);
  silent.gain = 0;
  EXPECT_EQ(scale_parallel(silent, result), 0);
  EXPECT_EQ(result.node_count, 0);
}

// The mean squared magnitude of a stable path is the energy of its impulse response (Parseval).
static double energy(const std::vector<std::array<Triple, 2>> &path) {
  std::vector<long double> x(20000);
  x[0] = 1;
  for (const auto &[b, a] : path) {
    long double s1 = 0, s2 = 0;
    for (long double &v : x) {
      const long double y = b[0] * v + s1;
      s1 = b[1] * v - a[1] * y + s2;
      s2 = b[2] * v - a[2] * y;
      v = y;
    }
  }
  long double sum = 0;
  for (const long double v : x) sum += v * v;
  return static_cast<double>(sum);
}

TEST(Noise, GainsAreTheEnergiesOfTheirPaths) {
  SectionEntry cascade = elliptic_5();
  compute_cas_gain(cascade);
  QuantizationResult result{};
  scale_cascade(cascade, SectionStructure::transposed, result);
  std::array<double, 3> transposed{}, canonic{};
  cascade_noise_gains(cascade, SectionStructure::transposed, transposed);
  cascade_noise_gains(cascade, SectionStructure::canonic, canonic);
  std::array<double, 3> floating{};
  cascade_noise_gains(cascade, SectionStructure::float_5_multiplies, floating);
  EXPECT_EQ(floating, canonic);
  for (int j = 0; j < 3; j++) {
    std::vector<std::array<Triple, 2>> recursive{{Triple{1, 0, 0}, cascade.denominators[j]}}, whole;
    for (int k = j; k < 3; k++) {
      whole.push_back({cascade.numerators[k], cascade.denominators[k]});
      if (k > j) recursive.push_back(whole.back());
    }
    // 1001 points resolve the sharpest of these poles, at radius 0.94, to many digits.
    EXPECT_NEAR(transposed[j] / energy(recursive), 1, 1e-9) << j;
    EXPECT_NEAR(canonic[j] / energy(whole), 1, 1e-9) << j;
  }
  SectionEntry sum{};
  ASSERT_TRUE(cascade_to_parallel(Domain::z, elliptic_5(), sum));
  sum.pars = 3;
  std::array<double, 3> gains{};
  parallel_noise_gains(sum, gains);
  for (int j = 0; j < 3; j++)
    EXPECT_NEAR(gains[j] / (9 * energy({{Triple{1, 0, 0}, sum.denominators[j]}})), 1, 1e-9) << j;
}

TEST(Noise, TheSimpsonRuleIsExactForACubicButForItsEnds) {
  // End weights of fourth order: constants and powers to the third integrate exactly.
  for (int power = 0; power <= 3; power++) {
    std::vector<double> values(1001);
    for (int i = 0; i <= 1000; i++) values[i] = std::pow(i / 1000.0, power);
    EXPECT_NEAR(simpson_mean(values), 1.0 / (power + 1), 1e-13) << power;
  }
}

TEST(Noise, PowersAndFloor) {
  QuantizationResult result{};
  store_noise(6, 16, result);
  EXPECT_DOUBLE_EQ(result.input_noise_power, 1 / (65536.0 * 65536.0 * 12));
  EXPECT_NEAR(result.input_noise_db, -107.12, 0.005); // 10 log10(2^-32 / 12)
  EXPECT_DOUBLE_EQ(result.output_noise_power, 0.5 / (65536.0 * 65536.0));
  EXPECT_DOUBLE_EQ(result.standard_deviation, std::sqrt(0.5) / 65536);
  EXPECT_EQ(result.noise_floor_bits, 16); // 16.5 bits, truncated
  EXPECT_NEAR(result.noise_floor_db, 90.309, 0.0005);
  store_noise(0, 16, result);
  EXPECT_EQ(result.noise_floor_bits, 0) << "no noise has no floor";
}

} // namespace brisel::test
