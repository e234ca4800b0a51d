#pragma once

#include "engine/core/records.h"

namespace brisel {

/// Bilinear map s = 2 fs (z - 1) / (z + 1) of every section of `s` into `z`: (s^2, s, 1) in, (1, z^-1, z^-2) out, first
/// place 0 kept for first-order sections, the leading denominator coefficient not normalized. fs is the sampling
/// frequency over 2 pi when the sections are in the unit of the sampling frequency.
void bilinear_map(const SectionEntry &s, SectionEntry &z);

} // namespace brisel
