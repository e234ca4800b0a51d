#include "engine/core/system_analysis.h"

#include "engine/analysis/form_conversions.h"
#include "engine/core/design_driver.h"
#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/core/trace.h"
#include "engine/iir/design_iir_sections.h"
#include "engine/iir/form_notes.h"

#include <cstring>

namespace brisel {

namespace {

// The form that an input option is entered in, and the realization it is analysed in. A list of poles and zeros is
// realized as a cascade.
struct OptionRow {
  RealizationForm entered;
  RealizationForm realization;
};
constexpr std::array<OptionRow, 7> option_rows{{
    {RealizationForm::ratio, RealizationForm::ratio},
    {RealizationForm::nonlinear, RealizationForm::cascade}, // poles and zeros are no realization of their own
    {RealizationForm::cascade, RealizationForm::cascade},
    {RealizationForm::parallel, RealizationForm::parallel},
    {RealizationForm::ladder_1, RealizationForm::ladder_1},
    {RealizationForm::ladder_2, RealizationForm::ladder_2},
    {RealizationForm::lattice, RealizationForm::lattice},
}};

// Copies the entry into the form that it is. The entry of one option is all that is read.
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

double sample_rate(const SystemEntries &entries, InputOption option) {
  switch (option) {
  case InputOption::ratio:
    return entries.ratio.sample_rate;
  case InputOption::pole_zero:
    return entries.pole_zero.sample_rate;
  case InputOption::product:
    return entries.product.sample_rate;
  case InputOption::sum:
    return entries.sum.sample_rate;
  case InputOption::ladder_1:
    return entries.ladder_1.sample_rate;
  case InputOption::ladder_2:
    return entries.ladder_2.sample_rate;
  case InputOption::lattice:
    return entries.lattice.sample_rate;
  default:
    return entries.fir[static_cast<std::size_t>(code(option) - code(InputOption::symmetric_fir))].sample_rate;
  }
}

bool refuse(Message number) {
  post_message(number);
  return false;
}

// All forms of the entered system in `forms`.
bool derive_all(Domain domain, InputOption option, IirForms &forms) {
  const OptionRow &row = option_rows[static_cast<std::size_t>(code(option))];
  RealizationForm source = row.entered;
  const std::int8_t keep_gain = !design_record.selections.SDomainAnalysisMaximumGainOption;
  if (option == InputOption::pole_zero) {
    int dropped_delay = 0;
    if (!pole_zero_to_cascade(domain, forms.pole_zero, forms.cascade, dropped_delay))
      return refuse(Message::system_has_no_form);
    note_dropped_delay(dropped_delay);
    source = RealizationForm::cascade;
  }
  forms.cascade.keep_gain = forms.parallel.keep_gain = keep_gain;
  FormReport found{};
  if (!derive_forms(domain, source, forms, found)) return refuse(Message::system_has_no_form);
  forms.cascade.keep_gain = forms.parallel.keep_gain = keep_gain;
  if (domain == Domain::z) note_forms(found);
  return true;
}

} // namespace

bool SystemAnalysisConv() {
  trace(" entering SystemAnalysisConv\n");
  DesignRecord &r = design_record;
  const bool digital = r.selections.DesignOrAnalysisType == code(DesignMethod::z_analysis);
  const InputOption option{digital ? r.selections.z_input_option : r.selections.s_input_option};
  if (digital && is_fir_option(code(option))) {
    const FirEntry &entered = z_entries.fir[static_cast<std::size_t>(code(option) - code(InputOption::symmetric_fir))];
    std::memcpy(&r.fir_designed, &entered, sizeof entered);
    r.fir_designed.gain_option = static_cast<std::int8_t>(r.selections.GainOption);
    return entered.length >= 1 || refuse(Message::system_has_no_form);
  }
  const ZTransform method{static_cast<std::int8_t>(r.selections.SDomainAnalysisRealizationMethod)};
  IirForms &forms = digital ? r.z : r.s_unnormalized;
  copy_entry(digital ? z_entries : s_entries, option, forms);
  if (!derive_all(digital ? Domain::z : Domain::s, option, forms)) return false;
  r.realization = code(option_rows[static_cast<std::size_t>(code(option))].realization);
  if (digital) return true;
  if (method == ZTransform::s_domain_only) {
    r.realization = code(RealizationForm::nonlinear);
    return true;
  }
  return digitize_analog(method, AcceptPoles::anywhere);
}

double entered_sample_rate() {
  const bool digital = design_state.DesignOrAnalysisType == code(DesignMethod::z_analysis);
  const InputOption option{digital ? design_state.z_input_option : design_state.s_input_option};
  return sample_rate(digital ? z_entries : s_entries, option);
}

void analyze_system() {
  const double rate = entered_sample_rate();
  if (!(rate > 0)) return post_message(Message::system_has_no_form);
  run_with_progress([&] {
    begin_record(rate);
    design_record.valid = SystemAnalysisConv();
    filter_dsgn_quan();
  });
}

} // namespace brisel
