// bench_optimal.cpp - cost of equiripple, least-squares and linear-programming designs and of tap searches
// against taps, proof of the optimum included.
#include "engine/core/trace.h"
#include "engine/fir/equiripple_design.h"
#include "engine/fir/least_squares.h"
#include "engine/fir/linear_program.h"
#include "engine/fir/tap_search.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>

namespace brisel {
namespace {

// A lowpass whose transition narrows as the length grows, so that the ripple stays what it is.
BandPlan lowpass(int taps) {
  FilterSpec spec{};
  spec.length = taps;
  spec.sampling_frequency = two_pi;
  spec.passband_ripple = 0.1;
  spec.stopband_ripple = 60;
  const double width = two_pi * 3 / taps;
  spec.passband_edge[0] = 0.5 * std::numbers::pi - width / 2;
  spec.stopband_edge[0] = 0.5 * std::numbers::pi + width / 2;
  BandPlan plan;
  PlanRefusal refusal;
  if (!plan_bands(spec, {}, plan, refusal)) std::abort();
  return plan;
}

void equiripple(benchmark::State &state) {
  const BandPlan plan = lowpass(static_cast<int>(state.range(0)));
  std::vector<double> half;
  OptimalReport report;
  for (auto _ : state) {
    if (remez_attempt(plan, 16, nullptr, half, report) != RemezStatus::done) state.SkipWithError("no optimum");
    benchmark::DoNotOptimize(half.data());
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(equiripple)->Arg(51)->Arg(201)->Arg(501)->Arg(1001)->Arg(2001)->Unit(benchmark::kMillisecond)->Complexity();

void equiripple_true(benchmark::State &state) {
  const BandPlan plan = lowpass(static_cast<int>(state.range(0)));
  std::vector<double> half;
  OptimalReport report;
  int taps;
  for (auto _ : state) {
    if (true_attempt(plan, nullptr, half, report, taps) != RemezStatus::done) state.SkipWithError("no optimum");
    benchmark::DoNotOptimize(half.data());
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(equiripple_true)
    ->Arg(201)
    ->Arg(1001)
    ->Arg(2001)
    ->Arg(4561)
    ->Arg(10001)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

void least_squares(benchmark::State &state) {
  const BandPlan plan = lowpass(static_cast<int>(state.range(0)));
  std::vector<double> half;
  for (auto _ : state) {
    const auto go_on = [](double) { return true; };
    if (solve_least_squares(plan, square_moments(plan), 1e-12, go_on, half) != SquaresOutcome::solved)
      state.SkipWithError("singular");
    benchmark::DoNotOptimize(half.data());
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(least_squares)->Arg(51)->Arg(501)->Arg(1001)->Arg(2001)->Unit(benchmark::kMillisecond)->Complexity();

// One search for better 16-bit words near a truncated sinc under a raised cosine.
void tap_search(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  const double quantum = std::ldexp(1.0, -15), width = two_pi * 2 / n, pi = std::numbers::pi;
  std::vector<double> rounded;
  for (int k = 0; k < n; k++) {
    const double x = k - 0.5 * (n - 1), sinc = x == 0 ? 0.5 : std::sin(pi / 2 * x) / (pi * x);
    rounded.push_back(quantum * std::round(sinc * (0.5 + 0.5 * std::cos(two_pi * x / n)) / quantum));
  }
  const TapGoal goal{{{0, pi / 2 - width}}, {{pi / 2 + width, pi}}, [](double) { return 1.0; }, 0.1, 60};
  for (auto _ : state) {
    std::vector<double> taps = rounded;
    search_taps(
        taps, goal, {1, 100, quantum, 0.01}, [](const TapFigures &, int) {}, [](double) { return true; });
    benchmark::DoNotOptimize(taps.data());
  }
  state.SetComplexityN(n);
}
BENCHMARK(tap_search)->Arg(101)->Arg(501)->Arg(2001)->Arg(4001)->Unit(benchmark::kMillisecond)->Complexity();

void linear_program(benchmark::State &state) {
  const BandPlan plan = lowpass(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    Tableau tableau = make_tableau(plan, linear_program_samples(plan));
    if (find_start_basis(tableau, nullptr) != StartBasis::found ||
        simplex_solve(tableau, nullptr) != SimplexOutcome::optimal)
      state.SkipWithError("no optimum");
    benchmark::DoNotOptimize(optimal_taps(tableau, plan).data());
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(linear_program)->Arg(21)->Arg(51)->Arg(101)->Arg(201)->Unit(benchmark::kMillisecond)->Complexity();

} // namespace
} // namespace brisel

int main(int argc, char **argv) {
  const brisel::SystemFile nowhere{brisel::SystemFile::Kind::null_device, ""};
  brisel::choose_system_files({nowhere, nowhere});
  brisel::reopen_system_files();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
