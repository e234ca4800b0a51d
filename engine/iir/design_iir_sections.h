// design_iir_sections.h - the IIR stage of a design run: from specification to a digital filter in all its forms.
#pragma once

#include "engine/core/code_tables.h"

namespace brisel {

/// Designs the filter of the design record's specification, whose sampling frequency is 2 pi, by the record's
/// selections: analog prototype, band transformation, map to z, gain, forms. Fills the record's `wp`, `s_normalized`,
/// `s_unnormalized`, `z_normalized` (impulse invariance only) and `z`, and lists every stage in the trace. False after
/// a message, when the order or the selectivity is out of limits or the filter cannot be held in double precision.
bool design_iir_sections();

/// Where the poles of the digital filter may lie. A design is refused when rounding has moved one out of the unit
/// circle; an entered system may be unstable.
enum class AcceptPoles { inside_only, anywhere };

/// The second half of it: from the cascade in the record's `s_unnormalized` to `z` in all its forms. Used for entered
/// analog systems too, which keep their gain when the cascade says so.
bool digitize_analog(ZTransform method, AcceptPoles accepted);

} // namespace brisel
