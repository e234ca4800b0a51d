#include "engine/analysis/ratio_response.h"

#include "engine/analysis/time_response.h"
#include "engine/analysis/trigonometric_sums.h"

#include <algorithm>
#include <vector>

namespace brisel {

using Complex = std::complex<double>;

namespace {

int order_of(const RatioEntry &ratio) {
  return std::max<int>(ratio.numerator_order, ratio.denominator_order);
}

// A polynomial in z^-1 on the grid, and its derivative by w.
struct PolynomialValues {
  PolynomialValues(std::span<const double> c, std::span<const double> points)
      : value(points.size()), derivative(points.size()) {
    fourier_sums(c, points, value);
    std::vector<double> weighted(c.size());
    for (std::size_t k = 0; k < c.size(); ++k) weighted[k] = static_cast<double>(k) * c[k];
    fourier_sums(weighted, points, derivative);
    for (Complex &d : derivative) d = {d.imag(), -d.real()}; // times -j
  }
  double turning(std::size_t i) const { return (derivative[i] / value[i]).imag(); }

  std::vector<Complex> value, derivative;
};

} // namespace

void ratio_frequency_response(const RatioEntry &ratio, std::span<const double> points, const FrequencyResponse &out) {
  const std::size_t terms = order_of(ratio) + 1;
  const PolynomialValues n(std::span(ratio.numerator).first(terms), points);
  const PolynomialValues d(std::span(ratio.denominator).first(terms), points);
  double floor = 0;
  for (const double b : std::span(ratio.numerator).first(terms)) floor += rounding_floor * std::abs(b);
  double numerator_turning = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (std::abs(n.value[i]) > floor) numerator_turning = n.turning(i);
    double delay = n.value[i] != 0.0 ? -numerator_turning : 0;
    if (d.value[i] != 0.0) delay += d.turning(i);
    out.group_delay[i] = delay * two_pi / ratio.sample_rate;
    if (d.value[i] != 0.0) {
      out.set(i, n.value[i] / d.value[i], ratio.gain);
    } else {
      out.magnitude[i] = i > 0 ? out.magnitude[i - 1] : 0;
      out.repeat_phase(i);
    }
  }
}

void ratio_time_response(const RatioEntry &ratio, const TimeResponse &out) {
  const int order = order_of(ratio);
  const auto &b = ratio.numerator;
  const auto &a = ratio.denominator;
  time_response(ratio.gain, out, [&]<class Real>(Real) {
    return [&, order, s = std::vector<Real>(order + 2)](Real x) mutable {
      // Kept: a[0] multiplies where a division belongs, so the response is right only for a[0] = 1.
      const Real y = clamp_sample((x * b[0] + s[0]) * a[0]);
      for (int i = 0; i < order; ++i) s[i] = x * b[i + 1] + s[i + 1] - y * a[i + 1];
      return y;
    };
  });
}

} // namespace brisel
