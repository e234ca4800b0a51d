// outputs.h - everything that a job writes: collected while nothing is on disk yet, then written as one set.
#pragma once

#include "batch/front_end.h"
#include "batch/job.h"
#include "engine/files/text_file.h"

#include <set>

namespace brisel {

class Outputs {
public:
  /// Throws JobFailure when another output of the job has this name already.
  void add(const std::string &path, std::string content);
  /// A summary for a person, unless an output of the job is on standard output already.
  void add_summary(std::string text);
  /// Writes all of them, or throws JobFailure and leaves everything as it was. `new_folder`, if not empty, is made if
  /// need be.
  void commit(const std::string &new_folder);

private:
  FileSet files;
  std::set<std::string> names;
  bool standard_output_taken = false;
};

/// Adds what the job asks for of the finished result in the design record. Throws JobFailure.
void add_results(const Job &job, BatchFrontEnd &front_end, Outputs &outputs);

} // namespace brisel
