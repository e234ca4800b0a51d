// length_estimate.h - the length that each window needs for a specification.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

#include <array>
#include <string>

namespace brisel {

/// Smallest linear deviation among the bands of a multiband specification, in dB below 1.
double multiband_attenuation(const FilterSpec &spec);

/// Transition width that the estimate works with, in the unit of the specification's frequencies. `entered` stands in
/// for types without a transition of their own (differentiator, Hilbert transformer, arbitrary magnitude); where it is
/// 0 the first two take the smallest nonzero gap between their edges and 0 or half the sampling frequency, the last,
/// like multiband, its smallest nonzero gap in which the gain has a step, and all of them failing that 0.05 of the
/// sampling frequency.
double transition_width(const FilterSpec &spec, double entered = 0);

/// Stands for every length that the estimates cannot tell.
inline constexpr int longest_estimate = 32767;
/// The estimate in the words of a table.
std::string length_text(int estimate);

/// One odd length a window, index = window code.
void fir_length_estimate(const FilterSpec &spec, std::array<int, offered_window_count> &lengths,
                         double entered_width = 0);

} // namespace brisel
