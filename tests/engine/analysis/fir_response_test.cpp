#include "engine/analysis/fir_lattice.h"
#include "engine/analysis/fir_response.h"

#include "tests/engine/analysis/response_references.h"

#include <gtest/gtest.h>

#include <utility>

namespace brisel {
namespace {

enum class Taps { symmetric, antisymmetric, neither };

std::vector<double> make_taps(Taps kind, std::size_t length) {
  std::vector<double> h = random_values(length, 7);
  for (std::size_t k = 0; kind != Taps::neither && k < length / 2; ++k)
    h[length - 1 - k] = kind == Taps::symmetric ? h[k] : -h[k];
  if (kind == Taps::antisymmetric && length % 2 == 1) h[length / 2] = 0;
  return h;
}

double sum_of_magnitudes(std::span<const double> h) {
  double sum = 0;
  for (const double v : h) sum += std::abs(v);
  return sum;
}

struct GridCase {
  const char *name;
  bool logarithmic;
  double start, end; // of a sampling frequency of 1 rad/s
  std::size_t points;
};
const GridCase grid_cases[] = {
    {"half circle, folded", false, 0, 0.5, 101},
    {"half circle with a large prime factor", false, 0, 0.5, 108},
    {"a band", false, 0.1, 0.13, 90},
    {"beyond the half circle and below zero", false, -0.2, 0.9, 77},
    {"logarithmic", true, 1e-4, 0.5, 120},
    {"logarithmic beyond the half circle", true, 0.01, 1.3, 60},
};

FrequencyGrid make_grid(const GridCase &c, std::span<double> points) {
  return c.logarithmic ? logarithmic_grid(c.start * 2 * std::numbers::pi, c.end * 2 * std::numbers::pi, points)
                       : linear_grid(c.start, c.end, 1, points);
}

// The exact place of a point: linear grids are not bound to the last bit of their points.
long double exact_point(const FrequencyGrid &grid, std::size_t i) {
  return grid.linear ? (grid.start + static_cast<long double>(i) * grid.step) * wide_two_pi
                     : static_cast<long double>(grid.points[i]);
}

TEST(CentredResponse, AgreesWithDirectSumsOnWholeGrids) {
  for (const GridCase &c : grid_cases) {
    for (const Taps kind : {Taps::symmetric, Taps::antisymmetric, Taps::neither}) {
      for (const std::size_t length : {1, 2, 3, 50, 641}) {
        SCOPED_TRACE(testing::Message() << c.name << ", taps " << static_cast<int>(kind) << " " << length);
        const std::vector<double> h = make_taps(kind, length);
        std::vector<double> points(c.points);
        const FrequencyGrid grid = make_grid(c, points);
        std::vector<std::complex<double>> sums(c.points);
        centred_response(h, grid, sums);
        const double bound = 1e-14 * sum_of_magnitudes(h) + 1e-300;
        for (std::size_t i = 0; i < c.points; ++i) {
          const long double w = exact_point(grid, i);
          const Wide expected = direct_sum(h, w) * std::polar<long double>(1, w * (length - 1) / 2);
          ASSERT_LE(std::abs(Wide(sums[i]) - expected), bound) << i;
          ASSERT_TRUE(kind != Taps::symmetric || sums[i].imag() == 0);
          ASSERT_TRUE(kind != Taps::antisymmetric || sums[i].real() == 0);
        }
      }
    }
  }
}

// The longest filter on its longest grids, at some of the points: phases of 25000 turns and recurrences of 25000 steps
// must not cost digits, not for equal taps either, whose rounding errors do not cancel.
TEST(CentredResponse, KeepsItsDigitsForFiftyThousandTaps) {
  const std::size_t length = 50000, count = 10001;
  const GridCase grids[] = {{"half circle", false, 0, 0.5, count},
                            {"band", false, 0.01, 0.47, count},
                            {"logarithmic", true, 5e-5, 0.5, count}};
  for (const Taps kind : {Taps::symmetric, Taps::antisymmetric, Taps::neither}) {
    std::vector<double> h = make_taps(kind, length);
    if (kind == Taps::neither) h.assign(length, 0.7);
    const double bound = 1e-13 * sum_of_magnitudes(h);
    for (const GridCase &c : grids) {
      SCOPED_TRACE(testing::Message() << c.name << ", taps " << static_cast<int>(kind));
      std::vector<double> points(count);
      const FrequencyGrid grid = make_grid(c, points);
      std::vector<std::complex<double>> sums(count);
      centred_response(h, grid, sums);
      for (std::size_t i = 0; i < count; i += 625) {
        const long double w = exact_point(grid, i);
        const long double middle = std::fmod(w * (length - 1) / 2, wide_two_pi);
        ASSERT_LE(std::abs(Wide(sums[i]) - direct_sum(h, w) * std::polar<long double>(1, middle)), bound) << i;
      }
    }
  }
}

struct Computed {
  Computed(std::span<const double> h, double gain, GroupDelay delay, std::size_t count) : points(count), arrays(count) {
    fir_frequency_response(h, gain, delay, 0.5, linear_grid(0, 0.5, 1, points), arrays.view());
  }
  std::vector<double> points;
  FrequencyArrays arrays;
};

TEST(FirFrequencyResponse, GivesMagnitudePhaseAndGroupDelay) {
  const std::vector<double> h{0.9, -0.4, 0.3, 0.2, -0.1};
  const Computed r(h, 2.5, GroupDelay::computed, 201);
  std::vector<double> ramp(h);
  for (std::size_t k = 0; k < ramp.size(); ++k) ramp[k] *= static_cast<double>(k);
  for (std::size_t i = 0; i < 201; ++i) {
    const Wide expected = 2.5L * direct_sum(h, r.points[i]);
    EXPECT_LT(std::abs(Wide(r.arrays.at(i)) - expected), 1e-14) << i;
    const long double delay = (2.5L * direct_sum(ramp, r.points[i]) / expected).real();
    EXPECT_NEAR(r.arrays.group_delay[i], static_cast<double>(0.5L * delay), 1e-14) << i;
  }
}

TEST(FirFrequencyResponse, RoundingBesideAZeroGivesNoGroupDelay) {
  const Computed r(std::vector<double>{0.1, 0.3, 0.3, 0.1}, 1, GroupDelay::computed, 64);
  for (const double delay : r.arrays.group_delay) EXPECT_NEAR(delay, 0.75, 1e-12);
}

// Kept: with a stated symmetry the delay is that of the middle even when the taps do not have the symmetry.
TEST(FirFrequencyResponse, ConstantGroupDelayIsThatOfTheMiddle) {
  const std::vector<double> h{0.9, -0.4, 0.3, 0.2};
  for (const double delay : Computed(h, 1, GroupDelay::constant, 11).arrays.group_delay) EXPECT_EQ(delay, 0.75);
}

TEST(FirFrequencyResponse, RepeatsPhaseAndDelayWhereItVanishes) {
  // 1 + z^-2 vanishes at a quarter of the sampling frequency, 1 - z^-2 at the first and the last point.
  const Computed middle(std::vector<double>{1, 0, 1}, 1, GroupDelay::computed, 5);
  EXPECT_LT(middle.arrays.magnitude[2], 2e-16);
  const Computed ends(std::vector<double>{1, 0, -1}, 1, GroupDelay::computed, 5);
  EXPECT_EQ(ends.arrays.magnitude[0], 0);
  EXPECT_EQ(ends.arrays.phase[0], 0);
  EXPECT_EQ(ends.arrays.group_delay[0], 0);
  EXPECT_EQ(ends.arrays.magnitude[4], 0);
  EXPECT_EQ(ends.arrays.phase[4], ends.arrays.phase[3]);
  EXPECT_EQ(ends.arrays.group_delay[4], ends.arrays.group_delay[3]);
}

TEST(FirFrequencyResponse, NegativeGainTurnsThePhase) {
  const Computed r(std::vector<double>{0.5}, -2, GroupDelay::constant, 3);
  EXPECT_EQ(r.arrays.magnitude[1], 1);
  EXPECT_NEAR(std::abs(r.arrays.phase[1]), std::numbers::pi, 1e-15);
}

TEST(FirTimeResponse, GoesOnWithTheLastTap) { // Kept: not with zeros
  TimeArrays time(600);
  fir_time_response(std::vector<double>{1, 2, 3, 4, -5}, 2, time.view());
  EXPECT_EQ(std::vector<double>(time.impulse.begin(), time.impulse.begin() + 5),
            (std::vector<double>{2, 4, 6, 8, -10}));
  EXPECT_EQ(std::vector<double>(time.step.begin(), time.step.begin() + 5), (std::vector<double>{2, 6, 12, 20, 10}));
  for (std::size_t k = 5; k < 600; ++k) {
    EXPECT_EQ(time.impulse[k], -10);
    EXPECT_EQ(time.step[k], 10);
  }
}

// A tap-by-tap run of the lattice: f_m = f_(m-1) + k_m g_(m-1)[n-1], g_m = k_m f_(m-1) + g_(m-1)[n-1].
TEST(LatticeFir, TapsAreItsImpulseResponse) {
  const std::vector<double> reflection{0.5, -0.3, 0.8, 1.0, -1.5};
  const std::vector<double> taps = lattice_fir_taps(reflection);
  ASSERT_EQ(taps.size(), 6u);
  std::vector<double> before(reflection.size());
  for (std::size_t n = 0; n < taps.size(); ++n) {
    double forward = n == 0, backward = forward;
    for (std::size_t m = 0; m < reflection.size(); ++m) {
      const double delayed = std::exchange(before[m], backward);
      backward = reflection[m] * forward + delayed;
      forward += reflection[m] * delayed;
    }
    EXPECT_NEAR(taps[n], forward, 1e-15) << n;
  }
  EXPECT_EQ(lattice_fir_taps({}), std::vector<double>{1});
}

} // namespace
} // namespace brisel
