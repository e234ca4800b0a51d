#include "gui/dialogs/sequence_page.h"

#include "engine/core/design_state.h"
#include "engine/files/text_file.h"
#include "gui/dialogs/help.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QTableWidget>

namespace brisel {

namespace {

// Behind every column of fields; grids of forms are narrower.
constexpr int unit_column = 10;
constexpr int reason_column = 11;
constexpr int reason_width = 44;  // average characters
constexpr int field_margins = 16; // frame and padding of all styles

QGridLayout *grid_of(const QWidget *dialog, QWidget *field, int &row) {
  for (QGridLayout *grid : dialog->findChildren<QGridLayout *>()) {
    const int index = grid->indexOf(field);
    if (index < 0) continue;
    int column = 0, rows = 0, columns = 0;
    grid->getItemPosition(index, &row, &column, &rows, &columns);
    return grid;
  }
  return nullptr;
}

void show_mark(QWidget *field, const QString &reason) {
  field->setToolTip(reason);
  field->setStyleSheet(reason.isEmpty() ? "" : "QLineEdit, QTableWidget, QComboBox { border: 2px solid #c02020; }");
}

} // namespace

QString shown(double value) {
  return QString::fromStdString(formatf("%.10g", value));
}

QString shown_frequency(double value) {
  return shown(value * design_state.unit_factor_inverse);
}

QString sampling_frequency_text(double rate) {
  return QString::asprintf("Sampling Frequency: %g", rate * design_state.unit_factor_inverse);
}

QString frequency_unit() {
  return design_state.FrequencyMode ? "rad/s" : "Hz";
}

int width_of(const QWidget *field, const char *text) {
  return field->fontMetrics().horizontalAdvance(text) + field_margins;
}

QPushButton *SequencePage::accept_button() const {
  for (const char *name : {"pNext_Button", "pOk_Button", "pAccept_Button"})
    if (auto *button = findChild<QPushButton *>(name)) return button;
  return nullptr;
}

void SequencePage::begin(const char *longest) {
  if (auto *button = findChild<QPushButton *>("pPrev_Button"))
    connect(button, &QPushButton::clicked, this, &SequencePage::Previous);
  if (auto *button = findChild<QPushButton *>("pHelp_Button"))
    connect(button, &QPushButton::clicked, this, &SequencePage::Help);
  connect(new QShortcut(QKeySequence::HelpContents, this), &QShortcut::activated, this, &SequencePage::Help);
  for (QLineEdit *edit : findChildren<QLineEdit *>()) {
    connect(edit, &QLineEdit::textChanged, this, &SequencePage::check);
    if (!longest) continue;
    edit->setMinimumWidth(width_of(edit, longest));
    reason_label(edit); // there from the start, so that the page does not grow with the first reason
  }
  for (QComboBox *box : findChildren<QComboBox *>())
    connect(box, &QComboBox::currentIndexChanged, this, &SequencePage::check);
  for (QAbstractButton *button : findChildren<QAbstractButton *>())
    if (button->isCheckable()) connect(button, &QAbstractButton::toggled, this, &SequencePage::check);
  for (QTableWidget *table : findChildren<QTableWidget *>())
    connect(table, &QTableWidget::itemChanged, this, &SequencePage::check);
  if (auto *shared = findChild<QLabel *>("pProblem_Label")) {
    shared->setWordWrap(true);
    shared->setMinimumHeight(2 * shared->fontMetrics().lineSpacing()); // the page does not grow with a long reason
  }
  check();
}

void SequencePage::check() {
  if (checking) return; // a check that corrects a widget is told about it
  checking = true;
  for (const auto &[field, label] : reasons) {
    show_mark(field, {});
    if (label) label->clear();
  }
  right = true;
  read();
  if (QPushButton *button = accept_button()) button->setEnabled(right);
  checking = false;
}

// A reason of several lines must not be cut off. The page keeps the height that it once needed.
bool SequencePage::event(QEvent *event) {
  const bool taken = QDialog::event(event);
  if (event->type() == QEvent::LayoutRequest && layout() && isVisible())
    if (const int needed = layout()->totalHeightForWidth(width()); needed > height()) resize(width(), needed);
  return taken;
}

QLabel *SequencePage::reason_label(QWidget *field) {
  if (auto *shared = findChild<QLabel *>("pProblem_Label")) return shared;
  int row = 0;
  QGridLayout *grid = grid_of(this, field, row);
  if (!grid) return nullptr;
  if (QLayoutItem *present = grid->itemAtPosition(row, reason_column)) return qobject_cast<QLabel *>(present->widget());
  auto *label = new QLabel(field->parentWidget());
  label->setWordWrap(true);
  label->setMinimumWidth(reason_width * label->fontMetrics().averageCharWidth());
  grid->addWidget(label, row, reason_column);
  return label;
}

void SequencePage::mark(QWidget *field, const QString &reason) {
  const bool first = right;
  right = false;
  QLabel *&label = reasons.try_emplace(field, nullptr).first->second;
  if (!label) label = reason_label(field);
  if (!label) return;
  show_mark(field, reason);
  if (!first && !label->text().isEmpty()) return;
  label->setTextFormat(Qt::PlainText);
  label->setText(reason);
  const bool dark = label->palette().color(QPalette::Window).lightness() < 128;
  label->setStyleSheet(dark ? "color: #ff9a90" : "color: #c02020");
}

std::optional<double> SequencePage::number_in(QLineEdit *edit) {
  const std::string text = edit->text().trimmed().toStdString();
  std::size_t used = 0;
  const auto value = parse_number(text, &used);
  if (value && used == text.size()) return value;
  mark(edit, text.empty() ? "a number is needed" : "not a number");
  return std::nullopt;
}

std::optional<int> SequencePage::whole_number_in(QLineEdit *edit, int lowest, int highest, bool may_be_empty) {
  const QString text = edit->text().trimmed();
  if (text.isEmpty() && may_be_empty) return std::nullopt;
  bool good = false;
  const int value = text.toInt(&good);
  if (good && value >= lowest && value <= highest) return value;
  mark(edit, QString("a whole number from %1 to %2").arg(lowest).arg(highest));
  return std::nullopt;
}

int SequencePage::estimated_or_own(QLineEdit *edit, int lowest, int highest, int estimate) {
  const int value = whole_number_in(edit, lowest, highest, true).value_or(0);
  return value == estimate && !edit->isModified() ? 0 : value;
}

void SequencePage::add_unit(QLineEdit *edit, const QString &unit) {
  int row = 0;
  QGridLayout *grid = grid_of(this, edit, row);
  if (!grid || grid->itemAtPosition(row, unit_column)) return;
  grid->addWidget(new QLabel(unit, edit->parentWidget()), row, unit_column);
}

void SequencePage::accept() {
  check();
  if (!right) return;
  store();
  QDialog::accept();
}

void SequencePage::Previous() {
  check();
  store();
  done(page_back);
}

void SequencePage::Help() {
  show_help(help_page, this);
}

} // namespace brisel
