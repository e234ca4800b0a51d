#include "gui/dialogs/text_view_dialog.h"

#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/files/text_file.h"
#include "gui/dialogs/help.h"
#include "gui/plots/plot_style.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QKeyEvent>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>
#include <QTextDocumentFragment>

#include <algorithm>

namespace brisel {

namespace {

constexpr QSize least_size(480, 560);

/// Wide enough for the longest line, where the screen is.
QSize start_size(const QPlainTextEdit &view) {
  qsizetype longest = 0;
  for (const QStringView line : QStringTokenizer(view.toPlainText(), u'\n')) longest = std::max(longest, line.size());
  const int text = view.fontMetrics().horizontalAdvance('0') * static_cast<int>(std::min<qsizetype>(longest + 2, 1000));
  const int around = view.verticalScrollBar()->sizeHint().width() + 50;
  return least_size.expandedTo(QSize(text + around, 0)).boundedTo(view.screen()->availableSize() * 0.9);
}

} // namespace

TextViewDialog::TextViewDialog(QWidget *parent, const QString &name, const QString &caption, const std::string &text,
                               const QString &help_page)
    : QDialog(parent) {
  setupUi(this);
  setObjectName(name);
  setWindowTitle(caption);
  pText_Edit->setFont(plot_style(display_settings).text_font);
  pText_Edit->setLineWrapMode(QPlainTextEdit::NoWrap);
  pText_Edit->setPlainText(QString::fromStdString(text));
  connect(pCopy_Button, &QPushButton::clicked, this, &TextViewDialog::copy);
  connect(pSave_Button, &QPushButton::clicked, this, &TextViewDialog::save);
  pText_Edit->installEventFilter(this);
  offer_help(help_page, this);
  connect(new QShortcut(QKeySequence::Save, this), &QShortcut::activated, this, &TextViewDialog::save);
  pCopy_Button->setToolTip("The selected text, or all of it (Ctrl+C)");
  pSave_Button->setToolTip("All text as a file (Ctrl+S)");
  resize(start_size(*pText_Edit));
}

// The text itself would copy nothing when nothing is selected.
bool TextViewDialog::eventFilter(QObject *object, QEvent *event) {
  if (event->type() != QEvent::KeyPress || !static_cast<QKeyEvent *>(event)->matches(QKeySequence::Copy))
    return QDialog::eventFilter(object, event);
  copy();
  return true;
}

void TextViewDialog::add_button(const QString &label, const char *button_name, std::function<void()> action) {
  auto *button = new QPushButton(label, this);
  button->setObjectName(button_name);
  button->setAutoDefault(false);
  for (QHBoxLayout *row : findChildren<QHBoxLayout *>())
    if (const int place = row->indexOf(pCopy_Button); place >= 0) row->insertWidget(place, button);
  setTabOrder(pText_Edit, button);
  connect(button, &QPushButton::clicked, this, std::move(action));
}

/// What is selected, or everything.
void TextViewDialog::copy() {
  const QTextCursor cursor = pText_Edit->textCursor();
  QApplication::clipboard()->setText(cursor.hasSelection() ? cursor.selection().toPlainText()
                                                           : pText_Edit->toPlainText());
}

void TextViewDialog::save() {
  const QString path = QFileDialog::getSaveFileName(this, "Save", {}, "Text (*.txt);;All Files (*)");
  if (path.isEmpty()) return;
  std::string why;
  if (!save_file(path.toStdString(), pText_Edit->toPlainText().toStdString(), why))
    post_message(Message::write_failed, why);
}

} // namespace brisel
