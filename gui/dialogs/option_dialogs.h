// option_dialogs.h - settings that no design run asks for. They hold from Accept on and are kept in the setup file.
#pragma once

#include "engine/core/start_up.h"
#include "gui/dialogs/sequence_page.h"
#include "ui_cQuantizationDialog.h"
#include "ui_cSystemSettingsDialog.h"
#include "ui_cUserInfoDialog.h"

namespace brisel {

class cQuantizationDialogImpl : public SequencePage, private Ui::cQuantizationDialog {
public:
  explicit cQuantizationDialogImpl(QWidget *parent);

private:
  void read() override;
  void store() override;

  int bits = 0;
  int searches = 0;
};

class cSystemSettingsDialogImpl : public SequencePage, private Ui::cSystemSettingsDialog {
public:
  /// `exit_mode` is what the workstation does when it ends.
  cSystemSettingsDialogImpl(QWidget *parent, ExitMode &exit_mode);

private:
  void read() override {}
  void store() override;

  ExitMode &exit_mode;
};

class cUserInfoDialogImpl : public SequencePage, private Ui::cUserInfoDialog {
public:
  explicit cUserInfoDialogImpl(QWidget *parent);

private:
  void read() override {}
  void store() override;
};

} // namespace brisel
