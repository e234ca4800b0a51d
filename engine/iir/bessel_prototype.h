#pragma once

#include "engine/core/records.h"

#include <span>

namespace brisel {

inline constexpr int max_refined_bessel_order = 23;

/// Normalized Bessel lowpass of order n into `out`: gain 1 and group delay 1 at s = 0, passband edge wp = 1. Up to
/// order 23 the poles are refined to full accuracy; returns false when they are the approximate ones (relative error
/// below 1e-6 from order 24 on). From order 151 on the gain product (2n)! / (n! 2^n) exceeds a double: the constants
/// then stay in the numerators.
bool bessel_prototype(int n, double sampling_frequency, SectionEntry &out);

/// The closed-form approximation of the pole pairs, as sections.
void approximate_bessel_factors(int n, std::span<Triple> factors);
/// Refines the factors of the Bessel polynomial of order n by Bairstow's method with deflation. False when it fails:
/// `factors` then are as they were.
bool refine_bessel_factors(int n, std::span<Triple> factors);

} // namespace brisel
