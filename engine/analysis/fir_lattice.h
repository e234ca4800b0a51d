// fir_lattice.h - a FIR filter as a lattice of reflection coefficients, and back.
//
// A_m(z) = A_(m-1)(z) + k_m z^-m A_(m-1)(1/z), A_0 = 1; the filter is gain * A_L.
#pragma once

#include <span>
#include <vector>

namespace brisel {

enum class LatticeFault {
  none,
  first_tap_zero, // the lattice's first tap is 1
  unit_reflection // |k| = 1: what is left of the taps does not determine the stages before
};
struct FirLattice {
  LatticeFault fault = LatticeFault::none;
  int stage = 0; // of the fault
  double gain = 0;
  std::vector<double> reflection; // k_1 .. k_L, one less than there are taps
};
/// Step-down recursion from the last tap on; its time grows with the square of the taps.
FirLattice fir_lattice(std::span<const double> taps, double gain);

/// Taps of the lattice, L + 1 of them, the first 1, computed in `Real` (double or long double).
template <class Real = double> std::vector<Real> lattice_fir_taps(std::span<const double> reflection);

/// A FIR filter by its taps, or by its reflection coefficients.
struct FirForm {
  std::span<const double> values;
  double gain;
  bool lattice;
};
/// Decimal digits, 0 to 16, in which the response of `changed` is that of `source`, each as its coefficients stand: the
/// largest difference on a grid of more than twice as many points as there are taps, over the largest magnitude.
double fir_digits_kept(const FirForm &source, const FirForm &changed);

/// Both ends' mean (`sign` 1) or half difference (-1). Nothing of the taps is further than `tolerance` of the largest
/// from it, or the result is empty and `worst` the first tap that is.
std::vector<double> mirrored_taps(std::span<const double> taps, int sign, double tolerance, int &worst);

} // namespace brisel
