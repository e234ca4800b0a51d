#include "engine/iir/iir_scaling.h"

#include "engine/iir/cascade_gain.h"
#include "engine/iir/pole_grid.h"

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

Peak grid_peak(std::span<const double> norm, const GainGrid &grid) {
  const auto peak = std::max_element(norm.begin(), norm.end());
  return {*peak, grid.angle(static_cast<std::size_t>(peak - norm.begin()))};
}

// Goes on from the norm of the node before to that of node j.
template <class Grid>
void advance(const SectionEntry &cascade, SectionStructure structure, int j, const Grid &grid,
             std::vector<double> &norm) {
  for (std::size_t i = 0; i < norm.size(); i++) {
    const double d = grid.magnitude(cascade.denominators[j], i);
    if (is_transposed(structure)) {
      if (d != 0) norm[i] *= grid.magnitude(cascade.numerators[j], i) / d;
    } else {
      norm[i] *= (j > 0 ? grid.magnitude(cascade.numerators[j - 1], i) : 1) / d;
    }
  }
}

template <class Grid> std::vector<double> section_norm(const SectionEntry &parallel, int j, const Grid &grid) {
  std::vector<double> norm(grid.size());
  for (std::size_t i = 0; i < norm.size(); i++) {
    const double d = grid.magnitude(parallel.denominators[j], i);
    norm[i] = d == 0 ? 0 : grid.magnitude(parallel.numerators[j], i) / d;
  }
  return norm;
}

void store(const Peak &peak, int j, NodePeaks &peaks) {
  peaks.magnitude[j] = peak.magnitude;
  peaks.angle[j] = peak.place;
}

} // namespace

NodePeaks cascade_node_peaks(const SectionEntry &cascade, SectionStructure structure) {
  const GainGrid grid;
  const CirclePoints near_poles(cascade);
  NodePeaks peaks{};
  std::vector<double> norm(grid.size(), 1.0), norm_near(near_poles.size(), 1.0);
  for (int j = 0; j < cascade.section_count; j++) {
    advance(cascade, structure, j, grid, norm);
    advance(cascade, structure, j, near_poles, norm_near);
    const auto at = [&](std::vector<double> angles) {
      const CirclePoints points(std::move(angles));
      std::vector<double> found(points.size(), 1.0);
      for (int k = 0; k <= j; k++) advance(cascade, structure, k, points, found);
      return found;
    };
    store(peak_or_missed(grid_peak(norm, grid), near_poles.angles(), norm_near, at), j, peaks);
  }
  return peaks;
}

NodePeaks parallel_node_peaks(const SectionEntry &parallel) {
  const GainGrid grid;
  const CirclePoints near_poles(parallel);
  NodePeaks peaks{};
  for (int j = 0; j < parallel.section_count; j++) {
    const auto at = [&](std::vector<double> angles) {
      return section_norm(parallel, j, CirclePoints(std::move(angles)));
    };
    const Peak seen = grid_peak(section_norm(parallel, j, grid), grid);
    store(peak_or_missed(seen, near_poles.angles(), section_norm(parallel, j, near_poles), at), j, peaks);
  }
  return peaks;
}

void store_peaks(const NodePeaks &peaks, int section_count, double sample_rate,
                 std::array<double, max_sections + 1> &magnitude, std::array<double, max_sections + 1> &frequency) {
  for (int j = 0; j <= section_count; j++) {
    magnitude[j] = peaks.magnitude[j];
    frequency[j] = peaks.angle[j] * sample_rate * inverse_two_pi;
  }
}

static bool usable(double peak) {
  return std::isnormal(peak) && std::isnormal(1 / peak);
}

double scale_cascade(SectionEntry &cascade, SectionStructure structure, QuantizationResult &result) {
  const int n = cascade.section_count;
  NodePeaks peaks = cascade_node_peaks(cascade, structure);
  // The canonic structure has its last node at the output, where the gain leaves room for 1 / gain.
  if (!is_transposed(structure)) peaks.magnitude[n] = 1 / cascade.gain;
  const int used = is_transposed(structure) ? n : n + 1;
  if (n == 0 || !std::all_of(peaks.magnitude.begin(), peaks.magnitude.begin() + used, usable)) return 0;

  auto &s = result.scale_factor;
  if (is_transposed(structure)) {
    s[0] = 1;
    for (int j = 0; j < n; j++) s[j + 1] = 1 / peaks.magnitude[j];
  } else {
    for (int j = 0; j <= n; j++) s[j] = 1 / peaks.magnitude[j];
  }
  for (int j = 0; j < n; j++)
    for (double &b : cascade.numerators[j]) b *= s[j + 1] / s[j];
  // Divided by s_n and not multiplied by the peak, so that a gain that was set as 1 / peak becomes 1 to the last bit.
  cascade.gain = is_transposed(structure) ? cascade.gain / s[n] : s[0];
  result.node_count = n + 1;
  store_peaks(peaks, n, cascade.sample_rate, result.node_peak, result.node_peak_frequency);
  return is_transposed(structure) ? peaks.magnitude[n - 1] : peaks.magnitude[n];
}

double scale_parallel(SectionEntry &parallel, QuantizationResult &result) {
  const int n = parallel.section_count;
  const NodePeaks peaks = parallel_node_peaks(parallel);
  const double largest =
      std::max(std::fabs(parallel.gain), *std::max_element(peaks.magnitude.begin(), peaks.magnitude.begin() + n + 1));
  if (!usable(largest)) return 0;
  const double s = 1 / largest;
  parallel.gain *= s;
  parallel.pars *= largest;
  for (int j = 0; j < n; j++)
    for (double &b : parallel.numerators[j]) b *= s;
  std::fill_n(result.scale_factor.begin(), n + 1, s);
  result.node_count = n + 1;
  store_peaks(peaks, n, parallel.sample_rate, result.node_peak, result.node_peak_frequency);
  return largest;
}

} // namespace brisel
