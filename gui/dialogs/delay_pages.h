// delay_pages.h - the pages of the all-pass stages: phase equalizer, and sections of a group delay filter.
#pragma once

#include "gui/dialogs/sequence_page.h"
#include "ui_cArbGDOrderDialog.h"
#include "ui_cPhaseEQDialog.h"

namespace brisel {

/// Sections, ripple or both: without a number of sections there are as few as keep the ripple.
class cPhaseEQDialogImpl : public SequencePage, private Ui::cPhaseEQDialog {
public:
  explicit cPhaseEQDialogImpl(QWidget *parent);

private:
  void read() override;
  void store() override;

  int sections = 0;
  double ripple = 0;
};

/// An empty number of sections leaves it to the ripple of the specification.
class cArbGDOrderDialogImpl : public SequencePage, private Ui::cArbGDOrderDialog {
public:
  explicit cArbGDOrderDialogImpl(QWidget *parent);

private:
  void read() override;
  void store() override;

  int sections = 0;
};

} // namespace brisel
