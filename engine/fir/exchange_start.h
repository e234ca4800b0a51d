// exchange_start.h - where the second exchange begins: the extremal points of a shorter filter, spread over more
// points.
#pragma once

#include "engine/fir/remez.h"

namespace brisel {

/// A reference of r + 1 points: their frequencies and bands (desired values and weights are for the caller to add).
struct Placement {
  std::vector<double> frequency;
  std::vector<int> band;
};

/// Every band gets points in proportion to its width, evenly spaced from edge to edge.
Placement even_placement(const BandPlan &plan);

/// Every band gets points in proportion to those that `shorter` has there, placed by linear interpolation between them.
Placement scaled_placement(const BandPlan &plan, const DesignGrid &shorter);

} // namespace brisel
