// halfband.cpp - specification and taps of a halfband filter and of its lowpass.
#include "engine/fir/halfband.h"

#include "engine/core/code_tables.h"

namespace brisel {

FilterSpec halfband_prototype(const FilterSpec &spec) {
  FilterSpec lowpass = spec;
  lowpass.type = code(FilterType::low_pass);
  lowpass.length = halfband_prototype_length(spec.length);
  lowpass.passband_edge[0] = 2 * spec.passband_edge[0];
  lowpass.stopband_edge[0] = spec.sampling_frequency / 2;
  return lowpass;
}

void halfband_fold(FirEntry &entry, int length) {
  const int odd_taps = halfband_prototype_length(length) / 2;
  entry.length = length;
  entry.unique_count = (length + 1) / 2;
  entry.odd_length = 1;
  for (int k = odd_taps - 1; k >= 0; k--) { // from the end: the places written were read before
    const double tap = entry.coeff[k] / 2;
    entry.coeff[2 * k] = 0;
    entry.coeff[2 * k + 1] = tap;
  }
  if (2 * odd_taps < entry.unique_count) entry.coeff[2 * odd_taps] = 0;
  entry.coeff[0] = 0.5;
}

} // namespace brisel
