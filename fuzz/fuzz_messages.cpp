// fuzz_messages.cpp - the reader of the message file.
#include "engine/core/messages.h"
#include "engine/files/text_file.h"
#include "fuzz/check.h"

#include <algorithm>
#include <sys/mman.h>
#include <unistd.h>

using namespace brisel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  static const int file = ::memfd_create("messages", MFD_CLOEXEC);
  static const std::string path = formatf("/proc/self/fd/%d", file);
  if (size == 0) return 0;
  require(::ftruncate(file, 0) == 0, "the file can be emptied");
  require(::pwrite(file, data + 1, size - 1, 0) == static_cast<ssize_t>(size - 1), "the file can be written");
  const std::string text = get_message(data[0], path);
  require(text.find("is missing") == text.npos || size > 1, "the file was read");
  require(std::count(text.begin(), text.end(), '\n') <= max_message_lines, "a message has a largest size");
  require(text.size() <= 1000 * max_message_lines, "a line has a largest size");
  return 0;
}
