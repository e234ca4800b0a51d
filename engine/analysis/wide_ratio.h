// wide_ratio.h - the expanded polynomials of a system in more digits than a record holds. The ratio, lattice and ladder
// forms are made from these, so that they lose what their own coefficients cannot hold, and nothing on the way to them.
#pragma once

#include "engine/analysis/form_conversions.h"

#include <optional>
#include <vector>

namespace brisel {

#if defined(__SIZEOF_FLOAT128__)
__extension__ typedef __float128 Wide;
#else
using Wide = long double; // 113 bits as well on the machines that lack the type above
#endif

inline Wide magnitude(Wide value) {
  return value < 0 ? -value : value;
}

/// gain * N/D in powers of x^-1 from index 0 on, x being s or z. denominator[0] is 1, the last denominator coefficient
/// is not 0, and the numerator is at least as long as the denominator.
struct WideRatio {
  Wide gain;
  std::vector<Wide> numerator, denominator;
  int order() const { return static_cast<int>(denominator.size()) - 1; }
  int lead() const { return static_cast<int>(numerator.size() - denominator.size()); }
};

std::optional<WideRatio> wide_ratio(const SectionEntry &cascade);
std::optional<WideRatio> wide_ratio_of_sum(Domain domain, const SectionEntry &parallel);
std::optional<WideRatio> wide_ratio(const PoleZeroEntry &pole_zero);
std::optional<WideRatio> wide_ratio(Domain domain, const RatioEntry &ratio);
std::optional<WideRatio> wide_ratio(const LatticeEntry &lattice);
std::optional<WideRatio> wide_ratio(const LadderEntry &ladder);

/// Brings raw polynomials (powers of x^-1, of equal weight at index 0) into the shape above. Nothing when the system is
/// not causal or has an empty polynomial.
std::optional<WideRatio> normalized(Wide gain, std::vector<Wide> numerator, std::vector<Wide> denominator);

/// The records of the forms, as far as they can hold the system; the sampling rate is left alone.
bool write_ratio(Domain domain, const WideRatio &wide, RatioEntry &ratio);
bool write_lattice(const WideRatio &wide, LatticeEntry &lattice);
bool write_ladder(const WideRatio &wide, LadderForm form, LadderEntry &ladder);
bool write_pole_zero(const WideRatio &wide, PoleZeroEntry &pole_zero);

/// True when all poles lie inside the unit circle, decided without computing them: every reflection coefficient of the
/// denominator is below 1 in magnitude (Schur-Cohn).
bool is_stable(const WideRatio &wide);

/// A double of `value`, the largest or smallest finite one when it lies beyond.
double narrow(Wide value);

/// A section as polynomials in x with the factors x that both have taken out.
struct ReducedSection {
  Triple numerator, denominator;
  int numerator_degree, denominator_degree; // -1: nothing but zeros
};
ReducedSection reduced(const Triple &numerator, const Triple &denominator);

/// How many leading numerator coefficients of the sum are 0 or nothing but rounding of the terms they are summed from:
/// the zeros at infinity of a system that was never meant to have finite ones there.
int zeros_at_infinity(Domain domain, const SectionEntry &parallel, int order);

} // namespace brisel
