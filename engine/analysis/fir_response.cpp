// fir_response.cpp - three ways to sum the taps over a grid, and what is made of the sums.
//
// From 0 to half the sampling frequency the points divide the circle: the taps are folded modulo their number and one
// transform gives all points. Any other linear grid takes the chirp-z transform [Rabiner69]: i k = (i^2 + k^2 -
// (i - k)^2) / 2 turns the sum into a convolution. Its phases grow with the square of the index, so they are reduced to
// a turn in fixed point before a sine is taken. On a logarithmic grid the sums are run tap by tap.
//
// [Rabiner69] L. R. Rabiner, R. W. Schafer, C. M. Rader, The chirp z-transform algorithm, IEEE Trans. AU-17, 1969.
#include "engine/analysis/fir_response.h"

#include "engine/analysis/trigonometric_sums.h"

#include <unsupported/Eigen/FFT>

#include <algorithm>

namespace brisel {

using Complex = std::complex<double>;

static std::size_t largest_factor(std::size_t n) {
  std::size_t largest = 1;
  for (std::size_t p = 2; p * p <= n; ++p) {
    while (n % p == 0) {
      largest = p;
      n /= p;
    }
  }
  return std::max(largest, n);
}

// The library's transform of a length with a large prime factor takes the time of that factor squared.
static constexpr std::size_t fast_factor = 32;

static std::size_t fast_length(std::size_t n) {
  while (largest_factor(n) > 5) ++n;
  return n;
}

static void transform_folded(std::span<const double> taps, std::span<Complex> sums) {
  const std::size_t period = 2 * (sums.size() - 1);
  std::vector<double> folded(period);
  for (std::size_t first = 0; first < taps.size(); first += period) {
    const std::size_t count = std::min(period, taps.size() - first);
    for (std::size_t k = 0; k < count; ++k) folded[k] += taps[first + k];
  }
  Eigen::FFT<double> fft;
  fft.SetFlag(Eigen::FFT<double>::HalfSpectrum);
  std::vector<Complex> spectrum;
  fft.fwd(spectrum, folded);
  std::copy(spectrum.begin(), spectrum.end(), sums.begin());
}

static void chirp_transform(std::span<const double> taps, const FrequencyGrid &grid, std::span<Complex> sums) {
  const std::size_t n = taps.size();
  const std::size_t points = sums.size();
  const std::size_t length = fast_length(n + points - 1);
  const Turns half_step(grid.step / 2);
  const Turns start(grid.start);

  std::vector<Complex> chirp(length); // e^(j pi step m^2), m = 1 - n .. points - 1, cyclic
  for (std::size_t m = 0; m < std::max(n, points); ++m) {
    const Complex value = phasor(half_step.times(m * m));
    if (m < points) chirp[m] = value;
    if (m > 0 && m < n) chirp[length - m] = value;
  }
  std::vector<Complex> turned(length);
  for (std::size_t k = 0; k < n; ++k) {
    turned[k] = taps[k] * phasor(-(start.times(k) + half_step.times(k * k)));
  }

  Eigen::FFT<double> fft;
  std::vector<Complex> chirp_spectrum, spectrum;
  fft.fwd(chirp_spectrum, chirp);
  fft.fwd(spectrum, turned);
  // A forward transform of the conjugate is an inverse one; that way the library makes one table of sines, not two.
  for (std::size_t i = 0; i < length; ++i) spectrum[i] = std::conj(spectrum[i] * chirp_spectrum[i]);
  fft.fwd(turned, spectrum);
  for (std::size_t i = 0; i < points; ++i) {
    sums[i] = std::conj(turned[i] * chirp[i]) / static_cast<double>(length);
  }
}

// Splits the taps into sums and differences about their middle; `cosine` belongs to the even, `sine` to the odd part.
struct Halves {
  std::vector<double> cosine;
  std::vector<double> sine;
  bool odd_length;
  bool has_even = false;
  bool has_odd = false;
};

static Halves split_about_middle(std::span<const double> taps) {
  const std::size_t n = taps.size();
  Halves halves{.cosine = {}, .sine = {}, .odd_length = n % 2 == 1};
  halves.cosine.reserve(n / 2 + 1);
  halves.sine.reserve(n / 2 + 1);
  if (halves.odd_length) {
    halves.cosine.push_back(taps[n / 2]);
    halves.sine.push_back(0);
    halves.has_even = taps[n / 2] != 0;
  }
  for (std::size_t k = (n + 1) / 2; k < n; ++k) {
    const double upper = taps[k];
    const double lower = taps[n - 1 - k];
    halves.cosine.push_back(upper + lower);
    halves.sine.push_back(upper - lower);
    halves.has_even |= upper != -lower;
    halves.has_odd |= upper != lower;
  }
  return halves;
}

static void sum_directly(const Halves &halves, std::span<const double> points, std::span<Complex> sums) {
  std::vector<double> values(points.size());
  std::fill(sums.begin(), sums.end(), 0);
  if (halves.has_even) {
    trigonometric_sums(halves.cosine, halves.odd_length ? SumKind::cosine : SumKind::half_cosine, points, values);
    for (std::size_t i = 0; i < sums.size(); ++i) sums[i].real(values[i]);
  }
  if (halves.has_odd) {
    trigonometric_sums(halves.sine, halves.odd_length ? SumKind::sine : SumKind::half_sine, points, values);
    for (std::size_t i = 0; i < sums.size(); ++i) sums[i].imag(-values[i]);
  }
}

// e^(-j w_i (n - 1) / 2): the delay of the middle of n taps.
class MiddleDelay {
public:
  MiddleDelay(std::size_t taps, const FrequencyGrid &grid)
      : twice(taps - 1), grid(grid), half_start(grid.start / 2), half_step(grid.step / 2) {}
  Complex operator()(std::size_t i) const {
    if (grid.linear) return std::conj(phasor(half_start.times(twice) + half_step.times(twice * i)));
    const long double turn = 2 * std::numbers::pi_v<long double>;
    const long double angle = grid.points[i] * (static_cast<long double>(twice) / 2);
    return std::polar(1.0, -static_cast<double>(angle - turn * std::floor(angle / turn + 0.5L)));
  }

private:
  std::uint64_t twice;
  const FrequencyGrid &grid;
  Turns half_start, half_step;
};

void centred_response(std::span<const double> taps, const FrequencyGrid &grid, std::span<Complex> sums) {
  const Halves halves = split_about_middle(taps);
  if (!grid.linear) return sum_directly(halves, grid.points, sums);

  if (grid.half_circle && largest_factor(2 * (sums.size() - 1)) <= fast_factor) {
    transform_folded(taps, sums);
  } else {
    chirp_transform(taps, grid, sums);
  }
  const MiddleDelay delay(taps.size(), grid);
  for (std::size_t i = 0; i < sums.size(); ++i) {
    sums[i] *= std::conj(delay(i));
    if (!halves.has_even) sums[i].real(0);
    if (!halves.has_odd) sums[i].imag(0);
  }
}

void fir_frequency_response(std::span<const double> taps, double gain, GroupDelay group_delay,
                            double seconds_per_sample, const FrequencyGrid &grid, const FrequencyResponse &out) {
  const double middle = 0.5 * static_cast<double>(taps.size() - 1);
  const std::size_t points = grid.points.size();
  std::vector<Complex> centred(points), derivative;
  centred_response(taps, grid, centred);
  if (group_delay == GroupDelay::computed) {
    std::vector<double> moments(taps.size());
    for (std::size_t k = 0; k < taps.size(); ++k) moments[k] = (static_cast<double>(k) - middle) * taps[k];
    derivative.resize(points);
    centred_response(moments, grid, derivative);
  }

  double floor = 0;
  if (group_delay == GroupDelay::computed)
    for (const double h : taps) floor += rounding_floor * std::abs(h);
  const MiddleDelay delay(taps.size(), grid);
  for (std::size_t i = 0; i < points; ++i) {
    out.set(i, centred[i] * delay(i), gain);
    if (out.magnitude[i] == 0 || std::abs(centred[i]) < floor) {
      out.repeat_group_delay(i);
      continue;
    }
    // The response is e^(-j w middle) times the centred sum, whose own delay is Re(derivative sum / sum).
    const double own = group_delay == GroupDelay::computed ? (derivative[i] / centred[i]).real() : 0;
    out.group_delay[i] = (middle + own) * seconds_per_sample;
  }
}

void fir_time_response(std::span<const double> taps, double gain, const TimeResponse &out) {
  double sum = 0;
  for (std::size_t k = 0; k < out.impulse.size(); ++k) {
    if (k < taps.size()) {
      out.impulse[k] = gain * taps[k];
      sum += out.impulse[k];
    } else {
      out.impulse[k] = out.impulse[k - 1]; // Kept: the last tap goes on instead of zeros; only the taps are plotted
    }
    out.step[k] = sum;
  }
}

} // namespace brisel
