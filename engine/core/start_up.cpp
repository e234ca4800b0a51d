#include "engine/core/start_up.h"

#include "engine/analysis/plot_arrays.h"
#include "engine/core/display_defaults.h"
#include "engine/core/messages.h"
#include "engine/core/phase_shift_design.h"
#include "engine/core/setup_file.h"
#include "engine/files/spec_file.h"
#include "engine/files/system_file.h"
#include "engine/files/text_file.h"

#include <algorithm>
#include <unistd.h>

namespace brisel {

bool setup_file_missing;
std::array<bool, z_option_count> z_plot_on;
std::array<bool, s_option_count> s_plot_on;

namespace {

constexpr std::size_t largest_setup_file = 1 << 20;

template <std::size_t count> void flags_from_mask(std::array<bool, count> &flags, unsigned mask) {
  for (std::size_t i = 0; i < count; i++) flags[i] = (mask >> i & 1) != 0;
}

template <std::size_t count> std::uint16_t mask_from_flags(const std::array<bool, count> &flags) {
  unsigned mask = 0;
  for (std::size_t i = 0; i < count; i++) mask |= static_cast<unsigned>(flags[i]) << i;
  return static_cast<std::uint16_t>(mask);
}

std::string current_directory() {
  char path[4096];
  return ::getcwd(path, sizeof path) ? path : ".";
}

/// Each file once, however often it is named. One that cannot be loaded now may be back in the next session, so its
/// line stays.
int load_systems(const std::vector<std::string> &paths) {
  int loaded = 0;
  for (auto path = paths.begin(); path != paths.end(); ++path) {
    if (std::find(paths.begin(), path, *path) != path) continue;
    if (load_system_file(*path) == success)
      loaded++;
    else
      remembered_systems.push_back(*path);
  }
  return loaded;
}

void read_setup_file() {
  const std::string path(setup_file_name);
  setup_file_missing = ::access(path.c_str(), F_OK) != 0;
  const auto text = read_file(path, largest_setup_file);
  if (!text) return;
  const SetupFiles files = read_setup(*text);
  // The settings hold after the files were loaded, whatever method a specification selected.
  const SettingTable table = store_settings();
  const auto loaded = std::count_if(files.specifications.begin(), files.specifications.end(),
                                    [](const std::string &file) { return load_filter_spec(file) == 0; });
  const int systems = load_systems(files.systems);
  apply_settings(table);
  if (loaded) trace(" %d spc files are loaded\n", static_cast<int>(loaded));
  if (systems) trace(" %d inp files are loaded\n", systems);
}

} // namespace

std::span<bool> plot_selection() {
  const bool analog = design_record.valid && !is_fir_result() &&
                      RealizationForm{design_record.realization} == RealizationForm::nonlinear;
  return analog ? std::span<bool>(s_plot_on) : std::span<bool>(z_plot_on);
}

TimeStamp time_stamp(std::time_t moment) {
  char text[26] = "";
  if (!ctime_r(&moment, text)) return {"00:00:00", "Thu Jan 01 1970"};
  const std::string all(text); // "Sat Nov 21 13:05:59 2026\n"
  return {all.substr(11, 8), all.substr(0, 11) + all.substr(20, 4)};
}

void set_start_values() {
  design_state = {};
  quantization_settings = {};
  plot_settings = {};
  display_settings = {};
  workplace_settings = {};
  workplace_names = {};
  for (int type = 0; type < filter_type_count; type++) {
    spec[type] = FilterSpec{};
    spec[type].type = type;
  }
  current_spec = &spec[0];
  spec_path = {};
  z_path = {};
  s_path = {};
  remembered_systems = {};
  last_phase_shift = {};
  design_notes.clear();
  status = 0;
  trace_on = 0;

  design_state.COSSAPDataFormat = 1;
  design_state.GainOption = code(FirScaling::half);
  design_state.DesignOrAnalysisType = code(DesignMethod::iir);
  design_state.GroupDelayDesignMethod = 2;
  design_state.fleng = 14;
  design_state.zgtype = 0xFFFF;
  design_state.sgtype = 0xFFFF;
  design_state.unit_factor = two_pi;
  design_state.unit_factor_inverse = inverse_two_pi;
  quantization_settings.op_num = 10;
  quantization_settings.op_steps = 100;
  quantization_settings.ibit = 16;
  quantization_settings.qtype = 1;
  plot_settings.nfpts = default_frequency_points;
  plot_settings.dnimp = default_time_points;
  plot_settings.ninterp = max_interpolated_points;
  plot_settings.sgrid = 1;
  plot_settings.cpanz = 1;
  plot_settings.autoreset = 1;
  set_display_defaults(display_settings);
  design_record.valid = 0;
  design_record.design_counter = 0;
}

void program_start(const StartOptions &options) {
  program_directory = find_program_directory();
  choose_system_files(options.files);
  reopen_system_files();
  const TimeStamp now = time_stamp(std::time(nullptr));
  trace("Program starts at %s, %s\n", now.time.c_str(), now.date.c_str());
  set_start_values();
  setup_file_missing = false;
  if (options.read_setup) read_setup_file();
  trace(" The current  directory is %s\n", current_directory().c_str());
  trace(" The Brisel directory is %s\n", program_directory.c_str());
  trace(" The working  directory is %s\n", workplace_names.dir_name.c_str());
  apply_frequency_mode();
  design_state.fleng = std::clamp<std::int8_t>(design_state.fleng, 14, 22);
  flags_from_mask(z_plot_on, design_state.zgtype);
  flags_from_mask(s_plot_on, design_state.sgtype);
}

bool program_exit(ExitMode mode) {
  bool good = true;
  const std::string path(setup_file_name);
  if (mode == ExitMode::defaults) {
    ::unlink(path.c_str());
    delete_system_files();
  }
  close_system_files();
  if (mode == ExitMode::save) {
    design_state.zgtype = mask_from_flags(z_plot_on);
    design_state.sgtype = mask_from_flags(s_plot_on);
    const TimeStamp now = time_stamp(std::time(nullptr));
    std::string why;
    good = save_file(path, format_setup(now.time, now.date), why);
    if (!good) post_message(Message::write_failed, why);
  }
  return good;
}

} // namespace brisel
