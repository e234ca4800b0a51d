// remez.h - the Remez exchange on a dense grid, in the form of Parks and McClellan.
//
// A linear-phase filter of either symmetry and parity is Q(f) P(cos 2 pi f) with a fixed factor Q (1, cos pi f,
// sin 2 pi f or sin pi f) and a polynomial P of degree r - 1. The grid's desired values are divided by Q and its
// weights multiplied by it, the exchange finds the best P, and its coefficients are turned back into taps.
//
// [McClellan73] J. H. McClellan, T. W. Parks, L. R. Rabiner, A computer program for designing optimum FIR linear phase
// digital filters, IEEE Trans. AU-21 (1973). [Parks87] T. W. Parks, C. S. Burrus, Digital Filter Design, ch. 3.
#pragma once

#include "engine/fir/band_setup.h"

#include <functional>
#include <span>
#include <vector>

namespace brisel {

/// Told the fraction done of a long computation; false asks it to stop.
using Progress = std::function<bool(double fraction)>;

/// Number r of cosine functions of a plan.
constexpr int cosine_count(int length, bool symmetric) {
  return length / 2 + (symmetric && length % 2 != 0 ? 1 : 0);
}

/// The points on which a design is made, ascending; `frequency` in cycles per sample.
struct DesignGrid {
  std::vector<double> frequency;
  std::vector<double> desired;
  std::vector<double> weight;
  std::vector<int> band;

  std::size_t size() const { return frequency.size(); }
  void add(const BandPlan &plan, double f, int b);
  void copy_point(const DesignGrid &grid, std::size_t i);
};

/// Points per cosine function of the grid on which designs are made.
inline constexpr int design_density = 16;
/// Spacing of a grid with `density` points per cosine function.
constexpr double grid_spacing(int density, int functions) {
  return 0.5 / (static_cast<double>(density) * functions);
}
/// Bytes that the arrays of a grid of this density can take, whether the bands fill it or not.
double grid_bytes(int density, int functions);

/// Cycles per sample between which a band is approximated. The case transformation divides by Q: a band that reaches a
/// zero of it is shortened by one spacing, though never to nothing.
struct BandLimits {
  double lower, upper;
};
BandLimits band_limits(const BandPlan &plan, int band, double spacing);
/// The same, but stopbands come closer to such a zero, so that peaks of their error beside it are found too.
BandLimits close_band_limits(const BandPlan &plan, int band, double spacing);

DesignGrid remez_grid(const BandPlan &plan, int density);

enum class ExchangeError { none = 0, degenerate = 1, not_optimal = 2, stopped, below_rounding };

struct ExchangeResult {
  int iterations = 0;
  ExchangeError error = ExchangeError::none;
  double deviation = 0; // levelled weighted error of the last extremal set
  double scale = 1;     // largest desired value times largest weight, where the second exchange ran
  bool no_transformation = false;
  DesignGrid extremal; // the r + 1 points of that set
};
/// `grid` has its case transformation done; `functions` is r and less than the number of points by 2 at least.
ExchangeResult remez_exchange(const DesignGrid &grid, int functions, const Progress &progress);

/// Divides desired values by Q and multiplies weights by it.
void case_transform(const BandPlan &plan, DesignGrid &grid);

/// Coefficients of the P that is levelled on the last extremal set, as a sum of a[k] cos(2 pi k f), k from 0 to r - 1;
/// for r up to 3 two zeros follow. `first` and `last` are the ends of the grid, between which P was determined.
std::vector<double> cosine_series(const ExchangeResult &exchange, double first, double last);

/// Half response, centre first, of `half_length` taps.
std::vector<double> remez_to_taps(const BandPlan &plan, std::vector<double> series);

} // namespace brisel
