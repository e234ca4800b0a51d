// gap_bounds.h - bounds for the gain between bands, where a filter is free.
//
// Where one gap is wider than another, the best filter swings in the wide one, by thousands of times its gain in the
// bands when the ratio of their widths is large. A band of its own, with a straight ramp as desired curve and a
// generous tolerance, narrows the wide gap to about the width of the narrowest; it costs the other bands next to
// nothing.
#pragma once

#include "engine/fir/band_setup.h"

#include <vector>

namespace brisel {

/// Frequencies between two bands, or between a band and an end of the axis.
struct Gap {
  double lower = 0, upper = 0;
};

struct BoundedPlan {
  BandPlan plan;
  std::vector<Gap> bounded; // empty when no gap is wider than the narrowest
};
/// `margin` is left free at both ends of a wide gap, in parts of the narrowest.
BoundedPlan bound_gaps(const BandPlan &plan, double margin);

/// Gives the ramps the weight that their tolerance means at `deviation`.
void weigh_ramps(BandPlan &plan, double deviation);

} // namespace brisel
