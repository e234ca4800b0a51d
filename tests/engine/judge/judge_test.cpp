#include "engine/judge/judge.h"

#include "engine/core/code_tables.h"
#include "engine/judge/judgement_text.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <utility>

namespace brisel {
namespace {

constexpr double pi = std::numbers::pi;

double db(double gain) {
  return 20 * std::log10(gain);
}

FilterSpec specification(FilterType type, std::array<double, 2> pass = {}, std::array<double, 2> stop = {}) {
  FilterSpec spec{};
  spec.type = code(type);
  spec.sampling_frequency = 2 * pi;
  spec.passband_edge = pass;
  spec.stopband_edge = stop;
  spec.passband_ripple = 0.1;
  spec.stopband_ripple = 60;
  spec.slope = 1;
  return spec;
}

// Bands of one gain each, or of a straight line from `value` to the second of the pair.
struct Piece {
  double low, high;
  std::vector<std::pair<double, double>> points;
};
FilterSpec bands(FilterType type, const std::vector<Piece> &pieces, bool proportional = false) {
  FilterSpec spec = specification(type);
  spec.band_count = static_cast<int>(pieces.size());
  for (std::size_t b = 0; b < pieces.size(); b++) {
    spec.band_lower[b] = pieces[b].low;
    spec.band_upper[b] = pieces[b].high;
    spec.band_ripple[b] = 0.01;
    spec.band_value[b] = pieces[b].points[0].second;
    if (type == FilterType::multiband) continue;
    spec.fixed_gain[b] = pieces[b].points.size() == 1;
    spec.proportional[b] = proportional;
    spec.point_count[b] = static_cast<std::uint8_t>(pieces[b].points.size());
    for (std::size_t i = 0; i < pieces[b].points.size(); i++) {
      spec.function_frequency[b * max_points_per_band + i] = pieces[b].points[i].first;
      spec.function_value[b * max_points_per_band + i] = pieces[b].points[i].second;
    }
  }
  return spec;
}

using Taps = std::vector<double>;
const Taps hanning{0.25, 0.5, 0.25}; // gain cos(w/2)^2, which falls all the way
double hanning_gain(double w) {
  return std::pow(std::cos(w / 2), 2);
}

TEST(Judge, FiguresOfEveryTypeAgreeWithClosedForms) {
  const auto g = hanning_gain;
  const auto mean = [](int n, double w) { return std::abs(std::sin(n * w / 2) / (n * std::sin(w / 2))); };
  // The first side lobe of a mean, where n tan(w/2) = tan(n w/2).
  double lobe = 3 * pi / 63;
  for (int i = 0; i < 50; i++) lobe = 2 * (std::atan(63 * std::tan(lobe / 2)) + pi) / 63;
  const Compensation sinc{.on = true, .type = CompensationCurve::sinc};
  using enum FilterType;
  struct Row {
    const char *name;
    FilterSpec spec;
    Taps taps;
    std::vector<std::pair<const char *, double>> figures; // band and value
    Compensation compensation = {};
  };
  const Row rows[]{
      {"lowpass",
       specification(low_pass, {0.2, 0}, {2, 0}),
       hanning,
       {{"passband", -db(g(0.2))}, {"stopband", -db(g(2))}, {"gap", db(g(0.2))}}},
      {"bandpass: attenuations refer to the largest gain of the passband",
       specification(band_pass, {1, 1.5}, {0.5, 2.5}),
       hanning,
       {{"passband", db(g(1) / g(1.5))},
        {"lower stopband", db(g(1))},
        {"upper stopband", db(g(1) / g(2.5))},
        {"gap 1", db(g(0.5))},
        {"gap 2", db(g(1.5))}}},
      {"bandstop: each passband, and both together",
       specification(band_stop, {0.5, 2}, {1, 1.5}),
       {0.2, 0.6, 0.2},
       {{"lower passband", -db(0.6 + 0.4 * std::cos(0.5))},
        {"upper passband", db((0.6 + 0.4 * std::cos(2)) / 0.2)},
        {"passbands", -db(0.2)},
        {"stopband", -db(0.6 + 0.4 * std::cos(1))},
        {"gap 1", db(0.6 + 0.4 * std::cos(0.5))},
        {"gap 2", db(0.6 + 0.4 * std::cos(1.5))}}},
      {"halfband: the stopband mirrors the passband",
       specification(half_band, {0.5, 0}),
       hanning,
       {{"passband", -db(g(0.5))}, {"stopband", -db(g(pi - 0.5))}, {"gap", db(g(0.5))}}},
      {"a peak between samples",
       specification(low_pass, {0.01, 0}, {2 * pi / 63, 0}),
       Taps(63, 1.0 / 63),
       {{"passband", -db(mean(63, 0.01))}, {"stopband", -db(mean(63, lobe))}, {"gap", db(mean(63, 0.01))}}},
      {"compensation asks for (w/2) / sin(w/2)",
       specification(low_pass, {1, 0}, {2, 0}),
       {1, 0},
       {{"passband", db(0.5 / std::sin(0.5))}, {"stopband", 0}, {"gap", 0}},
       sinc},
      {"raised cosine: of this one the curve is the gain",
       specification(raised_cosine, {0, 0}, {pi, 0}),
       hanning,
       {{"passband", 0}, {"stopband", INFINITY}, {"gap", 0}}},
      {"Hilbert transformer", specification(hilbert, {0.5, 1}), {0.5, 0, -0.5}, {{"passband", 1 - std::sin(0.5)}}},
      {"differentiator from 0, where 0 is asked for: the gain is sin(w)",
       specification(differentiator, {0, 0.3}),
       {0.5, 0, -0.5},
       {{"passband", 1 - std::sin(0.3) / 0.3}}},
      {"a differentiator that is worst at 0",
       specification(differentiator, {0, 0.3}),
       {0.55, 0, -0.55},
       {{"passband", 0.1}}},
      {"multiband",
       bands(multiband, {{0, 1, {{0, -1}}}, {2, pi, {{0, 0}}}}),
       hanning,
       {{"band 1", 1 - g(1)}, {"band 2", g(2)}, {"gap", db(g(1))}}},
      {"arbitrary magnitude: negative gains as those of multiband",
       bands(arbitrary_magnitude, {{0, 1, {{0, -1}}}}),
       hanning,
       {{"band 1", 1 - g(1)}}},
      {"a kink, where the error has its peak",
       bands(arbitrary_magnitude, {{0, 2, {{0, 1}, {0.7, 1.25}, {2, g(2)}}}}),
       hanning,
       {{"band 1", 1.25 - g(0.7)}}},
      {"a desired gain that crosses 0",
       bands(arbitrary_magnitude, {{0, 2, {{0, 1}, {2, -1}}}}),
       hanning,
       {{"band 1", g(1)}}},
  };
  for (const Row &row : rows) {
    const auto found = judge(goals_of(row.spec, row.compensation), judged_fir(row.taps, 1));
    ASSERT_EQ(found.size(), row.figures.size()) << row.name;
    for (std::size_t i = 0; i < found.size(); i++) {
      EXPECT_EQ(found[i].goal.band, row.figures[i].first) << row.name;
      if (std::isinf(row.figures[i].second))
        EXPECT_GT(found[i].attained.value, 300) << row.name;
      else
        EXPECT_NEAR(found[i].attained.value, row.figures[i].second, 1e-10) << row.name << ", " << found[i].goal.band;
    }
  }
}

TEST(Judge, ProportionalBandsThatReachZeroAreJudgedAbsolutely) {
  for (const double last : {0.5, 0.0, -0.5}) {
    const auto spec = bands(FilterType::arbitrary_magnitude, {{0, 1, {{0, 1}, {1, last}}}}, true);
    const Judgement found = judge(goals_of(spec, {}), judged_fir(hanning, 1)).at(0);
    const bool relative = last > 0;
    EXPECT_EQ(found.goal.quantity, relative ? Quantity::relative_error : Quantity::error) << last;
    const double error = hanning_gain(1) - std::abs(last);
    if (last != -0.5) EXPECT_NEAR(found.attained.value, relative ? error / last : error, 1e-12) << last;
    EXPECT_GT(found.attained.value, 0.2) << last;
  }
}

TEST(Judge, PeaksThatCrowdAtABandEdgeAreFound) {
  // cos(w/2)^2 T_n(x0 cos(w)): next to a steep transition the peaks of a Chebyshev polynomial stand far closer than 2
  // pi over the number of taps, and the factor makes the first of them the largest.
  constexpr int n = 100;
  const double x0 = std::cosh(0.11);
  Taps before{1}, taps{x0 / 2, 0, x0 / 2}; // T_0 and T_1, each of 2k + 1 taps
  for (int k = 1; k < n; k++) {
    Taps next(taps.size() + 2);
    for (std::size_t i = 0; i < taps.size(); i++) next[i] += x0 * taps[i], next[i + 2] += x0 * taps[i];
    for (std::size_t i = 0; i < before.size(); i++) next[i + 2] -= before[i];
    before = std::exchange(taps, next);
  }
  Taps smoothed(taps.size() + 2);
  for (std::size_t i = 0; i < taps.size(); i++)
    for (std::size_t j = 0; j < 3; j++) smoothed[i + j] += taps[i] * hanning[j];
  const double edge = std::acos(std::cos(pi / (2 * n)) / x0), end = std::acos(-std::cos(pi / (2 * n)) / x0);
  double largest = 0;
  for (int i = 0; i <= 1000000; i++) {
    const double w = edge + (end - edge) * i / 1000000;
    largest = std::max(largest, std::abs(hanning_gain(w) * std::cos(n * std::acos(x0 * std::cos(w)))));
  }
  EXPECT_NEAR(gain_range(judged_fir(smoothed, 1), {edge, end}).largest.value, db(largest), 1e-6); // of the brute force
}

// (1 + p) / 2 (1 - 1/z) / (1 - p/z): a highpass with -3 dB where tan(w/2) = (1 - p) / (1 + p), from numbers that lie
// exactly on the grid of a double.
TEST(Judge, NarrowSectionsAtBothEndsAreEvaluatedWithoutCancellation) {
  const double p = 1 - std::ldexp(1, -20), corner = 2 * std::atan((1 - p) / (1 + p));
  for (const bool high : {true, false}) {
    IirForms forms{};
    forms.cascade.section_count = 1;
    forms.cascade.order = 1;
    forms.cascade.gain = (1 + p) / 2;
    const double sign = high ? -1 : 1;
    forms.cascade.numerators[0] = {1, sign, 0};
    forms.cascade.denominators[0] = {1, sign * p, 0};
    const JudgedFilter filter = judged_iir(forms, code(RealizationForm::cascade));
    const double digits = high ? 1e-12 : 1e-9; // half the sampling frequency is no double
    const double w = high ? 2 * corner : pi - 2 * corner;
    const double t = std::tan((high ? w : pi - w) / 2), c = std::tan(corner / 2);
    EXPECT_NEAR(filter.gain(w), t / std::hypot(t, c), digits);
    const auto spec = high ? specification(FilterType::high_pass, {w, 0}, {w / 100, 0})
                           : specification(FilterType::low_pass, {w, 0}, {pi - w / 1e9, 0});
    EXPECT_NEAR(judge(goals_of(spec, {}), filter).at(0).attained.value, -db(t / std::hypot(t, c)), 10 * digits);
  }
}

TEST(Judge, APeakOfAnyNarrownessIsFound) {
  for (const double distance : {1e-3, 1e-6, 1e-9}) {
    const double radius = 1 - distance, angle = 0.777;
    IirForms forms{};
    forms.cascade.section_count = 1;
    forms.cascade.order = 2;
    forms.cascade.gain = 1;
    forms.cascade.numerators[0] = {1, 0, 0};
    forms.cascade.denominators[0] = {1, -2 * radius * std::cos(angle), radius * radius};
    const Figure largest = gain_range(judged_iir(forms, code(RealizationForm::cascade)), {0, pi}).largest;
    EXPECT_NEAR(largest.worst_at, angle, distance);
    // At the peak of a resonator the gain is 1 / ((1 - r^2) sin(angle)).
    EXPECT_NEAR(largest.value, -db((1 - radius * radius) * std::sin(angle)), 1e-6);
  }
}

TEST(Judge, WhatIsNoNumberIsSaidAndMissed) {
  const FilterSpec highpass = specification(FilterType::high_pass, {1, 0}, {0.5, 0});
  const auto pole = [](double a1, double a2) {
    auto forms = std::make_shared<IirForms>();
    forms->cascade.section_count = 1;
    forms->cascade.order = 2;
    forms->cascade.gain = 1;
    forms->cascade.numerators[0] = {1, 0, 0};
    forms->cascade.denominators[0] = {1, a1, a2};
    return forms;
  };
  const auto on_circle = pole(-1.5, 1), outside = pole(-1.5, 1.1);
  struct Row {
    FilterSpec spec;
    JudgedFilter filter;
    const char *says;
  };
  for (const Row &row : {
           Row{highpass, judged_fir(Taps{0.1, -0.6, 0.6, -0.1}, 0), "no gain at all"},
           Row{highpass, judged_fir(Taps{0.5, 0.5}, 1), "infinite: a zero at P"},
           Row{highpass, judged_iir(*on_circle, 0), "a pole on the unit circle"},
           Row{highpass, judged_iir(*outside, 0), "unstable: a pole outside the unit circle"},
           Row{specification(FilterType::differentiator, {0, 1}), judged_fir(Taps{0.5, 0.01, -0.5}, 1),
               "infinite: a gain at 0, where none is asked for"},
       }) {
    const Judgement found = judge(goals_of(row.spec, {}), row.filter).at(0);
    EXPECT_EQ(figure_text(found, found.attained, "P"), row.says);
    EXPECT_EQ(found.met, false) << row.says;
    EXPECT_EQ(meets(goals_of(row.spec, {}), row.filter), false) << row.says;
    EXPECT_FALSE(std::isfinite(found.attained.value)) << row.says;
  }
}

TEST(Judge, WhatIsAttainedExactlyIsMetAndAMissShowsItsDigits) {
  FilterSpec spec = specification(FilterType::low_pass, {1, 0}, {2, 0});
  const double ripple = -db(hanning_gain(1));
  spec.stopband_ripple = 0; // asks for nothing
  struct Row {
    double asked;
    bool met;
    const char *text;
  };
  for (const Row &row : {Row{ripple, true, "2.2685 dB"}, Row{ripple - 0.9e-7, true, "2.2685 dB"},
                         Row{ripple - 2e-6, false, "2.268481 dB"}, Row{ripple - 1, false, "2.2685 dB"}}) {
    spec.passband_ripple = row.asked;
    const auto found = judge(goals_of(spec, {}), judged_fir(hanning, 1));
    EXPECT_EQ(found[0].met, row.met) << row.asked;
    EXPECT_EQ(figure_text(found[0], found[0].attained, ""), row.text);
    EXPECT_FALSE(found[1].met);
    EXPECT_EQ(all_met(found), row.met);
  }
}

} // namespace
} // namespace brisel
