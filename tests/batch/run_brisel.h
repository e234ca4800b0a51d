// run_brisel.h - runs the real program in a folder of its own, as a shell would.
#pragma once

#include "tests/support/source_folder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace brisel {

struct Outcome {
  int status;
  std::string out, err;

  /// What a failed job has to say: exactly one line on standard error, and nothing on standard output.
  bool is_one_line() const {
    return out.empty() && err.size() > 1 && err.back() == '\n' && std::count(err.begin(), err.end(), '\n') == 1;
  }
};

class Workshop {
public:
  Workshop() {
    char name[] = "/tmp/brisel-test.XXXXXX";
    folder = ::mkdtemp(name);
  }
  ~Workshop() {
    std::error_code ignored;
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(folder, ignored);
  }
  Workshop(const Workshop &) = delete;
  Workshop &operator=(const Workshop &) = delete;

  std::string path(const std::string &name) const { return (folder / name).string(); }
  void write(const std::string &name, const std::string &content) const {
    std::ofstream(folder / name, std::ios::binary) << content;
  }
  std::string read(const std::string &name) const {
    std::ifstream in(folder / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  /// Name and content of every file below the folder.
  std::map<std::string, std::string> files() const {
    std::map<std::string, std::string> found;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(folder)) {
      const std::string name = std::filesystem::relative(entry.path(), folder).string();
      found[name] = entry.is_regular_file() ? read(name) : "";
    }
    return found;
  }

  /// `arguments` are words and redirections of the shell, `before` what stands in front of the program.
  Outcome run(const std::string &arguments, const std::string &before = "") const {
    const Workshop capture;
    const std::string command = "cd '" + folder.string() + "' && { " + before + " '" + brisel_program() + "' " +
                                arguments + "; } >'" + capture.path("out") + "' 2>'" + capture.path("err") +
                                "' </dev/null";
    const int ended = std::system(command.c_str());
    return {WIFEXITED(ended) ? WEXITSTATUS(ended) : -1, capture.read("out"), capture.read("err")};
  }

private:
  std::filesystem::path folder;
};

/// Names of the files that are not the same in both.
inline std::set<std::string> differing(const std::map<std::string, std::string> &a,
                                       const std::map<std::string, std::string> &b) {
  std::set<std::string> names;
  for (const auto &[one, other] : {std::pair(&a, &b), std::pair(&b, &a)})
    for (const auto &[name, content] : *one)
      if (const auto found = other->find(name); found == other->end() || found->second != content) names.insert(name);
  return names;
}
using Names = std::set<std::string>;

/// A file of the examples folder.
inline std::string example(const std::string &name) {
  std::ifstream in(source_file("examples/") + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

} // namespace brisel
