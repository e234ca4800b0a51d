#include "gui/dialogs/data_dialogs.h"

#include "engine/core/design_state.h"
#include "gui/dialogs/design_dialogs.h"

namespace brisel {

namespace {
const char *const no_words = "The filter has no words: it is not quantized in fixed point, or a word is too short.";
}

cCossapFormatDialogImpl::cCossapFormatDialogImpl(QWidget *parent)
    : SequencePage(parent, "cocentric"), words(has_coefficient_words()) {
  setupUi(this);
  choose_button(*this, "Format", design_state.COSSAPDataFormat);
  pComments_Box->setChecked(design_state.COSSAPDataCommentSwitch != 0);
  begin();
}

void cCossapFormatDialogImpl::read() {
  if (pFormat0_Button->isChecked() && !words) mark(pFormat0_Button, no_words);
}

void cCossapFormatDialogImpl::store() {
  design_state.COSSAPDataFormat = static_cast<std::uint8_t>(chosen_button(*this, "Format"));
  design_state.COSSAPDataCommentSwitch = pComments_Box->isChecked();
}

cCreateCoefDataDialogImpl::cCreateCoefDataDialogImpl(QWidget *parent)
    : SequencePage(parent, "coefficient-dataset"), words(has_coefficient_words()) {
  setupUi(this);
  choose_button(*this, "Stage", static_cast<int>(chosen.stage));
  choose_button(*this, "Notation", static_cast<int>(chosen.notation));
  choose_button(*this, "Layout", static_cast<int>(chosen.layout));
  begin();
}

void cCreateCoefDataDialogImpl::read() {
  chosen = {CoefficientStage{chosen_button(*this, "Stage")}, NumberNotation{chosen_button(*this, "Notation")},
            DataLayout{chosen_button(*this, "Layout")}};
  if (chosen.notation == NumberNotation::decimal) return;
  QWidget *const choice = chosen.notation == NumberNotation::word ? pNotation1_Button : pNotation2_Button;
  if (!words) mark(choice, no_words);
  if (chosen.stage == CoefficientStage::unquantized) mark(choice, "Only the quantized coefficients are words.");
}

} // namespace brisel
