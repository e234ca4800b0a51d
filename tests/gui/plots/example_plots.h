// example_plots.h - plot descriptions of small filters for the tests of the drawing, computed by the defining sums.
#pragma once

#include "engine/analysis/plot_arrays.h"

#include <cmath>
#include <complex>
#include <memory>
#include <numbers>

namespace brisel {

/// Owns what the descriptions point at.
class ExamplePlots {
public:
  /// Responses of FIR taps on `points` frequencies from 0 to half of `sampling_hz`.
  ExamplePlots(std::vector<double> taps, double sampling_hz, int points = 1001)
      : taps(std::move(taps)), frequency(points), magnitude(points), decibels(points), phase(points), delay(points),
        step(this->taps.size()) {
    const int count = static_cast<int>(this->taps.size());
    state.sampling_frequency = two_pi * sampling_hz;
    state.factor = 1 / sampling_hz;
    state.frequency = {0, state.sampling_frequency / 2};
    state.fir_design = true;
    state.poles_zeros_computed = true;
    state.origin_poles = count - 1;
    set_grid([&](int i) { return std::numbers::pi * i / (points - 1); });
    double sum = 0;
    for (int i = 0; i < count; i++) step[i] = sum += this->taps[i];
    time_range = {0, (count - 1) / sampling_hz};
  }

  /// The same on a logarithmic grid of four decades below half the sampling frequency's next power of ten.
  void make_logarithmic() {
    const double end = state.sampling_frequency / two_pi / 2;
    const double high = std::pow(10, std::ceil(std::log10(end)));
    state.log_axis = true;
    state.decades = 4;
    state.log_range = {two_pi * high / 1e4, two_pi * high};
    const int points = static_cast<int>(frequency.size());
    set_grid(
        [&](int i) { return high / 1e4 * two_pi * state.factor * std::pow(end / (high / 1e4), i / (points - 1.0)); });
  }

  PlotDescription plot(PlotKind kind) const {
    const PlotKindRow &row = plot_kinds[static_cast<std::size_t>(code(kind))];
    PlotDescription d{};
    d.kind = kind;
    d.title = row.title;
    d.y_label = row.y_label;
    if (kind == PlotKind::pole_zero) return d;
    if (kind >= PlotKind::impulse) {
      d.y = kind == PlotKind::impulse ? taps.data() : step.data();
      d.count = static_cast<int>(taps.size());
      d.x_range = time_range;
      d.x_step = state.factor;
      d.x_scale = time_range[1] < 1 ? 1000 : 1;
      d.x_label = time_range[1] < 1 ? "Time (Milliseconds)" : "Time (Seconds)";
      d.samples_as_marks = kind == PlotKind::impulse;
      d.y_range = spread(d.y, d.count, kind == PlotKind::step);
      return d;
    }
    d.x = frequency.data();
    d.count = static_cast<int>(frequency.size());
    d.x_scale = 1 / (state.factor * (state.radians ? 1 : two_pi));
    d.x_label = state.radians ? "Frequency (Radians)" : "Frequency (Hertz)";
    const Range &range = state.log_axis ? state.log_range : state.frequency;
    d.x_range = {range[0] * state.factor, range[1] * state.factor};
    switch (kind) {
    case PlotKind::magnitude:
      d.y = magnitude.data(), d.y_range = {0, 1};
      break;
    case PlotKind::log_magnitude:
      d.y = decibels.data(), d.y_range = {-100, 0};
      break;
    case PlotKind::phase:
      d.y = phase.data(), d.y_range = {-std::numbers::pi, std::numbers::pi};
      break;
    default:
      d.y = delay.data(), d.y_range = {delay[0] / 2, delay[0] * 2};
    }
    return d;
  }

  PlotState state{};
  std::vector<double> taps, frequency, magnitude, decibels, phase, delay, step;
  Range time_range;

private:
  template <class Angle> void set_grid(Angle angle) {
    for (std::size_t i = 0; i < frequency.size(); i++) {
      const double w = frequency[i] = angle(static_cast<int>(i));
      std::complex<double> sum = 0;
      for (std::size_t k = 0; k < taps.size(); k++) sum += std::polar(taps[k], -w * static_cast<double>(k));
      magnitude[i] = std::abs(sum);
      decibels[i] = magnitude[i] > 1e-30 ? 20 * std::log10(magnitude[i]) : -600;
      phase[i] = std::arg(sum);
      delay[i] = (static_cast<double>(taps.size()) - 1) / 2 * state.factor;
    }
  }

  static Range spread(const double *values, int count, bool with_zero) {
    Range range{values[0], values[0]};
    for (int i = 1; i < count; i++) range = {std::min(range[0], values[i]), std::max(range[1], values[i])};
    const double reach = 1.2 * std::max(std::abs(range[0]), std::abs(range[1]));
    if (range[0] < 0 && range[1] > 0) return {-reach, reach};
    return with_zero ? Range{0, reach} : range;
  }
};

/// Lowpass taps: a sinc of cutoff `cutoff` (of half the sampling frequency) under a cosine-squared window.
inline std::vector<double> lowpass_taps(int count, double cutoff) {
  std::vector<double> taps(count);
  for (int i = 0; i < count; i++) {
    const double t = i - (count - 1) / 2.0, u = std::numbers::pi * t;
    const double window = std::pow(std::cos(std::numbers::pi * t / (count + 1)), 2);
    taps[i] = window * (t == 0 ? cutoff : std::sin(cutoff * u) / u);
  }
  return taps;
}

} // namespace brisel
