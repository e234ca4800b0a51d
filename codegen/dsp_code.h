// dsp_code.h - coefficient source for two fixed-point DSP families: an assembly include file for the ADSP-218x, a C
// coefficient file for the DSP56800.
#pragma once

#include "codegen/dsp_checks.h"
#include "codegen/dsp_words.h"

namespace brisel {

/// The texts for a loaded coefficient file. `path` is the output's name: the header shows it, symbols are named after
/// it.
std::string format_adsp218x(const std::string &path, const CoefficientFile &image, const Origin &origin);
std::string format_dsp56800(const std::string &path, const CoefficientFile &image, const Origin &origin);

/// The text for the current design and `family`, ADSP-218x or DSP56800. It goes through a temporary coefficient file,
/// `path` followed by "_BRISELSYS". 0, or 166 for an entered system that is not quantized, the length of the temporary
/// name when it exceeds 512 characters, or the status of the coefficient file. A word that does not fit is told and
/// gives `dsp_word_misfit`. `note`, if given, receives what the user has to know.
int prepare_dsp_code(DspFamily family, const std::string &path, const DesignState &state, const Origin &origin,
                     std::string &text, std::string *note = nullptr);
/// The same, written to `path`; 208 when that cannot be opened.
int generate_adsp218x(const std::string &path, const DesignState &state, const std::string &user,
                      const std::string &date, const std::string &time, std::string *note = nullptr);
int generate_dsp56800(const std::string &path, const DesignState &state, const std::string &user,
                      const std::string &date, const std::string &time, std::string *note = nullptr);

} // namespace brisel
