// polynomial_roots.cpp - roots of a real polynomial: eigenvalues of its balanced companion matrix, polished together by
// the Ehrlich-Aberth iteration, multiple roots gathered where the polynomial allows it.
//
// [Parlett69] B. N. Parlett and C. Reinsch, Balancing a matrix for calculation of eigenvalues and eigenvectors, Numer.
// Math. 13, 1969. [Aberth73] O. Aberth, Iteration methods for finding all zeros of a polynomial simultaneously, Math.
// Comp. 27, 1973.
#include "engine/analysis/polynomial_roots.h"

#include "engine/analysis/root_polishing.h"

#include <Eigen/Eigenvalues>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <utility>

namespace brisel {

using Real = long double;

QuadraticRoots quadratic_roots(const Triple &triple) {
  const auto [a, b, c] = triple;
  switch (degree(triple)) {
  case 2:
    break;
  case 1:
    return {RootKind::single, -c / b, 0};
  default:
    return {RootKind::none, 0, 0};
  }
  // The discriminant in more digits, so that a square that was written out is seen as one.
  const Real half = Real(b) / 2, discriminant = half * half - Real(a) * c;
  const double centre = static_cast<double>(-half / a);
  const Real rounding = 4e-16L * std::max(half * half, std::fabs(Real(a) * c));
  if (std::fabs(discriminant) <= rounding) return {RootKind::double_real, centre, centre};
  if (discriminant < 0) {
    const std::complex<double> upper(centre, static_cast<double>(std::sqrt(-discriminant) / std::fabs(Real(a))));
    return {RootKind::complex_pair, upper, std::conj(upper)};
  }
  // The larger root without cancellation, the other from their product.
  const Real q = -(half + std::copysign(std::sqrt(discriminant), half));
  return {RootKind::distinct_real, static_cast<double>(q / a), static_cast<double>(c / q)};
}

// Diagonal similarity in powers of two that makes the norms of rows and columns alike, the diagonal apart. [Parlett69]
static void balance(RootMatrix &m) {
  constexpr int most_sweeps = 200; // a handful in practice
  bool changed = true;
  for (int sweep = 0; changed && sweep < most_sweeps; sweep++) {
    changed = false;
    for (int i = 0; i < m.rows(); i++) {
      // Taken out and put back: subtracted from the sums, a large one would leave nothing but rounding.
      const Real diagonal = std::exchange(m(i, i), Real(0));
      const Real column = m.col(i).lpNorm<1>(), row = m.row(i).lpNorm<1>();
      if (column > 0 && row > 0 && std::isfinite(column + row)) {
        const Real factor = std::ldexp(Real(1), static_cast<int>(std::lround(0.5L * std::log2(row / column))));
        if (column * factor + row / factor < 0.95L * (column + row)) {
          m.col(i) *= factor;
          m.row(i) /= factor;
          changed = true;
        }
      }
      m(i, i) = diagonal;
    }
  }
}

std::vector<Root> balanced_eigenvalues(RootMatrix m) {
  if (!m.allFinite()) return {};
  balance(m);
  const Eigen::EigenSolver<RootMatrix> solver(m, false);
  if (solver.info() != Eigen::Success) return {};
  return {solver.eigenvalues().begin(), solver.eigenvalues().end()};
}

static std::vector<Root> companion_eigenvalues(std::span<const Wide> c) {
  const int n = static_cast<int>(c.size()) - 1;
  RootMatrix m = RootMatrix::Zero(n, n);
  for (int i = 0; i < n; i++) m(0, i) = static_cast<Real>(-c[i + 1] / c[0]);
  for (int i = 1; i < n; i++) m(i, i - 1) = 1;
  return balanced_eigenvalues(std::move(m));
}

template <class Complex> static RootValue<Complex> value_and_slope(std::span<const Wide> c, Complex x) {
  using Part = std::conditional_t<std::is_same_v<Complex, Root>, Real, Wide>;
  RootValue<Complex> v{Complex(Part(c[0])), Complex(0), std::fabs(static_cast<Real>(c[0]))};
  const Real radius = size(x);
  for (std::size_t i = 1; i < c.size(); i++) {
    v.slope = v.slope * x + v.value;
    v.value = v.value * x + Complex(Part(c[i]));
    v.size = v.size * radius + std::fabs(static_cast<Real>(c[i]));
  }
  return v;
}

// Largest relative error of the polynomial with these roots against `c`, off the roots: on odd places of the unit
// circle and on the imaginary axis beside every root.
static Real reproduction_error(std::span<const Wide> c, std::span<const Root> roots) {
  Real worst = 0;
  auto compare = [&](Root x) {
    Root product = static_cast<Real>(c[0]);
    for (const Root &root : roots) product *= x - root;
    const RootValue<WideRoot> v = value_and_slope(c, WideRoot(x));
    // Below 1e-21 of its terms the value itself is not known well enough to ask for its digits.
    const Real error = std::abs(product - Root(v.value)) / std::max(size(v.value), 1e-21L * v.size);
    worst = error < worst ? worst : error;
  };
  for (int i = 0; i < 32; i++) compare(std::polar<Real>(1, (i + 0.5L) * std::numbers::pi_v<Real> / 32));
  for (const Root &root : roots)
    if (root != Root(0)) compare(Root(0, 1.1L * std::abs(root)));
  return worst;
}

static std::vector<Wide> derivative(std::span<const Wide> p, std::size_t times) {
  std::vector<Wide> c(p.begin(), p.end());
  while (times--) {
    c.pop_back();
    for (std::size_t i = 0; i < c.size(); i++) c[i] *= static_cast<Real>(c.size() - i);
  }
  return c;
}

// Rounding spreads a root of multiplicity m over a circle. Such a crowd is replaced by the root of the (m-1)st
// derivative at its centre, which is well conditioned; widest crowds first, and only if the polynomial stays the same.
static void gather_multiple_roots(std::span<const Wide> c, std::vector<Root> &roots) {
  const std::size_t n = roots.size();
  for (Real reach = 0.3L; reach > 1e-8L; reach /= 4) {
    std::vector<std::size_t> crowd(n); // index of the first root of its crowd
    std::iota(crowd.begin(), crowd.end(), 0);
    bool any = false;
    for (std::size_t i = 0; i < n; i++)
      for (std::size_t k = 0; k < i; k++)
        if (crowd[i] != crowd[k] && std::abs(roots[i] - roots[k]) <= reach * std::abs(roots[i])) {
          std::replace(crowd.begin(), crowd.end(), std::max(crowd[i], crowd[k]), std::min(crowd[i], crowd[k]));
          any = true;
        }
    if (!any) return;
    std::vector<Root> gathered = roots;
    for (std::size_t first = 0; first < n; first++) {
      std::vector<std::size_t> members;
      for (std::size_t i = first; i < n; i++)
        if (crowd[i] == first) members.push_back(i);
      if (members.size() < 2) continue;
      Root centre = 0;
      for (std::size_t i : members) centre += roots[i];
      centre /= static_cast<Real>(members.size());
      if (std::fabs(centre.imag()) <= 1e-3L * std::abs(centre)) centre = centre.real();
      const std::vector<Wide> d = derivative(c, members.size() - 1);
      for (int i = 0; i < 50; i++) {
        const RootValue<Root> v = value_and_slope(d, centre);
        if (v.value == Root(0) || v.slope == Root(0)) break;
        const Root step = v.value / v.slope;
        centre -= step;
        if (std::abs(step) <= 1e-19L * std::abs(centre)) break;
      }
      for (std::size_t i : members) gathered[i] = centre;
    }
    if (reproduction_error(c, gathered) < 1e-11L) {
      roots = std::move(gathered);
      return;
    }
  }
}

std::vector<std::complex<double>> wide_polynomial_roots(std::vector<Wide> c) {
  c.erase(c.begin(), std::find_if(c.begin(), c.end(), [](Wide v) { return v != 0; }));
  std::size_t at_origin = 0;
  for (; !c.empty() && c.back() == 0; at_origin++) c.pop_back();
  std::vector<std::complex<double>> found;
  if (c.size() > 1) {
    // In x / radius, radius being the geometric mean of the roots, first and last coefficient have the same size.
    const std::size_t n = c.size() - 1;
    auto log_size = [](Wide v) { return std::log(std::fabs(static_cast<Real>(v))); };
    const Real radius = std::exp((log_size(c[n]) - log_size(c[0])) / static_cast<Real>(n));
    std::vector<Wide> scaled(n + 1);
    Wide power = 1 / c[0];
    for (std::size_t i = 0; i <= n; i++, power /= Wide(radius)) scaled[i] = c[i] * power;
    std::vector<Root> roots = companion_eigenvalues(scaled);
    for (Root &root : roots) root *= radius;
    polish_roots(
        roots, [&](auto x) { return value_and_slope(c, x); },
        [&](std::span<const Root> candidate) { return reproduction_error(c, candidate); });
    gather_multiple_roots(c, roots);
    found = paired(std::move(roots));
  }
  found.insert(found.end(), at_origin, 0);
  return found;
}

std::vector<std::complex<double>> polynomial_roots(std::span<const double> coefficients) {
  return wide_polynomial_roots({coefficients.begin(), coefficients.end()});
}

std::vector<std::complex<double>> paired(std::vector<Root> roots) {
  std::vector<std::complex<double>> pairs, real;
  std::sort(roots.begin(), roots.end(),
            [](const Root &a, const Root &b) { return std::fabs(a.imag()) > std::fabs(b.imag()); });
  std::vector<bool> taken(roots.size());
  for (std::size_t i = 0; i < roots.size(); i++) {
    if (taken[i]) continue;
    Real nearest = 2 * std::fabs(roots[i].imag()); // to its own conjugate: real when nothing is nearer
    std::size_t partner = i;
    for (std::size_t k = i + 1; k < roots.size(); k++)
      if (const Real distance = std::abs(roots[i] - std::conj(roots[k])); !taken[k] && distance < nearest) {
        nearest = distance;
        partner = k;
      }
    if (partner == i) {
      real.push_back(static_cast<double>(roots[i].real()));
      continue;
    }
    taken[partner] = true;
    const Root mean = (roots[i] + std::conj(roots[partner])) / Real(2);
    const std::complex<double> upper(static_cast<double>(mean.real()), static_cast<double>(std::fabs(mean.imag())));
    if (upper.imag() == 0) {
      real.insert(real.end(), 2, upper);
    } else {
      pairs.push_back(upper);
      pairs.push_back(std::conj(upper));
    }
  }
  pairs.insert(pairs.end(), real.begin(), real.end());
  return pairs;
}

} // namespace brisel
