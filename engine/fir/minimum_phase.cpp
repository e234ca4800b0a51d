// minimum_phase.cpp - the homomorphic method: the phase of a minimum phase filter is the Hilbert transform of the
// logarithm of its magnitude, and a logarithm that is smooth has a cepstrum that dies away inside the transform.
//
// It is not smooth where zeros lie on or near the unit circle, as those of a stopband do. These zeros are found, their
// factors divided out of the magnitude before the logarithm is taken, and their own phase, which is known, is put back.
// What is left has its zeros so far from the circle that the transform sees the end of its cepstrum.
//
// A zero that lies on the circle is an edge between inside and outside that rounding crosses. The magnitude wanted is
// therefore sqrt(A^2 + e^2) with an e far below every stopband: it belongs to a filter of the same length, whose zeros
// all lie off the circle. The spectral factor, whose squared magnitude is A + raise, is lifted by such an e as well.
//
// [Oppenheim99] A. V. Oppenheim, R. W. Schafer, Discrete-Time Signal Processing, 2nd ed., ch. 11 and 12.
// [Herrmann70] O. Herrmann, W. Schuessler, Design of nonrecursive digital filters with minimum phase, El. Lett. 6,
// 1970.
#include "engine/fir/minimum_phase.h"

#include <unsupported/Eigen/FFT>

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace brisel {

namespace {

constexpr double pi = std::numbers::pi;
constexpr double magnitude_floor = 1e-11; // e, as part of the largest magnitude
constexpr double response_floor = 1e-15;  // the same of a response whose root is taken
constexpr int first_density = 64;         // points of the transform a tap
constexpr int passes = 4;                 // each with twice the points
constexpr std::size_t max_points = std::size_t{1} << 21;
constexpr double check_shift = 0.25; // of the points at which the result is judged

template <class Real> using Spectrum = std::vector<std::complex<Real>>;

// Values at w_k = 2 pi (k + shift) / points of the taps' transform. The taps are exact; how exact the values are where
// they are small decides how exact the logarithm is.
template <class Real> Spectrum<Real> transform(std::span<const double> taps, std::size_t points, Real shift) {
  Spectrum<Real> in(points), out;
  for (std::size_t n = 0; n < taps.size(); n++)
    in[n] = Real(taps[n]) * std::polar<Real>(1, -2 * std::numbers::pi_v<Real> * shift * static_cast<Real>(n) /
                                                    static_cast<Real>(points));
  Eigen::FFT<Real> fft;
  fft.fwd(out, in);
  return out;
}

constexpr int margin = 8; // points beyond either end of the half circle, for polynomials through neighbours

// The response without the delay of its middle, real, at w_k = 2 pi (k + 1/2) / points, k from -margin on to margin
// points behind pi.
class Amplitude {
public:
  Amplitude(std::span<const double> taps, bool symmetric, std::size_t points, long double shift = 0.5L)
      : half(points / 2), values(half + 2 * margin) {
    const auto spectrum = transform<long double>(taps, points, shift);
    const long double middle = (static_cast<long double>(taps.size()) - 1) / 2;
    for (std::size_t k = 0; k < half; k++) {
      const long double w = 2 * std::numbers::pi_v<long double> * (static_cast<long double>(k) + shift) /
                            static_cast<long double>(points);
      const auto turned = spectrum[k] * std::polar(1.0L, w * middle);
      values[margin + k] = static_cast<double>(symmetric ? turned.real() : turned.imag());
    }
    const double at_zero = symmetric ? 1 : -1, at_pi = symmetric == (taps.size() % 2 != 0) ? 1 : -1;
    for (std::size_t k = 0; k < margin; k++) {
      values[margin - 1 - k] = at_zero * values[margin + k];
      values[margin + half + k] = at_pi * values[margin + half - 1 - k];
    }
  }
  double operator[](std::ptrdiff_t k) const { return values[static_cast<std::size_t>(k + margin)]; }
  std::ptrdiff_t size() const { return static_cast<std::ptrdiff_t>(half); }
  void add(double raise) {
    for (double &v : values) v += raise;
  }
  double peak() const {
    double largest = 0;
    for (const double v : values) largest = std::max(largest, std::abs(v));
    return largest;
  }

private:
  std::size_t half;
  std::vector<double> values;
};

// The polynomial through points k - 4 .. k + 5, in steps from point k: the response between the points, and beside the
// unit circle too.
class Neighbourhood {
public:
  using Complex = std::complex<double>;

  Neighbourhood(const Amplitude &a, std::ptrdiff_t k) {
    for (int i = 0; i < count; i++) difference[i] = a[k + node(i)];
    for (int order = 1; order < count; order++)
      for (int i = count - 1; i >= order; i--)
        difference[i] = (difference[i] - difference[i - 1]) / (node(i) - node(i - order));
  }
  void evaluate(Complex t, Complex &value, Complex &slope) const {
    value = difference[count - 1];
    slope = 0;
    for (int i = count - 2; i >= 0; i--) {
      slope = slope * (t - double(node(i))) + value;
      value = value * (t - double(node(i))) + difference[i];
    }
  }
  /// Where the polynomial takes the value `target`, by Newton's method from `t`.
  std::optional<Complex> place(Complex target, Complex t) const {
    for (int step = 0; step < 60; step++) {
      Complex value, slope;
      evaluate(t, value, slope);
      if (slope == 0.0) return t;
      const Complex move = (value - target) / slope;
      t -= move;
      if (!(std::abs(t) < 16)) return std::nullopt;
      if (std::abs(move) < 1e-14) return t;
    }
    return t; // a double place, which Newton's method approaches slowly
  }

private:
  static constexpr int count = 10;
  static constexpr int node(int i) { return i - 4; }
  std::array<double, count> difference;
};

// A zero of the minimum phase filter near the unit circle; a complex one stands for itself and its conjugate.
struct NearZero {
  double radius, angle;
  bool real;
};

constexpr double same_place = 1e-7; // in steps of the transform

// `t` in steps from point k: u + jv is the zero e^(-v) at the angle u. Those below 0 and beyond pi are the conjugates
// of others.
void keep_zero(std::ptrdiff_t k, std::complex<double> t, std::ptrdiff_t half, std::vector<NearZero> &zeros) {
  const double step = pi / static_cast<double>(half), u = static_cast<double>(k) + 0.5 + t.real();
  const double end = static_cast<double>(half);
  if (u < -same_place || u > end + same_place) return;
  const bool real = u < same_place || u > end - same_place;
  zeros.push_back({std::exp(-std::abs(t.imag()) * step), real ? (u < 1 ? 0 : pi) : u * step, real});
}

// Zeros near the circle of the filter whose squared magnitude is the product of A - target over the targets.
std::vector<NearZero> zeros_near_circle(const Amplitude &a, std::span<const std::complex<double>> targets) {
  std::vector<NearZero> zeros;
  const std::ptrdiff_t half = a.size();
  const bool crossings = targets.size() > 1; // a response whose root is taken has none
  for (std::ptrdiff_t k = -1; k <= half; k++) {
    const double left = a[k - 1], here = a[k], right = a[k + 1];
    if (crossings && (here > 0) != (right > 0)) { // one place, inside for the one target, outside for the other
      const Neighbourhood near(a, k);
      const double start = here / (here - right);
      for (const auto target : targets) {
        const auto t = near.place(target, {start, target.imag() / (right - here)});
        if (t && t->imag() > 0 && std::abs(t->real() - 0.5) < 0.6) {
          keep_zero(k, *t, half, zeros);
          break;
        }
      }
    } else if ((left > 0) == (here > 0) && (here > 0) == (right > 0) && std::abs(here) < std::abs(left) &&
               std::abs(here) <= std::abs(right)) {
      const Neighbourhood near(a, k);
      const double slope = (right - left) / 2, curvature = (right + left) / 2 - here;
      const double lowest = -slope / (2 * curvature), value = here + slope * lowest / 2;
      for (const auto target : targets) {
        std::complex<double> side = std::sqrt((target - value) / curvature);
        if (side.imag() < 0) side = -side;
        auto t = near.place(target, lowest + side);
        if (t && !crossings && t->imag() < 0) t = std::conj(*t);
        if (t && t->imag() >= 0 && std::abs(t->real()) < 2) keep_zero(k, *t, half, zeros);
      }
    }
  }
  return zeros;
}

// Product of the factors of the near zeros on the half circle: logarithm of its magnitude, and its direction.
struct NearPart {
  std::vector<double> log_magnitude;
  std::vector<std::complex<double>> direction;
};
NearPart near_part(std::span<const NearZero> zeros, std::size_t half, const Progress &progress) {
  std::vector<double> c(half), s(half), re(half, 1.0), im(half, 0.0);
  for (std::size_t k = 0; k < half; k++) {
    const double w = pi * (static_cast<double>(k) + 0.5) / static_cast<double>(half);
    c[k] = std::cos(w);
    s[k] = std::sin(w);
  }
  NearPart part{std::vector<double>(half, 0.0), {}};
  const auto settle = [&] {
    for (std::size_t k = 0; k < half; k++) {
      const double size = std::hypot(re[k], im[k]);
      if (size == 0) continue;
      part.log_magnitude[k] += std::log(size);
      re[k] /= size;
      im[k] /= size;
    }
  };
  for (std::size_t i = 0; i < zeros.size(); i++) {
    // 1 - p z^-1 + q z^-2
    const double p =
        zeros[i].real ? zeros[i].radius * std::cos(zeros[i].angle) : 2 * zeros[i].radius * std::cos(zeros[i].angle);
    const double q = zeros[i].real ? 0 : zeros[i].radius * zeros[i].radius;
    for (std::size_t k = 0; k < half; k++) {
      const double x = 1 - p * c[k] + q * (2 * c[k] * c[k] - 1), y = p * s[k] - 2 * q * s[k] * c[k];
      const double product = re[k] * x - im[k] * y;
      im[k] = re[k] * y + im[k] * x;
      re[k] = product;
    }
    if (i % 16 != 15) continue; // before the products leave the range of a double
    settle();
    if (!progress(0.1 + 0.6 * static_cast<double>(i) / static_cast<double>(zeros.size()))) break;
  }
  settle();
  part.direction.resize(half);
  for (std::size_t k = 0; k < half; k++) part.direction[k] = {re[k], im[k]};
  return part;
}

// The first `length` taps of the minimum phase filter with these magnitudes at w_k = pi (k + 1/2) / half.
std::vector<double> taps_of(std::span<const double> magnitude, const NearPart &near, std::size_t length) {
  const std::size_t half = magnitude.size(), points = 2 * half;
  const auto turn = [&](std::size_t n) {
    return std::polar(1.0, pi * static_cast<double>(n) / static_cast<double>(points));
  };
  Spectrum<double> spectrum(points), other;
  for (std::size_t k = 0; k < half; k++)
    spectrum[k] = spectrum[points - 1 - k] = std::log(magnitude[k]) - near.log_magnitude[k];
  Eigen::FFT<double> fft;
  fft.inv(other, spectrum);
  // The cepstrum, folded: twice its causal part. The turns belong to the half step of the grid.
  other[0] = other[0].real();
  for (std::size_t n = 1; n < half; n++) other[n] = 2 * (other[n] * turn(n)).real() * std::conj(turn(n));
  std::fill(other.begin() + static_cast<std::ptrdiff_t>(half), other.end(), 0.0);
  fft.fwd(spectrum, other);
  for (std::size_t k = 0; k < half; k++) {
    spectrum[k] = magnitude[k] * near.direction[k] * std::polar(1.0, spectrum[k].imag());
    spectrum[points - 1 - k] = std::conj(spectrum[k]);
  }
  fft.inv(other, spectrum);
  std::vector<double> taps(length);
  for (std::size_t n = 0; n < length; n++) taps[n] = (other[n] * turn(n)).real();
  return taps;
}

// Largest difference between what is wanted of a response and what is got of the magnitude of the new taps, at points
// between those at which the taps were computed. Infinite when a tap is not finite.
template <class Wanted, class Got>
double largest_error(const Amplitude &a, std::span<const double> taps, std::size_t points, Wanted wanted, Got got) {
  const auto spectrum = transform<double>(taps, points, check_shift);
  double error = 0;
  for (std::ptrdiff_t k = 0; k < a.size(); k++)
    error = std::max(error, std::abs(wanted(a[k]) - got(std::abs(spectrum[static_cast<std::size_t>(k)]))));
  const bool finite = std::all_of(taps.begin(), taps.end(), [](double h) { return std::isfinite(h); });
  return finite ? error : HUGE_VAL;
}

std::size_t check_points(std::size_t length) {
  return std::bit_ceil(length * 16);
}

// Between the points as well.
AmplitudeRange extremes(const Amplitude &a) {
  AmplitudeRange found{HUGE_VAL, -HUGE_VAL};
  for (std::ptrdiff_t k = 0; k < a.size(); k++) {
    const double left = a[k - 1], here = a[k], right = a[k + 1];
    const bool lowest = here <= left && here <= right, highest = here >= left && here >= right;
    double value = here;
    if (lowest != highest) {
      const Neighbourhood near(a, k);
      std::complex<double> at, slope;
      const double curvature = left + right - 2 * here;
      double t = (left - right) / 2 / curvature;
      constexpr double h = 1e-3;
      for (int step = 0; step < 2; step++) { // to where the slope vanishes
        std::complex<double> before, after;
        near.evaluate(t - h, at, before);
        near.evaluate(t + h, at, after);
        near.evaluate(t, at, slope);
        const double bend = (after.real() - before.real()) / (2 * h);
        if (bend != 0) t = std::clamp(t - slope.real() / bend, -1.0, 1.0);
      }
      near.evaluate(t, at, slope);
      value = at.real();
    }
    found.smallest = std::min(found.smallest, value);
    found.largest = std::max(found.largest, value);
  }
  return found;
}

// Computes the taps with a longer transform each time until they have the magnitude that is wanted.
template <class Attempt> std::optional<MinimumPhase> refine(std::size_t length, Attempt attempt) {
  std::optional<MinimumPhase> best;
  std::size_t before = 0;
  for (int pass = 0; pass < passes; pass++) {
    const std::size_t points = std::min(max_points, std::bit_ceil(length * first_density) << pass);
    if (points == before) break;
    before = points;
    auto found = attempt(points);
    if (!found) return std::nullopt;
    if (!best || found->error < best->error) best = std::move(found);
    if (best->error < 3 * magnitude_floor) break;
  }
  return best && best->error <= minimum_phase_tolerance ? best : std::nullopt;
}

} // namespace

std::optional<MinimumPhase> minimum_phase(std::span<const double> taps, bool symmetric, const Progress &progress) {
  const std::size_t length = taps.size();
  const Amplitude checked(taps, symmetric, check_points(length), check_shift);
  const double largest = checked.peak();
  if (!(largest > 0) || !std::isfinite(largest)) return std::nullopt;
  return refine(length, [&](std::size_t points) -> std::optional<MinimumPhase> {
    const Amplitude a(taps, symmetric, points);
    if (!progress(0.1)) return std::nullopt;
    const double floor = magnitude_floor * largest;
    const std::array<std::complex<double>, 2> targets{{{0, floor}, {0, -floor}}};
    const NearPart near = near_part(zeros_near_circle(a, targets), points / 2, progress);
    if (!progress(0.7)) return std::nullopt;
    std::vector<double> magnitude(points / 2);
    for (std::size_t k = 0; k < magnitude.size(); k++)
      magnitude[k] = std::hypot(a[static_cast<std::ptrdiff_t>(k)], floor);
    MinimumPhase found{taps_of(magnitude, near, length), 0, 0};
    found.error = largest_error(
                      checked, found.taps, check_points(length), [](double v) { return std::abs(v); },
                      [](double m) { return m; }) /
                  largest;
    if (!progress(0.9)) return std::nullopt;
    return found;
  });
}

std::optional<MinimumPhase> spectral_factor(std::span<const double> taps, const Progress &progress) {
  const std::size_t length = (taps.size() + 1) / 2;
  const Amplitude checked(taps, true, check_points(taps.size()), check_shift);
  const double largest = checked.peak();
  if (!(largest > 0) || !std::isfinite(largest)) return std::nullopt;
  return refine(taps.size(), [&](std::size_t points) -> std::optional<MinimumPhase> {
    Amplitude a(taps, true, points);
    if (!progress(0.1)) return std::nullopt;
    const double raise = std::max(0.0, -extremes(a).smallest), floor = response_floor * largest;
    a.add(raise + floor);
    const std::array<std::complex<double>, 1> targets{0.0};
    const NearPart near = near_part(zeros_near_circle(a, targets), points / 2, progress);
    if (!progress(0.7)) return std::nullopt;
    std::vector<double> magnitude(points / 2);
    for (std::size_t k = 0; k < magnitude.size(); k++)
      magnitude[k] = std::sqrt(std::max(a[static_cast<std::ptrdiff_t>(k)], floor / 2) / (1 + raise));
    MinimumPhase found{taps_of(magnitude, near, length), 0, raise};
    found.error = largest_error(
                      checked, found.taps, check_points(taps.size()),
                      [raise](double v) { return (v + raise) / (1 + raise); }, [](double m) { return m * m; }) /
                  largest;
    if (!progress(0.9)) return std::nullopt;
    return found;
  });
}

AmplitudeRange amplitude_range(std::span<const double> taps) {
  return extremes(Amplitude(taps, true, std::bit_ceil(taps.size() * first_density)));
}

} // namespace brisel
