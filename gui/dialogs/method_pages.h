// method_pages.h - the pages on which length, order and curve of a design are chosen, and what goes with them.
#pragma once

#include "engine/core/code_tables.h"
#include "gui/dialogs/sequence_page.h"
#include "ui_cCompSpecDialog.h"
#include "ui_cEqLpLsEstDialog.h"
#include "ui_cFirLengthDialog.h"
#include "ui_cFirWinLengthEstDialog.h"
#include "ui_cIirOrderEstDialog.h"

#include <array>

namespace brisel {

/// A choice with its estimate: choosing it fills the length, an own value overrides that, and an empty field leaves the
/// length to the estimate.
class cFirWinLengthEstDialogImpl : public SequencePage, private Ui::cFirWinLengthEstDialog {
public:
  explicit cFirWinLengthEstDialogImpl(QWidget *parent);

private:
  void read() override;
  void store() override;

  std::array<int, offered_window_count> lengths{};
  int window = 0;
  int length = 0; // 0: the estimate
};

/// Types without a transition of their own, by any FIR method.
class cFirLengthDialogImpl : public SequencePage, private Ui::cFirLengthDialog {
public:
  explicit cFirLengthDialogImpl(QWidget *parent);

private:
  void read() override;
  void store() override;
  int estimate() const;

  std::array<int, offered_window_count> lengths{};
  bool windowed = false;
  int length = 0;
};

class cEqLpLsEstDialogImpl : public SequencePage, private Ui::cEqLpLsEstDialog {
public:
  explicit cEqLpLsEstDialogImpl(QWidget *parent);

private:
  void read() override;
  void store() override;
  FirSymmetry symmetry() const;

  QString last_estimate;
  int length = 0;
};

class cIirOrderEstDialogImpl : public SequencePage, private Ui::cIirOrderEstDialog {
public:
  explicit cIirOrderEstDialogImpl(QWidget *parent);

private:
  void read() override;
  void store() override;

  std::array<int, analog_prototypes.size()> orders{};
  int prototype = 0;
  int order = 0; // 0: the estimate
};

class cCompSpecDialogImpl : public SequencePage, private Ui::cCompSpecDialog {
public:
  explicit cCompSpecDialogImpl(QWidget *parent);

private:
  void read() override;
  void store() override;

  int rate = 1, delay = 1, stages = 1;
};

} // namespace brisel
