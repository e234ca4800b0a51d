#include "engine/analysis/form_digits.h"

#include "engine/analysis/pole_zero_form.h"
#include "engine/analysis/wide_ratio.h"

#include <algorithm>

namespace brisel {

namespace {

constexpr int dense_steps = 4096;

struct FormRow {
  RealizationForm form;
  InputOption option;
};
constexpr std::array form_rows{
    FormRow{RealizationForm::cascade, InputOption::product},
    FormRow{RealizationForm::parallel, InputOption::sum},
    FormRow{RealizationForm::ratio, InputOption::ratio},
    FormRow{RealizationForm::lattice, InputOption::lattice},
    FormRow{RealizationForm::ladder_1, InputOption::ladder_1},
    FormRow{RealizationForm::ladder_2, InputOption::ladder_2},
};

} // namespace

std::string digits_text(double digits) {
  const int whole = std::max(static_cast<int>(digits), 0);
  return std::to_string(whole) + (whole == 1 ? " digit" : " digits");
}

std::optional<InputOption> option_of_form(RealizationForm form) {
  const auto row = std::ranges::find(form_rows, form, &FormRow::form);
  return row == form_rows.end() ? std::nullopt : std::optional(row->option);
}

std::optional<RealizationForm> form_of_option(InputOption option) {
  const auto row = std::ranges::find(form_rows, option, &FormRow::option);
  return row == form_rows.end() ? std::nullopt : std::optional(row->form);
}

template <class Real> Values form_values(const FormOfSystem &system, Places x) {
  const IirForms &forms = *system.forms;
  switch (system.option) {
  case InputOption::ratio:
    return ratio_values<Real>(system.domain, forms.ratio, x);
  case InputOption::pole_zero:
    return pole_zero_values<Real>(forms.pole_zero, x);
  case InputOption::product:
    return cascade_values<Real>(forms.cascade, x);
  case InputOption::sum:
    return parallel_values<Real>(forms.parallel, x);
  case InputOption::ladder_1:
    return ladder_values<Real>(forms.ladder_1, x);
  case InputOption::ladder_2:
    return ladder_values<Real>(forms.ladder_2, x);
  default:
    return lattice_values<Real>(forms.lattice, x);
  }
}
template Values form_values<double>(const FormOfSystem &, Places);
template Values form_values<long double>(const FormOfSystem &, Places);

std::optional<PoleZeroEntry> roots_of(const FormOfSystem &system) {
  PoleZeroEntry roots{};
  const IirForms &forms = *system.forms;
  const auto of_expanded = [&](const std::optional<WideRatio> &wide) { return wide && write_pole_zero(*wide, roots); };
  bool found = true;
  switch (system.option) {
  case InputOption::pole_zero:
    roots = forms.pole_zero;
    break;
  case InputOption::product:
    found = cascade_to_pole_zero(system.domain, forms.cascade, roots);
    break;
  case InputOption::sum:
    found = parallel_to_pole_zero(system.domain, forms.parallel, roots);
    break;
  case InputOption::ratio:
    found = of_expanded(wide_ratio(system.domain, forms.ratio));
    break;
  case InputOption::lattice:
    found = of_expanded(wide_ratio(forms.lattice));
    break;
  default:
    found = of_expanded(wide_ratio(system.option == InputOption::ladder_1 ? forms.ladder_1 : forms.ladder_2));
  }
  return found ? std::optional(roots) : std::nullopt;
}

std::vector<std::complex<double>> poles_of(const FormOfSystem &system) {
  const auto roots = roots_of(system);
  if (!roots) return {};
  return {roots->poles.begin(), roots->poles.begin() + pole_count(*roots)};
}

Values dense_points(Domain domain, std::span<const std::complex<double>> poles) {
  return comparison_points(domain, poles, dense_steps);
}

double form_digits_kept(const FormOfSystem &source, const FormOfSystem &changed, int dropped_delay) {
  const Values x = dense_points(source.domain, poles_of(source));
  return digits_kept(x, form_values<long double>(source, x), form_values<double>(changed, x), -dropped_delay);
}

} // namespace brisel
