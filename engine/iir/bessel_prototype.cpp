// bessel_prototype.cpp - normalized Bessel (Thomson) lowpass as sections in s, highest power first.
//
// [Thomson49] W. E. Thomson, Delay networks having maximally flat frequency characteristics, Proc. IEE 96, 1949.
// [Olver54] F. W. J. Olver, The asymptotic expansion of Bessel functions of large order, Phil. Trans. A 247, 1954.
// The denominator is the reverse Bessel polynomial, a multiple of e^s s^nu K_nu(s) with nu = n + 1/2; its roots are the
// zeros of K_nu. The polynomial itself is useless for high orders (its coefficients reach 1e300), Olver's expansion
// gets better with them.
#include "engine/iir/bessel_prototype.h"

#include "engine/analysis/wide_ratio.h"
#include "engine/iir/prototype_sections.h"

#include <algorithm>
#include <array>
#include <complex>
#include <vector>

namespace brisel {

using Complex = std::complex<double>;

namespace {

/// Order parameters of the approximation for orders 11 to 24. Kept: 23 repeats 22, so both start from the same stretch.
struct OrderParameters {
  double t1, t2;
};
constexpr std::array<OrderParameters, 14> order_parameters{{
    {0.612701, 0.885881},
    {0.640368, 0.900357},
    {0.660335, 0.912237},
    {0.681521, 0.922067},
    {0.697530, 0.930293},
    {0.714285, 0.937246},
    {0.727383, 0.943177},
    {0.740968, 0.948278},
    {0.751873, 0.952698},
    {0.763111, 0.956555},
    {0.772328, 0.959940},
    {0.781781, 0.962930},
    {0.781781, 0.962930},
    {0.789744, 0.965583},
}};
constexpr double c1 = 24 * (1 / order_parameters.back().t1 - 1);
constexpr double c2 = 24 * (1 / order_parameters.back().t2 - 1);

OrderParameters parameters(int n) {
  if (n < 11) return {n / (n + 6.74), n / (n + 1.33)};
  if (n < 24) return order_parameters[n - 11];
  return {n / (n + c1), n / (n + c2)};
}

// Taylor coefficients in zeta of Olver's z(zeta), with (2/3) zeta^(3/2) = ln((1 + sqrt(1 - z^2)) / z) - sqrt(1 - z^2),
// and of f1(zeta), the term in 1 / nu^2 of the zeros.
constexpr std::array z_series{1.0,
                              -0.79370052598409974,
                              0.18898815748423098,
                              1.0 / 700,
                              -0.0030173218408443157,
                              -0.00078817139024190411,
                              -4.0766138623281480e-5,
                              4.0644010406000287e-5,
                              1.4817234024774346e-5};
constexpr std::array f1_series{1.0 / 70,
                               0.00025196842094733325,
                               -0.0021466187337417289,
                               -0.00072446601018029590,
                               6.9191817741033889e-5,
                               0.00012839941418785285,
                               3.5758397804580680e-5,
                               -5.1031356625021163e-6,
                               -6.7446591118282500e-6,
                               -1.7225118540422313e-6,
                               2.9469526317439490e-7,
                               3.3756785891950137e-7,
                               8.1771392860898900e-8};

template <std::size_t N> Complex power_series(const std::array<double, N> &c, Complex x) {
  Complex sum = 0;
  for (std::size_t i = N; i--;) sum = sum * x + c[i];
  return sum;
}

// Magnitude of the j-th zero of the Airy function: from the table, else McMahon's expansion.
double airy_zero(int j) {
  constexpr std::array first{2.3381074104597670, 4.0879494441309706, 5.5205598280955511};
  if (j <= 3) return first[j - 1];
  const double t = 3 * std::numbers::pi * (4 * j - 1) / 8, r = 1 / (t * t);
  return std::cbrt(t * t) * (1 + r * (5.0 / 48 + r * (-5.0 / 36 + r * (77125.0 / 82944))));
}

// The zero of K_nu(nu z) that belongs to the j-th zero of the Airy function, counted from the outermost pole.
Complex scaled_bessel_pole(int j, double nu) {
  const double radius = airy_zero(j) / std::cbrt(nu * nu);
  const Complex zeta = std::polar(radius, -std::numbers::pi / 3);
  const Complex image(0, -2.0 / 3 * radius * std::sqrt(radius)); // (2/3) zeta^(3/2)
  Complex z = power_series(z_series, zeta);
  for (int i = 0; i < 2; i++) { // two Newton steps leave no more than rounding of the cut-off series
    const Complex w = std::sqrt(1.0 - z * z);
    z += (std::log((1.0 + w) / z) - w - image) * z / w;
  }
  return Complex(0, 1) * (z + power_series(f1_series, zeta) / (nu * nu));
}

// Coefficients in descending powers of s. In more digits than a double: its roots are that sensitive, and deflation
// costs more; in double, order 23 would keep three digits of its poles.
std::vector<Wide> bessel_polynomial(int n) {
  std::vector<Wide> c(n + 1);
  c[0] = 1;
  for (int k = 0; k < n; k++) c[k + 1] = c[k] * (n + k + 1) * (n - k) / (2 * (k + 1));
  return c;
}

// Division by s^2 + r s + q: the quotient, then the two places of the remainder u (s + r) + v.
std::vector<Wide> divided(const std::vector<Wide> &p, Wide r, Wide q) {
  std::vector<Wide> b(p);
  for (std::size_t i = 1; i < b.size(); i++) b[i] -= r * b[i - 1] + (i > 1 ? q * b[i - 2] : 0);
  return b;
}

// Bairstow's method from the factor given: replaces `p` by its quotient, the factor by the refined one.
bool refine(std::vector<Wide> &p, Triple &factor) {
  Wide r = factor[1], q = factor[2], first_error = 0;
  const std::size_t m = p.size() - 1;
  for (int iteration = 1; iteration < 600; iteration++) {
    const std::vector<Wide> b = divided(p, r, q);
    const std::vector<Wide> c = divided({b.begin(), b.end() - 1}, r, q); // the derivatives of b by r and q, shifted
    const Wide determinant = c[m - 2] * c[m - 2] - c[m - 1] * c[m - 3];
    Wide dr = 0.001, dq = 0.001;
    if (determinant != 0) {
      dr = (b[m - 1] * c[m - 2] - b[m] * c[m - 3]) / determinant;
      dq = (b[m] * c[m - 2] - b[m - 1] * c[m - 1]) / determinant;
    }
    r += dr;
    q += dq;
    const Wide error = magnitude(dr) + magnitude(dq);
    if (iteration == 1) first_error = error;
    if (error < 1e-8) {
      p = divided(p, r, q);
      p.resize(m - 1);
      factor = {1, static_cast<double>(r), static_cast<double>(q)};
      return true;
    }
    if (iteration == 50 && !(error < first_error)) return false;
  }
  return false;
}

} // namespace

void approximate_bessel_factors(int n, std::span<Triple> factors) {
  const double nu = n + 0.5;
  // The scaled poles tend to a fixed curve; t1 and t2 carry how much wider than n that curve is drawn for a finite
  // order, along the real and along the imaginary axis. From order 24 on both stretches are (n + 1/2) / n exactly.
  const auto [t1, t2] = parameters(n);
  const double along_real = n * (1 + (1 / t1 - 1) / (2 * c1)), along_imaginary = n * (1 + (1 / t2 - 1) / (2 * c2));
  const int pairs = n / 2;
  for (int i = 0; i < pairs; i++) { // innermost pair, the smallest, first: deflation then does least harm
    const Complex pole = scaled_bessel_pole(pairs - i, nu);
    const double sigma = -pole.real() * along_real, omega = pole.imag() * along_imaginary;
    factors[i] = {1, 2 * sigma, sigma * sigma + omega * omega};
  }
  if (n % 2) factors[pairs] = {0, 1, -scaled_bessel_pole(pairs + 1, nu).real() * along_real};
}

bool refine_bessel_factors(int n, std::span<Triple> factors) {
  std::vector<Wide> p = bessel_polynomial(n);
  std::vector<Triple> refined(factors.begin(), factors.begin() + (n + 1) / 2);
  std::size_t i = 0;
  for (; p.size() > 3; i++) {
    if (!refine(p, refined[i])) return false;
  }
  refined[i] = p.size() == 3 ? Triple{1, static_cast<double>(p[1]), static_cast<double>(p[2])}
                             : Triple{0, 1, static_cast<double>(p[1])};
  std::ranges::copy(refined, factors.begin());
  return true;
}

bool bessel_prototype(int n, double sampling_frequency, SectionEntry &out) {
  begin_prototype(n, sampling_frequency, out);
  approximate_bessel_factors(n, out.denominators);
  const bool exact = n <= max_refined_bessel_order && refine_bessel_factors(n, out.denominators);
  double product = 1;
  for (int i = 0; i < out.section_count; i++) product *= out.denominators[i][2];
  const bool in_range = std::isfinite(product);
  for (int i = 0; i < out.section_count; i++) out.numerators[i] = {0, 0, in_range ? 1 : out.denominators[i][2]};
  if (in_range) out.gain = product;
  return exact;
}

} // namespace brisel
