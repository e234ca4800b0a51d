// barycentric.h - the polynomial of an exchange: interpolation through the points of a reference, and the deviation
// that alternates over them.
//
// [Berrut04] J.-P. Berrut, L. N. Trefethen, Barycentric Lagrange interpolation, SIAM Review 46 (2004).
#pragma once

#include <span>
#include <vector>

namespace brisel {

/// A polynomial of degree r - 1 through r + 1 levelled points, in the barycentric form: the fraction of
/// sum(coefficient value / (x - node)) over sum(coefficient / (x - node)). Nodes descend, coefficients have any scale.
struct Interpolant {
  std::vector<double> node;
  std::vector<double> coefficient;
  std::vector<double> value;

  /// Sets the coefficients from the nodes. False when two nodes coincide.
  bool find_coefficients();
  /// Returns the deviation that alternates over the nodes, and sets the values through which P then goes.
  double level(std::span<const double> desired, std::span<const double> weight);
  /// Evaluates at `x` into `p`, which is as long.
  void evaluate(std::span<const double> x, std::span<double> p) const;
  /// The same where P is much larger than its values or decays far below them: between the bands the sum of all
  /// coefficients loses as many digits as the sum of values, so the product of the differences takes its place.
  void evaluate_between_bands(std::span<const double> x, std::span<double> p) const;

private:
  std::vector<double> weighted_values() const;
  double or_value(double computed, double x) const;

  int scale = 0; // power of two by which the coefficients were multiplied
};

} // namespace brisel
