// linear_program.cpp - samples, tableau, start basis, simplex.
#include "engine/fir/linear_program.h"

#include "engine/core/multiversion.h"

#include <algorithm>
#include <cmath>

namespace brisel {

constexpr int least_samples = 200;
constexpr int least_samples_per_band = 5;
constexpr int most_pivots = 1000;
constexpr double usable_pair = 1e-5;
// The start pivots of a long filter become very small before the rows are truly dependent; whether the digits sufficed
// is judged by the taps in the end.
constexpr double usable_pivot = 1e-15;
// Entries are of the order of 1: one so small is what is left of a zero after many pivots.
constexpr double rounding = 1e-11;
constexpr int pivots_between_reports = 16;

DesignGrid linear_program_samples(const BandPlan &plan) {
  const int samples = std::max(least_samples, coefficient_count(plan.length, plan.symmetric()));
  const int per_band =
      plan.band_count == 1 ? samples : std::max(least_samples_per_band, (samples - 1) / plan.band_count + 1);
  DesignGrid grid;
  for (int b = 0; b < plan.band_count; b++) {
    const PlanBand &band = plan.bands[b];
    for (int i = 0; i < per_band; i++)
      grid.add(plan, std::lerp(band.lower, band.upper, static_cast<double>(i) / (per_band - 1)) / two_pi, b);
  }
  return grid;
}

double tableau_bytes(int samples, int coefficients) {
  return sizeof(double) * (coefficients + 2.0) * (2.0 * samples + coefficients + 2.0);
}

// phi_k at w radians per sample.
static double basis(const BandPlan &plan, int k, double w) {
  if (plan.symmetric()) return std::cos((plan.odd_length() ? k : k + 0.5) * w);
  return std::sin((plan.odd_length() ? k + 1 : k + 0.5) * w);
}

Tableau make_tableau(const BandPlan &plan, const DesignGrid &samples) {
  Tableau t;
  t.samples = static_cast<int>(samples.size());
  t.coefficients = coefficient_count(plan.length, plan.symmetric());
  t.cells.resize(static_cast<std::size_t>(t.rows()) * static_cast<std::size_t>(t.columns()));
  t.basic_row.resize(static_cast<std::size_t>(t.columns()));
  t.row_placed.resize(static_cast<std::size_t>(t.rows()));
  const int deviation_row = t.coefficients + 1;
  const int first_slack = 2 * t.samples + 1;
  for (int i = 1; i <= t.samples; i++) {
    const auto sample = static_cast<std::size_t>(i - 1);
    const double weight = samples.weight[sample];
    const double desired = weight * samples.desired[sample];
    t.row(0)[i] = objective_offset + desired;
    t.row(0)[i + t.samples] = objective_offset - desired;
    for (int k = 0; k < t.coefficients; k++) {
      const double value = weight * basis(plan, k, two_pi * samples.frequency[sample]);
      t.row(k + 1)[i] = value;
      t.row(k + 1)[i + t.samples] = -value;
    }
  }
  for (int k = 0; k <= t.coefficients; k++) t.row(k + 1)[first_slack + k] = 1;
  std::fill_n(t.row(deviation_row), 2 * t.samples + 1, 1.0);
  return t;
}

BRISEL_AVX2_CLONE
static void subtract_multiple(double *to, const double *from, double factor, int count) {
  for (int i = 0; i < count; i++) to[i] -= factor * from[i];
}

static void pivot(Tableau &t, int pivot_row, int column) {
  double *row = t.row(pivot_row);
  const double divisor = row[column];
  for (int i = 0; i < t.columns(); i++) row[i] /= divisor;
  row[column] = 1;
  for (int i = 0; i < t.rows(); i++) {
    if (i == pivot_row || t.row(i)[column] == 0) continue;
    subtract_multiple(t.row(i), row, t.row(i)[column], t.columns());
  }
  for (int &basic : t.basic_row) {
    if (basic == pivot_row) basic = 0;
  }
  t.basic_row[static_cast<std::size_t>(column)] = pivot_row;
}

// Of the rows not yet placed, the one with the largest magnitude in `column`; 0 if all are below `least`.
static int largest_unplaced_row(const Tableau &t, int column, double least) {
  int best = 0;
  for (int i = 1; i < t.rows(); i++) {
    if (t.row_placed[static_cast<std::size_t>(i)] || std::abs(t.row(i)[column]) < least) continue;
    if (best != 0 && std::abs(t.row(i)[column]) <= std::abs(t.row(best)[column])) continue;
    best = i;
  }
  return best;
}

StartBasis find_start_basis(Tableau &t, const Progress &progress) {
  const auto place = [&](int row, int column) {
    pivot(t, row, column);
    t.row_placed[static_cast<std::size_t>(row)] = 1;
  };
  const int to_place = t.rows() - 1;
  for (int placed = 0; placed < to_place;) {
    if (placed % pivots_between_reports == 0 && progress && !progress(0.5 * placed / to_place))
      return StartBasis::stopped;
    double largest = 0;
    int best_row = 0, best_column = 0;
    for (int i = 1; i < t.rows(); i++) {
      if (t.row_placed[static_cast<std::size_t>(i)]) continue;
      const double *row = t.row(i);
      for (int column = 1; column <= 2 * t.samples; column++) {
        if (std::abs(row[column]) <= largest || t.basic_row[static_cast<std::size_t>(column)] != 0) continue;
        largest = std::abs(row[column]);
        best_row = i;
        best_column = column;
      }
    }
    if (largest < usable_pivot) return StartBasis::none;
    place(best_row, best_column);
    placed++;
    // The pair of the first column shares the weight 1 of the deviation row with it, so that the coefficients cancel:
    // that makes the start feasible. Later pairs have nothing left to pivot on.
    const int pair = best_column > t.samples ? best_column - t.samples : best_column + t.samples;
    const int pair_row = largest_unplaced_row(t, pair, usable_pair);
    if (pair_row == 0) continue;
    place(pair_row, pair);
    placed++;
  }
  return StartBasis::found;
}

// Most negative objective entry among the non-basic sample columns, the first of equal ones; 0 if there is none.
static int entering_column(const Tableau &t) {
  double least = -rounding;
  int entering = 0;
  for (int column = 1; column <= 2 * t.samples; column++) {
    if (t.row(0)[column] >= least || t.basic_row[static_cast<std::size_t>(column)] != 0) continue;
    least = t.row(0)[column];
    entering = column;
  }
  return entering;
}

// Least ratio of right-hand side to a positive entry, the first of equal ones; 0 if there is none.
static int leaving_row(const Tableau &t, int column) {
  int leaving = 0;
  double least = 0;
  for (int i = 1; i < t.rows(); i++) {
    const double entry = t.row(i)[column];
    if (entry <= rounding) continue;
    const double ratio = t.row(i)[0] / entry;
    if (leaving != 0 && ratio >= least) continue;
    least = ratio;
    leaving = i;
  }
  return leaving;
}

// Kept: the outcome `degenerate` has its number and its message, but this loop never restarts its search for an
// entering column and so never answers it.
SimplexOutcome simplex_solve(Tableau &t, const Progress &progress) {
  for (int pivots = 0; pivots < most_pivots; pivots++) {
    if (pivots % pivots_between_reports == 0 && progress && !progress(0.5 + 0.5 * pivots / most_pivots))
      return SimplexOutcome::stopped;
    const int column = entering_column(t);
    if (column == 0) return SimplexOutcome::optimal;
    const int row = leaving_row(t, column);
    if (row == 0) return SimplexOutcome::unbounded;
    pivot(t, row, column);
  }
  return SimplexOutcome::too_many_pivots;
}

double optimal_deviation(const Tableau &t) {
  return objective_offset + t.row(0)[0];
}

std::vector<double> optimal_taps(const Tableau &t, const BandPlan &plan) {
  // The objective entry of a slack column is the negative of its row's price, and the prices of the dual are the
  // coefficients.
  const double *prices = t.row(0) + 2 * t.samples + 1;
  std::vector<double> h(static_cast<std::size_t>(plan.half_length()));
  const std::size_t first = plan.odd_length() && !plan.symmetric() ? 1 : 0;
  for (std::size_t k = 0; k < static_cast<std::size_t>(t.coefficients); k++) h[k + first] = -prices[k] / 2;
  if (plan.odd_length() && plan.symmetric()) h[0] *= 2;
  return h;
}

} // namespace brisel
