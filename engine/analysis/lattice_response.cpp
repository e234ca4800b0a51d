// lattice_response.cpp - the lattice and ladder recursions on the unit circle and in time.
//
// [Gray73] A. H. Gray and J. D. Markel, Digital lattice and ladder filter synthesis, IEEE Trans. AU-21, 1973.
#include "engine/analysis/lattice_response.h"

#include "engine/analysis/time_response.h"

#include <algorithm>
#include <vector>

namespace brisel {

namespace {

using Complex = std::complex<double>;

// A function of w and its derivative.
struct Jet {
  Complex value = 0;
  Complex slope = 0;
};
Jet operator+(const Jet &a, const Jet &b) {
  return {a.value + b.value, a.slope + b.slope};
}
Jet operator*(double a, const Jet &b) {
  return {a * b.value, a * b.slope};
}
Jet operator*(const Jet &a, const Jet &b) {
  return {a.value * b.value, a.value * b.slope + a.slope * b.value};
}
Jet delay_at(double w) {
  const Complex value = std::polar(1.0, -w);
  return {value, Complex(0, -1) * value};
}

// H = factor * n / d, `size` being the sum of the magnitudes of the terms of n. Phase and group delay stay where H
// vanishes, where d vanishes the magnitude stays too.
void set_quotient(std::size_t i, const Jet &n, double size, const Jet &d, double factor, double sample_rate,
                  const FrequencyResponse &out) {
  if (d.value == 0.0) {
    out.magnitude[i] = i > 0 ? out.magnitude[i - 1] : 0;
    out.repeat_phase(i);
    out.repeat_group_delay(i);
    return;
  }
  out.set(i, n.value / d.value, factor);
  if (std::abs(n.value) > rounding_floor * size)
    out.group_delay[i] = ((d.slope / d.value).imag() - (n.slope / n.value).imag()) * two_pi / sample_rate;
  else
    out.repeat_group_delay(i);
}

} // namespace

void lattice_frequency_response(const LatticeEntry &lattice, std::span<const double> points,
                                const FrequencyResponse &out) {
  for (std::size_t i = 0; i < points.size(); ++i) {
    const Jet delay = delay_at(points[i]);
    Jet a{1}, b{1}; // A_m and B_m = z^-m A_m(1/z)
    Jet sum;
    double size = 0;
    auto tap = [&](int m) {
      sum = sum + lattice.gamma[m] * b;
      size += std::abs(lattice.gamma[m] * b.value);
    };
    tap(0);
    for (int m = 1; m <= lattice.order; ++m) {
      const Jet delayed = delay * b;
      b = lattice.kappa[m] * a + delayed;
      a = a + lattice.kappa[m] * delayed;
      tap(m);
    }
    for (int m = lattice.order + 1; m <= lattice.order + lattice.lead; ++m) {
      b = delay * b;
      tap(m);
    }
    set_quotient(i, sum, size, a, lattice.gain, lattice.sample_rate, out);
  }
}

void lattice_time_response(const LatticeEntry &lattice, const TimeResponse &out) {
  const int order = lattice.order;
  const int last = order + lattice.lead;
  time_response(lattice.gain, out, [&]<class Real>(Real) {
    return [&, order, last, backward = std::vector<Real>(last + 1)](Real x) mutable { // B_m of the sample before
      Real sum = 0;
      for (int m = last; m > order; --m) {
        backward[m] = backward[m - 1];
        sum += lattice.gamma[m] * backward[m];
      }
      Real forward = x;
      for (int m = order; m > 0; --m) {
        forward = clamp_sample<Real>(forward - lattice.kappa[m] * backward[m - 1]);
        backward[m] = clamp_sample<Real>(lattice.kappa[m] * forward + backward[m - 1]);
        sum += lattice.gamma[m] * backward[m];
      }
      backward[0] = forward;
      return clamp_sample<Real>(sum + lattice.gamma[0] * forward);
    };
  });
}

void ladder_frequency_response(const LadderEntry &ladder, std::span<const double> points,
                               const FrequencyResponse &out) {
  const double *alpha = ladder.alpha.data() + ladder.lead;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const Jet delay = delay_at(points[i]);
    const Jet x = ladder.form == 0 ? Jet{std::conj(delay.value), std::conj(delay.slope)} : delay;
    // From the innermost coefficient outwards as n / d, so that no division by 0 can come between.
    Jet n{alpha[2 * ladder.order]}, d{1};
    double n_size = std::abs(n.value), d_size = 1;
    for (int k = ladder.order; k > 0; --k) {
      const Jet inner = alpha[2 * k - 1] * (x * n) + d;
      const Jet outer = alpha[2 * k - 2] * inner + n;
      // Only the quotient counts.
      const double inner_size = std::abs(alpha[2 * k - 1]) * n_size + d_size;
      const double size = std::abs(alpha[2 * k - 2]) * inner_size + n_size;
      const double both = size + inner_size;
      const double scale = std::isfinite(both) ? std::ldexp(1.0, -std::ilogb(both)) : 1;
      n = scale * outer;
      d = scale * inner;
      n_size = scale * size;
      d_size = scale * inner_size;
    }
    if (ladder.lead > 0) {
      Jet taps{0};
      for (int k = ladder.lead - 1; k >= 0; --k) taps = delay * (taps + Jet{ladder.alpha[k]});
      n = n + taps * d;
      n_size += std::abs(taps.value) * d_size;
    }
    set_quotient(i, n, n_size, d, ladder.gain, ladder.sample_rate, out);
  }
}

} // namespace brisel
