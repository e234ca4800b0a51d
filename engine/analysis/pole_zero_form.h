// pole_zero_form.h - sections into poles and zeros and back, with a gain of wider range than the records have: the
// leading coefficients of a hundred sections multiply to values that no double holds.
#pragma once

#include "engine/analysis/form_conversions.h"

namespace brisel {

/// As cascade_to_pole_zero(), the gain apart.
bool collect_roots(const SectionEntry &cascade, PoleZeroEntry &pole_zero, long double &gain);
/// As pole_zero_to_cascade(), the gain apart; what a double cannot hold of it is spread over the numerators in powers
/// of two.
bool build_sections(Domain domain, const PoleZeroEntry &pole_zero, long double gain, SectionEntry &cascade,
                    int &dropped_delay);

inline int zero_count(const PoleZeroEntry &entry) {
  return entry.real_zeros + entry.complex_zeros;
}
inline int pole_count(const PoleZeroEntry &entry) {
  return entry.real_poles + entry.complex_poles;
}

/// Stores the lists and their four counts. False: more than the record holds.
bool store_roots(std::span<const std::complex<double>> zeros, std::span<const std::complex<double>> poles,
                 PoleZeroEntry &entry);

} // namespace brisel
