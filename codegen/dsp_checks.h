// dsp_checks.h - what the DSP outputs can carry: whether a result suits them, whether its words fit, and which gain the
// caller of the generated code has to apply. Both front ends ask here.
#pragma once

#include "engine/core/design_state.h"
#include "engine/files/coefficient_file.h"

#include <optional>
#include <string>

namespace brisel {

/// They take 16-bit words of FIR filters and of cascaded sections, the DSP56800 canonic ones only.
enum class DspFamily { adsp218x, dsp56800, dspic30 };

/// Why the result does not suit, as a sentence for the user; null when it does.
const char *dsp_refusal(const DesignRecord &result, DspFamily family);
/// The same of the "Performance Audio" output.
const char *performance_audio_refusal(const DesignRecord &result);

/// Why the words do not fit: one beyond 16 bits (a coefficient that reaches 1, a section that overflows its shift), or
/// a gain that the file's gain word cannot hold; nothing when everything fits.
std::optional<std::string> misfit(const CoefficientFile &image, DspFamily family);

/// What a file does not carry of the gain, as a sentence for the user: the factor by which the caller multiplies the
/// samples. Of an image that fits.
std::optional<std::string> gain_note(const CoefficientFile &image, DspFamily family);

} // namespace brisel
