// tap_search.h - better fixed-point taps near the rounded ones.
//
// Rounding every tap to its nearest word is not the best choice of words: steps of a tap up or down, alone or two
// together, bring a filter closer to its specification, up to a local optimum; the search goes on from there with a
// few taps shaken. (D. M. Kodek, K. Steiglitz, Comparison of optimal and local search methods for designing finite
// wordlength FIR digital filters, IEEE Trans. CAS-28, 1981.)
#pragma once

#include "engine/core/spec_bands.h"
#include "engine/fir/remez.h"

#include <functional>
#include <span>
#include <vector>

namespace brisel {

inline constexpr int most_searched_taps = 4096;

struct TapGoal {
  std::vector<FrequencyBand> pass, stop;
  std::function<double(double)> desired; // gain in the passbands, above 0
  double ripple_db;                      // largest passband gain over the smallest
  double attenuation_db;                 // largest passband gain over the largest stopband gain
};

/// What a filter attains: the larger of its passband ripple over the one asked for (in dB) and its stopband gain over
/// the one asked for; 1 and less meets the specification.
struct TapFigures {
  double cost;
  double passband_low, passband_high; // gain over desired gain
  double stopband;                    // largest gain
};

/// Figures of symmetric taps, at 64 points between neighbouring extremes of their gain.
TapFigures tap_figures(std::span<const double> taps, const TapGoal &goal);

struct TapSearch {
  int searches;      // the first from the taps as they are, the others from shaken ones
  int steps;         // most steps of a search
  double quantum;    // taps are multiples of it
  double gain_slack; // the middle of the passband gain moves by no more than this part
};

/// Changes symmetric `taps`, 3 to most_searched_taps of them, by multiples of the quantum inside -1 to below 1 (taps
/// outside are left alone). `improved` hears every best filter so far and the steps it took. The result never costs
/// more than the taps did. False when `progress` says stop.
bool search_taps(std::span<double> taps, const TapGoal &goal, const TapSearch &search,
                 const std::function<void(const TapFigures &, int step)> &improved, const Progress &progress);

} // namespace brisel
