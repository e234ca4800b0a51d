#include "engine/core/display_defaults.h"
#include "gui/plots/pictures.h"
#include "tests/gui/plots/example_plots.h"

#include <gtest/gtest.h>

#include <QImage>

namespace brisel {
namespace {

class Pictures : public testing::Test {
protected:
  Pictures() {
    set_display_defaults(settings);
    for (int kind = 0; kind < plot_kind_count; kind++)
      plots.push_back(plot_data_of(example.plot(static_cast<PlotKind>(kind)), example.state, true, "A filter"));
  }
  ExamplePlots example{lowpass_taps(63, 0.3), 8000};
  DisplaySettings settings{};
  std::vector<PlotData> plots;
};

TEST_F(Pictures, PngHasTheSizeAskedForAndIsBlackOnWhite) {
  for (const PlotData &plot : plots) {
    QImage image;
    ASSERT_TRUE(image.loadFromData(plot_png(plot, settings, {500, 300}, 1), "PNG"));
    EXPECT_EQ(image.size(), QSize(500, 300));
    EXPECT_EQ(image.pixel(0, 0), qRgb(255, 255, 255));
    int dark = 0;
    for (int y = 0; y < 300; y++)
      for (int x = 0; x < 500; x++) {
        const QRgb pixel = image.pixel(x, y);
        EXPECT_TRUE(qRed(pixel) == qGreen(pixel) && qGreen(pixel) == qBlue(pixel));
        dark += qRed(pixel) < 128;
      }
    EXPECT_GT(dark, 1000);
    EXPECT_EQ(settings.back_color, 0) << "the screen's colours stay";
  }
  EXPECT_TRUE(plot_png(plots[0], settings, {0, 300}, 1).isEmpty());
}

TEST_F(Pictures, PdfHasAPageForEachPlotAndNoDate) {
  const QByteArray pdf = plot_pdf(plots, settings);
  EXPECT_TRUE(pdf.startsWith("%PDF-1.4"));
  EXPECT_TRUE(pdf.trimmed().endsWith("%%EOF"));
  EXPECT_EQ(pdf.count("/Type /Page\n"), plot_kind_count);
  EXPECT_FALSE(pdf.contains("CreationDate"));
  const qsizetype place = pdf.lastIndexOf("startxref\n") + 10;
  const qsizetype table = pdf.mid(place, pdf.indexOf('\n', place) - place).toLongLong();
  EXPECT_EQ(pdf.mid(table, 4), "xref") << "offsets still hold";
  EXPECT_TRUE(plot_pdf({}, settings).isEmpty());
}

TEST_F(Pictures, SvgIsAClosedDocumentWithItsTexts) {
  const QByteArray svg = plot_svg(plots[1], settings, {800, 533});
  EXPECT_TRUE(svg.contains("<svg width=\"211.667mm\""));
  EXPECT_TRUE(svg.trimmed().endsWith("</svg>"));
  EXPECT_TRUE(svg.contains("Log Magnitude vs Frequency"));
  EXPECT_FALSE(svg.contains("nan"));
}

TEST_F(Pictures, TheSamePlotGivesTheSameBytes) {
  EXPECT_EQ(plot_png(plots[1], settings, {1200, 800}, 1.5), plot_png(plots[1], settings, {1200, 800}, 1.5));
  EXPECT_EQ(plot_pdf(plots, settings), plot_pdf(plots, settings));
  EXPECT_EQ(plot_svg(plots[6], settings, {800, 533}), plot_svg(plots[6], settings, {800, 533}));
}

} // namespace
} // namespace brisel
