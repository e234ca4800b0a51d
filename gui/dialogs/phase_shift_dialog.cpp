#include "gui/dialogs/phase_shift_dialog.h"

#include "engine/core/design_state.h"

#include <QLineEdit>

namespace brisel {

namespace {

// An audio filter at a sampling frequency of 8000 in the user's unit.
PhaseShiftSpec starting_values() {
  const double unit = design_state.unit_factor;
  return {8000 * unit, 1000 * unit, 2000 * unit, 90, 4};
}

QString text_of(const std::string &text) {
  return QString::fromStdString(text);
}

} // namespace

cPhaseShiftSpecDialogImpl::cPhaseShiftSpecDialogImpl(QWidget *parent)
    : SequencePage(parent, "phase-shift"),
      before(last_phase_shift.sampling_frequency > 0 ? last_phase_shift : starting_values()) {
  setupUi(this);
  pSampFreq_Edit->setText(shown_frequency(before.sampling_frequency));
  pFirstPassband_Edit->setText(shown_frequency(before.first_passband));
  pSecondPassband_Edit->setText(shown_frequency(before.second_passband));
  pPhaseShift_Edit->setText(shown(before.degrees));
  pRealZero_Edit->setText(shown(before.real_zero));
  for (QLineEdit *edit : {pSampFreq_Edit, pFirstPassband_Edit, pSecondPassband_Edit}) add_unit(edit, frequency_unit());
  add_unit(pPhaseShift_Edit, "degrees");
  add_unit(pRealZero_Edit, {});
  pResult_Label->setTextFormat(Qt::PlainText);
  pResult_Label->setWordWrap(true);
  pResult_Label->setMinimumHeight(3 * pResult_Label->fontMetrics().lineSpacing());
  begin();
}

void cPhaseShiftSpecDialogImpl::read() {
  typed = before;
  pResult_Label->clear();
  const auto read_frequency = [&](QLineEdit *edit, double &place) {
    const auto value = number_in(edit);
    if (value && edit->text() != shown_frequency(place)) place = *value * design_state.unit_factor;
  };
  const auto read_number = [&](QLineEdit *edit, double &place) {
    const auto value = number_in(edit);
    if (value && edit->text() != shown(place)) place = *value;
  };
  read_frequency(pSampFreq_Edit, typed.sampling_frequency);
  read_frequency(pFirstPassband_Edit, typed.first_passband);
  read_frequency(pSecondPassband_Edit, typed.second_passband);
  read_number(pPhaseShift_Edit, typed.degrees);
  read_number(pRealZero_Edit, typed.real_zero);
  if (!is_right()) return;
  if (const std::string zeros = working_zeros_text(typed); !zeros.empty())
    pResult_Label->setText(QString("Real zero values that work: %1; %2 is in their middle")
                               .arg(text_of(zeros))
                               .arg(middle_zero(typed).value_or(0), 0, 'g', 12));
  const auto outcome = design_phase_shift(typed);
  if (const auto *filter = std::get_if<PhaseShiftFilter>(&outcome)) {
    const QString within = QString("\nThe phase is within %1 degrees of the shift ").arg(phase_band_tolerance);
    pResult_Label->setText(pResult_Label->text() + within + text_of(phase_shift_bands_text(typed, *filter)));
    return;
  }
  const auto &complaint = std::get<PhaseShiftComplaint>(outcome);
  // In the order of PhaseShiftField.
  QLineEdit *const fields[] = {pSampFreq_Edit, pFirstPassband_Edit, pSecondPassband_Edit, pPhaseShift_Edit,
                               pRealZero_Edit};
  mark(fields[static_cast<std::size_t>(complaint.field)], text_of(complaint.reason));
}

} // namespace brisel
