#include "gui/dialogs/design_dialogs.h"

#include "engine/core/design_state.h"

#include <array>

namespace brisel {

namespace {

// Filter types in the order of the dialogs.
constexpr std::array fir_types{
    FilterType::low_pass,      FilterType::high_pass,           FilterType::band_pass,
    FilterType::band_stop,     FilterType::differentiator,      FilterType::multiband,
    FilterType::hilbert,       FilterType::arbitrary_magnitude, FilterType::half_band,
    FilterType::raised_cosine, FilterType::root_raised_cosine,
};
constexpr std::array iir_types{
    FilterType::low_pass,
    FilterType::high_pass,
    FilterType::band_pass,
    FilterType::band_stop,
    FilterType::arbitrary_group_delay,
};

template <std::size_t count> int position(const std::array<FilterType, count> &types, int type) {
  for (std::size_t i = 0; i < count; i++)
    if (code(types[i]) == type) return static_cast<int>(i);
  return 0;
}

QRadioButton *button(const QDialog &dialog, const char *name, int index) {
  return dialog.findChild<QRadioButton *>(QString("p%1%2_Button").arg(name).arg(index));
}

} // namespace

void choose_button(const QDialog &dialog, const char *name, int index) {
  QRadioButton *chosen = button(dialog, name, index);
  (chosen ? chosen : button(dialog, name, 0))->setChecked(true);
}

int chosen_button(const QDialog &dialog, const char *name) {
  for (int i = 0; const QRadioButton *candidate = button(dialog, name, i); i++)
    if (candidate->isChecked()) return i;
  return 0;
}

cFirDesignDialogImpl::cFirDesignDialogImpl(QWidget *parent) : SequencePage(parent, "fir-design") {
  setupUi(this);
  choose_button(*this, "Type", position(fir_types, design_state.filter_type));
  choose_button(*this, "Mode", design_state.FrequencyMode != 0);
  choose_button(*this, "Compensation", design_state.CompensationOption != 0);
  choose_button(*this, "Gain", design_state.gain_specification_mode);
  choose_button(*this, "Phase", design_state.MinimumPhaseType);
  begin();
}

void cFirDesignDialogImpl::store() {
  design_state.filter_type = code(fir_types[static_cast<std::size_t>(chosen_button(*this, "Type"))]);
  design_state.FrequencyMode = static_cast<std::uint8_t>(chosen_button(*this, "Mode"));
  design_state.CompensationOption = static_cast<std::uint8_t>(chosen_button(*this, "Compensation"));
  design_state.gain_specification_mode = static_cast<std::uint8_t>(chosen_button(*this, "Gain"));
  design_state.MinimumPhaseType = static_cast<std::uint8_t>(chosen_button(*this, "Phase"));
}

cIirDesignDialogImpl::cIirDesignDialogImpl(QWidget *parent) : SequencePage(parent, "iir-design") {
  setupUi(this);
  choose_button(*this, "Method", design_state.ZTransformMethod);
  choose_button(*this, "Realization", design_state.RealizationType);
  choose_button(*this, "Path", design_state.ImpulseInvariantDesignPath != 0);
  choose_button(*this, "Type", position(iir_types, design_state.filter_type));
  choose_button(*this, "Mode", design_state.FrequencyMode != 0);
  choose_button(*this, "Equalization", design_state.PhaseEqualizationOption != 0);
  choose_button(*this, "Compensation", design_state.CompensationOption != 0);
  begin();
}

// The path concerns one method only, and a group delay filter is all-pass: it compensates nothing and needs no
// equalizer.
void cIirDesignDialogImpl::read() {
  const bool impulse_invariant = chosen_button(*this, "Method") == code(ZTransform::impulse_invariant);
  pPath0_Button->setEnabled(impulse_invariant);
  pPath1_Button->setEnabled(impulse_invariant);
  const bool group_delay =
      iir_types[static_cast<std::size_t>(chosen_button(*this, "Type"))] == FilterType::arbitrary_group_delay;
  for (QRadioButton *choice :
       {pEqualization0_Button, pEqualization1_Button, pCompensation0_Button, pCompensation1_Button})
    choice->setEnabled(!group_delay);
}

void cIirDesignDialogImpl::store() {
  design_state.ZTransformMethod = static_cast<std::int8_t>(chosen_button(*this, "Method"));
  design_state.RealizationType = static_cast<std::int8_t>(chosen_button(*this, "Realization"));
  design_state.ImpulseInvariantDesignPath = static_cast<std::uint8_t>(chosen_button(*this, "Path"));
  design_state.filter_type = code(iir_types[static_cast<std::size_t>(chosen_button(*this, "Type"))]);
  design_state.FrequencyMode = static_cast<std::uint8_t>(chosen_button(*this, "Mode"));
  design_state.PhaseEqualizationOption = static_cast<std::uint8_t>(chosen_button(*this, "Equalization"));
  design_state.CompensationOption = pCompensation1_Button->isEnabled() && pCompensation1_Button->isChecked();
}

} // namespace brisel
