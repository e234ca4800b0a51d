// fuzz_design.cpp - a whole design run of any type and method: it ends with a result whose numbers are all finite, or
// with a message that says why not.
#include "engine/analysis/form_conversions.h"
#include "engine/analysis/plot_arrays.h"
#include "engine/core/design_driver.h"
#include "engine/core/start_up.h"
#include "engine/files/coefficient_file.h"
#include "fuzz/check.h"
#include "fuzz/filled_record.h"
#include "fuzz/quiet_front_end.h"

using namespace brisel;

namespace {

class Answers : public QuietFrontEnd {
public:
  FilterSpec spec;
  DesignState chosen;
  int messages = 0;

  PageResult run_page(Page) override {
    *current_spec = spec;
    design_state.order = chosen.order;
    design_state.analog_type = chosen.analog_type;
    design_state.symmetry = chosen.symmetry;
    design_state.optimum = chosen.optimum;
    design_state.rolloff_db = chosen.rolloff_db;
    return PageResult::next;
  }
  void post_message(Message, std::string_view) override { messages++; }
};

constexpr int longest_filter = 120, highest_order = 16;

void fill_selections(ByteSource &in, Answers &answers) {
  design_state.filter_type = static_cast<std::int8_t>(in.below(filter_type_count));
  design_state.DesignOrAnalysisType = static_cast<std::int8_t>(in.below(5));
  fill_spec(in, design_state.filter_type, answers.spec);
  // The length is given, so that no input waits for thousands of taps.
  answers.spec.length = 1 + in.below(longest_filter);
  answers.spec.window_type = in.below(20);
  answers.chosen.order = static_cast<std::int16_t>(in.below(highest_order + 1));
  answers.chosen.analog_type = static_cast<std::int8_t>(in.below(5));
  answers.chosen.symmetry = in.byte() % 2;
  answers.chosen.optimum = in.byte() % 2;
  answers.chosen.rolloff_db = static_cast<std::int16_t>(rolloff_step * in.below(steepest_rolloff / rolloff_step + 1));
  design_state.ZTransformMethod = static_cast<std::int8_t>(in.below(3));
  design_state.ImpulseInvariantDesignPath = in.byte() % 2;
  design_state.RealizationType = static_cast<std::int8_t>(in.below(6));
  design_state.GainOption = in.byte() % 3;
  design_state.CompensationOption = in.byte() >= 200;
  design_state.CompensationType = in.byte() % 2;
  design_state.CompensationRateChange = in.byte() % 128;
  design_state.CompensationDifferentialDelay = in.byte() % 8;
  design_state.CompensationNumberOfStages = in.byte() % 8;
  design_state.MinimumPhaseType = in.byte() < 220 ? 0 : in.byte() % 3;
  quantization_settings.quant = in.byte() % 2;
  quantization_settings.qtype = in.byte() % 2;
  quantization_settings.ibit = 2 + in.below(quantization_settings.qtype ? 31 : 51);
  quantization_settings.rtype1 = in.below(4);
  plot_settings.nfpts = 2 + in.below(60);
  plot_settings.dnimp = 1 + in.below(60);
  plot_settings.PlotType0Linear1Log = in.byte() % 2;
  design_state.gain_specification_mode = in.byte() % 2;
  design_state.PhaseEqualizationOption = in.byte() >= 200;
  // The number of sections is given, so that no input waits for a search among all of them.
  design_state.delay_sections = 1 + in.below(4);
  design_state.delay_ripple = in.byte() % 2 ? in.fraction() * 10 : 0;
  design_state.GroupDelayDesignMethod = in.byte();
  workplace_settings.lpnorm = in.byte();
  quantization_settings.optimize = in.byte() >= 200;
  quantization_settings.op_num = in.below(3);
  quantization_settings.op_steps = in.below(20);
}

void check_result() {
  const DesignRecord &r = design_record;
  if (is_fir_result()) {
    const auto taps = static_cast<std::size_t>(r.fir.length);
    require(taps >= 1 && taps <= max_taps, "the number of taps");
    require(all_finite(std::span(r.fir.coeff).first(taps)) && std::isfinite(r.fir.gain), "finite taps");
    require(all_finite(std::span(r.fir_unquantized.coeff).first(taps)), "finite taps before quantization");
  } else {
    const SectionEntry &cascade = r.z_quantized.cascade;
    const auto count = static_cast<std::size_t>(cascade.section_count);
    require(count <= max_sections && std::isfinite(cascade.gain), "the cascade");
    for (std::size_t i = 0; i < count; i++)
      require(all_finite(cascade.numerators[i]) && all_finite(cascade.denominators[i]), "finite sections");
    require(form_exists(r.z_quantized, RealizationForm{r.realization}), "the realization asked for");
  }
  CoefficientFile image;
  if (image_of_design(image)) require(format_coefficient_file(image, 22).has_value(), "a file can hold the result");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  static Answers answers;
  static const bool started = [] {
    const SystemFile nowhere{SystemFile::Kind::null_device, {}};
    program_start({.read_setup = false, .files = {nowhere, nowhere}});
    return true;
  }();
  require(started, "the engine starts");
  set_start_values();
  design_record.design_counter = 0;
  answers.messages = 0;
  ByteSource in(data, size);
  fill_selections(in, answers);
  design_filter();
  if (design_record.valid)
    check_result();
  else
    require(answers.messages > 0, "a run without a result says why");
  return 0;
}
