// iir_quantize.h - scaling, quantization and noise of a finished IIR design.
#pragma once

#include "engine/core/design_state.h"

#include <span>

namespace brisel {

/// Makes `z_quantized` and `noise` of the design record from its `z`: sets the gain of the chosen realization (unless
/// the cascade or parallel entry says `keep_gain`), scales it, estimates its noise, quantizes its coefficients, and
/// derives the other forms from it. Without quantization the other forms only follow the gain. False, with a message:
/// the realization does not exist for this filter, a peak is 0 or undefined, or a coefficient that must not vanish
/// does. The record is then not to be used.
bool quantize_iir();

/// Fixed point is for sections only. The other forms have their significands truncated whatever was asked.
bool in_fixed_point(const QuantizationSettings &settings, RealizationForm form);

/// The structures of floating point, which has no need of scaling.
constexpr bool is_floating_only(SectionStructure structure) {
  return structure > SectionStructure::canonic;
}

/// Quantizes gain and coefficients of sections. Fixed point: to multiples of 2^(1 - bits), toward zero, every section
/// shifted down by the bits that bring its largest coefficient to 1 or below; the shifts are kept in the entry, and the
/// stored coefficients are the quantized ones divided by 2^shift. Floating point: to `bits` significant bits, toward
/// zero.
void quantize_section_coefficients(SectionEntry &entry, bool fixed_point, int bits);

/// Sets `rtype1` to `rtype4` to what goes with the arithmetic in `settings`: cascaded sections of that structure; a sum
/// of sections that is scaled, of the fixed-point or the floating-point type; the one type of a ratio.
void set_realization_codes(QuantizationSettings &settings, int cascade_structure);

/// Keeps `bits` significant bits of every value and clears the rest.
void truncate_significands(std::span<double> values, int bits);

} // namespace brisel
