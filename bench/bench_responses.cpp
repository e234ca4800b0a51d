// bench_responses.cpp - cost of the responses against taps, points and sections.
#include "engine/analysis/fir_response.h"
#include "engine/analysis/fir_zeros.h"
#include "engine/analysis/lattice_response.h"
#include "engine/analysis/ratio_response.h"
#include "engine/analysis/section_response.h"

#include <benchmark/benchmark.h>

#include <numbers>
#include <vector>

namespace brisel {
namespace {

struct Arrays {
  explicit Arrays(std::size_t n) : points(n), magnitude(n), phase(n), group_delay(n) {}
  FrequencyResponse view() { return {magnitude, phase, group_delay}; }
  std::vector<double> points, magnitude, phase, group_delay;
};

std::vector<double> low_pass(int length) {
  std::vector<double> h(length);
  for (int k = 0; k < length; ++k) {
    const double t = std::abs(k - 0.5 * (length - 1)) + 1e-3;
    h[k] = std::sin(0.3 * t) / (std::numbers::pi * t);
  }
  return h;
}

enum Grid { half_circle, band, logarithmic };

void fir_frequency(benchmark::State &state, Grid kind) {
  const std::vector<double> h = low_pass(static_cast<int>(state.range(0)));
  Arrays arrays(10001);
  const double pi = std::numbers::pi;
  for (auto _ : state) {
    const FrequencyGrid grid = kind == logarithmic ? logarithmic_grid(pi / 1e4, pi, arrays.points)
                               : kind == band      ? linear_grid(0.1, 2.9, 2 * pi, arrays.points)
                                                   : linear_grid(0, pi, 2 * pi, arrays.points);
    fir_frequency_response(h, 1, GroupDelay::constant, 1, grid, arrays.view());
    benchmark::DoNotOptimize(arrays.magnitude.data());
  }
}
BENCHMARK_CAPTURE(fir_frequency, half_circle, half_circle)
    ->Arg(101)
    ->Arg(1001)
    ->Arg(10001)
    ->Arg(50000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fir_frequency, band, band)
    ->Arg(101)
    ->Arg(1001)
    ->Arg(10001)
    ->Arg(50000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fir_frequency, logarithmic, logarithmic)
    ->Arg(101)
    ->Arg(1001)
    ->Arg(10001)
    ->Arg(50000)
    ->Unit(benchmark::kMillisecond);

void zeros(benchmark::State &state) {
  const std::vector<double> h = low_pass(static_cast<int>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(fir_zeros(h));
}
BENCHMARK(zeros)->Arg(63)->Arg(127)->Arg(255)->Arg(512)->Unit(benchmark::kMillisecond);

// 10001 points, and the time responses of 600 samples, of sections whose poles are spread over the circle.
SectionEntry spread_sections(int count) {
  SectionEntry entry{};
  entry.section_count = static_cast<std::int16_t>(count);
  entry.gain = entry.pars = 1;
  entry.sample_rate = two_pi;
  for (int k = 0; k < count; ++k) {
    const double angle = std::numbers::pi * (k + 0.5) / count;
    entry.numerators[k] = {1, -2 * std::cos(angle + 0.1), 1};
    entry.denominators[k] = {1, -1.9 * std::cos(angle), 0.9025};
  }
  return entry;
}

std::vector<double> half_circle_points() {
  std::vector<double> points(10001);
  linear_grid(0, std::numbers::pi, 2 * std::numbers::pi, points);
  return points;
}

template <auto Respond> void section_frequency(benchmark::State &state) {
  const SectionEntry entry = spread_sections(static_cast<int>(state.range(0)));
  const std::vector<double> points = half_circle_points();
  Arrays arrays(points.size());
  for (auto _ : state) {
    Respond(entry, Plane::z, points, arrays.view());
    benchmark::DoNotOptimize(arrays.magnitude.data());
  }
}
BENCHMARK(section_frequency<cascade_frequency_response>)->Arg(4)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(section_frequency<parallel_frequency_response>)->Arg(4)->Arg(20)->Arg(100)->Unit(benchmark::kMillisecond);

template <auto Respond> void section_time(benchmark::State &state) {
  const SectionEntry entry = spread_sections(static_cast<int>(state.range(0)));
  std::vector<double> impulse(600), step(600);
  for (auto _ : state) {
    Respond(entry, {impulse, step});
    benchmark::DoNotOptimize(impulse.data());
  }
}
BENCHMARK(section_time<cascade_time_response>)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(section_time<parallel_time_response>)->Arg(100)->Unit(benchmark::kMillisecond);

void ratio_frequency(benchmark::State &state) {
  RatioEntry ratio{};
  ratio.gain = 1;
  ratio.sample_rate = two_pi;
  ratio.numerator_order = ratio.denominator_order = static_cast<std::int16_t>(state.range(0));
  for (int k = 0; k <= ratio.denominator_order; ++k) {
    ratio.numerator[k] = 1;
    ratio.denominator[k] = std::pow(-0.5, k);
  }
  const std::vector<double> points = half_circle_points();
  Arrays arrays(points.size());
  for (auto _ : state) {
    ratio_frequency_response(ratio, points, arrays.view());
    benchmark::DoNotOptimize(arrays.magnitude.data());
  }
}
BENCHMARK(ratio_frequency)->Arg(20)->Arg(200)->Unit(benchmark::kMillisecond);

void lattice_frequency(benchmark::State &state) {
  LatticeEntry lattice{};
  lattice.gain = 1;
  lattice.sample_rate = two_pi;
  lattice.order = static_cast<std::int16_t>(state.range(0));
  for (int k = 0; k <= lattice.order; ++k) lattice.kappa[k] = lattice.gamma[k] = 0.5 * std::cos(k);
  const std::vector<double> points = half_circle_points();
  Arrays arrays(points.size());
  for (auto _ : state) {
    lattice_frequency_response(lattice, points, arrays.view());
    benchmark::DoNotOptimize(arrays.magnitude.data());
  }
}
BENCHMARK(lattice_frequency)->Arg(20)->Arg(200)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace brisel

BENCHMARK_MAIN();
