#include "engine/fir/alternation.h"

#include <cmath>

namespace brisel {

std::vector<std::size_t> alternating_peaks(std::span<const double> error, std::span<const int> band) {
  std::vector<std::size_t> peaks;
  for (std::size_t i = 0; i < error.size();) {
    std::size_t best = i, end = i + 1;
    for (; end < error.size() && band[end] == band[i] && (error[end] > 0) == (error[i] > 0) && error[end] != 0; end++)
      if (std::abs(error[end]) > std::abs(error[best])) best = end;
    i = end;
    if (error[best] == 0) continue;
    if (peaks.empty() || (error[peaks.back()] > 0) != (error[best] > 0))
      peaks.push_back(best);
    else if (std::abs(error[best]) > std::abs(error[peaks.back()]))
      peaks.back() = best;
  }
  return peaks;
}

void keep_largest(std::vector<std::size_t> &peaks, std::size_t count, std::span<const double> error) {
  const auto height = [&](std::size_t i) { return std::abs(error[peaks[i]]); };
  while (peaks.size() > count) {
    if ((peaks.size() - count) % 2 != 0) {
      peaks.erase(height(0) < height(peaks.size() - 1) ? peaks.begin() : peaks.end() - 1);
      continue;
    }
    std::size_t lowest = 0;
    double height_of_lowest = INFINITY;
    for (std::size_t i = 0; i + 1 < peaks.size(); i++) {
      const double pair = std::max(height(i), height(i + 1));
      if (pair < height_of_lowest) {
        height_of_lowest = pair;
        lowest = i;
      }
    }
    peaks.erase(peaks.begin() + static_cast<long>(lowest), peaks.begin() + static_cast<long>(lowest) + 2);
  }
}

} // namespace brisel
