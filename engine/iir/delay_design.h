// delay_design.h - the all-pass stages of IIR designs: the phase equalizer behind a filter, and filters that are
// nothing but a group delay.
#pragma once

#include "engine/core/design_state.h"

#include <optional>
#include <string>

namespace brisel {

/// Why the phase equalizer, or the group delay design, that the selections ask for cannot be made, or nothing. To be
/// asked before the design starts.
std::optional<std::string> equalizer_refusal(const DesignState &selections);
std::optional<std::string> group_delay_refusal(const FilterSpec &spec, const DesignState &selections);

/// Appends to the record's digital cascade the all-pass sections that make its delay constant in the passbands, and
/// fills the record's `delay`. False after a message, or when the user stopped the run.
bool equalize_phase();

/// Fills the record's digital cascade with all-pass sections whose delay follows the specification's function points up
/// to a constant, and the record's `delay`. False as above.
bool design_group_delay();

} // namespace brisel
