#include "gui/dialogs/cPlotDataOutputDialogImpl.h"

#include "gui/dialogs/help.h"

namespace brisel {

cPlotDataOutputDialogImpl::cPlotDataOutputDialogImpl(QWidget *parent) : QDialog(parent) {
  setupUi(this);
  offer_help("plot-data-files", this);
  boxes = {pGroupDelay_Box, pImpulse_Box, pLogMagnitude_Box, pMagnitude_Box, pPhase_Box, pStep_Box};
  for (QCheckBox *box : boxes) box->setChecked(true);
}

bool cPlotDataOutputDialogImpl::is_checked(std::size_t file) const {
  return boxes[file]->isChecked();
}

} // namespace brisel
