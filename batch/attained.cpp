#include "batch/attained.h"

#include "engine/analysis/fir_response.h"
#include "engine/core/code_tables.h"
#include "engine/files/text_file.h"
#include "engine/fir/desired_response.h"
#include "engine/fir/halfband.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace brisel {

namespace {

constexpr double pi = std::numbers::pi;

std::vector<Requirement> pass_and_stop(const FilterSpec &spec, std::vector<Band> pass, std::vector<Band> stop,
                                       std::vector<Band> between, const Compensation &compensation) {
  const auto desired = [compensation](double w) { return compensation_factor(compensation, w); };
  return {{"passband ripple", Measure::ripple_db, std::move(pass), desired, spec.passband_ripple},
          {"stopband attenuation", Measure::attenuation_db, std::move(stop), {}, spec.stopband_ripple},
          {"largest gain in between", Measure::peak_db, std::move(between), {}}};
}

/// One requirement a band of a multiband or arbitrary-magnitude specification.
template <class Desired>
std::vector<Requirement> band_by_band(const FilterSpec &spec, const Compensation &compensation, Desired desired) {
  std::vector<Requirement> all;
  for (int b = 0; b < spec.band_count; b++) {
    const bool relative = spec.type == code(FilterType::arbitrary_magnitude) && spec.proportional[b];
    all.push_back(
        {formatf(relative ? "band %d, relative error" : "band %d, error", b + 1),
         relative ? Measure::relative_error : Measure::error,
         {{spec.band_lower[b], spec.band_upper[b]}},
         [gain = desired(b), compensation](double w) { return gain(w) * compensation_factor(compensation, w); },
         spec.band_ripple[b]});
  }
  return all;
}

} // namespace

std::vector<Requirement> requirements(const FilterSpec &spec, const Compensation &compensation) {
  const auto &pass = spec.passband_edge;
  const auto &stop = spec.stopband_edge;
  const auto parts = [&](std::vector<Band> passbands, std::vector<Band> stopbands, std::vector<Band> between) {
    return pass_and_stop(spec, std::move(passbands), std::move(stopbands), std::move(between), compensation);
  };
  switch (static_cast<FilterType>(spec.type)) {
  case FilterType::low_pass:
  case FilterType::high_pass:
  case FilterType::band_pass:
  case FilterType::band_stop:
    return parts(passbands(spec), stopbands(spec), transition_bands(spec));
  case FilterType::half_band: {
    const double edge = halfband_stopband_edge(spec);
    auto all = parts({{0, pass[0]}}, {{edge, pi}}, {{pass[0], edge}});
    all[0].asked = 0;
    return all;
  }
  case FilterType::raised_cosine:
  case FilterType::root_raised_cosine: {
    // The curve is the requirement; its level parts are what ripple and attenuation mean.
    auto all = pass_and_stop(spec, {{0, pass[0]}}, {{stop[0], pi}}, {}, {});
    const auto curve = spec.type == code(FilterType::raised_cosine) ? raised_cosine : root_raised_cosine;
    all[2] = {"largest error from the curve",
              Measure::error,
              {{0, pi}},
              [curve, edges = std::array{pass[0], stop[0]}](double w) { return curve(w, edges[0], edges[1]); }};
    return all;
  }
  case FilterType::differentiator:
    return {{"error",
             Measure::percent_error,
             {{pass[0], pass[1]}},
             [spec, compensation](double w) {
               return std::abs(differentiator_amplitude(spec, w)) * compensation_factor(compensation, w);
             },
             spec.passband_ripple}};
  case FilterType::hilbert:
    return {{"error",
             Measure::percent_error,
             {{pass[0], pass[1]}},
             [compensation](double w) { return compensation_factor(compensation, w); },
             spec.passband_ripple}};
  case FilterType::multiband:
    return band_by_band(spec, compensation,
                        [&](int b) { return [value = std::abs(spec.band_value[b])](double) { return value; }; });
  case FilterType::arbitrary_magnitude:
    return band_by_band(spec, compensation, [&](int b) {
      return [table = magnitude_table(spec, b)](double w) { return interpolate(table, w); };
    });
  case FilterType::arbitrary_group_delay:
    break;
  }
  return {};
}

Sampler fir_sampler(std::span<const double> taps, double gain) {
  return [taps, gain](Band band) {
    // The gain of N taps has extrema about 2 pi / N apart, but far closer ones next to a steep transition band.
    const double spacing = 2 * pi / (16 * static_cast<double>(taps.size()));
    const double width = band.high - band.low;
    const double edge = std::min(width / 3, 32 * spacing); // two extrema, sampled 32 times as densely
    Samples samples;
    const auto append = [&](double low, double high, double step, double most) {
      const std::size_t count =
          high > low ? static_cast<std::size_t>(std::clamp((high - low) / step, 64.0, most)) + 1 : 2;
      std::vector<double> w(count);
      std::vector<std::complex<double>> sums(count);
      centred_response(taps, linear_grid(low, high, 2 * pi, w), sums);
      const std::size_t first = samples.w.empty() ? 0 : 1; // the piece begins where the last one ended
      samples.w.insert(samples.w.end(), w.begin() + first, w.end());
      for (std::size_t i = first; i < count; i++) samples.gain.push_back(std::abs(sums[i] * gain));
    };
    if (!(width > 0)) {
      append(band.low, band.high, spacing, 1);
    } else {
      append(band.low, band.low + edge, spacing / 32, 1e7);
      append(band.low + edge, band.high - edge, spacing, 1e7);
      append(band.high - edge, band.high, spacing / 32, 1e7);
    }
    return samples;
  };
}

Sampler iir_sampler(PlaneValues values) {
  return [values = std::move(values)](Band band) {
    constexpr std::size_t points = 8001;
    const std::size_t count = band.high > band.low ? points : 2;
    Samples samples{std::vector<double>(count), std::vector<double>(count)};
    std::vector<std::complex<double>> z(count);
    for (std::size_t i = 0; i < count; i++) {
      const double angle = pi * static_cast<double>(i) / static_cast<double>(count - 1);
      const double rise = std::sin(angle / 2) * std::sin(angle / 2);
      samples.w[i] = i + 1 == count ? band.high : band.low + (band.high - band.low) * rise;
      z[i] = std::polar(1.0, samples.w[i]);
    }
    const auto found = values(z);
    std::transform(found.begin(), found.end(), samples.gain.begin(),
                   [](std::complex<double> v) { return std::abs(v); });
    return samples;
  };
}

namespace {

/// Largest value of y over x, that of a parabola through the largest sample and its neighbours where they form a peak.
double peak(const std::vector<double> &x, const std::vector<double> &y) {
  double largest = y.front();
  for (std::size_t i = 0; i < y.size(); i++) {
    largest = std::max(largest, y[i]);
    if (i == 0 || i + 1 == y.size() || y[i] < y[i - 1] || y[i] < y[i + 1]) continue;
    // y[i] + slope t + curvature t^2, t = x - x[i].
    const double left = x[i - 1] - x[i], right = x[i + 1] - x[i];
    const double left_slope = (y[i - 1] - y[i]) / left, right_slope = (y[i + 1] - y[i]) / right;
    const double curvature = (right_slope - left_slope) / (right - left);
    const double slope = left_slope - curvature * left;
    if (curvature < 0) largest = std::max(largest, y[i] - slope * slope / (4 * curvature));
  }
  return largest;
}

double in_db(double ratio) {
  return ratio > 1e-30 ? 20 * std::log10(ratio) : -600;
}

struct Extremes {
  double largest = -INFINITY;
  double smallest = INFINITY;
};

/// Extremes of `value(gain, w)` over the bands.
template <class Value> Extremes extremes(const std::vector<Band> &bands, const Sampler &sampler, Value value) {
  Extremes found;
  for (const Band band : bands) {
    const Samples samples = sampler(band);
    std::vector<double> values(samples.w.size());
    for (std::size_t i = 0; i < values.size(); i++) values[i] = value(samples.gain[i], samples.w[i]);
    found.largest = std::max(found.largest, peak(samples.w, values));
    for (double &v : values) v = -v;
    found.smallest = std::min(found.smallest, -peak(samples.w, values));
  }
  return found;
}

} // namespace

std::vector<double> attained(const std::vector<Requirement> &requirements, const Sampler &sampler) {
  std::vector<double> figures;
  double reference = 1;
  for (const Requirement &wanted : requirements) {
    const auto over = [&](auto value) { return extremes(wanted.bands, sampler, value); };
    const auto gain = [](double gain, double) { return gain; };
    switch (wanted.measure) {
    case Measure::ripple_db: {
      const Extremes ratio = over([&](double gain, double w) { return gain / wanted.desired(w); });
      reference = ratio.largest;
      figures.push_back(in_db(ratio.largest) - in_db(ratio.smallest));
      break;
    }
    case Measure::attenuation_db:
      figures.push_back(in_db(reference) - in_db(over(gain).largest));
      break;
    case Measure::peak_db:
      figures.push_back(in_db(over(gain).largest));
      break;
    case Measure::error: {
      const Extremes error = over([&](double gain, double w) { return gain - wanted.desired(w); });
      figures.push_back(std::max(error.largest, -error.smallest));
      break;
    }
    case Measure::relative_error:
    case Measure::percent_error: {
      const Extremes error = over([&](double gain, double w) {
        const double desired = wanted.desired(w);
        return desired > 0 ? gain / desired - 1 : 0;
      });
      const double worst = std::max(error.largest, -error.smallest);
      figures.push_back(wanted.measure == Measure::percent_error ? 100 * worst : worst);
      break;
    }
    }
  }
  return figures;
}

} // namespace brisel
