// cascade_gain.h - setting the gain of a digital filter so that its magnitude peaks at 1, in every form.
//
// The peak is the largest magnitude on a grid of its own, whatever is plotted: even steps over [0, pi]. Where these
// miss it by more than 0.1 dB, because poles lie between two of them, it is searched near the poles.
#pragma once

#include "engine/analysis/form_conversions.h"
#include "engine/core/records.h"

#include <span>
#include <vector>

namespace brisel {

inline constexpr int gain_grid_points = 1001;

/// Cosines and sines of the grid, and the squared magnitude of a triple on it.
class GainGrid {
public:
  GainGrid();
  std::size_t size() const { return cosine.size(); }
  double angle(std::size_t i) const; // radians per sample
  /// a z + b + c z^-1 at point `i`.
  std::complex<double> value(const Triple &t, std::size_t i) const {
    return {(t[0] + t[2]) * cosine[i] + t[1], (t[0] - t[2]) * sine[i]};
  }
  /// |a + b z^-1 + c z^-2| at point `i`.
  double magnitude(const Triple &triple, std::size_t i) const;
  /// z itself.
  std::vector<std::complex<double>> places() const;

private:
  std::vector<double> cosine, sine;
};

/// Sets the gain to 1 / peak of the sections' product, or to 1 when that peak is 0 or undefined. Returns the old gain
/// times the peak. When the gain would leave the range of a double, powers of two are moved into the numerators.
double compute_cas_gain(SectionEntry &cascade);

/// The peak of the sections' product over what the even steps show of it: 1 where they see it.
double missed_by_grid(const SectionEntry &cascade);

/// Resets the scaler to 1 and divides direct term and numerators by the peak, which is returned; a peak that is 0,
/// undefined or exactly 1 leaves them as they are.
double regain_parallel(SectionEntry &parallel);

/// The same for the other forms, whose poles are given: the gain becomes 1 / peak of the rest (1 when that peak is 0 or
/// undefined). They return the old gain times the peak.
double regain_ratio(RatioEntry &ratio, Places poles);
double regain_lattice(LatticeEntry &lattice, Places poles);
double regain_ladder(LadderEntry &ladder, Places poles);

/// Leading denominator coefficient 1, and the first nonzero numerator coefficient moved into the gain.
void normalize_ratio(RatioEntry &ratio);
/// Moves the first nonzero numerator coefficient of every section into the gain.
void normalize_sections(SectionEntry &cascade);

} // namespace brisel
