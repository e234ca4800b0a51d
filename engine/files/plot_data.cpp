#include "engine/files/plot_data.h"

#include "engine/files/text_file.h"

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

// In the order of plot_data_files.
std::array<const double *, plot_data_files.size()> responses(const PlotArrays &arrays) {
  return {arrays.group_delay.data(), arrays.impulse.data(), arrays.log_magnitude.data(),
          arrays.magnitude.data(),   arrays.phase.data(),   arrays.step.data()};
}

} // namespace

std::optional<std::string> plot_data_text(std::size_t index, const PlotArrays &arrays, double interval, bool radians) {
  const bool over_time = plot_data_files[index].over_time;
  const double *values = responses(arrays)[index];
  const int count =
      over_time ? std::min(arrays.time_count, max_time_points) : std::min(arrays.frequency_count, max_frequency_points);
  const double to_unit = 1 / (radians ? interval : two_pi * interval);
  std::string text;
  for (int i = 0; i < count; i++) {
    const auto place = static_cast<std::size_t>(i);
    const double horizontal = over_time ? i * interval : arrays.frequency[place] * to_unit;
    if (!std::isfinite(horizontal) || !std::isfinite(values[i])) return std::nullopt;
    appendf(text, "%12.8e\t%12.8e\n", horizontal, values[i]);
  }
  return text;
}

} // namespace brisel
