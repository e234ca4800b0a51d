// conversion_dialogs.h - systems written and converted in the form of one's choice.
#pragma once

#include "engine/core/system_conversion.h"
#include "gui/dialogs/sequence_page.h"
#include "ui_cDomainConversionDialog.h"
#include "ui_cFirFormConversionDialog.h"
#include "ui_cIirFilterOutputDialog.h"
#include "ui_cIirFormConversionDialog.h"

namespace brisel {

class FileDialogs;

/// In which domain and form the IIR result is written. Forms that do not exist, or that no file holds, are refused.
class cIirFilterOutputDialogImpl : public SequencePage, private Ui::cIirFilterOutputDialog {
public:
  explicit cIirFilterOutputDialogImpl(QWidget *parent);

  Domain domain() const;
  bool all_forms() const { return all; }
  /// The chosen system.
  const ConvertibleSystem &system() const { return *chosen; }

private:
  void read() override;
  void store() override {}
  void accept_all();

  SystemPointer chosen;
  std::pair<int, int> looked_at{-1, -1};
  double digits = -1; // that a file of it keeps
  bool all = false;
};

/// The forms of that dialog, in its order, with what their files are called.
struct OutputForm {
  InputOption option;
  const char *suffix;
};
inline constexpr std::array output_forms{
    OutputForm{InputOption::ratio, "_ratio"},     OutputForm{InputOption::pole_zero, "_pole_zero"},
    OutputForm{InputOption::product, "_cascade"}, OutputForm{InputOption::sum, "_parallel"},
    OutputForm{InputOption::lattice, "_lattice"},
};

/// What the conversion dialogs share: a source, a result that belongs to the choices that are set, and what can be done
/// with it. OK makes the result the entered system.
class ConversionPage : public SequencePage {
public:
  void accept() override;

protected:
  /// `kind` is what this page converts.
  ConversionPage(QWidget *parent, const char *help_page, const char *kind, FileDialogs &files)
      : SequencePage(parent, help_page), kind(kind), files(files) {}

  /// To be called in place of begin(), when the widgets are there.
  void begin_conversion();

  virtual ConversionOutcome convert(const ConvertibleSystem &source) = 0;
  /// The current result, as far as this page can take it.
  virtual SystemPointer current() const = 0;
  /// Why a loaded system is no source of this page; empty when it is one.
  virtual QString refusal(const ConvertibleSystem &system) const = 0;
  /// The source has changed.
  virtual void show_source(const ConvertibleSystem *) {}
  void use_current();
  bool is_loaded() const { return loaded; }

private:
  void read() override;
  void store() override;
  void load();
  void copy();
  void save();
  bool run();
  void set_source(SystemPointer system, bool from_file);
  QList<bool> choices() const;

  const char *kind;
  FileDialogs &files;
  SystemPointer source;
  bool loaded = false;
  std::unique_ptr<Conversion> result;
  QString refused;          // the reason, of the choices below
  QList<bool> converted_by; // choices of the result or the refusal
};

class cIirFormConversionDialogImpl : public ConversionPage, private Ui::cIirFormConversionDialog {
public:
  cIirFormConversionDialogImpl(QWidget *parent, FileDialogs &files);

private:
  ConversionOutcome convert(const ConvertibleSystem &source) override;
  SystemPointer current() const override;
  QString refusal(const ConvertibleSystem &system) const override;
  void show_source(const ConvertibleSystem *source) override;
};

class cFirFormConversionDialogImpl : public ConversionPage, private Ui::cFirFormConversionDialog {
public:
  cFirFormConversionDialogImpl(QWidget *parent, FileDialogs &files);

private:
  ConversionOutcome convert(const ConvertibleSystem &source) override;
  SystemPointer current() const override { return current_fir_system(); }
  QString refusal(const ConvertibleSystem &system) const override;
};

class cDomainConversionDialogImpl : public ConversionPage, private Ui::cDomainConversionDialog {
public:
  cDomainConversionDialogImpl(QWidget *parent, FileDialogs &files);

private:
  ConversionOutcome convert(const ConvertibleSystem &source) override;
  SystemPointer current() const override { return current_iir_system(Domain::s); }
  QString refusal(const ConvertibleSystem &system) const override;
};

} // namespace brisel
