// workstation_fixture.h - a workstation in a folder of its own, with somebody who answers its dialogs.
#pragma once

#include "engine/core/design_state.h"
#include "gui/main_window/brisel_app.h"
#include "gui/main_window/brisel_mdi_child.h"
#include "tests/batch/run_brisel.h"
#include "tests/support/source_folder.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>

#include <deque>
#include <functional>

namespace brisel {

/// With BRISEL_SCREENSHOTS=FOLDER in the environment, every window that the tests meet leaves its picture there.
inline void take_screenshot(QWidget &shown, QString name = {}) {
  const QString folder = qEnvironmentVariable("BRISEL_SCREENSHOTS");
  if (folder.isEmpty()) return;
  if (name.isEmpty()) name = shown.objectName().isEmpty() ? shown.windowTitle() : shown.objectName();
  shown.grab().save(folder + "/" + name.replace(QRegularExpression("[^A-Za-z0-9_]+"), "-") + ".png");
}

/// Answers modal windows as they open: message boxes are read and closed, file dialogs get the next of `file_names`,
/// else what `name_file` says, or are cancelled, other dialogs go to `answer`, which goes on through the pages of a run
/// and cancels what is no page.
class DialogAnswerer {
public:
  DialogAnswerer() {
    QObject::connect(&timer, &QTimer::timeout, [this] { look(); });
    timer.start(5);
  }

  void pause() { timer.stop(); }
  void resume(int milliseconds = 5) { timer.start(milliseconds); }

  QStringList messages; // texts of message boxes
  QStringList captions; // of all modal windows
  std::deque<QString> file_names;
  std::function<QString(const QFileDialog &)> name_file;
  std::function<void(QDialog &)> answer = [](QDialog &dialog) {
    auto *next = dialog.findChild<QPushButton *>("pNext_Button");
    next && next->isEnabled() ? next->click() : dialog.reject();
  };
  QMessageBox::StandardButton button = QMessageBox::Ok; // of boxes that have it

private:
  void look() {
    if (QWidget *menu = QApplication::activePopupWidget()) {
      menu->close();
      return;
    }
    auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
    if (!dialog || !dialog->isVisible()) return;
    take_screenshot(*dialog);
    if (captions.isEmpty() || captions.last() != dialog->windowTitle()) captions.append(dialog->windowTitle());
    if (auto *box = qobject_cast<QMessageBox *>(dialog)) {
      messages.append(box->text());
      QAbstractButton *pressed = box->button(button);
      pressed ? pressed->click() : box->accept();
    } else if (auto *files = qobject_cast<QFileDialog *>(dialog)) {
      if (file_names.empty() && name_file)
        if (const QString name = name_file(*files); !name.isEmpty()) file_names = {name};
      if (file_names.empty()) return files->reject();
      files->selectFile(file_names.front());
      QMetaObject::invokeMethod(files, "accept");
      if (!files->isVisible()) file_names.pop_front(); // else it is still reading its folder
    } else {
      answer(*dialog);
    }
  }

  QTimer timer;
};

class WorkstationTest : public testing::Test {
protected:
  void SetUp() override {
    ASSERT_EQ(::chdir(folder.path("").c_str()), 0);
    setenv("XDG_CONFIG_HOME", folder.path("config").c_str(), 1);
    open();
  }
  void TearDown() override {
    window.reset();
    ASSERT_EQ(::chdir("/"), 0);
  }

  void open() {
    window = std::make_unique<cBriselApp>();
    window->resize(1280, 800);
    window->show();
    QCoreApplication::processEvents();
  }
  void close() {
    window->close();
    window.reset();
  }

  static std::string example(const std::string &name) { return source_file("examples/") + name; }
  QString at(const std::string &name) const { return QString::fromStdString(folder.path(name)); }
  /// Designs examples/lowpass.spc.
  void design_lowpass(DesignMethod method = DesignMethod::window) {
    design_state.DesignOrAnalysisType = code(method);
    window->load_file(QString::fromStdString(example("lowpass.spc")));
    ASSERT_TRUE(window->has_result());
    QCoreApplication::processEvents();
  }
  /// A plot window that has been drawn.
  cBriselMdiChild &plot(PlotKind kind) {
    cBriselMdiChild &child = *window->plot_window(kind);
    if (child.last_layout().is_empty()) child.grab(); // lays it out
    return child;
  }
  QAction *menu_item(const QString &text) {
    for (QAction *action : window->menuBar()->findChildren<QAction *>())
      if (action->text() == text) return action;
    return nullptr;
  }

  /// An item of the menus by keys: Alt and the letter of its menu, down to the item, right into a menu within.
  void choose(const QString &text) {
    QAction *at = menu_item(text);
    ASSERT_TRUE(at) << text.toStdString();
    std::deque<std::pair<QMenu *, QAction *>> path;
    for (QMenu *in = menu_of(at); in; at = in->menuAction(), in = menu_of(at)) path.push_front({in, at});
    window->activateWindow();
    QCoreApplication::processEvents();
    const QKeySequence letter = QKeySequence::mnemonic(path.front().first->title());
    QTest::keyClick(window.get(), letter[0].key(), letter[0].keyboardModifiers());
    for (const auto &[menu, item] : path) {
      ASSERT_EQ(QApplication::activePopupWidget(), menu) << text.toStdString();
      QTest::keyClick(menu, Qt::Key_Home);
      for (int step = 0; menu->activeAction() != item && step < 30; step++) QTest::keyClick(menu, Qt::Key_Down);
      QTest::keyClick(menu, item->menu() ? Qt::Key_Right : Qt::Key_Return);
    }
  }
  static QMenu *menu_of(const QAction *action) {
    for (QObject *object : action->associatedObjects())
      if (auto *menu = qobject_cast<QMenu *>(object); menu && !menu->title().isEmpty()) // that of a narrow bar has none
        return menu;
    return nullptr;
  }

  Workshop folder;
  DialogAnswerer dialogs;
  std::unique_ptr<cBriselApp> window;
};

} // namespace brisel
