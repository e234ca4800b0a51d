// source_folder.h - where the tests find the files of the source tree and the program.
#pragma once

#include <string>

/// Path of a file of the source tree: source_file("examples/lowpass.spc").
std::string source_file(const std::string &name);

/// Path of the program under test.
std::string brisel_program();
