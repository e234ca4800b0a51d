#include "gui/dialogs/option_dialogs.h"

#include "engine/core/design_state.h"
#include "engine/core/trace.h"
#include "engine/iir/iir_quantize.h"
#include "gui/dialogs/design_dialogs.h"

#include <algorithm>

namespace brisel {

namespace {

constexpr int shortest_number = 14; // first item of the length box
constexpr int longest_name = 80;    // stands in one line of the setup file

} // namespace

cQuantizationDialogImpl::cQuantizationDialogImpl(QWidget *parent) : SequencePage(parent, "quantization") {
  setupUi(this);
  const QuantizationSettings &q = quantization_settings;
  choose_button(*this, "Switch", q.quant ? 0 : 1);
  choose_button(*this, "Type", q.qtype ? 1 : 0);
  pNumBits_Edit->setText(QString::number(q.ibit));
  searches = std::clamp(q.op_num, 1, max_searches);
  pNumOpts_Edit->setText(QString::number(searches));
  choose_button(*this, "Optimize", q.optimize ? 0 : 1);
  choose_button(*this, "Cascade", q.rtype1);
  pParallel_Button->setChecked(true);
  choose_button(*this, "Scaling", design_state.GainOption);
  begin(longest_whole_number);
}

void cQuantizationDialogImpl::read() {
  const bool fixed_type = chosen_button(*this, "Type") == 1;
  const int most_bits = fixed_type ? max_fixed_bits : max_quantized_bits;
  bits = whole_number_in(pNumBits_Edit, min_quantized_bits, most_bits).value_or(0);
  const bool fixed = fixed_type && chosen_button(*this, "Switch") == 0;
  const bool searches_count = fixed && chosen_button(*this, "Optimize") == 0;
  for (QWidget *widget : std::initializer_list<QWidget *>{pOptimize0_Button, pOptimize1_Button})
    widget->setEnabled(fixed);
  pNumOpts_Edit->setEnabled(searches_count);
  if (searches_count) searches = whole_number_in(pNumOpts_Edit, 1, max_searches).value_or(searches);
  pCascade2_Button->setEnabled(!fixed);
  pCascade3_Button->setEnabled(!fixed);
  const int chosen = chosen_button(*this, "Cascade");
  if (fixed && is_floating_only(SectionStructure{static_cast<std::int8_t>(chosen)})) {
    findChild<QRadioButton *>(QString("pCascade%1_Button").arg(chosen))->setEnabled(true);
    mark(findChild<QRadioButton *>(QString("pCascade%1_Button").arg(chosen)),
         "The chosen structure of cascaded sections exists in floating point only.");
  }
}

void cQuantizationDialogImpl::store() {
  QuantizationSettings &q = quantization_settings;
  q.quant = chosen_button(*this, "Switch") == 0;
  q.qtype = chosen_button(*this, "Type") == 1;
  q.ibit = bits;
  q.optimize = chosen_button(*this, "Optimize") == 0;
  q.op_num = searches;
  set_realization_codes(q, chosen_button(*this, "Cascade"));
  design_state.GainOption = static_cast<std::uint8_t>(chosen_button(*this, "Scaling"));
}

cSystemSettingsDialogImpl::cSystemSettingsDialogImpl(QWidget *parent, ExitMode &mode)
    : SequencePage(parent, "system-settings"), exit_mode(mode) {
  setupUi(this);
  choose_button(*this, "Debug", trace_on);
  choose_button(*this, "Exit", static_cast<int>(exit_mode));
  pView_Box->setChecked(design_state.fview != 0);
  pLengthIIR_Box->setCurrentIndex(design_state.fleng - shortest_number);
  begin();
}

void cSystemSettingsDialogImpl::store() {
  trace_on = static_cast<std::uint8_t>(chosen_button(*this, "Debug"));
  exit_mode = ExitMode{chosen_button(*this, "Exit")};
  design_state.fview = pView_Box->isChecked();
  design_state.fleng = static_cast<std::int8_t>(shortest_number + pLengthIIR_Box->currentIndex());
}

cUserInfoDialogImpl::cUserInfoDialogImpl(QWidget *parent) : SequencePage(parent, "user-information") {
  setupUi(this);
  for (QLineEdit *edit : {pUser_Edit, pCompany_Edit}) {
    edit->setMaxLength(longest_name);
    connect(pDefault_Button, &QPushButton::clicked, edit, &QLineEdit::clear);
  }
  pUser_Edit->setText(QString::fromStdString(workplace_names.user_name));
  pCompany_Edit->setText(QString::fromStdString(workplace_names.co_name));
  begin(nullptr);
}

void cUserInfoDialogImpl::store() {
  workplace_names.user_name = pUser_Edit->text().trimmed().toStdString();
  workplace_names.co_name = pCompany_Edit->text().trimmed().toStdString();
}

} // namespace brisel
