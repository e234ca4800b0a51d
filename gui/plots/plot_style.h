// plot_style.h - pens, fonts and colours of the plots, built from the display settings.
#pragma once

#include "engine/core/design_state.h"

#include <QColor>
#include <QFont>
#include <QPen>
#include <QString>

#include <string_view>

namespace brisel {

/// Pen widths count in 1/96 inch, font sizes in points.
struct PlotStyle {
  QColor background;
  QPen outline, grid, function, reference, zoom, cursor;
  QPen labels, titles, problem; // text colours
  bool always_smooth = false;   // also a curve so dense that smoothing takes longer than a window should
  QFont label_font, title_font, problem_font, text_font;
};

QString qt_text(std::string_view text);

/// An index outside the tables counts as 0.
QColor display_color(int index);
Qt::PenStyle display_line(int index);
QFont display_font(int family, int size, int style);
QFont with_size(QFont font, double points);
PlotStyle plot_style(const DisplaySettings &settings);
/// The same with the colours of printed pages and picture files: black on white.
PlotStyle mono_plot_style(const DisplaySettings &settings);

} // namespace brisel
