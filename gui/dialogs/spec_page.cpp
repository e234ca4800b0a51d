#include "gui/dialogs/spec_page.h"

#include "engine/core/design_state.h"

#include <QLineEdit>

namespace brisel {

namespace {

bool is_frequency(FieldUnit unit) {
  return unit == FieldUnit::frequency;
}

QString text_of(const SpecRow &row, const FilterSpec &spec) {
  const double value = spec_value(spec, row.field, row.index);
  return is_frequency(row.unit) ? shown_frequency(value) : shown(value);
}

} // namespace

FilterSpec starting_spec(int type, double unit_factor) {
  FilterSpec s{};
  s.type = type;
  s.sampling_frequency = 8000;
  s.passband_ripple = 0.5;
  s.stopband_ripple = 60;
  s.slope = 1;
  switch (FilterType{static_cast<std::int8_t>(type)}) {
  case FilterType::low_pass:
    s.passband_edge = {1000};
    s.stopband_edge = {1500};
    break;
  case FilterType::high_pass:
    s.passband_edge = {1500};
    s.stopband_edge = {1000};
    break;
  case FilterType::band_pass:
    s.passband_edge = {1000, 1500};
    s.stopband_edge = {700, 1900};
    break;
  case FilterType::band_stop:
    s.passband_edge = {700, 1900};
    s.stopband_edge = {1000, 1500};
    break;
  case FilterType::differentiator:
    s.passband_edge = {0, 3600};
    s.passband_ripple = 1;
    break;
  case FilterType::hilbert:
    s.passband_edge = {400, 3600};
    s.passband_ripple = 1;
    break;
  case FilterType::multiband:
    s.band_count = 3;
    s.band_lower = {0, 1200, 2600};
    s.band_upper = {800, 2200, 4000};
    s.band_value = {1, 0, 1};
    s.band_ripple = {0.01, 0.001, 0.01};
    break;
  case FilterType::arbitrary_magnitude:
    s.band_count = 2;
    s.band_lower = {0, 2000};
    s.band_upper = {1500, 4000};
    s.band_value = {1, 0};
    s.band_ripple = {0.01, 0.001};
    s.fixed_gain.fill(1);
    break;
  case FilterType::arbitrary_group_delay:
    s.band_count = 2;
    s.passband_ripple = 0.1;
    s.function_frequency = {0, 2000};
    s.function_value = {1, 1};
    break;
  case FilterType::half_band:
    s.passband_edge = {1600};
    break;
  case FilterType::raised_cosine:
  case FilterType::root_raised_cosine:
    s.symbol_rate = 2000;
    s.rolloff = 0.5;
    s.stopband_ripple = 40;
    break;
  }
  s.sampling_frequency *= unit_factor;
  s.symbol_rate *= unit_factor;
  for (auto *edges : {&s.passband_edge, &s.stopband_edge})
    for (double &f : *edges) f *= unit_factor;
  for (auto *edges : {&s.band_lower, &s.band_upper})
    for (double &f : *edges) f *= unit_factor;
  for (double &f : s.function_frequency) f *= unit_factor;
  return s;
}

SpecPage::SpecPage(QWidget *parent, const char *help_page, bool whole) : SequencePage(parent, help_page), whole(whole) {
  before = *current_spec;
  if (before.sampling_frequency == 0) {
    before = starting_spec(before.type, design_state.unit_factor);
    before.window_type = current_spec->window_type; // belongs to the method
    before.length = current_spec->length;
    before.split_transition = current_spec->split_transition;
  }
  before.unit = design_state.FrequencyMode;
  typed = before;
}

void SpecPage::bind(std::vector<SpecRow> bound, bool with_units) {
  rows = std::move(bound);
  for (const SpecRow &row : rows) {
    row.edit->setText(text_of(row, typed));
    if (with_units && is_frequency(row.unit)) add_unit(row.edit, frequency_unit());
  }
}

void SpecPage::read() {
  typed = before;
  read_more(typed);
  for (const SpecRow &row : rows) {
    if (!row.edit->isEnabled() || row.edit->text() == text_of(row, before)) continue;
    if (const auto value = number_in(row.edit))
      spec_value(typed, row.field, row.index) = *value * (is_frequency(row.unit) ? design_state.unit_factor : 1);
  }
  if (!is_right()) return;
  settle_edges(typed);
  const bool raised_cosine =
      typed.type == code(FilterType::raised_cosine) || typed.type == code(FilterType::root_raised_cosine);
  const bool same = typed.symbol_rate == before.symbol_rate && typed.rolloff == before.rolloff;
  // The edges of a file that was not changed keep their last digit.
  if (raised_cosine && (!same || typed.stopband_edge[0] == 0)) derive_raised_cosine_edges(typed);
  const auto complaint = check_spec(typed);
  if (!complaint) return;
  QWidget *field = widget_of(*complaint);
  for (const SpecRow &row : rows)
    if (row.field == complaint->field && row.index == complaint->index) field = row.edit;
  if (!field && !whole) return; // the next page asks for it
  mark(field ? field : rows.front().edit, QString::fromStdString(complaint->reason));
}

void SpecPage::store() {
  *current_spec = typed;
}

} // namespace brisel
