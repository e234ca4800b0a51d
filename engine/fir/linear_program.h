// linear_program.h - the weighted Chebyshev approximation as a linear program, solved by a dense simplex tableau.
//
// Wanted are coefficients c_k and the least deviation d with |W_i (D_i - sum c_k phi_k(w_i))| <= d at every sample. The
// tableau holds the dual: two columns a sample, a row a coefficient, one for the deviation, and the objective row on
// top. [Rabiner72] L. R. Rabiner, Linear program design of finite impulse response digital filters, IEEE Trans. AU-20
// (1972). [Dantzig63] G. B. Dantzig, Linear Programming and Extensions.
#pragma once

#include "engine/fir/remez.h"

#include <vector>

namespace brisel {

/// Unknown coefficients r of a plan: its half length, less one where the centre tap is 0.
constexpr int coefficient_count(int length, bool symmetric) {
  return (length + 1) / 2 - (length % 2 != 0 && !symmetric ? 1 : 0);
}

/// Samples of the bands, frequencies in cycles per sample.
DesignGrid linear_program_samples(const BandPlan &plan);

/// Column 0 is the right-hand side, columns 1 to 2 G belong to the samples (i and i + G are a pair), then come the
/// slack columns of the rows. Row 0 is the objective.
struct Tableau {
  int samples = 0;      // G
  int coefficients = 0; // r
  std::vector<double> cells;
  std::vector<int> basic_row;   // of a column: the row it is basic in, or 0
  std::vector<char> row_placed; // has a basic column

  int rows() const { return coefficients + 2; }
  int columns() const { return 2 * samples + coefficients + 2; }
  double *row(int i) { return &cells[static_cast<std::size_t>(i) * static_cast<std::size_t>(columns())]; }
  const double *row(int i) const { return &cells[static_cast<std::size_t>(i) * static_cast<std::size_t>(columns())]; }
};
double tableau_bytes(int samples, int coefficients);
Tableau make_tableau(const BandPlan &plan, const DesignGrid &samples);

/// The constant that is added to the objective of every column.
inline constexpr double objective_offset = 0.05;

/// Makes the start basic. False when some row finds no column.
enum class StartBasis { found, none, stopped };
StartBasis find_start_basis(Tableau &tableau, const Progress &progress);

enum class SimplexOutcome { optimal = 0, degenerate = 1, unbounded = 2, too_many_pivots = 3, stopped };
/// Pivots a feasible tableau to the optimum.
SimplexOutcome simplex_solve(Tableau &tableau, const Progress &progress);

/// Least deviation of an optimal tableau.
double optimal_deviation(const Tableau &tableau);
/// Half response, centre first, of an optimal tableau.
std::vector<double> optimal_taps(const Tableau &tableau, const BandPlan &plan);

} // namespace brisel
