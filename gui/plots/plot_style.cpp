#include "gui/plots/plot_style.h"

#include "engine/core/display_defaults.h"

#include <algorithm>

namespace brisel {

namespace {

// In the order of colour_names. Shades that can be read on black and on white.
constexpr std::array<QRgb, colour_names.size()> shades{0xff000000, 0xffffffff, 0xffe23b2e, 0xff1fa03a, 0xff3d7bff,
                                                       0xffd9b400, 0xff00b4c8, 0xffc83cc8, 0xff8c8c8c};

constexpr std::array<Qt::PenStyle, line_styles.size()> pen_styles{Qt::SolidLine, Qt::DashLine, Qt::DotLine,
                                                                  Qt::DashDotLine, Qt::DashDotDotLine};

struct Family {
  std::string_view first, second;
  QFont::StyleHint hint;
};
// In the order of font_families. The fonts that are installed with Brisel have the widths of those asked for and come
// first, so that pictures agree between machines; Charter has no such substitute.
constexpr std::array<Family, font_families.size()> families{{{"Liberation Mono", font_families[0], QFont::Monospace},
                                                             {"Liberation Sans", font_families[1], QFont::SansSerif},
                                                             {"Liberation Serif", font_families[2], QFont::Serif},
                                                             {font_families[3], "Liberation Serif", QFont::Serif}}};

template <class Table> std::size_t row(const Table &table, int index) {
  return index >= 0 && static_cast<std::size_t>(index) < table.size() ? static_cast<std::size_t>(index) : 0;
}

QPen pen(int color, double width, int line) {
  QPen pen(display_color(color), width, display_line(line), Qt::FlatCap, Qt::RoundJoin);
  // Sparse dots: a grid should stay behind the curve, also in black.
  if (pen.style() == Qt::DotLine) pen.setDashPattern({1, 3});
  return pen;
}

} // namespace

QString qt_text(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QColor display_color(int index) {
  return QColor::fromRgb(shades[row(shades, index)]);
}

Qt::PenStyle display_line(int index) {
  return pen_styles[row(pen_styles, index)];
}

QFont display_font(int family, int size, int style) {
  QFont font;
  const Family &names = families[row(families, family)];
  font.setFamilies({qt_text(names.first), qt_text(names.second)});
  font.setStyleHint(names.hint);
  font.setPointSize(std::clamp(size, smallest_font, largest_font));
  font.setBold(style & 1);
  font.setItalic(style & 2);
  return font;
}

QFont with_size(QFont font, double points) {
  font.setPointSizeF(points);
  return font;
}

PlotStyle plot_style(const DisplaySettings &s) {
  PlotStyle style;
  style.background = display_color(s.back_color);
  style.outline = pen(s.outline_color, 1, s.line_line);
  style.grid = pen(s.grid_color, 0.75, s.grid_line);
  style.function = pen(s.funct_color, 1.5, s.func_line);
  style.reference = pen(s.ref_curve_color, 1.25, s.ref_curve_line);
  style.zoom = pen(s.zoom_color, 1, s.zoom_line);
  style.cursor = pen(s.mark_color, 1, 0);
  style.labels = pen(s.labels_color, 1, 0);
  style.titles = pen(s.titles_color, 1, 0);
  style.problem = pen(s.desc_color, 1, 0);
  style.label_font = display_font(s.label_font, s.label_size, s.label_style);
  style.title_font = display_font(s.titles_font, s.title_size, s.title_style);
  style.problem_font = display_font(s.desc_font, s.desc_size, s.desc_style);
  style.text_font = display_font(s.text_font, s.text_size, s.text_style);
  return style;
}

PlotStyle mono_plot_style(const DisplaySettings &settings) {
  DisplaySettings mono = settings;
  set_color_mono(mono);
  return plot_style(mono);
}

} // namespace brisel
