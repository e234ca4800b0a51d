#include "gui/plots/plot_cursor.h"
#include "gui/plots/plotted_data.h"
#include "tests/gui/plots/example_plots.h"

#include <gtest/gtest.h>

namespace brisel {
namespace {

std::vector<double> ramp(int count, double from, double to) {
  std::vector<double> values(count);
  for (int i = 0; i < count; i++) values[i] = from + (to - from) * i / (count - 1);
  return values;
}

/// Side lobes of 20 dB.
std::vector<double> lobes(int count, double peak) {
  std::vector<double> values(count);
  for (int i = 0; i < count; i++) values[i] = peak - i % 20;
  return values;
}

std::vector<double> joined(std::vector<double> first, const std::vector<double> &second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

TEST(PlottedData, DecibelsSpanWhatIsWorthSeeing) {
  const struct {
    const char *name;
    std::vector<double> values;
    Range range;
  } cases[] = {
      {"a 60 dB filter with nulls",
       joined(joined(ramp(300, 0, 0), ramp(600, -60, -80)), ramp(9, -600, -600)),
       {-100, 2}},
      {"a 120 dB filter", joined(ramp(300, 0, 0), lobes(700, -120)), {-154, 2}}, // a fifth lies below -134
      {"floating-point dust", joined(ramp(300, 0, 0), lobes(700, -320)), {-200, 2}},
      {"a slope that falls on and on", ramp(1000, -0.001, -400), {-100, 1.999}},
      {"a gentle slope", ramp(100, 0, -24), {-26, 2}},
      {"an allpass", ramp(100, 0, 0), {-8, 2}},
      {"a gain of 60 dB", joined(ramp(300, 60, 60), ramp(700, -20, -30)), {-40, 62}},
      {"nothing but zeros", ramp(5, -600, -600), {-100, 0}},
      {"no numbers", {NAN, NAN}, {-100, 0}},
  };
  for (const auto &[name, values, range] : cases) {
    const Range found = automatic_decibel_range(values);
    EXPECT_NEAR(found[0], range[0], 1e-9) << name;
    EXPECT_NEAR(found[1], range[1], 1e-9) << name;
  }
  EXPECT_EQ(automatic_magnitude_range(std::vector<double>{0, 0.5, 1e30, NAN}), (Range{0, 0.51}));
  EXPECT_EQ(automatic_magnitude_range(std::vector<double>{0, 0}), (Range{0, 1}));
}

TEST(PlottedData, RangesTheUserSetAreKept) {
  ExamplePlots example(lowpass_taps(63, 0.3), 8000);
  PlotDescription log = example.plot(PlotKind::log_magnitude), magnitude = example.plot(PlotKind::magnitude);
  EXPECT_TRUE(plot_data_of(log, example.state, true, "").round_y);
  EXPECT_TRUE(plot_data_of(magnitude, example.state, true, "").round_y);
  log.y_range = {-73, 3};
  magnitude.y_range = {0.98, 1.02};
  const PlotData kept = plot_data_of(log, example.state, true, "");
  EXPECT_EQ(kept.y_range, log.y_range);
  EXPECT_FALSE(kept.round_y);
  EXPECT_EQ(plot_data_of(magnitude, example.state, true, "").y_range, magnitude.y_range);
}

TEST(PlottedData, ScalesAreThoseOfTheLabels) {
  ExamplePlots example(lowpass_taps(63, 0.3), 8000);
  PlotData data = plot_data_of(example.plot(PlotKind::phase), example.state, true, "");
  EXPECT_DOUBLE_EQ(data.x_range[1], 4000);
  EXPECT_NEAR(data.curve.x_value(1000), 4000, 1e-9);
  data = plot_data_of(example.plot(PlotKind::impulse), example.state, true, "");
  EXPECT_DOUBLE_EQ(data.x_range[1], 7.75); // milliseconds
  EXPECT_DOUBLE_EQ(data.curve.x_value(62), 7.75);
}

TEST(PlottedData, RangesThatCannotBeDrawnAreReplaced) {
  ExamplePlots example({0.5}, 8000, 2);
  for (const Range &bad : {Range{NAN, NAN}, Range{0, 0}, Range{5, -5}})
    for (int kind = 0; kind < plot_kind_count; kind++) {
      PlotDescription d = example.plot(static_cast<PlotKind>(kind));
      d.x_range = d.y_range = bad;
      const PlotData data = plot_data_of(d, example.state, true, "");
      EXPECT_TRUE(is_usable(data.x_range)) << kind;
      EXPECT_TRUE(is_usable(data.y_range)) << kind;
    }
}

TEST(PlottedData, EqualRootsShareAMark) {
  const std::vector<std::complex<double>> roots{-1, {0.5, 0.5}, -1, {0.5, -0.5}, {-1, 1e-12}, 0, {NAN, 0}};
  const auto marks = root_marks(roots, 3, 1e-4);
  ASSERT_EQ(marks.size(), 4u);
  EXPECT_EQ(marks[0].count, 4); // at 0
  EXPECT_EQ(marks[1].count, 3); // at -1
  EXPECT_EQ(marks[2].count, 1);
}

TEST(PlottedData, RootsFarAwayAreTold) {
  PlotData data;
  const std::vector<std::complex<double>> zeros{{-1.5, 0}, {9, 0}, {0, -12}};
  data.kind = PlotKind::pole_zero;
  data.zeros = zeros;
  fit_to_roots(data);
  EXPECT_DOUBLE_EQ(data.x_range[1], 1.05 * 1.5);
  EXPECT_EQ(data.note, "2 further out, the farthest at |z| = 12");
  data.note.clear();
  data.unit_circle = false;
  fit_to_roots(data);
  EXPECT_DOUBLE_EQ(data.x_range[1], 1.05 * 12);
  EXPECT_EQ(data.note, "");

  ExamplePlots example(lowpass_taps(63, 0.3), 8000);
  example.state.poles_zeros_computed = false;
  EXPECT_EQ(plot_data_of(example.plot(PlotKind::pole_zero), example.state, true, "").note, "Zeros are not computed");
  example.state.fir_design = false;
  EXPECT_EQ(plot_data_of(example.plot(PlotKind::pole_zero), example.state, true, "").note,
            "Poles and zeros are not computed");
}

TEST(PlotCursor, ReadsFreeAndComputedPoints) {
  ExamplePlots example(lowpass_taps(63, 0.3), 8000, 101);
  PlotData data = plot_data_of(example.plot(PlotKind::log_magnitude), example.state, true, "");
  PlotLayout layout;
  layout.left = 100, layout.right = 500, layout.top = 20, layout.bottom = 240;
  layout.x_axis.range = {0, 4000};
  layout.y_axis.range = {-100, 10};
  const auto free = cursor_at(layout, data, {150.5, 40}, false);
  ASSERT_TRUE(free);
  EXPECT_DOUBLE_EQ(free->x, 505);
  EXPECT_DOUBLE_EQ(free->y, 0);
  EXPECT_EQ(cursor_text(data, *free), "505 Hz,  0 dB");
  const auto snapped = cursor_at(layout, data, {150.5, 40}, true);
  ASSERT_TRUE(snapped);
  EXPECT_EQ(snapped->index, 13); // 40 Hz apart
  EXPECT_DOUBLE_EQ(snapped->y, example.decibels[13]);
  EXPECT_FALSE(cursor_at(layout, data, {99, 40}, true));
  EXPECT_FALSE(cursor_at(PlotLayout{}, data, {0, 0}, true));
  EXPECT_FALSE(cursor_at(layout, data, {NAN, 40}, false));

  example.decibels[14] = NAN;
  EXPECT_EQ(cursor_moved(layout, data, *snapped, 1)->index, 15);
  EXPECT_EQ(cursor_moved(layout, data, *snapped, -100)->index, 0);
  EXPECT_EQ(cursor_moved(layout, data, *free, 1000)->index, 100);
}

TEST(PlotCursor, ReadsRoots) {
  const std::vector<std::complex<double>> poles{{0.5, 0.5}}, zeros{-1, {0, -1}};
  PlotData data;
  data.kind = PlotKind::pole_zero;
  data.poles = poles;
  data.zeros = zeros;
  PlotLayout layout;
  layout.right = layout.bottom = 300;
  layout.x_axis.range = layout.y_axis.range = {-1.5, 1.5};
  EXPECT_EQ(cursor_at(layout, data, {210, 110}, true)->index, 0);
  const auto zero = cursor_at(layout, data, {140, 280}, true);
  EXPECT_EQ(zero->index, 2);
  EXPECT_EQ(cursor_text(data, *zero), "0 - j1,  |z| = 1,  -90\u00b0");
}

} // namespace
} // namespace brisel
