// optimal_setup.h - what the entry points of the optimal FIR methods share: from the design record to bands, and from
// half-taps to a finished entry.
#pragma once

#include "engine/fir/optimality_check.h"

#include <optional>
#include <span>
#include <string>

namespace brisel {

/// Most bytes that one design may take.
inline constexpr double design_memory_budget = 2e9;

/// Band set-up from the design record: the length (the estimate if the specification gives none), the bands, and the
/// header of the FIR entry. Posts a message and returns nothing when the specification cannot be designed, or when its
/// estimate is above `longest_designed`.
std::optional<BandPlan> fir_band_setup(int longest_designed);

/// A line for each sample of the desired response, with debugging on.
void trace_samples(const DesignGrid &grid);

/// Halfband fold, window code 0, trace title and dump.
void finish_optimal_entry(const char *title);
/// The half response goes into the entry, which is finished and marked as designed.
void store_optimal_design(std::span<const double> half, const char *title);

/// End of a failure's detail: what would do instead, where that is known.
std::string what_would_do(const FilterSpec &spec);

/// Notes for the user: peak errors, gain between the bands, and whether the specification is met.
void note_optimal_report(const BandPlan &plan, const OptimalReport &report);
/// Those notes without the peak errors.
void note_bands_and_gaps(const BandPlan &plan, const OptimalReport &report);

} // namespace brisel
