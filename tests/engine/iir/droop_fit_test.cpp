#include "engine/iir/droop_fit.h"

#include "droop_probe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

using namespace brisel;

namespace {

constexpr double pi = std::numbers::pi;
const Compensation hold{.on = true, .type = CompensationCurve::sinc};
Compensation comb(int rate_change, int differential_delay, int stages) {
  return {true, CompensationCurve::comb, rate_change, differential_delay, stages};
}

DroopGoal goal_of(const Compensation &droop, std::vector<FrequencyBand> bands) {
  for (FrequencyBand &band : bands) band = {band.low * pi, band.high * pi};
  return {bands, [droop](double w) { return compensation_db(droop, w); }};
}

struct Range {
  long double low = HUGE_VALL, high = -HUGE_VALL;
  void take(long double value) {
    low = std::min(low, value);
    high = std::max(high, value);
  }
};

// Radius of the larger root of 1 + b z^-1 + c z^-2.
long double radius(const Triple &t) {
  const Probe root = std::sqrt(Probe(static_cast<long double>(t[1]) * t[1] - 4.0L * t[0] * t[2]));
  return std::max(std::abs(-Probe(t[1]) + root), std::abs(-Probe(t[1]) - root)) / (2 * std::abs(t[0]));
}

struct Row {
  const char *what;
  Compensation droop;
  std::vector<FrequencyBand> bands; // in parts of half the sampling frequency
  double enough;                    // dB
  int sections;
  double least; // smallest residual of so many sections inside the radius, 0 where it is not known
};
// `least` by SciPy: least squares from twelve starts, then linear programs in trust regions (scipy.optimize.linprog) on
// 300 points a band until they gain nothing, with no regard for what is outside the bands.
const Row rows[] = {
    {"hold, low", hold, {{0, 0.25}}, 0.01, 1, 0},
    {"hold, almost all", hold, {{0, 0.9}}, 0.01, 1, 0.0057883},
    {"hold, high", hold, {{0.5, 1}}, 0.1, 1, 0.0582312},
    {"hold, high and close", hold, {{0.5, 1}}, 0.01, 2, 0},
    {"hold, two bands", hold, {{0, 0.3}, {0.6, 1}}, 0.1, 1, 0.0742272},
    {"hold, two bands and close", hold, {{0, 0.3}, {0.6, 1}}, 0.01, 2, 0},
    {"hold, narrow", hold, {{0.7, 0.701}}, 0.01, 1, 0},
    {"comb, low", comb(16, 1, 4), {{0, 0.25}}, 0.01, 1, 0},
    {"comb, almost all", comb(16, 1, 4), {{0, 0.9}}, 0.1, 1, 0.0514923},
    {"comb, half of the way to its null", comb(16, 2, 5), {{0, 0.5}}, 0.05, 1, 0.0384042},
    {"comb, next to its null", comb(16, 2, 5), {{0, 0.8}}, 0.05, 2, 0},
    {"comb, between two nulls", comb(8, 4, 3), {{0.6, 0.9}}, 0.05, 2, 0.0170372},
    {"comb, a null between two bands", comb(8, 3, 3), {{0, 0.5}, {0.8, 1}}, 0.05, 3, 0},
    {"comb, many stages", comb(64, 1, 100), {{0, 0.25}}, 0.1, 1, 0.0859684},
    {"comb, many nulls", comb(4, 8, 4), {{0.1, 0.2}}, 0.01, 2, 0},
};

} // namespace

TEST(DroopFit, LeavesTheResidualItSaysWithFewSections) {
  for (const Row &row : rows) {
    SCOPED_TRACE(row.what);
    const DroopGoal goal = goal_of(row.droop, row.bands);
    const auto fit = fewest_droop_sections(goal, row.enough, 4);
    ASSERT_TRUE(fit);
    EXPECT_EQ(fit->sections.section_count, row.sections);
    EXPECT_LE(fit->residual_db, row.enough);
    // What keeps the gain outside in check costs a little.
    if (row.least > 0) {
      EXPECT_LT(fit->residual_db, 1.15 * row.least);
    }

    Range residual, droop;
    for (const FrequencyBand &band : goal.bands)
      for (int i = 0; i <= 400; i++) {
        const long double w = band.low + (band.high - band.low) * i / 400.0L, gain = droop_gain(row.droop, w);
        droop.take(decibels(gain));
        residual.take(decibels(gain * std::abs(product_at(fit->sections, on_circle(w)))));
      }
    EXPECT_NEAR(static_cast<double>(residual.high - residual.low), fit->residual_db, 0.02 * fit->residual_db + 1e-4)
        << "extremes between the points of either grid, and the droop of the steps";
    EXPECT_NEAR(static_cast<double>(droop.high - droop.low), droop_range(goal), 1e-3);
    for (int i = 0; i < fit->sections.section_count; i++) {
      const Triple &zeros = fit->sections.numerators[static_cast<std::size_t>(i)],
                   &poles = fit->sections.denominators[static_cast<std::size_t>(i)];
      EXPECT_EQ(zeros[0], 1);
      EXPECT_EQ(poles[0], 1);
      EXPECT_LE(radius(zeros), safe_root_radius + 1e-12L);
      EXPECT_LE(radius(poles), safe_root_radius + 1e-12L);
    }
  }
}

// Above the bands the inverse of the hold would rise to 3.9 dB, that of the comb beyond any limit.
TEST(DroopFit, DoesNotRiseWithoutNeedOutsideTheBands) {
  const struct {
    Compensation droop;
    double edge, excess; // dB above the gain at the edge
  } cases[] = {{hold, 0.25, 1}, {hold, 0.5, 1.5}, {comb(16, 1, 4), 0.25, 1.5}, {comb(16, 2, 5), 0.5, 6}};
  for (const auto &c : cases) {
    const DroopGoal goal = goal_of(c.droop, {{0, c.edge}});
    const auto fit = fewest_droop_sections(goal, 0.05, 4);
    ASSERT_TRUE(fit);
    const long double at_edge = std::abs(product_at(fit->sections, on_circle(c.edge * pi)));
    long double highest = 0;
    for (int i = 0; i <= 200; i++) {
      const long double w = pi * (c.edge + (1 - c.edge) * i / 200.0L);
      highest = std::max(highest, std::abs(product_at(fit->sections, on_circle(w))));
    }
    EXPECT_LT(decibels(highest / at_edge), c.excess) << c.edge;
  }
}

TEST(DroopFit, ComesCloserWithMoreSectionsAndRepeatsItself) {
  const DroopGoal goal = goal_of(comb(8, 3, 3), {{0, 0.5}, {0.8, 1}});
  double before = HUGE_VAL;
  for (int most = 1; most <= 3; most++) {
    const auto fit = fewest_droop_sections(goal, 1e-9, most), again = fewest_droop_sections(goal, 1e-9, most);
    ASSERT_TRUE(fit && again);
    EXPECT_EQ(fit->sections.section_count, most);
    EXPECT_LT(fit->residual_db, before / 3);
    before = fit->residual_db;
    EXPECT_EQ(fit->sections.numerators, again->sections.numerators);
    EXPECT_EQ(fit->sections.denominators, again->sections.denominators);
  }
}

TEST(DroopFit, HasNoneWhereTheCurveIsInfinite) {
  EXPECT_FALSE(fewest_droop_sections({{{1, 2}}, [](double w) { return w > 1.5 ? HUGE_VAL : 0; }}, 0.01, 4));
}
