#include "tests/support/source_folder.h"

// The only place that knows the paths, so that compiler results of the tests are shared between clones.
std::string source_file(const std::string &name) {
  return BRISEL_SOURCE_DIR "/" + name;
}

std::string brisel_program() {
  return BRISEL_EXECUTABLE;
}
