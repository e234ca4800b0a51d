#include "gui/dialogs/text_view_dialog.h"

#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/files/text_file.h"
#include "gui/plots/plot_style.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QTextDocumentFragment>

namespace brisel {

namespace {
constexpr QSize start_size(760, 560);
}

TextViewDialog::TextViewDialog(QWidget *parent, const QString &name, const QString &caption, const std::string &text)
    : QDialog(parent) {
  setupUi(this);
  setObjectName(name);
  setWindowTitle(caption);
  pText_Edit->setFont(plot_style(display_settings).text_font);
  pText_Edit->setLineWrapMode(QPlainTextEdit::NoWrap);
  pText_Edit->setPlainText(QString::fromStdString(text));
  connect(pCopy_Button, &QPushButton::clicked, this, &TextViewDialog::copy);
  connect(pSave_Button, &QPushButton::clicked, this, &TextViewDialog::save);
  resize(start_size);
}

void TextViewDialog::add_button(const QString &label, const char *button_name, std::function<void()> action) {
  auto *button = new QPushButton(label, this);
  button->setObjectName(button_name);
  button->setAutoDefault(false);
  for (QHBoxLayout *row : findChildren<QHBoxLayout *>())
    if (const int place = row->indexOf(pCopy_Button); place >= 0) row->insertWidget(place, button);
  setTabOrder(button, pCopy_Button);
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
