#pragma once

#include "engine/core/records.h"

namespace brisel {

/// Normalized Butterworth lowpass of order n into `out`, poles on the unit circle. Returns the passband edge wp, where
/// the attenuation is `ap_db`.
double butterworth_prototype(int n, double ap_db, double sampling_frequency, SectionEntry &out);

} // namespace brisel
