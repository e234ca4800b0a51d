// setup_file.h - the settings that live from one session to the next, in "system.brisel".
#pragma once

#include "engine/core/design_state.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace brisel {

inline constexpr std::string_view setup_file_name = "system.brisel";
inline constexpr int setup_key_count = 106;

/// One value a setup key, in the order of the keys. String keys hold the string's length.
using SettingTable = std::array<std::int32_t, setup_key_count>;

/// Globals into table.
SettingTable store_settings();
/// Table into globals. A value outside its limits leaves the global as it is.
void apply_settings(const SettingTable &table);

/// What a setup file names besides the settings.
struct SetupFiles {
  std::vector<std::string> specifications;
  std::vector<std::string> systems;
};

/// Reads the text of a setup file into table, strings and file names. Foreign text gives nothing; lines that are no
/// settings are passed over.
SetupFiles read_setup(std::string_view text);
/// The text of the setup file for the current settings; `time` and `date` stand in its second line.
std::string format_setup(const std::string &time, const std::string &date);

/// System analysis files of the setup file that no entry stands for; written back as they were.
extern std::vector<std::string> remembered_systems;

} // namespace brisel
