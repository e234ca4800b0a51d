#include "gui/dialogs/microchip_dialog.h"

namespace brisel {

cMicrochipCodegenDialogImpl::cMicrochipCodegenDialogImpl(QWidget *parent) : SequencePage(parent, "dspic30") {
  setupUi(this);
  pSource0_Button->setChecked(true);
  pSpace0_Button->setChecked(true);
  pScript0_Button->setChecked(true);
  connect(pSimCWrapper_Box, &QCheckBox::toggled, this, &cMicrochipCodegenDialogImpl::SimCWrapperClicked);
  connect(pOctave_Box, &QCheckBox::toggled, this, &cMicrochipCodegenDialogImpl::OctaveClicked);
  SimCWrapperClicked();
  begin();
}

// The simulation includes the header, and the script plots what the simulation writes.
void cMicrochipCodegenDialogImpl::SimCWrapperClicked() {
  pCHeader_Box->setEnabled(!pSimCWrapper_Box->isChecked());
  if (pSimCWrapper_Box->isChecked()) pCHeader_Box->setChecked(true);
  pOctave_Box->setEnabled(pSimCWrapper_Box->isChecked());
  if (!pSimCWrapper_Box->isChecked()) pOctave_Box->setChecked(false);
  OctaveClicked();
}

void cMicrochipCodegenDialogImpl::OctaveClicked() {
  pScript0_Button->setEnabled(pOctave_Box->isChecked());
  pScript1_Button->setEnabled(pOctave_Box->isChecked());
}

DsPic30Options cMicrochipCodegenDialogImpl::options() const {
  DsPic30Options o;
  o.header = pCHeader_Box->isChecked();
  o.space = pSpace1_Button->isChecked() ? CoefficientSpace::program : CoefficientSpace::x_data;
  o.simulation = pSimCWrapper_Box->isChecked();
  if (pOctave_Box->isChecked()) o.script = pScript1_Button->isChecked() ? PlotScript::octave : PlotScript::matlab;
  return o;
}

} // namespace brisel
