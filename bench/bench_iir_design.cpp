// bench_iir_design.cpp - cost of an IIR design against family and order: the analog half alone, and the whole stage
// from specification to all forms.
#include "engine/core/design_state.h"
#include "engine/core/trace.h"
#include "engine/iir/analog_prototype.h"
#include "engine/iir/band_transform.h"
#include "engine/iir/bilinear_map.h"
#include "engine/iir/design_iir_sections.h"
#include "tests/support/scripted_front_end.h"

#include <benchmark/benchmark.h>

namespace brisel {
namespace {

FilterSpec low_pass() {
  FilterSpec spec{};
  spec.type = code(FilterType::low_pass);
  spec.sampling_frequency = two_pi;
  spec.passband_edge = {0.6, 0};
  spec.stopband_edge = {0.8, 0};
  spec.passband_ripple = 0.5;
  spec.stopband_ripple = 60;
  return spec;
}

void prototype_to_sections(benchmark::State &state, AnalogPrototype family) {
  const FilterSpec spec = low_pass();
  SectionEntry normalized, analog, digital;
  for (auto _ : state) {
    const double wp = design_analog_prototype(family, spec, ZTransform::bilinear, state.range(0), normalized).wp;
    transform_analog_lowpass(normalized, analog, spec, ZTransform::bilinear, wp);
    bilinear_map(analog, digital);
    benchmark::DoNotOptimize(digital);
  }
}

void all_forms(benchmark::State &state, AnalogPrototype family, ZTransform method) {
  ScriptedFrontEnd front;
  choose_system_files({{SystemFile::Kind::null_device, {}}, {SystemFile::Kind::null_device, {}}});
  reopen_system_files();
  design_record.spec = low_pass();
  design_record.selections = {};
  design_record.selections.analog_type = code(family);
  design_record.selections.ZTransformMethod = code(method);
  design_record.selections.order = static_cast<std::int16_t>(state.range(0));
  for (auto _ : state) {
    design_notes.clear();
    if (!design_iir_sections()) state.SkipWithError("refused");
  }
  close_system_files();
}

#define BRISEL_FAMILY(family)                                                                                          \
  BENCHMARK_CAPTURE(prototype_to_sections, family, AnalogPrototype::family)->Arg(4)->Arg(20)->Arg(100);                \
  BENCHMARK_CAPTURE(all_forms, family, AnalogPrototype::family, ZTransform::bilinear)->Arg(4)->Arg(20)->Arg(100)
BRISEL_FAMILY(butterworth);
BRISEL_FAMILY(tschebyscheff);
BRISEL_FAMILY(inverse_tschebyscheff);
BRISEL_FAMILY(elliptic);
BRISEL_FAMILY(bessel);
BENCHMARK_CAPTURE(all_forms, matched_z, AnalogPrototype::elliptic, ZTransform::matched_z)->Arg(4)->Arg(20)->Arg(100);
BENCHMARK_CAPTURE(all_forms, impulse_invariant, AnalogPrototype::elliptic, ZTransform::impulse_invariant)
    ->Arg(4)
    ->Arg(20);

} // namespace
} // namespace brisel

BENCHMARK_MAIN();
