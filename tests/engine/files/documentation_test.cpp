#include "engine/files/coefficient_file.h"
#include "engine/files/spec_file.h"
#include "engine/files/system_file.h"
#include "tests/support/scripted_front_end.h"
#include "tests/support/source_folder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

using namespace brisel;

// The examples of the documentation are files that the readers take.
TEST(FileFormatsDocument, EveryExampleCanBeRead) {
  ScriptedFrontEnd screen;
  std::ifstream document(source_file("docs/file-formats.md"));
  int specifications = 0, systems = 0, coefficients = 0;
  std::string line, text;
  bool inside = false;
  while (std::getline(document, line)) {
    if (line != "```") {
      if (inside) text += line + "\n";
      continue;
    }
    inside = !inside;
    if (inside) {
      text.clear();
    } else if (text.starts_with("FILTER SPECIFICATION")) {
      FilterSpec spec{};
      EXPECT_EQ(read_filter_spec_text(text, spec), success) << text;
      EXPECT_FALSE(check_spec(spec).has_value()) << text;
      specifications++;
    } else if (text.starts_with("DIGITAL SYSTEM")) {
      EXPECT_EQ(read_system_text(text, design_state, z_entries, s_entries), 0) << text;
      systems++;
    } else if (text.starts_with("FILTER COEFFICIENT")) {
      CoefficientFile image;
      EXPECT_EQ(read_coefficient_text(text, image), 0) << text;
      EXPECT_TRUE(coefficients_to_system(image, z_entries)) << text;
      coefficients++;
    }
  }
  EXPECT_GE(specifications, 4);
  EXPECT_GE(systems, 6);
  EXPECT_GE(coefficients, 9);
}
