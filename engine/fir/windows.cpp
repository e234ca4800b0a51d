// windows.cpp - the twenty windows, in O(length) each.
//
// [Dolph46] C. L. Dolph, A current distribution for broadside arrays which optimizes the relationship between beam
// width
//   and side-lobe level, Proc. IRE 34 (1946).
// [Taylor55] T. T. Taylor, Design of line-source antennas for narrow beamwidth and low side lobes, IRE Trans. AP-3
//   (1955).
// [Kaiser74] J. F. Kaiser, Nonrecursive digital filter design using the I0-sinh window function, Proc. ISCAS (1974).
// [Harris78] F. J. Harris, On the use of windows for harmonic analysis with the discrete Fourier transform, Proc. IEEE
//   66 (1978); cosine sums, Gaussian, exponential (Poisson) and Cauchy windows.
//
// t is the distance from the centre in taps, N the length.
#include "engine/fir/windows.h"

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

#include <array>
#include <cmath>
#include <limits>
#include <numbers>

namespace brisel {

static constexpr double exponential_shape = 3.0; // also of the Cauchy window; neither knows the attenuation
static constexpr int max_taylor_terms = 40;      // n-bar

static double square(double x) {
  return x * x;
}

/// Fills `half` with value(t).
template <class Value> static void fill(int length, std::span<double> half, Value value) {
  const double first = length % 2 ? 0 : 0.5;
  for (std::size_t k = 0; k < half.size(); k++) half[k] = value(static_cast<double>(k) + first);
}

/// a0 + sum of a_m cos(m angle). The cosines come from one rotation after the other: at most 39 of them.
static double cosine_sum(std::span<const double> a, double angle) {
  const double c1 = std::cos(angle), s1 = std::sin(angle);
  double c = 1, s = 0, sum = a[0];
  for (std::size_t m = 1; m < a.size(); m++) {
    const double next = c * c1 - s * s1;
    s = s * c1 + c * s1;
    c = next;
    sum += a[m] * c;
  }
  return sum;
}

/// Side-lobe parameter that codes 15 to 17 derive from the attenuation, dB.
static double side_lobe_parameter(double attenuation) {
  return 0.923076923 * attenuation - 9.31461886;
}

double kaiser_beta(double attenuation) {
  if (attenuation <= 21) return 0;
  if (attenuation <= 50) return 0.5842 * std::pow(attenuation - 21, 0.4) + 0.07886 * (attenuation - 21);
  return 0.1102 * (attenuation - 8.7);
}

double bessel_i0(double x) {
  double sum = 1, term = 1; // term = (x/2)^k / k!; the series adds its squares
  for (int k = 1; term > 1e-8 && sum < std::numeric_limits<double>::infinity(); k++) {
    term *= x / 2 / k;
    sum += term * term;
  }
  return sum;
}

static void fill_kaiser(int length, double attenuation, std::span<double> half) {
  const double beta = kaiser_beta(attenuation);
  const double scale = 1 / bessel_i0(beta);
  fill(length, half, [&](double t) {
    const double u = square(2 * t / length); // Kept: by N, not N - 1, so the window ends above 1 / I0(beta)
    return bessel_i0(beta * std::sqrt(std::max(1 - u, 0.0))) * scale;
  });
}

/// Equal side lobes `ratio_db` below the peak: the samples are the Fourier coefficients of T_n(x0 cos(w/2)), n the
/// order N - 1, T_n(x0) the side-lobe ratio. [Dolph46] With beta = 1 - 1/x0^2 and counted from the outermost sample, 1,
/// they are   n/(n-k) sum over s of C(k-1, s) C(n-k, s+1) beta^(s+1),   k = 1 .. n-1. All terms are positive, so no
/// digit is lost at any attenuation, and their number depends on the ratio, hardly on n.
static void fill_dolph_tschebyscheff(int length, double ratio_db, std::span<double> half) {
  const double n = length - 1;
  const double beta = square(std::tanh(std::acosh(std::pow(10, ratio_db / 20)) / n));
  const auto sample = [&](double k) {
    if (k == 0) return 1.0;
    double sum = 0, term = n * beta;
    for (double s = 0; term > sum * 1e-17; s++) {
      sum += term;
      term *= (k - 1 - s) * (n - k - 1 - s) * beta / ((s + 1) * (s + 2));
    }
    return sum;
  };
  const double centre = sample(static_cast<double>(half.size()) - 1);
  for (std::size_t i = 0; i < half.size(); i++) half[i] = sample(static_cast<double>(half.size() - 1 - i)) / centre;
}

/// Cosine sum over the whole length N whose first n-bar - 1 side lobes lie near `level_db` below the peak. [Taylor55]
static void fill_taylor(int length, double level_db, std::span<double> half) {
  const double ratio = std::pow(10, level_db / 20); // eta
  const double a2 = square(std::acosh(ratio) / std::numbers::pi);
  // The stretch sigma falls with every further side lobe once n-bar is above 2 A^2 + 1/2.
  int n_bar = 1;
  while (n_bar < 2 * a2 + 0.5 && n_bar < max_taylor_terms) n_bar++;
  const double sigma2 = square(n_bar) / (a2 + square(n_bar - 0.5));
  std::array<double, max_taylor_terms> a{1};
  double sum = 1;
  for (int m = 1; m < n_bar; m++) {
    double product = m % 2 ? 1 : -1; // twice F_m, from its definition; the signs alternate back to a centre-first sum
    for (int i = 1; i < n_bar; i++) {
      product *= 1 - square(m) / sigma2 / (a2 + square(i - 0.5));
      if (i != m) product /= 1 - square(static_cast<double>(m) / i);
    }
    a[m] = product;
    sum += product;
  }
  for (int m = 0; m < n_bar; m++) a[m] /= sum;
  fill(length, half, [&](double t) { return cosine_sum(std::span(a).first(n_bar), two_pi * t / length); });
}

static void fill_gaussian(int length, double parameter, std::span<double> half) {
  const double edge_db = std::abs(std::abs(parameter) - 19); // of the window's end
  const double s = std::sqrt(-2 * std::log(std::pow(10, -edge_db / 20)));
  fill(length, half, [&](double t) { return std::exp(-0.5 * square(2 * s * t / (length - 1))); });
}

void make_window(int code, int length, double attenuation, std::span<double> half) {
  const WindowRow &row = windows[code];
  const double parameter = side_lobe_parameter(attenuation);
  switch (row.form) {
  case WindowForm::flat:
    return fill(length, half, [](double) { return 1.0; });
  case WindowForm::triangle: {
    const int m = (length + 1) / 2;
    return fill(length, half, [&](double t) { return 1 - t / m; });
  }
  case WindowForm::cosine_sum:
    return fill(length, half, [&](double t) {
      return cosine_sum(std::span(row.cosine).first(row.cosine_terms), two_pi * t / (length - 1));
    });
  case WindowForm::kaiser:
    return fill_kaiser(length, attenuation, half);
  case WindowForm::dolph_tschebyscheff:
    return fill_dolph_tschebyscheff(length, std::abs(parameter + 6.5), half);
  case WindowForm::taylor:
    return fill_taylor(length, std::abs(parameter), half);
  case WindowForm::gaussian:
    return fill_gaussian(length, parameter, half);
  case WindowForm::exponential:
    return fill(length, half, [&](double t) { return std::exp(-2 * exponential_shape * t / (length - 1)); });
  case WindowForm::cauchy:
    return fill(length, half, [&](double t) { return 1 / (1 + square(2 * exponential_shape * t / (length - 1))); });
  }
}

} // namespace brisel
