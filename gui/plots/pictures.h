// pictures.h - plots as picture files. All are black on white. They need a QGuiApplication, and give the same bytes for
// the same plot on every run.
#pragma once

#include "gui/plots/plot_painter.h"

#include <QByteArray>
#include <QSize>

namespace brisel {

/// `scale` 1 draws for a screen of 96 dots per inch; a larger one enlarges texts and lines with it.
QByteArray plot_png(const PlotData &data, const DisplaySettings &settings, const QSize &pixels, double scale);
QByteArray plot_svg(const PlotData &data, const DisplaySettings &settings, const QSize &size);
/// One A4 page in landscape a plot.
QByteArray plot_pdf(std::span<const PlotData> plots, const DisplaySettings &settings);

} // namespace brisel
