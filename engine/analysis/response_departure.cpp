// response_departure.cpp - the points are packed around every root geometrically, because a response of narrow bands
// changes nowhere else; even steps alone would miss a band of a ten-thousandth of the sampling frequency altogether.
#include "engine/analysis/response_departure.h"

#include "engine/analysis/fir_response.h"
#include "engine/analysis/pole_zero_form.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace brisel {

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
// -100 dB of the peak, and half of it more: near a double zero a departure doubles from one point to the next.
constexpr double lowest_level = 0.5e-5;
constexpr int even_steps = 512;
constexpr int halvings = 60;
constexpr double step = 1.4142135623730951;

/// Frequencies of the comparison in radians per sample (z), or radians per second (s).
std::vector<double> packed_frequencies(Domain domain, const PoleZeroEntry &roots) {
  std::vector<double> places;
  double largest = 0;
  const auto add = [&](std::span<const std::complex<double>> list) {
    for (const auto &root : list) {
      largest = std::max(largest, std::abs(root));
      if (root.imag() >= 0) places.push_back(domain == Domain::z ? std::arg(root) : root.imag());
    }
  };
  add(std::span(roots.poles).first(static_cast<std::size_t>(pole_count(roots))));
  add(std::span(roots.zeros).first(static_cast<std::size_t>(zero_count(roots))));
  places.push_back(0);
  std::ranges::sort(places);
  places.erase(std::unique(places.begin(), places.end()), places.end());

  const double top = domain == Domain::z ? std::numbers::pi : 100 * std::max(largest, 1.0);
  std::vector<double> points;
  for (int i = 0; i <= even_steps; i++) points.push_back(top * i / even_steps);
  for (const double place : places) {
    points.push_back(place);
    double distance = top / 2;
    for (int k = 0; k < halvings; k++, distance /= step) {
      if (place + distance <= top) points.push_back(place + distance);
      if (place - distance >= 0) points.push_back(place - distance);
    }
  }
  return points;
}

Values plane_points(Domain domain, std::span<const double> frequencies, double factor) {
  Values x(frequencies.size());
  std::ranges::transform(frequencies, x.begin(), [&](double w) {
    return domain == Domain::z ? std::polar(1.0, w * factor) : std::complex<double>(0, w);
  });
  return x;
}

double departure(std::span<const std::complex<double>> source, std::span<const std::complex<double>> changed) {
  double peak = 0, worst = 0;
  for (const auto &value : source)
    if (std::isfinite(std::abs(value))) peak = std::max(peak, std::abs(value));
  for (std::size_t i = 0; i < source.size(); i++) {
    const double size = std::abs(source[i]);
    if (!std::isfinite(size) || size <= lowest_level * peak) continue;
    const double error = std::abs(changed[i] - source[i]) / size;
    if (!std::isfinite(error)) return infinite;
    worst = std::max(worst, error);
  }
  return 20 * std::log10(1 + worst);
}

std::vector<long double> taps_of(const FirForm &form) {
  if (form.lattice) return lattice_fir_taps<long double>(form.values);
  return {form.values.begin(), form.values.end()};
}

} // namespace

double response_departure(const FormOfSystem &source, double source_rate, const FormOfSystem &changed,
                          double changed_rate) {
  const auto roots = roots_of(source);
  const std::vector<double> points = packed_frequencies(source.domain, roots.value_or(PoleZeroEntry{}));
  const Values x = plane_points(source.domain, points, 1);
  const Values moved = plane_points(source.domain, points, source_rate / changed_rate);
  return departure(form_values<long double>(source, x), form_values<long double>(changed, moved));
}

double response_departure(const FirForm &source, double source_rate, const FirForm &changed, double changed_rate) {
  const std::vector<long double> expected = taps_of(source), got = taps_of(changed);
  if (expected.size() != got.size()) return infinite;
  std::vector<double> taps(expected.size()), other(expected.size());
  long double energy = 0, difference = 0;
  for (std::size_t i = 0; i < taps.size(); i++) {
    const long double a = expected[i] * source.gain, b = got[i] * changed.gain;
    taps[i] = static_cast<double>(a);
    other[i] = static_cast<double>(b);
    energy += a * a;
    difference += std::fabs(a - b);
  }
  if (!std::isfinite(difference)) return infinite;
  if (source_rate == changed_rate) {
    // The peak is at least the root of the energy, the difference at most the sum of what the taps differ by.
    const long double bound = difference / (lowest_level * std::sqrt(energy));
    if (difference == 0 || bound < 1e-3L) return difference == 0 ? 0 : 20 * std::log10(1 + static_cast<double>(bound));
  }
  std::vector<double> points(2 * taps.size() + 257);
  const auto response = [&](std::span<const double> h, double factor) {
    std::vector<std::complex<double>> sums(points.size());
    centred_response(h, linear_grid(0, std::numbers::pi * factor, 2 * std::numbers::pi, points), sums);
    return sums;
  };
  return departure(response(taps, 1), response(other, source_rate / changed_rate));
}

} // namespace brisel
