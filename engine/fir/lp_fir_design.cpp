// lp_fir_design.cpp - the linear-programming method: samples, tableau, outcome, taps.
#include "engine/fir/lp_fir_design.h"

#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "engine/fir/optimal_setup.h"

#include <cmath>

namespace brisel {

constexpr int longest_program_estimate = 1000;
// The taps must keep the deviation that the tableau reports to this part of it, or they are not the optimum.
constexpr double agreement = 0.01;

static void post_outcome(SimplexOutcome outcome) {
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
    return post_message(Message::simplex_too_many_pivots);
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
  post_outcome(outcome);
  if (outcome != SimplexOutcome::optimal) return;

  // Hundreds of pivots lose digits where bands leave wide gaps: only the taps can tell whether they are the answer.
  const double deviation = optimal_deviation(tableau);
  const std::vector<double> half = optimal_taps(tableau, *plan);
  const OptimalReport report = check_optimality(*plan, samples, half);
  if (!(std::abs(report.peak_error - deviation) <= agreement * deviation)) {
    trace(" simplex: %s\n", "solution may be not feasible");
    return post_message(Message::linear_program_inaccurate,
                        formatf("the tableau says %.6g, the taps deviate %.6g", deviation, report.peak_error));
  }
  trace(" design value = % 20.12e\n", deviation);
  store_optimal_design(half, "\n Linear Programming Filter Design\n");
  note_optimal_report(*plan, report);
}

} // namespace brisel
