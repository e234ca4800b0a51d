#include "engine/analysis/frequency_grid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace brisel {
namespace {

TEST(LinearGrid, RunsFromStartToEndInRadiansPerSample) {
  const double fs = 2 * std::numbers::pi * 8000;
  std::vector<double> points(5);
  const FrequencyGrid grid = linear_grid(fs / 8, fs / 4, fs, points);
  for (int i = 0; i < 5; ++i) EXPECT_NEAR(points[i], std::numbers::pi / 4 * (1 + i / 4.0), 1e-15);
  EXPECT_FALSE(grid.half_circle);
  EXPECT_NEAR(static_cast<double>(grid.step), 1 / 32.0, 1e-17);
  EXPECT_TRUE(linear_grid(0, fs / 2, fs, points).half_circle);
}

struct AxisCase {
  const char *name;
  double start, end, low, high;
  int decades;
};
const AxisCase axis_cases[] = {
    {"from zero it spans four decades", 0, 4000, 1, 10000, 4},
    {"an end that is a power of ten is the high end", 0, 1000, 0.1, 1000, 4},
    {"decades begin at or below the start", 30, 4000, 10, 10000, 3},
    {"a start that is a power of ten is the low end", 10, 4000, 10, 10000, 3},
    {"a start below one is reached downwards", 0.05, 4, 0.01, 10, 3},
    {"an end below one tenth gets a decade more", 0.001, 0.05, 0.001, 0.1, 2},
    {"a power of ten below one is not the high end", 0.001, 0.01, 0.001, 0.1, 2},
    {"five decades become six", 1, 1e5, 0.1, 1e5, 6},
    {"a longer range is cut to six", 1e-3, 1e5, 0.1, 1e5, 6},
    {"lost last bits do not move the decades", 10 * (1 - 1e-15), 1000 * (1 + 1e-15), 10, 1000, 2},
};
TEST(LogarithmicAxis, HasWholeDecades) {
  for (const AxisCase &c : axis_cases) {
    SCOPED_TRACE(c.name);
    const LogarithmicAxis axis = logarithmic_axis(c.start, c.end);
    EXPECT_NEAR(axis.low, c.low, 1e-12 * c.low);
    EXPECT_NEAR(axis.high, c.high, 1e-12 * c.high);
    EXPECT_EQ(axis.decades, c.decades);
    EXPECT_NEAR(axis.ratio, std::log(c.end / c.low) / std::log(c.high / c.low), 1e-12);
  }
}

TEST(LogarithmicGrid, EndsAtTheEndAndNotAtTheAxis) {
  std::vector<double> points(101);
  logarithmic_grid(0.001, 3, points);
  EXPECT_EQ(points.front(), 0.001);
  EXPECT_EQ(points.back(), 3);
  for (int i = 1; i < 100; ++i) EXPECT_NEAR(points[i] * points[i] / (points[i - 1] * points[i + 1]), 1, 1e-13);
}

TEST(Turns, KeepTheFractionOfLargeMultiples) {
  const long double step = 1.0L / 60007;
  const Turns turns(step);
  for (const std::uint64_t k : {1ull, 59999ull, 60008ull, 2500000000ull, 4294967295ull}) {
    const long double exact = static_cast<long double>(k % 60007) / 60007;
    // The step itself is rounded in its 65th place, the 80th after the point.
    EXPECT_NEAR(static_cast<double>(turns.times(k) * 0x1p-64L - exact), 0, static_cast<double>(k) * 0x1p-79 + 0x1p-63)
        << k;
  }
  EXPECT_EQ(phasor(0), std::complex<double>(1, 0));
  EXPECT_EQ(phasor(Turns(0.25L).times(3)), std::complex<double>(0, -1));
  EXPECT_EQ(phasor(Turns(-0.25L).times(2)), std::complex<double>(-1, 0));
  for (int eighth = 0; eighth < 16; ++eighth) {
    const std::complex<double> expected = std::polar(1.0, std::numbers::pi * eighth / 8);
    EXPECT_LT(std::abs(phasor(Turns(1 / 16.0L).times(eighth)) - expected), 1e-15) << eighth;
  }
}

} // namespace
} // namespace brisel
