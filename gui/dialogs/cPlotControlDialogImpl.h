// cPlotControlDialogImpl.h - ranges, points and axes of the plots.
#pragma once

#include "engine/core/design_state.h"
#include "gui/dialogs/sequence_page.h"
#include "ui_cPlotControlDialog.h"

namespace brisel {

class cBriselApp;

class cPlotControlDialogImpl : public SequencePage, private Ui::cPlotControlDialog {
  Q_OBJECT

public:
  explicit cPlotControlDialogImpl(cBriselApp *window);

public Q_SLOTS:
  /// Puts the start values into the fields.
  void Default();

private:
  void read() override;
  void store() override;
  void show_settings();
  void read_range(QLineEdit *low, QLineEdit *high, double factor, Range &range);
  void read_count(QLineEdit *edit, int lowest, int highest, std::int32_t &count);

  cBriselApp *window;
  PlotSettings offered; // what the fields were filled with
  PlotSettings typed;
};

} // namespace brisel
