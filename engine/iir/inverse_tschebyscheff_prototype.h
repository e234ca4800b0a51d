#pragma once

#include "engine/core/records.h"

namespace brisel {

/// Normalized inverse Tschebyscheff lowpass of order n into `out`: flat passband, equal ripples `as_db` down from the
/// stopband edge 1 on. Returns the passband edge wp, where the attenuation is `ap_db`.
double inverse_tschebyscheff_prototype(int n, double ap_db, double as_db, double sampling_frequency, SectionEntry &out);

} // namespace brisel
