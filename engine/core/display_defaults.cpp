#include "engine/core/display_defaults.h"

namespace brisel {

namespace {

enum Colour { black, white, red, green, blue, yellow, cyan };
enum Family { courier, helvetica };
enum Line { solid, dash, dot };
constexpr int bold = 1;

void set_colours(DisplaySettings &d, int background, const std::array<int, 9> &others) {
  d.back_color = background;
  std::int32_t *const places[] = {&d.titles_color, &d.desc_color, &d.mark_color,      &d.outline_color, &d.grid_color,
                                  &d.funct_color,  &d.zoom_color, &d.ref_curve_color, &d.labels_color};
  for (std::size_t i = 0; i < others.size(); i++) *places[i] = others[i];
}

} // namespace

void set_color_defaults(DisplaySettings &display) {
  set_colours(display, black, {cyan, green, red, white, blue, yellow, yellow, red, white});
}

void set_color_mono(DisplaySettings &display) {
  set_colours(display, white, {});
}

void set_font_defaults(DisplaySettings &d) {
  d.label_font = d.titles_font = d.desc_font = helvetica;
  d.text_font = courier;
  d.label_size = d.desc_size = d.text_size = 10;
  d.title_size = 13;
  d.label_style = d.desc_style = d.text_style = 0;
  d.title_style = bold;
}

void set_line_defaults(DisplaySettings &d) {
  d.line_line = d.func_line = solid;
  d.grid_line = dot;
  d.zoom_line = d.ref_curve_line = dash;
}

void set_display_defaults(DisplaySettings &display) {
  set_color_defaults(display);
  set_font_defaults(display);
  set_line_defaults(display);
}

} // namespace brisel
