// microchip_dialog.h - what is generated for the dsPIC30.
#pragma once

#include "codegen/dspic30.h"
#include "gui/dialogs/sequence_page.h"
#include "ui_cMicrochipCodegenDialog.h"

namespace brisel {

class cMicrochipCodegenDialogImpl : public SequencePage, private Ui::cMicrochipCodegenDialog {
public:
  explicit cMicrochipCodegenDialogImpl(QWidget *parent);

  DsPic30Options options() const;

private:
  void SimCWrapperClicked();
  void OctaveClicked();
  void read() override {}
  void store() override {}
};

} // namespace brisel
