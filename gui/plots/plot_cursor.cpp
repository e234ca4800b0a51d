#include "gui/plots/plot_cursor.h"

#include "engine/files/text_file.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace brisel {

namespace {

int point_count(const PlotData &data) {
  return static_cast<int>(data.kind == PlotKind::pole_zero ? data.poles.size() + data.zeros.size()
                                                           : data.curve.y.size());
}

PlotCursor point(const PlotData &data, int index) {
  const auto i = static_cast<std::size_t>(index);
  if (data.kind != PlotKind::pole_zero) return {data.curve.x_value(i), data.curve.y[i], index};
  const std::complex<double> root = i < data.poles.size() ? data.poles[i] : data.zeros[i - data.poles.size()];
  return {root.real(), root.imag(), index};
}

/// The curve's points are ascending in x, so the nearest is one of two neighbours.
int nearest_sample(const PlotData &data, double x) {
  int low = 0, high = point_count(data) - 1;
  while (high - low > 1) {
    const int middle = low + (high - low) / 2;
    (data.curve.x_value(static_cast<std::size_t>(middle)) <= x ? low : high) = middle;
  }
  return std::abs(point(data, low).x - x) <= std::abs(point(data, high).x - x) ? low : high;
}

int nearest_root(const PlotData &data, double x, double y) {
  int nearest = 0;
  double distance = std::numeric_limits<double>::infinity();
  for (int i = 0; i < point_count(data); i++) {
    const PlotCursor root = point(data, i);
    const double d = std::hypot(root.x - x, root.y - y);
    if (d < distance) {
      distance = d;
      nearest = i;
    }
  }
  return nearest;
}

struct Units {
  const char *x, *y;
};
Units units_of(const PlotData &data) {
  static constexpr std::array<const char *, plot_kind_count> vertical{"", " dB", " rad", " s", "", "", ""};
  const char *horizontal = data.radians ? " rad/s" : " Hz";
  if (!data.is_frequency()) horizontal = data.curve.scale == 1000 ? " ms" : " s";
  return {horizontal, vertical[static_cast<std::size_t>(code(data.kind))]};
}

} // namespace

std::optional<PlotCursor> cursor_at(const PlotLayout &l, const PlotData &data, QPointF position, bool snap) {
  if (l.is_empty() ||
      !(position.x() >= l.left && position.x() <= l.right && position.y() >= l.top && position.y() <= l.bottom))
    return std::nullopt;
  const PlotCursor place{l.x_map().value(position.x()), l.y_map().value(position.y())};
  if (!snap) return place;
  if (point_count(data) == 0) return std::nullopt;
  const PlotCursor nearest = point(data, data.kind == PlotKind::pole_zero ? nearest_root(data, place.x, place.y)
                                                                          : nearest_sample(data, place.x));
  if (!std::isfinite(nearest.x) || !std::isfinite(nearest.y)) return std::nullopt;
  return nearest;
}

std::optional<PlotCursor> cursor_moved(const PlotLayout &l, const PlotData &data, const PlotCursor &cursor, int step) {
  const int count = point_count(data);
  if (l.is_empty() || count == 0 || step == 0) return std::nullopt;
  int from = cursor.index;
  if (from < 0 || from >= count)
    from = data.kind == PlotKind::pole_zero ? nearest_root(data, cursor.x, cursor.y) : nearest_sample(data, cursor.x);
  const int direction = step > 0 ? 1 : -1;
  for (int i = std::clamp(from + step, 0, count - 1); i >= 0 && i < count; i += direction) {
    const PlotCursor moved = point(data, i);
    if (std::isfinite(moved.x) && std::isfinite(moved.y)) return moved;
  }
  return std::nullopt;
}

std::string cursor_text(const PlotData &data, const PlotCursor &cursor) {
  if (data.kind == PlotKind::pole_zero)
    return formatf("%.5g %c j%.5g,  |%c| = %.5g,  %.4g\u00b0", cursor.x, cursor.y < 0 ? '-' : '+', std::abs(cursor.y),
                   data.unit_circle ? 'z' : 's', std::hypot(cursor.x, cursor.y),
                   std::atan2(cursor.y, cursor.x) * 360 / two_pi);
  const Units units = units_of(data);
  return formatf("%.6g%s,  %.6g%s", cursor.x, units.x, cursor.y, units.y);
}

} // namespace brisel
