#include "gui/plots/pictures.h"

#include <QBuffer>
#include <QImage>
#include <QPageLayout>
#include <QPdfWriter>
#include <QSvgGenerator>

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

PlotStyle picture_style(const DisplaySettings &settings) {
  PlotStyle style = mono_plot_style(settings);
  style.always_smooth = true;
  return style;
}

/// Blanks the date out of the document information; its length, and with it every offset of the file, stays.
void remove_creation_date(QByteArray &pdf) {
  const qsizetype start = pdf.indexOf("/CreationDate (");
  if (start < 0) return;
  const qsizetype end = pdf.indexOf(')', start);
  if (end > start) std::fill(pdf.begin() + start, pdf.begin() + end + 1, ' ');
}

} // namespace

QByteArray plot_png(const PlotData &data, const DisplaySettings &settings, const QSize &pixels, double scale) {
  QImage image(pixels, QImage::Format_RGB32);
  if (image.isNull()) return {};
  const int dots_per_meter = static_cast<int>(std::lround(96 * scale / 0.0254));
  image.setDotsPerMeterX(dots_per_meter);
  image.setDotsPerMeterY(dots_per_meter);
  QPainter painter(&image);
  PlotLayout layout;
  draw_plot(painter, QRectF(QPointF(), pixels), data, picture_style(settings), layout);
  painter.end();
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  image.convertToFormat(QImage::Format_Grayscale8).save(&buffer, "PNG");
  return bytes;
}

QByteArray plot_svg(const PlotData &data, const DisplaySettings &settings, const QSize &size) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  QSvgGenerator svg;
  svg.setOutputDevice(&buffer);
  svg.setResolution(96);
  svg.setSize(size);
  svg.setViewBox(QRectF(QPointF(), size));
  svg.setTitle(qt_text(data.title));
  svg.setDescription(qt_text(data.problem));
  QPainter painter(&svg);
  PlotLayout layout;
  draw_plot(painter, QRectF(QPointF(), size), data, picture_style(settings), layout);
  painter.end();
  return bytes;
}

QByteArray plot_pdf(std::span<const PlotData> plots, const DisplaySettings &settings) {
  QByteArray bytes;
  if (plots.empty()) return bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  {
    QPdfWriter writer(&buffer);
    writer.setResolution(1200);
    writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Landscape, QMarginsF()));
    writer.setCreator(QStringLiteral("Brisel"));
    writer.setTitle(qt_text(plots.front().problem));
    QPainter painter(&writer);
    const PlotStyle style = picture_style(settings);
    for (const PlotData &plot : plots) {
      if (&plot != &plots.front()) writer.newPage();
      PlotLayout layout;
      draw_plot(painter, printed_place(writer), plot, style, layout);
    }
  }
  remove_creation_date(bytes);
  return bytes;
}

} // namespace brisel
