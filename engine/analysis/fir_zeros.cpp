// fir_zeros.cpp - zeros of a long polynomial whose zeros crowd around the unit circle.
//
// Eigenvalues of the balanced companion matrix start the Ehrlich-Aberth iteration [Aberth73], Newton's step for all
// zeros together: the other zeros are divided out, so that no two of them run to the same place. Outside the unit
// circle the polynomial is read backwards, in 1/z, where its powers do not grow. (polynomial_roots() is made for the
// multiple roots of low orders; its wider arithmetic would take many seconds here.)
//
// [Aberth73] O. Aberth, Iteration methods for finding all zeros of a polynomial simultaneously, Math. Comp. 27, 1973.
#include "engine/analysis/fir_zeros.h"

#include <Eigen/Eigenvalues>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace brisel {

namespace {

using Real = long double;
using Zero = std::complex<Real>;

constexpr Real rounding = 16 * std::numeric_limits<Real>::epsilon(); // of a polynomial against the sum of its terms

// Companion matrix of c[0] z^n + c[1] z^(n-1) + ... + c[n]: the first row and the subdiagonal, balanced by powers of
// two so that row i and column i have about the same norm.
Eigen::MatrixXd balanced_companion(std::span<const double> c) {
  const int n = static_cast<int>(c.size()) - 1;
  std::vector<double> row(n), below(n, 1.0); // below[i]: row i + 1, column i; the last one is not used
  for (int i = 0; i < n; ++i) row[i] = -c[i + 1] / c[0];
  for (int sweep = 0, changed = 1; changed && sweep < 100; ++sweep) {
    changed = 0;
    for (int i = 0; i < n; ++i) {
      double column_norm = i < n - 1 ? below[i] : 0;
      double row_norm = i > 0 ? below[i - 1] : 0;
      if (i > 0)
        column_norm += std::abs(row[i]);
      else
        for (int k = 1; k < n; ++k) row_norm += std::abs(row[k]);
      if (column_norm == 0 || row_norm == 0) continue;
      const double factor = std::exp2(std::round(0.5 * std::log2(row_norm / column_norm)));
      if (factor == 1) continue;
      changed = 1;
      if (i < n - 1) below[i] *= factor;
      if (i > 0) {
        below[i - 1] /= factor;
        row[i] *= factor;
      } else {
        for (int k = 1; k < n; ++k) row[k] /= factor;
      }
    }
  }
  Eigen::MatrixXd m = Eigen::MatrixXd::Zero(n, n);
  for (int i = 0; i < n; ++i) m(0, i) = row[i];
  for (int i = 0; i < n - 1; ++i) m(i + 1, i) = below[i];
  return m;
}

// Value and slope of a polynomial, and what its terms add up to, which bounds the rounding error.
struct Value {
  Zero value, slope;
  Real size;
};
template <class Iterator> Value polynomial(Iterator first, Iterator last, Zero z) {
  const Real radius = std::abs(z);
  Value p{0, 0, 0};
  for (; first != last; ++first) {
    p.slope = p.slope * z + p.value;
    p.value = p.value * z + Real(*first);
    p.size = p.size * radius + std::abs(Real(*first));
  }
  return p;
}

struct Quotient {
  Zero newton;   // P'(z) / P(z)
  Real residual; // |P(z)| as part of the sum of its terms' magnitudes
  Real blur;     // how far rounding of the value moves the zero
};
Quotient newton_quotient(std::span<const double> c, Zero z) {
  const bool inside = std::abs(z) <= 1;
  // Outside, P(z) = z^n Q(1/z).
  const Zero w = Zero(1) / z;
  const Value p = inside ? polynomial(c.begin(), c.end(), z) : polynomial(c.rbegin(), c.rend(), w);
  const Real residual = std::abs(p.value) / p.size;
  const Zero newton = inside ? p.slope / p.value : w * (static_cast<Real>(c.size() - 1) - w * p.slope / p.value);
  return {newton, residual, rounding / (residual * std::abs(newton))};
}

// `zeros` holds the upper half plane and, from `pairs` on, the real axis.
void polish(std::span<const double> c, std::vector<Zero> &zeros, std::size_t pairs) {
  bool moved = true;
  for (int sweep = 0; moved && sweep < 40; ++sweep) {
    moved = false;
    for (std::size_t i = 0; i < zeros.size(); ++i) {
      Zero &z = zeros[i];
      const Quotient q = newton_quotient(c, z);
      if (!(q.residual > rounding)) continue;
      Zero others = 0;
      Real nearest = std::abs(z);
      auto divide_out = [&](Zero other) {
        others += Zero(1) / (z - other);
        nearest = std::min(nearest, std::abs(z - other));
      };
      if (i < pairs) divide_out(std::conj(z));
      for (std::size_t k = 0; k < zeros.size(); ++k) {
        if (k == i) continue;
        divide_out(zeros[k]);
        if (k < pairs) divide_out(std::conj(zeros[k]));
      }
      // Zeros of a crowd are right together, as the eigenvalues that they are, but not one by one.
      if (!(q.blur < 1e-3L * nearest)) continue;
      Zero step = Zero(1) / (q.newton - others);
      if (i >= pairs) step.imag(0);
      if (!std::isfinite(std::abs(step))) continue;
      z -= step;
      moved |= std::abs(step) > 0x1p-60L * std::abs(z);
    }
  }
}

// Largest difference, around the whole circle, between the filter and what its zeros make, against the sum of the taps.
// A zero that was found twice changes the response where it is large.
Real reproduction_error(std::span<const double> c, std::span<const Zero> zeros, std::size_t pairs) {
  const int points = 2 * static_cast<int>(c.size());
  Real error = 0;
  for (int i = 0; i < points; ++i) {
    const Zero z = std::polar<Real>(1, std::numbers::pi_v<Real> * (i + Real(0.5)) / points);
    Zero product = c[0];
    for (std::size_t k = 0; k < zeros.size(); ++k) {
      product *= z - zeros[k];
      if (k < pairs) product *= z - std::conj(zeros[k]);
    }
    const Value p = polynomial(c.begin(), c.end(), z);
    const Real difference = std::abs(product - p.value) / p.size;
    if (!(difference <= error)) error = difference;
  }
  return error;
}

} // namespace

std::optional<FirZeros> fir_zeros(std::span<const double> taps) {
  double largest = 0;
  for (const double h : taps) largest = std::max(largest, std::abs(h));
  auto significant = [&](double h) { return std::abs(h) > 0x1p-53 * largest; };
  const auto first = std::find_if(taps.begin(), taps.end(), significant);
  if (first == taps.end()) return FirZeros{{}, 0};
  const auto last = std::find_if(taps.rbegin(), taps.rend(), significant).base();
  const std::span<const double> c(first, last);
  FirZeros found{{}, static_cast<int>(last - taps.begin()) - 1};
  if (c.size() == 1) return found;

  const Eigen::VectorXcd start = balanced_companion(c).eigenvalues();
  std::vector<Zero> zeros;
  for (const std::complex<double> &z : start)
    if (z.imag() > 0) zeros.emplace_back(z.real(), z.imag());
  const std::size_t pairs = zeros.size();
  for (const std::complex<double> &z : start)
    if (z.imag() == 0) zeros.emplace_back(z.real(), 0);
  std::vector<Zero> polished = zeros;
  polish(c, polished, pairs);
  // Polished zeros are each as exact as the taps allow; in a crowd, a zero of high order above all, only the
  // eigenvalues are right together.
  if (reproduction_error(c, polished, pairs) < 1e-7L)
    zeros = polished;
  else if (!(reproduction_error(c, zeros, pairs) < 1e-9L))
    return std::nullopt;

  for (std::size_t i = 0; i < zeros.size(); ++i) {
    const std::complex<double> z(static_cast<double>(zeros[i].real()), static_cast<double>(zeros[i].imag()));
    found.zeros.push_back(z);
    if (i < pairs) found.zeros.push_back(std::conj(z));
  }
  return found;
}

} // namespace brisel
