// start_up.h - the beginning and the end of the engine's life.
#pragma once

#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/core/trace.h"

#include <span>

namespace brisel {

struct StartOptions {
  bool read_setup = true; // false: start values only
  SystemFiles files;
};

/// Sets start values, opens the system files and reads the setup file of the current folder. `front_end` is installed.
void program_start(const StartOptions &options = {});

/// Codes of the system settings dialog. save: write the setup file. discard: write nothing. defaults: delete the setup
/// file and the system files, so that the next session starts afresh.
enum class ExitMode : int { save, discard, defaults };
/// Closes the system files. False when the setup file could not be written; the front end has been told.
bool program_exit(ExitMode mode);

/// What a fresh engine begins with.
void set_start_values();

extern bool setup_file_missing;
/// One flag a plot window: the bits of `zgtype` and `sgtype`.
extern std::array<bool, z_option_count> z_plot_on;
extern std::array<bool, s_option_count> s_plot_on;
/// Those of the two that the current result is shown by: the second of a response in s, the first of all others.
std::span<bool> plot_selection();

/// Time and date of now as texts, "13:05:59" and "Sat Nov 21 2026".
struct TimeStamp {
  std::string time;
  std::string date;
};
TimeStamp time_stamp(std::time_t moment);

} // namespace brisel
