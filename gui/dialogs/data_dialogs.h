// data_dialogs.h - how files of plain numbers are written.
#pragma once

#include "codegen/data_files.h"
#include "gui/dialogs/sequence_page.h"
#include "ui_cCossapFormatDialog.h"
#include "ui_cCreateCoefDataDialog.h"

namespace brisel {

/// Keeps the format and the comment switch as settings.
class cCossapFormatDialogImpl : public SequencePage, private Ui::cCossapFormatDialog {
public:
  explicit cCossapFormatDialogImpl(QWidget *parent);

private:
  void read() override;
  void store() override;

  bool words;
};

class cCreateCoefDataDialogImpl : public SequencePage, private Ui::cCreateCoefDataDialog {
public:
  explicit cCreateCoefDataDialogImpl(QWidget *parent);

  const DataFileOptions &options() const { return chosen; }

private:
  void read() override;
  void store() override {}

  DataFileOptions chosen;
  bool words;
};

} // namespace brisel
