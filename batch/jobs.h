// jobs.h - the sub-commands.
#pragma once

#include "batch/front_end.h"
#include "batch/job.h"

namespace brisel {

// The engine has been started. All throw JobFailure.
void run_design(const Job &job, BatchFrontEnd &front_end);
void run_analyze(const Job &job, BatchFrontEnd &front_end);
void run_estimate(const Job &job, BatchFrontEnd &front_end);
void run_phase_shift(const Job &job, BatchFrontEnd &front_end);

} // namespace brisel
