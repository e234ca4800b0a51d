// sum_zeros.cpp - poles and zeros of a sum of sections.
//
// The sum is d + c (xI - A)^-1 b with A block diagonal, one block a section. With x = s0 + 1/w its zeros are
// eigenvalues in w of a matrix that exists whether or not some of them lie at infinity in x, where w is 0. They are
// then polished on the numerator as the sections spell it, sum of N_k times the other D_j, so that they are the zeros
// of the sum as it is stored. [Emami82] A. Emami-Naeini and P. Van Dooren, Computation of zeros of linear multivariable
// systems, Automatica 18, 1982, on zeros as eigenvalues.
#include "engine/analysis/pole_zero_form.h"

#include "engine/analysis/polynomial_roots.h"
#include "engine/analysis/root_polishing.h"
#include "engine/analysis/wide_ratio.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

using Complex = std::complex<double>;

struct Sum {
  double direct;
  std::vector<ReducedSection> terms;
  int order;
};

template <class Complex> RootValue<Complex> value_and_slope(const Triple &t, Complex x) {
  using Part = std::conditional_t<std::is_same_v<Complex, Root>, long double, Wide>;
  const Complex a{Part(t[0])}, b{Part(t[1])}, c{Part(t[2])};
  const long double r = size(x);
  return {(a * x + b) * x + c, a * x + a * x + b, (size(a) * r + size(b)) * r + size(c)};
}

// Numerator of the sum over the product of the denominators, and its slope.
template <class Complex> RootValue<Complex> numerator(const Sum &sum, Complex x) {
  using Part = std::conditional_t<std::is_same_v<Complex, Root>, long double, Wide>;
  RootValue<Complex> n{Complex(Part(sum.direct)), Complex(0), std::fabs(sum.direct)}, d{Complex(1), Complex(0), 1};
  for (const ReducedSection &term : sum.terms) {
    const auto nk = value_and_slope(term.numerator, x), dk = value_and_slope(term.denominator, x);
    n.slope = n.slope * dk.value + n.value * dk.slope + nk.slope * d.value + nk.value * d.slope;
    n.value = n.value * dk.value + nk.value * d.value;
    n.size = n.size * size(dk.value) + nk.size * d.size;
    d.slope = d.slope * dk.value + d.value * dk.slope;
    d.value = d.value * dk.value;
    d.size *= size(dk.value);
  }
  return n;
}

// Starting values for the zeros: the `count` nearest to `s0`.
std::vector<Root> zero_estimates(const Sum &sum, double radius, int count) {
  double s0 = 0, best = -1;
  for (const double place : {1.0, -1.0, 1.5, -1.5, 0.5, -0.5, 2.5, -2.5, 0.25, -0.25}) {
    const double x = place * radius;
    double value = sum.direct, size = std::fabs(value);
    for (const ReducedSection &term : sum.terms) {
      const double ratio = static_cast<double>(
          (value_and_slope(term.numerator, Root(x)).value / value_and_slope(term.denominator, Root(x)).value).real());
      value += ratio;
      size += std::fabs(ratio);
    }
    if (const double kept = std::fabs(value) / size; kept > best) {
      best = kept;
      s0 = x;
    }
  }

  const int n = sum.order;
  RootMatrix m = RootMatrix::Zero(n, n), b = RootMatrix::Zero(n, 1), c = RootMatrix::Zero(1, n); // m is (A - s0 I)^-1
  long double direct = sum.direct;
  int at = 0;
  for (const ReducedSection &term : sum.terms) {
    const int size = term.denominator_degree, first = 2 - size;
    const long double lead = term.denominator[first], h = term.numerator[first] / lead;
    direct += h;
    if (size == 0) continue;
    RootMatrix block = RootMatrix::Zero(size, size);
    if (size == 2) block(1, 0) = 1;
    for (int i = 0; i < size; i++) {
      block(0, i) = -term.denominator[first + 1 + i] / lead;
      c(0, at + i) = term.numerator[first + 1 + i] / lead + h * block(0, i);
    }
    b(at, 0) = 1;
    block.diagonal().array() -= s0;
    m.block(at, at, size, size) = block.inverse();
    at += size;
  }
  const RootMatrix cm = c * m;
  std::vector<Root> w = balanced_eigenvalues(m + b * (cm * m) / (direct - (cm * b)(0, 0)));
  if (static_cast<int>(w.size()) < count) return {};
  std::sort(w.begin(), w.end(), [](Root p, Root q) { return std::norm(p) > std::norm(q); });
  std::vector<Root> zeros;
  for (int i = 0; i < count; i++) zeros.push_back(Root(s0) + Root(1) / (w[i] == Root(0) ? Root(1e-18L) : w[i]));
  return zeros;
}

} // namespace

bool parallel_to_pole_zero(Domain domain, const SectionEntry &parallel, PoleZeroEntry &pole_zero) {
  Sum sum{parallel.gain, {}, 0};
  std::vector<Complex> pairs, poles;
  double log_radius = 0;
  int off_origin = 0;
  for (int k = 0; k < parallel.section_count; k++) {
    const ReducedSection term = reduced(parallel.numerators[k], parallel.denominators[k]);
    if (term.denominator_degree < std::max(0, term.numerator_degree)) return false;
    sum.terms.push_back(term);
    sum.order += term.denominator_degree;
    const QuadraticRoots roots = quadratic_roots(term.denominator);
    if (roots.kind == RootKind::single)
      poles.push_back(roots.first);
    else if (roots.kind != RootKind::none)
      pairs.insert(pairs.end(), {roots.first, roots.second});
    for (const Complex p : {roots.first, roots.second})
      if (p != 0.0) {
        log_radius += std::log(std::abs(p));
        off_origin++;
      }
  }
  poles.insert(poles.begin(), pairs.begin(), pairs.end());
  const double radius = domain == Domain::z || off_origin == 0 ? 1 : std::exp(log_radius / off_origin);

  const int count = sum.order - zeros_at_infinity(domain, parallel, sum.order);
  std::vector<Root> estimates;
  if (count > 0) estimates = zero_estimates(sum, radius, count);
  if (static_cast<int>(estimates.size()) != count) return false;

  // The gain is taken at the place of the largest value, where it is known best.
  const Values x = comparison_points(domain, poles), values = parallel_values<long double>(parallel, x);
  const auto peak = std::max_element(values.begin(), values.end(), [](Complex a, Complex b) {
    return !(std::abs(b) <= std::abs(a)) && std::isfinite(std::abs(b));
  });
  auto over_poles = [&](std::span<const Root> zeros, Root at) {
    Root product = 1;
    for (std::size_t i = 0; i < poles.size(); i++) {
      if (i < zeros.size()) product *= at - zeros[i];
      product /= at - Root(poles[i]);
    }
    return product;
  };
  auto gain_with = [&](std::span<const Root> zeros) {
    return (Root(*peak) / over_poles(zeros, x[peak - values.begin()])).real();
  };
  polish_roots(
      estimates, [&](auto x) { return numerator(sum, x); },
      [&](std::span<const Root> zeros) {
        const long double gain = gain_with(zeros);
        long double worst = 0;
        for (std::size_t i = 0; i < x.size(); i++)
          if (const long double e = std::abs(gain * over_poles(zeros, x[i]) - Root(values[i])); !(e < worst)) worst = e;
        return worst / std::abs(*peak);
      });
  for (Root &zero : estimates)
    if (std::abs(zero) < 1e-17L * radius) zero = 0;
  const std::vector<Complex> zeros = paired(estimates);
  const long double gain = gain_with(std::vector<Root>(zeros.begin(), zeros.end()));
  pole_zero.gain = narrow(gain);
  pole_zero.sample_rate = parallel.sample_rate;
  return pole_zero.gain != 0 && std::isfinite(pole_zero.gain) && store_roots(zeros, poles, pole_zero);
}

} // namespace brisel
