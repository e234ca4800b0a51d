// selectivity.h - how narrow the transition of a specification is, seen from the lowpass prototype.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

namespace brisel {

/// Passband edge over stopband edge of the lowpass that a low, high, band pass or band stop specification asks for; a
/// sensible specification has 0 < k < 1. Of the two transitions of a band filter the narrower one counts. Edges are
/// prewarped for the bilinear map only.
double iir_selectivity(const FilterSpec &spec, ZTransform method);

/// Nome q(k) = exp(-pi K'/K) to the last digits, by arithmetic-geometric means [Abramowitz64, 17.3.17, 17.6].
double nome(double k);

} // namespace brisel
