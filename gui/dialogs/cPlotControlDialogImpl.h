// cPlotControlDialogImpl.h - ranges, points and axes of the plots.
#pragma once

#include "engine/core/design_state.h"
#include "ui_cPlotControlDialog.h"

#include <optional>

namespace brisel {

class cBriselApp;

class cPlotControlDialogImpl : public QDialog, private Ui::cPlotControlDialog {
  Q_OBJECT

public:
  explicit cPlotControlDialogImpl(cBriselApp *window);

public Q_SLOTS:
  void accept() override;
  void Default();
  void Help();

private:
  void show_settings(const PlotSettings &settings);
  /// The settings as typed, or nothing with the reason in the dialog's problem line.
  std::optional<PlotSettings> typed_settings();
  void check();

  cBriselApp *window;
};

} // namespace brisel
