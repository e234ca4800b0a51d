// polynomial_roots.h - the roots of real polynomials and of section triples.
#pragma once

#include "engine/core/records.h"

#include <complex>
#include <span>
#include <vector>

namespace brisel {

/// What a section triple (x^2, x, 1) has for roots; leading zero places lower the degree.
enum class RootKind {
  none,          // a constant, or nothing but zeros
  single,        // one real root, in `first`
  complex_pair,  // `first` in the upper half plane, `second` its conjugate
  distinct_real, // `first` has the larger magnitude
  double_real,   // the discriminant vanishes: `first` and `second` are the same
};
struct QuadraticRoots {
  RootKind kind;
  std::complex<double> first;
  std::complex<double> second;
};
QuadraticRoots quadratic_roots(const Triple &triple);

/// Degree of a triple as a polynomial in x, -1 for (0, 0, 0).
int degree(const Triple &triple);

/// All roots of a real polynomial in descending powers, a root as often as it counts. Leading zeros are ignored,
/// trailing ones are roots at 0. Conjugates stand next to each other, upper half plane first; real roots follow the
/// pairs. Coefficients must be finite.
std::vector<std::complex<double>> polynomial_roots(std::span<const double> coefficients);

} // namespace brisel
