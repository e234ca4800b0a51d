// cSelectPlotsDialogImpl.h - which plots: those whose windows are shown, or those that are printed.
#pragma once

#include "ui_cSelectPlotsDialog.h"

#include <array>
#include <cstdint>

namespace brisel {

class cBriselApp;

class cSelectPlotsDialogImpl : public QDialog, private Ui::cSelectPlotsDialog {
  Q_OBJECT

public:
  /// Starts with the plots whose windows are shown. The boxes carry the colour of the curves as their legend.
  explicit cSelectPlotsDialogImpl(cBriselApp *window, const QString &caption = {});

  std::uint8_t mask() const; // bit k for plot kind k

private:
  std::array<QCheckBox *, 7> boxes() const;
};

} // namespace brisel
