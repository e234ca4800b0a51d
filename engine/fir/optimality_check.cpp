// optimality_check.cpp - alternation, peak errors and transition gain of a designed half response.
#include "engine/fir/optimality_check.h"

#include "engine/analysis/trigonometric_sums.h"
#include "engine/fir/alternation.h"

#include <algorithm>
#include <cmath>

namespace brisel {

constexpr int refinement = 8;          // how much denser the second grid is
constexpr std::size_t fine_grid = 8;   // points per extremum from which on no maximum hides between two points
constexpr double close_to_peak = 0.99; // an extremum counts within 1 % of the peak

std::vector<double> half_response_amplitude(std::span<const double> half, FirSymmetry symmetry, bool odd_length,
                                            std::span<const double> frequency) {
  std::vector<double> c(half.begin(), half.end()), w(frequency.begin(), frequency.end()), amplitude(frequency.size());
  const bool symmetric = symmetry == FirSymmetry::symmetric;
  for (double &value : c) value *= 2;
  if (odd_length && !c.empty()) c[0] = symmetric ? half[0] : 0;
  for (double &value : w) value *= two_pi;
  const SumKind kind = odd_length ? (symmetric ? SumKind::cosine : SumKind::sine)
                                  : (symmetric ? SumKind::half_cosine : SumKind::half_sine);
  trigonometric_sums(c, kind, w, amplitude);
  return amplitude;
}

static std::vector<double> amplitude_of(const BandPlan &plan, std::span<const double> half,
                                        std::span<const double> frequency) {
  return half_response_amplitude(half, plan.symmetry, plan.odd_length(), frequency);
}

static std::vector<double> weighted_error(const BandPlan &plan, const DesignGrid &grid, std::span<const double> half) {
  std::vector<double> error = amplitude_of(plan, half, grid.frequency);
  for (std::size_t i = 0; i < grid.size(); i++) error[i] = (error[i] - grid.desired[i]) * grid.weight[i];
  return error;
}

static double largest_magnitude(std::span<const double> values) {
  double largest = 0;
  for (const double value : values) {
    if (!std::isfinite(value)) return value;
    largest = std::max(largest, std::abs(value));
  }
  return largest;
}

// Alternations among the points that come close to the peak.
static int count_extrema(std::span<const double> error, double peak) {
  int count = 0;
  int last_sign = 0;
  for (const double e : error) {
    if (!(std::abs(e) >= close_to_peak * peak) || peak == 0) continue;
    const int sign = e > 0 ? 1 : -1;
    if (sign != last_sign) count++;
    last_sign = sign;
  }
  return count;
}

// Points of a denser grid, next to the high local maxima of `magnitude`, among which the peak is.
template <class AddPoint> static void points_between(std::span<const double> magnitude, double peak, AddPoint add) {
  for (std::size_t i = 0; i < magnitude.size(); i++) {
    const double here = std::abs(magnitude[i]);
    const bool rises = i > 0 && here < std::abs(magnitude[i - 1]);
    const bool falls = i + 1 < magnitude.size() && here < std::abs(magnitude[i + 1]);
    if (here < 0.9 * peak || rises || falls) continue;
    for (int step = 1; step < refinement; step++) {
      if (i > 0) add(i - 1, static_cast<double>(step) / refinement);
      if (i + 1 < magnitude.size()) add(i, static_cast<double>(step) / refinement);
    }
  }
}

// Peak, alternations and bound on a denser grid. Of a fine grid only the intervals next to peaks are made denser.
static void certify(const BandPlan &plan, const DesignGrid &grid, std::span<const double> half,
                    std::span<const double> error, OptimalReport &report) {
  const bool coarse = grid.size() < fine_grid * static_cast<std::size_t>(report.required);
  std::vector<bool> next_to_peak(grid.size() + 1, coarse); // [i]: of the interval below point i
  for (const std::size_t i : alternating_peaks(error, grid.band)) next_to_peak[i] = next_to_peak[i + 1] = true;
  DesignGrid added;
  std::vector<double> dense; // NaN stands for the next point of `added`
  std::vector<int> band;
  const auto add = [&](double f, int b) {
    added.add(plan, f, b);
    dense.push_back(NAN);
    band.push_back(b);
  };
  // The grid keeps off a zero that the symmetry forces. A stopband is judged up to it.
  const auto add_end = [&](double from, double to, int b, double end) {
    if (plan.bands[b].value != 0) return;
    for (int step = 0; step < refinement; step++)
      add(std::lerp(from, to, (step + (from == end ? 0.0 : 1.0)) / refinement), b);
  };
  const double lowest = plan.bands[grid.band.front()].lower / two_pi;
  if (lowest < grid.frequency.front()) add_end(lowest, grid.frequency.front(), grid.band.front(), lowest);
  for (std::size_t i = 0; i < grid.size(); i++) {
    if (i > 0 && next_to_peak[i] && grid.band[i - 1] == grid.band[i]) {
      for (int step = 1; step < refinement; step++)
        add(std::lerp(grid.frequency[i - 1], grid.frequency[i], static_cast<double>(step) / refinement), grid.band[i]);
    }
    dense.push_back(error[i]);
    band.push_back(grid.band[i]);
  }
  const double highest = plan.bands[grid.band.back()].upper / two_pi;
  if (grid.frequency.back() < highest) add_end(grid.frequency.back(), highest, grid.band.back(), highest);
  const std::vector<double> added_error = weighted_error(plan, added, half);
  auto next = added_error.begin();
  for (double &e : dense)
    if (std::isnan(e)) e = *next++;

  report.dense_peak_error = largest_magnitude(dense);
  report.dense_extrema = count_extrema(dense, report.dense_peak_error);
  std::vector<std::size_t> peaks = alternating_peaks(dense, band);
  keep_largest(peaks, static_cast<std::size_t>(report.required), dense);
  if (peaks.size() < static_cast<std::size_t>(report.required)) return;
  double smallest = INFINITY;
  for (const std::size_t i : peaks) smallest = std::min(smallest, std::abs(dense[i]));
  report.bound = report.dense_peak_error / smallest;
}

void find_transition_gain(const BandPlan &plan, std::span<const double> half, OptimalReport &report) {
  report.transition_gain = 0;
  const double spacing = 1.0 / (32 * (plan.half_length() + 1)); // sixteen points per lobe of the amplitude
  std::vector<double> f;
  double from = 0;
  for (int b = 0; b <= plan.band_count; b++) {
    const double to = b < plan.band_count ? plan.bands[b].lower / two_pi : 0.5;
    if (to - from > 2 * band_offset) {
      const int steps = static_cast<int>(std::ceil((to - from) / spacing));
      for (int i = 0; i <= steps; i++) f.push_back(std::lerp(from, to, static_cast<double>(i) / steps));
    }
    if (b < plan.band_count) from = plan.bands[b].upper / two_pi;
  }
  const std::vector<double> coarse = amplitude_of(plan, half, f);
  std::vector<double> dense(f);
  points_between(coarse, largest_magnitude(coarse), [&](std::size_t i, double fraction) {
    if (f[i + 1] - f[i] <= 1.001 * spacing) dense.push_back(std::lerp(f[i], f[i + 1], fraction)); // not across a band
  });
  const std::vector<double> gain = amplitude_of(plan, half, dense);
  for (std::size_t i = 0; i < dense.size(); i++) {
    if (std::abs(gain[i]) <= report.transition_gain) continue;
    report.transition_gain = std::abs(gain[i]);
    report.transition_frequency = dense[i];
  }
}

OptimalReport check_optimality(const BandPlan &plan, const DesignGrid &grid, std::span<const double> half) {
  OptimalReport report;
  report.required = cosine_count(plan.length, plan.symmetric()) + 1;
  const std::vector<double> error = weighted_error(plan, grid, half);
  report.peak_error = largest_magnitude(error);
  report.dense_peak_error = report.peak_error;
  if (!std::isfinite(report.peak_error)) return report;
  report.extrema = count_extrema(error, report.peak_error);
  certify(plan, grid, half, error, report);
  report.largest_desired = largest_magnitude(grid.desired);
  find_transition_gain(plan, half, report);
  return report;
}

} // namespace brisel
