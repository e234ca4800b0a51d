// main.cpp - the program: a batch job, and in time the workstation.
#include "batch/batch.h"

int main(int argc, char **argv) {
  return brisel::run_batch(argc, argv);
}
