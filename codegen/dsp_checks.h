// dsp_checks.h - whether the current result suits the fixed-point DSP outputs, which carry 16-bit words of FIR filters
// and of cascaded sections.
#pragma once

#include "engine/core/design_state.h"

namespace brisel {

/// Why it does not, as a sentence for the user; null when it does. `canonic_only`: the target has no transposed
/// sections.
const char *dsp_refusal(const DesignRecord &result, bool canonic_only);

} // namespace brisel
