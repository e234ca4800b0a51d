// spec_check.h - whether a specification asks for something that a filter can do. Files, dialogs and batch jobs all ask
// here, so that no method meets bands out of order, edges beyond half the sampling frequency or ripples of nothing.
#pragma once

#include "engine/core/records.h"

#include <optional>
#include <string>

namespace brisel {

/// The parts of a specification that a file or a dialog fills in.
enum class SpecField {
  sampling_frequency,
  passband_edge,
  stopband_edge,
  passband_ripple,
  stopband_ripple,
  symbol_rate,
  rolloff,
  slope,
  band_count,
  band_lower, // from here on the index counts bands or points
  band_upper,
  band_value,
  band_ripple,
  point_count,
  function_frequency,
  function_value,
};

/// The number of a field; for the two counts there is none.
double &spec_value(FilterSpec &spec, SpecField field, int index = 0);
double spec_value(const FilterSpec &spec, SpecField field, int index = 0);

struct SpecComplaint {
  SpecField field;
  int index;          // of an edge, band or function point, from 0
  std::string reason; // a sentence without its full stop, frequencies in the specification's unit
};

inline constexpr double max_attenuation_db = 400;
// Radians per second. Beyond these a sampling frequency is no measurement, and squares of analog edges would leave the
// range of a double.
inline constexpr double min_sampling_frequency = 1e-30;
inline constexpr double max_sampling_frequency = 1e30;

/// True when the specification's frequencies are shown in radians per second, not in hertz.
constexpr bool in_radians(const FilterSpec &spec) {
  return spec.unit != 0 && spec.unit != 'H';
}

/// What makes the specification impossible, or nothing. Independent of the design method.
std::optional<SpecComplaint> check_spec(const FilterSpec &spec);

/// Sets the first edges of a raised cosine type from its symbol rate and rolloff factor.
void derive_raised_cosine_edges(FilterSpec &spec);

/// True when the two differ by the rounding of a few products only: 4 units in the last place.
bool same_frequency(double a, double b);

/// Edges and function points that may lie at half the sampling frequency, and do up to the six digits of a file or a
/// dialog, are set to exactly that; so are the edges of neighbouring bands that only rounding parts.
void settle_edges(FilterSpec &spec);

/// The specification with a sampling frequency of 2 pi. What was the same frequency still is: an edge at half the
/// sampling frequency is pi, and no rounding keeps it apart.
FilterSpec normalised(const FilterSpec &spec);

} // namespace brisel
