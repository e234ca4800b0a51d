// unfold.h - all taps of a designed FIR entry.
#pragma once

#include "engine/core/records.h"

namespace brisel {

/// Fills `destination` with all taps of `source`, in order: half response times window, mirrored (with a change of sign
/// when antisymmetric); entries of types 2 and 3 are copied tap by tap. The result has no window. The two must be
/// different entries.
void fir_entry_unfold(const FirEntry &source, FirEntry &destination);

} // namespace brisel
