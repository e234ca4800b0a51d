// allpass_delay.h - second-order all-pass sections whose group delay approximates a wanted curve up to a constant.
//
// Frequencies in radians per sample, delays in samples. A section is (a2 + a1 z^-1 + z^-2) / (1 + a1 z^-1 + a2 z^-2),
// always stable; all sections together turn the phase by 2 pi a section between 0 and pi, which is what there is to
// spend on delay.
#pragma once

#include "engine/core/spec_bands.h"
#include "engine/fir/remez.h"

#include <functional>
#include <optional>
#include <vector>

namespace brisel {

inline constexpr int max_delay_sections = 20;

enum class DelayNorm { least_squares, least_p, minimax };

struct DelayGoal {
  std::vector<FrequencyBand> bands; // ascending, each of some width
  std::vector<double> corners;      // inside the bands, where `wanted` has a corner
  std::function<double(double)> wanted;
};

struct AllpassSection {
  double a1, a2;
};
/// Group delay of a section.
double allpass_delay(const AllpassSection &section, double w);

struct DelayDesign {
  std::vector<AllpassSection> sections; // by ascending pole angle
  double constant;                      // the sections' delay is `wanted` plus this: the middle of its errors
  double ripple;                        // largest distance from that in the bands
};

/// Approximates `goal` by `count` sections, 1 to max_delay_sections: the sum of the squares of the error over the
/// bands, of its `p`-th powers, or its largest value is made smallest, the constant being free. Nothing when `progress`
/// says stop or the wanted curve is not finite.
std::optional<DelayDesign> design_allpass_delay(const DelayGoal &goal, int count, DelayNorm norm, int p,
                                                const Progress &progress);

/// The same with as few sections as keep the ripple (one less does not), up to `most`, which attain what they can.
std::optional<DelayDesign> fewest_allpass_sections(const DelayGoal &goal, double ripple, int most, DelayNorm norm,
                                                   int p, const Progress &progress);

/// Largest distance of the wanted curve from the constant next to it, with no sections at all: half its range in the
/// bands.
double unequalized_ripple(const DelayGoal &goal);

} // namespace brisel
