// frequency_grid.h - the points at which a response is computed, and exact fractions of a turn for linear grids.
#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <span>

namespace brisel {

/// Points of a frequency response. A linear grid is kept a second time without the rounding of its points: over 50000
/// taps the last bit of a frequency is worth five digits of the phase, so the sums over taps use these exact values.
struct FrequencyGrid {
  std::span<const double> points; // radians per sample
  bool linear = false;
  bool half_circle = false; // linear, from 0 to exactly half the sampling frequency
  long double start = 0;    // linear: first point and step in turns (cycles) per sample
  long double step = 0;
};

/// Fills `points` from `start` to `end`; all three frequencies in radians per second. At least two points.
FrequencyGrid linear_grid(double start, double end, double sampling_frequency, std::span<double> points);

/// Logarithmic axis for the range `start` to `end`, in the unit in which its decades shall begin.
struct LogarithmicAxis {
  double low;
  double high;
  double ratio; // log(end / low) / log(high / low)
  int decades;
};
LogarithmicAxis logarithmic_axis(double start, double end);
/// Fills `points` geometrically from `low` to `end`, both in radians per sample.
FrequencyGrid logarithmic_grid(double low, double end, std::span<double> points);

/// A fraction of a turn to 96 binary places; whole turns do not count.
class Turns {
public:
  explicit Turns(long double turns);
  /// k times the fraction in units of 2^-64 turns, whole turns left out. k below 2^32.
  std::uint64_t times(std::uint64_t k) const { return ((k * limb[0]) << 32) + k * limb[1] + ((k * limb[2]) >> 32); }

private:
  std::array<std::uint64_t, 3> limb; // 32 bits each, most significant first
};

/// e^(j 2 pi t), t in units of 2^-64 turns; exact at whole quarters.
std::complex<double> phasor(std::uint64_t turns);

} // namespace brisel
