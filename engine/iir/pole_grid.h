// pole_grid.h - frequencies that resolve every pole of a filter, however near the frequency axis it lies.
//
// The axis is halved until no panel is longer than its distance from the nearest pole. Every panel carries the nodes of
// an 8 point Gauss-Legendre rule, which integrate a rational function with these poles to better than 1e-6.
#pragma once

#include "engine/core/records.h"

#include <functional>
#include <span>
#include <vector>

namespace brisel {

/// A pole as seen from the frequency axis.
struct Resonance {
  double place;
  double distance;
};

std::vector<std::complex<double>> section_poles(const SectionEntry &sections);

struct PanelNodes {
  std::vector<double> place, weight; // ascending; both ends of the interval belong to it, with weight 0
};
/// Empty where a pole lies on the axis: there is no largest value then. `panels` is the least number of panels.
PanelNodes panel_nodes(double low, double high, std::span<const Resonance> poles, int panels);

/// Points of the unit circle at which sections are evaluated without cancellation, near 0 and pi as elsewhere.
class CirclePoints {
public:
  explicit CirclePoints(std::vector<double> angles);
  /// The panel nodes for the poles of a digital filter, on [0, pi].
  explicit CirclePoints(std::span<const std::complex<double>> poles);
  explicit CirclePoints(const SectionEntry &sections);

  std::size_t size() const { return place.size(); }
  const std::vector<double> &angles() const { return place; } // radians per sample
  /// a z + b + c z^-1 at point `i`.
  std::complex<double> value(const Triple &t, std::size_t i) const;
  double magnitude(const Triple &t, std::size_t i) const;
  /// z itself.
  std::vector<std::complex<double>> places() const;
  /// Mean over [0, pi] of values at the panel nodes.
  double mean(std::span<const double> values) const;

private:
  void set(PanelNodes nodes);
  std::vector<double> place, weight, half_sine, half_cosine;
};

struct Peak {
  double magnitude;
  double place;
};
/// Magnitudes at places on the axis.
using MagnitudesAt = std::function<std::vector<double>(std::vector<double>)>;

/// The largest of magnitudes that are known at the panel nodes, refined between the nodes around it.
Peak refined_peak(const std::vector<double> &place, const std::vector<double> &magnitude, const MagnitudesAt &at);

/// What a grid shows is replaced where it is off by more than 0.1 dB.
inline constexpr double noticeable_miss = 1.0116;

/// `seen` on a grid of even steps or, where that misses the peak by more than 0.1 dB, the peak itself.
Peak peak_or_missed(Peak seen, const std::vector<double> &place, const std::vector<double> &magnitude,
                    const MagnitudesAt &at);

} // namespace brisel
