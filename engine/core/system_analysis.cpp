#include "engine/core/system_analysis.h"

#include "engine/analysis/fir_lattice.h"
#include "engine/analysis/fir_response.h"
#include "engine/analysis/form_digits.h"
#include "engine/core/design_driver.h"
#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/core/trace.h"
#include "engine/files/system_check.h"
#include "engine/files/text_file.h"
#include "engine/fir/peak_gain.h"
#include "engine/fir/unfold.h"
#include "engine/iir/cascade_gain.h"
#include "engine/iir/design_iir_sections.h"
#include "engine/iir/form_notes.h"
#include "engine/iir/pole_grid.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace brisel {

void copy_entry(const SystemEntries &entries, InputOption option, IirForms &forms) {
  switch (option) {
  case InputOption::ratio:
    forms.ratio = entries.ratio;
    break;
  case InputOption::pole_zero:
    forms.pole_zero = entries.pole_zero;
    break;
  case InputOption::product:
    forms.cascade = entries.product;
    break;
  case InputOption::sum:
    forms.parallel = entries.sum;
    break;
  case InputOption::ladder_1:
    forms.ladder_1 = entries.ladder_1;
    break;
  case InputOption::ladder_2:
    forms.ladder_2 = entries.ladder_2;
    break;
  default:
    forms.lattice = entries.lattice;
    break;
  }
}

namespace {

bool refuse(Message number, std::string_view detail = {}) {
  post_message(number, detail);
  return false;
}

struct Selected {
  Domain domain;
  InputOption option;
  SystemEntry entry;
};
Selected selected_system(const DesignState &selections) {
  const bool digital = selections.DesignOrAnalysisType == code(DesignMethod::z_analysis);
  const InputOption option{digital ? selections.z_input_option : selections.s_input_option};
  return {digital ? Domain::z : Domain::s, option, system_entry(digital ? z_entries : s_entries, option)};
}

double sample_rate(SystemEntry entry) {
  return std::visit([](const auto *system) { return system->sample_rate; }, entry);
}

std::string complaint_text(const SystemComplaint &complaint) {
  switch (complaint.part) {
  case SystemPart::sampling_frequency:
    return "the sampling frequency " + complaint.reason;
  case SystemPart::gain:
    return "the gain " + complaint.reason;
  default:
    return complaint.reason;
  }
}

// Gain of an entered FIR system with a largest magnitude of 1 and its own sign; `work` receives its taps.
double unity_gain(const FirEntry &entered, FirEntry &work) {
  fir_entry_unfold(entered, work);
  std::vector<double> taps(work.coeff.begin(), work.coeff.begin() + work.length);
  if (entered.fir_type == code(FirSymmetry::lattice)) taps = lattice_fir_taps(taps);
  std::vector<double> points(gain_grid_points);
  const FrequencyGrid grid = linear_grid(0, two_pi / 2, two_pi, points);
  std::vector<std::complex<double>> sums(points.size());
  centred_response(taps, grid, sums);
  double peak = 0;
  for (const auto &value : sums) peak = std::max(peak, std::abs(value));
  if (const double found = peak_gain(taps); found > noticeable_miss * peak) peak = found;
  return std::copysign(peak > 0 ? 1 / peak : 1, entered.gain);
}

void scale_all(IirForms &forms, double factor) {
  forms.parallel.pars *= factor;
  for (double *gain : {&forms.cascade.gain, &forms.pole_zero.gain, &forms.ratio.gain, &forms.lattice.gain,
                       &forms.ladder_1.gain, &forms.ladder_2.gain})
    *gain *= factor;
}

// What the bilinear map of an analog system is to keep; a prewarp frequency is right by now.
Prewarp chosen_prewarp() {
  const DesignState &chosen = design_record.selections;
  if (chosen.PrewarpOption) return {.every_root = true};
  return {.frequency = chosen.prewarp_frequency};
}

bool derive_entered(Domain domain, InputOption option, IirForms &forms, FormReport &found) {
  if (option == InputOption::pole_zero) return derive_forms_of_pole_zero(domain, forms, found);
  return derive_forms(domain, *form_of_option(option), forms, found);
}

// All forms of the entered system in `forms`.
bool derive_all(Domain domain, InputOption option, IirForms &forms) {
  const std::int8_t keep_gain = !design_record.selections.SDomainAnalysisMaximumGainOption;
  FormReport found{};
  if (!derive_entered(domain, option, forms, found)) return refuse(Message::system_has_no_form);
  forms.cascade.keep_gain = forms.parallel.keep_gain = keep_gain;
  if (domain == Domain::z) note_forms(found, form_of_option(option).value_or(RealizationForm::cascade));
  return true;
}

// A list of poles and zeros is no realization of its own and runs as a cascade; nor is an analog lattice or ladder,
// whose structure no map to the z domain keeps.
RealizationForm realization_of(Domain domain, InputOption option) {
  const RealizationForm form = form_of_option(option).value_or(RealizationForm::cascade);
  const bool kept = domain == Domain::z || form == RealizationForm::ratio || form == RealizationForm::parallel;
  return kept ? form : RealizationForm::cascade;
}

} // namespace

bool SystemAnalysisConv() {
  trace(" entering SystemAnalysisConv\n");
  reopen_system_files();
  DesignRecord &r = design_record;
  const auto [domain, option, system] = selected_system(r.selections);
  const bool digital = domain == Domain::z;
  if (const auto complaint = check_system(domain, option, system))
    return refuse(Message::system_has_no_form, complaint_text(*complaint));
  if (digital && is_fir_option(code(option))) {
    const FirEntry &entered = z_entries.fir[static_cast<std::size_t>(code(option) - code(InputOption::symmetric_fir))];
    std::memcpy(&r.fir_designed, &entered, sizeof entered);
    r.fir_designed.gain_option = static_cast<std::int8_t>(r.selections.GainOption);
    if (r.selections.SDomainAnalysisMaximumGainOption) r.fir_designed.gain = unity_gain(entered, r.fir);
    return true;
  }
  const ZTransform method{static_cast<std::int8_t>(r.selections.SDomainAnalysisRealizationMethod)};
  const bool bilinear = !digital && method == ZTransform::bilinear;
  if (bilinear && !can_prewarp(chosen_prewarp().frequency, sample_rate(system)))
    return refuse(Message::prewarp_impossible);
  IirForms &forms = digital ? r.z : r.s_unnormalized;
  copy_entry(digital ? z_entries : s_entries, option, forms);
  if (!derive_all(domain, option, forms)) return false;
  r.realization = code(realization_of(domain, option));
  if (digital) return true;
  if (method == ZTransform::s_domain_only) {
    r.realization = code(RealizationForm::nonlinear);
    if (r.selections.SDomainAnalysisMaximumGainOption) scale_all(forms, 1 / analog_peak(forms.cascade));
    return true;
  }
  return digitize_analog(method, AcceptPoles::anywhere, chosen_prewarp());
}

double entered_sample_rate() {
  return sample_rate(selected_system(design_state).entry);
}

double highest_root_frequency(InputOption option, const SystemEntries &entries) {
  PoleZeroEntry found{};
  bool rooted = true;
  switch (option) {
  case InputOption::ratio:
    rooted = ratio_to_pole_zero(Domain::s, entries.ratio, found);
    break;
  case InputOption::product:
    rooted = cascade_to_pole_zero(Domain::s, entries.product, found);
    break;
  case InputOption::sum:
    rooted = parallel_to_pole_zero(Domain::s, entries.sum, found);
    break;
  default:
    found = entries.pole_zero;
  }
  if (!rooted) return 0;
  double highest = 0;
  for (int i = 0; i < found.real_zeros + found.complex_zeros; i++)
    highest = std::max(highest, std::abs(found.zeros[i]));
  for (int i = 0; i < found.real_poles + found.complex_poles; i++)
    highest = std::max(highest, std::abs(found.poles[i]));
  return highest;
}

void analyze_system(const std::string &note) {
  const double rate = entered_sample_rate();
  if (!(rate > 0)) return refuse_run(Message::system_has_no_form);
  run_with_progress([&] {
    begin_record(rate);
    if (!note.empty()) design_notes.push_back(note);
    design_record.valid = SystemAnalysisConv();
    filter_dsgn_quan();
  });
}

} // namespace brisel
