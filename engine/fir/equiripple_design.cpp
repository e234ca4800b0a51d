// equiripple_design.cpp - the equiripple method: attempts, proof of the optimum, messages.
#include "engine/fir/equiripple_design.h"

#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "engine/fir/optimal_setup.h"

namespace brisel {

constexpr int longest_equiripple_estimate = 4096;
constexpr int second_density = 8;

RemezStatus remez_attempt(const BandPlan &plan, int density, const Progress &progress, std::vector<double> &half,
                          OptimalReport &report) {
  const int r = cosine_count(plan.length, plan.symmetric());
  DesignGrid grid;
  // Kept: the density doubles without limit of its own; narrow bands are cured by it, and the memory ends it.
  for (;; density *= 2) {
    if (grid_bytes(density, r) > design_memory_budget) return RemezStatus::no_memory;
    trace(" EQ FIR: memory allocated, grid = %d\n", density);
    trace(" delf = %f\n", grid_spacing(density, r));
    grid = remez_grid(plan, density);
    trace_samples(grid);
    trace(" ngrid = %d\n", static_cast<int>(grid.size()));
    if (grid.size() >= static_cast<std::size_t>(plan.length) + 3) break;
  }
  DesignGrid transformed = grid;
  case_transform(plan, transformed);
  const ExchangeResult exchange = remez_exchange(transformed, r, progress);
  trace(" Number of Iterations = %d\n", exchange.iterations);
  if (exchange.error == ExchangeError::stopped) return RemezStatus::stopped;
  if (exchange.error == ExchangeError::degenerate) return RemezStatus::degenerate;
  trace(" EQ conversion lim = %d\n", r);
  half = remez_to_taps(plan, cosine_series(exchange, grid.frequency.front(), grid.frequency.back()));
  // The exchange may end early, and digits may be lost on the way to taps: only the taps can tell.
  report = check_optimality(plan, grid, half);
  return report.optimal() ? RemezStatus::done : RemezStatus::not_optimal;
}

static void post_failure(RemezStatus result, const OptimalReport &report) {
  switch (result) {
  case RemezStatus::no_memory:
    post_message(Message::equiripple_memory);
    break;
  case RemezStatus::degenerate:
    post_message(Message::extremal_set_degenerate,
                 "two extremal frequencies fell together" + what_would_do(design_record.spec));
    break;
  case RemezStatus::not_optimal:
    post_message(Message::exchange_failed,
                 formatf("the weighted error alternates %d times near its peak of %.3g, the optimum does so %d times",
                         report.extrema, report.peak_error, report.required) +
                     what_would_do(design_record.spec));
    break;
  default:
    break;
  }
  post_message(Message::equiripple_failed);
}

void equiripple_design() {
  const auto plan = fir_band_setup(longest_equiripple_estimate);
  if (!plan) return;
  std::vector<double> half;
  OptimalReport report;
  RemezStatus result = remez_attempt(*plan, design_density, go_on, half, report);
  if (result == RemezStatus::degenerate || result == RemezStatus::not_optimal)
    result = remez_attempt(*plan, second_density, go_on, half, report);
  if (result == RemezStatus::stopped) return;
  if (result != RemezStatus::done) return post_failure(result, report);
  store_optimal_design(half, "\n Equiripple Filter Design\n");
  note_optimal_report(*plan, report);
}

} // namespace brisel
