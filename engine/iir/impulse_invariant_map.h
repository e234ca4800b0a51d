#pragma once

#include "engine/core/records.h"

#include <complex>
#include <optional>
#include <span>
#include <vector>

namespace brisel {

/// Step of the normalized prototype: `step` kept within 0.001 .. 0.01.
double normalized_step(double step);

/// Maps a parallel form in s into the parallel form in z whose impulse response is `step` times the samples of the
/// analog one; the direct term, an impulse in both, is carried over. A first-order term becomes (0, c, 0) / (0, 1, -e).
void impulse_invariant_map(const SectionEntry &s, SectionEntry &z, double step);

/// Values of that form at places `z` before its coefficients are rounded to doubles, which shows what the rounding
/// costs: large terms cancel each other only as well as their coefficients fit together.
std::vector<std::complex<double>> impulse_invariant_values(const SectionEntry &s, double step,
                                                           std::span<const std::complex<double>> z);

/// What sampling the impulse response does to the magnitude where the analog system still passes something above half
/// the sampling frequency: it is folded back.
struct Folding {
  double gain_at_half; // of the analog system at half the sampling frequency, dB below its largest up to there
  double departure;    // largest distance of the digital gain from the analog one that is not far below its largest, dB
  double at;           // its frequency, radians per second
};
/// Nothing when the analog system has next to no gain there, or the digital one follows it all the same.
std::optional<Folding> folding(const IirForms &analog, const IirForms &digital, double sample_rate);

} // namespace brisel
