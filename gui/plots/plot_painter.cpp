#include "gui/plots/plot_painter.h"

#include <QFontMetricsF>
#include <QPaintEngine>

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

class PlotPainter {
public:
  PlotPainter(QPainter &painter, const PlotData &data, const PlotStyle &style, const PlotLayout &layout)
      : painter(painter), data(data), style(style), l(layout), x_map(layout.x_map()), y_map(layout.y_map()),
        area(layout.left, layout.top, layout.right - layout.left, layout.bottom - layout.top) {}

  void texts() {
    for (const PlacedText &text : l.texts) {
      switch (text.role) {
      case TextRole::title:
        use_text(style.title_font, style.titles);
        break;
      case TextRole::problem:
        use_text(style.problem_font, style.problem);
        break;
      default:
        use_text(style.label_font, style.labels);
      }
      if (text.points > 0) painter.setFont(with_size(painter.font(), text.points));
      const double ascent = QFontMetricsF(painter.font(), painter.device()).ascent();
      painter.save();
      if (text.upright) {
        painter.translate(text.place.bottomLeft());
        painter.rotate(-90);
      } else {
        painter.translate(text.place.topLeft());
      }
      painter.drawText(QPointF(0, ascent), text.text);
      painter.restore();
    }
  }

  void outline() {
    use(style.outline);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(sharp(area));
  }

  void grid() {
    const auto inside = [](double position, double from, double to) {
      return position > from + 1 && position < to - 1;
    };
    if (data.grid) {
      use(style.grid);
      const auto x_line = [&](double tick) {
        if (const double x = x_map.position(tick); inside(x, l.left, l.right))
          draw_line(sharp(x), area.top(), sharp(x), area.bottom());
      };
      for (const double tick : l.x_axis.ticks) x_line(tick);
      for (const double tick : l.y_axis.ticks)
        if (const double y = y_map.position(tick); inside(y, l.top, l.bottom))
          draw_line(area.left(), sharp(y), area.right(), sharp(y));
      if (painter.pen().style() != Qt::SolidLine) { // fainter than the lines at labels
        QPen pen = painter.pen();
        pen.setDashPattern({1, 7});
        painter.setPen(pen);
      }
      for (const double tick : l.x_axis.minor_ticks) x_line(tick);
      return;
    }
    use(style.outline);
    const double length = 5 * l.unit;
    const auto x_tick = [&](double tick, double size) {
      const double x = sharp(x_map.position(tick));
      draw_line(x, area.bottom(), x, area.bottom() - size);
      draw_line(x, area.top(), x, area.top() + size);
    };
    for (const double tick : l.x_axis.ticks) x_tick(tick, length);
    for (const double tick : l.x_axis.minor_ticks) x_tick(tick, length / 2);
    for (const double tick : l.y_axis.ticks) {
      const double y = sharp(y_map.position(tick));
      draw_line(area.left(), y, area.left() + length, y);
      draw_line(area.right(), y, area.right() - length, y);
    }
  }

  void curves() {
    painter.save();
    painter.setClipRect(area, Qt::IntersectClip);
    if (!data.reference.empty()) {
      use(style.reference);
      CurvePoints reference = data.curve;
      reference.y = data.reference;
      draw(curve_shape(reference, x_map, y_map, l.frame(), 1));
    }
    use(style.function);
    if (data.samples_as_marks && stems_have_room())
      stems();
    else
      draw(curve_shape(data.curve, x_map, y_map, l.frame(), 1));
    painter.restore();
  }

  void roots() {
    painter.save();
    painter.setClipRect(area, Qt::IntersectClip);
    use(style.outline);
    painter.setBrush(Qt::NoBrush);
    if (data.unit_circle) {
      const QPointF centre(x_map.position(0), y_map.position(0));
      painter.setRenderHint(QPainter::Antialiasing);
      painter.drawEllipse(centre, x_map.position(1) - centre.x(), centre.y() - y_map.position(1));
      painter.setRenderHint(QPainter::Antialiasing, false);
    }
    use(style.grid);
    draw_clipped({x_map.position(0), l.top}, {x_map.position(0), l.bottom});
    draw_clipped({l.left, y_map.position(0)}, {l.right, y_map.position(0)});
    const std::size_t count = data.poles.size() + data.zeros.size();
    const double crowded = count > 300 ? 2.5 : count > 100 ? 3.25 : 4.5;
    const double size = std::min(crowded * l.unit, std::max(area.width() / 60, 2.5 * l.unit));
    const double same = 1e-4 * (l.x_axis.range[1] - l.x_axis.range[0]);
    use(style.function);
    marks(root_marks(data.zeros, data.origin_zeros, same),
          [&](const QPointF &centre) { painter.drawEllipse(centre, size, size); });
    marks(root_marks(data.poles, data.origin_poles, same), [&](const QPointF &centre) {
      draw_line(centre.x() - size, centre.y() - size, centre.x() + size, centre.y() + size);
      draw_line(centre.x() - size, centre.y() + size, centre.x() + size, centre.y() - size);
    });
    painter.restore();
  }

  void cursor(const PlotCursor &cursor) {
    const QPointF at(x_map.position(cursor.x), y_map.position(cursor.y));
    if (!std::isfinite(at.x()) || !std::isfinite(at.y())) return;
    use(style.cursor);
    // A point beyond the display range keeps its vertical line.
    draw_clipped({at.x(), l.top}, {at.x(), l.bottom});
    draw_clipped({l.left, at.y()}, {l.right, at.y()});
    if (at.x() < l.left || at.x() > l.right) return;
    use_text(style.label_font, style.cursor);
    const QString text = qt_text(cursor_text(data, cursor));
    const QFontMetricsF metrics(painter.font(), painter.device());
    const double gap = 6 * l.unit, pad = 3 * l.unit;
    QRectF box(0, 0, metrics.horizontalAdvance(text) + 2 * pad, metrics.ascent() + metrics.descent() + pad);
    // Beside the mark, on the side with room.
    const double y = std::clamp(at.y(), l.top, l.bottom);
    box.moveLeft(at.x() + gap + box.width() > l.right ? at.x() - gap - box.width() : at.x() + gap);
    box.moveTop(y - gap - box.height() < l.top ? y + gap : y - gap - box.height());
    box.moveLeft(std::clamp(box.left(), l.x, std::max(l.x, l.x + l.width - box.width())));
    painter.fillRect(box, style.background);
    painter.drawText(QPointF(box.left() + pad, box.top() + pad / 2 + metrics.ascent()), text);
  }

  void zoom_rectangle() {
    use(style.zoom);
    painter.setBrush(Qt::NoBrush);
    const QRectF rectangle = QRectF(QPointF(l.zoom_start_x, l.zoom_start_y), QPointF(l.zoom_x, l.zoom_y)).normalized();
    painter.drawRect(sharp(rectangle & area));
  }

private:
  void use(QPen pen) {
    pen.setWidthF(pen.widthF() * l.unit);
    painter.setPen(pen);
  }
  void use_text(const QFont &font, const QPen &color) {
    painter.setFont(font);
    painter.setPen(color.color());
  }

  /// Line positions on pixel centres, where a thin line is one pixel wide.
  double sharp(double position) const { return std::floor(position) + 0.5; }
  QRectF sharp(const QRectF &r) const {
    return {QPointF(sharp(r.left()), sharp(r.top())), QPointF(sharp(r.right()), sharp(r.bottom()))};
  }

  void draw_line(double x1, double y1, double x2, double y2) { painter.drawLine(QPointF(x1, y1), QPointF(x2, y2)); }
  void draw_clipped(PlotPoint from, PlotPoint to) {
    if (clip_segment(l.frame(), from, to)) draw_line(from.x, from.y, to.x, to.y);
  }

  void draw(const CurveShape &shape) {
    const double margin = painter.pen().widthF() / 2;
    for (const CurveBar &bar : shape.bars)
      painter.fillRect(QRectF(bar.left, bar.top - margin, bar.width, bar.bottom - bar.top + 2 * margin),
                       painter.pen().color());
    if (!style.always_smooth && is_dense(shape)) {
      draw_unsmoothed(shape);
      return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    for (const Polyline &line : shape.lines) {
      if (line.size() == 2 && line[0].x == line[1].x && line[0].y == line[1].y)
        painter.drawEllipse(QPointF(line[0].x, line[0].y), l.unit, l.unit);
      else
        draw(line);
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
  }

  static double length_of(const Polyline &line) {
    double length = 0;
    for (std::size_t i = 1; i < line.size(); i++)
      length += std::hypot(line[i].x - line[i - 1].x, line[i].y - line[i - 1].y);
    return length;
  }

  bool is_dense(const CurveShape &shape) const {
    constexpr double most = 40000; // pixels; smoothing takes about 0.25 us each
    double length = 0;
    for (const Polyline &line : shape.lines) length += length_of(line);
    return length > most;
  }

  /// Thin lines side by side make the width of the pen: those the toolkit draws fast.
  void draw_unsmoothed(const CurveShape &shape) {
    const QPen whole = painter.pen();
    QPen thin = whole;
    thin.setWidth(0);
    painter.setPen(thin);
    std::vector<QPointF> points;
    for (const Polyline &line : shape.lines)
      for (int copy = 0; copy < std::lround(whole.widthF()); copy++) {
        points.clear();
        for (const PlotPoint &point : line) points.emplace_back(point.x + copy, point.y);
        painter.drawPolyline(points.data(), static_cast<int>(points.size()));
      }
    painter.setPen(whole);
  }

  /// On pixels in pieces: the time that a smoothed line takes grows with the square of its crossings of a pixel row.
  void draw(const Polyline &line) {
    const bool pixels = painter.paintEngine()->type() == QPaintEngine::Raster;
    const std::size_t most = pixels ? 4 : line.size();
    const QPen whole = painter.pen();
    double length = 0;
    Polyline piece;
    std::vector<QPointF> points;
    for (const PlotPoint &point : line) {
      piece.push_back(point);
      if (piece.size() < most && &point != &line.back()) continue;
      if (pixels && whole.style() != Qt::SolidLine) { // a dash goes on where the last piece ended
        QPen pen = whole;
        pen.setDashOffset(length / whole.widthF());
        painter.setPen(pen);
        length += length_of(piece);
      }
      points.clear();
      for (const PlotPoint &corner : piece) points.emplace_back(corner.x, corner.y);
      painter.drawPolyline(points.data(), static_cast<int>(points.size()));
      piece.assign(1, point);
    }
    painter.setPen(whole);
  }

  /// Stems closer than this run into each other.
  bool stems_have_room() const {
    const double pitch = x_map.position(data.curve.step * data.curve.scale) - x_map.position(0);
    return pitch >= 3.5 * l.unit;
  }

  void stems() {
    painter.setRenderHint(QPainter::Antialiasing);
    const double zero = std::clamp(y_map.position(0), l.top, l.bottom);
    draw_line(l.left, sharp(zero), l.right, sharp(zero));
    painter.setBrush(painter.pen().color());
    const double radius = 2.25 * l.unit;
    for (std::size_t i = 0; i < data.curve.y.size(); i++) {
      const double x = x_map.position(data.curve.x_value(i)), y = y_map.position(data.curve.y[i]);
      if (!std::isfinite(x) || !std::isfinite(y) || x < l.left || x > l.right) continue;
      draw_clipped({x, zero}, {x, y});
      if (y >= l.top && y <= l.bottom) painter.drawEllipse(QPointF(x, y), radius, radius);
    }
    painter.setBrush(Qt::NoBrush);
    painter.setRenderHint(QPainter::Antialiasing, false);
  }

  template <class Draw> void marks(const std::vector<RootMark> &roots, Draw draw_mark) {
    painter.setRenderHint(QPainter::Antialiasing);
    for (const RootMark &root : roots) {
      const QPointF centre(x_map.position(root.place.real()), y_map.position(root.place.imag()));
      if (!area.contains(centre)) continue;
      draw_mark(centre);
      if (root.count == 1) continue;
      painter.save();
      use_text(style.label_font, style.labels);
      painter.drawText(centre + QPointF(6 * l.unit, -5 * l.unit), QString::number(root.count));
      painter.restore();
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
  }

  QPainter &painter;
  const PlotData &data;
  const PlotStyle &style;
  const PlotLayout &l;
  AxisMap x_map, y_map;
  QRectF area;
};

} // namespace

void draw_plot(QPainter &painter, const QRectF &place, const PlotData &data, const PlotStyle &style, PlotLayout &layout,
               const PlotOverlay &overlay) {
  lay_out_plot(layout, data, style, place, *painter.device());
  painter.save();
  painter.fillRect(place, style.background);
  if (!layout.is_empty()) {
    PlotPainter plot(painter, data, style, layout);
    plot.grid();
    plot.outline();
    plot.texts();
    if (data.kind == PlotKind::pole_zero)
      plot.roots();
    else
      plot.curves();
    if (overlay.cursor)
      plot.cursor(*overlay.cursor);
    else if (overlay.zoom_rectangle)
      plot.zoom_rectangle();
  }
  painter.restore();
}

} // namespace brisel
