#pragma once

#include "engine/core/records.h"

namespace brisel {

/// Normalized Tschebyscheff lowpass of order n into `out`, gain 1 at s = 0 also for even orders, whose ripple then lies
/// above 1. Returns the passband edge wp = 1, where the attenuation against the ripple's top is `ap_db`.
double tschebyscheff_prototype(int n, double ap_db, double sampling_frequency, SectionEntry &out);

} // namespace brisel
