// plot_layout.h - where the parts of a plot lie on the device: plot area, axes with labels that fit, texts.
#pragma once

#include "gui/plots/plot_style.h"
#include "gui/plots/plotted_data.h"

#include <QPaintDevice>
#include <QRectF>
#include <QString>

namespace brisel {

enum class TextRole { x_tick, y_tick, x_label, y_label, title, problem, note };

struct PlacedText {
  TextRole role;
  QString text;
  QRectF place;         // on the device
  bool upright = false; // runs from bottom to top
  double points = 0;    // font size where it is not that of the style: a line that was too long for the device
};

/// One for each plot kind. Positions are device units of the last drawing.
struct PlotLayout {
  double square_size = 0; // smaller side of the device
  double x = 0, y = 0, width = 0, height = 0;
  double left = 0, right = 0, top = 0, bottom = 0; // plot area
  PlotKind kind{};
  int columns = 0, rows = 0; // of character cells
  bool samples_as_marks = false;
  const double *horizontal = nullptr; // data arrays
  const double *vertical = nullptr;
  int point_count = 0;
  double horizontal_scale = 1;
  std::int16_t mouse_x = 0, mouse_y = 0;
  std::int16_t zoom_start_x = 0, zoom_start_y = 0, zoom_x = 0, zoom_y = 0;
  // What the drawing uses.
  double unit = 1; // 1/96 inch in device units
  bool logarithmic = false;
  Axis x_axis, y_axis; // ranges as displayed
  std::vector<PlacedText> texts;

  bool is_empty() const { return !(right > left && bottom > top); }
  PlotFrame frame() const { return {left, top, right, bottom}; }
  AxisMap x_map() const { return {x_axis.range, logarithmic, left, right}; }
  AxisMap y_map() const { return {y_axis.range, false, bottom, top}; }
};

/// Fills the layout for drawing `data` into `place` of the device; mouse and zoom positions stay. A place without area,
/// or one too small for a plot, leaves an empty layout.
void lay_out_plot(PlotLayout &layout, const PlotData &data, const PlotStyle &style, const QRectF &place,
                  const QPaintDevice &device);

/// The page less a margin of a quarter inch on each side.
QRectF printed_place(const QPaintDevice &page);

/// Display ranges of the zoom rectangle between two device positions; none when it is too small to be meant, lies
/// outside the plot area, or is too deep for the digits of a double. The plot then gets both ranges as they are; only
/// the plane of poles and zeros keeps one scale and round values.
struct ZoomRanges {
  Range x, y;
};
std::optional<ZoomRanges> zoom_ranges(const PlotLayout &layout, QPointF start, QPointF end);
/// Ranges `factor` times as wide with the value under `centre` kept in its place; none where a range gets unusable.
std::optional<ZoomRanges> zoom_about(const PlotLayout &layout, QPointF centre, double factor);

} // namespace brisel
