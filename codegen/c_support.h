// c_support.h - the fixed files that a generated C source includes. They are part of the program, so that they can be
// written wherever it runs.
#pragma once

#include "codegen/generated_file.h"

#include <array>
#include <string_view>
#include <vector>

namespace brisel {

struct SupportFile {
  std::string_view name, text;
};
extern const std::array<SupportFile, 2> c_support_files;

/// Those that are not in the folder of the C source `source` yet.
std::vector<GeneratedFile> missing_c_support(const std::string &source);

/// Which files belong together, as a sentence for the user; also which of them are not there, or are there with another
/// text than this version's. `written` are those that are about to be.
std::string c_support_note(const std::string &source, const std::vector<GeneratedFile> &written);

} // namespace brisel
