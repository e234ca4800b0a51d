#include "engine/core/spec_bands.h"

#include "engine/core/code_tables.h"

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

constexpr double pi = std::numbers::pi;
using Edges = std::array<double, 2>;

// Below and above two edges, or between them.
std::vector<FrequencyBand> outside(const Edges &edge) {
  return {{0, edge[0]}, {edge[1], pi}};
}
std::vector<FrequencyBand> inside(const Edges &edge) {
  return {{edge[0], edge[1]}};
}

} // namespace

std::vector<FrequencyBand> passbands(const FilterSpec &spec) {
  switch (static_cast<FilterType>(spec.type)) {
  case FilterType::low_pass:
    return {{0, spec.passband_edge[0]}};
  case FilterType::high_pass:
    return {{spec.passband_edge[0], pi}};
  case FilterType::band_pass:
    return inside(spec.passband_edge);
  case FilterType::band_stop:
    return outside(spec.passband_edge);
  default:
    return {};
  }
}

std::vector<FrequencyBand> stopbands(const FilterSpec &spec) {
  switch (static_cast<FilterType>(spec.type)) {
  case FilterType::low_pass:
    return {{spec.stopband_edge[0], pi}};
  case FilterType::high_pass:
    return {{0, spec.stopband_edge[0]}};
  case FilterType::band_pass:
    return outside(spec.stopband_edge);
  case FilterType::band_stop:
    return inside(spec.stopband_edge);
  default:
    return {};
  }
}

std::vector<FrequencyBand> transition_bands(const FilterSpec &spec) {
  std::vector<FrequencyBand> all = passbands(spec), gaps;
  const std::vector<FrequencyBand> stop = stopbands(spec);
  all.insert(all.end(), stop.begin(), stop.end());
  std::sort(all.begin(), all.end(), [](const FrequencyBand &a, const FrequencyBand &b) { return a.low < b.low; });
  for (std::size_t i = 1; i < all.size(); i++) gaps.push_back({all[i - 1].high, all[i].low});
  return gaps;
}

double linear_gain(const FilterSpec &spec, int band, double value) {
  return spec.list_flag[static_cast<std::size_t>(band)] ? std::pow(10, -0.05 * value) : value;
}

} // namespace brisel
