#include "engine/iir/noise.h"

#include "engine/iir/cascade_gain.h"
#include "engine/iir/iir_scaling.h"
#include "engine/iir/pole_grid.h"

#include <cmath>

namespace brisel {

double simpson_mean(std::span<const double> values) {
  constexpr std::array end_weights{17.0 / 48, 59.0 / 48, 43.0 / 48, 49.0 / 48};
  double sum = 0;
  for (std::size_t i = 0; i < values.size(); i++) {
    const std::size_t from_end = std::min(i, values.size() - 1 - i);
    sum += (from_end < end_weights.size() ? end_weights[from_end] : 1) * values[i];
  }
  return sum / static_cast<double>(values.size() - 1);
}

namespace {

// Squared magnitudes of the path from section j to the output; `after`, of the sections behind it, takes that section.
template <class Grid>
void trace_path(const SectionEntry &cascade, SectionStructure structure, int j, const Grid &grid,
                std::vector<double> &after, std::vector<double> &path) {
  for (std::size_t i = 0; i < path.size(); i++) {
    const double n = std::norm(grid.value(cascade.numerators[j], i));
    const double d = std::norm(grid.value(cascade.denominators[j], i));
    path[i] = (is_transposed(structure) ? 1 : n) / d * after[i];
    after[i] *= n / d;
  }
}

// The mean on even steps or, where these miss it by more than 0.1 dB of power, the integral.
double mean_or_missed(std::span<const double> path, const CirclePoints &near_poles, std::span<const double> path_near) {
  const double seen = simpson_mean(path);
  if (path_near.empty()) return seen;
  constexpr double noticeable = 1.0233;
  const double mean = near_poles.mean(path_near);
  return std::isnormal(mean) && (mean > noticeable * seen || seen > noticeable * mean) ? mean : seen;
}

} // namespace

void cascade_noise_gains(const SectionEntry &cascade, SectionStructure structure, std::span<double> gains) {
  const GainGrid grid;
  const CirclePoints near_poles(cascade);
  std::vector<double> after(grid.size(), 1.0), path(grid.size());
  std::vector<double> after_near(near_poles.size(), 1.0), path_near(near_poles.size());
  for (int j = cascade.section_count - 1; j >= 0; j--) {
    trace_path(cascade, structure, j, grid, after, path);
    trace_path(cascade, structure, j, near_poles, after_near, path_near);
    gains[j] = mean_or_missed(path, near_poles, path_near);
  }
}

template <class Grid> static std::vector<double> term_path(const SectionEntry &parallel, int j, const Grid &grid) {
  std::vector<double> path(grid.size());
  for (std::size_t i = 0; i < path.size(); i++)
    path[i] = parallel.pars * parallel.pars / std::norm(grid.value(parallel.denominators[j], i));
  return path;
}

void parallel_noise_gains(const SectionEntry &parallel, std::span<double> gains) {
  const GainGrid grid;
  const CirclePoints near_poles(parallel);
  for (int j = 0; j < parallel.section_count; j++)
    gains[j] = mean_or_missed(term_path(parallel, j, grid), near_poles, term_path(parallel, j, near_poles));
}

void store_noise(double factor, int bits, QuantizationResult &result) {
  result.input_noise_power = std::ldexp(1.0, -2 * bits) / 12;
  result.input_noise_db = 10 * std::log10(result.input_noise_power);
  result.output_noise_power = result.input_noise_power * factor;
  result.output_noise_db = 10 * std::log10(result.output_noise_power);
  result.standard_deviation = std::sqrt(result.output_noise_power);
  const double floor = -std::log10(result.standard_deviation) / std::log10(2.0);
  result.noise_floor_bits = std::isfinite(floor) ? static_cast<std::int32_t>(floor) : 0;
  result.noise_floor_db = 20 * std::log10(2.0) * (result.noise_floor_bits - 1);
}

} // namespace brisel
