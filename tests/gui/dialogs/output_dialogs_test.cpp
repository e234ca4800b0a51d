// output_dialogs_test.cpp - the commands that write systems and numbers, driven by clicks.
#include "codegen/data_files.h"
#include "engine/core/front_end.h"
#include "tests/gui/main_window/workstation_fixture.h"

#include <QLabel>
#include <QPlainTextEdit>

namespace brisel {
namespace {

class OutputDialogsTest : public WorkstationTest {
protected:
  void SetUp() override {
    WorkstationTest::SetUp();
    set_start_values();
  }
  void TearDown() override {
    set_start_values();
    WorkstationTest::TearDown();
  }
  /// Pages of a run are passed, other dialogs answered.
  void answer_with(std::function<void(QDialog &)> step) {
    dialogs.answer = [step](QDialog &dialog) {
      if (auto *next = dialog.findChild<QPushButton *>("pNext_Button")) return next->click();
      step(dialog);
    };
  }
  void design_iir() {
    design_state.DesignOrAnalysisType = code(DesignMethod::iir);
    answer_with([](QDialog &dialog) { dialog.reject(); });
    window->load_file(QString::fromStdString(example("lowpass.spc")));
    ASSERT_TRUE(window->has_result());
  }
  static void press(QDialog &dialog, const char *button) {
    auto *found = dialog.findChild<QAbstractButton *>(button);
    ASSERT_TRUE(found) << button;
    QTest::mouseClick(found, Qt::LeftButton, {}, QPoint(10, found->height() / 2)); // radio buttons react on their text
  }
  static QString problem(const QDialog &dialog) { return dialog.findChild<QLabel *>("pProblem_Label")->text(); }
  static std::string text_of(const DataText &text) { return std::get<std::string>(text); }
};

TEST_F(OutputDialogsTest, MatlabFilesAreNamedAfterTheKindOfDesign) {
  design_iir();
  dialogs.file_names = {at("sections")};
  menu_item("Create &Matlab File ...")->trigger();
  EXPECT_EQ(dialogs.captions.last(), "Create MatLab IIR second order section matrix");
  EXPECT_EQ(folder.read("sections.dat"), text_of(matlab_text()));
  design_lowpass();
  dialogs.file_names = {at("taps")};
  menu_item("Create &Matlab File ...")->trigger();
  EXPECT_EQ(dialogs.captions.last(), "Create MatLab FIR row vector");
  EXPECT_EQ(folder.read("taps.dat"), text_of(matlab_text()));
  EXPECT_EQ(dialogs.messages, QStringList{});
  window->load_file(QString::fromStdString(example("biquads.inp")));
  menu_item("Create &Matlab File ...")->trigger();
  ASSERT_EQ(dialogs.messages.size(), 1);
  EXPECT_TRUE(dialogs.messages[0].contains("MatLab")) << dialogs.messages[0].toStdString();
}

TEST_F(OutputDialogsTest, ADatasetAsksForItsFormatAndKeepsIt) {
  design_lowpass();
  answer_with([](QDialog &dialog) {
    press(dialog, "pFormat0_Button");
    EXPECT_FALSE(dialog.findChild<QPushButton *>("pOk_Button")->isEnabled());
    EXPECT_TRUE(problem(dialog).contains("not quantized in fixed point"));
    press(dialog, "pFormat1_Button");
    press(dialog, "pComments_Box");
    press(dialog, "pOk_Button");
  });
  dialogs.file_names = {at("numbers")};
  menu_item("Create C&oCentric Dataset ...")->trigger();
  EXPECT_EQ(folder.read("numbers.abl"), text_of(cocentric_text(DatasetFormat::real, true)));
  EXPECT_EQ(design_state.COSSAPDataCommentSwitch, 1);

  quantization_settings.quant = quantization_settings.qtype = 1;
  answer_with([](QDialog &dialog) { dialog.reject(); });
  window->Filter_StartDesign();
  answer_with([](QDialog &dialog) {
    EXPECT_TRUE(dialog.findChild<QAbstractButton *>("pComments_Box")->isChecked()) << "from the last time";
    press(dialog, "pFormat0_Button");
    press(dialog, "pOk_Button");
  });
  folder.write("words.abl", "precious");
  dialogs.button = QMessageBox::No; // the file is kept
  dialogs.file_names = {at("words")};
  menu_item("Create C&oCentric Dataset ...")->trigger();
  EXPECT_EQ(folder.read("words.abl"), "precious");
  dialogs.button = QMessageBox::Yes;
  dialogs.file_names = {at("words")};
  menu_item("Create C&oCentric Dataset ...")->trigger();
  EXPECT_EQ(folder.read("words.abl"), text_of(cocentric_text(DatasetFormat::integer, true)));
  EXPECT_EQ(design_state.COSSAPDataFormat, 0);
  for (const auto &[name, content] : folder.files()) EXPECT_FALSE(name.ends_with(".flt")) << name;
}

TEST_F(OutputDialogsTest, TheViewsOfCoefficientsWriteADataset) {
  const struct {
    bool fir;
    const char *item;
  } rows[] = {{true, "&FIR Coefficients ..."}, {false, "IIR &Quantized Z Domain Data ..."}};
  for (const auto &row : rows) {
    quantization_settings.quant = quantization_settings.qtype = 1;
    row.fir ? design_lowpass() : design_iir();
    dialogs.file_names = {at(row.fir ? "fir" : "iir")};
    bool asked = false;
    answer_with([&](QDialog &dialog) {
      if (!dialog.findChild<QPlainTextEdit *>("pText_Edit")) { // the options
        press(dialog, "pNotation2_Button");
        press(dialog, "pStage0_Button");
        EXPECT_TRUE(problem(dialog).contains("Only the quantized"));
        press(dialog, "pStage1_Button");
        press(dialog, "pLayout2_Button");
        press(dialog, "pOk_Button");
        return;
      }
      if (asked) return dialog.reject();
      asked = true;
      auto *button = dialog.findChild<QPushButton *>("pDataset_Button");
      ASSERT_TRUE(button);
      QTimer::singleShot(0, button, [button] { QTest::mouseClick(button, Qt::LeftButton); }); // it opens dialogs
    });
    menu_item(row.item)->trigger();
    const std::string name = row.fir ? "fir" : "iir";
    EXPECT_EQ(folder.read(name + ".dat"),
              text_of(data_file_text(folder.path(name + ".dat"),
                                     {CoefficientStage::quantized, NumberNotation::hexadecimal, DataLayout::c_array})));
  }
  EXPECT_EQ(dialogs.messages, QStringList{});
}

} // namespace
} // namespace brisel
