// pictures.h - the plots of the finished result as files.
#pragma once

#include "batch/job.h"
#include "engine/files/text_file.h"

#include <vector>

namespace brisel {

/// Refuses the plot options of a program that was built without the toolkit.
void refuse_missing_pictures(const Job &job);

/// Names of the picture files that the job will write.
std::vector<std::string> picture_targets(const Job &job);

/// Draws what the job asks for and adds it to `files`. Throws JobFailure.
void add_pictures(const Job &job, FileSet &files);

} // namespace brisel
