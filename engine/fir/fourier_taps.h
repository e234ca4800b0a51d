// fourier_taps.h - taps of an amplitude that is given over frequency: h(t) = 1/pi * integral of A(w) cos(t w) dw, or of
// A(w) sin(t w), for all t of a half response at once. Frequencies in radians per sample.
//
// The amplitude is cut into stretches with a short Legendre series each (one term where it is constant, two where it is
// linear, about twenty where it is smooth); the transform of a Legendre polynomial is a spherical Bessel function:
//   integral over -1 .. 1 of P_n(u) exp(i x u) du = 2 i^n j_n(x)      [Abramowitz64] 10.1.14
// so no tap is integrated numerically and the cost is proportional to taps times terms.
// [Abramowitz64] M. Abramowitz, I. A. Stegun, Handbook of Mathematical Functions (1964).
#pragma once

#include <array>
#include <functional>
#include <span>
#include <vector>

namespace brisel {

inline constexpr int max_legendre_terms = 24;

/// Sum of coefficient[n] P_n(u) over lower .. upper, u running from -1 to 1; 0 elsewhere.
struct LegendreStretch {
  double lower;
  double upper;
  int terms;
  std::array<double, max_legendre_terms> coefficient;
};

/// Appends the straight line from `lower_value` to `upper_value`.
void add_line(std::vector<LegendreStretch> &stretches, double lower, double upper, double lower_value,
              double upper_value);
/// Appends a smooth amplitude to rounding error, cut into as many stretches as it needs. `steepness` bounds its
/// relative change over a relative change of w, far from any pole: the noise that rounding w puts into its values.
void add_smooth(std::vector<LegendreStretch> &stretches, double lower, double upper,
                const std::function<double(double)> &amplitude, double steepness);

enum class TapSymmetry { cosine, sine };
/// Adds the taps of the stretches to the half response, index 0 at the centre: tap k is that at t = k for an odd
/// length, k + 1/2 for an even one. Errors stay below 1e-13 of the largest tap.
void add_fourier_taps(std::span<const LegendreStretch> stretches, TapSymmetry symmetry, bool odd_length,
                      std::span<double> half);

} // namespace brisel
