// bilinear_map.cpp - A. V. Oppenheim, R. W. Schafer, Discrete-Time Signal Processing, ch. 7.
#include "engine/iir/bilinear_map.h"

#include <cmath>
#include <numbers>

namespace brisel {

void bilinear_map(const SectionEntry &s, SectionEntry &z, double exact) {
  z = s;
  const double plain = std::numbers::pi / s.sample_rate;
  const double k = exact > 0 ? std::tan(exact * plain) / exact : plain;
  for (int i = 0; i < s.section_count; i++) {
    const bool second_order = s.numerators[i][0] != 0 || s.denominators[i][0] != 0;
    const bool first_order = s.numerators[i][1] != 0 || s.denominators[i][1] != 0;
    for (Triple *t : {&z.numerators[i], &z.denominators[i]}) {
      const auto [a, b, c] = *t;
      if (second_order)
        *t = {a + k * b + k * k * c, 2 * (k * k * c - a), a - k * b + k * k * c};
      else if (first_order)
        *t = {0, b + k * c, k * c - b};
    }
  }
}

} // namespace brisel
