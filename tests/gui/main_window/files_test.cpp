// Loading, saving and the rules of file names.
#include "engine/analysis/plot_arrays.h"
#include "engine/files/spec_file.h"
#include "gui/main_window/file_dialogs.h"
#include "gui/main_window/recent_files.h"
#include "tests/gui/main_window/workstation_fixture.h"

#include <QDropEvent>
#include <QMimeData>
#include <QTextBrowser>

namespace brisel {
namespace {

TEST(FileNames, GetTheExtensionOfTheFilter) {
  const struct {
    const char *typed, *filter, *name;
  } rows[] = {
      {"design", "Filter Specification (*.spc)", "design.spc"},
      {"design.spc", "Filter Specification (*.spc)", "design.spc"},
      {"design.flt", "Filter Specification (*.spc)", "design.flt.spc"},
      {"code", "C Code (*.c)", "code.c"},
      {"code.c", "C Code (*.c)", "code.c"},
      {"words", "C Filter Coefficients (*.h)", "words.h"},
      {"words", "ADSP 218x assembly file (*.dsp)", "words.dsp"},
      {"base", "Plot data base file name (*)", "base"},
      {"two", "Two (*.ab)", "two.ab"},
      {"none", "", "none"},
  };
  for (const auto &row : rows) EXPECT_EQ(with_extension(row.typed, row.filter), row.name) << row.typed << row.filter;
}

TEST_F(WorkstationTest, ASpecificationIsLoadedDesignedAndSavedAgain) {
  design_state.DesignOrAnalysisType = code(DesignMethod::window);
  dialogs.file_names = {QString::fromStdString(example("bandpass.spc")), at("again")};
  menu_item("Load &Specifications ...")->trigger();
  ASSERT_TRUE(window->has_result());
  EXPECT_EQ(design_state.filter_type, code(FilterType::band_pass));
  menu_item("Create &Specification File ...")->trigger();
  std::ifstream in(example("bandpass.spc"));
  EXPECT_EQ(folder.read("again.spc"), std::string(std::istreambuf_iterator<char>(in), {}));
  EXPECT_EQ(dialogs.captions,
            (QStringList{"Load Filter Specification File", "FIR Design", "Bandpass or Bandstop Filter",
                         "FIR Window Design", "Create Filter Specification File"}));
}

TEST_F(WorkstationTest, AnExistingFileIsReplacedOnlyWhenTheUserSaysSo) {
  design_lowpass();
  folder.write("mine.spc", "precious");
  dialogs.button = QMessageBox::No; // goes back to the file dialog, which is cancelled the second time
  dialogs.file_names = {at("mine")};
  window->Output_CreateSpecficationFile();
  EXPECT_EQ(folder.read("mine.spc"), "precious");
  dialogs.button = QMessageBox::Yes;
  dialogs.file_names = {at("mine")};
  window->Output_CreateSpecficationFile();
  EXPECT_TRUE(folder.read("mine.spc").starts_with("FILTER SPECIFICATION FILE"));
}

TEST_F(WorkstationTest, ASystemIsLoadedAnalysedAndSavedAgain) {
  dialogs.file_names = {QString::fromStdString(example("biquads.inp")), at("again"), at("taps")};
  menu_item("Load System &Analysis ...")->trigger();
  ASSERT_TRUE(window->has_result());
  EXPECT_EQ(design_record.selections.DesignOrAnalysisType, code(DesignMethod::z_analysis));
  const double magnitude = plot_arrays.magnitude[100];
  menu_item("Create System &Analysis File ...")->trigger();
  menu_item("Create &Filter Coefficient File ...")->trigger();
  for (const char *file : {"again.inp", "taps.flt"}) {
    plot_arrays.magnitude[100] = -1;
    window->load_file(at(file));
    EXPECT_NEAR(plot_arrays.magnitude[100], magnitude, 1e-6 * magnitude) << file; // the files carry 8 digits
  }
  EXPECT_EQ(dialogs.messages, QStringList{});
}

TEST_F(WorkstationTest, AFailedLoadLeavesTheDesignAndSaysWhy) {
  design_lowpass();
  const auto taps = design_record.fir.length;
  folder.write("bad.spc", "FILTER SPECIFICATION FILE\nnonsense\n");
  folder.write("bad.flt", "nonsense\n");
  folder.write("notes.txt", "nonsense\n");
  const struct {
    const char *name, *says;
  } rows[] = {{"bad.spc", "could not be loaded"},
              {"missing.spc", "could not be opened"},
              {"bad.flt", "could not be loaded"},
              {"notes.txt", "does not know this kind"}};
  for (const auto &row : rows) {
    dialogs.messages.clear();
    window->load_file(row.name);
    EXPECT_TRUE(dialogs.messages.join('|').contains(row.says)) << row.name << dialogs.messages.join('|').toStdString();
    EXPECT_TRUE(dialogs.messages.join('|').contains(row.name));
    EXPECT_TRUE(window->has_result());
    EXPECT_EQ(design_record.fir.length, taps);
  }
}

TEST_F(WorkstationTest, ADroppedFileIsLoaded) {
  design_state.DesignOrAnalysisType = code(DesignMethod::window);
  QMimeData content;
  content.setUrls({QUrl::fromLocalFile(QString::fromStdString(example("highpass.spc")))});
  QDragEnterEvent enter({10, 10}, Qt::CopyAction, &content, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(window.get(), &enter);
  EXPECT_TRUE(enter.isAccepted());
  QDropEvent drop({10, 10}, Qt::CopyAction, &content, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(window.get(), &drop);
  QTest::qWait(50);
  EXPECT_TRUE(window->has_result());
  EXPECT_EQ(design_state.filter_type, code(FilterType::high_pass));
}

TEST_F(WorkstationTest, TheLastTenFilesAreKeptNewestFirst) {
  for (int i = 0; i < 12; i++) {
    const std::string name = "f" + std::to_string(i) + ".spc";
    folder.write(name, "");
    remember_recent_file(at(name));
  }
  remember_recent_file(at("f5.spc"));
  std::filesystem::remove(folder.path("f11.spc"));
  const QStringList files = recent_files();
  ASSERT_EQ(files.size(), 9) << "the deleted one is left out";
  EXPECT_TRUE(files[0].endsWith("f5.spc"));
  EXPECT_TRUE(files[1].endsWith("f10.spc"));
  EXPECT_EQ(files.filter("f5.spc").size(), 1);
}

TEST_F(WorkstationTest, AWrittenTextFileIsShownWhenAskedFor) {
  design_lowpass();
  design_state.fview = 1;
  dialogs.file_names = {at("taps")};
  window->Output_CreateFilterCoefficientFile();
  auto *viewer = window->findChild<QTextBrowser *>();
  ASSERT_TRUE(viewer);
  EXPECT_TRUE(viewer->isReadOnly());
  EXPECT_TRUE(viewer->windowTitle().endsWith("taps.flt"));
  EXPECT_EQ(viewer->toPlainText().toStdString(), folder.read("taps.flt"));
}

TEST_F(WorkstationTest, PlotDataFilesAreWrittenForTheCheckedBoxes) {
  design_lowpass();
  dialogs.answer = [](QDialog &dialog) {
    dialog.findChild<QAbstractButton *>("pPhase_Box")->setChecked(false);
    dialog.accept();
  };
  dialogs.file_names = {at("base")};
  window->Output_CreatePlotDataFiles();
  for (const char *name : {"base.gdl", "base.imp", "base.lmn", "base.mag", "base.stp"})
    EXPECT_GT(folder.read(name).size(), 1000u) << name;
  EXPECT_FALSE(folder.files().contains("base.pha"));
  dialogs.file_names = {at("missing/base")};
  window->Output_CreatePlotDataFiles();
  ASSERT_EQ(dialogs.messages.size(), 1);
  EXPECT_TRUE(dialogs.messages[0].endsWith("missing/base.gdl\nfor write access. Aborting."));
  EXPECT_TRUE(dialogs.messages[0].startsWith("Unable to open "));
}

} // namespace
} // namespace brisel
