// desired_response.cpp - band tables and curves of the FIR types whose amplitude is not simply 0 or 1.
#include "engine/fir/desired_response.h"

#include "engine/core/code_tables.h"
#include "engine/core/spec_bands.h"

#include <algorithm>
#include <cmath>

namespace brisel {

BandStretches band_stretches(const FilterSpec &spec) {
  BandStretches s;
  s.count = std::clamp(spec.band_count, 0, max_bands);
  for (int b = 1; b < s.count; b++) s.edge[b] = (spec.band_upper[b - 1] + spec.band_lower[b]) / 2;
  s.edge[s.count] = std::numbers::pi;
  return s;
}

MagnitudeTable magnitude_table(const FilterSpec &spec, int band) {
  const auto gain = [&](double value) { return linear_gain(spec, band, value); };
  MagnitudeTable table;
  if (spec.fixed_gain[band] || spec.point_count[band] == 0) {
    table.count = 1;
    table.frequency[0] = spec.band_lower[band];
    table.gain[0] = gain(spec.band_value[band]);
    return table;
  }
  table.count = std::min<int>(spec.point_count[band], max_points_per_band);
  for (int i = 0; i < table.count; i++) {
    table.frequency[i] = spec.function_frequency[band * max_points_per_band + i];
    table.gain[i] = gain(spec.function_value[band * max_points_per_band + i]);
  }
  return table;
}

double interpolate(const MagnitudeTable &table, double w) {
  const auto begin = table.frequency.begin();
  const auto above = std::upper_bound(begin, begin + table.count, w);
  const auto i = above - begin;
  if (i == 0) return table.gain[0];
  if (i == table.count) return table.gain[i - 1];
  const double fraction = (w - table.frequency[i - 1]) / (table.frequency[i] - table.frequency[i - 1]);
  return std::lerp(table.gain[i - 1], table.gain[i], fraction);
}

double desired_at(const FilterSpec &spec, int band, double w) {
  if (spec.type == code(FilterType::multiband)) return spec.band_value[band];
  return interpolate(magnitude_table(spec, band), w);
}

double step_below_band(const FilterSpec &spec, int band) {
  const double below = desired_at(spec, band - 1, spec.band_upper[band - 1]);
  const double above = desired_at(spec, band, spec.band_lower[band]);
  constexpr double rounding = 1e-12; // of edges between two points, and of gains given in dB
  const double step = std::abs(above - below);
  return step > rounding * std::max(std::abs(above), std::abs(below)) ? step : 0;
}

std::optional<int> band_that_jumps(const FilterSpec &spec) {
  const bool multiband = spec.type == code(FilterType::multiband);
  if (!multiband && spec.type != code(FilterType::arbitrary_magnitude)) return std::nullopt;
  for (int b = 1; b < std::min(spec.band_count, multiband ? max_bands : max_arbitrary_bands); b++)
    if (spec.band_lower[b] == spec.band_upper[b - 1] && step_below_band(spec, b) > 0) return b;
  return std::nullopt;
}

double root_raised_cosine(double w, double passband_edge, double stopband_edge) {
  if (w <= passband_edge) return 1;
  if (w >= stopband_edge) return 0;
  // sqrt(0.5 + 0.5 cos x) is cos(x / 2).
  return std::cos((w - passband_edge) / (stopband_edge - passband_edge) * (std::numbers::pi / 2));
}

double raised_cosine(double w, double passband_edge, double stopband_edge) {
  const double root = root_raised_cosine(w, passband_edge, stopband_edge);
  return root * root;
}

double differentiator_amplitude(const FilterSpec &spec, double w) {
  return w >= spec.passband_edge[0] && w <= spec.passband_edge[1] ? spec.slope * w : 0;
}

} // namespace brisel
