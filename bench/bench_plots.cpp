// Cost of drawing: one repaint of a plot window, and the pictures of a batch job.
#include "engine/core/display_defaults.h"
#include "gui/plots/pictures.h"
#include "tests/gui/plots/example_plots.h"

#include <QGuiApplication>
#include <QImage>

#include <benchmark/benchmark.h>

namespace brisel {
namespace {

DisplaySettings settings() {
  DisplaySettings settings{};
  set_display_defaults(settings);
  return settings;
}

/// Arguments: plot kind, frequency points, width, height.
void repaint(benchmark::State &bench) {
  const ExamplePlots example(lowpass_taps(63, 0.3), 8000, static_cast<int>(bench.range(1)));
  const PlotStyle style = plot_style(settings());
  QImage image(static_cast<int>(bench.range(2)), static_cast<int>(bench.range(3)), QImage::Format_RGB32);
  PlotLayout layout;
  for (auto _ : bench) {
    const PlotData data = plot_data_of(example.plot(static_cast<PlotKind>(bench.range(0))), example.state, true, "");
    QPainter painter(&image);
    draw_plot(painter, image.rect(), data, style, layout);
  }
}
BENCHMARK(repaint)
    ->ArgNames({"kind", "points", "width", "height"})
    ->ArgsProduct({{0, 1, 2}, {101, 1001, 10001}, {1200}, {800}})
    ->Args({1, 10001, 500, 300})
    ->Args({1, 10001, 3840, 2160})
    ->Unit(benchmark::kMillisecond);

/// The worst case: a value in every place of every column.
void repaint_noise(benchmark::State &bench) {
  ExamplePlots example(lowpass_taps(3, 0.3), 8000, static_cast<int>(bench.range(0)));
  for (std::size_t i = 0; i < example.phase.size(); i++) example.phase[i] = 3.1 * std::sin(static_cast<double>(i * i));
  const PlotData data = plot_data_of(example.plot(PlotKind::phase), example.state, true, "");
  const PlotStyle style = plot_style(settings());
  QImage image(1200, 800, QImage::Format_RGB32);
  PlotLayout layout;
  for (auto _ : bench) {
    QPainter painter(&image);
    draw_plot(painter, image.rect(), data, style, layout);
  }
}
BENCHMARK(repaint_noise)->Arg(1001)->Arg(10001)->Unit(benchmark::kMillisecond);

void pictures(benchmark::State &bench) {
  const ExamplePlots example(lowpass_taps(63, 0.3), 8000);
  std::vector<PlotData> plots;
  for (int kind = 0; kind < plot_kind_count; kind++)
    plots.push_back(plot_data_of(example.plot(static_cast<PlotKind>(kind)), example.state, true, ""));
  for (auto _ : bench) {
    if (bench.range(0))
      benchmark::DoNotOptimize(plot_pdf(plots, settings()));
    else
      for (const PlotData &plot : plots) benchmark::DoNotOptimize(plot_png(plot, settings(), {1200, 800}, 1.5));
  }
}
BENCHMARK(pictures)->ArgName("pdf")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace brisel

int main(int argc, char **argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
