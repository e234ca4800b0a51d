// ideal_response.h - the unwindowed half response of every FIR type, index 0 at the centre tap.
//
// Specifications are normalized: the sampling frequency is 2 pi, frequencies are radians per sample.
#pragma once

#include "engine/core/records.h"
#include "engine/fir/compensation.h"

#include <optional>
#include <span>

namespace brisel {

/// Ideal lowpass of `length` taps with its cutoff in the middle between the edges, which have the unit of `fs`.
void lowpass_ideal(double fs, double passband_edge, double stopband_edge, int length, std::span<double> half);

/// Whether the type is antisymmetric unless asked otherwise.
bool antisymmetric_by_default(int filter_type);

/// Lowest frequency at which the compensated ideal amplitude would be infinite.
std::optional<double> compensation_pole(const FilterSpec &spec, const Compensation &compensation);

/// Fills the (length + 1) / 2 taps of `half` with the ideal response of `spec` (types 0 to 7 and 9 to 11) times the
/// compensation, which must have no pole. For a halfband specification `length` and the taps are those of the lowpass
/// that halfband_fold turns into the filter. The antisymmetric form exists for types 1, 2, 4 and 6.
void ideal_response(const FilterSpec &spec, const Compensation &compensation, bool antisymmetric, int length,
                    std::span<double> half);

} // namespace brisel
