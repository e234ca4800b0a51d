// reorder.h - pairing and ordering of the sections of a digital cascade.
#pragma once

#include "engine/core/records.h"

namespace brisel {

/// Sorts the pole pairs by ascending magnitude and gives each, from the last backward, the nearest zero pair that is
/// left; an odd real pole or zero stays last. Poles and zeros must be in pairs (arrange_pairs()) and as many of the one
/// as of the other.
void order_pairs(PoleZeroEntry &pole_zero);

/// Rebuilds the cascade from its poles and zeros in that order, with the leading denominator coefficients 1. A pure
/// delay is dropped: `dropped_delay` receives its samples. `work` receives the poles and zeros. False: a section
/// without numerator or denominator.
bool reorder_sections(SectionEntry &cascade, PoleZeroEntry &work, int &dropped_delay);

/// Shifts out leading zero places that both triples of a section have: a delay that cancels, where the recursions would
/// divide by 0.
void cancel_delays(SectionEntry &entry);

} // namespace brisel
