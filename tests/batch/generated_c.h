// generated_c.h - compiles a generated C file and runs it on an impulse.
#pragma once

#include "tests/batch/run_brisel.h"

namespace brisel {

/// What a caller of the file has to know.
struct GeneratedC {
  std::string init, structure, element;
  bool in_double = false; // the arithmetic of a float file in doubles, so that only its coefficients count
};

/// The first 200 samples of the response of "f.c", a number a line; what the compiler said, when it refused the file.
inline std::string run_generated_c(const Workshop &shop, const std::string &compiler, const GeneratedC &c) {
  std::string driver = "#include <stdio.h>\n#include <stdlib.h>\n#include <math.h>\n#include <string.h>\n";
  if (c.in_double) driver += "#define float double\n";
  driver += "#define DEFINE_SUBROUTINE\n#include \"f.c\"\n#include \"brisel_filt.c\"\n";
  driver += "int main(void) {\n  static " + c.element + " x[200] = {1}, y[200];\n  int i;\n  " + c.init + "(&" +
            c.structure + ");\n  " + c.structure + ".filter(x, y, 200, &" + c.structure +
            ");\n  for (i = 0; i < 200; i++) printf(\"%.17g\\n\", (double)y[i]);\n  return 0;\n}\n";
  shop.write("driver.c", driver);
  const std::string build = "cd '" + shop.path("") + "' && " + compiler +
                            " -std=c99 -Wno-keyword-macro -Wall -Wextra -pedantic -Werror -I " +
                            source_file("codegen/support") + " driver.c -o driver 2> log && ./driver > out";
  return std::system(build.c_str()) == 0 ? shop.read("out") : shop.read("log");
}

} // namespace brisel
