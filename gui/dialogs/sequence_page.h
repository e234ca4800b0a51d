// sequence_page.h - what every page of a design run has in common: Next, Prev, Help and Cancel, and checks while the
// user types.
#pragma once

#include <QDialog>

#include <map>
#include <optional>

class QLabel;
class QLineEdit;
class QPushButton;

namespace brisel {

/// Result of a page besides QDialog::Accepted and QDialog::Rejected: the driver opens the earlier page again. The
/// three are the numbers of PageResult.
inline constexpr int page_back = 3;

/// The longest texts that people enter, for the widths of fields: a number with all digits of a double, one with the
/// digits that Brisel shows, and a whole number.
inline constexpr const char *longest_number = "-1.2345678901234567e-10";
inline constexpr const char *longest_shown_number = "-1.234567891e-10";
inline constexpr const char *longest_whole_number = "1234567890";

/// A page reads its widgets into values of its own whenever one of them changes; what is wrong is marked with its
/// reason, and Next stays disabled until nothing is. Next stores the values in the engine. Prev stores them too, so
/// that the page shows them again; what is wrong is dropped. Whoever runs the pages undoes that when the user cancels.
///
/// Reasons stand beside their fields, or below them in `pProblem_Label` on pages that are grids of fields.
class SequencePage : public QDialog {
  Q_OBJECT

public Q_SLOTS:
  void accept() override;
  void Previous();
  void Help();

protected:
  SequencePage(QWidget *parent, const char *help_page) : QDialog(parent), help_page(help_page) {}

  /// To be called at the end of the constructor: watches every input widget and checks for the first time. The fields
  /// get room for `longest` and for reasons; a null pointer is for free text, which is never wrong.
  void begin(const char *longest = longest_number);
  /// Checks the page again.
  void check();
  bool is_right() const { return right; }
  bool event(QEvent *event) override;

  /// Reads the widgets into the page's values and marks what is wrong, whose value stays what it was.
  virtual void read() = 0;
  /// Puts the values where the engine, and this page when it opens again, find them.
  virtual void store() = 0;

  /// Shows `field` as wrong. Of several reasons the first stands.
  void mark(QWidget *field, const QString &reason);
  /// Nothing, and a mark, when there is no number in the field.
  std::optional<double> number_in(QLineEdit *edit);
  /// The same for a whole number in a range; an empty field is nothing without a mark where that is allowed.
  std::optional<int> whole_number_in(QLineEdit *edit, int lowest, int highest, bool may_be_empty = false);
  /// The length or order to design: an estimate that the user left as it was is 0, so that it follows the next
  /// specification.
  int estimated_or_own(QLineEdit *edit, int lowest, int highest, int estimate);
  /// A unit behind a field that stands in a grid.
  void add_unit(QLineEdit *edit, const QString &unit);

private:
  QLabel *reason_label(QWidget *field);
  QPushButton *accept_button() const;

  const char *help_page;
  std::map<QWidget *, QLabel *> reasons; // by field; fields of one row share a label
  bool right = false;
  bool checking = false;
};

/// A number as fields show it.
QString shown(double value);
/// The room that a text needs in a field or a cell.
int width_of(const QWidget *field, const char *text);
/// A frequency in radians per second in the unit of the session.
QString shown_frequency(double value);
/// What read-only labels say of a sampling frequency in radians per second; its unit stands in a label of its own.
QString sampling_frequency_text(double rate);
/// The unit's short name.
QString frequency_unit();

} // namespace brisel
