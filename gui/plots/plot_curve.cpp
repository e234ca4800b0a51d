#include "gui/plots/plot_curve.h"

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

constexpr double far_away = 1e9; // device units; where a steeper line starts makes no visible difference

/// Collects points into polylines that stay inside the frame.
class ClippedPath {
public:
  ClippedPath(const PlotFrame &frame, std::vector<Polyline> &lines) : frame(frame), lines(lines) {}

  void jump_to(const PlotPoint &point) { current = point; }
  void move_to(const PlotPoint &point) { // a lone point becomes a line of no length, which is drawn as a dot
    current = point;
    add_segment(point, point);
  }
  void line_to(const PlotPoint &point) {
    if (point.x == current.x && point.y == current.y) return;
    add_segment(current, point);
    current = point;
  }

private:
  void add_segment(PlotPoint from, PlotPoint to) {
    if (!clip_segment(frame, from, to)) return;
    const bool joined = !lines.empty() && lines.back().back().x == from.x && lines.back().back().y == from.y;
    if (!joined) lines.push_back({from});
    lines.back().push_back(to);
  }

  const PlotFrame &frame;
  std::vector<Polyline> &lines;
  PlotPoint current{};
};

/// The points of one pixel column.
struct Column {
  double index = 0;
  PlotPoint first{}, lowest{}, highest{}, last{};
  bool lowest_after = false; // the lowest point comes after the highest
  double climb = 0;          // sum of all ups and downs
  std::size_t count = 0;

  void start(double column, const PlotPoint &point) { *this = {column, point, point, point, point, false, 0, 1}; }
  void add(const PlotPoint &point) {
    if (point.y < lowest.y) lowest = point, lowest_after = true;
    if (point.y > highest.y) highest = point, lowest_after = false;
    climb += std::abs(point.y - last.y);
    last = point;
    count++;
  }
  bool swings() const {
    constexpr double visible = 4; // device units
    return climb - (highest.y - lowest.y) > visible;
  }
};

/// Turns columns into lines and bars.
class ShapeBuilder {
public:
  ShapeBuilder(const PlotFrame &frame, double column) : frame(frame), width(column), path(frame, shape.lines) {}

  void interrupt() { connected = false; }
  void add(const Column &column) {
    if (column.swings())
      add_bar(column);
    else
      add_points(column);
    previous = column;
    connected = true;
  }
  CurveShape take() { return std::move(shape); }

private:
  void add_points(const Column &c) {
    if (connected)
      path.line_to(c.first);
    else
      path.move_to(c.first);
    if (c.count > 2) {
      path.line_to(c.lowest_after ? c.highest : c.lowest);
      path.line_to(c.lowest_after ? c.lowest : c.highest);
    }
    if (c.count > 1) path.line_to(c.last);
  }

  void add_bar(const Column &c) {
    double top = c.lowest.y, bottom = c.highest.y;
    if (connected && previous.swings() && previous.index + 1 == c.index) { // touches its neighbour
      top = std::min(top, previous.highest.y);
      bottom = std::max(bottom, previous.lowest.y);
    } else if (connected) {
      path.line_to(c.first);
    }
    path.jump_to(c.last);
    const double left = frame.left + c.index * width;
    top = std::max(top, frame.top);
    bottom = std::min(bottom, frame.bottom);
    if (left >= frame.left && left + width <= frame.right && top <= bottom)
      shape.bars.push_back({left, width, top, bottom});
  }

  const PlotFrame &frame;
  double width;
  CurveShape shape;
  ClippedPath path;
  Column previous;
  bool connected = false;
};

} // namespace

bool clip_segment(const PlotFrame &frame, PlotPoint &from, PlotPoint &to) {
  const double dx = to.x - from.x, dy = to.y - from.y;
  double enter = 0, leave = 1;
  const auto edge = [&](double direction, double distance) {
    if (direction == 0) return distance >= 0;
    const double t = distance / direction;
    if (direction < 0)
      enter = std::max(enter, t);
    else
      leave = std::min(leave, t);
    return enter <= leave;
  };
  if (!edge(-dx, from.x - frame.left) || !edge(dx, frame.right - from.x) || !edge(-dy, from.y - frame.top) ||
      !edge(dy, frame.bottom - from.y))
    return false;
  const PlotPoint start = from;
  // Clamped: rounding of a long segment may leave the frame by a digit.
  const auto at = [&](double t) {
    return PlotPoint{std::clamp(start.x + t * dx, frame.left, frame.right),
                     std::clamp(start.y + t * dy, frame.top, frame.bottom)};
  };
  if (leave < 1) to = at(leave);
  if (enter > 0) from = at(enter);
  return true;
}

CurveShape curve_shape(const CurvePoints &points, const AxisMap &x_map, const AxisMap &y_map, const PlotFrame &frame,
                       double column) {
  ShapeBuilder builder(frame, column);
  Column pending;
  const auto flush = [&] {
    if (pending.count > 0) builder.add(pending);
    pending.count = 0;
  };
  for (std::size_t i = 0; i < points.y.size(); i++) {
    PlotPoint point{x_map.position(points.x_value(i)), y_map.position(points.y[i])};
    if (!std::isfinite(point.x) || !std::isfinite(point.y)) {
      flush();
      builder.interrupt();
      continue;
    }
    point = {std::clamp(point.x, -far_away, far_away), std::clamp(point.y, -far_away, far_away)};
    const double index = std::floor((point.x - frame.left) / column);
    if (pending.count > 0 && index == pending.index) {
      pending.add(point);
    } else {
      flush();
      pending.start(index, point);
    }
  }
  flush();
  return builder.take();
}

} // namespace brisel
