// prototype_sections.h - what the prototype families share: attenuations as power ratios, pole angles, the empty
// record.
#pragma once

#include "engine/core/records.h"

#include <cmath>
#include <numbers>

namespace brisel {

/// 10^(db / 10) - 1: by how much the power behind an attenuation exceeds 1. Small ripples keep all their digits.
inline double power_excess(double db) {
  return std::expm1(0.1 * std::numbers::ln10 * db);
}

/// Discrimination factor (10^(As/10) - 1) / (10^(Ap/10) - 1).
inline double discrimination(double ap_db, double as_db) {
  return power_excess(as_db) / power_excess(ap_db);
}

/// Angle of pole pair i against the negative real axis: odd multiples of pi / 2n for even n, even ones for odd n.
inline double pair_angle(int i, int n) {
  return (2 * i + 1 + n % 2) * std::numbers::pi / (2 * n);
}

/// Makes `out` an empty product of order n: (n + 1) / 2 sections still to be filled, gain 1.
inline void begin_prototype(int n, double sampling_frequency, SectionEntry &out) {
  out = {};
  out.order = static_cast<std::int16_t>(n);
  out.section_count = static_cast<std::int16_t>((n + 1) / 2);
  out.sample_rate = sampling_frequency;
  out.gain = 1;
  out.pars = 1;
}

} // namespace brisel
