// butterworth_prototype.cpp - normalized Butterworth lowpass as sections in s, highest power first.
#include "engine/iir/butterworth_prototype.h"

#include "engine/iir/prototype_sections.h"

namespace brisel {

double butterworth_prototype(int n, double ap_db, double sampling_frequency, SectionEntry &out) {
  begin_prototype(n, sampling_frequency, out);
  const int pairs = n / 2;
  for (int i = 0; i < pairs; i++) {
    out.numerators[i] = {0, 0, 1};
    out.denominators[i] = {1, 2 * std::cos(pair_angle(i, n)), 1};
  }
  if (n % 2) {
    out.numerators[pairs] = {0, 0, 1};
    out.denominators[pairs] = {0, 1, 1};
  }
  return std::pow(power_excess(ap_db), 0.5 / n);
}

} // namespace brisel
