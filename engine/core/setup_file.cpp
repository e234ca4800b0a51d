#include "engine/core/setup_file.h"

#include "engine/core/display_defaults.h"
#include "engine/files/text_file.h"

#include <algorithm>
#include <limits>
#include <variant>

namespace brisel {

std::vector<std::string> remembered_systems;

namespace {

constexpr std::string_view header = "Brisel System Setup File V6.1";
constexpr std::string_view prefix = "Brisel.";
constexpr std::size_t longest_key = 100;
constexpr std::size_t longest_string = 1022;

using Place =
    std::variant<std::int8_t *, std::uint8_t *, std::int16_t *, std::uint16_t *, std::int32_t *, std::string *>;

struct Setting {
  std::string_view key;
  Place place;
  std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
  std::int32_t highest = std::numeric_limits<std::int32_t>::max();
};

// In the order of the file. Limits stand where a value indexes a table, sizes an array or is a choice.
const std::array<Setting, setup_key_count> settings = [] {
  DesignState &d = design_state;
  QuantizationSettings &q = quantization_settings;
  PlotSettings &p = plot_settings;
  DisplaySettings &s = display_settings;
  WorkplaceSettings &w = workplace_settings;
  constexpr int colours = colour_names.size() - 1, fonts = font_families.size() - 1, lines = line_styles.size() - 1;
  return std::array<Setting, setup_key_count>{{
      {"pos_x", &w.pos_x, -32768, 32767},
      {"pos_y", &w.pos_y, -32768, 32767},
      {"pos_w", &w.pos_w, 0, 32767},
      {"pos_h", &w.pos_h, 0, 32767},
      {"sgrid", &p.sgrid, 0, 1},
      {"detout", &p.detout, 0, 1},
      {"PlotType0Linear1Log", &p.PlotType0Linear1Log, 0, 1},
      {"quant", &q.quant, 0, 1},
      {"cpanz", &p.cpanz, 0, 1},
      {"sinc", &p.sinc, 0, 1},
      {"autoreset", &p.autoreset, 0, 1},
      {"FileReadingMode", &d.FileReadingMode, 0, 255},
      {"show_dt", &w.show_dt},
      {"bell", &w.bell},
      {"fas", &w.fas},
      {"fview", &d.fview, 0, 1},
      {"SDomainAnalysisMaximumGainOption", &d.SDomainAnalysisMaximumGainOption, 0, 1},
      {"PrewarpOption", &d.PrewarpOption, 0, 1},
      {"board", &d.board, 0, 255},
      {"hk_src", &w.hk_src},
      {"hk_gain", &w.hk_gain},
      {"hk_attn", &w.hk_attn},
      {"soni_in", &w.soni_in},
      {"soni_out", &w.soni_out},
      {"soni_lgain", &w.soni_lgain},
      {"soni_rgain", &w.soni_rgain},
      {"soni_lattn", &w.soni_lattn},
      {"soni_rattn", &w.soni_rattn},
      {"DesignOrAnalysisType", &d.DesignOrAnalysisType, 0, 7},
      {"PhaseEqualizationOption", &d.PhaseEqualizationOption, 0, 1},
      {"CompensationOption", &d.CompensationOption, 0, 1},
      {"FrequencyMode", &d.FrequencyMode, 0, 1},
      {"ZTransformMethod", &d.ZTransformMethod, 0, 2},
      {"RealizationType", &d.RealizationType, 0, 5},
      {"GroupDelayDesignMethod", &d.GroupDelayDesignMethod, 0, 255},
      {"zgtype", &d.zgtype, 0, 65535},
      {"sgtype", &d.sgtype, 0, 65535},
      {"fleng", &d.fleng, 14, 22},
      {"cconven", &d.cconven, 0, 255},
      {"COSSAPDataFormat", &d.COSSAPDataFormat, 0, 255},
      {"COSSAPDataCommentSwitch", &d.COSSAPDataCommentSwitch, 0, 255},
      {"SDomainAnalysisRealizationMethod", &d.SDomainAnalysisRealizationMethod, 0, 3},
      {"CompensationType", &d.CompensationType, 0, 1},
      {"CompensationDifferentialDelay", &d.CompensationDifferentialDelay, 0, 127},
      {"CompensationRateChange", &d.CompensationRateChange, 0, 127},
      {"CompensationNumberOfStages", &d.CompensationNumberOfStages, 0, 127},
      {"MinimumPhaseType", &d.MinimumPhaseType, 0, 2},
      {"ImpulseInvariantDesignPath", &d.ImpulseInvariantDesignPath, 0, 1},
      {"GainOption", &d.GainOption, 0, 2},
      {"dnimp", &p.dnimp, 1, 32002},
      {"ibit", &q.ibit, 2, 52},
      {"op_num", &q.op_num, 0, 32767},
      {"op_steps", &q.op_steps, 0, 32767},
      {"nfpts", &p.nfpts, 2, 10001},
      {"ninterp", &p.ninterp, 0, 300},
      {"lpnorm", &w.lpnorm},
      {"qtype", &q.qtype, 0, 1},
      {"rtype1", &q.rtype1, 0, 3},
      {"rtype2", &q.rtype2, 0, 1},
      {"rtype3", &q.rtype3, 0, 1},
      {"rtype4", &q.rtype4, 0, 7},
      {"back_color", &s.back_color, 0, colours},
      {"mark_color", &s.mark_color, 0, colours},
      {"outline_color", &s.outline_color, 0, colours},
      {"grid_color", &s.grid_color, 0, colours},
      {"funct_color", &s.funct_color, 0, colours},
      {"labels_color", &s.labels_color, 0, colours},
      {"titles_color", &s.titles_color, 0, colours},
      {"desc_color", &s.desc_color, 0, colours},
      {"zoom_color", &s.zoom_color, 0, colours},
      {"ref_curve_color", &s.ref_curve_color, 0, colours},
      {"label_font", &s.label_font, 0, fonts},
      {"titles_font", &s.titles_font, 0, fonts},
      {"desc_font", &s.desc_font, 0, fonts},
      {"line_line", &s.line_line, 0, lines},
      {"grid_line", &s.grid_line, 0, lines},
      {"func_line", &s.func_line, 0, lines},
      {"zoom_line", &s.zoom_line, 0, lines},
      {"ref_curve_line", &s.ref_curve_line, 0, lines},
      {"label_size", &s.label_size, smallest_font, largest_font},
      {"title_size", &s.title_size, smallest_font, largest_font},
      {"desc_size", &s.desc_size, smallest_font, largest_font},
      {"label_style", &s.label_style, 0, 3},
      {"title_style", &s.title_style, 0, 3},
      {"desc_style", &s.desc_style, 0, 3},
      {"text_font", &s.text_font, 0, fonts},
      {"text_size", &s.text_size, smallest_font, largest_font},
      {"text_style", &s.text_style, 0, 3},
      {"rtf_ind", &d.rtf_ind, -32768, 32767},
      {"dispage", &w.dispage},
      {"print_file", &w.print_file},
      {"paper_lay", &w.paper_lay},
      {"ps_type", &w.ps_type},
      {"pp_width", &w.pp_width},
      {"pp_height", &w.pp_height},
      {"ppm_left", &w.ppm_left},
      {"ppm_right", &w.ppm_right},
      {"ppm_top", &w.ppm_top},
      {"ppm_bottom", &w.ppm_bottom},
      {"pp_eps", &w.pp_eps},
      {"pp_value", &w.pp_value},
      {"pp_comd", &workplace_names.pp_comd},
      {"pp_pname", &workplace_names.pp_pname},
      {"dir_name", &workplace_names.dir_name},
      {"user_name", &workplace_names.user_name},
      {"co_name", &workplace_names.co_name},
  }};
}();

std::int32_t stored(std::string *text) {
  return static_cast<std::int32_t>(text->size());
}
template <class Integer> std::int32_t stored(Integer *place) {
  return *place;
}

void apply(std::string *, std::int32_t) {} // strings are copied when their line is read
template <class Integer> void apply(Integer *place, std::int32_t value) {
  *place = static_cast<Integer>(value);
}

// A line break inside a text would begin a line of its own, with whatever setting it names.
std::string first_line(std::string_view text) {
  return std::string(text.substr(0, text.find_first_of(std::string_view("\0\r\n", 3))));
}

// The text that follows a length: cut to the line, to the capacity and at control characters.
std::string counted_text(std::string_view rest, long long length) {
  return first_line(rest.substr(0, std::min({rest.size(), static_cast<std::size_t>(length), longest_string})));
}

void append_file(std::string &out, const char *key, const std::string &path) {
  if (!path.empty() && first_line(path) == path)
    appendf(out, "Brisel.%s: %d %s\n", key, static_cast<int>(path.size()), path.c_str());
}

} // namespace

SettingTable store_settings() {
  SettingTable table;
  for (int i = 0; i < setup_key_count; i++)
    table[i] = std::visit([](auto *place) { return stored(place); }, settings[i].place);
  return table;
}

void apply_settings(const SettingTable &table) {
  for (int i = 0; i < setup_key_count; i++)
    if (table[i] >= settings[i].lowest && table[i] <= settings[i].highest)
      std::visit([&](auto *place) { apply(place, table[i]); }, settings[i].place);
}

SetupFiles read_setup(std::string_view text) {
  SetupFiles files;
  if (!text.starts_with(header)) return files;
  SettingTable table = store_settings();
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (!line.starts_with(prefix)) continue;
    line.remove_prefix(prefix.size());
    const std::size_t colon = line.find(':');
    if (colon == line.npos || colon > longest_key) continue;
    const std::string_view key = line.substr(0, colon);
    const std::string_view value = line.substr(colon + 1);
    std::size_t used = 0;
    const auto number = parse_integer(value, &used);
    if (!number || *number < std::numeric_limits<std::int32_t>::min() ||
        *number > std::numeric_limits<std::int32_t>::max())
      continue;
    const std::string_view rest = value.substr(std::min(used + 1, value.size()));
    if (key == "load_spc" || key == "load_inp") {
      if (*number > 0)
        (key == "load_spc" ? files.specifications : files.systems).push_back(counted_text(rest, *number));
      continue;
    }
    for (int i = 0; i < setup_key_count; i++) {
      if (settings[i].key != key) continue;
      table[i] = static_cast<std::int32_t>(*number);
      if (auto *const *string = std::get_if<std::string *>(&settings[i].place); string && *number > 0)
        **string = counted_text(rest, *number);
    }
  }
  apply_settings(table);
  return files;
}

std::string format_setup(const std::string &time, const std::string &date) {
  std::string out = std::string(header) + "\n";
  appendf(out, "Program exits at %s, %s\n", time.c_str(), date.c_str());
  const SettingTable table = store_settings();
  for (int i = 0; i < setup_key_count; i++) {
    if (auto *const *string = std::get_if<std::string *>(&settings[i].place)) {
      const std::string text = first_line(**string);
      appendf(out, "Brisel.%s: %zu %s\n", settings[i].key.data(), text.size(), text.c_str());
    } else {
      appendf(out, "Brisel.%s: %d \n", settings[i].key.data(), table[i]);
    }
  }
  for (const std::string &path : spec_path) append_file(out, "load_spc", path);
  for (const std::string &path : s_path) append_file(out, "load_inp", path);
  for (const std::string &path : z_path) append_file(out, "load_inp", path);
  const auto named = [](const auto &paths, const std::string &path) {
    return std::ranges::find(paths, path) != paths.end();
  };
  for (const std::string &path : remembered_systems)
    if (!named(s_path, path) && !named(z_path, path)) append_file(out, "load_inp", path);
  return out;
}

} // namespace brisel
