// least_squares_design.cpp - the least-squares method: solution, bounded gaps, notes.
#include "engine/fir/least_squares_design.h"

#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/files/text_file.h"
#include "engine/fir/least_squares.h"
#include "engine/fir/linear_program.h"
#include "engine/fir/optimal_setup.h"

#include <cmath>

namespace brisel {

constexpr int longest_squares_estimate = 4096;
// Decades of the squared weight of the gaps, where the gain there swings: the least costs the bands nothing that a
// double would show, the largest is that of the band which may deviate most.
constexpr int least_gap_decade = -14, largest_gap_decade = 0;

namespace {

struct Solution {
  double gap_weight = 0;
  std::vector<double> half;
  OptimalReport report;
};

// Solves for growing gap weights and knows the largest gain between the bands.
class SquaresSolver {
public:
  explicit SquaresSolver(const BandPlan &plan)
      : plan(plan), moments(square_moments(plan)), grid(remez_grid(plan, points_per_cosine)) {
    trace_samples(grid);
  }

  /// The filter of the bands alone, or that of the least gap weight which bounds the gain in the gaps.
  SquaresOutcome solve(Solution &solution) {
    SquaresOutcome outcome = attempt(0, solution);
    const bool bounded = outcome == SquaresOutcome::solved && !solution.report.swings();
    if (bounded || outcome == SquaresOutcome::stopped) return outcome;
    Solution strongest;
    outcome = attempt(std::pow(10, largest_gap_decade), strongest);
    if (outcome != SquaresOutcome::solved) return outcome;
    // Where symmetry and length force zeros into bands, no weight bounds the gain by that of the bands.
    const double limit = std::max(strongest.report.swing_limit(), 1.1 * strongest.report.transition_gain);
    solution = strongest;
    int low = least_gap_decade - 1, high = largest_gap_decade; // too little and enough
    while (high - low > 1) {
      const int middle = low + (high - low) / 2;
      Solution between;
      outcome = attempt(std::pow(10, middle), between);
      if (outcome == SquaresOutcome::stopped) return outcome;
      const bool enough = outcome == SquaresOutcome::solved && between.report.transition_gain <= limit;
      (enough ? high : low) = middle;
      if (enough) solution = between;
    }
    return SquaresOutcome::solved;
  }

  double root_mean_square_error(std::span<const double> half) const {
    const auto amplitude = half_response_amplitude(half, plan.symmetry, plan.odd_length(), grid.frequency);
    double sum = 0;
    for (std::size_t i = 0; i < grid.size(); i++) {
      const double error = (amplitude[i] - grid.desired[i]) * grid.weight[i];
      sum += error * error;
    }
    return std::sqrt(sum / static_cast<double>(grid.size()));
  }

private:
  static constexpr int points_per_cosine = 16;

  SquaresOutcome attempt(double gap_weight, Solution &solution) const {
    solution.gap_weight = gap_weight;
    const SquaresOutcome outcome = solve_least_squares(plan, moments, gap_weight, go_on, solution.half);
    if (outcome != SquaresOutcome::solved) return outcome;
    solution.report = check_optimality(plan, grid, solution.half);
    return std::isfinite(solution.report.peak_error) ? outcome : SquaresOutcome::singular;
  }

  const BandPlan &plan;
  const SquareMoments moments;
  const DesignGrid grid;
};

} // namespace

void least_squares_design() {
  const auto plan = fir_band_setup(longest_squares_estimate);
  if (!plan) return;
  if (normal_equation_bytes(coefficient_count(plan->length, plan->symmetric())) > design_memory_budget)
    return post_message(
        Message::length_out_of_limits,
        formatf("the normal equations of %d taps do not fit into the memory of a design", plan->length));
  SquaresSolver solver(*plan);
  Solution found;
  const SquaresOutcome outcome = solver.solve(found);
  if (outcome == SquaresOutcome::stopped) return;
  if (outcome == SquaresOutcome::singular)
    return post_message(Message::impossible_specification,
                        "the ripples of its bands differ so much that no sum of squares holds them all");
  store_optimal_design(found.half, "\n Least Square Filter Design\n");
  design_notes.push_back(formatf("Weighted error: root mean square %.6g, peak %.6g.",
                                 solver.root_mean_square_error(found.half), found.report.dense_peak_error));
  if (found.gap_weight > 0)
    design_notes.push_back(formatf("A squared weight of %.0e between the bands holds the gain there, which the bands "
                                   "alone leave to swing.",
                                   found.gap_weight));
  note_bands_and_gaps(*plan, found.report);
}

} // namespace brisel
