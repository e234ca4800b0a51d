#pragma once

#include "engine/core/records.h"

namespace brisel {

/// Step of the normalized prototype: `step` kept within 0.001 .. 0.01.
double normalized_step(double step);

/// Maps a parallel form in s into the parallel form in z whose impulse response is `step` times the samples of the
/// analog one; the direct term, an impulse in both, is carried over. A first-order term becomes (0, c, 0) / (0, 1, -e).
void impulse_invariant_map(const SectionEntry &s, SectionEntry &z, double step);

} // namespace brisel
