// generated_file.h - a file that a generator made and nobody has written yet.
#pragma once

#include <string>

namespace brisel {

struct GeneratedFile {
  std::string path;
  std::string text;
};

} // namespace brisel
