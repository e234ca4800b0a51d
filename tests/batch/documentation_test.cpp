// Every command of the README and the other documents, as a reader types them: one document after the other, each in a
// folder of its own that looks like a clone.
#include "tests/batch/run_brisel.h"

#include <gtest/gtest.h>
#include <vector>

namespace brisel {
namespace {

/// The commands of a document: blocks marked "sh", and what follows "$ " in those marked "console".
std::vector<std::string> commands_of(const std::string &document) {
  std::ifstream in(source_file(document));
  std::vector<std::string> commands;
  std::string line, kind;
  bool continued = false;
  while (std::getline(in, line)) {
    if (line.starts_with("```")) {
      kind = kind.empty() ? line.substr(3) + "." : "";
    } else if (kind == "sh." || (kind == "console." && line.starts_with("$ "))) {
      if (kind == "console.") line.erase(0, 2);
      continued ? commands.back() += "\n" + line : commands.emplace_back(line);
      continued = line.ends_with('\\');
    } else {
      EXPECT_FALSE(line.starts_with("brisel design examples") || line.starts_with("    brisel "))
          << document << ": a command in an unmarked block: " << line;
    }
  }
  return commands;
}

TEST(Documents, EveryCommandWorksInItsOrder) {
  const struct {
    const char *document;
    std::size_t least; // commands
  } rows[] = {{"README.md", 8}, {"docs/command-line.md", 1}, {"docs/code-generation.md", 7}};
  for (const auto &row : rows) {
    const Workshop clone;
    const std::string program_folder = std::filesystem::path(brisel_program()).parent_path().string();
    std::filesystem::create_directory_symlink(source_file("examples"), clone.path("examples"));
    std::filesystem::create_directory(clone.path("build"));
    std::filesystem::create_directory_symlink(program_folder + "/..", clone.path("build/release"));
    clone.write("run", "#!/bin/sh\nexec brisel \"$@\"\n");
    std::filesystem::permissions(clone.path("run"), std::filesystem::perms::owner_all);
    const std::vector<std::string> commands = commands_of(row.document);
    EXPECT_GE(commands.size(), row.least) << row.document;
    for (const std::string &command : commands) {
#ifndef BRISEL_PICTURES
      if (command.find("--p") != command.npos) continue; // --plots, --pdf
#endif
      const std::string shell = "cd '" + clone.path("") + "' && export HOME=$PWD PATH='" + program_folder +
                                "':$PATH && { " + command + "\n} >out 2>err </dev/null";
      EXPECT_EQ(std::system(shell.c_str()), 0) << row.document << ": " << command << "\n" << clone.read("err");
    }
  }
}

TEST(Examples, AreMetByTheDefaultMethodWhereItCan) {
  const Workshop shop;
  int specifications = 0;
  for (const auto &entry : std::filesystem::directory_iterator(source_file("examples"))) {
    const std::string name = entry.path().filename().string();
    const bool specification = name.ends_with(".spc");
    const Outcome outcome = shop.run((specification ? "design '" : "analyze '") + entry.path().string() + "'");
    EXPECT_EQ(outcome.status, 0) << name << ": " << outcome.err;
    specifications += specification;
    // A window smooths the jump at the upper edge of a differentiator.
    if (name != "differentiator.spc") {
      EXPECT_EQ(outcome.out.find("missed"), std::string::npos) << name << "\n" << outcome.out;
    }
  }
  EXPECT_EQ(specifications, 12);
}

} // namespace
} // namespace brisel
