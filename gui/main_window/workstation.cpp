#include "gui/main_window/workstation.h"

#include "gui/main_window/brisel_app.h"

#include <QApplication>
#include <QFontInfo>
#include <QLoggingCategory>
#include <QTimer>

#include <clocale>
#include <cstdio>
#include <cstdlib>

namespace {

int no_display(const char *why) {
  std::fprintf(stderr, "brisel: there is no display to open a window on: %s\n", why);
  return 1;
}

bool is_set(const char *variable) {
  const char *value = std::getenv(variable);
  return value && *value;
}

/// The toolkit says in several lines why it cannot start, and aborts. The program says it in one, and ends.
void while_starting(QtMsgType type, const QMessageLogContext &, const QString &) {
  if (type == QtFatalMsg) std::_Exit(no_display("DISPLAY or QT_QPA_PLATFORM does not lead to one"));
}

} // namespace

extern "C" [[gnu::visibility("default")]] int brisel_workstation(int argc, char **argv) {
  if (!is_set("DISPLAY") && !is_set("WAYLAND_DISPLAY") && !is_set("QT_QPA_PLATFORM"))
    return no_display("DISPLAY is not set");
  // What the toolkit misses, a folder of the session for one, is no news for the user; QT_LOGGING_RULES still asks for
  // it.
  QLoggingCategory::setFilterRules("*.debug=false\n*.info=false\n*.warning=false");
  const QtMessageHandler usual = qInstallMessageHandler(while_starting);
  QApplication application(argc, argv);
  qInstallMessageHandler(usual);
  std::setlocale(LC_NUMERIC, "C"); // the toolkit has set the user's
  if (QFontInfo(QApplication::font()).family().isEmpty()) {
    std::fprintf(stderr, "brisel: no fonts are installed: install fontconfig and fonts-liberation\n");
    return 1;
  }
  QApplication::setApplicationName("Brisel");
  QApplication::setApplicationVersion(BRISEL_VERSION);
  QApplication::setDesktopFileName("brisel");
  brisel::cBriselApp window;
  QObject::connect(&application, &QApplication::lastWindowClosed, &window, &brisel::cBriselApp::quit);
  window.show();
  const QStringList arguments = QApplication::arguments();
  if (arguments.size() > 1) QTimer::singleShot(0, &window, [&] { window.load_file(arguments[1]); });
  return QApplication::exec();
}
