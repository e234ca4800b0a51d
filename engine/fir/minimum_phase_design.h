// minimum_phase_design.h - what a FIR design does after its method: minimum phase, and a maximum gain of 1.
#pragma once

#include "engine/core/design_state.h"

#include <optional>
#include <string>

namespace brisel {

/// Why a FIR filter of this specification cannot have the selected minimum phase type, or nothing. To be asked before
/// the design starts.
std::optional<std::string> minimum_phase_refusal(const FilterSpec &spec, const DesignState &selections);

/// The specification of the linear phase filter from which the selected minimum phase type is made. A spectral factor
/// of L taps is made from 2 L - 1 taps; those of lowpass, highpass, bandpass, bandstop and multiband filters are
/// designed for the square of what was asked, so that the factor is what was asked. Its ripples in dB are doubled, and
/// 6 dB are added to the attenuation because the response is raised by its stopband ripple.
FilterSpec linear_phase_spec(const FilterSpec &spec, MinimumPhaseType type);

/// Converts the designed entry of the record to the selected type, with a note for the user. False after a message, or
/// when the user stopped the run.
bool convert_to_minimum_phase();

/// Scales the designed entry of the record so that its magnitude has a maximum of 1.
void set_maximum_gain();

} // namespace brisel
