// trigonometric_sums.h - cosine and sine sums at arbitrary points.
#pragma once

#include <complex>
#include <span>

namespace brisel {

enum class SumKind { cosine, sine, half_cosine, half_sine };

/// sums[i] = sum over k of c[k] f((k + offset) points[i]), k from 0, offset 1/2 for the half kinds and else 0, f being
/// cosine or sine. `points` in radians. Good to about 1e-14 of the sum of |c| for 25000 terms.
void trigonometric_sums(std::span<const double> c, SumKind kind, std::span<const double> points,
                        std::span<double> sums);

/// sums[i] = sum over k of c[k] e^(-j k points[i]).
void fourier_sums(std::span<const double> c, std::span<const double> points, std::span<std::complex<double>> sums);

} // namespace brisel
