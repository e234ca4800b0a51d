// value_table.h - an editable list of numbers: rows are added, deleted, and pasted from a spreadsheet or a text file.
#pragma once

#include <QString>

#include <optional>
#include <vector>

class QPushButton;
class QTableWidget;

namespace brisel {

/// Rows of numbers in text: columns separated by tabs, semicolons, commas or blanks. Nothing, with the reason, when a
/// line has another number of columns or a word that is no number; a first line of words is a heading.
std::optional<std::vector<std::vector<double>>> rows_of_numbers(const QString &text, int columns, QString &why);

/// Cells show ten digits. A cell whose text was not changed keeps all digits of its number.
class ValueTable {
public:
  /// `row_names` number the rows unless the table of names is empty. At most `most` rows can stand.
  void set_up(QTableWidget *table, const QStringList &columns, int most, QPushButton *add, QPushButton *remove,
              QPushButton *paste);
  void show(const std::vector<std::vector<double>> &rows);
  /// What a row that is added begins with, zeros otherwise.
  void set_new_row(std::vector<double> row) { new_row = std::move(row); }
  /// The rows, or nothing with the reason when a cell holds no number.
  std::optional<std::vector<std::vector<double>>> rows(QString &why) const;

private:
  void set_row(int at, const std::vector<double> &values);
  void add_row();
  void remove_rows();
  void paste();

  QTableWidget *table = nullptr;
  int most = 0;
  std::vector<double> new_row;
};

} // namespace brisel
