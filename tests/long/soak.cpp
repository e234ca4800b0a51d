// soak.cpp - one process does batch jobs for a number of seconds and says what memory it took. Status 1 when it grew.
//
// brisel_soak SECONDS
#include "batch/batch.h"
#include "tests/batch/run_brisel.h"

#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <sstream>
#include <vector>

using namespace brisel;

namespace {

/// Memory that the process has in the machine, in kB.
long resident() {
  long pages = 0, of_which = 0;
  std::ifstream("/proc/self/statm") >> pages >> of_which;
  return of_which * (::sysconf(_SC_PAGESIZE) / 1024);
}

const char *const jobs[] = {
    "design lowpass.spc --method window --length 501 --json a.json --report r --detail --trace t --trace-level high",
    ("design bandpass.spc --quantize fixed --structure canonic --c a.c --flt a.flt --inp a.inp --spc a.spc --dspic30 p "
     "--dspic30-sim --adsp218x a.dat --dsp56800 a.h --plot-data a"),
    "design lowpass.spc --method equiripple --quantize fixed --json a.json --data a.txt",
    "design lowpass.spc --method linear-programming --length 41 --matlab a.m",
    "design bandpass.spc --realization lattice --order 8 --json a.json",
    "analyze biquads.inp --quantize floating --bits 24 --json a.json --frequency-points 10001 --log-frequency",
    "analyze a.flt --json b.json",
    "analyze analog-butterworth.inp --mapping matched-z --report r",
    "estimate lowpass.spc --json a.json",
    "design cut.spc --json a.json",
    "design lowpass.spc --method window --json no/where.json",
    "design lowpass.spc --length 2",
};

int run(const std::string &job) {
  std::istringstream in(job);
  std::vector<std::string> words{"brisel"};
  for (std::string word; in >> word;) words.push_back(word);
  std::vector<char *> arguments;
  for (std::string &word : words) arguments.push_back(word.data());
  return run_batch(static_cast<int>(arguments.size()), arguments.data());
}

} // namespace

int main(int argc, char **argv) {
  const int seconds = argc > 1 ? std::atoi(argv[1]) : 10;
  const Workshop shop;
  for (const char *name : {"lowpass.spc", "bandpass.spc", "biquads.inp", "analog-butterworth.inp"})
    shop.write(name, example(name));
  shop.write("cut.spc", example("lowpass.spc").substr(0, 100));
  std::FILE *const answer = ::fdopen(::dup(STDOUT_FILENO), "w");
  const int nowhere = ::open("/dev/null", O_WRONLY);
  ::dup2(nowhere, STDOUT_FILENO);
  ::dup2(nowhere, STDERR_FILENO);
  if (::chdir(shop.path("").c_str()) != 0) return 1;

  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now(), end = start + std::chrono::seconds(seconds);
  const auto warm = start + std::chrono::seconds(seconds) / 5;
  long done = 0, rounds_then = 0, then = 0;
  while (Clock::now() < end) {
    for (const char *job : jobs) {
      const int status = run(job);
      const bool fails = std::string(job).find("cut.spc") != std::string::npos ||
                         std::string(job).find("no/where") != std::string::npos;
      const bool wrong = std::string(job).find("--length 2") + 10 == std::string(job).size();
      if (status != (fails ? 1 : wrong ? 2 : 0)) {
        std::fprintf(answer, "status %d of: %s\n", status, job);
        return 1;
      }
      done++;
    }
    if (then == 0 && Clock::now() >= warm) then = resident(), rounds_then = done;
  }
  const long now = resident();
  std::fprintf(answer, "%ld jobs in one process; %ld kB after %ld jobs, %ld kB at the end\n", done, then, rounds_then,
               now);
  // The C library keeps what it once had in pieces; a leak of one byte a job would show in half an hour.
  return then != 0 && now <= then + 1024 ? 0 : 1;
}
