// least_squares.h - the filter whose weighted error has the least integral of its square over the bands.
//
// The normal equations of a linear-phase amplitude are a Toeplitz plus a Hankel matrix of the cosine moments of the
// squared weight [Vaidyanathan87, Tkacenko01]. Constant weights and piecewise linear desired values have moments in
// closed form, others are integrated by Gauss-Legendre rules on panels that no cosine outruns.
//
// [Vaidyanathan87] P. P. Vaidyanathan, T. Q. Nguyen, Eigenfilters: a new approach to least-squares FIR filter design,
// IEEE Trans. CAS-34 (1987). [Tkacenko01] A. Tkacenko, P. P. Vaidyanathan, On the least squares FIR filter design
// problem with don't care regions, Asilomar Conf. (2001).
#pragma once

#include "engine/fir/remez.h"

#include <vector>

namespace brisel {

/// Bytes of the normal equations of a filter with `coefficients` unknowns.
constexpr double normal_equation_bytes(int coefficients) {
  return 8.0 * coefficients * coefficients;
}

/// The normal equations of a plan. What the bands ask for, and apart from it what a weight of 1 in the gaps would ask
/// for: there the desired value runs straight from band to band.
struct SquareMoments {
  std::vector<double> band_cosines, gap_cosines; // of the squared weight at 0, 1, 2, ...
  std::vector<double> band_rights, gap_rights;   // right-hand sides
};
SquareMoments square_moments(const BandPlan &plan);

enum class SquaresOutcome { solved, singular, stopped };
/// Half response, centre first, for a gap weight whose square is `gap_weight`.
SquaresOutcome solve_least_squares(const BandPlan &plan, const SquareMoments &moments, double gap_weight,
                                   const Progress &progress, std::vector<double> &half);

} // namespace brisel
