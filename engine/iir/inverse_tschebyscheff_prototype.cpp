// inverse_tschebyscheff_prototype.cpp - normalized inverse Tschebyscheff lowpass as sections in s: the reciprocals of
// the Tschebyscheff poles, and zeros on the imaginary axis.
#include "engine/iir/inverse_tschebyscheff_prototype.h"

#include "engine/iir/prototype_sections.h"

namespace brisel {

double inverse_tschebyscheff_prototype(int n, double ap_db, double as_db, double sampling_frequency,
                                       SectionEntry &out) {
  begin_prototype(n, sampling_frequency, out);
  const double a = std::asinh(std::sqrt(power_excess(as_db))) / n;
  const int pairs = n / 2;
  for (int i = 0; i < pairs; i++) {
    const double x = pair_angle(i, n), sigma = std::cos(x) * std::sinh(a), omega = std::sin(x) * std::cosh(a);
    out.numerators[i] = {std::sin(x) * std::sin(x), 0, 1};
    out.denominators[i] = {sigma * sigma + omega * omega, 2 * sigma, 1};
  }
  if (n % 2) {
    out.numerators[pairs] = {0, 0, 1};
    out.denominators[pairs] = {0, std::sinh(a), 1};
  }
  return 1 / std::cosh(std::acosh(std::sqrt(discrimination(ap_db, as_db))) / n);
}

} // namespace brisel
