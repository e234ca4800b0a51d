// fuzz_setup.cpp - the reader of the setup file.
#include "engine/core/setup_file.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  using namespace brisel;
  const auto files = read_setup({reinterpret_cast<const char *>(data), size});
  for (const auto &path : files.specifications)
    if (path.size() > 1022) std::abort();
  // What was read can be written and read again to the same settings.
  const std::string text = format_setup("12:00:00", "Sat Nov 21 2026");
  const SettingTable before = store_settings();
  read_setup(text);
  if (store_settings() != before || format_setup("12:00:00", "Sat Nov 21 2026") != text) std::abort();
  return 0;
}
