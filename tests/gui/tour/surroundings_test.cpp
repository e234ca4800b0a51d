// surroundings_test.cpp - full disks, foreign settings, and names of files that look like something else.
#include "engine/core/display_defaults.h"
#include "engine/core/start_up.h"
#include "tests/gui/main_window/workstation_fixture.h"

#include <QLabel>
#include <QTextBrowser>

#include <functional>

#include <sys/stat.h>

namespace brisel {
namespace {

class SurroundingsTest : public WorkstationTest {
protected:
  /// A FIR design in 16 bits, which every output takes.
  void design_for_every_output() {
    set_start_values();
    quantization_settings.quant = 1;
    design_lowpass();
    dialogs.messages.clear();
  }

  /// Writes by `command` to a full disk and below a file, under names with `extension`.
  void expect_refusal(const std::function<void()> &command, const std::string &extension) {
    for (const std::string &written : {extension, std::string(".gdl"), std::string(".s"), std::string("_ratio.inp")})
      if (!written.empty()) ::symlink("/dev/full", folder.path("full" + written).c_str());
    for (const std::string &name : {"full" + extension, "file/below" + extension}) {
      dialogs.messages.clear();
      dialogs.file_names = {at(name)};
      const auto before = folder.files();
      command();
      EXPECT_TRUE(dialogs.file_names.empty()) << name;
      const QString said = dialogs.messages.join(" | ");
      EXPECT_TRUE(said.contains("written") || said.contains("Unable to open") || said.contains("cannot be opened"))
          << name << ": " << said.toStdString();
      Names changed = differing(before, folder.files());
      changed.erase("config/QtProject.conf"); // the file dialog's own memory
      EXPECT_EQ(changed, Names{}) << name;
    }
  }
};

TEST_F(SurroundingsTest, AnOutputThatCannotBeWrittenIsSaidAndLeavesNothing) {
  using Command = void (cBriselApp::*)();
  const std::pair<Command, const char *> of_any_design[] = {{&cBriselApp::Output_CreateSpecficationFile, ".spc"},
                                                            {&cBriselApp::Output_CreateSystemAnalysisFile, ".inp"},
                                                            {&cBriselApp::Output_CreateFilterCoefficientFile, ".flt"},
                                                            {&cBriselApp::Output_CreateMatlabFile, ".dat"},
                                                            {&cBriselApp::Output_CreateCOSSAPDataset, ".abl"},
                                                            {&cBriselApp::Output_CreateCoefficientDataset, ".dat"},
                                                            {&cBriselApp::Output_CreatePlotDataFiles, ""},
                                                            {&cBriselApp::Codegen_CCode, ".c"},
                                                            {&cBriselApp::Codegen_ADSP218X, ".dsp"},
                                                            {&cBriselApp::Codegen_DSP56800, ".h"},
                                                            {&cBriselApp::Codegen_dsPIC30, ""}};
  folder.write("file", "");
  for (const bool fir : {true, false}) {
    const char *pressed = "pOk_Button";
    dialogs.answer = [&](QDialog &dialog) {
      auto *next = dialog.findChild<QPushButton *>("pNext_Button"), *button = dialog.findChild<QPushButton *>(pressed);
      next ? next->click() : button ? button->click() : dialog.reject();
    };
    dialogs.button = QMessageBox::Yes; // the links exist already
    set_start_values();
    quantization_settings.quant = 1;
    quantization_settings.rtype1 = code(SectionStructure::canonic);
    design_lowpass(fir ? DesignMethod::window : DesignMethod::iir);
    for (const auto &[command, extension] : of_any_design)
      expect_refusal([&, command = command] { (window.get()->*command)(); }, extension);
    if (fir) {
      expect_refusal([&] { window->Analysis_FIRFilterOutput(); }, ".inp");
    } else {
      expect_refusal([&] { window->Analysis_IIRFilterOutput(); }, ".inp");
      pressed = "pAllForms_Button";
      expect_refusal([&] { window->Analysis_IIRFilterOutput(); }, ".inp");
    }
    for (const char *extension : {".png", ".svg", ".pdf"})
      expect_refusal([&] { plot(PlotKind::magnitude).save_picture(); }, extension);
  }
}

TEST_F(SurroundingsTest, FilesOfABaseNameAreReplacedOnlyWhenTheUserSaysSo) {
  design_for_every_output();
  dialogs.answer = [](QDialog &dialog) { dialog.findChild<QPushButton *>("pOk_Button")->click(); };
  folder.write("base.mag", "mine");
  folder.write("base.s", "mine");
  for (const auto button : {QMessageBox::No, QMessageBox::Yes})
    for (const auto &[command, name] :
         {std::pair{&cBriselApp::Output_CreatePlotDataFiles, "base.mag"}, {&cBriselApp::Codegen_dsPIC30, "base.s"}}) {
      dialogs.button = button;
      dialogs.messages.clear();
      dialogs.file_names = {at("base")};
      (window.get()->*command)();
      ASSERT_GE(dialogs.messages.size(), 1) << name;
      EXPECT_TRUE(dialogs.messages[0].contains(QString(name) + " exists already")) << name;
      EXPECT_EQ(folder.read(name) == "mine", button == QMessageBox::No) << name;
    }
}

TEST_F(SurroundingsTest, NamesOfFilesAreData) {
  const std::string name = "<b>&Bold<br> %n%s 100%.spc";
  folder.write(name, "no specification");
  window->load_file(at(name));
  ASSERT_GE(dialogs.messages.size(), 1);
  EXPECT_TRUE(dialogs.messages.last().contains("<b>&Bold<br> %n%s 100%.spc")) << dialogs.messages.last().toStdString();

  const std::string good = brisel::example("lowpass.spc");
  folder.write(name, good);
  design_state.fview = 1;
  design_lowpass();
  dialogs.messages.clear();
  dialogs.button = QMessageBox::Yes;
  dialogs.file_names = {at(name)};
  QList<Qt::TextFormat> formats;
  QTimer watch; // sees the question before it is answered
  QObject::connect(&watch, &QTimer::timeout, [&] {
    if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) formats.append(box->textFormat());
  });
  watch.start(1);
  window->Output_CreateSpecficationFile();
  EXPECT_FALSE(formats.isEmpty());
  for (const Qt::TextFormat format : formats) EXPECT_EQ(format, Qt::PlainText);
  const auto *viewer = window->findChild<QTextBrowser *>();
  ASSERT_TRUE(viewer);
  EXPECT_TRUE(viewer->windowTitle().endsWith("<b>&Bold<br> %n%s 100%.spc"));
  EXPECT_EQ(viewer->toPlainText().toStdString(), folder.read(name));
}

TEST_F(SurroundingsTest, AForeignSetupFileOpensTheWindowWithStartValues) {
  const std::string head = "Brisel System Setup File V6.1\n\n";
  const std::string setups[] = {
      head + "Brisel.back_color: 99 \nBrisel.funct_color: -5 \nBrisel.titles_font: 2147483647 \nBrisel.func_line: 77 \n"
             "Brisel.title_size: -3 \nBrisel.pos_w: 999999999 \nBrisel.pos_h: -1 \nBrisel.filter_type: 99 \n"
             "Brisel.DesignOrAnalysisType: 55 \nBrisel.nfpts: 99999999 \nBrisel.dnimp: -4 \nBrisel.ibit: 5000 \n",
      head + "Brisel.user_name: $(touch hacked) \nBrisel.pp_comd: touch hacked \nBrisel.load_spc: pipe \n",
      std::string(100000, '\xff'), head + std::string(100000, 'A'), std::string("\0\0\0", 3)};
  ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
  for (const std::string &setup : setups) {
    close();
    folder.write("system.brisel", setup);
    open();
    DisplaySettings start{};
    set_display_defaults(start);
    EXPECT_EQ(display_settings.back_color, start.back_color);
    EXPECT_EQ(display_settings.funct_color, start.funct_color);
    EXPECT_TRUE(QRect(0, 0, 4000, 4000).contains(window->geometry()));
    design_lowpass();
    EXPECT_FALSE(plot(PlotKind::magnitude).last_layout().is_empty());
    EXPECT_FALSE(std::filesystem::exists(folder.path("hacked")));
  }
}

} // namespace
} // namespace brisel
