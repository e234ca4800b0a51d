// impulse_interpolation.cpp - a short impulse response between its samples, for display.
#include "engine/analysis/plot_arrays.h"

#include <cmath>
#include <numbers>

namespace brisel {

std::vector<double> interpolate_impulse(std::span<const double> samples) {
  const int count = static_cast<int>(samples.size());
  if (count < 1 || count > max_interpolated_points) return {};
  const int step = max_interpolated_points / count;
  const int length = step * (count - 1) + 1;
  std::vector<double> kernel(length + 1), points(length);
  kernel[0] = 1;
  for (int k = 1; k <= length; ++k) {
    const double x = k * std::numbers::pi / step;
    kernel[k] = std::sin(x) / x;
  }
  for (int i = 0; i < length; ++i) {
    if (i % step == 0) {
      points[i] = samples[i / step];
      continue;
    }
    for (int k = 0; k < count; ++k) points[i] += samples[k] * kernel[std::abs(i - k * step)];
  }
  return points;
}

} // namespace brisel
