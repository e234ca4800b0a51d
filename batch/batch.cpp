#include "batch/batch.h"

#include "batch/command_line.h"
#include "batch/front_end.h"
#include "batch/jobs.h"
#include "engine/core/start_up.h"
#include "engine/files/text_file.h"

#include <cstdio>
#include <exception>
#include <new>

namespace brisel {

namespace {

void say(const std::string &text) {
  std::string why;
  FileSet out;
  out.add_standard_output(text);
  if (!out.commit(why)) throw JobFailure(exit_failed, why);
}

/// A batch run keeps to start values and leaves nothing behind but what was asked for.
class EngineSession {
public:
  EngineSession(const Job &job, FrontEnd &of_job) {
    front_end = &of_job;
    const auto place = [](const std::string &output) {
      return SystemFile{output.empty() ? SystemFile::Kind::null_device : SystemFile::Kind::memory, {}};
    };
    program_start({.read_setup = false, .files = {place(job.trace), place(job.report)}});
    if (!job.trace.empty()) trace_on = static_cast<std::uint8_t>(1 + job.trace_level.value_or(0));
  }
  ~EngineSession() { program_exit(ExitMode::discard); }
  EngineSession(const EngineSession &) = delete;
  EngineSession &operator=(const EngineSession &) = delete;
};

ExitStatus run(int argc, char **argv) {
  Job job;
  std::string answer;
  if (const auto done = read_command_line(argc, argv, job, answer)) {
    say(answer);
    return *done;
  }
  BatchFrontEnd front_end(job);
  const EngineSession session(job, front_end);
  if (job.has(Command::design)) run_design(job, front_end);
  if (job.has(Command::analyze)) run_analyze(job, front_end);
  if (job.has(Command::estimate)) run_estimate(job, front_end);
  if (job.has(Command::phase_shift)) run_phase_shift(job, front_end);
  return exit_done;
}

ExitStatus complain(const std::string &text, ExitStatus exit_status) {
  std::fprintf(stderr, "brisel: %s\n", escaped(text).c_str());
  return exit_status;
}

} // namespace

int run_batch(int argc, char **argv) {
  try {
    return run(argc, argv);
  } catch (const JobFailure &failure) {
    return complain(failure.what(), failure.exit_status);
  } catch (const std::bad_alloc &) {
    return complain("there is not enough memory for this job", exit_failed);
  } catch (const std::exception &failure) {
    return complain(failure.what(), exit_failed);
  }
}

} // namespace brisel
