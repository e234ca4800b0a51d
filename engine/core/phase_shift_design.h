// phase_shift_design.h - a phase shift filter from what the user asks for to its analysis.
#pragma once

#include "engine/iir/phase_shift.h"

namespace brisel {

/// As it was last designed; a sampling frequency of 0 says that none was.
extern PhaseShiftSpec last_phase_shift;

/// Designs the filter, makes it the entered digital system, a product of two sections, and analyses it. When it is
/// impossible, that is returned and nothing has changed.
std::optional<PhaseShiftComplaint> phase_shift_design(const PhaseShiftSpec &wanted);

/// Where the phase is near the shift, "from 960 to 1040 Hz and from ..." in the user's unit.
std::string phase_shift_bands_text(const PhaseShiftSpec &wanted, const PhaseShiftFilter &filter);

} // namespace brisel
