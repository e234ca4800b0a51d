#include "engine/iir/delay_design.h"

#include "engine/core/front_end.h"
#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "engine/iir/allpass_delay.h"
#include "engine/iir/cascade_tail.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace brisel {

namespace {

constexpr int start_norm = 10; // of the least p-th method while none is set

// What a polynomial in z^-1 delays, in samples.
double triple_delay(const Triple &t, std::complex<double> x) {
  const std::complex<double> value = t[0] + x * (t[1] + x * t[2]);
  if (value == 0.0) return 0; // a zero on the circle turns the phase by half of what its neighbourhood is delayed
  return (x * (t[1] + 2.0 * x * t[2]) / value).real();
}

// Group delay of a cascade in samples.
double cascade_delay(const SectionEntry &cascade, double w) {
  const std::complex<double> x = std::polar(1.0, -w);
  double sum = 0;
  for (int i = 0; i < cascade.section_count; i++)
    sum += triple_delay(cascade.numerators[i], x) - triple_delay(cascade.denominators[i], x);
  return sum;
}

bool is_group_delay(const FilterSpec &spec) {
  return spec.type == code(FilterType::arbitrary_group_delay);
}

// The function points of a group delay specification, straight lines between them.
DelayGoal specified_delay(const FilterSpec &spec) {
  const auto count = static_cast<std::size_t>(spec.band_count);
  const std::vector<double> w(spec.function_frequency.begin(), spec.function_frequency.begin() + count),
      delay(spec.function_value.begin(), spec.function_value.begin() + count);
  return {{{w.front(), w.back()}}, w, [w, delay](double x) {
            const auto above = std::upper_bound(w.begin() + 1, w.end() - 1, x);
            const std::size_t i = static_cast<std::size_t>(above - w.begin());
            return delay[i - 1] + (delay[i] - delay[i - 1]) * (x - w[i - 1]) / (w[i] - w[i - 1]);
          }};
}

std::optional<DelayDesign> solve(const DelayGoal &goal, double ripple, int most) {
  const DesignState &chosen = design_record.selections;
  const DelayNorm norm{std::min<int>(chosen.GroupDelayDesignMethod, code(DelayMethod::minimax))};
  const int p = workplace_settings.lpnorm >= 2 ? std::min(workplace_settings.lpnorm, max_delay_norm) : start_norm;
  return chosen.delay_sections > 0 ? design_allpass_delay(goal, chosen.delay_sections, norm, p, go_on)
                                   : fewest_allpass_sections(goal, ripple, most, norm, p, go_on);
}

// Solves, appends and tells; `subject` begins the note.
bool append_solution(const DelayGoal &goal, double asked, Message failure, const char *subject) {
  DesignRecord &r = design_record;
  const int room = section_room(r.z.cascade);
  const int least = std::max<int>(r.selections.delay_sections, 1), most = std::min(room, max_delay_sections);
  if (room < least) {
    post_message(failure, no_room(r.z.cascade, least, "all-pass"));
    return false;
  }
  const auto found = solve(goal, asked, most);
  if (stop_asked) return false;
  if (!found) {
    post_message(failure, "no all-pass sections were found for this delay");
    return false;
  }
  const int count = static_cast<int>(found->sections.size());
  for (const AllpassSection &s : found->sections) append_section(r.z.cascade, {s.a2, s.a1, 1}, {1, s.a1, s.a2});
  r.delay = {count, asked, unequalized_ripple(goal), found->ripple, found->constant};
  trace("\n %s %d sections, delay ripple %g samples, constant %g\n", subject, count, found->ripple, found->constant);
  const auto samples = [](double value, int digits) {
    const std::string number = formatf("%.*g", digits, value);
    return number + (number == "1" ? " sample" : " samples");
  };
  std::string note = formatf("%s %d all-pass section%s, delay ripple %s, ", subject, count, count == 1 ? "" : "s",
                             samples(found->ripple, 4).c_str());
  note += is_group_delay(r.spec)
              ? samples(found->constant, 6) + " above the function points."
              : formatf("was %.4g without; ", r.delay.before) + samples(found->constant, 6) + " in the middle.";
  if (asked > 0 && found->ripple > asked)
    note += count < most ? " The ripple asked for is missed: more sections bring it closer."
                         : " The ripple asked for is missed, and there are no more sections.";
  design_notes.push_back(note);
  return true;
}

std::optional<std::string> sections_refusal(const DesignState &selections) {
  if (selections.delay_sections < 0 || selections.delay_sections > max_delay_sections)
    return formatf("%d sections are asked for, 1 to %d are possible", selections.delay_sections, max_delay_sections);
  return std::nullopt;
}

} // namespace

std::optional<std::string> equalizer_refusal(const DesignState &selections) {
  if (!std::isfinite(selections.delay_ripple) || selections.delay_ripple < 0)
    return "the delay ripple must be above zero";
  if (selections.delay_sections == 0 && selections.delay_ripple == 0)
    return "neither a number of sections nor a delay ripple is given";
  return sections_refusal(selections);
}

std::optional<std::string> group_delay_refusal(const FilterSpec &spec, const DesignState &selections) {
  if (spec.band_count < 2) return "a group delay needs two function points at least";
  return sections_refusal(selections);
}

bool equalize_phase() {
  DesignRecord &r = design_record;
  // A copy, because the sections are appended to what the goal is measured on.
  const DelayGoal goal{passbands(r.spec), {}, [filter = r.z.cascade](double w) { return -cascade_delay(filter, w); }};
  return append_solution(goal, r.selections.delay_ripple, Message::phase_equalizer_refused, "Phase equalizer:");
}

bool design_group_delay() {
  DesignRecord &r = design_record;
  for (IirForms *forms : {&r.s_normalized, &r.s_unnormalized, &r.z})
    std::memset(static_cast<void *>(forms), 0, sizeof *forms); // there is no prototype
  std::memset(static_cast<void *>(&r.z_normalized), 0, sizeof r.z_normalized);
  r.wp = 0;
  r.z.cascade.sample_rate = r.spec.sampling_frequency;
  r.z.cascade.gain = 1;
  r.z.cascade.pars = 1;
  trace("\n Group delay design\n");
  return append_solution(specified_delay(r.spec), r.spec.passband_ripple, Message::group_delay_refused, "Group delay:");
}

} // namespace brisel
