// job.h - what a command line asks for.
#pragma once

#include "engine/core/design_state.h"

#include <optional>
#include <stdexcept>
#include <string>

namespace brisel {

enum ExitStatus : int { exit_done = 0, exit_failed = 1, exit_usage = 2 };

/// Ends a job. The text is the one line for standard error, without the program's name; it may hold foreign bytes,
/// which are escaped when it is shown.
struct JobFailure : std::runtime_error {
  JobFailure(ExitStatus exit_status, const std::string &text) : std::runtime_error(text), exit_status(exit_status) {}
  ExitStatus exit_status;
};

enum class Command : unsigned { none = 0, design = 1, analyze = 2, estimate = 4, phase_shift = 8 };

/// Options that were not given are empty; codes are those of the code tables.
struct Job {
  Command command = Command::none;
  std::string input;

  std::optional<int> method, length, window, symmetry, optimum, stopband_slope, minimum_phase, gain;
  std::optional<int> prototype, order, mapping, impulse_path, realization, structure;
  std::optional<int> compensation, rate_change, differential_delay, stages;
  std::optional<int> phase_equalizer, delay_sections, delay_method;
  std::optional<double> delay_ripple; // samples
  bool split = false;
  std::optional<double> sampling_frequency, first_passband, second_passband, phase_shift, real_zero;
  bool radians = false; // unit of the frequencies when there is no file
  std::optional<int> quantize, bits, scaling, optimize;
  std::optional<int> frequency_points, time_points;
  std::optional<int> digits;            // of the reals of coefficient and system analysis files
  std::optional<Range> frequency_range; // in the unit of the file
  std::optional<double> prewarp;        // the same
  bool prewarp_all = false;
  bool log_frequency = false;
  bool unity_gain = false;
  bool detail = false;
  std::optional<int> trace_level; // 0 low, 1 high
  std::optional<int> dspic30_space, dspic30_script;
  bool dspic30_header = false, dspic30_simulation = false, c_support = false;
  std::optional<int> cocentric_format, data_stage, data_notation, data_layout;
  bool cocentric_comments = false;

  // Names of outputs, empty when not asked for.
  std::string json, report, trace, spc, flt, inp, plot_data, plots, pdf;
  std::string matlab, cocentric, data;
  std::string c, dspic30, adsp218x, dsp56800;

  bool has(Command wanted) const { return command == wanted; }
};

/// Codes of `--quantize`.
enum class Quantize : int { off, fixed, floating };

/// Path that stands for standard output.
inline constexpr std::string_view standard_output = "-";

} // namespace brisel
