// Cost of window designs against the number of taps. Goal on one core: 50000 taps under 50 ms for every type.
#include "engine/core/code_tables.h"
#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/core/trace.h"
#include "engine/fir/unfold.h"
#include "engine/fir/window_design.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <numbers>

namespace brisel {
namespace {

class Nobody : public FrontEnd {
public:
  PageResult run_page(Page) override { return PageResult::cancelled; }
  void announce(std::string_view) override {}
  void post_message(Message, std::string_view) override { std::abort(); }
  void show_text(std::string_view) override {}
  void reader_complaint(std::string_view) override {}
  bool progress(double) override { return true; }
  void refresh_plots() override {}
};
Nobody nobody;

FilterSpec basic(FilterType type, int window) {
  FilterSpec s{};
  s.type = code(type);
  s.window_type = window;
  s.sampling_frequency = two_pi;
  s.passband_edge = {1.0, 2.0};
  s.stopband_edge = {1.2, 2.2};
  s.stopband_ripple = 60;
  return s;
}

FilterSpec lowpass() {
  return basic(FilterType::low_pass, kaiser_window);
}

FilterSpec halfband() {
  return basic(FilterType::half_band, kaiser_window);
}

FilterSpec root_raised_cosine_filter() {
  return basic(FilterType::root_raised_cosine, rectangular_window);
}

// All bands, all points.
FilterSpec arbitrary_magnitude() {
  FilterSpec s = basic(FilterType::arbitrary_magnitude, kaiser_window);
  s.band_count = max_arbitrary_bands;
  for (int b = 0; b < s.band_count; b++) {
    s.band_lower[b] = std::numbers::pi * (b + 0.05) / s.band_count;
    s.band_upper[b] = std::numbers::pi * (b + 0.95) / s.band_count;
    s.point_count[b] = max_points_per_band;
    for (int i = 0; i < max_points_per_band; i++) {
      s.function_frequency[b * max_points_per_band + i] =
          s.band_lower[b] + (s.band_upper[b] - s.band_lower[b]) * i / (max_points_per_band - 1);
      s.function_value[b * max_points_per_band + i] = 1 + (b * 7 + i * 3) % 5;
    }
  }
  return s;
}

void design(benchmark::State &state, FilterSpec spec, int compensation) {
  front_end = &nobody;
  choose_system_files({{SystemFile::Kind::null_device, ""}, {SystemFile::Kind::null_device, ""}});
  reopen_system_files();
  design_record.loaded = spec;
  design_record.selections.CompensationOption = compensation >= 0;
  design_record.selections.CompensationType = static_cast<std::uint8_t>(compensation >= 0 ? compensation : 0);
  design_record.selections.CompensationRateChange = 16;
  design_record.selections.CompensationNumberOfStages = 5;
  spec.length = static_cast<int>(state.range(0));
  const auto entry = std::make_unique<FirEntry>();
  for (auto _ : state) {
    design_notes.clear();
    benchmark::DoNotOptimize(fir_window_design(spec, *entry));
  }
  state.SetComplexityN(state.range(0));
}

void taps(benchmark::internal::Benchmark *b) {
  b->Arg(101)->Arg(1001)->Arg(10001)->Arg(50000)->Unit(benchmark::kMicrosecond)->Complexity();
}
void odd_taps(benchmark::internal::Benchmark *b) {
  b->Arg(101)->Arg(1001)->Arg(10001)->Arg(49999)->Unit(benchmark::kMicrosecond)->Complexity();
}

FilterSpec with_window(int window, double attenuation) {
  FilterSpec s = lowpass();
  s.window_type = window;
  s.stopband_ripple = attenuation;
  return s;
}

BENCHMARK_CAPTURE(design, lowpass_kaiser, lowpass(), -1)->Apply(taps);
BENCHMARK_CAPTURE(design, arbitrary_magnitude_250_points, arbitrary_magnitude(), -1)->Apply(taps);
BENCHMARK_CAPTURE(design, root_raised_cosine, root_raised_cosine_filter(), -1)->Apply(taps);
BENCHMARK_CAPTURE(design, lowpass_sinc_compensated, lowpass(), 0)->Apply(taps);
BENCHMARK_CAPTURE(design, lowpass_comb_compensated, lowpass(), 1)->Apply(taps);
BENCHMARK_CAPTURE(design, arbitrary_magnitude_comb_compensated, arbitrary_magnitude(), 1)->Apply(taps);
BENCHMARK_CAPTURE(design, halfband, halfband(), -1)->Apply(odd_taps);
BENCHMARK_CAPTURE(design, lowpass_dolph_60_db, with_window(15, 60), -1)->Apply(taps);
BENCHMARK_CAPTURE(design, lowpass_dolph_400_db, with_window(15, 400), -1)->Apply(taps);
BENCHMARK_CAPTURE(design, lowpass_taylor_400_db, with_window(16, 400), -1)->Apply(taps);
BENCHMARK_CAPTURE(design, lowpass_kaiser_400_db, with_window(14, 400), -1)->Apply(taps);

} // namespace
} // namespace brisel

BENCHMARK_MAIN();
