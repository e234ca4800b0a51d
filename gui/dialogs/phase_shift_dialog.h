// phase_shift_dialog.h - what a phase shift filter is to do.
#pragma once

#include "engine/core/phase_shift_design.h"
#include "gui/dialogs/sequence_page.h"
#include "ui_cPhaseShiftSpecDialog.h"

namespace brisel {

/// Begins with the filter that was designed last. Below the fields it says which real zeros there are to choose from,
/// and how wide the two bands come out.
class cPhaseShiftSpecDialogImpl : public SequencePage, private Ui::cPhaseShiftSpecDialog {
public:
  explicit cPhaseShiftSpecDialogImpl(QWidget *parent);

  /// Can be designed once the dialog was accepted.
  const PhaseShiftSpec &wanted() const { return typed; }

private:
  void read() override;
  void store() override {}

  PhaseShiftSpec before; // as the dialog opened: fields that were not touched keep all their digits
  PhaseShiftSpec typed;
};

} // namespace brisel
