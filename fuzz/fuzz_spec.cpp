// fuzz_spec.cpp - specification files: whatever is read and possible is written, and reads back to the same text.
#include "engine/files/spec_file.h"
#include "fuzz/long_exponent.h"
#include "fuzz/quiet_front_end.h"

#include <cstdlib>

using namespace brisel;

/// A gain in dB that the writer turns into a factor because of another band's flag is written differently each time.
static bool has_converted_gains(const FilterSpec &spec) {
  for (int band = 0; spec.type == 7 && band < spec.band_count; band++)
    if (spec.fixed_gain[band] && spec.list_flag[band / 4 * 4]) return true;
  return false;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  static QuietFrontEnd screen;
  static FilterSpec spec, again;
  const std::string_view text(reinterpret_cast<const char *>(data), size);
  if (read_filter_spec_text(text, spec) != success) return 0;
  settle_edges(spec);
  if (check_spec(spec)) return 0;
  spec.unit = spec.unit == 'R';
  const auto written = format_filter_spec(spec);
  if (!written) std::abort();
  if (read_filter_spec_text(*written, again) != success) {
    if (!has_long_exponent(*written)) std::abort();
    return 0;
  }
  again.unit = again.unit == 'R';
  if (!has_converted_gains(spec) && format_filter_spec(again) != written) std::abort();
  return 0;
}
