// workstation_loader.h - the door to the workstation for a program that is not linked with the toolkit.
#pragma once

#include <string>

namespace brisel {

/// No argument, or one alone that names a file which the workstation loads.
bool wants_workstation(int argc, const char *const *argv);

/// Loads the module from the program's folder or from ../lib/brisel beside it and runs the workstation; returns the
/// exit status of the program. Without the module: one line on standard error, and 1.
int run_workstation(const std::string &program_folder, int argc, char **argv);

} // namespace brisel
