#pragma once

#include "engine/core/records.h"

namespace brisel {

/// Bilinear map s = 2 fs (z - 1) / (z + 1) of every section of `s` into `z`: (s^2, s, 1) in, (1, z^-1, z^-2) out, first
/// place 0 kept for first-order sections, the leading denominator coefficient not normalized. fs is the sampling
/// frequency over 2 pi when the sections are in the unit of the sampling frequency.
///
/// With a frequency `exact` between 0 and half the sampling frequency the map is s = w / tan(w / (2 fs)) (z - 1) /
/// (z + 1) with w = `exact`, so that the digital system has there the response of the analog one.
void bilinear_map(const SectionEntry &s, SectionEntry &z, double exact = 0);

} // namespace brisel
