// page_walk.h - walks sequences of pages with keys and clicks in the real workstation.
#pragma once

#include "tests/gui/main_window/workstation_fixture.h"

#include <QLabel>
#include <QLineEdit>
#include <QTableWidget>

namespace brisel {

/// Takes the pages in their order; each step gets its dialog and must close it.
class PageWalkTest : public WorkstationTest {
protected:
  void SetUp() override {
    WorkstationTest::SetUp();
    set_start_values();
    dialogs.answer = [this](QDialog &dialog) {
      seen.append(dialog.objectName());
      if (step >= steps.size()) return dialog.reject();
      const std::size_t current = step++;
      steps[current](dialog);
    };
  }

  using Step = std::function<void(QDialog &)>;
  void walk(std::vector<Step> new_steps) {
    steps = std::move(new_steps);
    step = 0;
    seen.clear();
  }

  std::vector<Step> steps;
  std::size_t step = 0;
  QStringList seen;
};

inline void type(QDialog &dialog, const char *field, const QString &text) {
  auto *edit = dialog.findChild<QLineEdit *>(field);
  ASSERT_TRUE(edit) << field;
  edit->setFocus();
  edit->selectAll();
  QTest::keyClicks(edit, text);
}

/// Types over a cell of a table.
inline void type_cell(QTableWidget &table, int row, int column, const QString &text) {
  table.setFocus();
  table.setCurrentCell(row, column);
  QTest::keyClick(&table, Qt::Key_F2);
  QLineEdit *editor = nullptr; // those of other cells are hidden and wait for their end
  for (QLineEdit *candidate : table.findChildren<QLineEdit *>())
    if (candidate->isVisible()) editor = candidate;
  ASSERT_TRUE(editor);
  editor->selectAll();
  QTest::keyClicks(editor, text);
  QTest::keyClick(editor, Qt::Key_Return);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall); // the table takes the text by a queued call
}

inline void next(QDialog &dialog) {
  QTest::keyClick(&dialog, Qt::Key_Return);
}

inline void cancel(QDialog &dialog) {
  QTest::keyClick(&dialog, Qt::Key_Escape);
}

inline void click(QDialog &dialog, const char *button) {
  auto *found = dialog.findChild<QAbstractButton *>(button);
  ASSERT_TRUE(found) << button;
  QTest::mouseClick(found, Qt::LeftButton, {}, QPoint(10, found->height() / 2)); // radio buttons react on their text
}

inline QString text_in(const QDialog &dialog, const char *field) {
  const auto *edit = dialog.findChild<QLineEdit *>(field);
  return edit ? edit->text() : QString("no such field");
}

inline bool next_enabled(const QDialog &dialog) {
  return dialog.findChild<QPushButton *>("pNext_Button")->isEnabled();
}

/// Every reason that a page shows.
inline QString reasons(const QDialog &dialog) {
  QString all;
  for (const QLabel *label : dialog.findChildren<QLabel *>())
    if (label->styleSheet().contains("color")) all += label->text();
  return all;
}

} // namespace brisel
