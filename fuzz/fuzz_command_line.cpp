// fuzz_command_line.cpp - arguments of the program, parted by line feeds: a job within the limits, a text that was
// asked for, or a refusal in words. No file is touched.
#include "batch/command_line.h"
#include "engine/core/code_tables.h"
#include "engine/core/records.h"
#include "engine/iir/allpass_delay.h"
#include "fuzz/check.h"

#include <cmath>
#include <string>
#include <utility>
#include <vector>

using namespace brisel;

static void check_limits(const Job &job) {
  const auto within = [](const std::optional<int> &value, int low, int high) {
    require(!value || (*value >= low && *value <= high), "a number within its limits");
  };
  within(job.length, min_taps, max_taps);
  within(job.order, 1, max_order);
  within(job.bits, 2, 52);
  within(job.frequency_points, 2, 10001);
  within(job.time_points, 1, 32002);
  within(job.method, 0, 4);
  within(job.stages, 1, 127);
  within(job.phase_equalizer, 1, max_delay_sections);
  within(job.delay_sections, 1, max_delay_sections);
  within(job.delay_method, 0, 2);
  within(job.minimum_phase, 0, 2);
  within(job.data_notation, 0, 2);
  if (job.delay_ripple) require(std::isfinite(*job.delay_ripple) && *job.delay_ripple > 0, "a ripple");
  if (job.prewarp) require(std::isfinite(*job.prewarp) && *job.prewarp >= 0, "a frequency");
  if (job.frequency_range)
    require(all_finite(*job.frequency_range) && (*job.frequency_range)[0] >= 0 &&
                (*job.frequency_range)[0] < (*job.frequency_range)[1],
            "a range that ascends");
  require(!job.input.empty(), "a file to read");
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  std::vector<std::string> words{"brisel"};
  std::string word;
  for (std::size_t i = 0; i < size; i++) {
    if (data[i] == 0) continue; // an argument holds none
    if (data[i] != '\n')
      word += static_cast<char>(data[i]);
    else
      words.push_back(std::exchange(word, {}));
  }
  if (!word.empty()) words.push_back(word);
  std::vector<const char *> arguments;
  for (const std::string &argument : words) arguments.push_back(argument.c_str());

  Job job;
  std::string answer;
  try {
    if (read_command_line(static_cast<int>(arguments.size()), arguments.data(), job, answer)) {
      require(!answer.empty(), "a text");
      return 0;
    }
    check_limits(job);
  } catch (const JobFailure &failure) {
    require(failure.exit_status == exit_usage && *failure.what() != '\0', "a refusal says why");
    return 0;
  }
  for (int method = 0; method <= code(DesignMethod::s_analysis); method++) {
    if (method == 5) continue;
    try {
      refuse_unused_options(job, method);
    } catch (const JobFailure &failure) {
      require(failure.exit_status == exit_usage && *failure.what() != '\0', "a refusal says why");
    }
  }
  return 0;
}
