// exchange_taps.cpp - from a levelled reference to taps.
//
// The series comes from values of the polynomial at r points spread over all frequencies. Where P is large or steep,
// between the bands, these values have lost digits that the transform spreads over every tap; so what the series misses
// at the reference is interpolated in its turn, transformed and added.
#include "engine/fir/exchange_taps.h"

#include "engine/analysis/trigonometric_sums.h"
#include "engine/fir/barycentric.h"

#include <algorithm>
#include <cmath>

namespace brisel {

constexpr int corrections = 2;

// Coefficients a[k] of sum a[k] cos(2 pi k f), k < r, of an interpolant of degree r - 1: the inverse transform of its
// values at 2 r - 1 points of the circle, which are even.
static std::vector<double> transformed(const Interpolant &p) {
  const std::size_t r = p.node.size() - 1;
  const double points = static_cast<double>(2 * r - 1);
  std::vector<double> w(r), x(r), value(r), series(r);
  for (std::size_t k = 0; k < r; k++) {
    w[k] = two_pi * static_cast<double>(k) / points;
    x[k] = std::cos(w[k]);
  }
  p.evaluate_between_bands(x, value);
  for (std::size_t k = 1; k < r; k++) value[k] *= 2;
  trigonometric_sums(value, SumKind::cosine, w, series);
  for (std::size_t k = 0; k < r; k++) series[k] *= (k == 0 ? 1 : 2) / points;
  return series;
}

std::vector<double> levelled_taps(const BandPlan &plan, const DesignGrid &reference) {
  Interpolant p;
  std::vector<double> w;
  for (const double f : reference.frequency) {
    w.push_back(two_pi * f);
    p.node.push_back(std::cos(two_pi * f));
  }
  p.find_coefficients();
  p.level(reference.desired, reference.weight);
  std::vector<double> series = transformed(p);
  const std::vector<double> wanted = p.value;
  for (int round = 0; round < corrections; round++) {
    std::vector<double> missing(w.size());
    trigonometric_sums(series, SumKind::cosine, w, missing);
    for (std::size_t k = 0; k < w.size(); k++) missing[k] = wanted[k] - missing[k];
    p.level(missing, reference.weight); // of degree r - 1 again: what is left of rounding in r + 1 values is not
    const std::vector<double> more = transformed(p);
    for (std::size_t k = 0; k < series.size(); k++) series[k] += more[k];
  }
  return remez_to_taps(plan, std::move(series));
}

} // namespace brisel
