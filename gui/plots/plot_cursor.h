// plot_cursor.h - reading values off a plot.
#pragma once

#include "gui/plots/plot_layout.h"

namespace brisel {

/// A place on a plot in the units of its labels. `index` is that of a computed point (a curve's sample, or a root:
/// poles first, then zeros), -1 for a free place.
struct PlotCursor {
  double x = 0, y = 0;
  int index = -1;
};

/// The place under a device position, or, with `snap`, the computed point nearest to it: on a curve the nearest
/// horizontally. None outside the plot area, on an empty layout, and when there is no point to snap to.
std::optional<PlotCursor> cursor_at(const PlotLayout &layout, const PlotData &data, QPointF position, bool snap);
/// The computed point `step` places beyond `cursor` along the curve (or through the list of roots), stopping at the
/// ends and passing over values that are not finite.
std::optional<PlotCursor> cursor_moved(const PlotLayout &layout, const PlotData &data, const PlotCursor &cursor,
                                       int step);
/// "1000 Hz, -3.0103 dB"; for the pole/zero plot the complex value, its magnitude and angle.
std::string cursor_text(const PlotData &data, const PlotCursor &cursor);

} // namespace brisel
