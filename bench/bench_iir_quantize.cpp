// bench_iir_quantize.cpp - the noise estimate, the gain and every form conversion as the order grows.
#include "engine/analysis/form_conversions.h"
#include "engine/iir/cascade_gain.h"
#include "engine/iir/iir_quantize.h"
#include "engine/iir/iir_scaling.h"
#include "engine/iir/noise.h"
#include "engine/iir/reorder.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>

namespace brisel {

// Resonators at even angles: all forms of it exist at every order.
static SectionEntry resonators(std::int64_t order) {
  SectionEntry entry{};
  entry.sample_rate = two_pi;
  entry.gain = 0.5;
  entry.pars = 1;
  entry.order = static_cast<std::int16_t>(order);
  entry.section_count = static_cast<std::int16_t>(order / 2);
  for (int k = 0; k < entry.section_count; k++) {
    const double angle = std::numbers::pi * (k + 0.5) / entry.section_count;
    entry.numerators[k] = {1, -1.6 * std::cos(angle + 0.3 / entry.section_count), 0.64};
    entry.denominators[k] = {1, -1.9 * std::cos(angle), 0.9025};
  }
  return entry;
}

static void NoiseEstimate(benchmark::State &state) {
  const SectionEntry cascade = resonators(state.range(0));
  std::array<double, max_sections> gains{};
  for (auto _ : state) {
    cascade_noise_gains(cascade, SectionStructure::transposed, gains);
    benchmark::DoNotOptimize(gains);
  }
}

static void GainAndScaling(benchmark::State &state) {
  const SectionEntry cascade = resonators(state.range(0));
  for (auto _ : state) {
    SectionEntry scaled = cascade;
    QuantizationResult result{};
    compute_cas_gain(scaled);
    benchmark::DoNotOptimize(scale_cascade(scaled, SectionStructure::transposed, result));
  }
}

static void ReorderAndQuantize(benchmark::State &state) {
  const SectionEntry cascade = resonators(state.range(0));
  PoleZeroEntry work{};
  int dropped;
  for (auto _ : state) {
    SectionEntry entry = cascade;
    benchmark::DoNotOptimize(reorder_sections(entry, work, dropped));
    quantize_section_coefficients(entry, true, 16);
    benchmark::DoNotOptimize(entry);
  }
}

static void Conversions(benchmark::State &state, RealizationForm source) {
  IirForms forms{};
  FormReport found{};
  forms.cascade = resonators(state.range(0));
  derive_forms(Domain::z, RealizationForm::cascade, forms, found);
  if (!form_exists(forms, source)) return state.SkipWithError("the form does not exist");
  for (auto _ : state) benchmark::DoNotOptimize(derive_forms(Domain::z, source, forms, found));
}

#define BRISEL_ORDERS Arg(4)->Arg(20)->Arg(100)->Unit(benchmark::kMicrosecond)
BENCHMARK(NoiseEstimate)->BRISEL_ORDERS;
BENCHMARK(GainAndScaling)->BRISEL_ORDERS;
BENCHMARK(ReorderAndQuantize)->BRISEL_ORDERS;
BENCHMARK_CAPTURE(Conversions, from_cascade, RealizationForm::cascade)->BRISEL_ORDERS;
BENCHMARK_CAPTURE(Conversions, from_parallel, RealizationForm::parallel)->BRISEL_ORDERS;
BENCHMARK_CAPTURE(Conversions, from_ratio, RealizationForm::ratio)->BRISEL_ORDERS;
BENCHMARK_CAPTURE(Conversions, from_lattice, RealizationForm::lattice)->BRISEL_ORDERS;
BENCHMARK_CAPTURE(Conversions, from_ladder_1, RealizationForm::ladder_1)->BRISEL_ORDERS;
BENCHMARK_CAPTURE(Conversions, from_ladder_2, RealizationForm::ladder_2)->BRISEL_ORDERS;

} // namespace brisel

BENCHMARK_MAIN();
