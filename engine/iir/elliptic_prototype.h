#pragma once

#include "engine/core/records.h"

namespace brisel {

/// Up to this selectivity the nome is good enough for ripples to be right to 2e-5 dB; at 0.999 they are off by 0.01 dB.
inline constexpr double max_exact_selectivity = 0.99;

/// Normalized elliptic lowpass of order n and selectivity k into `out`, gain 1 at s = 0: passband edge sqrt(k) with
/// `ap_db` of ripple, stopband from 1 / sqrt(k) on with the attenuation that order and selectivity give. Returns the
/// passband edge wp. The four-term nome limits the accuracy for k near 1: see nome().
double elliptic_prototype(int n, double k, double ap_db, double sampling_frequency, SectionEntry &out);

} // namespace brisel
