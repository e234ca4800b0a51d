// problem_description.h - the line that says which filter a plot or a summary shows.
#pragma once

#include "engine/core/design_state.h"

#include <string>

namespace brisel {

/// "Lowpass Filter, FIR (Window) Design, Kaiser, 63 taps, 16 Bit Fixed Point"; without quantization it ends in "52 Bit
/// Floating Point".
std::string problem_description(const DesignRecord &record);

} // namespace brisel
