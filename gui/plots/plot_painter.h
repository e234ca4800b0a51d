// plot_painter.h - draws one plot on a window, a page or a picture.
#pragma once

#include "gui/plots/plot_cursor.h"

#include <QPainter>

namespace brisel {

/// What is drawn over the plot: nothing, a cursor with its read-out, or the zoom rectangle of the layout.
struct PlotOverlay {
  std::optional<PlotCursor> cursor;
  bool zoom_rectangle = false;
};

/// Draws the plot into `place`, background included, and leaves the layout for mouse positions. The painter's pen,
/// font, clipping and render hints are as before afterwards.
void draw_plot(QPainter &painter, const QRectF &place, const PlotData &data, const PlotStyle &style, PlotLayout &layout,
               const PlotOverlay &overlay = {});

} // namespace brisel
