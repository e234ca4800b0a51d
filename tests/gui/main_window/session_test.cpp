// Start and end of a session, and long runs.
#include "engine/analysis/plot_arrays.h"
#include "gui/main_window/workstation_loader.h"
#include "tests/gui/main_window/workstation_fixture.h"

#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>
#include <QStatusTipEvent>

namespace brisel {
namespace {

TEST_F(WorkstationTest, SettingsAndPlaceReturnInTheNextSession) {
  EXPECT_TRUE(dialogs.messages.isEmpty()) << "a missing setup file is normal";
  window->setGeometry(60, 70, 700, 540);
  QCoreApplication::processEvents();
  const QPoint place = window->pos();
  display_settings.funct_color = 2;
  window->select_plot(PlotKind::phase, false);
  close();
  EXPECT_TRUE(folder.read("system.brisel").starts_with("Brisel System Setup File V6.1"));
  window = std::make_unique<cBriselApp>();
  EXPECT_EQ(window->size(), QSize(700, 540));
  EXPECT_EQ(window->pos(), place);
  EXPECT_EQ(display_settings.funct_color, 2);
  window->show();
  EXPECT_FALSE(window->plot_window(PlotKind::phase)->isVisible());
  EXPECT_TRUE(window->plot_window(PlotKind::magnitude)->isVisible());
}

TEST_F(WorkstationTest, APlaceOutsideTheScreenIsNotTaken) {
  close();
  folder.write("system.brisel", "Brisel System Setup File V6.1\n\nBrisel.pos_x: 90000 \nBrisel.pos_y: -9000 \n"
                                "Brisel.pos_w: 800 \nBrisel.pos_h: 600 \n");
  window = std::make_unique<cBriselApp>();
  EXPECT_TRUE(QRect(0, 0, 5000, 5000).contains(window->pos()));
}

TEST_F(WorkstationTest, ExitModesKeepDiscardAndForget) {
  const struct {
    ExitMode mode;
    bool setup, trace;
  } rows[] = {{ExitMode::discard, false, true}, {ExitMode::save, true, true}, {ExitMode::defaults, false, false}};
  for (const auto &row : rows) {
    if (!window) open();
    window->exit_mode = row.mode;
    close();
    EXPECT_EQ(folder.files().contains("system.brisel"), row.setup) << static_cast<int>(row.mode);
    EXPECT_EQ(folder.files().contains("SFIL.STA"), row.trace) << static_cast<int>(row.mode);
  }
}

TEST_F(WorkstationTest, ASetupFileThatCannotBeWrittenIsToldOnce) {
  std::filesystem::create_directory(folder.path("system.brisel"));
  folder.write("system.brisel/in the way", "");
  close();
  ASSERT_EQ(dialogs.messages.size(), 1);
  EXPECT_TRUE(dialogs.messages[0].contains("system.brisel"));
}

TEST_F(WorkstationTest, ALongRunShowsItsProgressAndHoldsTheWindow) {
  auto *bar = window->findChild<QProgressBar *>();
  auto *stop = window->findChild<QPushButton *>("Stop_Button");
  ASSERT_TRUE(bar && stop);
  front_end->announce("Working...");
  EXPECT_EQ(window->statusBar()->currentMessage(), "Working...");
  EXPECT_TRUE(front_end->progress(0.1));
  EXPECT_FALSE(bar->isVisible()) << "a short run shows no bar";
  QTest::qSleep(350);
  EXPECT_TRUE(front_end->progress(0.5));
  EXPECT_TRUE(bar->isVisible());
  EXPECT_EQ(bar->value(), 500);
  EXPECT_FALSE(window->menuBar()->isEnabled());
  window->close();
  EXPECT_TRUE(window->isVisible()) << "closing waits for the run";
  EXPECT_FALSE(front_end->progress(0.6)) << "which is asked to end";
  front_end->announce("Ready");
  EXPECT_FALSE(bar->isVisible());
  EXPECT_TRUE(window->menuBar()->isEnabled());
  QTest::qWait(20);
  EXPECT_FALSE(window->isVisible());
}

TEST_F(WorkstationTest, TheStopButtonEndsTheRun) {
  front_end->announce("Working...");
  QTest::qSleep(350);
  EXPECT_TRUE(front_end->progress(0.5));
  QTest::mouseClick(window->findChild<QPushButton *>("Stop_Button"), Qt::LeftButton);
  EXPECT_FALSE(front_end->progress(0.6));
  front_end->announce("Ready");
  EXPECT_EQ(window->statusBar()->currentMessage(), "Ready");
  front_end->announce("Working...");
  EXPECT_TRUE(front_end->progress(0.1)) << "the next run begins afresh";
  front_end->announce("Ready");
}

TEST_F(WorkstationTest, ARunWithoutAResultPutsTheEarlierDesignBack) {
  design_lowpass();
  const std::vector<double> magnitude(plot_arrays.magnitude.begin(), plot_arrays.magnitude.end());
  const int taps = design_record.fir.length;
  const FilterSpec designed = *current_spec;
  const double half = plot_settings.frequency_range[1];
  auto *stop = window->findChild<QPushButton *>("Stop_Button");
  auto *end = window->findChild<QLabel *>("RunEnd_Label");
  const auto labels = [&] {
    QStringList texts;
    for (const QLabel *label : window->statusBar()->findChildren<QLabel *>())
      if (label != end) texts.append(label->text());
    return texts;
  };
  const QStringList captions = labels();
  const struct {
    const char *label;
    DesignMethod method;
    void (*change)(FilterSpec &);
  } rows[] = {
      {"Stopped", DesignMethod::equiripple, // a transition band of 6 Hz at 8 kHz: some thousand taps
       [](FilterSpec &s) { s.stopband_edge[0] = s.passband_edge[0] + 6 * two_pi; }},
      {"Failed", DesignMethod::linear_programming,
       [](FilterSpec &s) {
         s.sampling_frequency *= 2; // and other plot ranges
         s.length = max_taps;       // there are not so many points
       }},
      {"Refused", DesignMethod::window, [](FilterSpec &s) { s.stopband_ripple = -1; }},
  };
  QTimer watch;
  bool was_offered = false;
  QObject::connect(&watch, &QTimer::timeout, [&] {
    if (!stop->isVisible()) return QTest::qSleep(100); // the run must last until the button shows
    was_offered = true;
    EXPECT_EQ(window->statusBar()->currentMessage(), "Working...");
    EXPECT_FALSE(window->has_result()) << "nothing half made is shown";
    QTest::mouseClick(stop, Qt::LeftButton);
  });
  for (const auto &row : rows) {
    SCOPED_TRACE(row.label);
    design_state.FrequencyMode = 1; // of the run that fails
    row.change(*current_spec = designed);
    if (row.method == DesignMethod::equiripple) watch.start(10);
    design_state.DesignOrAnalysisType = code(row.method);
    dialogs.answer = [](QDialog &dialog) { dialog.done(QDialog::Accepted); };
    window->Filter_StartDesign();
    watch.stop();
    EXPECT_TRUE(end->isVisible());
    EXPECT_EQ(end->text(), QString(row.label) + ": the previous design is shown");
    EXPECT_EQ(labels(), captions);
    EXPECT_TRUE(window->has_result());
    EXPECT_EQ(design_record.fir.length, taps);
    EXPECT_EQ(plot_settings.frequency_range[1], half);
    EXPECT_TRUE(std::equal(magnitude.begin(), magnitude.end(), plot_arrays.magnitude.begin()));
    EXPECT_FALSE(plot_state.radians);
    EXPECT_EQ(window->statusBar()->currentMessage(), "Ready");
    take_screenshot(*window, row.label);
  }
  EXPECT_TRUE(was_offered);
  EXPECT_EQ(dialogs.messages.size(), 2) << "of what failed and what was refused";
  dialogs.file_names = {at("shown")};
  window->Output_CreateSpecficationFile();
  window->recompute_responses();
  EXPECT_TRUE(end->isVisible());
  design_lowpass();
  EXPECT_FALSE(end->isVisible());
  dialogs.file_names = {at("loaded")};
  window->Output_CreateSpecficationFile();
  EXPECT_EQ(folder.read("shown.spc"), folder.read("loaded.spc")) << "the specification of the design shown";
}

TEST_F(WorkstationTest, TheStateSurvivesAStatusTip) {
  QStatusTipEvent tip("Lowpass filter"), gone("");
  QCoreApplication::sendEvent(window.get(), &tip);
  EXPECT_EQ(window->statusBar()->currentMessage(), "Lowpass filter");
  QCoreApplication::sendEvent(window.get(), &gone);
  EXPECT_EQ(window->statusBar()->currentMessage(), "Ready");
}

TEST(CommandLine, TellsTheWorkstationFromABatchJob) {
  const struct {
    std::vector<const char *> arguments;
    bool workstation;
  } rows[] = {{{"brisel"}, true},
              {{"brisel", "a.spc"}, true},
              {{"brisel", "dir/B.FLT"}, true},
              {{"brisel", "x.inp"}, true},
              {{"brisel", "--help"}, false},
              {{"brisel", "design"}, false},
              {{"brisel", ""}, false},
              {{"brisel", "a.c"}, false},
              {{"brisel", "design", "a.spc"}, false},
              {{"brisel", "a.spc", "b.spc"}, false}};
  for (const auto &row : rows)
    EXPECT_EQ(wants_workstation(static_cast<int>(row.arguments.size()), row.arguments.data()), row.workstation)
        << row.arguments.back();
}

} // namespace
} // namespace brisel
