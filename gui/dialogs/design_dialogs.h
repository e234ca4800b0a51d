// design_dialogs.h - the selections of a FIR or IIR design, with which the Design menu begins.
#pragma once

#include "gui/dialogs/sequence_page.h"
#include "ui_cFirDesignDialog.h"
#include "ui_cIirDesignDialog.h"

namespace brisel {

class cFirDesignDialogImpl : public SequencePage, private Ui::cFirDesignDialog {
public:
  explicit cFirDesignDialogImpl(QWidget *parent);

private:
  void read() override {}
  void store() override;
};

class cIirDesignDialogImpl : public SequencePage, private Ui::cIirDesignDialog {
public:
  explicit cIirDesignDialogImpl(QWidget *parent);

private:
  void read() override;
  void store() override;
};

/// The radio buttons "p<name>0_Button", "p<name>1_Button", ... of a form as one choice.
void choose_button(const QDialog &dialog, const char *name, int index);
int chosen_button(const QDialog &dialog, const char *name);

} // namespace brisel
