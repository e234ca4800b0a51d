// desired_response.h - the amplitude that a FIR specification asks for, as all FIR methods read it.
//
// Specifications are normalized here: the sampling frequency is 2 pi, frequencies are radians per sample.
#pragma once

#include "engine/core/records.h"

#include <array>
#include <numbers>
#include <optional>

namespace brisel {

/// Edges of the stretches that the bands of a multiband or arbitrary-magnitude specification answer for: 0, the
/// midpoints of the gaps between neighbours, pi. Band b has edge[b] to edge[b + 1].
struct BandStretches {
  int count = 0;
  std::array<double, max_bands + 1> edge{};
};
BandStretches band_stretches(const FilterSpec &spec);

/// Linear gain over frequency of one band of an arbitrary-magnitude specification, frequencies ascending. A band of
/// fixed gain is a table of one point. Values in dB were converted to gains before anything is interpolated.
struct MagnitudeTable {
  int count = 0; // at least 1
  std::array<double, max_points_per_band> frequency{};
  std::array<double, max_points_per_band> gain{};
};
MagnitudeTable magnitude_table(const FilterSpec &spec, int band);
/// Linear between the points; the first and the last gain hold beyond them.
double interpolate(const MagnitudeTable &table, double w);

/// Gain that a band of a multiband or arbitrary-magnitude specification asks for at `w`.
double desired_at(const FilterSpec &spec, int band, double w);
/// How far the desired gain of a multiband or arbitrary-magnitude specification steps between band `band` - 1 and the
/// band behind it; 0 where it goes on without a step.
double step_below_band(const FilterSpec &spec, int band);
/// The first band of such a specification that begins where the one before ends, with another gain: a step that no
/// filter follows.
std::optional<int> band_that_jumps(const FilterSpec &spec);

/// 1 up to the passband edge, half a cosine period down to 0 at the stopband edge, 0 beyond.
double raised_cosine(double w, double passband_edge, double stopband_edge);
/// The square root of it, in a form without rounding noise near the stopband edge.
double root_raised_cosine(double w, double passband_edge, double stopband_edge);

/// Slope times radians per sample inside the passband (edges included), 0 outside.
double differentiator_amplitude(const FilterSpec &spec, double w);

} // namespace brisel
