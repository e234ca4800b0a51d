#include "gui/plots/plot_axis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace brisel {
namespace {

using Labels = std::vector<std::string>;

constexpr std::array all_counts{12, 11, 10, 9, 8, 7, 6, 5, 4, 3};

Labels trimmed(Labels labels) {
  for (std::string &label : labels) label.erase(0, label.find_first_not_of(' '));
  return labels;
}

TEST(PlotAxis, LabelsOfOneAxisBecomeEquallyLong) {
  const struct {
    Labels before, after;
  } cases[] = {
      {{"1", "-0.5", "0.25"}, {"1.00", "-0.50", "0.25"}},
      {{"1", "-5e-1", "0.25"}, {"1", "-5e-1", "0.25"}}, // an exponent leaves all as they are
      {{"0", "10", "100"}, {"0.0", "10.", "100"}},
      {{"-1", "1"}, {"-1", "1"}},
      {{" -25", "  0", "-100"}, {" -25", "  0", "-100"}},
      {{}, {}},
  };
  for (auto [before, after] : cases) {
    equalize_labels(before);
    EXPECT_EQ(before, after);
  }
}

TEST(PlotAxis, LabelsHaveTheDigitsThatTellThemApart) {
  const struct {
    std::vector<double> ticks;
    Labels labels;
  } cases[] = {
      {{0, 500, 1000}, {"0", "500", "1000"}},
      {{-100, -50, 0}, {"-100", "-50", "0"}},
      {{0, 0.25, 0.5}, {"0.00", "0.25", "0.50"}},
      {{0, 62.5, 125}, {"0.0", "62.5", "125.0"}},
      {{-std::numbers::pi, -std::numbers::pi / 2, 0}, {"-3.14", "-1.57", "0.00"}},
      {{0, 2756.25, 5512.5}, {"0", "2756", "5512"}}, // five digits and more are cut
      {{0, 6e6, 12e6, 24e6}, {"0", "6e6", "12e6", "24e6"}},
      {{0, 1e6}, {"0", "1e6"}},
      {{0, 2e-5, 4e-5}, {"0", "20e-6", "40e-6"}},
      {{0, 1e-3, 2e-3}, {"0.000", "0.001", "0.002"}},
      {{-1e-17, 0.5}, {"0.0", "0.5"}}, // no minus zero
      {{0, 1e30, 2e30}, {"0", "1e30", "2e30"}},
      {{0, 1e-300, 2e-300}, {"0", "1e-300", "2e-300"}},
      {{0}, {"0"}},
      {{}, {}},
  };
  for (const auto &[ticks, labels] : cases) {
    EXPECT_EQ(trimmed(tick_labels(ticks)), labels);
    Labels equalized = tick_labels(ticks);
    equalize_labels(equalized);
    EXPECT_EQ(trimmed(equalized), labels) << "filled beforehand, so that nothing is appended";
  }
}

TEST(PlotAxis, LabelsStayInsideTheirSlots) {
  for (const std::vector<double> &ticks :
       {std::vector<double>{123456.7, 123456.7 + 1e-10}, {-1e308, 1e308}, {5e-324, 1e-323}, {1e5, 1e5 + 1e-7}})
    for (const std::string &label : tick_labels(ticks)) EXPECT_LT(label.size(), label_capacity) << label;
}

TEST(PlotAxis, AFixedRangeGetsTheCountWithTheRoundestStep) {
  const struct {
    Range range;
    int most;
    std::size_t count;
  } cases[] = {
      {{0, 4000}, 12, 9},                            // 500 Hz apart
      {{0, 500}, 12, 6},                             // 100, not 62.5
      {{0, 22050}, 12, 6},                           // 4410
      {{0, 24000}, 12, 9},                           // 3000
      {{0, 24000}, 6, 5},                            // 6000
      {{0, std::numbers::pi}, 12, 9},                // eighths
      {{-std::numbers::pi, std::numbers::pi}, 7, 5}, // quarters
  };
  static constexpr std::array counts{9, 6, 5, 3};
  for (const auto &[range, most, count] : cases) {
    const Axis axis = linear_axis(range, false, most, counts);
    EXPECT_EQ(axis.ticks.size(), count) << range[1];
    EXPECT_EQ(axis.range, range);
    EXPECT_EQ(axis.ticks.front(), range[0]);
    EXPECT_DOUBLE_EQ(axis.ticks.back(), range[1]);
  }
}

TEST(PlotAxis, AFreeRangeMovesOutwardsToMultiplesOfARoundStep) {
  const struct {
    Range range;
    int most;
    Range widened;
    std::size_t count;
  } cases[] = {
      {{-99.9, 2.1}, 12, {-100, 10}, 12}, {{-99.9, 2.1}, 7, {-100, 20}, 7}, {{0, 1.02}, 7, {0, 1.2}, 7},
      {{-0.36, 0.36}, 9, {-0.4, 0.4}, 9}, {{0, 7.75}, 9, {0, 8}, 9},        {{0.00194, 0.00775}, 7, {0.001, 0.008}, 0},
  };
  for (const auto &[range, most, widened, count] : cases) {
    const Axis axis = linear_axis(range, true, most, all_counts);
    EXPECT_LE(axis.range[0], range[0]);
    EXPECT_GE(axis.range[1], range[1]);
    if (count == 0) continue;
    EXPECT_NEAR(axis.range[0], widened[0], 1e-12 * 100);
    EXPECT_NEAR(axis.range[1], widened[1], 1e-12 * 100);
    EXPECT_EQ(axis.ticks.size(), count) << range[0] << " " << range[1];
  }
}

TEST(PlotAxis, WidenedRangesHaveShortStepsEverywhere) {
  for (double low : {-3e7, -77.7, -1e-5, 0.0, 0.123, 1e5})
    for (double span : {1e-3, 0.77, 12.3, 4567.8, 9e8})
      for (int most = 3; most <= 12; most++) {
        if (span < 1e-8 * std::abs(low)) continue; // the difference of ticks has no digits to judge by
        const Axis axis = linear_axis({low, low + span}, true, most, all_counts);
        const double step = axis.ticks[1] - axis.ticks[0];
        const double digits = step / std::pow(10, std::floor(std::log10(step * (1 + 1e-9))));
        const bool is_short = std::abs(digits - 1) < 1e-6 || std::abs(digits - 2) < 1e-6 ||
                              std::abs(digits - 2.5) < 1e-6 || std::abs(digits - 5) < 1e-6;
        EXPECT_TRUE(is_short) << low << " " << span << " " << most << " step " << step;
        EXPECT_LE(axis.range[0], low + 1e-8 * step);
        EXPECT_GE(axis.range[1], low + span - 1e-8 * step);
        EXPECT_LE(static_cast<int>(axis.ticks.size()), most);
      }
}

TEST(PlotAxis, LabelCountsFollowTheCharacterCell) {
  EXPECT_EQ(starting_label_count(0), 3);
  EXPECT_EQ(starting_label_count(9.1), 7);
  EXPECT_EQ(starting_label_count(14), 9);
  EXPECT_EQ(starting_label_count(25), 12);
  const std::pair<int, int> smaller[] = {{9, 5}, {6, 3}, {5, 3}, {3, 2}, {2, 0}};
  for (const auto &[count, next] : smaller) EXPECT_EQ(fewer_labels(count), next);
}

TEST(PlotAxis, LogarithmicAxesAreLabelledAtDecades) {
  const struct {
    Range range;
    Labels labels;
  } cases[] = {
      {{1, 10000}, {"1", "10", "100", "1000", "10000"}},
      {{0.01, 1e4}, {"0.01", "0.1", "1", "10", "100", "1000", "10000"}},
      {{10, 100}, {"10", "20", "50", "100"}},
      {{1000, 1e7}, {"1000", "10000", "100000", "1e6", "1e7"}},
      {{300, 900}, {"300", "400", "500", "600", "700", "800", "900"}},
  };
  for (const auto &[range, labels] : cases) {
    const Axis axis = logarithmic_axis(range);
    EXPECT_EQ(trimmed(axis.labels), labels);
    EXPECT_EQ(axis.ticks.size(), labels.size());
  }
  EXPECT_EQ(logarithmic_axis({1, 1000}).minor_ticks.size(), 24u); // eight a decade
}

TEST(PlotAxis, PositionsAndValuesAreInverse) {
  const AxisMap linear({-100, 20}, false, 250, 30), logarithmic({1, 1e4}, true, 50, 450);
  EXPECT_DOUBLE_EQ(linear.position(-100), 250);
  EXPECT_DOUBLE_EQ(linear.position(20), 30);
  EXPECT_DOUBLE_EQ(linear.value(linear.position(-33.3)), -33.3);
  EXPECT_DOUBLE_EQ(logarithmic.position(100), 250);
  EXPECT_NEAR(logarithmic.value(logarithmic.position(1234.5)), 1234.5, 1e-9);
  EXPECT_TRUE(std::isnan(logarithmic.position(0)));
  EXPECT_TRUE(std::isnan(logarithmic.position(-1)));
}

TEST(PlotAxis, RangesThatCannotBeDrawnAreKnown) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  for (const Range &range : {Range{0, 0}, Range{1, 0}, Range{NAN, 1}, Range{0, infinity}, Range{1, 1 + 1e-15},
                             Range{-1e308, 1.7e308}, Range{0, 1e-320}})
    EXPECT_FALSE(is_usable(range)) << range[0] << " " << range[1];
  EXPECT_TRUE(is_usable({-1e30, 1e30}));
  EXPECT_TRUE(is_usable({0, 1e-12}));
}

} // namespace
} // namespace brisel
