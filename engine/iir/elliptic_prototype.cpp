// elliptic_prototype.cpp - normalized elliptic lowpass by theta series, as sections in s, highest power first.
//
// [Antoniou93] A. Antoniou, Digital Filters: Analysis, Design, and Applications, 2nd ed., ch. 5.
// [Abramowitz64] M. Abramowitz, I. Stegun, Handbook of Mathematical Functions, 1964, ch. 16 (theta functions).
// Letters follow the first: k selectivity, q nome, Lambda, sigma0 the real pole, W, Omega_i the reciprocal zeros, V_i.
#include "engine/iir/elliptic_prototype.h"

#include "engine/iir/prototype_sections.h"
#include "engine/iir/selectivity.h"

namespace brisel {

// first + sum of (-1)^m q^exponent(m) wave(m) over m = 1, 2, ... The sum ends after a term below 1e-17, or after m
// = 25. A sine or cosine that happens to vanish makes a term small without ending the series, so what counts is the
// largest value that `wave` can have there, given by `envelope`.
template <class Exponent, class Wave, class Envelope>
static double nome_series(double q, double first, Exponent exponent, Wave wave, Envelope envelope) {
  double sum = first;
  for (int m = 1; m <= 25; m++) {
    const double power = std::pow(q, exponent(m));
    sum += (m % 2 ? -power : power) * wave(m);
    if (power * envelope(m) < 1e-17) break;
  }
  return sum;
}

struct Thetas {
  double first, fourth; // theta_1 and theta_4 of one argument
  double quotient() const { return first / fourth; }
};

template <class Odd, class Even, class OddEnvelope, class EvenEnvelope>
static Thetas theta_series(double q, Odd odd_wave, Even even_wave, OddEnvelope odd_envelope,
                           EvenEnvelope even_envelope) {
  const auto odd = [](int m) { return m * (m + 1); };
  const auto even = [](int m) { return m * m; };
  return {2 * std::sqrt(std::sqrt(q)) * nome_series(q, odd_wave(0), odd, odd_wave, odd_envelope),
          1 + 2 * nome_series(q, 0, even, even_wave, even_envelope)};
}

static Thetas thetas(double q, double z) {
  const auto one = [](int) { return 1.0; };
  return theta_series(
      q, [&](int m) { return std::sin((2 * m + 1) * z); }, [&](int m) { return std::cos(2 * m * z); }, one, one);
}

// Of the argument j z; theta_1 without its factor j.
static Thetas thetas_of_imaginary(double q, double z) {
  const auto odd = [&](int m) { return std::sinh((2 * m + 1) * z); };
  const auto even = [&](int m) { return std::cosh(2 * m * z); };
  return theta_series(q, odd, even, odd, even);
}

// ln((L + 1) / (L - 1)) / 2, L the passband ripple as a ratio: Lambda times the order.
static double ripple_argument(double ap_db) {
  const double l_minus_1 = std::expm1(0.05 * std::numbers::ln10 * ap_db);
  return std::log((l_minus_1 + 2) / l_minus_1) / 2;
}

double elliptic_prototype(int n, double k, double ap_db, double sampling_frequency, SectionEntry &out) {
  begin_prototype(n, sampling_frequency, out);
  const double q = nome(k);
  const double sigma0 = std::fabs(thetas_of_imaginary(q, ripple_argument(ap_db) / n).quotient());
  const double w2 = (1 + k * sigma0 * sigma0) * (1 + sigma0 * sigma0 / k);
  const double v_scale = std::sqrt((1 - k) * (1 + k) / k);
  const int pairs = n / 2;
  for (int i = 0; i < pairs; i++) {
    const double mu = n % 2 ? i + 1 : i + 0.5;
    const Thetas at_zero = thetas(q, mu * std::numbers::pi / n);
    const Thetas at_complement = thetas(q, (0.5 * n - mu) * std::numbers::pi / n);
    const double omega2 = at_zero.quotient() * at_zero.quotient();
    // V^2 = (1 - k Omega^2)(1 - Omega^2 / k), the product dn^2 cn^2, whose differences would leave no digit near k = 1;
    // theta_2 and theta_3 are theta_1 and theta_4 of the complement [16.36.6].
    const double v = v_scale * at_complement.first * at_complement.fourth / (at_zero.fourth * at_zero.fourth);
    const double g = 1 + sigma0 * sigma0 * omega2;
    const double constant = sigma0 * sigma0 * v * v + w2 * omega2;
    out.numerators[i] = {omega2, 0, 1};
    out.denominators[i] = {g * g, 2 * sigma0 * g * v, constant};
    out.gain *= constant;
  }
  if (n % 2) {
    out.numerators[pairs] = {0, 0, 1};
    out.denominators[pairs] = {0, 1, sigma0};
    out.gain *= sigma0;
  }
  return std::sqrt(k);
}

double elliptic_ripple(int n, double k, double ap_db) {
  // The characteristic function of order n is sn with the nome q^n; it has the value j / epsilon at the poles, whose
  // argument is n times that of sigma0. sqrt(k1) is the quotient at the quarter period.
  const double q1 = std::pow(nome(k), n);
  const double epsilon =
      thetas(q1, std::numbers::pi / 2).quotient() / thetas_of_imaginary(q1, ripple_argument(ap_db)).quotient();
  return 10 / std::numbers::ln10 * std::log1p(epsilon * epsilon);
}

} // namespace brisel
