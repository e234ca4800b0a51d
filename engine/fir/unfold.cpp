// unfold.cpp - half response and window to all taps.
#include "engine/fir/unfold.h"

#include "engine/core/code_tables.h"

#include <algorithm>

namespace brisel {

void fir_entry_unfold(const FirEntry &source, FirEntry &destination) {
  destination.length = source.length;
  destination.shift = source.shift;
  destination.unique_count = source.unique_count;
  destination.has_window = rectangular_window;
  destination.fir_type = source.fir_type;
  destination.odd_length = source.odd_length;
  destination.gain_option = source.gain_option;
  destination.sample_rate = source.sample_rate;
  destination.gain = source.gain;
  const int n = source.length;
  auto &full = destination.coeff;
  if (source.fir_type != code(FirSymmetry::antisymmetric) && source.fir_type != code(FirSymmetry::symmetric)) {
    std::copy_n(source.coeff.begin(), n, full.begin());
    return;
  }
  const int m = (n + 1) / 2;
  const double sign = source.fir_type == code(FirSymmetry::symmetric) ? 1 : -1;
  for (int k = 0; k < m; k++) {
    const int distance = m - 1 - k;
    full[k] = source.coeff[distance] * (source.has_window ? source.window[distance] : 1);
  }
  for (int k = 0; k < n / 2; k++) full[n - 1 - k] = sign * full[k];
}

} // namespace brisel
