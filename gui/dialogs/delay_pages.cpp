#include "gui/dialogs/delay_pages.h"

#include "engine/core/design_state.h"
#include "engine/iir/allpass_delay.h"

#include <algorithm>

namespace brisel {

namespace {

constexpr int offered_sections = 4; // on the first equalizer page of a session

void show_method(QComboBox *box) {
  box->setCurrentIndex(std::min<int>(design_state.GroupDelayDesignMethod, code(DelayMethod::minimax)));
}

void store_method(const QComboBox *box) {
  design_state.GroupDelayDesignMethod = static_cast<std::uint8_t>(box->currentIndex());
}

} // namespace

cPhaseEQDialogImpl::cPhaseEQDialogImpl(QWidget *parent) : SequencePage(parent, "phase-equalizer") {
  setupUi(this);
  const bool first = design_state.delay_sections == 0 && design_state.delay_ripple == 0;
  const int shown_sections = first ? offered_sections : design_state.delay_sections;
  if (shown_sections > 0) pNumSections_Edit->setText(QString::number(shown_sections));
  if (design_state.delay_ripple > 0) pRipple_Edit->setText(shown(design_state.delay_ripple));
  show_method(pDesignMethod_Box);
  add_unit(pRipple_Edit, "samples");
  begin();
}

void cPhaseEQDialogImpl::read() {
  sections = whole_number_in(pNumSections_Edit, 1, max_delay_sections, true).value_or(0);
  ripple = 0;
  if (pRipple_Edit->text().trimmed().isEmpty()) {
    if (sections == 0) mark(pRipple_Edit, "a number of sections or a ripple is needed");
    return;
  }
  ripple = number_in(pRipple_Edit).value_or(1);
  if (!(ripple > 0)) mark(pRipple_Edit, "the ripple must be above zero");
}

void cPhaseEQDialogImpl::store() {
  design_state.delay_sections = static_cast<std::int16_t>(sections);
  design_state.delay_ripple = ripple;
  store_method(pDesignMethod_Box);
}

cArbGDOrderDialogImpl::cArbGDOrderDialogImpl(QWidget *parent) : SequencePage(parent, "group-delay-sections") {
  setupUi(this);
  if (design_state.delay_sections > 0) pNumSections_Edit->setText(QString::number(design_state.delay_sections));
  pNumSections_Edit->setPlaceholderText("as few as keep the ripple");
  show_method(pDesignMethod_Box);
  begin();
}

void cArbGDOrderDialogImpl::read() {
  sections = whole_number_in(pNumSections_Edit, 1, max_delay_sections, true).value_or(0);
}

void cArbGDOrderDialogImpl::store() {
  design_state.delay_sections = static_cast<std::int16_t>(sections);
  store_method(pDesignMethod_Box);
}

} // namespace brisel
