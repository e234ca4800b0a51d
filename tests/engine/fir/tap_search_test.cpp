// tap_search_test.cpp - optimized fixed-point taps: against all sets of words where they can be tried, and their gain
// on a dense grid.
#include "engine/fir/tap_search.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace brisel {
namespace {

constexpr double pi = std::numbers::pi;
const auto flat = [](double) { return 1.0; };
const auto always = [](double) { return true; };
const auto unheard = [](const TapFigures &, int) {};

double gain_at(const std::vector<double> &taps, double w) {
  std::complex<double> sum = 0;
  for (std::size_t k = 0; k < taps.size(); k++) sum += std::polar(taps[k], -w * static_cast<double>(k));
  return std::abs(sum);
}

double cost_of(const std::vector<double> &taps, const TapGoal &goal, int points) {
  double low = 1e300, high = 0, stop = 0;
  for (const auto &band : goal.pass)
    for (int i = 0; i <= points; i++) {
      const double w = band.low + (band.high - band.low) * i / points, gain = gain_at(taps, w) / goal.desired(w);
      low = std::min(low, gain);
      high = std::max(high, gain);
    }
  for (const auto &band : goal.stop)
    for (int i = 0; i <= points; i++)
      stop = std::max(stop, gain_at(taps, band.low + (band.high - band.low) * i / points));
  return std::max(20 * std::log10(high / low) / goal.ripple_db, stop / high * std::pow(10, goal.attenuation_db / 20));
}

// Windowed sinc, largest tap near one half, rounded.
std::vector<double> rounded_lowpass(int length, double cutoff, double quantum) {
  std::vector<double> taps;
  for (int k = 0; k < length; k++) {
    const double t = k - (length - 1) / 2.0, window = 0.54 + 0.46 * std::cos(2 * pi * t / length);
    const double value = window * (t == 0 ? 1.0 : std::sin(cutoff * t) / (cutoff * t));
    taps.push_back(quantum * std::round(0.5 * value / quantum));
  }
  return taps;
}

const TapGoal lowpass{{{0, 0.3 * pi}}, {{0.6 * pi, pi}}, flat, 0.5, 40};

TEST(TapSearch, ReachesTheBestOfAllWords) {
  for (const int length : {7, 8}) {
    const double quantum = 1.0 / 16;
    std::vector<double> taps = rounded_lowpass(length, 0.45 * pi, quantum), all = taps;
    const double before = tap_figures(taps, lowpass).cost;
    ASSERT_TRUE(search_taps(taps, lowpass, {30, 100, quantum, 10}, unheard, always));
    const double found = tap_figures(taps, lowpass).cost;
    EXPECT_LT(found, before);
    // Every set of words with a middle tap near the search's; the others go from -1/4 to 1/2.
    double best = 1e300;
    std::vector<int> words(4, -4);
    const auto place = [&](std::size_t m, int word) {
      const auto half = static_cast<std::size_t>(length / 2);
      all[half + m] = all[static_cast<std::size_t>(length) - 1 - half - m] = word * quantum;
    };
    for (words[0] = 4; words[0] <= 12; words[0]++)
      for (words[1] = -4; words[1] <= 8; words[1]++)
        for (words[2] = -4; words[2] <= 8; words[2]++)
          for (words[3] = -4; words[3] <= 8; words[3]++) {
            for (std::size_t m = 0; m < 4; m++) place(m, words[m]);
            best = std::min(best, cost_of(all, lowpass, 24));
          }
    EXPECT_LT(found, best * 1.05) << length; // 24 points a band see a little less than there is
  }
}

TEST(TapSearch, ImprovesEveryKindAndTellsWhatItAttains) {
  const auto mirrored = [](std::vector<double> taps) { // lowpass to highpass: every other tap negated
    for (std::size_t k = 1; k < taps.size(); k += 2) taps[k] = -taps[k];
    return taps;
  };
  const auto shifted = [](std::vector<double> taps, double w) {
    for (std::size_t k = 0; k < taps.size(); k++)
      taps[k] = std::round(1024 * taps[k] * std::cos(w * (static_cast<double>(k) - (taps.size() - 1) / 2.0))) / 1024;
    return taps;
  };
  const auto tilted = [](double w) { return 1 + 0.02 * w; };
  const struct {
    const char *name;
    std::vector<double> taps;
    TapGoal goal;
    double at_most; // of the cost that rounding has
  } rows[] = {
      {"lowpass", rounded_lowpass(31, 0.45 * pi, 1.0 / 256), {lowpass.pass, lowpass.stop, flat, 0.1, 55}, 0.8},
      {"even length", rounded_lowpass(40, 0.45 * pi, 1.0 / 1024), {lowpass.pass, lowpass.stop, flat, 0.1, 60}, 0.8},
      {"highpass",
       mirrored(rounded_lowpass(31, 0.45 * pi, 1.0 / 256)),
       {{{0.7 * pi, pi}}, {{0, 0.4 * pi}}, flat, 0.1, 55},
       0.8},
      {"bandpass",
       shifted(rounded_lowpass(41, 0.2 * pi, 1.0 / 1024), 0.5 * pi),
       {{{0.4 * pi, 0.6 * pi}}, {{0, 0.2 * pi}, {0.8 * pi, pi}}, flat, 0.2, 60},
       0.9},
      {"rising gain", rounded_lowpass(31, 0.45 * pi, 1.0 / 256), {lowpass.pass, lowpass.stop, tilted, 0.3, 50}, 0.8},
  };
  for (const auto &row : rows) {
    const double quantum = row.taps.size() >= 40 ? 1.0 / 1024 : 1.0 / 256;
    std::vector<double> taps = row.taps;
    const TapFigures before = tap_figures(taps, row.goal);
    EXPECT_NEAR(before.cost, cost_of(taps, row.goal, 20000), 2e-3 * before.cost) << row.name;
    double last = before.cost * 1.02; // the search looks at fewer points than the figures
    const auto improved = [&](const TapFigures &found, int) {
      EXPECT_LT(found.cost, last) << row.name;
      last = found.cost;
    };
    ASSERT_TRUE(search_taps(taps, row.goal, {10, 100, quantum, 0.05}, improved, always)) << row.name;
    const TapFigures after = tap_figures(taps, row.goal);
    EXPECT_LT(after.cost, row.at_most * before.cost) << row.name;
    EXPECT_NEAR(after.cost, cost_of(taps, row.goal, 20000), 2e-3 * after.cost) << row.name;
    EXPECT_NEAR(after.passband_low + after.passband_high, before.passband_low + before.passband_high,
                0.1 * before.passband_high)
        << row.name;
    for (std::size_t k = 0; k < taps.size(); k++) {
      EXPECT_EQ(taps[k], taps[taps.size() - 1 - k]) << row.name;
      EXPECT_EQ(taps[k], quantum * std::round(taps[k] / quantum)) << row.name;
    }
    std::vector<double> again = row.taps;
    ASSERT_TRUE(search_taps(again, row.goal, {10, 100, quantum, 0.05}, unheard, always));
    EXPECT_EQ(again, taps) << row.name << ": found other taps the second time";
  }
}

TEST(TapSearch, LeavesAloneWhatItCannotImprove) {
  const struct {
    const char *name;
    std::vector<double> taps;
  } rows[] = {
      {"all zero", std::vector<double>(9, 0)},
      {"a tap above one", {0.25, 1.5, 0.25}},
  };
  const TapGoal goal{{{0, 0.6 * pi}}, {{0.8 * pi, pi}}, flat, 1, 20};
  for (const auto &row : rows) {
    std::vector<double> taps = row.taps;
    EXPECT_TRUE(search_taps(taps, goal, {5, 100, 1.0 / 128, 0.1}, unheard, always)) << row.name;
    EXPECT_EQ(taps, row.taps) << row.name;
  }
  std::vector<double> taps = rounded_lowpass(31, 0.45 * pi, 1.0 / 256);
  const std::vector<double> before = taps;
  int asked = 0;
  EXPECT_FALSE(search_taps(taps, lowpass, {50, 100, 1.0 / 256, 0.1}, unheard, [&](double) { return ++asked < 3; }));
  EXPECT_EQ(taps, before);
}

} // namespace
} // namespace brisel
