// system_file.h - system analysis files (.inp): an existing digital or analog system, entered in one of its forms.
//
// A ratio is a pair of polynomials in z or s, highest power first; a digital one becomes powers of z^-1, the shorter
// list padded in front. Analog values are in radians per second.
#pragma once

#include "engine/analysis/form_conversions.h"
#include "engine/core/design_state.h"
#include "engine/core/status.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace brisel {

/// Where and why a file was refused.
struct SystemReading {
  Domain domain = Domain::z;
  InputOption option = InputOption::ratio;
  int line = 0;
  std::string last_line;
  std::string reason;
  bool complains = true; // a failure behind the header is also told to the front end
};

/// Reads a system into the entry of its domain and option, and sets `state` to analyse it. Returns 0; 1 when the file
/// cannot be opened, or a header or count line is missing or out of range; 2 in the first list of a ratio, of poles and
/// zeros or of sections; 3 in the second list (of sections: in the line before it), 4 in the second list of sections.
/// After a failure behind the header the front end is told the last line, and values read so far stay in the entry.
int read_system_file(const std::string &path, DesignState &state, SystemEntries &z, SystemEntries &s,
                     SystemReading *reading = nullptr);
/// The same from memory.
int read_system_text(std::string_view text, DesignState &state, SystemEntries &z, SystemEntries &s,
                     SystemReading *reading = nullptr);
/// Reads a file into the engine's own state and remembers its path; a failure shows a message and is returned.
int load_system_file(const std::string &path);

/// The entry that holds an input option's system. FIR entries of options 7 and 8 hold the half response, centre first.
using SystemEntry = std::variant<const RatioEntry *, const PoleZeroEntry *, const SectionEntry *, const LadderEntry *,
                                 const LatticeEntry *, const FirEntry *>;
SystemEntry system_entry(const SystemEntries &entries, InputOption option);
/// The same of the forms of one system; FIR options have none.
SystemEntry form_entry(const IirForms &forms, InputOption option);

/// Significant digits; 0 stands for those of the format: 10 of taps, poles and zeros, 9 of the other reals, 6 of the
/// sampling frequency.
struct SystemDigits {
  int reals = 0;
  int rate = 0;
};
/// The text of a file, the sampling frequency in hertz when `frequency_mode` is 0. Nothing when a value is not finite.
/// Sections are written as true coefficients, and the scale of a sum is multiplied into them. Leading coefficients of a
/// lattice, and an order below 2, become a lattice of a higher order whose further reflection coefficients are 0.
std::optional<std::string> format_system_file(Domain domain, InputOption option, SystemEntry entry, int frequency_mode,
                                              SystemDigits digits = {});
/// The entered system of the design record: what a system analysis started from. Nothing for a design.
std::optional<std::string> format_analysis_input();
/// Saves a text that one of the above gave; a failure shows a message and leaves what was there.
Status write_system_file(const std::string &path, const std::string &text);

} // namespace brisel
