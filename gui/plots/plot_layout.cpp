#include "gui/plots/plot_layout.h"

#include "engine/files/text_file.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

constexpr std::array horizontal_counts{9, 6, 5, 3}; // those that fewer_labels() can reduce
constexpr std::array vertical_counts{12, 11, 10, 9, 8, 7, 6, 5, 4, 3};
constexpr std::array symmetric_counts{11, 9, 7, 5, 3}; // with a label at 0

/// Places texts around a plot area and finds the area's size while doing so.
class Arranger {
public:
  Arranger(PlotLayout &layout, const PlotData &data, const PlotStyle &style, const QPaintDevice &device)
      : layout(layout), data(data), style(style), device(device), labels(style.label_font, &device),
        titles(style.title_font, &device), problems(style.problem_font, &device), pad(4 * layout.unit) {}

  /// With texts in the order in which a small device loses them: 0 all, 1 without the problem description, 2 also
  /// without axis labels, 3 also without a title, 4 also without tick labels. False when the plot area gets too small.
  bool arrange(int lost) {
    layout.texts.clear();
    with_problem = lost < 1 && !data.problem.empty();
    with_axis_labels = lost < 2;
    with_title = lost < 3 && !data.title.empty();
    with_ticks = lost < 4;
    bottom_text = data.kind == PlotKind::pole_zero ? data.note : data.x_label;
    reserve();
    if (data.kind == PlotKind::pole_zero)
      set_root_axes();
    else
      set_axes();
    // A pole/zero plot is a square: in a wide or tall device it cannot have more than the smaller side.
    const bool square = data.kind == PlotKind::pole_zero;
    const double width = square ? layout.square_size : layout.width;
    const double height = square ? layout.square_size : layout.height;
    if (layout.is_empty() || layout.bottom - layout.top < 0.4 * height || layout.right - layout.left < 0.4 * width)
      return false;
    place_texts();
    return true;
  }

private:
  double line(const QFontMetricsF &metrics) const { return std::ceil(metrics.ascent() + metrics.descent()); }
  double width_of(const QString &text, const QFontMetricsF &metrics) const { return metrics.horizontalAdvance(text); }

  /// The plot area before anything is known of the labels.
  void reserve() {
    PlotLayout &l = layout;
    const double title = with_title ? line(titles) : 0;
    const double height = l.height - title;
    l.left = l.x + 0.1 * l.width;
    l.right = l.x + 0.9 * l.width;
    l.top = l.y + 0.1 * height;
    l.bottom = l.y + 0.9 * height;
    const double above = (with_title ? title + 2 * pad : pad) + (with_ticks ? line(labels) / 2 : 0);
    l.top = std::max(l.top, l.y + above);
    l.bottom = std::min(l.bottom, l.y + l.height - below());
  }

  double tick_gap() const { return std::max(pad, line(labels) / 2 + layout.unit); }
  bool has_bottom_text() const { return with_axis_labels && !bottom_text.empty(); }
  double below() const {
    double height = pad;
    if (with_ticks) height += tick_gap() + line(labels);
    if (has_bottom_text()) height += pad / 2 + line(labels);
    if (with_problem) height += pad + line(problems);
    return height;
  }
  double left_of_ticks() const { return with_axis_labels && !data.y_label.empty() ? 2 * pad + line(labels) : pad; }

  double widest(const std::vector<std::string> &texts) const {
    double width = 0;
    for (const std::string &text : texts) width = std::max(width, width_of(qt_text(text).trimmed(), labels));
    return width;
  }

  /// Moves the left edge so that the vertical labels fit; they are dropped when they would take too much of the plot.
  void fit_vertical_labels() {
    PlotLayout &l = layout;
    const double room = widest(l.y_axis.labels) + 2 * layout.unit + pad;
    const bool fits = with_ticks && widest(l.y_axis.labels) <= 0.35 * (l.right - l.left);
    l.left = std::max(l.left, l.x + left_of_ticks() + (fits ? room : 0));
    if (!fits) l.y_axis.labels.clear();
  }

  double horizontal_gap() const { return 1.5 * width_of(QStringLiteral("0"), labels); }

  /// Reduces the horizontal labels until they fit.
  void fit_horizontal_labels() {
    PlotLayout &l = layout;
    if (!with_ticks) {
      l.x_axis.labels.clear();
      return;
    }
    const auto fits = [&](double count) {
      return (widest(l.x_axis.labels) + horizontal_gap()) * (count - 1) <= l.right - l.left;
    };
    if (l.logarithmic) {
      thin_out_logarithmic_labels();
    } else {
      for (int count = static_cast<int>(l.x_axis.ticks.size()); !fits(count);) {
        count = fewer_labels(count);
        if (count == 0) {
          l.x_axis.labels.clear();
          return;
        }
        l.x_axis = with_label_count(l.x_axis, count);
      }
    }
    // Half of the last label stands right of the plot area.
    const double last = l.x_axis.labels.empty() ? 0 : width_of(qt_text(l.x_axis.labels.back()).trimmed(), labels);
    l.right = std::min(l.right, l.x + l.width - last / 2 - 2 * layout.unit);
  }

  /// Every second, third, ... label stays, its ticks remain.
  void thin_out_logarithmic_labels() {
    Axis &axis = layout.x_axis;
    const AxisMap map = layout.x_map();
    const double needed = widest(axis.labels) + horizontal_gap();
    for (std::size_t every = 1; every < axis.ticks.size(); every++) {
      bool fits = true;
      for (std::size_t i = every; i < axis.ticks.size(); i += every)
        fits = fits && map.position(axis.ticks[i]) - map.position(axis.ticks[i - every]) >= needed;
      if (!fits) continue;
      for (std::size_t i = 0; i < axis.labels.size(); i++)
        if (i % every != 0) axis.labels[i].clear();
      return;
    }
    axis.labels.clear();
  }

  int vertical_limit() const {
    const double height = layout.bottom - layout.top;
    const int lines = static_cast<int>(height / (1.3 * line(labels))) + 1;
    return std::clamp(lines, 2, starting_label_count(0.04 * height / layout.unit));
  }
  int horizontal_limit() const { return starting_label_count(0.04 * layout.width / layout.unit); }

  void set_axes() {
    PlotLayout &l = layout;
    l.logarithmic = data.logarithmic;
    l.y_axis = linear_axis(data.y_range, data.round_y, vertical_limit(), vertical_counts);
    l.x_axis = data.logarithmic ? logarithmic_axis(data.x_range)
                                : linear_axis(data.x_range, data.round_x, horizontal_limit(), horizontal_counts);
    equalize_labels(l.y_axis.labels);
    fit_vertical_labels();
    if (layout.is_empty()) return;
    fit_horizontal_labels();
    if (!l.logarithmic) equalize_labels(l.x_axis.labels);
  }

  /// The largest square that fits, with the same scale in both directions.
  void set_root_axes() {
    PlotLayout &l = layout;
    l.logarithmic = false;
    const double side = std::min(l.right - l.left, l.bottom - l.top);
    if (!(side > 0)) return;
    const double centre = (l.left + l.right) / 2, middle = (l.top + l.bottom) / 2;
    l.left = centre - side / 2;
    l.right = centre + side / 2;
    l.top = middle - side / 2;
    l.bottom = middle + side / 2;
    const double x_centre = (data.x_range[0] + data.x_range[1]) / 2, y_centre = (data.y_range[0] + data.y_range[1]) / 2;
    const double half = std::max(data.x_range[1] - data.x_range[0], data.y_range[1] - data.y_range[0]) / 2;
    const auto too_wide = [&] {
      return std::max(widest(l.x_axis.labels), widest(l.y_axis.labels)) + horizontal_gap() >
             side / static_cast<double>(l.x_axis.ticks.size() - 1);
    };
    for (int limit = std::min(vertical_limit(), starting_label_count(0.04 * side / l.unit)); limit >= 2;
         limit = static_cast<int>(l.x_axis.ticks.size()) - 1) {
      l.x_axis = linear_axis({x_centre - half, x_centre + half}, true, limit, symmetric_counts);
      const double span = l.x_axis.range[1] - l.x_axis.range[0];
      const double step = span / static_cast<double>(l.x_axis.ticks.size() - 1);
      const double lowest = std::round((y_centre - span / 2) / step) * step;
      l.y_axis = with_label_count({.range = {lowest, lowest + span}}, static_cast<int>(l.x_axis.ticks.size()));
      equalize_labels(l.x_axis.labels);
      equalize_labels(l.y_axis.labels);
      if (!too_wide()) break;
    }
    if (!with_ticks || too_wide()) l.x_axis.labels.clear();
    if (!with_ticks || l.left - widest(l.y_axis.labels) - pad < l.x) l.y_axis.labels.clear();
  }

  void place_texts() {
    const PlotLayout &l = layout;
    const double centre = (l.left + l.right) / 2, middle = (l.top + l.bottom) / 2;
    const AxisMap x_map = l.x_map(), y_map = l.y_map();
    double labels_left = l.left;
    for (std::size_t i = 0; i < l.y_axis.labels.size(); i++) {
      const QString text = qt_text(l.y_axis.labels[i]).trimmed();
      const double width = width_of(text, labels), y = y_map.position(l.y_axis.ticks[i]);
      const QRectF place(l.left - pad - width, y - line(labels) / 2, width, line(labels));
      labels_left = std::min(labels_left, place.left());
      add(TextRole::y_tick, text, place);
    }
    double y = l.bottom + tick_gap();
    for (std::size_t i = 0; i < l.x_axis.labels.size(); i++) {
      const QString text = qt_text(l.x_axis.labels[i]).trimmed();
      const double width = width_of(text, labels), x = x_map.position(l.x_axis.ticks[i]);
      add(TextRole::x_tick, text, {x - width / 2, y, width, line(labels)});
    }
    if (with_ticks) y += line(labels);
    if (has_bottom_text()) {
      y += pad / 2;
      add_centred(data.kind == PlotKind::pole_zero ? TextRole::note : TextRole::x_label, qt_text(bottom_text),
                  style.label_font, centre, y);
    }
    if (with_axis_labels && !data.y_label.empty()) {
      const double room = l.bottom - l.top + 2 * std::min(l.top - l.y, l.y + l.height - l.bottom) - 2 * pad;
      const QString text = labels.elidedText(qt_text(data.y_label), Qt::ElideRight, room);
      const double length = width_of(text, labels);
      // Near its numbers, not at the far edge of a wide margin.
      const double x = std::max(l.x + pad, labels_left - 2 * pad - line(labels));
      add(TextRole::y_label, text, {x, middle - length / 2, line(labels), length}, true);
    }
    if (with_title) {
      const double above = l.top - (with_ticks ? line(labels) / 2 : 0) - l.y;
      add_centred(TextRole::title, qt_text(data.title), style.title_font, centre,
                  l.y + std::max(pad, (above - line(titles)) / 2));
    }
    if (with_problem)
      add_centred(TextRole::problem, qt_text(data.problem), style.problem_font, l.x + l.width / 2,
                  l.y + l.height - pad - line(problems));
  }

  void add(TextRole role, const QString &text, const QRectF &place, bool upright = false) {
    if (!text.isEmpty()) layout.texts.push_back({role, text, place, upright});
  }

  /// Moved inside the device; a longer text is made smaller, then cut.
  void add_centred(TextRole role, const QString &whole, const QFont &font, double centre, double y) {
    constexpr double smallest = 0.7;
    const double room = layout.width - 2 * pad, height = line(QFontMetricsF(font, &device));
    double points = font.pointSizeF();
    // Measured anew at each size: widths of hinted glyphs are not in proportion.
    while (width_of(whole, QFontMetricsF(with_size(font, points), &device)) > room &&
           points - 0.5 >= smallest * font.pointSizeF())
      points -= 0.5;
    const QFontMetricsF metrics(with_size(font, points), &device);
    const QString text = metrics.elidedText(whole, Qt::ElideRight, room);
    const double width = width_of(text, metrics), left = layout.x + pad;
    const double x = std::clamp(centre - width / 2, left, std::max(left, left + room - width));
    add(role, text, {x, y + height - line(metrics), width, line(metrics)});
    if (!text.isEmpty() && points < font.pointSizeF()) layout.texts.back().points = points;
  }

  PlotLayout &layout;
  const PlotData &data;
  const PlotStyle &style;
  const QPaintDevice &device;
  QFontMetricsF labels, titles, problems;
  double pad;
  bool with_problem = false, with_axis_labels = false, with_title = false, with_ticks = false;
  std::string bottom_text; // axis label, or what a pole/zero plot has to say
};

} // namespace

void lay_out_plot(PlotLayout &layout, const PlotData &data, const PlotStyle &style, const QRectF &place,
                  const QPaintDevice &device) {
  PlotLayout &l = layout;
  l.kind = data.kind;
  l.samples_as_marks = data.samples_as_marks;
  l.horizontal = data.curve.x.data();
  l.vertical = data.curve.y.data();
  l.point_count = static_cast<int>(data.curve.y.size());
  l.horizontal_scale = data.curve.scale;
  l.unit = device.logicalDpiY() / 96.0;
  l.x = place.x();
  l.y = place.y();
  l.width = place.width();
  l.height = place.height();
  l.square_size = std::min(l.width, l.height);
  l.left = l.right = l.top = l.bottom = 0;
  l.texts.clear();
  l.columns = l.rows = 0;
  constexpr double smallest = 16; // 1/96 inch
  constexpr double largest = 1e6; // device units: more than any painter takes
  const bool paintable =
      std::abs(l.x) <= largest && std::abs(l.y) <= largest && l.width <= largest && l.height <= largest; // and a number
  if (!paintable || l.square_size < smallest * l.unit || !(l.unit > 0)) return;
  Arranger arranger(l, data, style, device);
  for (int lost = 0; lost <= 4; lost++) {
    if (arranger.arrange(lost)) {
      l.columns = static_cast<int>(l.width / std::max(1.0, std::round(0.04 * l.width))) + 1;
      l.rows = static_cast<int>((l.bottom - l.top) / std::max(1.0, std::round(0.04 * (l.bottom - l.top)))) + 1;
      return;
    }
  }
  l.left = l.right = l.top = l.bottom = 0;
  l.texts.clear();
}

QRectF printed_place(const QPaintDevice &page) {
  const double x = page.logicalDpiX() / 4.0, y = page.logicalDpiY() / 4.0;
  return QRectF(0, 0, page.width(), page.height()).adjusted(x, y, -x, -y);
}

std::optional<ZoomRanges> zoom_ranges(const PlotLayout &l, QPointF start, QPointF end) {
  if (l.is_empty()) return std::nullopt;
  const auto inside = [&](QPointF p) {
    return QPointF(std::clamp(p.x(), l.left, l.right), std::clamp(p.y(), l.top, l.bottom));
  };
  start = inside(start);
  end = inside(end);
  const double smallest = 4 * l.unit;
  if (!(std::abs(end.x() - start.x()) >= smallest) || !(std::abs(end.y() - start.y()) >= smallest)) return std::nullopt;
  const auto range = [](const AxisMap &map, double a, double b) {
    return Range{std::min(map.value(a), map.value(b)), std::max(map.value(a), map.value(b))};
  };
  const ZoomRanges ranges{range(l.x_map(), start.x(), end.x()), range(l.y_map(), start.y(), end.y())};
  if (!is_usable(ranges.x) || !is_usable(ranges.y)) return std::nullopt;
  return ranges;
}

std::optional<ZoomRanges> zoom_about(const PlotLayout &l, QPointF centre, double factor) {
  if (l.is_empty() || !(factor > 0)) return std::nullopt;
  const auto range = [&](const AxisMap &map, double at, double from, double to) {
    return Range{map.value(at + (from - at) * factor), map.value(at + (to - at) * factor)};
  };
  const ZoomRanges ranges{range(l.x_map(), centre.x(), l.left, l.right), range(l.y_map(), centre.y(), l.bottom, l.top)};
  if (!is_usable(ranges.x) || !is_usable(ranges.y)) return std::nullopt;
  return ranges;
}

} // namespace brisel
