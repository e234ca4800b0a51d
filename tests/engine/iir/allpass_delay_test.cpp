// allpass_delay_test.cpp - all-pass sections against optima found by another route, and phase equalizers and group
// delay filters through whole design runs.
#include "engine/iir/allpass_delay.h"

#include "engine/analysis/plot_arrays.h"
#include "engine/core/design_driver.h"
#include "engine/core/design_state.h"
#include "engine/core/start_up.h"
#include "engine/files/spec_file.h"
#include "engine/judge/design_judgement.h"
#include "tests/support/engine_in_memory.h"
#include "tests/support/scripted_front_end.h"
#include "tests/support/source_folder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace brisel {
namespace {

constexpr double pi = std::numbers::pi;
using Points = std::vector<std::array<double, 2>>;

bool always(double) {
  return true;
}

// Phase of 1 / (1 + a1 z^-1 + a2 z^-2), differentiated by its definition, negated: what equalizes the delay of poles.
double pole_delay(double a1, double a2, double w) {
  const std::complex<double> x = std::polar(1.0, -w), value = 1.0 + x * (a1 + a2 * x);
  return -(x * (a1 + 2 * a2 * x) / value).real();
}

DelayGoal equalizing(const Points &denominators, std::vector<FrequencyBand> bands) {
  return {std::move(bands), {}, [denominators](double w) {
            double sum = 0;
            for (const auto &[a1, a2] : denominators) sum -= pole_delay(a1, a2, w);
            return sum;
          }};
}

DelayGoal through(const Points &points) {
  std::vector<double> corners;
  for (const auto &point : points) corners.push_back(point[0]);
  return {{{points.front()[0], points.back()[0]}}, corners, [points](double w) {
            std::size_t i = 1;
            while (i + 1 < points.size() && w > points[i][0]) i++;
            const auto &[x0, y0] = points[i - 1];
            const auto &[x1, y1] = points[i];
            return y0 + (y1 - y0) * (w - x0) / (x1 - x0);
          }};
}

// Error on a grid of even steps, from the sections' phase.
double largest_error(const DelayDesign &design, const DelayGoal &goal) {
  double largest = 0;
  for (const FrequencyBand &band : goal.bands)
    for (int i = 0; i <= 4000; i++) {
      const double w = band.low + (band.high - band.low) * i / 4000;
      double delay = -goal.wanted(w) - design.constant;
      for (const AllpassSection &s : design.sections) delay += 2 * pole_delay(s.a1, s.a2, w) + 2;
      largest = std::max(largest, std::abs(delay));
    }
  return largest;
}

const Points elliptic{{-1.1683211510270377, 0.4269128466801391}, {-1.0046512104307164, 0.7707007639222673}};
const Points butterworth{{0, 0}, {0, 1.0 / 3}};
const Points bandstop{{0.27117008557152145, 0.6309033284800853}, {-0.7986507680473997, 0.6647608853072756}};
const Points table{{0.1 * pi, 0}, {0.4 * pi, 10}, {0.8 * pi, 2}};

// Minima found with SciPy: 25 random starts, scipy.optimize.least_squares, then linear programs (HiGHS) in a trust
// region on 16000 points.
TEST(AllpassDelay, ReachesTheSmallestRippleThereIs) {
  const struct {
    const char *name;
    DelayGoal goal;
    int sections;
    double ripple, constant;
  } rows[] = {
      {"elliptic lowpass", equalizing(elliptic, {{0, 0.3 * pi}}), 1, 1.70284068, 7.16600142},
      {"elliptic lowpass", equalizing(elliptic, {{0, 0.3 * pi}}), 2, 0.484213361, 11.9985655},
      {"elliptic lowpass", equalizing(elliptic, {{0, 0.3 * pi}}), 3, 0.0966980515, 16.5407752},
      {"butterworth lowpass", equalizing(butterworth, {{0, 0.5 * pi}}), 1, 0.0532044753, 2.79219381},
      {"butterworth lowpass", equalizing(butterworth, {{0, 0.5 * pi}}), 2, 0.0411586848, 4.48191443},
      {"bandstop", equalizing(bandstop, {{0, 0.3 * pi}, {0.6 * pi, pi}}), 1, 1.52269822, 1.9583741},
      {"bandstop", equalizing(bandstop, {{0, 0.3 * pi}, {0.6 * pi, pi}}), 2, 1.0173031, 4.01423154},
      {"bandstop", equalizing(bandstop, {{0, 0.3 * pi}, {0.6 * pi, pi}}), 3, 0.573033827, 6.09712739},
      {"function points", through(table), 1, 2.55550458, -1.73008887},
      {"function points", through(table), 2, 1.44552135, 0.147927917},
      {"function points", through(table), 4, 0.296993041, 4.11732084},
  };
  for (const auto &row : rows) {
    const auto found = design_allpass_delay(row.goal, row.sections, DelayNorm::minimax, 0, always);
    ASSERT_TRUE(found) << row.name;
    ASSERT_EQ(static_cast<int>(found->sections.size()), row.sections);
    EXPECT_LT(found->ripple, row.ripple * (1 + 3e-6)) << row.name << " " << row.sections;
    EXPECT_LE(largest_error(*found, row.goal), found->ripple * (1 + 1e-9)) << row.name << " " << row.sections;
    const bool same = found->ripple > row.ripple * (1 - 3e-6); // and not a better one
    EXPECT_NEAR(found->constant, same ? row.constant : found->constant, 1e-3) << row.name << " " << row.sections;
  }
}

TEST(AllpassDelay, MakesSmallestWhatItIsAskedTo) {
  const DelayGoal goal = through(table);
  const auto squares = design_allpass_delay(goal, 3, DelayNorm::least_squares, 0, always),
             eighth = design_allpass_delay(goal, 3, DelayNorm::least_p, 8, always),
             minimax = design_allpass_delay(goal, 3, DelayNorm::minimax, 0, always);
  ASSERT_TRUE(squares && eighth && minimax);
  // With the constant that suits the power: the one of the design suits the largest error.
  const auto power_mean = [&](const DelayDesign &design, double p) {
    std::vector<double> errors;
    for (int i = 0; i < 4000; i++) {
      const double w = (0.1 + 0.7 * (i + 0.5) / 4000) * pi;
      double delay = -goal.wanted(w) - design.constant;
      for (const AllpassSection &s : design.sections) delay += allpass_delay(s, w);
      errors.push_back(delay);
    }
    const auto mean = [&](double constant) {
      double sum = 0;
      for (const double e : errors) sum += std::pow(std::abs(e - constant), p);
      return std::pow(sum / 4000, 1 / p);
    };
    double low = -design.ripple, high = design.ripple; // the mean is convex
    for (int step = 0; step < 60; step++) {
      const double third = (high - low) / 3;
      if (mean(low + third) < mean(high - third))
        high -= third;
      else
        low += third;
    }
    return mean(low);
  };
  EXPECT_LT(power_mean(*squares, 2), power_mean(*eighth, 2));
  EXPECT_LT(power_mean(*eighth, 8), power_mean(*squares, 8));
  EXPECT_LT(power_mean(*eighth, 8), power_mean(*minimax, 8));
  EXPECT_LT(minimax->ripple, eighth->ripple);
  EXPECT_LT(eighth->ripple, squares->ripple);
}

TEST(AllpassDelay, IsStableAndTellsItsRippleForAnyCurve) {
  std::mt19937 generator(7);
  const auto within = [&](double low, double high) { return low + (high - low) * 0x1p-32 * generator(); };
  for (int round = 0; round < 60; round++) {
    Points points;
    double w = within(0, 0.5);
    for (const int count = 2 + static_cast<int>(within(0, 5)); static_cast<int>(points.size()) < count && w < pi;
         w += within(0.05, 0.9))
      points.push_back({w, within(0, round % 3 == 0 ? 1000 : 20)});
    if (points.size() < 2) continue;
    const DelayGoal goal = through(points);
    const auto found = design_allpass_delay(goal, 1 + round % 6, DelayNorm::minimax, 0, always);
    ASSERT_TRUE(found) << round;
    for (const AllpassSection &s : found->sections)
      EXPECT_TRUE(std::abs(s.a2) < 1 && std::abs(s.a1) < 1 + s.a2) << round << ": " << s.a1 << " " << s.a2;
    // Peaks between the points of either grid.
    EXPECT_LE(largest_error(*found, goal), found->ripple * (1 + 1e-6)) << round;
    EXPECT_LE(found->ripple, unequalized_ripple(goal) * (1 + 1e-6)) << round << ": worse than pure delays";
  }
}

TEST(AllpassDelay, TakesAsFewSectionsAsTheRippleNeeds) {
  const DelayGoal goal = equalizing(elliptic, {{0, 0.3 * pi}});
  const struct {
    double ripple;
    std::size_t sections;
  } rows[] = {{1.8, 1}, {1.6, 2}, {0.485, 2}, {0.48, 3}};
  for (const auto &row : rows) {
    const auto found = fewest_allpass_sections(goal, row.ripple, max_delay_sections, DelayNorm::minimax, 0, always);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->sections.size(), row.sections) << row.ripple;
    EXPECT_LE(found->ripple, row.ripple);
  }
  int asked = 0;
  EXPECT_FALSE(fewest_allpass_sections(goal, 1e-9, max_delay_sections, DelayNorm::minimax, 0,
                                       [&](double) { return ++asked < 20; }));
}

class DelayRun : public testing::Test {
protected:
  void SetUp() override { test::start_engine_in_memory(); }
  void TearDown() override { program_exit(ExitMode::discard); }

  struct Wish {
    int sections;
    double ripple = 0;
    int order = 0;
    ZTransform mapping = ZTransform::bilinear;
    RealizationForm form = RealizationForm::cascade;
  };
  void run(const char *file, const Wish &wish) {
    ASSERT_EQ(load_filter_spec(source_file("examples/") + file), success);
    design_state.DesignOrAnalysisType = code(DesignMethod::iir);
    design_state.PhaseEqualizationOption = wish.sections != 0 || wish.ripple != 0;
    design_state.ZTransformMethod = code(wish.mapping);
    design_state.RealizationType = code(wish.form);
    front.posted.clear();
    front.answer = [wish](Page page) {
      if (page == Page::iir) design_state.order = static_cast<std::int16_t>(wish.order);
      if (page == Page::phase_equalization || page == Page::group_delay) {
        design_state.delay_sections = static_cast<std::int16_t>(wish.sections);
        design_state.delay_ripple = wish.ripple;
      }
      return PageResult::next;
    };
    design_record.valid = 0;
    design_filter();
  }
  // Largest distance of the plotted group delay, in samples, from the record's constant, where `inside` says so.
  template <class Inside, class Wanted> double plotted_ripple(Inside inside, Wanted wanted) const {
    const double rate = design_record.loaded.sampling_frequency / two_pi;
    double largest = 0;
    for (int i = 0; i < plot_arrays.frequency_count; i++)
      if (const double w = plot_arrays.frequency[i]; inside(w))
        largest =
            std::max(largest, std::abs(plot_arrays.group_delay[i] * rate - wanted(w) - design_record.delay.constant));
    return largest;
  }

  ScriptedFrontEnd front;
};

TEST_F(DelayRun, EqualizesThePassbandAndLeavesTheMagnitude) {
  const struct {
    const char *name, *file;
    Wish wish;
  } rows[] = {
      {"lowpass", "lowpass.spc", {3}},
      {"lowpass of odd order", "lowpass.spc", {4, 0, 5}},
      {"lowpass of odd order, a sum", "lowpass.spc", {2, 0, 5, ZTransform::bilinear, RealizationForm::parallel}},
      {"highpass, lattice", "highpass.spc", {3, 0, 4, ZTransform::bilinear, RealizationForm::lattice}},
      {"bandpass", "bandpass.spc", {4, 0, 6}},
      {"bandstop, ratio", "bandstop.spc", {2, 0, 4, ZTransform::bilinear, RealizationForm::ratio}},
      {"impulse invariant", "lowpass.spc", {3, 0, 4, ZTransform::impulse_invariant}},
      {"matched z", "lowpass.spc", {3, 0, 5, ZTransform::matched_z}},
  };
  for (const auto &row : rows) {
    Wish plain = row.wish;
    plain.sections = 0;
    run(row.file, plain);
    ASSERT_TRUE(design_record.valid) << row.name;
    const int order = design_record.z.cascade.order;
    const std::vector<double> magnitude(plot_arrays.magnitude.begin(),
                                        plot_arrays.magnitude.begin() + plot_arrays.frequency_count);
    run(row.file, row.wish);
    ASSERT_TRUE(design_record.valid) << row.name << (front.posted.empty() ? "" : front.posted[0].detail);
    EXPECT_EQ(design_record.z.cascade.order, order + 2 * row.wish.sections) << row.name;
    for (std::size_t i = 0; i < magnitude.size(); i++)
      ASSERT_NEAR(plot_arrays.magnitude[i], magnitude[i], 1e-8) << row.name << " " << i;
    const DelayResult &delay = design_record.delay;
    EXPECT_LT(delay.attained, 0.97 * delay.before) << row.name;
    const auto [p0, p1] = design_record.spec.passband_edge;
    const int type = design_record.spec.type;
    const auto inside = [&, p0 = p0, p1 = p1](double w) {
      switch (FilterType{static_cast<std::int8_t>(type)}) {
      case FilterType::low_pass:
        return w <= p0;
      case FilterType::high_pass:
        return w >= p0;
      case FilterType::band_pass:
        return w >= p0 && w <= p1;
      default:
        return w <= p0 || w >= p1;
      }
    };
    const double plotted = plotted_ripple(inside, [](double) { return 0.0; });
    EXPECT_LE(plotted, delay.attained * (1 + 1e-6) + 1e-7) << row.name;
    EXPECT_GT(plotted, 0.5 * delay.attained) << row.name;
    EXPECT_NEAR(judge_design().back().attained.value, delay.attained, 1e-6 * delay.attained) << row.name;
  }
}

TEST_F(DelayRun, FollowsTheFunctionPointsWithAnAllPass) {
  for (const RealizationForm form : {RealizationForm::cascade, RealizationForm::lattice, RealizationForm::parallel}) {
    run("group-delay.spc", {5, 0, 0, ZTransform::matched_z, form});
    ASSERT_TRUE(design_record.valid) << (front.posted.empty() ? "" : front.posted[0].detail);
    EXPECT_EQ(design_record.selections.ZTransformMethod, 0);
    EXPECT_EQ(design_record.z.cascade.order, 10);
    EXPECT_EQ(design_record.s_unnormalized.cascade.section_count, 0);
    for (int i = 0; i < plot_arrays.frequency_count; i++) ASSERT_NEAR(plot_arrays.magnitude[i], 1, 1e-9) << i;
    // 8 samples at 400 Hz rising to 24 at 3600 Hz, in a straight line; 8000 Hz.
    const double ripple = plotted_ripple([](double w) { return w >= 0.1 * pi && w <= 0.9 * pi; },
                                         [](double w) { return 8 + 20 * (w / pi - 0.1); });
    EXPECT_LE(ripple, design_record.delay.attained * (1 + 1e-6) + 1e-9);
    EXPECT_GT(ripple, 0.9 * design_record.delay.attained);
  }
  run("group-delay.spc", {0});
  ASSERT_TRUE(design_record.valid);
  EXPECT_LE(design_record.delay.attained, 0.05) << "the ripple of the specification";
  const int fewest = design_record.delay.sections;
  run("group-delay.spc", {fewest - 1});
  EXPECT_GT(design_record.delay.attained, 0.05);
}

TEST_F(DelayRun, RefusesBeforeItStarts) {
  const struct {
    const char *name, *file;
    Wish wish;
    Message message;
    std::size_t announced; // of a run that was started
  } rows[] = {
      {"too many sections", "lowpass.spc", {21}, Message::phase_equalizer_refused, 0},
      {"sections below zero", "lowpass.spc", {-1}, Message::phase_equalizer_refused, 0},
      {"a ripple that is no number", "lowpass.spc", {0, NAN}, Message::phase_equalizer_refused, 0},
      {"a ripple below zero", "lowpass.spc", {0, -1}, Message::phase_equalizer_refused, 0},
      {"too many sections of a group delay", "group-delay.spc", {21}, Message::group_delay_refused, 0},
  };
  for (const auto &row : rows) {
    front.announced.clear();
    run(row.file, row.wish);
    EXPECT_FALSE(design_record.valid) << row.name;
    ASSERT_EQ(front.posted.size(), 1u) << row.name;
    EXPECT_EQ(front.posted[0].number, row.message) << row.name;
    EXPECT_EQ(front.announced.size(), row.announced) << row.name;
  }
}

TEST_F(DelayRun, KeepsTheFilterBeforeWhenItIsStopped) {
  run("lowpass.spc", {2});
  const SectionEntry before = design_record.z.cascade;
  int asked = 0;
  front.go_on = [&](double) { return ++asked < 5; };
  front.keeps_previous = true;
  ASSERT_EQ(load_filter_spec(source_file("examples/lowpass.spc")), success);
  design_state.DesignOrAnalysisType = code(DesignMethod::iir);
  design_state.PhaseEqualizationOption = 1;
  front.answer = [](Page) {
    design_state.delay_sections = 8;
    return PageResult::next;
  };
  design_filter();
  EXPECT_TRUE(design_record.valid);
  EXPECT_EQ(design_record.z.cascade.section_count, before.section_count);
  EXPECT_TRUE(front.posted.empty());
}

} // namespace
} // namespace brisel
