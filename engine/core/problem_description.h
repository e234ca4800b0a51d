// problem_description.h - the line that says which filter a plot or a summary shows.
#pragma once

#include "engine/core/design_state.h"

#include <string>

namespace brisel {

/// "16 Bit Fixed Point", "24 Bit Floating Point"; without quantization "52 Bit Floating Point".
std::string arithmetic_description(const QuantizationSettings &quantization);

/// "Lowpass Filter, FIR (Window) Design, Kaiser, 63 taps, 52 Bit Floating Point".
std::string problem_description(const DesignRecord &record);

} // namespace brisel
