// fir_rounding.cpp - fixed-point and floating-point coefficients.
#include "engine/fir/fir_rounding.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace brisel {

static std::span<double> taps_of(FirEntry &entry) {
  return {entry.coeff.data(), static_cast<std::size_t>(entry.length)};
}

void fir_scale(double q, FirEntry &entry, FirScaling option) {
  double m = 0;
  for (const double h : taps_of(entry)) m = std::max(m, std::abs(h));
  if (m == 0) return; // no power of two brings it to a half
  if (option == FirScaling::half) {
    int doublings = 0;
    for (; m < 0.5; m *= 2) doublings++;
    entry.shift -= doublings;
    entry.gain = std::ldexp(entry.gain, -doublings);
    for (double &h : taps_of(entry)) h = std::ldexp(h, doublings);
  } else if (option == FirScaling::one) {
    const double factor = (1 - q) / m;
    if (!std::isfinite(factor) || !std::isfinite(1 / factor)) return;
    entry.gain = 1 / factor;
    for (double &h : taps_of(entry)) h *= factor;
  }
}

void fir_fixed_quantize(FirEntry &entry, int bits, FirScaling option) {
  const double s = std::ldexp(1.0, bits - 1);
  const double q = 1 / s;
  fir_scale(q, entry, option);
  // Kept: a half is added before the cut whatever the sign, so negative values lose up to a unit and more: -2.7 units
  // become -2, and so do exactly -3.
  for (double &h : taps_of(entry)) h = std::trunc(s * h + 0.5) * q;
  if (entry.fir_type != code(FirSymmetry::antisymmetric)) return;
  // Kept: the upper half is rewritten from the lower one. An odd length gets back its exact antisymmetry, which the
  // rounding had broken. An even length gets its tap M - 1 negated and the mirror shifted by a place, so it is no
  // longer antisymmetric; its last step has no source and leaves the last tap alone.
  const int half = entry.unique_count;
  for (int i = half - 1, j = half - 1; i < entry.length && j >= 0; i++, j--) entry.coeff[i] = -entry.coeff[j];
}

void fir_float_quantize(std::span<double> coefficients, int bits) {
  // Kept: the shift of the low mask wraps at 32, so 33 to 53 bits leave the 21 bits of the high word only.
  const std::uint32_t high = ~(0x1FFFFFu >> std::min(bits, 22));
  const std::uint32_t low = 0xFFE00000u << (static_cast<std::uint32_t>(32 - bits) & 31);
  const std::uint64_t mask = static_cast<std::uint64_t>(high) << 32 | low;
  for (double &c : coefficients) c = std::bit_cast<double>(std::bit_cast<std::uint64_t>(c) & mask);
}

} // namespace brisel
