// main.cpp - the program: the workstation, or one batch job.
#include "batch/batch.h"

#ifdef BRISEL_WORKSTATION
#include "engine/core/messages.h"
#include "gui/main_window/workstation_loader.h"
#endif

int main(int argc, char **argv) {
#ifdef BRISEL_WORKSTATION
  if (brisel::wants_workstation(argc, argv))
    return brisel::run_workstation(brisel::find_program_directory(), argc, argv);
#endif
  return brisel::run_batch(argc, argv);
}
