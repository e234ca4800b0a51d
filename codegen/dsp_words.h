// dsp_words.h - the 16-bit words of a quantized filter as fixed-point DSPs take them, and what their generators share.
#pragma once

#include "engine/core/design_state.h"
#include "engine/files/coefficient_file.h"

#include <string>
#include <vector>

namespace brisel {

inline constexpr int dsp_word_bits = 16;

/// One section: b halved (or divided by 2^exponent where the section has a larger shift), a halved. The section's
/// output comes out divided by 2^(exponent - 1); the final shift makes up for all sections at once.
struct SectionWords {
  std::int64_t b0, b1, b2, a1, a2;
  int exponent; // shift p of the section when above 1, else 1
};
SectionWords section_words(const SectionIntegers &section);

/// `start` plus p - 1 of every section where that is positive.
int final_shift(const CoefficientFile &image, int start);

/// The overall gain halved, as one word.
std::int64_t gain_word(const CoefficientFile &image);
/// The gain as the last word of transposed sections for the ADSP-218x has it: shifted as far as its shift count asks.
std::int64_t closing_gain(const CoefficientFile &image);

/// A word as its low 16 bits.
inline unsigned low_word(std::int64_t value) {
  return static_cast<unsigned>(value & 0xffff);
}

/// Who made the file, when.
struct Origin {
  std::string user, date, time;
};

/// Brings the current design into `coefficient_file` by way of a file `path`, which is deleted again. A file of that
/// name that exists already is refused. Any status but 0 is the writer's or the reader's; then a file that was written
/// stays, so that it can be looked at.
int load_design_through(const std::string &path);

} // namespace brisel
