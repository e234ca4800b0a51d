#include "engine/iir/noise.h"

#include "engine/iir/cascade_gain.h"
#include "engine/iir/iir_scaling.h"

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

void cascade_noise_gains(const SectionEntry &cascade, SectionStructure structure, std::span<double> gains) {
  const GainGrid grid;
  std::vector<double> after(grid.size(), 1.0), path(grid.size()); // squared, of the sections behind
  for (int j = cascade.section_count - 1; j >= 0; j--) {
    for (std::size_t i = 0; i < grid.size(); i++) {
      const double n = std::norm(grid.value(cascade.numerators[j], i));
      const double d = std::norm(grid.value(cascade.denominators[j], i));
      path[i] = (is_transposed(structure) ? 1 : n) / d * after[i];
      after[i] *= n / d;
    }
    gains[j] = simpson_mean(path);
  }
}

void parallel_noise_gains(const SectionEntry &parallel, std::span<double> gains) {
  const GainGrid grid;
  std::vector<double> path(grid.size());
  for (int j = 0; j < parallel.section_count; j++) {
    for (std::size_t i = 0; i < grid.size(); i++)
      path[i] = parallel.pars * parallel.pars / std::norm(grid.value(parallel.denominators[j], i));
    gains[j] = simpson_mean(path);
  }
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
