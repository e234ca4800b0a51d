// remez_test.cpp - whole equiripple filters against an independent implementation, the grid, and the exchange itself.
#include "engine/fir/equiripple_design.h"

#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "tests/engine/fir/fir_specs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace brisel {
namespace {

BandPlan planned(const FilterSpec &spec, FirSymmetry symmetry, int rolloff_db = 0) {
  BandPlan plan;
  PlanRefusal refusal;
  PlanOptions options;
  options.symmetry = symmetry;
  options.rolloff_db = rolloff_db;
  EXPECT_TRUE(plan_bands(spec, options, plan, refusal)) << refusal.reason;
  return plan;
}

class Remez : public testing::Test {
protected:
  void SetUp() override {
    const SystemFile nowhere{SystemFile::Kind::null_device, ""};
    choose_system_files({nowhere, nowhere});
    reopen_system_files();
  }
  void TearDown() override { close_system_files(); }
};

// Half responses, centre first, of scipy.signal.remez 1.10.1 with grid_density=16, maxiter=100, fs=1, and the weights
// that passband ripple 0.5 dB and attenuation 40 dB stand for (differentiators with slope 2 pi per cycle). The grid and
// so the optimum are the same; an exchange stops when no error is larger than the levelled one by more than 1e-5 of it,
// which leaves up to about 1e-7 in a tap where it stops early.
TEST_F(Remez, WholeFilters) {
  struct Case {
    const char *name;
    FilterSpec spec;
    FirSymmetry symmetry;
    std::vector<double> half;
  };
  const std::vector<Case> cases{
      {"an odd lowpass",
       edge_spec(FilterType::low_pass, 31, {0.15, 0}, {0.2, 0}),
       FirSymmetry::symmetric,
       {0.34522996039837761, 0.28044504854959246, 0.12969007787157236, -0.011483825185354301, -0.07002202838475334,
        -0.04424563474299776, 0.010289685119925139, 0.036843901389614839, 0.021585144282727113, -0.0086331800629562347,
        -0.021878393747761456, -0.010767992853996515, 0.0082071042417864136, 0.016916019170751913, 0.014192255547872132,
        -0.0021274018447803226}},
      {"an even lowpass",
       edge_spec(FilterType::low_pass, 32, {0.15, 0}, {0.2, 0}),
       FirSymmetry::symmetric,
       {0.32846076045222583, 0.21023460947303946, 0.05180675369555629, -0.053201243105203078, -0.064994118848106408,
        -0.01619395433705461, 0.029355645386653119, 0.03345691919011233, 0.0059378958871412549, -0.018571082865506117,
        -0.018399508144170688, -0.00033779153405677498, 0.014910370013806171, 0.015676852472158217,
        0.007331654288566497, -0.0057928187367322255}},
      {"a highpass",
       edge_spec(FilterType::high_pass, 29, {0.32, 0}, {0.25, 0}),
       FirSymmetry::symmetric,
       {0.42422850876859186, -0.30755815159395933, 0.071305998481384913, 0.076067529846936072, -0.059129097075946629,
        -0.020274096432554074, 0.04248168024561895, -0.0035137189785065005, -0.025415526697247903, 0.011985330161345065,
        0.011565254236882958, -0.011636432180156576, -0.0024091785201884111, 0.010930505630503452,
        -0.0033534161906908968}},
      {"a bandpass",
       edge_spec(FilterType::band_pass, 33, {0.14, 0.26}, {0.08, 0.32}),
       FirSymmetry::symmetric,
       {0.35195087094621713, 0.10364760164206632, -0.22575008830664581, -0.16609995091092333, 0.035725956664670683,
        0.043420869211796005, -0.0039946462514931398, 0.0387036876836441, 0.046200853883393379, -0.014612628051748077,
        -0.028520817335846969, -0.0017811800956985091, -0.0058849265207840803, -0.014085487735290373,
        0.0035856142857395765, 0.014187850388295493, 0.0026626181078577248}},
      {"a bandstop",
       edge_spec(FilterType::band_stop, 35, {0.1, 0.34}, {0.16, 0.28}),
       FirSymmetry::symmetric,
       {0.62920367824797097, -0.065172111555111115, 0.26727166276161873, 0.10731570495634242, -0.078458530392311085,
        -0.020698633475452772, -0.013507703421831026, -0.056983899142185185, 0.0039815245875139769,
        0.041323554803672419, 0.0051146179363097113, 0.0042206437298058551, 0.011321782073369443, -0.01407099473645089,
        -0.016313332592798786, 0.003096098889476579, -0.0050616149943913087, 0.0009696365299031427}},
      {"an odd Hilbert transformer",
       edge_spec(FilterType::hilbert, 27, {0.05, 0.45}),
       FirSymmetry::antisymmetric,
       {0, 0.63074978826446626, -8.4278599228363878e-06, 0.19510514471446602, -5.0176390884956993e-06,
        0.10043183303200746, -7.7321302386305151e-06, 0.056424022130215107, -4.7249026476357866e-06,
        0.031142897482899657, -3.0477561217537664e-06, 0.015821939796073072, 1.3911729763927308e-06,
        0.0077485096094915837}},
      {"an even Hilbert transformer up to half the sampling frequency",
       edge_spec(FilterType::hilbert, 28, {0.05, 0.5}),
       FirSymmetry::antisymmetric,
       {0.63516728399508571, 0.20787911521286695, 0.12021894504449759, 0.081212890307984342, 0.058579923322300137,
        0.043539584571659046, 0.032741858152515041, 0.024628098111321731, 0.018368827213013472, 0.013489099786837946,
        0.0096773282126693515, 0.0067192193147359025, 0.0044632421953934975, 0.0042579624305575693}},
      {"an odd differentiator",
       differentiator_spec(25, 0.01, 0.4, 1),
       FirSymmetry::antisymmetric,
       {0, 0.97700485885095678, -0.45538281181921125, 0.26968137376287737, -0.17082229314846126, 0.10934689286781818,
        -0.068720556939770722, 0.041551452590151625, -0.023717482102114038, 0.012490801653120207,
        -0.0058652821139885845, 0.0023183000134605861, -0.00057822010535244211}},
      {"an even differentiator up to half the sampling frequency",
       differentiator_spec(24, 0.01, 0.5, 1),
       FirSymmetry::antisymmetric,
       {1.2735143888733236, -0.1417509324071079, 0.051218478300084858, -0.026289277303145529, 0.016044204015858095,
        -0.010880400809084138, 0.0079385918082016532, -0.0061518663094808296, 0.0050960501513776365,
        -0.0048192166174815133, 0.0080259949028874192, -0.0056655574000720656}},
      {"four bands",
       banded_spec(FilterType::multiband, 37,
                   {{0, 0.08, 1, 0.01}, {0.12, 0.2, 0.25, 0.005}, {0.25, 0.35, 0.7, 0.01}, {0.4, 0.5, 0, 0.002}}),
       FirSymmetry::symmetric,
       {0.46230598600589923, 0.15665069935471121, -0.014755422693323781, 0.16670253801282833, 0.054876681381725058,
        -0.050524060368706318, -0.00073197265403259653, -0.033660618549326393, -0.014996217487921047,
        -0.0028045307467741143, -0.026710241199425923, 0.019228625269405695, 0.025868333943694505,
        0.0038147151500524078, 0.011218647426659747, 0.0034349542504053397, -0.0014978193937122963,
        -0.0036502652660678776, -0.0082969442555943605}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    const BandPlan plan = planned(c.spec, c.symmetry);
    std::vector<double> half;
    OptimalReport report;
    ASSERT_EQ(remez_attempt(plan, 16, nullptr, half, report), RemezStatus::done);
    ASSERT_EQ(half.size(), c.half.size());
    for (std::size_t k = 0; k < half.size(); k++) EXPECT_NEAR(half[k], c.half[k], 1e-9) << k;
  }
}

TEST_F(Remez, ShortestFilters) {
  for (const FirSymmetry symmetry : {FirSymmetry::symmetric, FirSymmetry::antisymmetric}) {
    for (int length = 3; length <= 9; length++) {
      SCOPED_TRACE(formatf("length %d, symmetry %d", length, code(symmetry)));
      const BandPlan plan = planned(edge_spec(FilterType::band_pass, length, {0.2, 0.3}, {0.1, 0.4}), symmetry);
      std::vector<double> half;
      OptimalReport report;
      EXPECT_EQ(remez_attempt(plan, 16, nullptr, half, report), RemezStatus::done);
      DesignGrid grid = remez_grid(plan, 16);
      case_transform(plan, grid);
      const int r = cosine_count(length, plan.symmetric());
      const ExchangeResult exchange = remez_exchange(grid, r, nullptr);
      const std::vector<double> a = cosine_series(exchange, grid.frequency.front(), grid.frequency.back());
      EXPECT_EQ(exchange.no_transformation, true); // also by the ends of the grid
      EXPECT_EQ(a.size(), static_cast<std::size_t>(r <= 3 ? r + 2 : r));
    }
  }
}

TEST_F(Remez, GridOfABand) {
  struct Case {
    const char *name;
    FirSymmetry symmetry;
    int length;
    double lower, upper;
    std::vector<double> expected; // cycles per sample
  };
  // Density 1 and six cosines: spacing 1/12. The longest lengths of each kind have six.
  const double d = 1.0 / 12;
  const std::vector<Case> cases{
      {"points start at the lower edge and end at the upper one",
       FirSymmetry::symmetric,
       11,
       0.1,
       0.3,
       {0.1, 0.1 + d, 0.1 + 2 * d, 0.3}},
      {"an upper edge on the lattice is one point",
       FirSymmetry::symmetric,
       11,
       0.125,
       0.125 + 2 * d,
       {0.125, 0.125 + d, 0.125 + 2 * d}},
      {"a band narrower than the spacing has its edges", FirSymmetry::symmetric, 11, 0.1, 0.11, {0.1, 0.11}},
      {"an odd symmetric length reaches both ends",
       FirSymmetry::symmetric,
       11,
       0,
       0.5,
       {0, d, 2 * d, 3 * d, 4 * d, 5 * d, 0.5}},
      {"an even symmetric length is zero at 0.5", FirSymmetry::symmetric, 12, 0.25, 0.5, {0.25, 0.25 + d, 0.5 - d}},
      {"an odd antisymmetric length is zero at both ends",
       FirSymmetry::antisymmetric,
       13,
       0,
       0.5,
       {d, 2 * d, 3 * d, 4 * d, 0.5 - d}},
      {"a band within one spacing of a zero keeps a point", FirSymmetry::antisymmetric, 12, 0, 0.02, {0.02}},
      {"an even antisymmetric length is zero at 0",
       FirSymmetry::antisymmetric,
       12,
       0,
       0.5,
       {d, 2 * d, 3 * d, 4 * d, 5 * d, 0.5}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    const BandPlan plan =
        planned(banded_spec(FilterType::multiband, c.length, {{c.lower, c.upper, 1, 0.1}}), c.symmetry);
    const DesignGrid grid = remez_grid(plan, 1);
    ASSERT_EQ(grid.size(), c.expected.size());
    for (std::size_t i = 0; i < grid.size(); i++) EXPECT_NEAR(grid.frequency[i], c.expected[i], 1e-12) << i;
  }
}

TEST_F(Remez, LastPointsOfOneCosineMerge) {
  // Two points this near to 0 have the same cosine: 1.
  const double upper = 1e-9;
  BandPlan plan;
  plan.length = 11;
  plan.band_count = 1;
  plan.bands[0] = {.lower = 0, .upper = upper * two_pi, .value = 1};
  const DesignGrid grid = remez_grid(plan, 1);
  ASSERT_EQ(grid.size(), 1u);
  EXPECT_NEAR(grid.frequency[0], upper, 1e-20);
}

TEST_F(Remez, DensityDoublesUntilTheGridIsLargeEnough) {
  // Two bands of 0.002 hold 54 points at density 256, fewer than 34 below.
  const BandPlan plan = planned(banded_spec(FilterType::multiband, 31, {{0.1, 0.102, 1, 0.1}, {0.3, 0.302, 0, 0.1}}),
                                FirSymmetry::symmetric);
  EXPECT_LT(remez_grid(plan, 128).size(), 34u);
  EXPECT_GE(remez_grid(plan, 256).size(), 34u);
  std::vector<double> half;
  OptimalReport report;
  // So narrow bands are met to the last digit: there is no alternation to prove, and the result is not taken.
  EXPECT_EQ(remez_attempt(plan, 16, nullptr, half, report), RemezStatus::in_rounding);
}

TEST_F(Remez, JudgesAStopbandUpToTheZeroThatTheLengthForces) {
  const BandPlan plan = planned(
      banded_spec(FilterType::multiband, 12, {{0, 0.2694, 1, 0.1634}, {0.4944, 0.5, 0, 1e-4}}), FirSymmetry::symmetric);
  std::vector<double> half;
  OptimalReport report;
  int taps = 0;
  ASSERT_EQ(remez_attempt(plan, 16, nullptr, half, report), RemezStatus::done);
  EXPECT_GT(report.bound, 2);
  ASSERT_EQ(true_attempt(plan, nullptr, half, report, taps), RemezStatus::done);
  EXPECT_LT(report.bound, 1.01);
}

TEST_F(Remez, CoincidingAbscissaeAreDegenerate) {
  DesignGrid grid;
  for (int i = 0; i < 40; i++) {
    grid.frequency.push_back(1e-10 * i); // all cosines are 1
    grid.desired.push_back(i);
    grid.weight.push_back(1);
    grid.band.push_back(0);
  }
  EXPECT_EQ(remez_exchange(grid, 9, nullptr).error, ExchangeError::degenerate);
}

TEST_F(Remez, StopsWhenAsked) {
  const BandPlan plan = planned(edge_spec(FilterType::low_pass, 101, {0.15, 0}, {0.2, 0}), FirSymmetry::symmetric);
  std::vector<double> half;
  OptimalReport report;
  std::vector<double> fractions;
  const auto third_time = [&](double fraction) {
    fractions.push_back(fraction);
    return fractions.size() < 3;
  };
  EXPECT_EQ(remez_attempt(plan, 16, third_time, half, report), RemezStatus::stopped);
  EXPECT_EQ(fractions.size(), 3u);
  EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
}

} // namespace
} // namespace brisel
