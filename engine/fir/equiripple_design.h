// equiripple_design.h - linear-phase FIR design with the smallest weighted maximum error, by the Remez exchange.
#pragma once

#include "engine/fir/optimality_check.h"
#include "engine/fir/remez.h"

namespace brisel {

/// Designs into the FIR entry of the design record and sets its valid flag. Failures post a message and leave it clear.
void equiripple_design();

/// One attempt with `density` grid points per cosine function; the density is doubled until the grid holds enough
/// points. On success `half` is the half response, centre first, and `report` the proof that it is the optimum.
/// `in_rounding`: the deviation was never more than rounding, so that no other density would help.
enum class RemezStatus { done = 0, degenerate = 1, not_optimal = 2, no_memory, stopped, in_rounding };
RemezStatus remez_attempt(const BandPlan &plan, int density, const Progress &progress, std::vector<double> &half,
                          OptimalReport &report);

/// One attempt by the exchange without a grid. `taps` is the length of the filter in `half`, whose outer taps are zero
/// where more of them would be lost in rounding. The report tells how far the result may be from the optimum.
RemezStatus true_attempt(BandPlan plan, const Progress &progress, std::vector<double> &half, OptimalReport &report,
                         int &taps);

} // namespace brisel
