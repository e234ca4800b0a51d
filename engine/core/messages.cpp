#include "engine/core/messages.h"

#include "engine/files/text_file.h"

#include <cstdlib>
#include <unistd.h>

namespace brisel {

std::string program_directory;

std::string find_program_directory() {
  char path[4096];
  const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
  const std::string executable(path, length > 0 ? static_cast<std::size_t>(length) : 0);
  const std::size_t slash = executable.rfind('/');
  return slash == executable.npos ? "." : executable.substr(0, slash);
}

std::string message_file_path() {
  const std::string beside = program_directory + "/brisel.msg";
  const std::string shared = program_directory + "/../share/brisel/brisel.msg";
  return ::access(beside.c_str(), R_OK) != 0 && ::access(shared.c_str(), R_OK) == 0 ? shared : beside;
}

std::string get_message(int number, const std::string &path) {
  LineReader file(1000);
  if (!file.open(path)) return "Message file " + path + " is missing";
  constexpr std::string_view begin = ".MESSAGE", end = ".END_OF_MESSAGE";
  while (file.next()) {
    const std::size_t word = file.line().find_first_not_of(" \t");
    if (word == std::string::npos || !std::string_view(file.line()).substr(word).starts_with(begin)) continue;
    const std::size_t blank = file.line().find_first_of(" \t", word);
    const auto found = blank == std::string::npos ? std::nullopt : integer_at(file.line(), blank);
    if (!found || *found < number) continue;
    if (*found > number) break;
    std::string text;
    for (int lines = 0; lines < max_message_lines && file.next() && !file.line().starts_with(end); lines++)
      text += file.line() + "\n";
    return text;
  }
  return formatf("Message %d\n is not available.", number);
}

std::string message_text(Message number) {
  return get_message(static_cast<int>(number), message_file_path());
}

} // namespace brisel
