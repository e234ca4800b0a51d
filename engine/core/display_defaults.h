// display_defaults.h - the choices of the display settings and the values they start with.
#pragma once

#include "engine/core/design_state.h"

#include <array>
#include <string_view>

namespace brisel {

inline constexpr std::array<std::string_view, 9> colour_names{"black",  "white", "red",     "green", "blue",
                                                              "yellow", "cyan",  "magenta", "gray"};
inline constexpr std::array<std::string_view, 4> font_families{"Courier New", "Helvetica", "Times", "Charter"};
inline constexpr std::array<std::string_view, 5> line_styles{"Solid", "Dash", "Dot", "Dash Dotted", "Dash 2 Dotted"};
inline constexpr int smallest_font = 4;
inline constexpr int largest_font = 72;

/// Black background, bright curves.
void set_color_defaults(DisplaySettings &display);
/// White background, everything else black: printing and pictures.
void set_color_mono(DisplaySettings &display);
void set_font_defaults(DisplaySettings &display);
void set_line_defaults(DisplaySettings &display);
/// All three defaults.
void set_display_defaults(DisplaySettings &display);

} // namespace brisel
