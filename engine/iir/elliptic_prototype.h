#pragma once

#include "engine/core/records.h"

namespace brisel {

/// Normalized elliptic lowpass of order n and selectivity k into `out`, gain 1 at s = 0: passband edge sqrt(k) with
/// `ap_db` of ripple, stopband from 1 / sqrt(k) on with the attenuation that order and selectivity give. Returns the
/// passband edge wp. Coefficients are right to 1e-12 at every k below 1.
double elliptic_prototype(int n, double k, double ap_db, double sampling_frequency, SectionEntry &out);

/// Passband ripple in dB that elliptic_prototype() gives: `ap_db` but for orders far below what the stopband would
/// need.
double elliptic_ripple(int n, double k, double ap_db);

} // namespace brisel
