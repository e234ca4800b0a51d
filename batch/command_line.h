// command_line.h - from the arguments of the program to a job.
#pragma once

#include "batch/job.h"

#include <optional>

namespace brisel {

/// Fills `job` and returns nothing when there is work to do. Otherwise the help or the version was asked for: `answer`
/// is its text and the result is the exit status. Throws JobFailure for a wrong command line.
std::optional<ExitStatus> read_command_line(int argc, const char *const *argv, Job &job, std::string &answer);

/// Refuses options that have no meaning for a job with this design method (a code of `design_methods`).
void refuse_unused_options(const Job &job, int method);

} // namespace brisel
