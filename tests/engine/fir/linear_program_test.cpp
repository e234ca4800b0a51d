// linear_program_test.cpp - whole filters against another solver, and the outcomes of the simplex method.
#include "engine/fir/linear_program.h"

#include "tests/engine/fir/fir_specs.h"

#include <gtest/gtest.h>

#include <cmath>

namespace brisel {
namespace {

// scipy.optimize.linprog 1.10.1 (highs-ds) on the same samples, its active constraints solved once more as a linear
// system; passband ripple 0.5 dB, attenuation 40 dB. Both are good to about 1e-13.
TEST(LinearProgram, WholeFilters) {
  struct Case {
    const char *name;
    FilterSpec spec;
    FirSymmetry symmetry;
    int rolloff_db;
    double deviation;
    std::vector<double> half; // centre first
  };
  const std::vector<Case> cases{
      {"an odd lowpass",
       edge_spec(FilterType::low_pass, 21, {0.15, 0}, {0.22, 0}),
       FirSymmetry::symmetric,
       0,
       0.0453016468380315,
       {0.3658311715565607, 0.2899083041202319, 0.1197009792662951, -0.0250620118689414, -0.06727395244511065,
        -0.02555841118655461, 0.02609650096821767, 0.03649276319333659, 0.01229746671100182, -0.01076002113171436,
        -0.01681434050734308}},
      {"an even lowpass",
       edge_spec(FilterType::low_pass, 22, {0.15, 0}, {0.22, 0}),
       FirSymmetry::symmetric,
       0,
       0.0394327653396868,
       {0.3433103968521828, 0.2068781009958327, 0.03493262844315008, -0.06318283207231859, -0.05585969701715534,
        -0.001078685923556356, 0.0338658712491227, 0.0205017400600825, -0.004512583874051289, -0.02276068685919681,
        -0.01181063452393587}},
      {"an odd Hilbert transformer",
       edge_spec(FilterType::hilbert, 19, {0.06, 0.44}),
       FirSymmetry::antisymmetric,
       0,
       0.0112955225065707,
       {0, 0.6270557062767022, 0, 0.1847967324531266, 0, 0.08564238458136063, 3.27574509485799e-17, 0.04001554134962852,
        3.157535866435207e-17, 0.01777244507038081}},
      {"an even Hilbert transformer",
       edge_spec(FilterType::hilbert, 20, {0.06, 0.45}),
       FirSymmetry::antisymmetric,
       0,
       0.00981453618481583,
       {0.6276858265167466, 0.2117363820205379, 0.1097700128551208, 0.08151919610081139, 0.0464487877588072,
        0.04106552889812704, 0.02053656723652141, 0.02054831176876136, 0.007614413316565268, 0.01120886965172175}},
      {"a differentiator, relative error",
       differentiator_spec(19, 0.01, 0.4, 1),
       FirSymmetry::antisymmetric,
       0,
       0.010937674237828,
       {0, 0.9704997724749036, -0.4431583510032879, 0.2531716402013851, -0.1518673845419746, 0.0898953136809772,
        -0.05053203885784157, 0.02597520529120769, -0.01169972166141173, 0.003364391322674693}},
      {"a bandpass with a rolloff of 6 dB per octave",
       edge_spec(FilterType::band_pass, 25, {0.15, 0.25}, {0.08, 0.33}),
       FirSymmetry::symmetric,
       6,
       0.0343891934079637,
       {0.3253086685673008, 0.09485867291871433, -0.2144763663232711, -0.160577503448179, 0.03974203164011385,
        0.05976152482400585, 0.003587722794020838, 0.0218715829124823, 0.0314237642167201, -0.01150083562637505,
        -0.03026815370607092, -0.007979055564622872, 0.007828475920212579}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    BandPlan plan;
    PlanRefusal refusal;
    ASSERT_TRUE(plan_bands(c.spec, {.symmetry = c.symmetry, .rolloff_db = c.rolloff_db}, plan, refusal));
    Tableau tableau = make_tableau(plan, linear_program_samples(plan));
    ASSERT_EQ(find_start_basis(tableau, nullptr), StartBasis::found);
    ASSERT_EQ(simplex_solve(tableau, nullptr), SimplexOutcome::optimal);
    EXPECT_NEAR(optimal_deviation(tableau), c.deviation, 1e-10);
    const std::vector<double> half = optimal_taps(tableau, plan);
    ASSERT_EQ(half.size(), c.half.size());
    for (std::size_t k = 0; k < half.size(); k++) EXPECT_NEAR(half[k], c.half[k], 1e-9) << k;
  }
}

TEST(LinearProgram, Samples) {
  struct Case {
    const char *name;
    int bands, length;
    FirSymmetry symmetry;
    int coefficients, samples;
  };
  for (const Case &c :
       {Case{"one band has 200", 1, 21, FirSymmetry::symmetric, 11, 200},
        Case{"two bands have half of that each", 2, 21, FirSymmetry::antisymmetric, 10, 200},
        Case{"three bands round up", 3, 20, FirSymmetry::symmetric, 10, 201},
        Case{"never fewer than coefficients", 1, 601, FirSymmetry::symmetric, 301, 301},
        Case{"an even antisymmetric length has no zero tap", 2, 802, FirSymmetry::antisymmetric, 401, 402}}) {
    SCOPED_TRACE(c.name);
    BandPlan plan;
    plan.length = c.length;
    plan.symmetry = c.symmetry;
    plan.band_count = c.bands;
    for (int b = 0; b < c.bands; b++) plan.bands[b] = {.lower = 0.5 * b + 0.1, .upper = 0.5 * b + 0.4, .value = 1};
    const DesignGrid samples = linear_program_samples(plan);
    EXPECT_EQ(coefficient_count(c.length, plan.symmetric()), c.coefficients);
    ASSERT_EQ(static_cast<int>(samples.size()), c.samples);
    EXPECT_DOUBLE_EQ(samples.frequency.front() * two_pi, 0.1);
    EXPECT_DOUBLE_EQ(samples.frequency.back() * two_pi, 0.5 * (c.bands - 1) + 0.4);
  }
}

// A tableau of one coefficient row and the deviation row; columns: right-hand side, two samples, their pairs, slacks.
Tableau small_tableau(std::vector<double> cells) {
  Tableau t;
  t.samples = 2;
  t.coefficients = 1;
  t.cells = std::move(cells);
  t.basic_row.resize(7);
  t.row_placed.resize(3);
  return t;
}

TEST(Simplex, Outcomes) {
  // min -x1 - 2 x2 with x1 + s1 = 4, x2 + s2 = 3, the slacks as pair columns: 4 and 3, objective -10.
  Tableau bounded = small_tableau({0, -1, -2, 0, 0, 0, 0, //
                                   4, 1,  0,  1, 0, 0, 0, //
                                   3, 0,  1,  0, 1, 0, 0});
  bounded.basic_row = {0, 0, 0, 1, 2, 0, 0};
  EXPECT_EQ(simplex_solve(bounded, nullptr), SimplexOutcome::optimal);
  EXPECT_DOUBLE_EQ(bounded.row(0)[0], 10);
  EXPECT_EQ(bounded.basic_row, (std::vector<int>{0, 1, 2, 0, 0, 0, 0}));

  Tableau unbounded = small_tableau({0, -1, -2, 0, 0, 0, 0, //
                                     4, 1,  -1, 1, 0, 0, 0, //
                                     3, 0,  0,  0, 1, 0, 0});
  EXPECT_EQ(simplex_solve(unbounded, nullptr), SimplexOutcome::unbounded);

  // A column of zeros besides the right-hand side leaves the second row without a pivot.
  Tableau no_basis = small_tableau({0, 1, 1, 1,  1,  0, 0, //
                                    0, 1, 2, -1, -2, 1, 0, //
                                    1, 0, 0, 0,  0,  0, 1});
  EXPECT_EQ(find_start_basis(no_basis, nullptr), StartBasis::none);
}

TEST(Simplex, EqualChoicesGoToTheFirst) {
  // Two equal columns, and two rows of the same ratio.
  Tableau t = small_tableau({0, -1, -1, 0, 0, 0, 0, //
                             2, 1,  1,  1, 0, 0, 0, //
                             2, 1,  1,  0, 1, 0, 0});
  t.basic_row = {0, 0, 0, 1, 2, 0, 0};
  EXPECT_EQ(simplex_solve(t, nullptr), SimplexOutcome::optimal);
  EXPECT_EQ(t.basic_row, (std::vector<int>{0, 1, 0, 0, 2, 0, 0}));
}

} // namespace
} // namespace brisel
