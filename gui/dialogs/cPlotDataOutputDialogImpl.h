// cPlotDataOutputDialogImpl.h - which plot data files are written.
#pragma once

#include "engine/files/plot_data.h"
#include "ui_cPlotDataOutputDialog.h"

namespace brisel {

class cPlotDataOutputDialogImpl : public QDialog, private Ui::cPlotDataOutputDialog {
  Q_OBJECT

public:
  explicit cPlotDataOutputDialogImpl(QWidget *parent);

  /// `file` is a row of `plot_data_files`.
  bool is_checked(std::size_t file) const;

private:
  std::array<QCheckBox *, plot_data_files.size()> boxes;
};

} // namespace brisel
