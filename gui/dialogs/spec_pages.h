// spec_pages.h - the parameter pages of the filter types.
#pragma once

#include "gui/dialogs/spec_page.h"
#include "gui/dialogs/value_table.h"
#include "ui_cArbGDSpec1Dialog.h"
#include "ui_cArbGDSpec2Dialog.h"
#include "ui_cArbMagSpec1Dialog.h"
#include "ui_cArbMagSpec2Dialog.h"
#include "ui_cBandPassStopSpecDialog.h"
#include "ui_cDifferSpecDialog.h"
#include "ui_cHalfbandSpecDialog.h"
#include "ui_cHilbertSpecDialog.h"
#include "ui_cLowHighSpecDialog.h"
#include "ui_cMBandArbMagSpecDialog.h"
#include "ui_cMBandSpecDialog.h"
#include "ui_cRaiseCosSpecDialog.h"

#include <array>

namespace brisel {

class cLowHighSpecDialogImpl : public SpecPage, private Ui::cLowHighSpecDialog {
public:
  explicit cLowHighSpecDialogImpl(QWidget *parent);
};

class cBandPassStopSpecDialogImpl : public SpecPage, private Ui::cBandPassStopSpecDialog {
public:
  explicit cBandPassStopSpecDialogImpl(QWidget *parent);
};

class cDifferSpecDialogImpl : public SpecPage, private Ui::cDifferSpecDialog {
public:
  explicit cDifferSpecDialogImpl(QWidget *parent);
};

class cHilbertSpecDialogImpl : public SpecPage, private Ui::cHilbertSpecDialog {
public:
  explicit cHilbertSpecDialogImpl(QWidget *parent);
};

class cHalfbandSpecDialogImpl : public SpecPage, private Ui::cHalfbandSpecDialog {
public:
  explicit cHalfbandSpecDialogImpl(QWidget *parent);
};

class cRaiseCosSpecDialogImpl : public SpecPage, private Ui::cRaiseCosSpecDialog {
public:
  explicit cRaiseCosSpecDialogImpl(QWidget *parent);
};

/// First page of the multiband and of the arbitrary magnitude type.
class cMBandArbMagSpecDialogImpl : public SpecPage, private Ui::cMBandArbMagSpecDialog {
public:
  explicit cMBandArbMagSpecDialogImpl(QWidget *parent);

private:
  void read_more(FilterSpec &spec) override;
  QWidget *widget_of(const SpecComplaint &complaint) override;
};

class cMBandSpecDialogImpl : public SpecPage, private Ui::cMBandSpecDialog {
public:
  explicit cMBandSpecDialogImpl(QWidget *parent);
};

/// The bands of an arbitrary magnitude; bands of variable gain get their points on the next page.
class cArbMagSpec1DialogImpl : public SpecPage, private Ui::cArbMagSpec1Dialog {
public:
  explicit cArbMagSpec1DialogImpl(QWidget *parent);

private:
  void read_more(FilterSpec &spec) override;

  struct Boxes {
    QComboBox *gain_type, *unit_type, *ripple_type;
    QLineEdit *gain_value;
  };
  std::array<Boxes, max_arbitrary_bands> boxes;
};

class cArbMagSpec2DialogImpl : public SpecPage, private Ui::cArbMagSpec2Dialog {
public:
  explicit cArbMagSpec2DialogImpl(QWidget *parent);

private:
  void read_more(FilterSpec &spec) override;
  QWidget *widget_of(const SpecComplaint &) override { return pPoints_Table; }
  /// Keeps the points of the band shown so far and shows those of the chosen one.
  void show_band();

  ValueTable points;
  int band = -1; // shown
  FilterSpec entered;
};

class cArbGDSpec1DialogImpl : public SpecPage, private Ui::cArbGDSpec1Dialog {
public:
  explicit cArbGDSpec1DialogImpl(QWidget *parent);

private:
  void read_more(FilterSpec &spec) override;
  QWidget *widget_of(const SpecComplaint &complaint) override;
};

class cArbGDSpec2DialogImpl : public SpecPage, private Ui::cArbGDSpec2Dialog {
public:
  explicit cArbGDSpec2DialogImpl(QWidget *parent);

private:
  void read_more(FilterSpec &spec) override;
  QWidget *widget_of(const SpecComplaint &) override { return pPoints_Table; }

  ValueTable points;
};

} // namespace brisel
