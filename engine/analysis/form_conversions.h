// form_conversions.h - one IIR system, seen in its different forms.
//
// A section triple is a polynomial of degree 2 in x, highest power first, where x is s or z: (b0, b1, b2) in powers of
// z^-1 is b0 z^2 + b1 z + b2 over z^2, and that z^2 cancels between numerator and denominator. Zero places in front of
// a numerator therefore mean fewer zeros than poles: a roll-off in s, a pure delay in z. The ratio form holds powers of
// z^-1 from index 0 on in the z domain and descending powers of s in the s domain, as its record says.
//
// Nothing here touches the state. A conversion returns false, and leaves its target unspecified, when the form cannot
// hold the system; what that means stands at each one. Sampling rate, order and `keep_gain` are carried over.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

#include <complex>
#include <span>
#include <vector>

namespace brisel {

enum class Domain { s, z };

/// gain * product of the sections, as direct term and one partial fraction a section: (0, n1, n0) / (1, a1, a2); of a
/// first-order section (0, r, 0) / (1, a1, 0) in z and (0, 0, r) / (0, 1, a) in s. Denominators are the sections' own,
/// made monic. Poles that repeat in several sections have no such sum; they are moved apart by the least that keeps
/// most digits, which digits_kept() then shows. False: more zeros than poles, or a section without denominator.
bool cascade_to_parallel(Domain domain, const SectionEntry &cascade, SectionEntry &parallel);

/// Roots of the sections; a factor that is common to both triples of a section (the origin of a first-order section in
/// z) is left out. Pairs first, in the order of the sections, then the single real roots. False: a section without
/// denominator, or a numerator of zeros only.
bool cascade_to_pole_zero(Domain domain, const SectionEntry &cascade, PoleZeroEntry &pole_zero);

/// Poles of the sections; zeros of the sum as eigenvalues of a matrix made of the sections, never of the expanded
/// polynomial. Leading coefficients of the numerator that are nothing but rounding of their terms count as 0.
/// False: as above, or a sum that is 0.
bool parallel_to_pole_zero(Domain domain, const SectionEntry &parallel, PoleZeroEntry &pole_zero);

/// Sections with a leading denominator coefficient of 1, section i with pole pair i and zero pair i of the lists. A
/// first-order section is (b0, b1, 0) / (1, a1, 0) in z and (0, b, c) / (0, 1, a) in s. In z no b0 vanishes: missing
/// zeros are put at the origin, and `dropped_delay` receives poles minus zeros, the samples by which the cascade
/// answers earlier. In s it is always 0. False: a complex value without its conjugate, or more than 200 of either.
bool pole_zero_to_cascade(Domain domain, const PoleZeroEntry &pole_zero, SectionEntry &cascade, int &dropped_delay);

/// Gives a digital cascade the delay back that it lost when it was built of poles and zeros: its first sections that
/// have room for it begin with numerator coefficients of 0.
void restore_delay(SectionEntry &cascade, int &dropped_delay);

/// Brings the values of a list into pairs of neighbouring places, in the order in which the pairs begin: conjugates,
/// upper half plane first, and real values two by two; an odd real value ends the list. Conjugates are made exact.
/// False: a complex value has no conjugate.
bool arrange_pairs(std::span<std::complex<double>> values);

/// By way of poles and zeros.
bool parallel_to_cascade(Domain domain, const SectionEntry &parallel, SectionEntry &cascade, int &dropped_delay);

/// The expanded polynomials, with a leading denominator coefficient of 1. False: as for the sections, a complex value
/// without its conjugate, or an order above 200.
bool cascade_to_ratio(Domain domain, const SectionEntry &cascade, RatioEntry &ratio);
bool parallel_to_ratio(Domain domain, const SectionEntry &parallel, RatioEntry &ratio);
bool pole_zero_to_ratio(Domain domain, const PoleZeroEntry &pole_zero, RatioEntry &ratio);

/// Roots of the polynomials. False: a numerator or denominator of zeros only.
bool ratio_to_pole_zero(Domain domain, const RatioEntry &ratio, PoleZeroEntry &pole_zero);

/// Gray-Markel lattice [Gray73] of order n = denominator order, kappa[1..n] and gamma[0..n+lead], lead being what the
/// numerator is longer:
///   A_0 = 1, A_m(z) = A_{m-1}(z) + kappa_m z^-m A_{m-1}(1/z), B_m(z) = z^-m A_m(1/z), B_{n+i} = z^-i B_n,
///   H = gain * sum of gamma_m B_m(z) / A_n(z).
/// In the s domain the same algebra is applied to the descending coefficients. False: a reflection coefficient of
/// magnitude 1, or a leading denominator coefficient of 0; and what cascade_to_ratio() refuses. From a cascade it keeps
/// more digits than by way of the ratio, because the polynomials are not rounded on the way.
bool ratio_to_lattice(Domain domain, const RatioEntry &ratio, LatticeEntry &lattice);
bool cascade_to_lattice(Domain domain, const SectionEntry &cascade, LatticeEntry &lattice);
/// False: order + lead above 200.
bool lattice_to_ratio(Domain domain, const LatticeEntry &lattice, RatioEntry &ratio);

enum class LadderForm : std::int8_t { one, two };
/// Continued-fraction ladder [Mitra72] of order n = denominator order. alpha[0..lead-1] are taps of z^-1 .. z^-lead,
/// after which, with alpha[lead..] = A0, B1, A1, B2, A2, ..., Bn, An (2 n + 1 values),
///   form 1: H = gain * (taps + A0 + 1/(B1 z    + 1/(A1 + 1/(B2 z    + ... 1/(Bn z    + 1/An)))))
///   form 2: H = gain * (taps + A0 + 1/(B1 z^-1 + 1/(A1 + 1/(B2 z^-1 + ... 1/(Bn z^-1 + 1/An)))))
/// so that form 1 runs without delay-free loop as F_i = z^-1 / B_i fed back through 1/(A_i + F_{i+1}), and form 2 as
/// A_i + F_{i+1} fed back through B_i z^-1. In the s domain z stands for s. False: the continued fraction ends early (a
/// coefficient on its way vanishes), so that this form of the system does not exist.
bool ratio_to_ladder(Domain domain, const RatioEntry &ratio, LadderForm form, LadderEntry &ladder);
bool cascade_to_ladder(Domain domain, const SectionEntry &cascade, LadderForm form, LadderEntry &ladder);
/// False: order + lead above 200, or a fraction that divides by 0.
bool ladder_to_ratio(Domain domain, const LadderEntry &ladder, RatioEntry &ratio);

/// Value of a form at points x of the plane (s or z), gain included, computed in the arithmetic of `Real` (double or
/// long double).
using Values = std::vector<std::complex<double>>;
using Places = std::span<const std::complex<double>>;
template <class Real = double> Values cascade_values(const SectionEntry &cascade, Places x);
template <class Real = double> Values parallel_values(const SectionEntry &parallel, Places x);
template <class Real = double> Values pole_zero_values(const PoleZeroEntry &pole_zero, Places x);
template <class Real = double> Values ratio_values(Domain domain, const RatioEntry &ratio, Places x);
template <class Real = double> Values lattice_values(const LatticeEntry &lattice, Places x);
template <class Real = double> Values ladder_values(const LadderEntry &ladder, Places x);

/// Points of the upper half of the unit circle, or of the upper imaginary axis, on which forms are compared: even steps
/// and the place nearest to every pole.
Values comparison_points(Domain domain, std::span<const std::complex<double>> poles, int steps = 128);

/// Decimal digits, 0 to 16, in which `values` is `reference` delayed by `delay` samples: the largest distance of the
/// two on the points `x`, relative to the largest magnitude of the reference.
double digits_kept(Places x, std::span<const std::complex<double>> reference,
                   std::span<const std::complex<double>> values, int delay = 0);

/// What derive_forms() found: digits that a form, evaluated in doubles, keeps of the source, -1 for a form that does
/// not exist (its record then has order 0 and no coefficients).
struct FormReport {
  double cascade, parallel, pole_zero, ratio, lattice, ladder_1, ladder_2;
  int dropped_delay; // of the cascade against the source
};
/// The digits of one form; -1 also for a form that is no realization.
double digits_of(const FormReport &found, RealizationForm form);

/// Derives every other form of `forms` from the one named. False: the source is no system (0, not finite, without a
/// denominator), and no other form was touched.
bool derive_forms(Domain domain, RealizationForm source, IirForms &forms, FormReport &found);
/// The same from the poles and zeros, whose lists stay as they are. False also: a complex value without its conjugate.
bool derive_forms_of_pole_zero(Domain domain, IirForms &forms, FormReport &found);

/// False for a form that derive_forms() could not make.
bool form_exists(const IirForms &forms, RealizationForm form);

/// True when all poles of a digital form lie inside the unit circle. Decided from its coefficients without computing a
/// pole.
bool is_stable(const IirForms &forms, RealizationForm form);

} // namespace brisel
