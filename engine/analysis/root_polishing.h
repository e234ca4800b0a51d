// root_polishing.h - what the root finders of expanded polynomials and of sums of sections share.
#pragma once

#include "engine/analysis/wide_ratio.h"

#include <Eigen/Core>

#include <cmath>
#include <complex>
#include <limits>
#include <vector>

namespace brisel {

using Root = std::complex<long double>;
using RootMatrix = Eigen::Matrix<long double, Eigen::Dynamic, Eigen::Dynamic>;

/// A complex number of wide parts, with the arithmetic that evaluating a polynomial takes.
struct WideRoot {
  Wide re, im;
  WideRoot(Wide re = 0, Wide im = 0) : re(re), im(im) {}
  explicit WideRoot(Root x) : re(x.real()), im(x.imag()) {}
  explicit operator Root() const { return {static_cast<long double>(re), static_cast<long double>(im)}; }
  friend WideRoot operator+(WideRoot a, WideRoot b) { return {a.re + b.re, a.im + b.im}; }
  friend WideRoot operator-(WideRoot a, WideRoot b) { return {a.re - b.re, a.im - b.im}; }
  friend WideRoot operator*(WideRoot a, WideRoot b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
};
inline long double size(const Root &x) {
  return std::abs(x);
}
inline long double size(const WideRoot &x) {
  return std::abs(Root(x));
}

/// A polynomial and its slope up to a common factor, and the sum of the magnitudes that the value was summed from.
template <class Complex> struct RootValue {
  Complex value, slope;
  long double size;
};

/// Eigenvalues of a real matrix, balanced first; conjugates are exact. All of them together are those of a matrix that
/// differs by rounding, which keeps the product of their factors right even where each of them alone is not. Empty when
/// the matrix is not finite or the iteration fails.
std::vector<Root> balanced_eigenvalues(RootMatrix m);

/// The Ehrlich-Aberth iteration [Aberth73] in the arithmetic of `Complex`, until nothing moves. Roots whose places
/// rounding does not fix stay as they are.
template <class Complex, class Evaluate>
void polish_in(std::vector<Complex> &roots, long double epsilon, Evaluate evaluate) {
  bool moved = true;
  for (int sweep = 0; sweep < 60 && moved; sweep++) {
    moved = false;
    for (std::size_t i = 0; i < roots.size(); i++) {
      const Root here(roots[i]);
      long double nearest = size(here);
      Root others = 0;
      for (std::size_t k = 0; k < roots.size(); k++)
        if (k != i) {
          const Root apart(roots[i] - roots[k]);
          nearest = std::min(nearest, size(apart));
          others += Root(1) / apart;
        }
      const RootValue<Complex> v = evaluate(roots[i]);
      const long double noise = 8 * epsilon * v.size;
      if (size(v.value) <= noise || !(noise < 1e-3L * nearest * size(v.slope))) continue;
      const Root move = Root(1) / (Root(v.slope) / Root(v.value) - others);
      if (!std::isfinite(size(move))) continue;
      roots[i] = roots[i] - Complex(move);
      moved = moved || size(move) > 1e-18L * size(here);
    }
  }
}

/// Refines the eigenvalues of a real polynomial. `evaluate(x)` returns a RootValue for Root and WideRoot alike, `error`
/// the relative error of the polynomial that a set of roots makes. Eigenvalues are right together where crowded roots
/// are not right alone, so that refining some of a crowd can do harm: what `error` likes best is kept, and the slow
/// arithmetic is taken only where the quick one does not do.
template <class Evaluate, class Error> void polish_roots(std::vector<Root> &roots, Evaluate evaluate, Error error) {
  constexpr long double enough = 1e-11L;
  long double best = error(roots);
  auto offer = [&](std::vector<Root> candidate) {
    if (const long double e = error(candidate); e < best) {
      best = e;
      roots = std::move(candidate);
    }
  };
  if (best < enough) return;
  std::vector<Root> quick = roots;
  polish_in(quick, std::numeric_limits<long double>::epsilon(), evaluate);
  offer(quick);
  if (best < enough) return;
  std::vector<WideRoot> wide(quick.begin(), quick.end());
  polish_in(wide, 2e-34L, evaluate);
  offer({wide.begin(), wide.end()});
}

/// Roots of a polynomial in descending powers, as polynomial_roots() gives them.
std::vector<std::complex<double>> wide_polynomial_roots(std::vector<Wide> coefficients);

/// Roots of a real polynomial as doubles: conjugates made exact and put next to each other, upper half plane first,
/// then the real ones.
std::vector<std::complex<double>> paired(std::vector<Root> roots);

} // namespace brisel
