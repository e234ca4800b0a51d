#include "gui/dialogs/cSelectPlotsDialogImpl.h"

#include "gui/dialogs/help.h"
#include "gui/main_window/brisel_app.h"

namespace brisel {

std::array<QCheckBox *, 7> cSelectPlotsDialogImpl::boxes() const {
  return {pMagnitude_Box, pLogMagnitude_Box, pPhase_Box, pGroupDelay_Box, pImpulse_Box, pStep_Box, pPoleZero_Box};
}

cSelectPlotsDialogImpl::cSelectPlotsDialogImpl(cBriselApp *window, const QString &caption) : QDialog(window) {
  setupUi(this);
  offer_help("plot-selection", this);
  if (!caption.isEmpty()) setWindowTitle(caption);
  QPixmap swatch(10, 10);
  swatch.fill(window->style_of_plots().function.color());
  const auto all = boxes();
  for (std::size_t kind = 0; kind < all.size(); kind++) {
    all[kind]->setChecked(plot_selection()[kind]);
    all[kind]->setIcon(swatch);
  }
}

std::uint8_t cSelectPlotsDialogImpl::mask() const {
  unsigned bits = 0;
  const auto all = boxes();
  for (std::size_t kind = 0; kind < all.size(); kind++) bits |= static_cast<unsigned>(all[kind]->isChecked()) << kind;
  return static_cast<std::uint8_t>(bits);
}

} // namespace brisel
