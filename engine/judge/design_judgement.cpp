#include "engine/judge/design_judgement.h"

#include "engine/analysis/fir_lattice.h"
#include "engine/analysis/plot_arrays.h"
#include "engine/core/design_state.h"
#include "engine/fir/run_selections.h"

namespace brisel {

namespace {

bool is_design() {
  return design_record.selections.DesignOrAnalysisType <= code(DesignMethod::least_squares);
}

Goals goals_of_design() {
  const DesignRecord &r = design_record;
  Goals goals = goals_of(r.spec, selected_compensation().value_or(Compensation{}));
  const bool group_delay = r.spec.type == code(FilterType::arbitrary_group_delay);
  if (r.delay.sections > 0 && !group_delay) goals.goals.push_back(equalizer_goal(r.spec, r.delay.asked));
  return goals;
}

JudgedFilter judged(const FirEntry &entry) {
  const std::span<const double> coefficients(entry.coeff.data(), static_cast<std::size_t>(entry.length));
  if (entry.fir_type == code(FirSymmetry::lattice)) return judged_fir(lattice_fir_taps(coefficients), entry.gain);
  return judged_fir(coefficients, entry.gain);
}

JudgedFilter delivered() {
  const DesignRecord &r = design_record;
  return is_fir_result() ? judged(r.fir) : judged_iir(r.z_quantized, r.realization);
}

} // namespace

std::vector<Judgement> judge_design() {
  const DesignRecord &r = design_record;
  if (!is_design()) return {};
  const Goals goals = goals_of_design();
  const JudgedFilter last = delivered();
  if (!r.quantization.quant) return judge(goals, last);
  return judge(goals, is_fir_result() ? judged(r.fir_unquantized) : judged_iir(r.z, r.realization), &last);
}

std::optional<bool> design_meets() {
  return is_design() ? meets(goals_of_design(), delivered()) : std::nullopt;
}

GainRange delivered_gain_range() {
  const DesignRecord &r = design_record;
  const auto [low, high] = plot_state.frequency;
  if (r.realization == code(RealizationForm::nonlinear) && !is_fir_result())
    return gain_range(judged_analog(r.s_unnormalized, InputOption{r.selections.s_input_option}), {low, high});
  const double factor = plot_state.factor;
  GainRange range = gain_range(delivered(), {low * factor, high * factor});
  range.largest.worst_at /= factor;
  range.smallest.worst_at /= factor;
  return range;
}

} // namespace brisel
