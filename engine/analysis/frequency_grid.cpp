#include "engine/analysis/frequency_grid.h"

#include <cmath>
#include <numbers>

namespace brisel {

FrequencyGrid linear_grid(double start, double end, double sampling_frequency, std::span<double> points) {
  const double factor = 2 * std::numbers::pi / sampling_frequency;
  const int intervals = static_cast<int>(points.size()) - 1;
  const double step = (end - start) * factor / intervals;
  for (int i = 0; i <= intervals; ++i) points[i] = start * factor + i * step;

  const long double turns = 1.0L / sampling_frequency;
  return {.points = points,
          .linear = true,
          .half_circle = start == 0 && 2 * end == sampling_frequency,
          .start = start * turns,
          .step = (static_cast<long double>(end) - start) * turns / intervals};
}

LogarithmicAxis logarithmic_axis(double start, double end) {
  const double reference = 1; // a power of ten of the unit
  // A range end that is a power of ten in the user's unit may have lost its last bit on the way through radians.
  const double below = 1 - 1e-12;
  const double above = 1 + 1e-12;
  double high = reference;
  while (high < end * below) high *= 10;
  while (high / 10 > end * above) high /= 10;
  double low = high * 0.0001;
  if (start > 0) {
    low = reference;
    while (low > start * above) low /= 10;
    while (10 * low <= start * above) low *= 10;
  }
  int decades = static_cast<int>(std::log10(high / low) + 0.5);
  // Kept: five decades become six, and so does every longer range; its low end is cut off or moves down accordingly.
  if (decades >= 5) decades = 6;
  low = high / std::pow(10.0, decades);
  return {low, high, std::log(end / low) / std::log(high / low), decades};
}

FrequencyGrid logarithmic_grid(double low, double end, std::span<double> points) {
  const double exponent = std::log(end / low) / static_cast<double>(points.size() - 1);
  for (std::size_t i = 0; i < points.size(); ++i) points[i] = low * std::exp(exponent * static_cast<double>(i));
  points.back() = end;
  return {.points = points};
}

Turns::Turns(long double turns) {
  turns -= std::floor(turns);
  for (std::uint64_t &part : limb) {
    turns *= 4294967296.0L;
    part = static_cast<std::uint64_t>(turns);
    turns -= static_cast<long double>(part);
  }
  if (turns >= 0.5L) ++limb[2];
}

std::complex<double> phasor(std::uint64_t turns) {
  const std::uint64_t eighth = std::uint64_t{1} << 61;
  const std::uint64_t quarter = (turns + eighth) >> 62; // the nearest one
  const double angle =
      static_cast<double>(static_cast<std::int64_t>(turns - (quarter << 62))) * (2 * std::numbers::pi * 0x1p-64);
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  switch (quarter) {
  case 0:
    return {c, s};
  case 1:
    return {-s, c};
  case 2:
    return {-c, -s};
  default:
    return {s, -c};
  }
}

} // namespace brisel
