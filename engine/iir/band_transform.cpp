// band_transform.cpp - lowpass to lowpass, highpass, bandpass and bandstop by substitution of s [Antoniou93, ch. 5].
//
// A bandpass turns each prototype root r into the two roots of s^2 - r B s + w0^2 (B bandwidth, w0 centre). The roots
// are computed one by one, never the quartic: its coefficients lose the distance of narrow poles from the axis.
#include "engine/iir/band_transform.h"

#include "engine/analysis/polynomial_roots.h"

#include <cmath>
#include <complex>
#include <numbers>
#include <utility>

namespace brisel {

using Complex = std::complex<double>;

namespace {

struct Band {
  double width;   // B
  double centre2; // w0^2
};

// Both factors that one triple becomes, over (B s)^2 of the section.
struct Factors {
  Triple first, second;
};

Triple conjugate_pair(Complex root, double leading) {
  return {leading, -2 * leading * root.real(), leading * std::norm(root)};
}

Factors band_pass_factors(const Triple &t, const Band &band) {
  const auto [a, b, c] = t;
  const double width = band.width, centre2 = band.centre2;
  const QuadraticRoots roots = quadratic_roots(t);
  switch (roots.kind) {
  case RootKind::complex_pair: {
    const Complex half = roots.first * (0.5 * width), root = std::sqrt(half * half - centre2);
    // The larger one without cancellation, the other from their product w0^2.
    const Complex larger = std::real(half * std::conj(root)) < 0 ? half - root : half + root;
    return {conjugate_pair(larger, a), conjugate_pair(centre2 / larger, 1)};
  }
  case RootKind::distinct_real:
  case RootKind::double_real:
    return {{a, -a * roots.first.real() * width, a * centre2}, {1, -roots.second.real() * width, centre2}};
  case RootKind::single:
    return {{b, c * width, b * centre2}, {0, width, 0}};
  case RootKind::none:
    return {{0, c * width, 0}, {0, width, 0}};
  }
  return {};
}

Complex upper_root(const Triple &t) {
  return quadratic_roots(t).first;
}

// Lets each denominator have the nearer numerator.
void pair_nearest(const Factors &denominator, Factors &numerator) {
  const Complex p1 = upper_root(denominator.first), p2 = upper_root(denominator.second);
  const Complex z1 = upper_root(numerator.first), z2 = upper_root(numerator.second);
  if (std::abs(p1 - z2) + std::abs(p2 - z1) < std::abs(p1 - z1) + std::abs(p2 - z2))
    std::swap(numerator.first, numerator.second);
}

void to_band_pass(const SectionEntry &source, SectionEntry &target, const Band &band) {
  target = source;
  target.order = static_cast<std::int16_t>(2 * source.order);
  int count = 0;
  for (int i = 0; i < source.section_count; i++) {
    const Triple &n = source.numerators[i], &d = source.denominators[i];
    if (d[0] == 0) { // over B s: the constant of a numerator becomes a zero at 0
      target.numerators[count] = {n[1], n[2] * band.width, n[1] * band.centre2};
      target.denominators[count++] = {d[1], d[2] * band.width, d[1] * band.centre2};
      continue;
    }
    const Factors denominator = band_pass_factors(d, band);
    Factors numerator = band_pass_factors(n, band);
    pair_nearest(denominator, numerator);
    target.numerators[count] = numerator.first;
    target.denominators[count++] = denominator.first;
    target.numerators[count] = numerator.second;
    target.denominators[count++] = denominator.second;
  }
  target.section_count = static_cast<std::int16_t>(count);
}

// Applies an operation on second-order and one on first-order triples, chosen by the denominator, to both of a section.
template <class Second, class First> void each_triple(SectionEntry &entry, Second second, First first) {
  for (int i = 0; i < entry.section_count; i++) {
    const bool second_order = entry.denominators[i][0] != 0;
    for (Triple *t : {&entry.numerators[i], &entry.denominators[i]}) *t = second_order ? second(*t) : first(*t);
  }
}

} // namespace

void transform_analog_lowpass(const SectionEntry &source, SectionEntry &target, const FilterSpec &spec,
                              ZTransform method, double wp) {
  // Kept: an impulse-invariant design is prewarped too, although its map does not warp and its selectivity was taken
  // from the unwarped edges; its edges come out above those of the specification.
  const bool prewarped = method != ZTransform::matched_z;
  const double c = std::numbers::pi / spec.sampling_frequency, f1 = spec.passband_edge[0], f2 = spec.passband_edge[1];
  const double w1 = prewarped ? std::tan(c * f1) / c : f1;
  switch (static_cast<FilterType>(spec.type)) {
  case FilterType::low_pass: { // s / lambda
    const double lambda = w1 / wp;
    target = source;
    each_triple(
        target,
        [=](const Triple &t) {
          return Triple{t[0], lambda * t[1], lambda * lambda * t[2]};
        },
        [=](const Triple &t) {
          return Triple{0, t[1], lambda * t[2]};
        });
    break;
  }
  case FilterType::high_pass: { // lambda / s
    const double lambda = w1 * wp;
    target = source;
    each_triple(
        target,
        [=](const Triple &t) {
          return Triple{t[2], lambda * t[1], lambda * lambda * t[0]};
        },
        [=](const Triple &t) {
          return Triple{0, t[2], lambda * t[1]};
        });
    break;
  }
  case FilterType::band_pass:
  case FilterType::band_stop: {
    const double w2 = prewarped ? std::tan(c * f2) / c : f2;
    // tan a - tan b without the difference, which costs narrow bands their digits
    const double width = prewarped ? std::sin(c * (f2 - f1)) / (std::cos(c * f1) * std::cos(c * f2) * c) : f2 - f1;
    if (spec.type == code(FilterType::band_pass)) {
      to_band_pass(source, target, {width / wp, w1 * w2});
      break;
    }
    SectionEntry reversed = source; // s -> 1 / s
    each_triple(
        reversed,
        [](const Triple &t) {
          return Triple{t[2], t[1], t[0]};
        },
        [](const Triple &t) {
          return Triple{0, t[2], t[1]};
        });
    to_band_pass(reversed, target, {width * wp, w1 * w2});
    break;
  }
  default:
    break;
  }
}

} // namespace brisel
