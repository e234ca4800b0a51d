// design_iir_sections.h - the IIR stage of a design run: from specification to a digital filter in all its forms.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/iir/prewarp.h"

namespace brisel {

/// Designs the filter of the design record's specification, whose sampling frequency is 2 pi, by the record's
/// selections: analog prototype, band transformation, map to z, gain, forms. Fills the record's `wp`, `s_normalized`,
/// `s_unnormalized`, `z_normalized` (impulse invariance only) and `z`, and lists every stage in the trace. False after
/// a message, when the order or the selectivity is out of limits or the filter cannot be held in double precision.
bool design_iir_sections();

/// The same for a group delay specification: all-pass sections. Fills `z` and `delay`; the record's mapping becomes
/// bilinear, and there is no analog filter.
bool design_group_delay_filter();

/// Where the poles of the digital filter may lie. A design is refused when rounding has moved one out of the unit
/// circle; an entered system may be unstable.
enum class AcceptPoles { inside_only, anywhere };

/// The second half of it: from the cascade in the record's `s_unnormalized` to `z` in all its forms. Used for entered
/// analog systems too, which keep their gain when the cascade says so, and may be prewarped for the bilinear map.
bool digitize_analog(ZTransform method, AcceptPoles accepted, const Prewarp &prewarp = {});

/// Largest magnitude of an analog filter at frequencies up to half the sampling frequency, 1 when that is 0 or not
/// finite.
double analog_peak(const SectionEntry &analog);

} // namespace brisel
