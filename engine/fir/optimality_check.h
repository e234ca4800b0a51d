// optimality_check.h - whether taps are the weighted minimax optimum that they are meant to be.
//
// By the alternation theorem the best filter with r cosine functions is the one whose weighted error reaches its peak
// with alternating sign at r + 1 points at least [Parks87, ch. 3]. The check looks at nothing but the taps, so it does
// not depend on how they were found.
#pragma once

#include "engine/fir/remez.h"

#include <span>
#include <vector>

namespace brisel {

/// Amplitude of a half response (centre first) at `frequency` in cycles per sample. With symmetry 1 the response is
/// the amplitude times a pure delay; antisymmetric ones have 90 degrees more.
std::vector<double> half_response_amplitude(std::span<const double> half, FirSymmetry symmetry, bool odd_length,
                                            std::span<const double> frequency);

struct OptimalReport {
  int extrema = 0;             // alternating extrema of the weighted error within 1 % of its peak, on the design grid
  int required = 0;            // r + 1
  int dense_extrema = 0;       // the same on a grid eight times denser
  double bound = 0;            // there, largest over smallest of r + 1 alternating peaks; 0 if there are fewer
  double peak_error = 0;       // weighted, on the design grid
  double dense_peak_error = 0; // weighted, on a grid eight times denser
  double transition_gain = 0;  // largest magnitude outside all bands; 0 without such frequencies
  double transition_frequency = 0; // where, cycles per sample
  double largest_desired = 0;      // magnitude in any band

  bool optimal() const { return extrema >= required; }
  /// A gain between the bands beyond that of all bands is more than an overshoot.
  double swing_limit() const { return 1.1 * largest_desired; }
  bool swings() const { return transition_gain > swing_limit(); }
};
/// Finds the largest gain between the bands and beside them, and where it is.
void find_transition_gain(const BandPlan &plan, std::span<const double> half, OptimalReport &report);
/// `grid` is the design grid before any case transformation.
OptimalReport check_optimality(const BandPlan &plan, const DesignGrid &grid, std::span<const double> half);

} // namespace brisel
