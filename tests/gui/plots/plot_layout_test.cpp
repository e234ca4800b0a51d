#include "engine/core/display_defaults.h"
#include "gui/plots/plot_painter.h"
#include "tests/gui/plots/example_plots.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QImage>

#include <clocale>

namespace brisel {
namespace {

constexpr const char *problem = "Lowpass Filter  FIR (Window) Design  Kaiser  63 taps  52 Bit Floating Point";

DisplaySettings defaults() {
  DisplaySettings settings{};
  set_display_defaults(settings);
  return settings;
}

QImage canvas(int width, int height, double scale = 1) {
  QImage image(width, height, QImage::Format_RGB32);
  image.setDotsPerMeterX(static_cast<int>(96 * scale / 0.0254));
  image.setDotsPerMeterY(static_cast<int>(96 * scale / 0.0254));
  return image;
}

/// Examples whose labels differ in length: audio, fast, slow, logarithmic, in radians, with an exponent.
std::vector<std::unique_ptr<ExamplePlots>> examples() {
  std::vector<std::unique_ptr<ExamplePlots>> all;
  const std::pair<int, double> sizes[] = {{63, 8000}, {5, 22.05e6}, {301, 44100}, {31, 2}, {1, 1}};
  for (const auto &[taps, sampling] : sizes)
    all.push_back(std::make_unique<ExamplePlots>(lowpass_taps(taps, 0.3), sampling, 401));
  all.push_back(std::make_unique<ExamplePlots>(lowpass_taps(63, 0.02), 48000, 401));
  all.back()->make_logarithmic();
  all.push_back(std::make_unique<ExamplePlots>(lowpass_taps(63, 0.3), 8000, 401));
  all.back()->state.radians = true;
  return all;
}

TEST(PlotLayout, TextsStayOnTheDeviceAndApart) {
  const PlotStyle style = mono_plot_style(defaults());
  struct Device {
    int width, height;
    double scale;
  };
  for (const Device &device :
       {Device{500, 300, 1}, Device{1200, 800, 1.5}, Device{1200, 800, 1}, Device{300, 200, 1}, Device{160, 120, 1},
        Device{2000, 100, 1}, Device{90, 900, 1}, Device{11000, 7700, 12.5}})
    for (const auto &example : examples())
      for (int kind = 0; kind < plot_kind_count; kind++) {
        const PlotData data = plot_data_of(example->plot(static_cast<PlotKind>(kind)), example->state, true, problem);
        const QImage image = canvas(1, 1, device.scale);
        const QRectF place(3, 5, device.width, device.height);
        PlotLayout layout;
        lay_out_plot(layout, data, style, place, image);
        const QRectF area(layout.left, layout.top, layout.right - layout.left, layout.bottom - layout.top);
        const auto where = [&] {
          return testing::Message() << device.width << "x" << device.height << " kind " << kind;
        };
        EXPECT_TRUE(layout.is_empty() || place.contains(area)) << where();
        for (std::size_t i = 0; i < layout.texts.size(); i++) {
          const PlacedText &text = layout.texts[i];
          EXPECT_TRUE(place.contains(text.place)) << where() << " clipped: " << text.text.toStdString();
          EXPECT_FALSE(area.intersects(text.place)) << where() << " in the plot: " << text.text.toStdString();
          for (std::size_t j = i + 1; j < layout.texts.size(); j++)
            EXPECT_FALSE(text.place.intersects(layout.texts[j].place))
                << where() << " overlap: " << text.text.toStdString() << " | " << layout.texts[j].text.toStdString();
        }
      }
}

TEST(PlotLayout, NothingIsMissingAtTheSizesThatMatter) {
  const PlotStyle style = mono_plot_style(defaults());
  ExamplePlots example(lowpass_taps(63, 0.3), 8000);
  for (const QSize &size : {QSize(500, 300), QSize(1200, 800)}) {
    PlotLayout layout;
    lay_out_plot(layout, plot_data_of(example.plot(PlotKind::log_magnitude), example.state, true, problem), style,
                 QRectF(QPointF(), size), canvas(1, 1));
    std::array<int, 7> count{};
    for (const PlacedText &text : layout.texts) count[static_cast<std::size_t>(text.role)]++;
    EXPECT_EQ(count[static_cast<std::size_t>(TextRole::x_tick)], 9);
    EXPECT_GE(count[static_cast<std::size_t>(TextRole::y_tick)], 6);
    for (const TextRole role : {TextRole::x_label, TextRole::y_label, TextRole::title, TextRole::problem})
      EXPECT_EQ(count[static_cast<std::size_t>(role)], 1);
    EXPECT_EQ(layout.square_size, size.height());
    EXPECT_NEAR(layout.left, 0.1 * size.width(), 12);
    EXPECT_NEAR(layout.right, 0.9 * size.width(), 1);
  }
}

TEST(PlotLayout, EveryKindIsDrawnInFlatAndInNarrowWindows) {
  const PlotStyle style = mono_plot_style(defaults());
  ExamplePlots example(lowpass_taps(63, 0.3), 8000);
  for (const QSize &size : {QSize(413, 200), QSize(200, 413), QSize(900, 120), QSize(120, 80)})
    for (int kind = 0; kind < plot_kind_count; kind++) {
      PlotLayout layout;
      lay_out_plot(layout, plot_data_of(example.plot(static_cast<PlotKind>(kind)), example.state, true, problem), style,
                   QRectF(QPointF(), size), canvas(1, 1));
      EXPECT_FALSE(layout.is_empty()) << size.width() << "x" << size.height() << " kind " << kind;
    }
}

TEST(PlotLayout, WideVerticalLabelsMoveTheEdgeOrAreDropped) {
  const PlotStyle style = mono_plot_style(defaults());
  PlotData data;
  const std::vector<double> y{0, 1};
  data.curve.y = y;
  data.y_range = {123456, 123457};
  const auto layout_for = [&](double width) {
    PlotLayout layout;
    lay_out_plot(layout, data, style, {0, 0, width, 300}, canvas(1, 1));
    return layout;
  };
  const auto has_ticks = [](const PlotLayout &layout) { return !layout.y_axis.labels.empty(); };
  EXPECT_TRUE(has_ticks(layout_for(300)));
  EXPECT_GT(layout_for(300).left, 60);
  EXPECT_FALSE(has_ticks(layout_for(150)));
}

TEST(PlotLayout, PlacesWithoutAreaAreLeftAlone) {
  const PlotStyle style = mono_plot_style(defaults());
  ExamplePlots example(lowpass_taps(5, 0.3), 8000, 11);
  const PlotData data = plot_data_of(example.plot(PlotKind::magnitude), example.state, true, problem);
  QImage image = canvas(50, 50);
  QPainter painter(&image);
  for (const QRectF &place : {QRectF(), QRectF(0, 0, 0, 100), QRectF(0, 0, -5, -5), QRectF(0, 0, 10, 10),
                              QRectF(0, 0, NAN, NAN), QRectF(0, 0, 1e308, 1e308)}) {
    PlotLayout layout;
    layout.zoom_x = 7;
    draw_plot(painter, place, data, style, layout, {PlotCursor{1, 1, 0}, true});
    EXPECT_EQ(layout.zoom_x, 7);
    EXPECT_TRUE(layout.is_empty());
    EXPECT_FALSE(zoom_ranges(layout, {0, 0}, {50, 50}));
  }
}

TEST(PlotLayout, ZoomRectangles) {
  const PlotStyle style = mono_plot_style(defaults());
  ExamplePlots example(lowpass_taps(63, 0.3), 8000);
  PlotData data = plot_data_of(example.plot(PlotKind::log_magnitude), example.state, true, problem);
  PlotLayout layout;
  lay_out_plot(layout, data, style, {0, 0, 500, 300}, canvas(1, 1));
  const double middle = (layout.left + layout.right) / 2;
  const auto half = zoom_ranges(layout, {middle, layout.top}, {2000, layout.bottom + 500});
  ASSERT_TRUE(half);
  EXPECT_NEAR(half->x[0], 2000, 1e-9);
  EXPECT_NEAR(half->x[1], 4000, 1e-9);
  EXPECT_NEAR(half->y[0], layout.y_axis.range[0], 1e-9);
  for (const auto &[start, end] : {std::pair<QPointF, QPointF>{{100, 100}, {100, 100}},
                                   {{100, 100}, {200, 101}},
                                   {{-50, -50}, {-10, -10}},
                                   {{NAN, 100}, {200, 200}}})
    EXPECT_FALSE(zoom_ranges(layout, start, end));

  data.x_range = {1000, 2000};
  data.y_range = {-1, 1};
  data.round_x = data.round_y = false;
  lay_out_plot(layout, data, style, {0, 0, 500, 300}, canvas(1, 1));

  const auto closer = zoom_about(layout, {layout.left, layout.bottom}, 0.5);
  ASSERT_TRUE(closer);
  EXPECT_NEAR(closer->x[0], 1000, 1e-9);
  EXPECT_NEAR(closer->x[1], 1500, 1e-9);
  EXPECT_NEAR(closer->y[1], 0, 1e-9);
  EXPECT_FALSE(zoom_about(layout, {200, 100}, 1e-20));
  EXPECT_FALSE(zoom_about(layout, {200, 100}, NAN));
}

TEST(PlotPainter, OnlyTheFrameAndItsInsideCarryTheCurve) {
  // Function red on white, everything else white: what is red is curve.
  DisplaySettings settings = defaults();
  set_color_mono(settings);
  for (std::int32_t *color : {&settings.titles_color, &settings.desc_color, &settings.outline_color,
                              &settings.grid_color, &settings.labels_color})
    *color = 1;
  settings.funct_color = 2;
  const PlotStyle style = plot_style(settings);
  ExamplePlots example(lowpass_taps(63, 0.3), 8000);
  for (double &value : example.decibels)
    if (value < -80) value = -600;
  example.magnitude[100] = 1e30;
  example.magnitude[200] = -1e30;
  example.phase[300] = NAN;
  example.step[10] = -1e30;
  for (int kind = 0; kind < plot_kind_count; kind++) {
    const PlotData data = plot_data_of(example.plot(static_cast<PlotKind>(kind)), example.state, true, "");
    QImage image = canvas(500, 300);
    QPainter painter(&image);
    PlotLayout layout;
    draw_plot(painter, image.rect(), data, style, layout);
    painter.end();
    int inside = 0, outside = 0;
    for (int y = 0; y < 300; y++)
      for (int x = 0; x < 500; x++) {
        if (QColor::fromRgb(image.pixel(x, y)) == QColor(Qt::white)) continue;
        const bool in = x >= layout.left - 1 && x <= layout.right + 1 && y >= layout.top - 1 && y <= layout.bottom + 1;
        (in ? inside : outside)++;
      }
    EXPECT_GT(inside, 20) << kind;
    EXPECT_EQ(outside, 0) << kind;
  }
}

TEST(PlotPainter, LongTextsAreMadeSmallerAndKeepOffTheEdges) {
  const PlotStyle style = mono_plot_style(defaults());
  ExamplePlots example(lowpass_taps(63, 0.3), 8000);
  const std::string line = "Root Raised Cosine Filter, FIR (Window) Design, Dolph-Tschebyscheff, 163 taps, 52 Bit";
  for (const auto &[text, whole] : {std::pair{line, true}, {line + line, false}})
    for (const PlotKind kind : {PlotKind::log_magnitude, PlotKind::pole_zero}) {
      const PlotData data = plot_data_of(example.plot(kind), example.state, true, text);
      QImage image = canvas(500, 300);
      QPainter painter(&image);
      PlotLayout layout;
      draw_plot(painter, image.rect(), data, style, layout);
      painter.end();
      for (int i = 0; i < 500; i++)
        for (const QPoint &edge : {QPoint(i, 0), QPoint(i, 299), QPoint(0, i % 300), QPoint(499, i % 300)})
          ASSERT_EQ(image.pixel(edge), qRgb(255, 255, 255)) << edge.x() << ", " << edge.y();
      for (const PlacedText &placed : layout.texts)
        EXPECT_TRUE(placed.role != TextRole::problem || (placed.text == QString::fromStdString(text)) == whole);
    }
}

TEST(PlotPainter, MonoIsBlackOnWhite) {
  const PlotStyle mono = mono_plot_style(defaults()), screen = plot_style(defaults());
  EXPECT_EQ(mono.background, QColor(Qt::white));
  EXPECT_EQ(screen.background, QColor(Qt::black));
  for (const QPen *pen : {&mono.outline, &mono.grid, &mono.function, &mono.reference, &mono.zoom, &mono.cursor,
                          &mono.labels, &mono.titles, &mono.problem})
    EXPECT_EQ(pen->color(), QColor(Qt::black));
  EXPECT_EQ(mono.reference.style(), Qt::DashLine) << "the only thing that tells it from the function";
  EXPECT_EQ(display_color(99), display_color(0));
  EXPECT_EQ(display_line(-1), Qt::SolidLine);
}

TEST(PlotPainter, OverlaysAreDrawn) {
  const PlotStyle style = mono_plot_style(defaults());
  ExamplePlots example(lowpass_taps(63, 0.3), 8000);
  for (const PlotKind kind : {PlotKind::magnitude, PlotKind::pole_zero}) {
    const PlotData data = plot_data_of(example.plot(kind), example.state, false, problem);
    const auto drawn = [&](const PlotOverlay &overlay) {
      QImage image = canvas(500, 300);
      QPainter painter(&image);
      PlotLayout layout;
      layout.zoom_start_x = 200, layout.zoom_start_y = 100, layout.zoom_x = 300, layout.zoom_y = 400;
      draw_plot(painter, image.rect(), data, style, layout, overlay);
      return image;
    };
    const QImage plain = drawn({});
    EXPECT_NE(drawn({PlotCursor{0.5, 0.5, -1}, false}), plain);
    EXPECT_NE(drawn({{}, true}), plain);
    EXPECT_EQ(drawn({PlotCursor{1e30, NAN, -1}, false}), plain);
  }
}

} // namespace
} // namespace brisel

int main(int argc, char **argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  const QGuiApplication application(argc, argv);
  std::setlocale(LC_ALL, "C");
  return RUN_ALL_TESTS();
}
