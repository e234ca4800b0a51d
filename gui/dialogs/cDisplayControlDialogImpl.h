// cDisplayControlDialogImpl.h - colours, fonts and lines of the plots.
#pragma once

#include "engine/core/design_state.h"
#include "ui_cDisplayControlDialog.h"

namespace brisel {

class cBriselApp;

class cDisplayControlDialogImpl : public QDialog, private Ui::cDisplayControlDialog {
  Q_OBJECT

public:
  explicit cDisplayControlDialogImpl(cBriselApp *window);

public Q_SLOTS:
  void ColorDefault();
  void ColorMono();
  void FontDefault();
  void LineDefault();
  void Apply();
  void accept() override;

private:
  void show_settings(const DisplaySettings &settings);
  DisplaySettings shown_settings() const;
  /// Calls `visit(widget, field of settings)` for every widget of the dialog.
  template <class Settings, class Visit> void each_field(Settings &settings, Visit visit) const;

  cBriselApp *window;
};

} // namespace brisel
