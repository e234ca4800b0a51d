// alternation.h - the peaks between which a weighted error changes sign.
//
// An error whose r + 1 alternating peaks are at least e high cannot be brought below e by any filter with r cosine
// functions (de la Vallee Poussin); when they are all as high as its largest, it is the optimum [Parks87, ch. 3].
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace brisel {

/// Indices of the largest magnitude of every run of one sign, ascending. Runs end at the end of a band; of neighbours
/// of equal sign, also across a gap, the larger stays. Zeros belong to no run.
std::vector<std::size_t> alternating_peaks(std::span<const double> error, std::span<const int> band);

/// Drops peaks until `count` are left, still of alternating sign: the smaller end where one is in excess, else the
/// neighbours whose larger one is smallest. Fewer than `count` stay as they are.
void keep_largest(std::vector<std::size_t> &peaks, std::size_t count, std::span<const double> error);

} // namespace brisel
