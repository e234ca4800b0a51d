#include "gui/dialogs/help.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QPushButton>
#include <QShortcut>
#include <QTextBrowser>
#include <QVBoxLayout>

// In a static library the linker drops resources that nothing asks for.
static void register_pages() {
  Q_INIT_RESOURCE(help);
}

namespace brisel {

void show_help(const QString &name, QWidget *dialog) {
  register_pages();
  QFile page(":/help/" + name + ".md");
  if (!page.open(QIODevice::ReadOnly)) return;
  auto *window = new QDialog(dialog); // a child of the modal dialog stays in reach while that is open
  window->setAttribute(Qt::WA_DeleteOnClose);
  window->setWindowTitle("Help");
  auto *browser = new QTextBrowser(window);
  browser->setMarkdown(QString::fromUtf8(page.readAll()));
  auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, window);
  QObject::connect(buttons, &QDialogButtonBox::rejected, window, &QDialog::close);
  auto *layout = new QVBoxLayout(window);
  layout->addWidget(browser);
  layout->addWidget(buttons);
  window->resize(560, 480);
  window->show();
}

void offer_help(const QString &name, QDialog *dialog) {
  const auto show = [name, dialog] { show_help(name, dialog); };
  QObject::connect(dialog->findChild<QPushButton *>("pHelp_Button"), &QPushButton::clicked, dialog, show);
  QObject::connect(new QShortcut(QKeySequence::HelpContents, dialog), &QShortcut::activated, dialog, show);
}

} // namespace brisel
