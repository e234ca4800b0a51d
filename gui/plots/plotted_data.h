// plotted_data.h - what one plot shows: the engine's arrays as views, display ranges in the units of the labels, texts.
#pragma once

#include "engine/analysis/plot_arrays.h"
#include "gui/plots/plot_curve.h"

#include <optional>
#include <string>

namespace brisel {

/// A view: the arrays must outlive it. The caller may set other ranges (zoom) before drawing.
struct PlotData {
  PlotKind kind{};
  std::string title, x_label, y_label, problem;
  CurvePoints curve;
  std::span<const double> reference; // at the curve's horizontal values, empty = none
  Range x_range{0, 1}, y_range{0, 1};
  bool round_x = false, round_y = false; // the drawing may widen the range to round tick values
  bool logarithmic = false;              // horizontal axis
  bool radians = false;                  // of the frequency unit
  bool samples_as_marks = false;
  bool grid = false;
  // Pole/zero plot.
  std::span<const std::complex<double>> poles, zeros;
  int origin_poles = 0, origin_zeros = 0; // further ones at 0
  bool unit_circle = true;                // false: s plane
  std::string note;                       // what the plot cannot show

  bool is_frequency() const { return kind <= PlotKind::group_delay; }
};

/// The plot of a description and the state that belongs to it. `problem` is the line that says which filter it is.
/// Ranges of magnitude and log magnitude that a plot reset left are made to fit the curve, others stay as they are set.
PlotData plot_data_of(const PlotDescription &description, const PlotState &state, bool grid, std::string_view problem);

/// Range of the linear magnitude: from 0 to a little above the highest value.
Range automatic_magnitude_range(std::span<const double> magnitude);
/// Range of the log magnitude: from a little above the highest value 100 dB down; less for a response that never falls
/// 60 dB; more, to 200 dB, where a fifth of the response lies deeper and has side lobes there. Values at the -600 dB
/// floor do not count.
Range automatic_decibel_range(std::span<const double> decibels);

/// Poles or zeros that lie at one place.
struct RootMark {
  std::complex<double> place;
  int count;
};
/// One mark for all roots that agree to `distance`; `at_origin` further ones lie at 0.
std::vector<RootMark> root_marks(std::span<const std::complex<double>> roots, int at_origin, double distance);
/// Sets the ranges of a pole/zero plot to a square around 0 that holds its roots. In the z plane it also holds the unit
/// circle but reaches no further than 2; the note tells of roots beyond.
void fit_to_roots(PlotData &data);

} // namespace brisel
