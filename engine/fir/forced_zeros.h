// forced_zeros.h - gains that no filter of a given symmetry and length can have.
//
// Symmetric taps of even length and antisymmetric ones of odd length have a zero at half the sampling frequency,
// antisymmetric ones of any length have one at 0 [Parks87, ch. 3].
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

#include <string>
#include <vector>

namespace brisel {

/// A note for each such zero at a frequency where the specification (sampling frequency 2 pi) asks for a gain, with
/// what would avoid it.
std::vector<std::string> forced_zero_notes(const FilterSpec &spec, FirSymmetry symmetry, bool odd_length);

} // namespace brisel
