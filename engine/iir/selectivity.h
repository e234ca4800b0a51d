// selectivity.h - how narrow the transition of a specification is, seen from the lowpass prototype.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

namespace brisel {

/// Passband edge over stopband edge of the lowpass that a low, high, band pass or band stop specification asks for; a
/// sensible specification has 0 < k < 1. Of the two transitions of a band filter the narrower one counts. Edges are
/// prewarped for the bilinear map only.
double iir_selectivity(const FilterSpec &spec, ZTransform method);

/// Nome q(k) by four terms of its expansion in q0 [Abramowitz64, 17.3.21]. Its relative error is 3e-13 at
/// k = 0.9, 4e-11 at 0.95, 9e-8 at 0.99, 3e-5 at 0.999; the magnitude of an elliptic filter inherits 20 times as much.
double nome(double k);

} // namespace brisel
