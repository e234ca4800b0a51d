// form_values.cpp - the value of a system at points of the plane, each form by its own recursion, and how far two forms
// agree.
#include "engine/analysis/form_conversions.h"

#include "engine/analysis/pole_zero_form.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace brisel {

using Complex = std::complex<double>;

template <class Value> static Values values_at(std::span<const Complex> x, Value value) {
  Values values(x.size());
  std::transform(x.begin(), x.end(), values.begin(), value);
  return values;
}

static Complex value(const Triple &t, Complex x) {
  return (t[0] * x + t[1]) * x + t[2];
}

Values cascade_values(const SectionEntry &cascade, std::span<const Complex> x) {
  return values_at(x, [&](Complex x) {
    Complex h = cascade.gain;
    for (int k = 0; k < cascade.section_count; k++)
      h *= value(cascade.numerators[k], x) / value(cascade.denominators[k], x);
    return h;
  });
}

Values parallel_values(const SectionEntry &parallel, std::span<const Complex> x) {
  return values_at(x, [&](Complex x) {
    Complex h = parallel.gain;
    for (int k = 0; k < parallel.section_count; k++)
      h += value(parallel.numerators[k], x) / value(parallel.denominators[k], x);
    return parallel.pars * h;
  });
}

Values pole_zero_values(const PoleZeroEntry &pole_zero, std::span<const Complex> x) {
  const int zeros = zero_count(pole_zero), poles = pole_count(pole_zero);
  return values_at(x, [&](Complex x) {
    Complex h = pole_zero.gain; // factors alternate, so that the product stays in range
    for (int i = 0; i < std::max(zeros, poles); i++) {
      if (i < zeros) h *= x - pole_zero.zeros[i];
      if (i < poles) h /= x - pole_zero.poles[i];
    }
    return h;
  });
}

static Complex polynomial(std::span<const double> descending, Complex x) {
  Complex p = 0;
  for (double c : descending) p = p * x + c;
  return p;
}

Values ratio_values(Domain domain, const RatioEntry &ratio, std::span<const Complex> x) {
  const auto numerator = std::span(ratio.numerator).first(ratio.numerator_order + 1);
  const auto denominator = std::span(ratio.denominator).first(ratio.denominator_order + 1);
  const int delay = domain == Domain::z ? ratio.denominator_order - ratio.numerator_order : 0;
  return values_at(x, [&](Complex x) {
    const Complex h = ratio.gain * polynomial(numerator, x) / polynomial(denominator, x);
    return delay == 0 ? h : h * std::pow(x, delay);
  });
}

Values lattice_values(const LatticeEntry &lattice, std::span<const Complex> x) {
  return values_at(x, [&](Complex x) {
    const Complex delay = 1.0 / x;
    Complex a = 1, b = 1, sum = lattice.gamma[0];
    for (int m = 1; m <= lattice.order + lattice.lead; m++) {
      const Complex delayed = delay * b;
      const double k = m <= lattice.order ? lattice.kappa[m] : 0;
      b = delayed + k * a;
      a += k * delayed;
      sum += lattice.gamma[m] * b;
    }
    return lattice.gain * sum / a;
  });
}

Values ladder_values(const LadderEntry &ladder, std::span<const Complex> x) {
  const auto alpha = std::span(ladder.alpha).subspan(ladder.lead);
  const auto taps = std::span(ladder.alpha).first(ladder.lead);
  const bool form_one = ladder.form == static_cast<std::int8_t>(LadderForm::one);
  return values_at(x, [&](Complex x) {
    const Complex y = form_one ? x : 1.0 / x;
    Complex p = alpha[2 * ladder.order], q = 1; // numerator and denominator apart: an inner fraction may be infinite
    for (int i = ladder.order; i >= 1; i--) {
      q += alpha[2 * i - 1] * y * p;
      p += alpha[2 * i - 2] * q;
      if (const double size = std::abs(p) + std::abs(q); size > 1e100 || size < 1e-100) {
        p /= size;
        q /= size;
      }
    }
    Complex lead = 0;
    for (auto tap = taps.rbegin(); tap != taps.rend(); ++tap) lead = (lead + *tap) / x;
    return ladder.gain * (lead + p / q);
  });
}

Values comparison_points(Domain domain, std::span<const Complex> poles) {
  constexpr int steps = 256;
  Values points;
  double low = 0, high = 0; // magnitudes of the poles
  for (const Complex pole : poles) {
    if (pole.imag() < 0 || std::abs(pole) == 0) continue;
    const double size = std::abs(pole);
    low = low == 0 ? size : std::min(low, size);
    high = std::max(high, size);
    points.push_back(domain == Domain::z ? pole / size : Complex(0, pole.imag()));
  }
  if (domain == Domain::z) {
    for (int i = 0; i <= steps; i++) points.push_back(std::polar(1.0, std::numbers::pi * i / steps));
  } else {
    if (high == 0) low = high = 1;
    for (int i = 0; i <= steps; i++) points.emplace_back(0, 0.01 * low * std::pow(1e4 * high / low, double(i) / steps));
  }
  return points;
}

double digits_kept(std::span<const Complex> x, std::span<const Complex> reference, std::span<const Complex> values,
                   int delay) {
  double peak = 0, distance = 0;
  for (std::size_t i = 0; i < x.size(); i++) {
    if (!std::isfinite(std::abs(reference[i]))) continue; // a pole on the axis itself
    const Complex expected = delay == 0 ? reference[i] : reference[i] * std::pow(x[i], -delay);
    const double error = std::abs(values[i] - expected);
    peak = std::max(peak, std::abs(expected));
    distance = std::isfinite(error) ? std::max(distance, error) : std::numeric_limits<double>::infinity();
  }
  if (distance == 0) return 16;
  const double digits = std::log10(peak / distance);
  return digits > 0 ? std::min(digits, 16.0) : 0;
}

} // namespace brisel
