#include "engine/iir/compensate_cascade.h"

#include "engine/analysis/form_conversions.h"
#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "engine/fir/run_selections.h"
#include "engine/iir/cascade_gain.h"
#include "engine/iir/cascade_tail.h"

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

constexpr double flat_droop = 0.1; // of what sections are asked for: none are needed

// Largest gain of a cascade in some bands, in dB, with the droop that a compensation undoes where one is given.
double peak_db(const SectionEntry &cascade, const std::vector<FrequencyBand> &bands, const Compensation &droop) {
  constexpr int steps = 4000;
  double peak = -HUGE_VAL;
  for (const FrequencyBand &band : bands) {
    Values z(steps + 1);
    const auto frequency = [&](int i) { // closer to the edges, where the extremes of a filter are
      const double rise = std::sin(std::numbers::pi / 2 * i / steps);
      return i == steps ? band.high : band.low + (band.high - band.low) * rise * rise;
    };
    for (int i = 0; i <= steps; i++) z[static_cast<std::size_t>(i)] = std::polar(1.0, frequency(i));
    const Values h = cascade_values(cascade, z);
    for (int i = 0; i <= steps; i++)
      peak = std::max(peak,
                      20 * std::log10(std::abs(h[static_cast<std::size_t>(i)])) - compensation_db(droop, frequency(i)));
  }
  return peak;
}

// Passband peak, and how far below it the stopband stays.
struct Levels {
  double peak, attenuation;
};
Levels levels_of(const SectionEntry &cascade, const FilterSpec &spec, const Compensation &droop) {
  const double peak = peak_db(cascade, passbands(spec), droop);
  return {peak, peak - peak_db(cascade, stopbands(spec), {})};
}

std::string curve_name(const Compensation &compensation) {
  return compensation.type == CompensationCurve::sinc
             ? "sin(x)/x"
             : formatf("comb (rate change %d, differential delay %d, stages %d)", compensation.rate_change,
                       compensation.differential_delay, compensation.stages);
}

} // namespace

double enough_compensation(double passband_ripple) {
  return std::min(std::max(0.1 * passband_ripple, 0.01), passband_ripple / 2);
}

std::optional<CompensationPlan> plan_compensation() {
  const FilterSpec &spec = design_record.spec;
  const auto compensation = selected_compensation();
  if (!compensation) return std::nullopt;
  CompensationPlan plan{*compensation};
  if (!is_active(*compensation)) return plan;
  for (const FrequencyBand &band : passbands(spec))
    if (const auto null = comb_null(*compensation, band.low, band.high)) {
      post_message(Message::compensation_null, "the comb has a null at " + in_users_unit(*null));
      return std::nullopt;
    }
  const DroopGoal goal{passbands(spec), [&](double w) { return compensation_db(*compensation, w); }};
  plan.droop_db = droop_range(goal);
  if (plan.droop_db < flat_droop * enough_compensation(spec.passband_ripple)) {
    plan.fit.residual_db = plan.droop_db;
    return plan;
  }
  const auto fit = fewest_droop_sections(goal, enough_compensation(spec.passband_ripple), max_compensation_sections);
  // More than the ripple that the filter may have, and plainly visible: not worth a design.
  if (!fit || fit->residual_db > std::max(spec.passband_ripple, 1.0)) {
    post_message(Message::iir_compensation_refused,
                 formatf("%d sections leave %.3g dB of a droop of %.3g dB in the passband", max_compensation_sections,
                         fit ? fit->residual_db : plan.droop_db, plan.droop_db));
    return std::nullopt;
  }
  plan.fit = *fit;
  return plan;
}

double ripple_beside(const CompensationPlan &plan, double passband_ripple) {
  const double left = passband_ripple - plan.fit.residual_db;
  return left > 0.1 * passband_ripple ? left : passband_ripple / 2;
}

bool compensate_cascade(const CompensationPlan &plan) {
  if (!is_active(plan.droop)) return true;
  DesignRecord &r = design_record;
  const FilterSpec &spec = r.spec;
  const SectionEntry &sections = plan.fit.sections;
  const double residual = plan.fit.residual_db;
  const bool one = sections.section_count == 1;
  r.compensation = {sections.section_count, plan.droop_db, residual};
  std::string note = "Compensation of " + curve_name(plan.droop) + ": ";
  if (sections.section_count == 0) {
    design_notes.push_back(note +
                           formatf("the droop is %.2g dB in the passband, which needs no sections.", plan.droop_db));
    return true;
  }
  if (section_room(r.z.cascade) < sections.section_count) {
    post_message(Message::iir_compensation_refused, no_room(r.z.cascade, sections.section_count, "compensation"));
    return false;
  }
  const double before = levels_of(r.z.cascade, spec, {}).attenuation;
  for (std::size_t i = 0; i < static_cast<std::size_t>(sections.section_count); i++)
    append_section(r.z.cascade, sections.numerators[i], sections.denominators[i]);
  compute_cas_gain(r.z.cascade);
  trace("\n Compensation: %d sections, droop %g dB, residual %g dB\n", sections.section_count, plan.droop_db, residual);

  const auto [peak, attenuation] = levels_of(r.z.cascade, spec, plan.droop);
  note += formatf("%d second-order section%s behind the filter leave%s %.3g dB of a droop of %.4g dB in the passband. "
                  "Filter and droop together have a largest passband gain of %.2f dB and a stopband attenuation of "
                  "%.2f dB; the filter without these sections has %.2f dB.",
                  sections.section_count, one ? "" : "s", one ? "s" : "", residual, plan.droop_db, peak, attenuation,
                  before);
  const double together = residual + ripple_beside(plan, spec.passband_ripple);
  if (together > spec.passband_ripple * (1 + 1e-9))
    note += formatf(" Filter and sections cannot keep the passband ripple asked for: together they have up to %.3g dB.",
                    together);
  const double enough = enough_compensation(spec.passband_ripple);
  if (residual > enough) note += formatf(" %.3g dB would be enough, but more sections come no closer.", enough);
  constexpr double shown = 0.005; // half of the last digit
  if (attenuation < spec.stopband_ripple - shown && attenuation < before)
    note += formatf(" Ask for %.2f dB more attenuation to have what was asked for.", before - attenuation);
  design_notes.push_back(note);
  return true;
}

} // namespace brisel
