// elliptic_prototype.cpp - normalized elliptic lowpass by nome series, as sections in s, highest power first.
//
// [Antoniou93] A. Antoniou, Digital Filters: Analysis, Design, and Applications, 2nd ed., ch. 5.
// Letters follow the source: k selectivity, q nome, Lambda, sigma0 the real pole, W, Omega_i the reciprocal zeros, V_i.
#include "engine/iir/elliptic_prototype.h"

#include "engine/iir/prototype_sections.h"
#include "engine/iir/selectivity.h"

#include <algorithm>

namespace brisel {

// first + sum of (-1)^m q^exponent(m) wave(m) over m = 1, 2, ... The sum ends after a term below 1e-6, or after m = 25.
// A sine or cosine that happens to vanish makes a term small without ending the series, so what counts is the largest
// value that `wave` can have there, given by `envelope`.
template <class Exponent, class Wave, class Envelope>
static double nome_series(double q, double first, Exponent exponent, Wave wave, Envelope envelope) {
  double sum = first;
  for (int m = 1; m <= 25; m++) {
    const double power = std::pow(q, exponent(m));
    sum += (m % 2 ? -power : power) * wave(m);
    if (power * envelope(m) < 1e-6) break;
  }
  return sum;
}

// 2 q^(1/4) S / (1 + 2 C), S the series of the odd multiples in `odd_wave`, C that of the even ones.
template <class Odd, class Even, class OddEnvelope, class EvenEnvelope>
static double theta_quotient(double q, Odd odd_wave, Even even_wave, OddEnvelope odd_envelope,
                             EvenEnvelope even_envelope) {
  const double s = nome_series(
      q, odd_wave(0), [](int m) { return m * (m + 1); }, odd_wave, odd_envelope);
  const double c = nome_series(
      q, 0, [](int m) { return m * m; }, even_wave, even_envelope);
  return 2 * std::sqrt(std::sqrt(q)) * s / (1 + 2 * c);
}

double elliptic_prototype(int n, double k, double ap_db, double sampling_frequency, SectionEntry &out) {
  begin_prototype(n, sampling_frequency, out);
  const double q = nome(k);
  const double l_minus_1 = std::expm1(0.05 * std::numbers::ln10 * ap_db); // L - 1, L the passband ripple as a ratio
  const double lambda = std::log((l_minus_1 + 2) / l_minus_1) / (2 * n);
  const auto odd_sinh = [&](int m) { return std::sinh((2 * m + 1) * lambda); };
  const auto even_cosh = [&](int m) { return std::cosh(2 * m * lambda); };
  const double sigma0 = std::fabs(theta_quotient(q, odd_sinh, even_cosh, odd_sinh, even_cosh));
  const double w2 = (1 + k * sigma0 * sigma0) * (1 + sigma0 * sigma0 / k);
  const int pairs = n / 2;
  for (int i = 0; i < pairs; i++) {
    const double angle = (n % 2 ? i + 1 : i + 0.5) * std::numbers::pi / n; // mu pi / n
    const auto one = [](int) { return 1.0; };
    const double omega = theta_quotient(
        q, [&](int m) { return std::sin((2 * m + 1) * angle); }, [&](int m) { return std::cos(2 * m * angle); }, one,
        one);
    const double omega2 = omega * omega;
    // Omega_i^2 < k always; near k = 1 the rounded nome can put it just above.
    const double v = std::sqrt(std::max(0.0, (1 - k * omega2) * (1 - omega2 / k)));
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

} // namespace brisel
