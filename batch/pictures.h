// pictures.h - the plots of the finished result as files.
#pragma once

#include "batch/outputs.h"

namespace brisel {

/// Refuses the plot options of a program that was built without the toolkit.
void refuse_missing_pictures(const Job &job);

/// Draws what the job asks for. Throws JobFailure.
void add_pictures(const Job &job, Outputs &outputs);

} // namespace brisel
