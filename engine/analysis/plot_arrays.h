// plot_arrays.h - the response arrays of the current filter and what the plots need to know to draw them.
#pragma once

#include "engine/core/design_state.h"

#include <span>
#include <string>

namespace brisel {

inline constexpr int max_frequency_points = 10001;
inline constexpr int max_time_points = 32002;
inline constexpr int default_frequency_points = 1001;
inline constexpr int default_time_points = 200;
inline constexpr int min_time_samples = 600; // the time arrays are always filled to at least this many
inline constexpr int max_interpolated_points = 300;
inline constexpr int max_fir_zero_taps = 512; // longer FIR filters have their zeros left uncomputed

// Display ranges of magnitude and log magnitude that a plot reset leaves: for a maximum gain of 1 and for other gains.
// The drawing fits a range that still has these values to the curve.
inline constexpr std::array default_magnitude_ranges{Range{0, 1}, Range{0, 2}};
inline constexpr std::array default_log_magnitude_ranges{Range{-100, 0}, Range{-90, 10}};

/// One instance, owned by the engine.
struct PlotArrays {
  std::int32_t frequency_count;
  std::int32_t time_count; // meaningful samples; FIR: the number of taps, capped at max_time_points
  std::array<double, max_frequency_points> frequency; // radians per sample
  std::array<double, max_frequency_points> magnitude; // linear, gain included
  std::array<double, max_frequency_points> log_magnitude;
  std::array<double, max_frequency_points> phase;
  std::array<double, max_frequency_points> group_delay; // seconds
  std::array<double, max_frequency_points> ideal_log_magnitude;
  std::array<double, max_time_points> impulse;
  std::array<double, max_time_points> step;
};
extern PlotArrays plot_arrays;

/// What belongs to the arrays: axes, display ranges, pole and zero lists. Filled by the response entry points.
struct PlotState {
  double sampling_frequency; // radians per second
  double factor;             // 2 pi / sampling_frequency: radians per second -> radians per sample; seconds per sample
  Range frequency;           // radians per second
  Range log_range;           // radians per second, low and high end of the logarithmic axis
  double log_ratio;          // log(end/low) / log(high/low)
  std::int8_t decades;
  bool log_axis;
  bool radians;
  bool fir_design;
  bool s_plane;              // poles and zeros are those of an analog system, in radians per second
  bool poles_zeros_computed; // false: too many taps, not asked for, or none found that reproduce the filter
  Range magnitude, log_magnitude, phase, group_delay, impulse, step;
  Range time;                                  // seconds
  const double *ideal;                         // ideal log magnitude, or null
  std::span<const std::complex<double>> poles; // those of a FIR filter: see setup_plot_labels()
  std::span<const std::complex<double>> zeros;
  int origin_poles; // further poles at z = 0 that `poles` does not list
  int origin_zeros;
};
extern PlotState plot_state;

/// The plot that is to be shown. Value i of the x axis is x[i] * x_scale for frequencies, i * x_step * x_scale for
/// times.
struct PlotDescription {
  PlotKind kind;
  const double *x; // frequency kinds: radians per sample; null for times and the pole/zero plot
  const double *y;
  int count;
  Range x_range; // before scaling, in the unit of x
  Range y_range;
  double x_step;
  double x_scale; // to the unit of the label
  bool samples_as_marks;
  std::string_view title, x_label, y_label;
};

/// Whether frequencies, in any unit, have an axis: ascending, finite, and for a logarithmic one with decades to count.
bool is_plottable(const Range &range, bool log_axis);
/// Copies the point counts from the design record's plot settings, clears what belongs to the last response and builds
/// the frequency grid. `sampling_frequency` in radians per second.
void init_plot_array();
/// Responses of the working FIR entry of the design record.
void fir_plot_array();
/// Responses of every other form, by the record's realization code.
void iir_plot_array();

/// 20 log10 of each magnitude, -600 dB at and below 1e-30.
void log_magnitude(std::span<const double> magnitude, std::span<double> log_magnitude);
/// Smallest and largest value; a constant array gets a range around its value.
Range plot_range(std::span<const double> values);
/// Arrays, ranges and labels of a plot kind. The zeros of a FIR filter are worked out into `plot_state` when the
/// pole/zero plot is first set up after its responses.
PlotDescription setup_plot_labels(PlotKind kind);
/// Band-limited interpolation of 1 to 300 samples to about 300 points; returns the points, empty outside that range.
std::vector<double> interpolate_impulse(std::span<const double> samples);

} // namespace brisel
