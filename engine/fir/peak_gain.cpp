// peak_gain.cpp - a transform finds the peaks, direct sums around the largest of them refine it.
#include "engine/fir/peak_gain.h"

#include "engine/analysis/trigonometric_sums.h"

#include <unsupported/Eigen/FFT>

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <vector>

namespace brisel {

namespace {

struct Peak {
  double place; // radians per sample
  double height;
};

// The top of the parabola through three even steps around the largest of them.
Peak parabola_top(double place, double step, double left, double top, double right) {
  const double curvature = left + right - 2 * top;
  if (!(curvature < 0)) return {place, top};
  const double t = (left - right) / 2 / curvature;
  return {place + t * step, top + (right - left) / 4 * t};
}

// Closes in on a peak within `step` of the place.
Peak refined(std::span<const double> taps, Peak peak, double step) {
  constexpr int points = 9;
  for (int round = 0; round < 4; round++, step /= 4) {
    std::array<double, points> w{}, height{};
    std::array<std::complex<double>, points> sums;
    for (int i = 0; i < points; i++) w[i] = peak.place + step * (i - points / 2) / (points / 2);
    fourier_sums(taps, w, sums);
    std::transform(sums.begin(), sums.end(), height.begin(), [](std::complex<double> h) { return std::abs(h); });
    const auto top = std::max_element(height.begin(), height.end()) - height.begin();
    peak = top == 0 || top == points - 1
               ? Peak{w[top], height[top]}
               : parabola_top(w[top], w[1] - w[0], height[top - 1], height[top], height[top + 1]);
  }
  return peak;
}

} // namespace

double peak_gain(std::span<const double> taps) {
  const std::size_t points = std::bit_ceil(taps.size() * 16), half = points / 2;
  std::vector<double> in(points);
  std::copy(taps.begin(), taps.end(), in.begin());
  std::vector<std::complex<double>> spectrum;
  Eigen::FFT<double> fft;
  fft.SetFlag(Eigen::FFT<double>::HalfSpectrum);
  fft.fwd(spectrum, in);
  const auto height = [&](std::size_t k) { return std::abs(spectrum[k > half ? points - k : k]); };
  const double step = std::numbers::pi / static_cast<double>(half);
  std::vector<Peak> peaks;
  for (std::size_t k = 0; k <= half; k++) {
    const double left = height(k == 0 ? 1 : k - 1), here = height(k), right = height(k + 1);
    if (here >= left && here >= right)
      peaks.push_back(parabola_top(static_cast<double>(k) * step, step, left, here, right));
  }
  // Parabolas are right to a few parts in 10^5 of a ripple; more than a few peaks so nearly equal need no telling
  // apart.
  const auto refine_count = static_cast<std::ptrdiff_t>(std::min<std::size_t>(8, peaks.size()));
  std::partial_sort(peaks.begin(), peaks.begin() + refine_count, peaks.end(),
                    [](const Peak &a, const Peak &b) { return a.height > b.height; });
  double largest = 0;
  for (std::ptrdiff_t i = 0; i < refine_count; i++) largest = std::max(largest, refined(taps, peaks[i], step).height);
  return largest;
}

} // namespace brisel
