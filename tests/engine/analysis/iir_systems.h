// iir_systems.h - IIR systems for tests, and the response of each form written out from its definition.
#pragma once

#include "engine/analysis/form_conversions.h"

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace brisel::test {

using Complex = std::complex<long double>;
inline constexpr long double pi = std::numbers::pi_v<long double>;

inline std::vector<Complex> circle(int steps = 1501) {
  std::vector<Complex> z(steps);
  for (int i = 0; i < steps; i++) z[i] = std::polar<long double>(1, pi * i / (steps - 1));
  return z;
}

inline SectionEntry sections(double gain, const std::vector<std::array<Triple, 2>> &rows) {
  SectionEntry entry{};
  entry.sample_rate = two_pi;
  entry.gain = gain;
  entry.pars = 1;
  entry.section_count = static_cast<std::int16_t>(rows.size());
  entry.order = static_cast<std::int16_t>(2 * rows.size());
  for (std::size_t k = 0; k < rows.size(); k++) {
    entry.numerators[k] = rows[k][0];
    entry.denominators[k] = rows[k][1];
  }
  return entry;
}

/// Elliptic lowpass, order 5, 0.5 dB and 60 dB, edge at a quarter of half the rate: scipy.signal.ellip(5, 0.5, 60,
/// 0.25).
inline SectionEntry elliptic_5() {
  return sections(0.006537492075792873,
                  {{{{1.0, 1.0, 0.0}, {1.0, -0.7140298472780193, 0.0}}},
                   {{{1.0, 0.3268809770469423, 0.9999999999999999}, {1.0, -1.3620471404654255, 0.6406678671766253}}},
                   {{{1.0, -0.5178708201375963, 1.0}, {1.0, -1.3130089528039577, 0.8789448864322843}}}});
}

/// Butterworth lowpass from its poles on the unit circle of s, bilinear; `edge` relative to half the rate. Its gain is
/// 1 at frequency 0.
inline SectionEntry butterworth(int order, double edge) {
  std::vector<std::array<Triple, 2>> rows;
  const long double w = std::tan(pi * edge / 2);
  long double gain = 1;
  auto add = [&](Triple n, Triple d) {
    rows.push_back({n, d});
    gain *= (static_cast<long double>(d[0]) + d[1] + d[2]) / (static_cast<long double>(n[0]) + n[1] + n[2]);
  };
  if (order % 2) add({1, 1, 0}, {1, static_cast<double>((w - 1) / (w + 1)), 0});
  for (int k = 1; k <= order / 2; k++) {
    const long double c = 2 * w * std::cos(pi * (order % 2 ? k : k - 0.5L) / order), d = 1 + c + w * w;
    add({1, 2, 1}, {1, static_cast<double>(2 * (w * w - 1) / d), static_cast<double>((1 - c + w * w) / d)});
  }
  SectionEntry entry = sections(static_cast<double>(gain), rows);
  entry.order = static_cast<std::int16_t>(order);
  return entry;
}

/// Resonators at even angles, two zeros each in between: a system of any order whose forms are all well conditioned.
inline SectionEntry resonators(int count, double radius) {
  std::vector<std::array<Triple, 2>> rows;
  for (int k = 0; k < count; k++) {
    const double angle = std::numbers::pi * (k + 0.5) / count;
    rows.push_back(
        {{{1, -2 * 0.8 * std::cos(angle + 0.3 / count), 0.64}, {1, -2 * radius * std::cos(angle), radius * radius}}});
  }
  return sections(0.5, rows);
}

/// z -> -z^2: a bandpass around a quarter of the rate of twice the order, its poles split by hand.
inline SectionEntry band_pass(const SectionEntry &low_pass) {
  std::vector<std::array<Triple, 2>> rows;
  for (int k = 0; k < low_pass.section_count; k++) {
    // d(-z^2) with roots p, p* becomes roots +-sqrt(-p), and the numerator's (z - 1)^2 (z + 1)^2 is dealt out evenly.
    const Triple &d = low_pass.denominators[k];
    if (d[2] == 0) {
      rows.push_back({{{1, 0, -1}, {1, 0, -d[1]}}});
      continue;
    }
    const std::complex<long double> p(-d[1] / 2.0L, std::sqrt(d[2] - d[1] * (long double)d[1] / 4)), r = std::sqrt(-p);
    for (const double sign : {1.0, -1.0})
      rows.push_back({{{1, 0, -1}, {1, static_cast<double>(-2 * sign * r.real()), static_cast<double>(std::norm(r))}}});
  }
  return sections(low_pass.gain, rows);
}

inline Complex triple(const Triple &t, Complex z) {
  return (long double)t[0] * z * z + (long double)t[1] * z + (long double)t[2];
}
inline Complex response(const SectionEntry &e, Complex z, bool parallel) {
  Complex h = e.gain;
  for (int k = 0; k < e.section_count; k++) {
    const Complex ratio = triple(e.numerators[k], z) / triple(e.denominators[k], z);
    parallel ? h += ratio : h *= ratio;
  }
  return parallel ? (long double)e.pars * h : h;
}
inline Complex response(const PoleZeroEntry &e, Complex z) {
  Complex h = e.gain;
  for (int i = 0; i < std::max(e.real_zeros + e.complex_zeros, e.real_poles + e.complex_poles); i++) {
    if (i < e.real_zeros + e.complex_zeros) h *= z - Complex(e.zeros[i]);
    if (i < e.real_poles + e.complex_poles) h /= z - Complex(e.poles[i]);
  }
  return h;
}
inline Complex response(const RatioEntry &e, Complex z) {
  Complex n = 0, d = 0, power = 1;
  for (int i = 0; i <= std::max(e.numerator_order, e.denominator_order); i++, power /= z) {
    if (i <= e.numerator_order) n += (long double)e.numerator[i] * power;
    if (i <= e.denominator_order) d += (long double)e.denominator[i] * power;
  }
  return (long double)e.gain * n / d;
}
/// Two-multiplier lattice from the last stage down: f_{m-1} = f_m - k_m z^-1 b_{m-1}, solved for the transfer
/// functions.
inline Complex response(const LatticeEntry &e, Complex z) {
  std::vector<Complex> a{1}, b{1}; // of every stage
  for (int m = 1; m <= e.order + e.lead; m++) {
    const long double k = m <= e.order ? e.kappa[m] : 0;
    a.push_back(a[m - 1] + k * b[m - 1] / z);
    b.push_back(b[m - 1] / z + k * a[m - 1]);
  }
  Complex sum = 0;
  for (int m = 0; m <= e.order + e.lead; m++) sum += (long double)e.gamma[m] * b[m];
  return (long double)e.gain * sum / a.back();
}
inline Complex response(const LadderEntry &e, Complex z) {
  const Complex y = e.form == 0 ? z : Complex(1) / z;
  int last = e.alpha_count - 1;
  Complex h = e.alpha[last];
  for (int i = 0; i < e.order; i++, last -= 2)
    h = (long double)e.alpha[last - 2] + Complex(1) / ((long double)e.alpha[last - 1] * y + Complex(1) / h);
  Complex delay = 1;
  for (int i = 0; i < e.lead; i++) h += (long double)e.alpha[i] * (delay /= z);
  return (long double)e.gain * h;
}

/// Largest distance of two responses on a dense grid, relative to the peak of the first; `delay` samples apart.
template <class First, class Second> double distance(First first, Second second, int delay = 0) {
  long double peak = 0, worst = 0;
  static const std::vector<Complex> places = circle();
  for (const Complex z : places) {
    const Complex h = first(z);
    peak = std::max(peak, std::abs(h));
    const long double error = std::abs(h - (delay == 0 ? second(z) : second(z) * std::pow(z, -delay)));
    worst = error <= worst ? worst : error;
  }
  return static_cast<double>(worst / peak);
}

} // namespace brisel::test
