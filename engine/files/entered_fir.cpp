#include "engine/files/entered_fir.h"

#include <algorithm>

namespace brisel {

FirSymmetry symmetry_of(InputOption option) {
  switch (option) {
  case InputOption::symmetric_fir:
    return FirSymmetry::symmetric;
  case InputOption::antisymmetric_fir:
    return FirSymmetry::antisymmetric;
  case InputOption::lattice_fir:
    return FirSymmetry::lattice;
  default:
    return FirSymmetry::nonsymmetric;
  }
}

bool is_half_response(InputOption option) {
  return option == InputOption::symmetric_fir || option == InputOption::antisymmetric_fir;
}

void clear_entered_fir(InputOption option, FirEntry &entry) {
  entry.length = 0;
  entry.shift = 0;
  entry.unique_count = 0;
  entry.has_window = 0;
  entry.fir_type = code(symmetry_of(option));
  entry.odd_length = 0;
  entry.gain_option = code(FirScaling::none);
  entry.gain = 1;
  entry.coeff.fill(0);
  entry.window.fill(0);
}

InputOption entered_option(std::span<const double> taps) {
  bool symmetric = true, antisymmetric = true;
  for (std::size_t i = 0; i < taps.size(); i++) {
    const double mirrored = taps[taps.size() - 1 - i];
    symmetric = symmetric && taps[i] == mirrored;
    antisymmetric = antisymmetric && taps[i] == -mirrored;
  }
  return symmetric       ? InputOption::symmetric_fir
         : antisymmetric ? InputOption::antisymmetric_fir
                         : InputOption::nonsymmetric_fir;
}

void enter_taps(std::span<const double> taps, InputOption option, FirEntry &entry) {
  entry.length = static_cast<std::int32_t>(taps.size());
  entry.odd_length = taps.size() & 1;
  entry.unique_count = (entry.length + 1) / 2;
  if (is_half_response(option))
    std::ranges::reverse_copy(taps.first(entry.unique_count), entry.coeff.begin());
  else
    std::ranges::copy(taps, entry.coeff.begin());
}

} // namespace brisel
