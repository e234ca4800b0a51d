// batch.h - one job from the command line, without a window.
#pragma once

namespace brisel {

/// Does what the arguments ask for; returns the exit status of the program.
int run_batch(int argc, char **argv);

} // namespace brisel
