// section_probe.h - values of sections for tests, in more digits than the engine uses.
#pragma once

#include "engine/core/records.h"

#include <complex>

namespace brisel {

using Probe = std::complex<long double>;

inline Probe at(const Triple &t, Probe x) {
  return (static_cast<long double>(t[0]) * x + static_cast<long double>(t[1])) * x + static_cast<long double>(t[2]);
}
/// Value at s, or at z: the common power of z cancels in each section.
inline Probe product_at(const SectionEntry &e, Probe x) {
  Probe h = e.gain;
  for (int i = 0; i < e.section_count; i++) h *= at(e.numerators[i], x) / at(e.denominators[i], x);
  return h;
}
inline Probe sum_at(const SectionEntry &e, Probe x) {
  Probe h = e.gain;
  for (int i = 0; i < e.section_count; i++) h += at(e.numerators[i], x) / at(e.denominators[i], x);
  return h;
}
inline Probe on_circle(long double w) {
  return std::polar(1.0L, w);
}

} // namespace brisel
