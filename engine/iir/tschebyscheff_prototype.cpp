// tschebyscheff_prototype.cpp - normalized Tschebyscheff lowpass (ripple in the passband) as sections in s.
#include "engine/iir/tschebyscheff_prototype.h"

#include "engine/iir/prototype_sections.h"

namespace brisel {

double tschebyscheff_prototype(int n, double ap_db, double sampling_frequency, SectionEntry &out) {
  begin_prototype(n, sampling_frequency, out);
  const double a = std::asinh(1 / std::sqrt(power_excess(ap_db))) / n;
  const int pairs = n / 2;
  for (int i = 0; i < pairs; i++) {
    const double x = pair_angle(i, n), sigma = std::cos(x) * std::sinh(a), omega = std::sin(x) * std::cosh(a);
    const double constant = sigma * sigma + omega * omega;
    out.numerators[i] = {0, 0, 1};
    out.denominators[i] = {1, 2 * sigma, constant};
    out.gain *= constant;
  }
  if (n % 2) {
    out.numerators[pairs] = {0, 0, 1};
    out.denominators[pairs] = {0, 1, std::sinh(a)};
    out.gain *= std::sinh(a);
  }
  return 1;
}

} // namespace brisel
