// impulse_invariant_map.cpp - sampling of the impulse response, term by term; Oppenheim, Schafer, Discrete-Time Signal
// Processing, ch. 7.
#include "engine/iir/impulse_invariant_map.h"

#include "engine/analysis/form_digits.h"
#include "engine/analysis/polynomial_roots.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace brisel {

double normalized_step(double step) {
  return std::clamp(step, 0.001, 0.01);
}

void impulse_invariant_map(const SectionEntry &s, SectionEntry &z, double step) {
  z = s;
  for (int i = 0; i < s.section_count; i++) {
    const Triple &d = s.denominators[i];
    const QuadraticRoots roots = quadratic_roots(d);
    const double b0 = s.numerators[i][1], b1 = s.numerators[i][2];
    Triple &numerator = z.numerators[i], &denominator = z.denominators[i];
    switch (roots.kind) {
    case RootKind::complex_pair: {
      const double sigma = roots.first.real(), omega = roots.first.imag();
      const double e = std::exp(sigma * step), cosine = std::cos(omega * step), sine = std::sin(omega * step) / omega;
      denominator = {1, -2 * e * cosine, e * e};
      numerator = {b0, -e * (b0 * cosine - (sigma * b0 + b1) * sine), 0};
      break;
    }
    case RootKind::distinct_real:
    case RootKind::double_real: {
      // r1 the larger one; slope = (e1 - e2) / (r1 - r2) without the difference, step * e1 when they coincide.
      const double r1 = std::max(roots.first.real(), roots.second.real());
      const double r2 = std::min(roots.first.real(), roots.second.real());
      const double e1 = std::exp(r1 * step), e2 = std::exp(r2 * step);
      const double slope = r1 > r2 ? -e1 * std::expm1((r2 - r1) * step) / (r1 - r2) : step * e1;
      denominator = {1, -e1 - e2, e1 * e2};
      numerator = {b0, -((e1 - r1 * slope) * b0 - slope * b1), 0};
      break;
    }
    case RootKind::single:
      denominator = {0, 1, -std::exp(roots.first.real() * step)};
      numerator = {0, b1, 0};
      break;
    case RootKind::none:
      continue;
    }
    const double scale = step / (d[0] != 0 ? d[0] : d[1]);
    for (double &place : numerator) place *= scale;
  }
}

std::vector<std::complex<double>> impulse_invariant_values(const SectionEntry &s, double step,
                                                           std::span<const std::complex<double>> z) {
  using Real = long double;
  using Complex = std::complex<Real>;
  std::vector<Complex> sums(z.size(), Real(s.gain));
  const Real t = step;
  for (int i = 0; i < s.section_count; i++) {
    const Real a = s.denominators[i][0], b = s.denominators[i][1], c = s.denominators[i][2];
    const Real b0 = s.numerators[i][1], b1 = s.numerators[i][2];
    if (a == 0 && b == 0) continue;
    if (a == 0) {
      const Real e = std::exp(-c / b * t);
      for (std::size_t k = 0; k < z.size(); k++) sums[k] += t * b1 / b / (Real(1) - e / Complex(z[k]));
      continue;
    }
    const Complex root = std::sqrt(Complex(b * b / 4 - a * c)) / a;
    const Complex p1 = -b / (2 * a) + root, p2 = -b / (2 * a) - root;
    const Complex e1 = std::exp(p1 * t), e2 = std::exp(p2 * t);
    const Complex slope = root == Real(0) ? t * e1 : (e1 - e2) / (p1 - p2);
    for (std::size_t k = 0; k < z.size(); k++) {
      const Complex u = Real(1) / Complex(z[k]);
      sums[k] += t / a * (b0 - u * (e1 * b0 - slope * (p1 * b0 + b1))) / ((Real(1) - e1 * u) * (Real(1) - e2 * u));
    }
  }
  return {sums.begin(), sums.end()};
}

std::optional<Folding> folding(const IirForms &analog, const IirForms &digital, double sample_rate) {
  constexpr double least_gain = 0.01, least_departure_db = 0.5;
  constexpr double seen = 1e-3; // of the largest gain; what lies below it is no passband
  constexpr double decades = 4; // below half the sampling frequency
  constexpr std::size_t points = 1001;
  std::vector<std::complex<double>> s(points), z(points);
  for (std::size_t i = 0; i < points; i++) {
    const double part = std::pow(10, decades * (static_cast<double>(i) / (points - 1) - 1));
    s[i] = {0, part * sample_rate / 2};
    z[i] = std::polar(1.0, part * std::numbers::pi);
  }
  const auto a = form_values<double>({Domain::s, InputOption::product, &analog}, s);
  const auto d = form_values<double>({Domain::z, InputOption::sum, &digital}, z);
  double peak = 0;
  for (const auto value : a) peak = std::max(peak, std::abs(value));
  const double at_half = std::abs(a.back()) / peak;
  if (!(at_half >= least_gain)) return std::nullopt;
  Folding found{20 * std::log10(at_half), 0, 0};
  for (std::size_t i = 0; i < points; i++) {
    const double departure = 20 * std::fabs(std::log10(std::abs(d[i]) / std::abs(a[i])));
    if (!(std::abs(a[i]) >= seen * peak && std::isfinite(departure) && departure > found.departure)) continue;
    found.departure = departure;
    found.at = s[i].imag();
  }
  return found.departure >= least_departure_db ? std::optional(found) : std::nullopt;
}

} // namespace brisel
