#include "engine/iir/prewarp.h"

#include "engine/analysis/polynomial_roots.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace brisel {

bool can_prewarp(double frequency, double sample_rate) {
  return frequency >= 0 && frequency < sample_rate / 2;
}

std::optional<double> prewarp_roots(const SectionEntry &sections, SectionEntry &out) {
  out = sections;
  const double half_period = std::numbers::pi / sections.sample_rate;
  double beyond = std::numeric_limits<double>::infinity();
  const auto stretch = [&](double magnitude) {
    if (!can_prewarp(magnitude, sections.sample_rate)) beyond = std::min(beyond, magnitude);
    const double angle = magnitude * half_period;
    return angle > 0 ? std::tan(angle) / angle : 1;
  };
  for (int i = 0; i < sections.section_count; i++) {
    for (Triple *t : {&out.numerators[i], &out.denominators[i]}) {
      const QuadraticRoots roots = quadratic_roots(*t);
      const auto [a, b, c] = *t;
      switch (roots.kind) {
      case RootKind::complex_pair: {
        const double q = stretch(std::abs(roots.first));
        *t = {a, b * q, c * q * q};
        break;
      }
      case RootKind::distinct_real:
      case RootKind::double_real: {
        const double r1 = roots.first.real() * stretch(std::abs(roots.first));
        const double r2 = roots.second.real() * stretch(std::abs(roots.second));
        *t = {a, -a * (r1 + r2), a * r1 * r2};
        break;
      }
      case RootKind::single:
        *t = {0, b, c * stretch(std::abs(roots.first))};
        break;
      case RootKind::none:
        break;
      }
    }
  }
  return std::isfinite(beyond) ? std::optional(beyond) : std::nullopt;
}

} // namespace brisel
