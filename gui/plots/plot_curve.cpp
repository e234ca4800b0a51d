#include "gui/plots/plot_curve.h"

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

constexpr double far_away = 1e9; // device units; where a steeper line starts makes no visible difference

/// Collects points into polylines that stay inside the frame.
class ClippedPath {
public:
  explicit ClippedPath(const PlotFrame &frame) : frame(frame) {}

  void move_to(const PlotPoint &point) { // a lone point becomes a line of no length, which a pen draws as a dot
    current = point;
    add_segment(point, point);
  }
  void line_to(const PlotPoint &point) {
    add_segment(current, point);
    current = point;
  }
  std::vector<Polyline> take() { return std::move(lines); }

private:
  void add_segment(PlotPoint from, PlotPoint to) {
    if (!clip_segment(frame, from, to)) return;
    const bool joined = !lines.empty() && lines.back().back().x == from.x && lines.back().back().y == from.y;
    if (!joined) lines.push_back({from});
    lines.back().push_back(to);
  }

  PlotFrame frame;
  PlotPoint current{};
  std::vector<Polyline> lines;
};

/// The points of one pixel column: first, extremes in their order, last.
class Column {
public:
  void start(const PlotPoint &point) { first = lowest = highest = last = point, lowest_after = false, count = 1; }
  void add(const PlotPoint &point) {
    if (point.y < lowest.y) lowest = point, lowest_after = true;
    if (point.y > highest.y) highest = point, lowest_after = false;
    last = point;
    count++;
  }
  template <class Visit> void visit(Visit visit) const {
    visit(first);
    if (count > 2) {
      visit(lowest_after ? highest : lowest);
      visit(lowest_after ? lowest : highest);
    }
    if (count > 1) visit(last);
  }

private:
  PlotPoint first{}, lowest{}, highest{}, last{};
  bool lowest_after = false;
  std::size_t count = 0;
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

std::vector<Polyline> curve_polylines(const CurvePoints &points, const AxisMap &x_map, const AxisMap &y_map,
                                      const PlotFrame &frame, double column) {
  ClippedPath path(frame);
  Column pending;
  double pending_column = 0;
  bool drawing = false, connected = false;
  const auto flush = [&] {
    if (!drawing) return;
    pending.visit([&](const PlotPoint &point) {
      if (connected)
        path.line_to(point);
      else
        path.move_to(point);
      connected = true;
    });
    drawing = false;
  };
  for (std::size_t i = 0; i < points.y.size(); i++) {
    PlotPoint point{x_map.position(points.x_value(i)), y_map.position(points.y[i])};
    if (!std::isfinite(point.x) || !std::isfinite(point.y)) {
      flush();
      connected = false;
      continue;
    }
    point = {std::clamp(point.x, -far_away, far_away), std::clamp(point.y, -far_away, far_away)};
    const double in_column = std::floor((point.x - frame.left) / column);
    if (drawing && in_column == pending_column) {
      pending.add(point);
    } else {
      flush();
      pending.start(point);
      pending_column = in_column;
      drawing = true;
    }
  }
  flush();
  return path.take();
}

} // namespace brisel
