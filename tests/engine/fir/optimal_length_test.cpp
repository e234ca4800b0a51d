// optimal_length_test.cpp - the published length formulas, and whether filters of the estimated length do what was
// asked.
#include "engine/fir/optimal_length.h"

#include "engine/fir/remez.h"
#include "tests/engine/fir/fir_specs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace brisel {
namespace {

TEST(LengthFormulas, PublishedExamples) {
  // [Oppenheim99] ch. 7, example of Kaiser's formula: deviations 0.01 and 0.001, edges 0.4 pi and 0.6 pi, M = 25.34
  // (the text writes 2.324 times the width in radians for 14.6 times that in cycles).
  EXPECT_NEAR(kaiser_length(0.01, 0.001, 0.1), 25.34 + 1, 0.02);
  EXPECT_EQ(herrmann_length(0.001, 0.01, 0.1), herrmann_length(0.01, 0.001, 0.1)); // a highpass needs as much
  EXPECT_EQ(herrmann_length(0.2, 0.001, 0.1), kaiser_length(0.2, 0.001, 0.1));     // outside the fit
}

// The formula was fitted to the shortest lowpass filters that stay within the deviations, so they must be near it. It
// is known to fall short by some taps; the worst of these cases lacks 4.08.
TEST(LengthFormulas, ShortestLowpassFilters) {
  for (const double ripple_db : {0.02, 0.2, 1.0}) {
    for (const double attenuation_db : {40.0, 60.0, 80.0}) {
      for (const double width : {0.03, 0.1}) {
        FilterSpec spec = edge_spec(FilterType::low_pass, 0, {0.2 - width / 2, 0}, {0.2 + width / 2, 0});
        spec.passband_ripple = ripple_db;
        spec.stopband_ripple = attenuation_db;
        const BandDeviations d = band_deviations(ripple_db, attenuation_db);
        const double estimate = herrmann_length(d.passband, d.stopband, width);
        const auto meets = [&](int length) {
          spec.length = length;
          BandPlan plan;
          PlanRefusal refusal;
          EXPECT_TRUE(plan_bands(spec, {}, plan, refusal));
          DesignGrid grid = remez_grid(plan, 16);
          case_transform(plan, grid);
          return remez_exchange(grid, cosine_count(length, true), nullptr).deviation <= plan.allowed_deviation;
        };
        int shortest = std::max(min_taps, static_cast<int>(estimate / 2));
        while (!meets(shortest)) shortest++;
        EXPECT_NEAR(shortest, estimate, 4.2) << ripple_db << " dB, " << attenuation_db << " dB, " << width;
      }
    }
  }
}

// Every estimated length meets its ripple, and is not much longer than it has to be.
TEST(OptimalLength, DifferentiatorsMeetTheirRipple) {
  for (const double lower : {0.0, 0.05}) {
    for (const double upper : {0.5, 0.49, 0.45, 0.3}) {
      for (const double percent : {5.0, 0.5, 0.2}) {
        FilterSpec spec = differentiator_spec(0, lower, upper, percent);
        const auto error = [&](int length) { // in parts of the ripple
          spec.length = length;
          BandPlan plan;
          PlanRefusal refusal;
          EXPECT_TRUE(plan_bands(spec, {.symmetry = FirSymmetry::antisymmetric}, plan, refusal));
          DesignGrid grid = remez_grid(plan, 16);
          case_transform(plan, grid);
          return remez_exchange(grid, cosine_count(length, false), nullptr).deviation / plan.allowed_deviation;
        };
        const int estimate = optimal_length(spec, FirSymmetry::antisymmetric);
        EXPECT_LT(error(estimate), 1) << lower << ' ' << upper << ' ' << percent << ' ' << estimate;
        EXPECT_GT(error(estimate - 8 - estimate / 100 * 2), 1) << lower << ' ' << upper << ' ' << percent;
      }
    }
  }
}

TEST(OptimalLength, LengthsAndTheirParity) {
  using enum FilterType;
  constexpr FirSymmetry symmetric = FirSymmetry::symmetric, antisymmetric = FirSymmetry::antisymmetric;
  struct Case {
    const char *name;
    FilterSpec spec;
    FirSymmetry symmetry;
    int modulus, remainder;
  };
  for (const Case &c : {
           Case{"lowpass", edge_spec(low_pass, 0, {0.1, 0}, {0.13, 0}), symmetric, 2, 1},
           Case{"highpass", edge_spec(high_pass, 0, {0.13, 0}, {0.1, 0}), symmetric, 2, 1},
           Case{"antisymmetric highpass", edge_spec(high_pass, 0, {0.13, 0}, {0.1, 0}), antisymmetric, 2, 0},
           Case{"antisymmetric bandpass", edge_spec(band_pass, 0, {0.13, 0.2}, {0.1, 0.23}), antisymmetric, 2, 1},
           Case{"Hilbert transformer", edge_spec(hilbert, 0, {0.03, 0.47}), antisymmetric, 2, 1},
           Case{"Hilbert transformer to the end", edge_spec(hilbert, 0, {0.03, 0.5}), antisymmetric, 2, 0},
           Case{"halfband", edge_spec(half_band, 0, {0.22, 0}), symmetric, 4, 3},
       })
    EXPECT_EQ(optimal_length(c.spec, c.symmetry) % c.modulus, c.remainder) << c.name;
}

TEST(OptimalLength, Limits) {
  const auto length = [](double transition) {
    return optimal_length(edge_spec(FilterType::low_pass, 0, {0.1, 0}, {0.1 + transition, 0}), FirSymmetry::symmetric);
  };
  EXPECT_EQ(length(0), 32767);
  EXPECT_EQ(length(1e-6), 32767);
  EXPECT_EQ(length(std::numeric_limits<double>::quiet_NaN()), 32767);
  EXPECT_EQ(length(0.39), 3);
  FilterSpec loose = edge_spec(FilterType::hilbert, 0, {0.1, 0.4});
  loose.passband_ripple = 1e11;
  EXPECT_EQ(optimal_length(loose, FirSymmetry::antisymmetric), 3);
  EXPECT_EQ(optimal_length(banded_spec(FilterType::multiband, 0, {{0, 0.1, 1, 1e300}, {0.2, 0.5, 1, 1e300}}),
                           FirSymmetry::symmetric),
            3);
}

} // namespace
} // namespace brisel
