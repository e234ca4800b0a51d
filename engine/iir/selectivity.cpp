// [Abramowitz64] M. Abramowitz, I. Stegun, Handbook of Mathematical Functions, 1964.
#include "engine/iir/selectivity.h"

#include <cmath>
#include <numbers>

namespace brisel {

double iir_selectivity(const FilterSpec &spec, ZTransform method) {
  const auto edge = [&](double f) {
    return method == ZTransform::bilinear ? std::tan(std::numbers::pi * f / spec.sampling_frequency) : f;
  };
  const double wp1 = edge(spec.passband_edge[0]), ws1 = edge(spec.stopband_edge[0]);
  if (spec.type == code(FilterType::low_pass)) return wp1 / ws1;
  if (spec.type == code(FilterType::high_pass)) return ws1 / wp1;
  const double wp2 = edge(spec.passband_edge[1]), ws2 = edge(spec.stopband_edge[1]);
  const double bandwidth = wp2 - wp1, centre2 = wp1 * wp2;
  const bool upper_is_tighter = ws1 * ws2 < centre2; // the lower stopband edge, mirrored at the centre, lies above ws2
  const double k1 = bandwidth / (centre2 / ws1 - ws1), k2 = bandwidth / (ws2 - centre2 / ws2);
  if (spec.type == code(FilterType::band_pass)) return upper_is_tighter ? k2 : k1;
  return upper_is_tighter ? 1 / k1 : 1 / k2; // stopband edges inside the passband edges: the mirrored case
}

// Arithmetic-geometric mean of 1 and b.
static double agm(double b) {
  double a = 1;
  while (a - b > 1e-9 * a) { // the mean after the next step is exact: the difference is squared in every one
    const double mean = 0.5 * (a + b);
    b = std::sqrt(a * b);
    a = mean;
  }
  return 0.5 * (a + b);
}

double nome(double k) {
  const double k_complement = std::sqrt((1 - k) * (1 + k));
  return std::exp(-std::numbers::pi * agm(k_complement) / agm(k));
}

} // namespace brisel
