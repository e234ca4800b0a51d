// The module of the workstation in a program: one engine for both, and a clear word when it cannot open.
#include "engine/core/design_state.h"
#include "gui/main_window/workstation_loader.h"
#include "tests/batch/run_brisel.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QTimer>

namespace brisel {
namespace {

bool seen_by_the_program = false;

/// Runs inside the workstation's own application, but with the program's symbols.
void watch() {
  auto *timer = new QTimer(qApp);
  QObject::connect(timer, &QTimer::timeout, [polls = 0]() mutable {
    if (QWidget *page = QApplication::activeModalWidget())
      if (auto *next = page->findChild<QAbstractButton *>("pNext_Button")) next->click();
    seen_by_the_program = design_record.valid && design_record.fir.length > 10;
    if (seen_by_the_program || ++polls > 1000) QApplication::closeAllWindows();
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
  std::string name = "brisel", file = BRISEL_SOURCE_DIR "/examples/lowpass.spc";
  char *arguments[] = {name.data(), file.data(), nullptr};
  EXPECT_EQ(run_workstation(MODULE_FOLDER, 2, arguments), 0);
  EXPECT_TRUE(seen_by_the_program);
  EXPECT_TRUE(folder.files().contains("system.brisel"));
  ASSERT_EQ(::chdir("/"), 0);
}

TEST(WorkstationModule, MissingModuleOrDisplayGivesOneLine) {
  Workshop folder;
  std::filesystem::copy(BRISEL_EXECUTABLE, folder.path("alone"));
  const struct {
    std::string program, environment, says;
  } rows[] = {
      {BRISEL_EXECUTABLE, "env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM", "DISPLAY is not set"},
      {BRISEL_EXECUTABLE, "env -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM DISPLAY=:4711", "no display"},
      {BRISEL_EXECUTABLE, "env QT_QPA_PLATFORM=no_such_platform", "no display"},
      {folder.path("alone"), "env QT_QPA_PLATFORM=offscreen", "brisel_workstation.so is neither in"},
  };
  for (const auto &row : rows) {
    const std::string command =
        "cd " + folder.path("") + " && timeout 60 " + row.environment + " " + row.program + " >out 2>err </dev/null";
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
