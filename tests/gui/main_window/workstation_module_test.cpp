// The module of the workstation in a program: one engine for both, and a clear word when it cannot open.
#include "engine/core/design_state.h"
#include "engine/files/spec_file.h"
#include "gui/main_window/workstation_loader.h"
#include "tests/batch/run_brisel.h"
#include "tests/support/source_folder.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QTimer>

#include <clocale>
#include <csignal>
#include <ctime>

namespace brisel {
namespace {

bool seen_by_the_program = false;

/// Runs inside the workstation's own application, but with the program's symbols.
void watch() {
  auto *timer = new QTimer(qApp);
  QObject::connect(timer, &QTimer::timeout, [] {
    if (QWidget *page = QApplication::activeModalWidget())
      if (auto *next = page->findChild<QAbstractButton *>("pNext_Button")) next->click();
    seen_by_the_program = design_record.valid && design_record.fir.length > 10;
    const bool hangs = std::clock() > 20 * CLOCKS_PER_SEC; // processor time: the machine may have other work
    if (seen_by_the_program || hangs) QApplication::closeAllWindows();
  });
  timer->start(10);
}
Q_COREAPP_STARTUP_FUNCTION(watch)

TEST(WorkstationModule, DesignsIntoTheStateOfTheProgram) {
  Workshop folder;
  ASSERT_EQ(::chdir(folder.path("").c_str()), 0);
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  setenv("XDG_CONFIG_HOME", folder.path("config").c_str(), 1);
  folder.write("system.brisel", "Brisel System Setup File V6.1\n\nBrisel.DesignOrAnalysisType: 1 \n");
  std::string name = "brisel", file = source_file("examples/lowpass.spc");
  char *arguments[] = {name.data(), file.data(), nullptr};
  EXPECT_EQ(run_workstation(MODULE_FOLDER, 2, arguments), 0);
  EXPECT_TRUE(seen_by_the_program);
  EXPECT_TRUE(folder.files().contains("system.brisel"));
  ASSERT_EQ(::chdir("/"), 0);
}

// What the child of a death test finds when it has run the workstation on examples/lowpass.spc.
[[noreturn]] void save_the_same_numbers(const Workshop &folder) {
  std::string name = "brisel", file = source_file("examples/lowpass.spc");
  char *arguments[] = {name.data(), file.data(), nullptr};
  const int result = run_workstation(MODULE_FOLDER, 2, arguments);
  const bool foreign = std::string(std::setlocale(LC_TIME, nullptr)) == "de_DE.UTF-8";
  const bool saved = write_filter_spec(folder.path("saved.spc"), *current_spec);
  const bool same = folder.read("saved.spc") == example("lowpass.spc");
  std::fprintf(stderr, "result %d, designed %d, locale %d, saved %d, same %d", result, seen_by_the_program, foreign,
               saved, same);
  std::exit(0);
}

TEST(WorkstationModule, ADecimalCommaAndAMissingHomeChangeNoNumber) {
  GTEST_FLAG_SET(death_test_style, "threadsafe"); // a fresh process: the toolkit takes the locale once
  Workshop folder;
  ASSERT_EQ(std::system(("localedef -i de_DE -f UTF-8 '" + folder.path("de_DE.UTF-8") + "' >/dev/null 2>&1").c_str()),
            0)
      << "the package locales is missing";
  folder.write("system.brisel", "Brisel System Setup File V6.1\n\nBrisel.DesignOrAnalysisType: 1 \n");
  ASSERT_EQ(::chdir(folder.path("").c_str()), 0);
  const auto run = [&] {
    for (const char *variable : {"XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "LANG"}) unsetenv(variable);
    setenv("HOME", "/nonexistent", 1);
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("LOCPATH", folder.path("").c_str(), 1);
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    save_the_same_numbers(folder);
  };
  // Nothing but its own line: the toolkit keeps quiet.
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "^result 0, designed 1, locale 1, saved 1, same 1$");
  ASSERT_EQ(::chdir("/"), 0);
}

// Started with its streams closed, a file that the program opens must not get their numbers, or what is meant for
// standard error goes into it; and a reader of standard error that goes away must not end the session.
TEST(WorkstationModule, LendsNoStandardStreamAndOutlivesItsReader) {
  Workshop folder;
  // From the outside, once it runs.
  const std::string command = "cd " + folder.path("") + "; ulimit -t 60; QT_QPA_PLATFORM=offscreen " +
                              brisel_program() +
                              " <&- >&- 2>&- & child=$!; "
                              "until test -e SFIL.OUT || ! kill -0 $child; do sleep 0.02; done; "
                              "for i in 0 1 2; do readlink /proc/$child/fd/$i; done >fds; "
                              "grep SigIgn /proc/$child/status >signals; kill $child; wait";
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(folder.read("fds"), "/dev/null\n/dev/null\n/dev/null\n");
  const std::string signals = folder.read("signals");
  ASSERT_GT(signals.size(), 8u);
  const unsigned long ignored = std::stoul(signals.substr(8), nullptr, 16);
  for (const int signal : {SIGPIPE, SIGXFSZ}) EXPECT_TRUE(ignored >> (signal - 1) & 1) << signal;
}

TEST(WorkstationModule, MissingModuleOrDisplayGivesOneLine) {
  Workshop folder;
  std::filesystem::copy(brisel_program(), folder.path("alone"));
  folder.write("fonts.conf", "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"fonts.dtd\"><fontconfig>"
                             "<dir>/nonexistent</dir></fontconfig>");
  const struct {
    std::string program, environment, says;
  } rows[] = {
      {brisel_program(), "env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM", "DISPLAY is not set"},
      {brisel_program(), "env -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM DISPLAY=:4711", "no display"},
      {brisel_program(), "env QT_QPA_PLATFORM=no_such_platform", "no display"},
      {brisel_program(), "env QT_QPA_PLATFORM=offscreen FONTCONFIG_FILE=" + folder.path("fonts.conf"), "no fonts"},
      {folder.path("alone"), "env QT_QPA_PLATFORM=offscreen", "brisel_workstation.so is neither in"},
  };
  for (const auto &row : rows) {
    const std::string command = "cd " + folder.path("") + " && ulimit -t 60 && timeout 280 " + row.environment + " " +
                                row.program + " >out 2>err </dev/null";
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1) << row.environment;
    const std::string said = folder.read("err");
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    EXPECT_NE(said.find(row.says), said.npos) << said;
    EXPECT_TRUE(said.starts_with("brisel: ")) << said;
    EXPECT_EQ(folder.read("out"), "");
  }
}

} // namespace
} // namespace brisel
