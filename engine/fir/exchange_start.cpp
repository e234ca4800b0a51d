// exchange_start.cpp - points of a reference shared out among the bands.
#include "engine/fir/exchange_start.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace brisel {

// Points per band in proportion to `share`; the largest remainders are rounded up. Every band gets one at least while
// there are enough.
static std::vector<int> shared_out(const std::vector<double> &share, int points) {
  const int bands = static_cast<int>(share.size());
  const double sum = std::accumulate(share.begin(), share.end(), 0.0);
  const int given = points >= bands ? 1 : 0;
  std::vector<int> count(share.size());
  std::vector<double> excess(share.size()); // what a band is owed
  for (std::size_t b = 0; b < share.size(); b++) {
    excess[b] = points * share[b] / sum;
    count[b] = std::max(given, static_cast<int>(excess[b]));
    excess[b] -= count[b];
  }
  for (int left = points - std::accumulate(count.begin(), count.end(), 0); left != 0; left += left > 0 ? -1 : 1) {
    std::size_t best = 0;
    for (std::size_t b = 1; b < share.size(); b++) {
      if (left > 0 ? excess[b] > excess[best] : count[best] <= given || (count[b] > given && excess[b] < excess[best]))
        best = b;
    }
    count[best] += left > 0 ? 1 : -1;
    excess[best] -= left > 0 ? 1 : -1;
  }
  return count;
}

static double design_spacing(const BandPlan &plan) {
  return grid_spacing(design_density, cosine_count(plan.length, plan.symmetric()));
}

Placement even_placement(const BandPlan &plan) {
  std::vector<double> width;
  for (int b = 0; b < plan.band_count; b++) width.push_back(plan.bands[b].upper - plan.bands[b].lower);
  const std::vector<int> count = shared_out(width, cosine_count(plan.length, plan.symmetric()) + 1);
  Placement placement;
  for (int b = 0; b < plan.band_count; b++) {
    const auto [lower, upper] = band_limits(plan, b, design_spacing(plan));
    const int n = count[static_cast<std::size_t>(b)];
    for (int j = 0; j < n; j++) {
      placement.frequency.push_back(std::lerp(lower, upper, n > 1 ? static_cast<double>(j) / (n - 1) : 0.5));
      placement.band.push_back(b);
    }
  }
  return placement;
}

Placement scaled_placement(const BandPlan &plan, const DesignGrid &shorter) {
  std::vector<double> points(static_cast<std::size_t>(plan.band_count));
  for (const int b : shorter.band) points[static_cast<std::size_t>(b)]++;
  // n points are the ends of n - 1 half ripples, and up to one more may be cut off by the edges.
  std::vector<double> half_ripples(points);
  for (double &n : half_ripples) n = std::max(n - 0.5, 0.0);
  const std::vector<int> count = shared_out(half_ripples, cosine_count(plan.length, plan.symmetric()) + 1);
  Placement placement;
  auto from = shorter.frequency.begin();
  for (int b = 0; b < plan.band_count; b++) {
    const auto [lower, upper] = band_limits(plan, b, design_spacing(plan));
    const int n = count[static_cast<std::size_t>(b)];
    std::vector<double> known(from, from + static_cast<long>(points[static_cast<std::size_t>(b)]));
    from += static_cast<long>(known.size());
    // Two points at least are needed to say how the others lie.
    if (known.size() < 2) known = {lower, upper};
    for (int j = 0; j < n; j++) {
      const double place = (n > 1 ? static_cast<double>(j) / (n - 1) : 0.5) * static_cast<double>(known.size() - 1);
      const std::size_t i = std::min(static_cast<std::size_t>(place), known.size() - 2);
      placement.frequency.push_back(
          std::clamp(std::lerp(known[i], known[i + 1], place - static_cast<double>(i)), lower, upper));
      placement.band.push_back(b);
    }
  }
  return placement;
}

} // namespace brisel
