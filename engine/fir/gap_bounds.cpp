#include "engine/fir/gap_bounds.h"

#include <algorithm>
#include <cmath>

namespace brisel {

// A gap is wide when it is so many times the narrowest one.
constexpr double wide_ratio = 1.25;
// Of a ramp, in parts of the largest desired value: with it the gain stays below 1.5 times that value.
constexpr double ramp_tolerance = 0.45;

static bool zero_at(const BandPlan &plan, double w) {
  if (w == 0) return !plan.symmetric();
  return plan.symmetric() != plan.odd_length();
}

// Largest desired magnitude, at the band edges and the kinks between them.
static double largest_desired(const BandPlan &plan) {
  double largest = 0;
  for (int b = 0; b < plan.band_count; b++) {
    constexpr int steps = 64;
    const PlanBand &band = plan.bands[b];
    for (int i = 0; i <= steps; i++)
      largest =
          std::max(largest, std::abs(band_desired(plan, std::lerp(band.lower, band.upper, i / double{steps}), b)));
  }
  return largest;
}

BoundedPlan bound_gaps(const BandPlan &plan, double margin) {
  constexpr double pi = std::numbers::pi;
  const double allowed = ramp_tolerance * largest_desired(plan);
  // A gap at an end of the axis goes on as its own image beyond it.
  const auto lower_end = [&](int b) { return b == 0 ? -plan.bands[0].lower : plan.bands[b - 1].upper; };
  const auto upper_end = [&](int b) { return b == plan.band_count ? 2 * pi - lower_end(b) : plan.bands[b].lower; };
  double narrowest = INFINITY;
  for (int b = 0; b <= plan.band_count; b++)
    if (const double width = upper_end(b) - lower_end(b); width > 3 * band_offset)
      narrowest = std::min(narrowest, width);

  BoundedPlan result{plan, {}};
  result.plan.band_count = 0;
  for (int b = 0; b <= plan.band_count; b++) {
    const double width = upper_end(b) - lower_end(b);
    if (width > 3 * band_offset && width > wide_ratio * narrowest) {
      // The image of an end gap has the edge's desired value too, or its negative where the response passes through 0.
      const double left = b > 0                ? band_desired(plan, lower_end(b), b - 1)
                          : zero_at(plan, 0.0) ? -band_desired(plan, upper_end(b), b)
                                               : band_desired(plan, upper_end(b), b);
      const double right = b < plan.band_count ? band_desired(plan, upper_end(b), b) : zero_at(plan, pi) ? -left : left;
      const double free = std::min(margin * narrowest, width / 3);
      const double lower = std::max(0.0, lower_end(b) + free), upper = std::min(pi, upper_end(b) - free);
      const auto ramp = [&](double w) { return std::lerp(left, right, (w - lower_end(b)) / width); };
      result.plan.bands[result.plan.band_count++] = {.lower = lower,
                                                     .upper = upper,
                                                     .value = ramp(lower),
                                                     .shape = BandShape::ramp,
                                                     .end_value = ramp(upper),
                                                     .tolerance = allowed};
      result.bounded.push_back({std::max(0.0, lower_end(b)), std::min(pi, upper_end(b))});
    }
    if (b < plan.band_count) result.plan.bands[result.plan.band_count++] = plan.bands[b];
  }
  return result;
}

void weigh_ramps(BandPlan &plan, double deviation) {
  for (int b = 0; b < plan.band_count; b++)
    if (plan.bands[b].tolerance > 0) plan.bands[b].weight = deviation / plan.bands[b].tolerance;
}

} // namespace brisel
