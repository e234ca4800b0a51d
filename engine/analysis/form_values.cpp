// form_values.cpp - the value of a system at points of the plane, each form by its own recursion, and how far two forms
// agree.
#include "engine/analysis/form_conversions.h"

#include "engine/analysis/pole_zero_form.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace brisel {

using Complex = std::complex<double>;

template <class Real, class Value> static Values values_at(Places x, Value value) {
  Values values(x.size());
  std::transform(x.begin(), x.end(), values.begin(), [&](Complex x) { return Complex(value(std::complex<Real>(x))); });
  return values;
}

template <class Real> static std::complex<Real> value(const Triple &t, std::complex<Real> x) {
  return (Real(t[0]) * x + Real(t[1])) * x + Real(t[2]);
}

template <class Real> Values cascade_values(const SectionEntry &cascade, Places x) {
  return values_at<Real>(x, [&](std::complex<Real> x) {
    std::complex<Real> h = Real(cascade.gain);
    for (int k = 0; k < cascade.section_count; k++)
      h *= value(cascade.numerators[k], x) / value(cascade.denominators[k], x);
    return h;
  });
}

template <class Real> Values parallel_values(const SectionEntry &parallel, Places x) {
  return values_at<Real>(x, [&](std::complex<Real> x) {
    std::complex<Real> h = Real(parallel.gain);
    for (int k = 0; k < parallel.section_count; k++)
      h += value(parallel.numerators[k], x) / value(parallel.denominators[k], x);
    return Real(parallel.pars) * h;
  });
}

template <class Real> Values pole_zero_values(const PoleZeroEntry &pole_zero, Places x) {
  const int zeros = zero_count(pole_zero), poles = pole_count(pole_zero);
  return values_at<Real>(x, [&](std::complex<Real> x) {
    std::complex<Real> h = Real(pole_zero.gain); // factors alternate, so that the product stays in range
    for (int i = 0; i < std::max(zeros, poles); i++) {
      if (i < zeros) h *= x - std::complex<Real>(pole_zero.zeros[i]);
      if (i < poles) h /= x - std::complex<Real>(pole_zero.poles[i]);
    }
    return h;
  });
}

template <class Real> static std::complex<Real> polynomial(std::span<const double> descending, std::complex<Real> x) {
  std::complex<Real> p = 0;
  for (double c : descending) p = p * x + Real(c);
  return p;
}

template <class Real> Values ratio_values(Domain domain, const RatioEntry &ratio, Places x) {
  const auto numerator = std::span(ratio.numerator).first(ratio.numerator_order + 1);
  const auto denominator = std::span(ratio.denominator).first(ratio.denominator_order + 1);
  const int delay = domain == Domain::z ? ratio.denominator_order - ratio.numerator_order : 0;
  return values_at<Real>(x, [&](std::complex<Real> x) {
    const std::complex<Real> h = Real(ratio.gain) * polynomial(numerator, x) / polynomial(denominator, x);
    return delay == 0 ? h : h * std::pow(x, delay);
  });
}

template <class Real> Values lattice_values(const LatticeEntry &lattice, Places x) {
  return values_at<Real>(x, [&](std::complex<Real> x) {
    const std::complex<Real> delay = Real(1) / x;
    std::complex<Real> a = 1, b = 1, sum = Real(lattice.gamma[0]);
    for (int m = 1; m <= lattice.order + lattice.lead; m++) {
      const std::complex<Real> delayed = delay * b;
      const Real k = m <= lattice.order ? lattice.kappa[m] : 0;
      b = delayed + k * a;
      a += k * delayed;
      sum += Real(lattice.gamma[m]) * b;
    }
    return Real(lattice.gain) * sum / a;
  });
}

template <class Real> Values ladder_values(const LadderEntry &ladder, Places x) {
  const auto alpha = std::span(ladder.alpha).subspan(ladder.lead);
  const auto taps = std::span(ladder.alpha).first(ladder.lead);
  const bool form_one = ladder.form == static_cast<std::int8_t>(LadderForm::one);
  return values_at<Real>(x, [&](std::complex<Real> x) {
    const std::complex<Real> y = form_one ? x : Real(1) / x;
    // Numerator and denominator apart: an inner fraction may be infinite.
    std::complex<Real> p = Real(alpha[2 * ladder.order]), q = 1;
    for (int i = ladder.order; i >= 1; i--) {
      q += Real(alpha[2 * i - 1]) * y * p;
      p += Real(alpha[2 * i - 2]) * q;
      const Real size = std::fabs(p.real()) + std::fabs(p.imag()) + std::fabs(q.real()) + std::fabs(q.imag());
      if (size > Real(1e100) || size < Real(1e-100)) {
        p /= size;
        q /= size;
      }
    }
    std::complex<Real> lead = 0;
    for (auto tap = taps.rbegin(); tap != taps.rend(); ++tap) lead = (lead + Real(*tap)) / x;
    return Real(ladder.gain) * (lead + p / q);
  });
}

template Values cascade_values<double>(const SectionEntry &, Places);
template Values cascade_values<long double>(const SectionEntry &, Places);
template Values parallel_values<double>(const SectionEntry &, Places);
template Values parallel_values<long double>(const SectionEntry &, Places);
template Values pole_zero_values<double>(const PoleZeroEntry &, Places);
template Values pole_zero_values<long double>(const PoleZeroEntry &, Places);
template Values ratio_values<double>(Domain, const RatioEntry &, Places);
template Values ratio_values<long double>(Domain, const RatioEntry &, Places);
template Values lattice_values<double>(const LatticeEntry &, Places);
template Values lattice_values<long double>(const LatticeEntry &, Places);
template Values ladder_values<double>(const LadderEntry &, Places);
template Values ladder_values<long double>(const LadderEntry &, Places);

Values comparison_points(Domain domain, std::span<const Complex> poles, int steps) {
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

double digits_kept(Places x, std::span<const Complex> reference, std::span<const Complex> values, int delay) {
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
