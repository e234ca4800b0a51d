// fir_zeros.h - the zeros of a FIR filter.
#pragma once

#include <complex>
#include <optional>
#include <span>
#include <vector>

namespace brisel {

struct FirZeros {
  std::vector<std::complex<double>> zeros; // conjugate pairs first, then the real ones; none at the origin
  int origin_poles;                        // poles of the filter; all lie at z = 0
};
/// Taps at either end that are below 2^-53 of the largest count as zero: leading ones put zeros at infinity, trailing
/// ones shorten the filter. Meant for a few hundred taps: the time grows with their cube. Nothing when the zeros that
/// were found do not reproduce the filter.
std::optional<FirZeros> fir_zeros(std::span<const double> taps);

} // namespace brisel
