// saved_filter.h - filters as files that are the filters: what is to be written is read back first, in memory, by the
// reader that will read it, and compared with what was meant.
//
// A file has the digits that its format states where they hold the response to 0.05 dB, wherever that is above -100 dB
// of its peak; else as many more as it takes, up to 16.
#pragma once

#include "engine/core/message_numbers.h"
#include "engine/files/system_file.h"

#include <optional>
#include <string>
#include <variant>

namespace brisel {

inline constexpr int min_file_digits = 8, max_file_digits = 16;

struct SavedFilter {
  std::string text;
  std::string note; // what is unusual about the file, sentences for the user; empty otherwise
};
/// A refusal in place of a file.
struct SavingRefusal {
  Message number = Message::file_loses_filter;
  std::string reason;
};
using SavingOutcome = std::variant<SavedFilter, SavingRefusal>;

/// A system analysis file, `digits` being 0 or the number asked for.
SavingOutcome save_system(Domain domain, InputOption option, SystemEntry entry, int frequency_mode, int digits = 0);

/// The coefficient file of the current result; IIR reals begin at the width of the settings. Nothing, and a message
/// shown, when there is none that could be read back.
std::optional<SavedFilter> save_current_coefficients(int digits = 0);
/// The current result as a system analysis file: a FIR filter with all its taps, an IIR filter in the form it is
/// realized in, a system that was neither quantized nor set to a gain of 1 as it was entered (in its own domain).
std::optional<SavedFilter> save_current_system(int digits = 0);

/// Writes the current design's coefficient file; a failure shows a message and leaves what was there. `note` as above.
/// The two named after a variant are for designs of that variant.
Status write_coefficient_file(const std::string &path, std::string *note = nullptr);
Status write_fir_coefficient_file(const std::string &path);
Status write_iir_coefficient_file(const std::string &path);

} // namespace brisel
