// band_transform.h - from the normalized lowpass to the requested band, still in s.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

namespace brisel {

/// The filter of the specification's band, with its passband edges, from the normalized lowpass `source` of passband
/// edge `wp`; frequencies of `target` are in the unit of the sampling frequency. Edges are prewarped for the bilinear
/// map. A band filter has twice the order, two sections for a second-order one. Other types leave `target` alone.
void transform_analog_lowpass(const SectionEntry &source, SectionEntry &target, const FilterSpec &spec,
                              ZTransform method, double wp);

} // namespace brisel
