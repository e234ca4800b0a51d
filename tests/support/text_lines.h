// text_lines.h - texts as lists of lines, to change one line of a file and put it together again.
#pragma once

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace brisel::test {

inline std::vector<std::string> lines_of(std::string_view text) {
  std::vector<std::string> lines;
  std::istringstream in{std::string(text)};
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

inline std::string joined(const std::vector<std::string> &lines) {
  std::string text;
  for (const std::string &line : lines) text += line + "\n";
  return text;
}

} // namespace brisel::test
