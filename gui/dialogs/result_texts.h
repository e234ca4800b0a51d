// result_texts.h - the numbers of a result as the View commands show them.
#pragma once

#include "engine/core/design_state.h"
#include "engine/core/system_conversion.h"

#include <string>

namespace brisel {

/// The four sets of IIR data.
enum class IirView { normalized_s, denormalized_s, unquantized_z, quantized_z };

/// Every form that the set has: sections, ratio, lattice of a digital one, poles and zeros.
std::string iir_data_text(const DesignRecord &record, IirView view);
/// Peaks of the nodes before and after scaling, round-off noise, and the bits that it costs.
std::string quantization_analysis_text(const DesignRecord &record);
/// What a conversion gave: the digits that it keeps, its notes, every coefficient with all digits.
std::string conversion_text(const Conversion &conversion);
/// All taps before and after quantization.
std::string fir_coefficients_text(const DesignRecord &record);

} // namespace brisel
