// least_power.h - makes the sum of the p-th powers of many errors small by damped Gauss-Newton steps [Deczky72].
//
// With p growing step by step this comes close to the smallest largest error. What is varied, a `Trial`, has
// `unknowns()`, the last of which is a constant that may go as far as it wants in a step, and `moved(step)`. `errors`
// gives the errors of a trial at all places, and with a matrix also their slopes along the unknowns, a column a place.
//
// [Deczky72] A. G. Deczky, Synthesis of recursive digital filters using the minimum p-error criterion, IEEE Trans.
// AU-20, 1972.
#pragma once

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>
#include <vector>

namespace brisel {

/// Sum of the weighted `p`-th powers of the errors in part of `unit`.
inline double power_sum(const Eigen::VectorXd &e, const std::vector<double> &weight, double unit, double p) {
  double sum = 0;
  for (std::size_t i = 0; i < weight.size(); i++)
    sum += weight[i] * std::pow(std::abs(e[static_cast<Eigen::Index>(i)]) / unit, p);
  return sum;
}

/// Makes that sum smaller until a step gains less than `least_gain` of it.
template <class Trial, class Errors>
void reduce_power_sum(Trial &trial, const Errors &errors, const std::vector<double> &weight, double p, int most_steps,
                      double least_gain) {
  using Vector = Eigen::VectorXd;
  using Matrix = Eigen::MatrixXd;
  const Eigen::Index n = trial.unknowns(), count = static_cast<Eigen::Index>(weight.size());
  double damping = 1e-3;
  Matrix slopes(n, count);
  Vector gradient(n);
  for (int step = 0; step < most_steps; step++) {
    Vector e = errors(trial, slopes);
    const double unit = e.cwiseAbs().maxCoeff();
    if (!(unit > 0) || !std::isfinite(unit)) return;
    const double before = power_sum(e, weight, unit, p);
    Vector load(count);
    for (Eigen::Index i = 0; i < count; i++) {
      const double part = std::abs(e[i]) / unit, share = weight[static_cast<std::size_t>(i)];
      const double curve = p <= 2 ? share : share * std::pow(part, p - 2);
      load[i] = std::sqrt(curve * (p - 1)) / unit;
      e[i] = curve * e[i] / unit / unit;
    }
    gradient.noalias() = slopes * e;
    slopes.array().rowwise() *= load.transpose().array();
    Matrix curvature = Matrix::Zero(n, n);
    curvature.selfadjointView<Eigen::Lower>().rankUpdate(slopes);
    const Vector diagonal = curvature.diagonal();
    bool better = false;
    double after = before;
    for (int attempt = 0; attempt < 12 && !better; attempt++) {
      curvature.diagonal() = diagonal * (1 + damping) + Vector::Constant(n, 1e-14 * diagonal.maxCoeff());
      Vector move = -curvature.selfadjointView<Eigen::Lower>().ldlt().solve(gradient);
      double longest = 0; // of the moves of all but the constant
      for (Eigen::Index i = 0; i + 1 < n; i++) longest = std::max(longest, std::abs(move[i]));
      if (std::isfinite(longest)) {
        if (longest > 1) move /= longest;
        const Trial moved = trial.moved(move);
        after = power_sum(errors(moved), weight, unit, p);
        if (after < before) {
          trial = moved;
          better = true;
        }
      }
      damping = better ? std::max(damping / 5, 1e-9) : damping * 4;
    }
    if (!better || before - after < least_gain * before) return;
  }
}

} // namespace brisel
