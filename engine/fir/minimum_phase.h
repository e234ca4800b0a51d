// minimum_phase.h - minimum phase filters with the magnitude of a linear phase filter, or with the root of its
// response.
#pragma once

#include "engine/fir/remez.h"

#include <optional>
#include <span>
#include <vector>

namespace brisel {

/// Longest filter that is converted.
inline constexpr int max_minimum_phase_taps = 5000;
/// Largest difference of the magnitudes, as part of the largest magnitude, with which a conversion counts as done.
inline constexpr double minimum_phase_tolerance = 1e-9;

struct MinimumPhase {
  std::vector<double> taps;
  double error; // largest difference from the magnitude that was wanted, as part of the largest magnitude
  double raise; // of a spectral factor: what was added to the response so that it is nowhere negative
};

/// The filter of the same length and magnitude whose zeros lie inside or on the unit circle. `taps` are symmetric or
/// antisymmetric, at most `max_minimum_phase_taps`. Nothing when the tolerance is not reached or `progress` says stop.
std::optional<MinimumPhase> minimum_phase(std::span<const double> taps, bool symmetric, const Progress &progress);

/// The filter of (N + 1) / 2 taps whose squared magnitude is (A + raise) / (1 + raise), A being the response of N
/// symmetric taps, N odd, without its delay. The error is that of the squared magnitude.
std::optional<MinimumPhase> spectral_factor(std::span<const double> taps, const Progress &progress);

/// Smallest value of the response A of symmetric taps of odd length, and the largest.
struct AmplitudeRange {
  double smallest, largest;
};
AmplitudeRange amplitude_range(std::span<const double> taps);

} // namespace brisel
