// form_digits.h - how well one form of an IIR system is another, on a dense grid.
#pragma once

#include "engine/analysis/form_conversions.h"

#include <optional>
#include <string>

namespace brisel {

/// A system in the form of an input option 0 to 6, which is the one of `forms` that counts.
struct FormOfSystem {
  Domain domain;
  InputOption option;
  const IirForms *forms;
};

/// Its values at points of the plane.
template <class Real> Values form_values(const FormOfSystem &system, Places x);

/// Its poles and zeros, to the accuracy that a grid needs; nothing, or no poles, when they cannot be had.
std::optional<PoleZeroEntry> roots_of(const FormOfSystem &system);
std::vector<std::complex<double>> poles_of(const FormOfSystem &system);

/// Even steps and the place nearest to every pole, several thousand points in all.
Values dense_points(Domain domain, std::span<const std::complex<double>> poles);

/// Decimal digits, 0 to 16, in which `changed`, evaluated in doubles, is `source` as its coefficients stand, answering
/// `dropped_delay` samples earlier.
double form_digits_kept(const FormOfSystem &source, const FormOfSystem &changed, int dropped_delay);

/// "1 digit", "5 digits"; none for a negative number.
std::string digits_text(double digits);

/// The form that a realization is entered in; nothing for a nonlinear one. Poles and zeros are no realization.
std::optional<InputOption> option_of_form(RealizationForm form);
std::optional<RealizationForm> form_of_option(InputOption option);

} // namespace brisel
