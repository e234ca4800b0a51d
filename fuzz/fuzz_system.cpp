// fuzz_system.cpp - system analysis files: whatever is read is written, and reads back to the same text.
#include "engine/files/system_file.h"
#include "fuzz/quiet_front_end.h"

#include <cmath>
#include <cstdlib>

using namespace brisel;

/// Kept oddities that a round trip cannot survive: the lead of ladders and lattices.
static bool has_lead(const SystemEntries &entries, InputOption option) {
  switch (option) {
  case InputOption::ladder_1:
    return entries.ladder_1.lead > 0;
  case InputOption::ladder_2:
    return entries.ladder_2.lead > 0;
  case InputOption::lattice:
    return entries.lattice.lead > 0;
  default:
    return false;
  }
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  static QuietFrontEnd screen;
  SystemReading reading;
  const std::string_view text(reinterpret_cast<const char *>(data), size);
  if (read_system_text(text, design_state, z_entries, s_entries, &reading) != 0) return 0;
  const SystemEntries &entries = reading.domain == Domain::z ? z_entries : s_entries;
  if (has_lead(entries, reading.option)) return 0;
  const auto write = [&] {
    return format_system_file(reading.domain, reading.option, system_entry(entries, reading.option),
                              design_state.FrequencyMode);
  };
  const auto written = write();
  if (!written) std::abort();
  if (read_system_text(*written, design_state, z_entries, s_entries) != 0) {
    // Rounding up to the digits of the file can leave the range of a double.
    if (written->find("e+308") == written->npos) std::abort();
    return 0;
  }
  if (write() != written) std::abort();
  return 0;
}
