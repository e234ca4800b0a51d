// exchange_taps.h - the taps of a levelled reference with all their digits.
#pragma once

#include "engine/fir/remez.h"

namespace brisel {

/// Half response, centre first, of the polynomial that is levelled on `reference` (desired values and weights after the
/// case transformation). Exact at the reference to about 1e-15 of the largest desired value.
std::vector<double> levelled_taps(const BandPlan &plan, const DesignGrid &reference);

} // namespace brisel
