// run_selections.h - what the running design's selections say to its stages.
#pragma once

#include "engine/fir/compensation.h"

#include <string>

namespace brisel {

/// The compensation that the design record asks for. Nothing, after a message, when a setting is beyond its limits.
std::optional<Compensation> selected_compensation();

/// A frequency of the run, radians per sample, in the user's unit and with its name.
std::string in_users_unit(double w);

} // namespace brisel
