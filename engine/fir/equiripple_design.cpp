// equiripple_design.cpp - the equiripple method: attempts, proof of the optimum, messages.
#include "engine/fir/equiripple_design.h"

#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "engine/fir/exchange_taps.h"
#include "engine/fir/gap_bounds.h"
#include "engine/fir/optimal_setup.h"
#include "engine/fir/run_selections.h"
#include "engine/fir/true_exchange.h"

#include <algorithm>
#include <cmath>

namespace brisel {

constexpr int longest_equiripple_estimate = 4096;
constexpr int second_density = 8;
constexpr double nothing_left = 2e-13;      // error at the floor of rounding, in parts of the largest weighted value
constexpr double floor_of_rounding = 2e-14; // in the same parts: an error below it stands, however it alternates
constexpr double deviation_of_rounding = 1e-13; // a deviation of the first exchange below it is noise
constexpr double largest_bound = 2;             // a filter further from the optimum than this is no answer

// The grid of the least density, from `density` on, that holds enough points.
static std::optional<DesignGrid> design_grid(const BandPlan &plan, int density) {
  const int r = cosine_count(plan.length, plan.symmetric());
  // Kept: the density doubles without limit of its own; narrow bands are cured by it, and the memory ends it.
  for (;; density *= 2) {
    if (grid_bytes(density, r) > design_memory_budget) return std::nullopt;
    trace(" EQ FIR: memory allocated, grid = %d\n", density);
    trace(" delf = %f\n", grid_spacing(density, r));
    DesignGrid grid = remez_grid(plan, density);
    trace_samples(grid);
    trace(" ngrid = %d\n", static_cast<int>(grid.size()));
    if (grid.size() >= static_cast<std::size_t>(plan.length) + 3) return grid;
  }
}

RemezStatus remez_attempt(const BandPlan &plan, int density, const Progress &progress, std::vector<double> &half,
                          OptimalReport &report) {
  const int r = cosine_count(plan.length, plan.symmetric());
  const auto found = design_grid(plan, density);
  if (!found) return RemezStatus::no_memory;
  const DesignGrid &grid = *found;
  DesignGrid transformed = grid;
  case_transform(plan, transformed);
  const ExchangeResult exchange = remez_exchange(transformed, r, progress);
  trace(" Number of Iterations = %d\n", exchange.iterations);
  if (exchange.error == ExchangeError::stopped) return RemezStatus::stopped;
  if (exchange.error == ExchangeError::degenerate) return RemezStatus::degenerate;
  double largest = 0;
  for (std::size_t i = 0; i < exchange.extremal.size(); i++)
    largest = std::max(largest, std::abs(exchange.extremal.desired[i] * exchange.extremal.weight[i]));
  if (exchange.deviation < deviation_of_rounding * largest) return RemezStatus::in_rounding;
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
                 (std::isfinite(report.peak_error)
                      ? formatf("the weighted error alternates %d times near its peak of %.3g, the optimum does so %d "
                                "times",
                                report.extrema, report.peak_error, report.required)
                      : "no digit of the taps was left") +
                     what_would_do(design_record.spec));
    break;
  default:
    break;
  }
  post_message(Message::equiripple_failed);
}

RemezStatus true_attempt(BandPlan plan, const Progress &progress, std::vector<double> &half, OptimalReport &report,
                         int &taps) {
  const auto grid = design_grid(plan, design_density);
  if (!grid) return RemezStatus::no_memory;
  const TrueOptimum optimum = true_exchange(plan, progress);
  trace(" Number of Iterations = %d\n", optimum.exchange.iterations);
  if (optimum.exchange.error == ExchangeError::stopped) return RemezStatus::stopped;
  if (optimum.exchange.error == ExchangeError::degenerate || optimum.exchange.extremal.frequency.size() < 2)
    return RemezStatus::degenerate;
  taps = optimum.length;
  BandPlan designed = plan;
  designed.length = taps;
  half = levelled_taps(designed, optimum.exchange.extremal);
  half.resize(static_cast<std::size_t>(plan.half_length()));
  weigh_ramps(plan, optimum.exchange.deviation);
  report = check_optimality(plan, remez_grid(plan, design_density), half);
  if (report.dense_peak_error < floor_of_rounding * optimum.exchange.scale) return RemezStatus::done;
  if (optimum.exchange.error == ExchangeError::below_rounding)
    return report.dense_peak_error < nothing_left * optimum.exchange.scale ? RemezStatus::done
                                                                           : RemezStatus::not_optimal;
  return report.bound > 0 && report.bound <= largest_bound ? RemezStatus::done : RemezStatus::not_optimal;
}

// Above this gain between the bands, in parts of the largest desired value, a filter is no answer.
constexpr double largest_gap_gain = 2;
// A bounded gain is to stay below this one; the ramps grow towards the bands until it does.
constexpr double bounded_gap_gain = 1.5;
constexpr double first_margin = 0.5, next_margin = 0.5;
constexpr int most_margins = 4;

static bool gaps_within(const OptimalReport &report, double gain) {
  return report.transition_gain <= gain * report.largest_desired;
}

// The best filter whose gain between the bands is bounded where a gap is wider than the narrowest.
static RemezStatus bounded_attempt(const BandPlan &plan, const Progress &progress, std::vector<double> &half,
                                   OptimalReport &report, int &taps, std::vector<Gap> &bounded) {
  double margin = first_margin;
  for (int attempt = 0; attempt < most_margins; attempt++, margin *= next_margin) {
    const BoundedPlan ramped = bound_gaps(plan, margin);
    if (ramped.bounded.empty()) return RemezStatus::not_optimal;
    bounded = ramped.bounded;
    const RemezStatus status = true_attempt(ramped.plan, progress, half, report, taps);
    if (status != RemezStatus::done) return status;
    find_transition_gain(plan, half, report);
    if (gaps_within(report, bounded_gap_gain)) break;
  }
  return gaps_within(report, largest_gap_gain) ? RemezStatus::done : RemezStatus::not_optimal;
}

static void note_bounded_gaps(const std::vector<Gap> &bounded) {
  std::string where;
  for (const Gap &gap : bounded)
    where += formatf("%s%s to %s", where.empty() ? "" : ", ", in_users_unit(gap.lower).c_str(),
                     in_users_unit(gap.upper).c_str());
  design_notes.push_back("The gain was bounded in gaps that are wider than the narrowest: " + where + ".");
}

static void note_certificate(const OptimalReport &report, Optimum exchange, bool gap_bounded) {
  const char *where = exchange == Optimum::grid ? "on the design grid" : "between the points of the grid too";
  design_notes.push_back(
      formatf("Optimum %s: %d of the %d alternating peaks that make an optimum are within 1 %% of the largest", where,
              std::min(report.dense_extrema, report.required), report.required) +
      (report.bound > 0 ? formatf("; no filter of this length%s is better by more than %.2g %%.",
                                  gap_bounded ? " and bound" : "", 100 * (report.bound - 1))
                        : "."));
}

namespace {

struct Attempt {
  RemezStatus status = RemezStatus::not_optimal;
  std::vector<double> half;
  OptimalReport report;
  int taps = 0;
  std::vector<Gap> bounded;
  Optimum exchange = Optimum::true_optimum;

  bool is_answer() const { return status == RemezStatus::done && gaps_within(report, largest_gap_gain); }
  bool ends_design() const { return status == RemezStatus::stopped || status == RemezStatus::no_memory; }
};

} // namespace

static Attempt grid_attempt(const BandPlan &plan) {
  Attempt a{.taps = plan.length, .exchange = Optimum::grid};
  a.status = remez_attempt(plan, design_density, go_on, a.half, a.report);
  if (a.status == RemezStatus::degenerate || a.status == RemezStatus::not_optimal)
    a.status = remez_attempt(plan, second_density, go_on, a.half, a.report);
  return a;
}

// The first of the three that is an answer. A filter whose gain between the bands cannot be bounded stands if it is the
// optimum.
static Attempt best_attempt(const BandPlan &plan, Optimum asked) {
  Attempt first;
  if (asked == Optimum::grid) first = grid_attempt(plan);
  if (first.is_answer() || first.ends_design()) return first;
  if (first.status != RemezStatus::done) {
    Attempt second;
    second.status = true_attempt(plan, go_on, second.half, second.report, second.taps);
    if (second.is_answer() || second.ends_design()) return second;
    if (second.status == RemezStatus::done || asked == Optimum::true_optimum ||
        first.status == RemezStatus::in_rounding)
      first = std::move(second);
  }
  Attempt third;
  third.status = bounded_attempt(plan, go_on, third.half, third.report, third.taps, third.bounded);
  return third.status == RemezStatus::done || third.ends_design() ? third : first;
}

static bool keeps_specification(const BandPlan &plan, const OptimalReport &report) {
  constexpr double between_points = 1.0005; // of the grid on which the report looked
  return report.dense_peak_error * between_points <= plan.allowed_deviation;
}

// Taps that a filter needs beyond those of a plan which misses by little, found by at most four designs, or nothing.
// Every other length is looked at: the estimate's parity has its reasons.
static std::optional<int> missing_taps(const BandPlan &plan, Optimum asked) {
  const auto keeps = [&](int more) {
    BandPlan longer = plan;
    longer.length += more;
    trace(" EQ FIR: length %d\n", longer.length);
    const Attempt attempt = best_attempt(longer, asked);
    return attempt.is_answer() && keeps_specification(longer, attempt.report);
  };
  constexpr int step = 2;
  if (keeps(step)) return step;
  if (keeps(3 * step)) return keeps(2 * step) ? 2 * step : 3 * step;
  if (!keeps(5 * step)) return std::nullopt;
  return keeps(4 * step) ? 4 * step : 5 * step;
}

// Names the length that meets the specification where the estimate was one of little less.
static void note_length_that_meets(const BandPlan &plan, const OptimalReport &report, Optimum asked) {
  constexpr int most_taps = 1000; // a few such designs take a fraction of a second
  constexpr double misses_by_little = 2;
  if (!(plan.allowed_deviation > 0) || plan.length > most_taps || keeps_specification(plan, report) ||
      report.dense_peak_error > misses_by_little * plan.allowed_deviation)
    return;
  const FilterSpec &spec = design_record.spec;
  const bool folded = static_cast<FilterType>(spec.type) == FilterType::half_band;
  if (const auto more = missing_taps(plan, asked))
    design_notes.push_back(formatf("%d taps meet the specification.", spec.length + (folded ? 2 * *more : *more)));
}

void equiripple_design() {
  const bool estimated = design_record.spec.length == 0;
  const auto plan = fir_band_setup(longest_equiripple_estimate);
  if (!plan) return;
  const Optimum asked{design_record.selections.optimum};
  const Attempt best = best_attempt(*plan, asked);
  const OptimalReport &report = best.report;
  if (best.status == RemezStatus::stopped) return;
  if (best.status != RemezStatus::done) return post_failure(best.status, report);
  store_optimal_design(best.half, "\n Equiripple Filter Design\n");
  design_record.optimum = {report.required, report.dense_extrema, code(best.exchange), !best.bounded.empty(),
                           report.bound};
  if (!best.bounded.empty())
    note_bounded_gaps(best.bounded);
  else if (best.exchange != asked)
    design_notes.push_back("The exchange on the design grid found no optimum; the one between its points did.");
  note_optimal_report(*plan, report);
  if (estimated && best.bounded.empty() && design_record.selections.MinimumPhaseType == 0)
    note_length_that_meets(*plan, report, asked);
  if (best.taps < plan->length)
    design_notes.push_back(formatf("%d taps come as close as double precision can tell; the outer ones of these %d are "
                                   "zero.",
                                   best.taps, plan->length));
  else
    note_certificate(report, best.exchange, !best.bounded.empty());
}

} // namespace brisel
