// domain_conversion.h - an analog system, in whatever form it is given, as a digital one.
#pragma once

#include "engine/analysis/form_digits.h"
#include "engine/core/code_tables.h"

#include <string>

namespace brisel {

/// Where the matched Z map puts the zeros that the analog system has at infinity.
enum class MatchedPadding { lowpass, highpass, bandpass };

struct DomainConversion {
  std::string refusal;     // empty: the digital system is there
  FormReport found{};      // of its forms against the first of them
  double digits = 0;       // of the target form: the mapping computed from the source without rounding
  int dropped_delay = 0;   // of the target form
  bool stable = false;     // the digital system
  double deviation = 0;    // largest distance of its magnitude from the analog one up to half the sampling frequency,
  double deviation_at = 0; // over the analog peak there, and its frequency in radians per second
};

/// Maps `source`, an analog system whose other forms derive_forms() has filled as far as they exist (`analog_forms`),
/// into `digital`, of which `target` is checked. Bilinear and impulse-invariant maps carry the gain, the impulse
/// response being that of the analog system times the sampling period; matched Z sections get the gain that gives both
/// the same largest magnitude up to half the sampling frequency.
DomainConversion to_z_domain(ZTransform method, MatchedPadding padding, const FormOfSystem &source,
                             const FormReport &analog_forms, InputOption target, IirForms &digital);

} // namespace brisel
