// lp_fir_design.cpp - the linear-programming method: samples, tableau, outcome, taps.
#include "engine/fir/lp_fir_design.h"

#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "engine/fir/forced_zeros.h"
#include "engine/fir/optimal_setup.h"

#include <algorithm>
#include <cmath>

namespace brisel {

constexpr int longest_program_estimate = 1000;
// The taps must keep the deviation that the tableau reports to this part of it, or they are not the optimum.
constexpr double agreement = 0.01;
// Below this part of the largest desired value both are rounding: the filter is as good as doubles can hold.
constexpr double rounding_floor = 2e-11;

// A gain that the symmetry does not allow makes the program run in circles at any length.
static std::string cause_of_pivots(const BandPlan &plan) {
  const auto zeros = forced_zero_notes(design_record.spec, plan.symmetry, plan.odd_length());
  return zeros.empty() ? formatf("%d taps", plan.length) : zeros.front().substr(0, zeros.front().size() - 1);
}

static void post_outcome(SimplexOutcome outcome, const BandPlan &plan) {
  switch (outcome) {
  case SimplexOutcome::optimal:
    return trace(" simplex: %s\n", "optimal solution");
  case SimplexOutcome::degenerate:
    trace(" simplex: %s\n", "degenerated case");
    return post_message(Message::simplex_degenerate);
  case SimplexOutcome::unbounded:
    trace(" simplex: %s\n", "unbounded case");
    return post_message(Message::simplex_unbounded);
  case SimplexOutcome::too_many_pivots:
    trace(" simplex: %s\n", "too many pivoting");
    return post_message(Message::simplex_too_many_pivots, cause_of_pivots(plan));
  case SimplexOutcome::stopped:
    return;
  }
}

void lp_fir_design() {
  const auto plan = fir_band_setup(longest_program_estimate);
  if (!plan) return;
  const DesignGrid samples = linear_program_samples(*plan);
  if (tableau_bytes(static_cast<int>(samples.size()), coefficient_count(plan->length, plan->symmetric())) >
      design_memory_budget)
    return post_message(Message::linear_program_memory);
  trace_samples(samples);
  Tableau tableau = make_tableau(*plan, samples);
  const StartBasis start = find_start_basis(tableau, go_on);
  if (start == StartBasis::stopped) return;
  if (start == StartBasis::none) {
    trace(" simplex: %s\n", "solution is not basic");
    return post_message(Message::simplex_no_start_basis);
  }
  const SimplexOutcome outcome = simplex_solve(tableau, go_on);
  post_outcome(outcome, *plan);
  if (outcome != SimplexOutcome::optimal) return;

  // Hundreds of pivots lose digits where bands leave wide gaps: only the taps can tell whether they are the answer.
  const double deviation = optimal_deviation(tableau);
  const std::vector<double> half = optimal_taps(tableau, *plan);
  const OptimalReport report = check_optimality(*plan, samples, half);
  const double tolerance = std::max(agreement * deviation, rounding_floor * report.largest_desired);
  if (!(std::abs(report.peak_error - deviation) <= tolerance)) {
    trace(" simplex: %s\n", "solution may be not feasible");
    return post_message(Message::linear_program_inaccurate,
                        formatf("the tableau says %.6g, the taps deviate %.6g", deviation, report.peak_error) +
                            what_would_do(design_record.spec));
  }
  trace(" design value = % 20.12e\n", deviation);
  store_optimal_design(half, "\n Linear Programming Filter Design\n");
  note_optimal_report(*plan, report);
}

} // namespace brisel
