// fir_lattice.cpp - J. D. Markel, A. H. Gray, Linear Prediction of Speech, ch. 5: step-up and step-down recursions.
#include "engine/analysis/fir_lattice.h"

#include "engine/analysis/fir_response.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace brisel {

FirLattice fir_lattice(std::span<const double> taps, double gain) {
  FirLattice lattice;
  if (taps.empty() || taps[0] == 0) {
    lattice.fault = LatticeFault::first_tap_zero;
    return lattice;
  }
  lattice.gain = gain * taps[0];
  lattice.reflection.resize(taps.size() - 1);
  std::vector<long double> a(taps.begin(), taps.end());
  for (long double &tap : a) tap /= taps[0];
  for (std::size_t m = a.size() - 1; m > 0; m--) {
    const long double k = a[m];
    lattice.reflection[m - 1] = static_cast<double>(k);
    // In the double that is kept: a step up from it could not tell the two halves apart either.
    if (std::fabs(lattice.reflection[m - 1]) == 1 || !std::isfinite(lattice.reflection[m - 1])) {
      lattice.fault = LatticeFault::unit_reflection;
      lattice.stage = static_cast<int>(m);
      return lattice;
    }
    const long double scale = 1 / ((1 - k) * (1 + k));
    for (std::size_t low = 1, high = m - 1; low <= high; low++, high--) {
      const long double x = a[low], y = a[high];
      a[low] = (x - k * y) * scale;
      a[high] = (y - k * x) * scale;
    }
  }
  return lattice;
}

template <class Real> std::vector<Real> lattice_fir_taps(std::span<const double> reflection) {
  std::vector<Real> taps{1};
  taps.reserve(reflection.size() + 1);
  for (const double k : reflection) {
    taps.push_back(0);
    // Both ends of A_(m-1) and its mirror image meet in the middle, so the step works in place.
    for (std::size_t low = 0, high = taps.size() - 1; low <= high; ++low, --high) {
      const Real a = taps[low];
      const Real b = taps[high];
      taps[low] = a + k * b;
      taps[high] = b + k * a;
    }
  }
  return taps;
}
template std::vector<double> lattice_fir_taps<double>(std::span<const double>);
template std::vector<long double> lattice_fir_taps<long double>(std::span<const double>);

static std::vector<long double> all_taps(const FirForm &form) {
  std::vector<long double> taps = form.lattice ? lattice_fir_taps<long double>(form.values)
                                               : std::vector<long double>(form.values.begin(), form.values.end());
  for (long double &tap : taps) tap *= form.gain;
  return taps;
}

double fir_digits_kept(const FirForm &source, const FirForm &changed) {
  std::vector<long double> expected = all_taps(source), got = all_taps(changed);
  const std::size_t length = std::max(expected.size(), got.size());
  expected.resize(length);
  got.resize(length);
  std::vector<double> taps(length), difference(length);
  for (std::size_t i = 0; i < length; i++) {
    taps[i] = static_cast<double>(expected[i]);
    difference[i] = static_cast<double>(got[i] - expected[i]);
    if (!std::isfinite(difference[i])) return 0;
  }
  std::vector<double> points(2 * length + 257);
  const FrequencyGrid grid = linear_grid(0, std::numbers::pi, 2 * std::numbers::pi, points);
  const auto peak = [&](std::span<const double> h) {
    std::vector<std::complex<double>> sums(points.size());
    centred_response(h, grid, sums);
    double largest = 0;
    for (const auto &value : sums) largest = std::max(largest, std::abs(value));
    return largest;
  };
  const double distance = peak(difference);
  if (distance == 0) return 16;
  const double digits = std::log10(peak(taps) / distance);
  return digits > 0 ? std::min(digits, 16.0) : 0;
}

std::vector<double> mirrored_taps(std::span<const double> taps, int sign, double tolerance, int &worst) {
  double largest = 0;
  for (const double tap : taps) largest = std::max(largest, std::fabs(tap));
  std::vector<double> mirrored(taps.size());
  for (std::size_t i = 0; i < taps.size(); i++) {
    mirrored[i] = 0.5 * (taps[i] + sign * taps[taps.size() - 1 - i]);
    if (std::fabs(mirrored[i] - taps[i]) <= tolerance * largest) continue;
    worst = static_cast<int>(i);
    return {};
  }
  return mirrored;
}

} // namespace brisel
