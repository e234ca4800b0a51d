// digital_transform.cpp - A. G. Constantinides, Spectral transformations for digital filters, Proc. IEE 117, 1970.
//
// A substitution z^-1 -> g(z^-1) turns each term r / (1 - p z^-1) into one with one pole (low and high pass) or two
// (band pass and stop). They are followed pole by pole, so that a band filter comes out as a sum of sections again.
#include "engine/iir/digital_transform.h"

#include "engine/analysis/polynomial_roots.h"
#include "engine/core/code_tables.h"

#include <cmath>
#include <complex>
#include <numbers>

namespace brisel {

using Complex = std::complex<double>;

namespace {

// g(u) = sign (u - alpha') / (1 - alpha' u)                      low pass +, high pass -, with alpha' = sign alpha
// g(u) = sign (u^2 - beta u + gamma) / (gamma u^2 - beta u + 1)  band stop +, band pass -
struct Substitution {
  bool two_poles;
  double sign;
  double beta; // alpha' for one pole
  double gamma;
};

Substitution substitution(const FilterSpec &spec, double theta_p) {
  const auto edge = [&](int i) {
    return std::numbers::pi * (spec.passband_edge[i] + spec.stopband_edge[i]) / spec.sampling_frequency;
  };
  const double w1 = edge(0), w2 = edge(1);
  const auto band = [&](double sign, double k) {
    const double alpha = std::cos((w1 + w2) / 2) / std::cos((w1 - w2) / 2);
    return sign < 0 ? Substitution{true, sign, 2 * alpha * k / (k + 1), (k - 1) / (k + 1)}
                    : Substitution{true, sign, 2 * alpha / (1 + k), (1 - k) / (1 + k)};
  };
  switch (static_cast<FilterType>(spec.type)) {
  case FilterType::high_pass:
    return {false, -1, std::cos((w1 + theta_p) / 2) / std::cos((w1 - theta_p) / 2), 0};
  case FilterType::band_pass:
    return band(-1, std::tan(theta_p / 2) / std::tan((w2 - w1) / 2));
  case FilterType::band_stop:
    return band(1, std::tan((w2 - w1) / 2) * std::tan(theta_p / 2));
  default:
    return {false, 1, std::sin((theta_p - w1) / 2) / std::sin((theta_p + w1) / 2), 0};
  }
}

void add_term(SectionEntry &target, const Triple &numerator, const Triple &denominator) {
  target.numerators[target.section_count] = numerator;
  target.denominators[target.section_count++] = denominator;
}

// residue / (z - pole) and its conjugate
void add_pair(SectionEntry &target, Complex pole, Complex residue) {
  add_term(target, {0, 2 * residue.real(), -2 * std::real(residue * std::conj(pole))},
           {1, -2 * pole.real(), std::norm(pole)});
}

// Adds what r / (1 - p z^-1) becomes, with its conjugate for a complex p.
void add_substituted(SectionEntry &target, const Substitution &g, Complex p, Complex r) {
  const bool pair = p.imag() != 0;
  const Complex ps = p * g.sign;
  if (!g.two_poles) { // scale * (1 + (pole - a) / (z - pole))
    const Complex a = g.beta, pole = (a + ps) / (1.0 + ps * a), scale = r / (1.0 + ps * a);
    const Complex residue = scale * (pole - a);
    target.gain += (pair ? 2 : 1) * scale.real();
    if (pair)
      add_pair(target, pole, residue);
    else
      add_term(target, {0, residue.real(), 0}, {1, -pole.real(), 0});
    return;
  }
  // scale * (1 + (m1 z + m0) / (z^2 + b z + c))
  const Complex leading = 1.0 - ps * g.gamma, scale = r / leading;
  const Complex b = -g.beta * (1.0 - ps) / leading, c = (g.gamma - ps) / leading;
  const Complex m1 = -g.beta - b, m0 = g.gamma - c;
  target.gain += (pair ? 2 : 1) * scale.real();
  if (!pair) {
    add_term(target, {0, std::real(scale * m1), std::real(scale * m0)}, {1, b.real(), c.real()});
    return;
  }
  const Complex half = -0.5 * b, root = std::sqrt(half * half - c);
  const Complex z1 = std::real(half * std::conj(root)) < 0 ? half - root : half + root, z2 = c / z1;
  add_pair(target, z1, scale * (m1 * z1 + m0) / (z1 - z2));
  add_pair(target, z2, scale * (m1 * z2 + m0) / (z2 - z1));
}

} // namespace

void digital_transform(const SectionEntry &lowpass, SectionEntry &target, const FilterSpec &spec, double theta_p) {
  const Substitution g = substitution(spec, theta_p);
  target = lowpass;
  target.section_count = 0;
  if (g.two_poles) target.order = static_cast<std::int16_t>(2 * lowpass.order);
  for (int i = 0; i < lowpass.section_count; i++) {
    const Triple &n = lowpass.numerators[i];
    const QuadraticRoots poles = quadratic_roots(lowpass.denominators[i]);
    if (poles.kind == RootKind::single) {
      add_substituted(target, g, poles.first, n[1]);
      continue;
    }
    const Complex p1 = poles.first, p2 = poles.second;
    add_substituted(target, g, p1, (n[0] * p1 + n[1]) / (p1 - p2));
    if (poles.kind != RootKind::complex_pair) add_substituted(target, g, p2, (n[0] * p2 + n[1]) / (p2 - p1));
  }
}

Complex lowpass_place(const FilterSpec &spec, double theta_p, Complex z) {
  const Substitution g = substitution(spec, theta_p);
  if (!g.two_poles) return g.sign * (z - g.beta) / (1.0 - g.beta * z);
  return g.sign * ((z - g.beta) * z + g.gamma) / ((g.gamma * z - g.beta) * z + 1.0);
}

std::vector<std::complex<long double>> moved_places(const FilterSpec &spec, double theta_p,
                                                    std::optional<std::complex<long double>> lowpass) {
  using Place = std::complex<long double>;
  const Substitution g = substitution(spec, theta_p);
  const long double sign = g.sign, beta = g.beta, gamma = g.gamma;
  const Place one = lowpass ? Place(1) : Place(0), z = lowpass.value_or(1); // the place is z / one
  if (!g.two_poles) return {(sign * z + beta * one) / (one + beta * sign * z)};
  const Place a = gamma * z - sign * one, half = beta * (sign * one - z) / 2.0L, c = z - sign * gamma * one;
  const Place root = std::sqrt(half * half - a * c);
  const Place q = std::real(half * std::conj(root)) < 0 ? root - half : -half - root;
  return {q / a, c / q};
}

} // namespace brisel
