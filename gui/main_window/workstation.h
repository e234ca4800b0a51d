// workstation.h - the program with its window.
#pragma once

/// Runs the workstation until its last window closes; a file named in the arguments is loaded. Returns the exit status
/// of the program. The entry of the module that the program loads when it is to show a window.
extern "C" int brisel_workstation(int argc, char **argv);
