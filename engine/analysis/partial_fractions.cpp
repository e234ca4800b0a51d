// partial_fractions.cpp - a cascade as direct term plus one partial fraction a section.
//
// The numerator over D_k is N / (product of the other D_j), modulo D_k: arithmetic with remainders u + v x, real
// throughout and without roots, so that pairs that are complex, real or equal are one and the same case, and the
// denominators of the terms are those of the sections to the last digit.
#include "engine/analysis/form_conversions.h"

#include "engine/analysis/polynomial_roots.h"
#include "engine/analysis/wide_ratio.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace brisel {

namespace {

using Complex = std::complex<double>;

/// x^2 + a1 x + a0, or x + a0.
struct Denominator {
  int degree;
  double a1, a0;
};

/// u + v x modulo a denominator; v stays 0 when that has degree 1.
struct Remainder {
  Wide u, v;
};

Remainder remainder(const Triple &p, const Denominator &d) {
  const Wide a1 = d.a1, a0 = d.a0;
  if (d.degree == 1) return {(Wide(p[0]) * -a0 + p[1]) * -a0 + p[2], 0};
  if (p[0] == 0) return {p[2], p[1]};
  if (p[0] == 1) return {p[2] - a0, p[1] - a1};
  return {p[2] - p[0] * a0, p[1] - p[0] * a1};
}

Remainder multiply(const Remainder &p, const Remainder &q, const Denominator &d) {
  const Wide vv = p.v * q.v;
  return {p.u * q.u - vv * Wide(d.a0), p.u * q.v + p.v * q.u - vv * Wide(d.a1)};
}

Remainder power(Remainder p, int exponent, const Denominator &d) {
  Remainder result{1, 0};
  for (; exponent > 0; exponent /= 2, p = multiply(p, p, d))
    if (exponent % 2) result = multiply(result, p, d);
  return result;
}

Triple triple(const Denominator &d) {
  return d.degree == 2 ? Triple{1, d.a1, d.a0} : Triple{0, 1, d.a0};
}

Denominator with_roots(Complex first, Complex second) {
  return {2, -(first + second).real(), (first * second).real()};
}

double distance_to_axis(Domain domain, Complex pole) {
  const double distance = domain == Domain::z ? std::fabs(1 - std::abs(pole)) : std::fabs(pole.real());
  return std::max(distance, 1e-6 * (domain == Domain::z ? 1 : std::abs(pole)));
}

// How far apart m equal poles are moved, on a circle around their place: far enough that the rounding of the residues,
// which grow as distance^(1-m), and near enough that the change of the product, distance^m, both stay small.
double spread(Domain domain, Complex place, std::size_t m) {
  return distance_to_axis(domain, place) *
         std::pow(std::numeric_limits<double>::epsilon(), 1.0 / (2.0 * static_cast<double>(m) - 1));
}

constexpr double pi = std::numbers::pi;

// Equal conjugate pairs of several terms.
void separate_pairs(Domain domain, std::vector<Denominator> &terms) {
  struct Pair {
    Complex upper;
    std::size_t term;
  };
  std::vector<Pair> pairs;
  for (std::size_t k = 0; k < terms.size(); k++)
    if (const QuadraticRoots roots = quadratic_roots(triple(terms[k])); roots.kind == RootKind::complex_pair)
      pairs.push_back({roots.first, k});
  std::vector<bool> done(pairs.size());
  for (std::size_t i = 0; i < pairs.size(); i++) {
    if (done[i]) continue;
    const double reach = spread(domain, pairs[i].upper, 2);
    std::vector<std::size_t> equal;
    for (std::size_t k = i; k < pairs.size(); k++)
      if (!done[k] && std::abs(pairs[k].upper - pairs[i].upper) < reach) {
        equal.push_back(k);
        done[k] = true;
      }
    const std::size_t m = equal.size();
    if (m < 2) continue;
    Complex centre = 0;
    for (std::size_t k : equal) centre += pairs[k].upper / static_cast<double>(m);
    for (std::size_t k = 0; k < m; k++) {
      const Complex moved =
          centre + std::polar(spread(domain, centre, m), 2 * pi * static_cast<double>(k) / static_cast<double>(m));
      terms[pairs[equal[k]].term] = with_roots(moved, std::conj(moved));
    }
  }
}

// Equal real poles. A term holds a double pole as it is, so the real poles are dealt out anew, equal ones two by two;
// only what is more than one such term is moved.
void separate_real_poles(Domain domain, std::vector<Denominator> &terms) {
  std::vector<double> poles;
  for (const Denominator &term : terms) {
    const QuadraticRoots roots = quadratic_roots(triple(term));
    if (roots.kind == RootKind::complex_pair) continue;
    poles.push_back(roots.first.real());
    if (roots.kind != RootKind::single) poles.push_back(roots.second.real());
  }
  std::sort(poles.begin(), poles.end());
  auto equal = [&](std::size_t i) { return poles[i + 1] - poles[i] < spread(domain, poles[i], 2); };
  std::vector<Denominator> dealt;
  std::vector<double> alone;
  bool shared = false;
  for (std::size_t first = 0, last; first < poles.size(); first = last + 1) {
    for (last = first; last + 1 < poles.size() && equal(last);) last++;
    const std::size_t m = last - first + 1;
    shared = shared || m > 1;
    double centre = 0;
    for (std::size_t i = first; i <= last; i++) centre += poles[i] / static_cast<double>(m);
    const double radius = m > 2 ? spread(domain, centre, m) : 0;
    for (std::size_t j = 0; j < m / 2; j++) { // around the circle; of an odd number, one stays real at angle 0
      const double angle = pi * static_cast<double>(m % 2 == 0 ? 2 * j + 1 : 2 * j + 2) / static_cast<double>(m);
      const Complex moved = centre + std::polar(radius, angle);
      dealt.push_back(with_roots(moved, std::conj(moved)));
    }
    if (m % 2 == 1) alone.push_back(centre + radius);
  }
  if (!shared) return;
  std::erase_if(terms, [](const Denominator &d) { return quadratic_roots(triple(d)).kind != RootKind::complex_pair; });
  terms.insert(terms.end(), dealt.begin(), dealt.end());
  for (std::size_t i = 0; i + 1 < alone.size(); i += 2) terms.push_back(with_roots(alone[i], alone[i + 1]));
  if (alone.size() % 2 == 1) terms.push_back({1, 0, -alone.back()});
}

} // namespace

bool cascade_to_parallel(Domain domain, const SectionEntry &cascade, SectionEntry &parallel) {
  std::vector<Denominator> terms;
  std::map<Triple, int> numerators; // and how often each occurs: most families repeat one
  Wide gain = cascade.gain, direct = 1;
  int zeros = 0, poles = 0;
  for (int k = 0; k < cascade.section_count; k++) {
    const ReducedSection s = reduced(cascade.numerators[k], cascade.denominators[k]);
    if (s.numerator_degree < 0 || s.denominator_degree < 0) return false;
    const Triple &d = s.denominator;
    const double lead = d[2 - s.denominator_degree];
    gain /= Wide(lead);
    direct *= Wide(s.numerator[2 - s.numerator_degree]);
    zeros += s.numerator_degree;
    poles += s.denominator_degree;
    numerators[s.numerator]++;
    if (s.denominator_degree > 0)
      terms.push_back({s.denominator_degree, s.denominator_degree == 2 ? d[1] / lead : 0, d[2] / lead});
  }
  if (zeros > poles) return false;
  separate_pairs(domain, terms);
  separate_real_poles(domain, terms);

  parallel.section_count = static_cast<std::int16_t>(terms.size());
  parallel.order = static_cast<std::int16_t>(poles);
  parallel.keep_gain = cascade.keep_gain;
  parallel.sample_rate = cascade.sample_rate;
  parallel.gain = zeros == poles ? narrow(gain * direct) : 0;
  parallel.pars = 1;
  parallel.shift = {};
  for (std::size_t k = 0; k < terms.size(); k++) {
    const Denominator &d = terms[k];
    Remainder numerator{gain, 0}, others{1, 0};
    for (const auto &[n, count] : numerators) numerator = multiply(numerator, power(remainder(n, d), count, d), d);
    for (std::size_t j = 0; j < terms.size(); j++)
      if (j != k) others = multiply(others, remainder(triple(terms[j]), d), d);
    // 1 / q = conjugate of q / norm of q
    numerator = multiply(numerator, {others.u - others.v * Wide(d.a1), -others.v}, d);
    const Wide norm = others.u * others.u - others.u * others.v * Wide(d.a1) + others.v * others.v * Wide(d.a0);
    const double u = static_cast<double>(numerator.u / norm), v = static_cast<double>(numerator.v / norm);
    if (!std::isfinite(u) || !std::isfinite(v)) return false;
    const bool in_z = domain == Domain::z;
    parallel.denominators[k] = d.degree == 1 && in_z ? Triple{1, d.a0, 0} : triple(d);
    parallel.numerators[k] = d.degree == 1 && in_z ? Triple{0, u, 0} : Triple{0, v, u};
  }
  return true;
}

} // namespace brisel
