#include "codegen/c_support.h"

#include "engine/files/text_file.h"

#include <algorithm>
#include <filesystem>

namespace brisel {

namespace {

constexpr std::size_t largest_support_file = 1 << 20;

std::string beside(const std::string &source, std::string_view name) {
  return (std::filesystem::path(source).parent_path() / name).string();
}

} // namespace

std::vector<GeneratedFile> missing_c_support(const std::string &source) {
  std::vector<GeneratedFile> missing;
  for (const SupportFile &file : c_support_files) {
    std::error_code error;
    const std::string path = beside(source, file.name);
    if (!std::filesystem::exists(path, error)) missing.push_back({path, std::string(file.text)});
  }
  return missing;
}

std::string c_support_note(const std::string &source, const std::vector<GeneratedFile> &written) {
  std::string note = std::filesystem::path(source).filename().string(), absent, foreign;
  for (const SupportFile &file : c_support_files) {
    const std::string path = beside(source, file.name), name(file.name);
    note += (&file == &c_support_files.back() ? " and " : ", ") + name;
    std::error_code error;
    if (std::ranges::any_of(written, [&](const GeneratedFile &one) { return one.path == path; })) continue;
    if (!std::filesystem::exists(path, error))
      absent += (absent.empty() ? "" : " and ") + name;
    else if (read_file(path, largest_support_file) != file.text)
      foreign += (foreign.empty() ? "" : " and ") + name;
  }
  note += " belong together";
  if (!absent.empty())
    note += ", but " + absent + (absent.find(' ') == absent.npos ? " is" : " are") + " not beside it";
  note += ".";
  if (!foreign.empty())
    note += " The " + foreign + " beside it differ" + (foreign.find(' ') == foreign.npos ? "s" : "") +
            " from this version's and stayed as found.";
  return note;
}

} // namespace brisel
