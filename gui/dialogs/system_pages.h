// system_pages.h - the pages on which a digital or analog system is entered for analysis.
#pragma once

#include "engine/core/front_end.h"
#include "gui/dialogs/sequence_page.h"
#include "gui/dialogs/system_draft.h"
#include "gui/dialogs/value_table.h"
#include "ui_cFirAnalysisSpec1Dialog.h"
#include "ui_cFirAnalysisSpec2Dialog.h"
#include "ui_cLatticeSpec1Dialog.h"
#include "ui_cLatticeSpec2Dialog.h"
#include "ui_cPoleZeroSpec1Dialog.h"
#include "ui_cPoleZeroSpec2Dialog.h"
#include "ui_cPrewarpSpecDialog.h"
#include "ui_cRatioSpec1Dialog.h"
#include "ui_cRatioSpec2Dialog.h"
#include "ui_cSDomainSpecDialog.h"
#include "ui_cSosAnalysisSpec1Dialog.h"
#include "ui_cSosAnalysisSpec2Dialog.h"

#include <array>

namespace brisel {

/// A page of a system: a copy of its lists is typed into, checked by the engine, and put back into the draft.
class SystemPage : public SequencePage {
protected:
  SystemPage(QWidget *parent, const char *help_page, SystemDraft &draft)
      : SequencePage(parent, help_page), draft(draft), typed(draft.lists()) {}

  void store() override { draft.lists() = typed; }

  SystemDraft &draft;
  SystemLists typed;
};

/// First page: sampling frequency, gain and how many values there are. Values that a larger count asks for are put in,
/// those beyond a smaller one left out.
class SystemFirstPage : public SystemPage {
protected:
  using SystemPage::SystemPage;

  /// To be called before begin(). The first page of a sequence has no Prev.
  void bind(QLabel *domain, QLineEdit *sampling_frequency, QLineEdit *gain, QCheckBox *maximum_gain);
  void read() final;
  void store() override;
  /// Brings the lists to the counts that were typed.
  virtual void read_counts() = 0;
  /// Where a complaint about a list can already be told.
  virtual QWidget *field_of(SystemPart) { return nullptr; }

private:
  QLineEdit *sampling_edit = nullptr;
  QLineEdit *gain_edit = nullptr;
  QCheckBox *maximum_gain_box = nullptr;
};

/// Second page: the values, in one or two tables. Adding and deleting rows changes the counts of the first page.
class SystemListPage : public SystemPage {
protected:
  using SystemPage::SystemPage;

  struct Buttons {
    QPushButton *add, *remove, *paste;
  };
  void bind(QLabel *domain, QTableWidget *first, const QStringList &columns, int most, Buttons buttons);
  void bind_second(QTableWidget *second, const QStringList &columns, int most, Buttons buttons);
  void read() final;
  /// The rows as the table shows them, and back.
  virtual NumberRows shown_rows(const NumberRows &rows) { return rows; }
  virtual NumberRows entered_rows(const NumberRows &rows) { return rows; }
  /// Counts that follow from the rows, and the labels that tell them.
  virtual void show_counts() = 0;

  std::array<QTableWidget *, 2> tables{};
  std::array<ValueTable, 2> values;
};

/// Form and mapping of an analog system: the first page of its sequence.
class cSDomainSpecDialogImpl : public SequencePage, private Ui::cSDomainSpecDialog {
public:
  cSDomainSpecDialogImpl(QWidget *parent, SystemDraft &draft);

private:
  void read() override {}
  void store() override;

  SystemDraft &draft;
};

class cRatioSpec1DialogImpl : public SystemFirstPage, private Ui::cRatioSpec1Dialog {
public:
  cRatioSpec1DialogImpl(QWidget *parent, SystemDraft &draft);

private:
  void read_counts() override;
};

class cRatioSpec2DialogImpl : public SystemListPage, private Ui::cRatioSpec2Dialog {
public:
  cRatioSpec2DialogImpl(QWidget *parent, SystemDraft &draft);

private:
  void show_counts() override;
};

class cPoleZeroSpec1DialogImpl : public SystemFirstPage, private Ui::cPoleZeroSpec1Dialog {
public:
  cPoleZeroSpec1DialogImpl(QWidget *parent, SystemDraft &draft);

private:
  void read_counts() override;
  void store() override;
  QWidget *field_of(SystemPart part) override;
};

class cPoleZeroSpec2DialogImpl : public SystemListPage, private Ui::cPoleZeroSpec2Dialog {
public:
  cPoleZeroSpec2DialogImpl(QWidget *parent, SystemDraft &draft);

private:
  NumberRows shown_rows(const NumberRows &rows) override;
  NumberRows entered_rows(const NumberRows &rows) override;
  void show_counts() override;

  std::map<std::vector<double>, std::vector<double>> places; // by what is shown of them: those not touched are exact
};

class cSosAnalysisSpec1DialogImpl : public SystemFirstPage, private Ui::cSosAnalysisSpec1Dialog {
public:
  cSosAnalysisSpec1DialogImpl(QWidget *parent, SystemDraft &draft);

private:
  void read_counts() override;
};

class cSosAnalysisSpec2DialogImpl : public SystemListPage, private Ui::cSosAnalysisSpec2Dialog {
public:
  cSosAnalysisSpec2DialogImpl(QWidget *parent, SystemDraft &draft);

private:
  void show_counts() override;
};

class cLatticeSpec1DialogImpl : public SystemFirstPage, private Ui::cLatticeSpec1Dialog {
public:
  cLatticeSpec1DialogImpl(QWidget *parent, SystemDraft &draft);

private:
  void read_counts() override;
};

class cLatticeSpec2DialogImpl : public SystemListPage, private Ui::cLatticeSpec2Dialog {
public:
  cLatticeSpec2DialogImpl(QWidget *parent, SystemDraft &draft);

private:
  void show_counts() override;
};

class cFirAnalysisSpec1DialogImpl : public SystemFirstPage, private Ui::cFirAnalysisSpec1Dialog {
public:
  cFirAnalysisSpec1DialogImpl(QWidget *parent, SystemDraft &draft);

private:
  void read_counts() override;
};

class cFirAnalysisSpec2DialogImpl : public SystemListPage, private Ui::cFirAnalysisSpec2Dialog {
public:
  cFirAnalysisSpec2DialogImpl(QWidget *parent, SystemDraft &draft);

private:
  void show_counts() override;

  int named_taps = -1;
};

/// After an analog system that the bilinear map brings to z.
class cPrewarpSpecDialogImpl : public SequencePage, private Ui::cPrewarpSpecDialog {
public:
  cPrewarpSpecDialogImpl(QWidget *parent, SystemDraft &draft);

private:
  void read() override;
  void store() override { draft.prewarp = typed; }

  SystemDraft &draft;
  Prewarp typed;
  double highest_root;
};

/// Runs the pages of a system up to the last Next, after which the engine holds it. False when they were cancelled:
/// nothing has changed.
bool enter_system(Domain domain, InputOption option, QWidget *parent);

} // namespace brisel
