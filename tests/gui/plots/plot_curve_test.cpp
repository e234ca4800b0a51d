#include "gui/plots/plot_curve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace brisel {
namespace {

constexpr PlotFrame frame{10, 20, 110, 220};
constexpr double infinity = std::numeric_limits<double>::infinity();

CurveShape shape(const std::vector<double> &y) {
  CurvePoints points;
  points.y = y;
  const double end = std::max<double>(1, static_cast<double>(y.size()) - 1);
  return curve_shape(points, {{0, end}, false, frame.left, frame.right}, {{-1, 1}, false, frame.bottom, frame.top},
                     frame, 1);
}

std::vector<Polyline> curve(const std::vector<double> &y) {
  return shape(y).lines;
}

std::size_t point_count(const std::vector<Polyline> &lines) {
  std::size_t count = 0;
  for (const Polyline &line : lines) count += line.size();
  return count;
}

void expect_inside(const std::vector<Polyline> &lines) {
  for (const Polyline &line : lines)
    for (const PlotPoint &point : line) {
      EXPECT_TRUE(point.x >= frame.left && point.x <= frame.right) << point.x;
      EXPECT_TRUE(point.y >= frame.top && point.y <= frame.bottom) << point.y;
    }
}

TEST(PlotCurve, SegmentsAreClippedToTheFrame) {
  const struct {
    PlotPoint from, to;
    bool visible;
    PlotPoint clipped_from, clipped_to;
  } cases[] = {
      {{20, 30}, {40, 50}, true, {20, 30}, {40, 50}},
      {{0, 120}, {200, 120}, true, {10, 120}, {110, 120}},
      {{60, -1e9}, {60, 1e9}, true, {60, 20}, {60, 220}},
      {{60, 120}, {60, -580}, true, {60, 120}, {60, 20}},
      {{0, 0}, {5, 300}, false, {}, {}},
      {{0, 100}, {60, -1000}, false, {}, {}}, // passes the corner
      {{10, 20}, {10, 20}, true, {10, 20}, {10, 20}},
      {{9, 20}, {9, 20}, false, {}, {}},
  };
  for (auto [from, to, visible, clipped_from, clipped_to] : cases) {
    ASSERT_EQ(clip_segment(frame, from, to), visible);
    if (!visible) continue;
    // 1e9 has seven digits behind the point.
    EXPECT_NEAR(from.x, clipped_from.x, 1e-6);
    EXPECT_NEAR(from.y, clipped_from.y, 1e-6);
    EXPECT_NEAR(to.x, clipped_to.x, 1e-6);
    EXPECT_NEAR(to.y, clipped_to.y, 1e-6);
  }
}

TEST(PlotCurve, ValuesThatAreNotFiniteInterruptTheCurve) {
  for (const double gap : {double(NAN), infinity, -infinity}) {
    const auto lines = curve({0, 0.5, gap, 0.5, 0});
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_DOUBLE_EQ(lines[0].back().x, 35);
    EXPECT_DOUBLE_EQ(lines[1].front().x, 85);
  }
  EXPECT_TRUE(curve({NAN, NAN}).empty());
  EXPECT_TRUE(curve({}).empty());
  EXPECT_EQ(point_count(curve({NAN, 0, NAN})), 2u) << "a lone point stays visible as a dot";
}

TEST(PlotCurve, HugeValuesLeaveTheFrameAtItsEdge) {
  for (const double huge : {1e30, -1e30, 1e300, -600.0}) {
    const auto lines = curve({0, huge, 0, -huge, 0});
    expect_inside(lines);
    EXPECT_GT(point_count(lines), 4u);
  }
  expect_inside(curve({1e308, -1e308, 1e308}));
}

TEST(PlotCurve, LongCurvesKeepTheirExtremesInEachColumn) {
  std::vector<double> y(10001);
  for (std::size_t i = 0; i < y.size(); i++) y[i] = 0.5 * std::sin(static_cast<double>(i) * 1e-3);
  y[4321] = 0.9;
  y[8765] = -0.8;
  const CurveShape slow = shape(y);
  EXPECT_LE(point_count(slow.lines), 2u * 102 + 2);
  ASSERT_EQ(slow.bars.size(), 2u) << "the columns of the two peaks";
  EXPECT_DOUBLE_EQ(slow.bars[0].left, 10 + 43);
  EXPECT_DOUBLE_EQ(slow.bars[0].top, 30); // 0.9 up from the middle
  EXPECT_DOUBLE_EQ(slow.bars[1].bottom, 200);
}

TEST(PlotCurve, ColumnsInWhichTheCurveSwingsBecomeBars) {
  std::vector<double> y(10001);
  for (std::size_t i = 0; i < y.size(); i++) y[i] = (i % 2 ? 2 : -0.5) * (i < 5000 ? 1 : 1e30);
  const CurveShape fast = shape(y);
  EXPECT_EQ(fast.bars.size(), 100u);
  EXPECT_LE(point_count(fast.lines), 4u); // from the last bar to the end
  for (const CurveBar &bar : fast.bars) {
    EXPECT_DOUBLE_EQ(bar.top, frame.top);
    EXPECT_DOUBLE_EQ(bar.bottom, bar.left < 60 ? 170 : frame.bottom);
    EXPECT_GE(bar.left, frame.left);
    EXPECT_LE(bar.left + bar.width, frame.right);
  }
}

TEST(PlotCurve, FewPointsAreKeptAsTheyAre) {
  const auto lines = curve({-1, 1, -0.5});
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_DOUBLE_EQ(lines[0].back().x, 110);
  EXPECT_DOUBLE_EQ(lines[0].back().y, 170);
}

} // namespace
} // namespace brisel
