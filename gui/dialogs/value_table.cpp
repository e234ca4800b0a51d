#include "gui/dialogs/value_table.h"

#include "engine/files/text_file.h"
#include "gui/dialogs/sequence_page.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>
#include <QTableWidget>

#include <algorithm>

namespace brisel {

namespace {

std::optional<double> number(const QString &word) {
  const std::string text = word.trimmed().toStdString();
  std::size_t used = 0;
  const auto value = parse_number(text, &used);
  return used == text.size() ? value : std::nullopt;
}

constexpr int exact_role = Qt::UserRole; // the number that the text was made of

std::optional<double> number_of(const QTableWidgetItem *item) {
  if (!item) return std::nullopt;
  const QVariant exact = item->data(exact_role);
  return exact.isValid() && item->text() == shown(exact.toDouble()) ? exact.toDouble() : number(item->text());
}

} // namespace

std::optional<std::vector<std::vector<double>>> rows_of_numbers(const QString &text, int columns, QString &why) {
  // Blanks around a separator belong to it. Two tabs are two separators: the cell between them is empty.
  static const QRegularExpression separators(" *[\\t;,] *| +");
  std::vector<std::vector<double>> rows;
  const QStringList lines = text.split(QRegularExpression("\r\n|\n|\r"));
  for (qsizetype i = 0; i < lines.size(); i++) {
    const QString line = lines[i].trimmed();
    if (line.isEmpty()) continue;
    std::vector<double> row;
    bool all_numbers = true, any_number = false;
    for (const QString &word : line.split(separators)) {
      const auto value = number(word);
      all_numbers = all_numbers && value;
      any_number = any_number || value;
      row.push_back(value.value_or(0));
    }
    if (!any_number && rows.empty()) continue;
    if (!all_numbers || row.size() != static_cast<std::size_t>(columns)) {
      why = QString("Line %1 does not hold %2: %3")
                .arg(i + 1)
                .arg(columns == 1 ? QString("one number") : QString("%1 numbers").arg(columns))
                .arg(line.left(60));
      if (line.contains(',')) why += "\nCommas separate columns; decimals are written with a point.";
      return std::nullopt;
    }
    rows.push_back(row);
  }
  if (rows.empty()) why = "There are no numbers to paste.";
  return rows.empty() ? std::nullopt : std::optional(rows);
}

void ValueTable::set_up(QTableWidget *shown_table, const QStringList &columns, int most_rows, QPushButton *add,
                        QPushButton *remove, QPushButton *paste_button) {
  table = shown_table;
  most = most_rows;
  table->setColumnCount(static_cast<int>(columns.size()));
  table->setHorizontalHeaderLabels(columns);
  table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  const int column = width_of(table, longest_number);
  table->horizontalHeader()->setMinimumSectionSize(column);
  const int all =
      table->columnCount() * column + width_of(table, "H(100)") + table->verticalScrollBar()->sizeHint().width();
  table->setMinimumWidth(std::min(all, table->screen()->availableSize().width() * 4 / 5)); // and scrolls
  table->setTabKeyNavigation(false); // Tab goes on to the buttons, arrows move in the table
  table->setMinimumHeight(10 * table->verticalHeader()->defaultSectionSize());
  QObject::connect(add, &QPushButton::clicked, table, [this] { add_row(); });
  QObject::connect(remove, &QPushButton::clicked, table, [this] { remove_rows(); });
  QObject::connect(paste_button, &QPushButton::clicked, table, [this] { paste(); });
  auto *keys = new QShortcut(QKeySequence::Paste, table);
  keys->setContext(Qt::WidgetShortcut);
  QObject::connect(keys, &QShortcut::activated, table, [this] { paste(); });
}

void ValueTable::show(const std::vector<std::vector<double>> &rows) {
  const bool blocked = table->blockSignals(true);
  table->setRowCount(static_cast<int>(rows.size()));
  for (int r = 0; r < table->rowCount(); r++) set_row(r, rows[static_cast<std::size_t>(r)]);
  table->blockSignals(blocked);
}

void ValueTable::set_row(int at, const std::vector<double> &values) {
  for (int c = 0; c < table->columnCount(); c++) {
    const double value = values[static_cast<std::size_t>(c)];
    auto *item = new QTableWidgetItem(brisel::shown(value));
    item->setData(exact_role, value);
    table->setItem(at, c, item);
  }
}

std::optional<std::vector<std::vector<double>>> ValueTable::rows(QString &why) const {
  std::vector<std::vector<double>> all;
  for (int r = 0; r < table->rowCount(); r++) {
    std::vector<double> row;
    for (int c = 0; c < table->columnCount(); c++) {
      const auto value = number_of(table->item(r, c));
      if (!value) {
        why = QString("row %1: %2 is not a number").arg(r + 1).arg(table->horizontalHeaderItem(c)->text());
        return std::nullopt;
      }
      row.push_back(*value);
    }
    all.push_back(row);
  }
  return all;
}

// Signals tell the page about the change: one for the last cell that is set.
void ValueTable::add_row() {
  if (table->rowCount() >= most) return;
  const int at = table->currentRow() < 0 ? table->rowCount() : table->currentRow() + 1;
  table->insertRow(at);
  set_row(at, new_row.empty() ? std::vector<double>(static_cast<std::size_t>(table->columnCount())) : new_row);
  table->setCurrentCell(at, 0);
  table->editItem(table->item(at, 0));
}

void ValueTable::remove_rows() {
  // Ranges from the last to the first, so that the rows of the others stay where they are.
  QItemSelection chosen = table->selectionModel()->selection();
  std::sort(chosen.begin(), chosen.end(), [](const auto &a, const auto &b) { return a.bottom() > b.bottom(); });
  int above = table->rowCount(); // rows from here on are done
  for (const QItemSelectionRange &range : chosen) {
    const int last = std::min(range.bottom(), above - 1);
    if (last < range.top()) continue;
    table->model()->removeRows(range.top(), last - range.top() + 1);
    above = range.top();
  }
  Q_EMIT table->itemChanged(nullptr);
}

void ValueTable::paste() {
  QString why;
  const auto pasted = rows_of_numbers(QApplication::clipboard()->text(), table->columnCount(), why);
  if (pasted && pasted->size() > static_cast<std::size_t>(most))
    why = QString("There are %1 rows; at most %2 can be entered.").arg(pasted->size()).arg(most);
  if (!why.isEmpty()) {
    QMessageBox box(QMessageBox::Warning, "Brisel", QString(), QMessageBox::Ok, table->window());
    box.setTextFormat(Qt::PlainText);
    box.setText(why);
    box.exec();
    return;
  }
  show(*pasted);
  Q_EMIT table->itemChanged(nullptr);
}

} // namespace brisel
