// plot_curve.h - a response as polylines of the device: thinned to its pixel columns and clipped in doubles, so that no
// painter ever sees a coordinate that it cannot hold.
#pragma once

#include "gui/plots/plot_axis.h"

#include <span>
#include <vector>

namespace brisel {

struct PlotPoint {
  double x, y;
};
using Polyline = std::vector<PlotPoint>;

/// The visible rectangle, left < right, top < bottom.
struct PlotFrame {
  double left, top, right, bottom;
};

/// Where the points of a response lie: value i is x[i] * scale, or i * step * scale when `x` is empty.
struct CurvePoints {
  std::span<const double> x;
  std::span<const double> y;
  double step = 1;
  double scale = 1;

  double x_value(std::size_t i) const { return (x.empty() ? static_cast<double>(i) * step : x[i]) * scale; }
};

/// The part of the segment that lies inside the frame; false when there is none. Positions up to 1e9. [Liang84] Y.-D.
/// Liang, B. A. Barsky, A new concept and method for line clipping, ACM Trans. Graphics 3 (1984).
bool clip_segment(const PlotFrame &frame, PlotPoint &from, PlotPoint &to);

/// A pixel column in which the curve goes up and down: all between top and bottom is curve.
struct CurveBar {
  double left, width, top, bottom;
};
struct CurveShape {
  std::vector<Polyline> lines;
  std::vector<CurveBar> bars;
};

/// The curve inside the frame in device positions. Of the points that share a column of `column` device units the
/// first, lowest, highest and last are kept; a column in which the curve swings becomes a bar, because painting the
/// swings takes long and shows nothing. A value that is not finite interrupts the curve.
CurveShape curve_shape(const CurvePoints &points, const AxisMap &x_map, const AxisMap &y_map, const PlotFrame &frame,
                       double column);

} // namespace brisel
