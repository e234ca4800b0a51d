// main.cpp - the program: the workstation, or one batch job.
#include "batch/batch.h"

#ifdef BRISEL_WORKSTATION
#include "engine/core/messages.h"
#include "gui/main_window/workstation_loader.h"
#endif

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

/// A closed standard stream would lend its number to the next file that is opened, which then gets what is meant for
/// the stream. What takes its place cannot be written to, so that writing still fails.
static void occupy_standard_streams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; stream++)
    if (::fcntl(stream, F_GETFD) == -1) ::open("/dev/null", O_RDONLY);
}

int main(int argc, char **argv) {
  occupy_standard_streams();
  // A reader that went away and a file that may grow no further are write errors, not the end of the process between
  // two files.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
#ifdef BRISEL_WORKSTATION
  if (brisel::wants_workstation(argc, argv))
    return brisel::run_workstation(brisel::find_program_directory(), argc, argv);
#endif
  return brisel::run_batch(argc, argv);
}
