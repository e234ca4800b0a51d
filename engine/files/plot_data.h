// plot_data.h - plot data files: one response a file, a horizontal and a vertical value a line, for other programs.
#pragma once

#include "engine/analysis/plot_arrays.h"

#include <optional>

namespace brisel {

struct PlotDataFile {
  std::string_view name;      // in the dialog that offers the files
  std::string_view extension; // without its dot
  bool over_time;             // else over frequency
};
/// In the order in which they are written.
inline constexpr std::array plot_data_files{
    PlotDataFile{"Group Delay", "gdl", false},   PlotDataFile{"Impulse Response", "imp", true},
    PlotDataFile{"Log Magnitude", "lmn", false}, PlotDataFile{"Magnitude", "mag", false},
    PlotDataFile{"Phase", "pha", false},         PlotDataFile{"Step Response", "stp", true},
};

/// The text of file `index` of the table. `interval` is the sampling interval in seconds; frequencies are written in
/// hertz or, with `radians`, in radians per second. None when a value is not finite: such a file would be of no use.
std::optional<std::string> plot_data_text(std::size_t index, const PlotArrays &arrays, double interval, bool radians);

} // namespace brisel
