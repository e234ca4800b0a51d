// option_dialogs_test.cpp - settings and views, opened by their commands.
#include "gui/dialogs/result_texts.h"
#include "tests/gui/main_window/workstation_fixture.h"

#include "engine/core/trace.h"
#include "engine/files/text_file.h"

#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>

namespace brisel {
namespace {

class OptionDialogsTest : public WorkstationTest {
protected:
  void SetUp() override {
    WorkstationTest::SetUp();
    set_start_values();
  }
  void answer_with(std::function<void(QDialog &)> step) {
    dialogs.answer = [step](QDialog &dialog) {
      if (const QString folder = qEnvironmentVariable("BRISEL_SCREENSHOTS"); !folder.isEmpty())
        dialog.grab().save(folder + "/" + dialog.objectName() + ".png");
      step(dialog);
      if (dialog.isVisible()) dialog.reject();
    };
  }
  void answer_pages() {
    dialogs.answer = [](QDialog &dialog) {
      auto *next = dialog.findChild<QPushButton *>("pNext_Button");
      next ? next->click() : dialog.reject();
    };
  }
};

void press(QDialog &dialog, const char *button) {
  auto *found = dialog.findChild<QAbstractButton *>(button);
  ASSERT_TRUE(found) << button;
  QTest::mouseClick(found, Qt::LeftButton, {}, QPoint(10, found->height() / 2)); // radio buttons react on their text
}

TEST_F(OptionDialogsTest, QuantizationIsKeptOnlyWhenAccepted) {
  const auto change = [](QDialog &dialog) {
    press(dialog, "pSwitch0_Button");
    press(dialog, "pType0_Button");
    dialog.findChild<QLineEdit *>("pNumBits_Edit")->setText("12");
    press(dialog, "pCascade3_Button");
    press(dialog, "pScaling2_Button");
  };
  answer_with([&](QDialog &dialog) {
    change(dialog);
    press(dialog, "pClose_Button");
  });
  window->Output_Quantization();
  EXPECT_EQ(quantization_settings.quant, 0);
  EXPECT_EQ(quantization_settings.ibit, 16);
  answer_with([&](QDialog &dialog) {
    change(dialog);
    press(dialog, "pAccept_Button");
  });
  window->Output_Quantization();
  EXPECT_EQ(quantization_settings.quant, 1);
  EXPECT_EQ(quantization_settings.qtype, 0);
  EXPECT_EQ(quantization_settings.ibit, 12);
  const QuantizationSettings &q = quantization_settings;
  const auto codes = [&] { return std::vector{q.rtype1, q.rtype2, q.rtype3, q.rtype4}; };
  EXPECT_EQ(codes(), (std::vector{3, 1, 0, 0})) << "a floating-point sum has its own type";
  EXPECT_EQ(design_state.GainOption, code(FirScaling::one));
  quantization_settings.rtype3 = quantization_settings.rtype4 = 1; // of a setup file
  answer_with([&](QDialog &dialog) {
    press(dialog, "pCascade1_Button");
    press(dialog, "pType1_Button");
    press(dialog, "pAccept_Button");
  });
  window->Output_Quantization();
  EXPECT_EQ(codes(), (std::vector{1, 0, 0, 0}));
}

TEST_F(OptionDialogsTest, QuantizationRefusesWhatDoesNotExist) {
  answer_with([](QDialog &dialog) {
    auto *accept = dialog.findChild<QPushButton *>("pAccept_Button");
    auto *bits = dialog.findChild<QLineEdit *>("pNumBits_Edit");
    for (const auto &[type, text, right] : {std::tuple{"pType0_Button", "1", false},
                                            {"pType0_Button", "53", false},
                                            {"pType0_Button", "52", true},
                                            {"pType1_Button", "33", false},
                                            {"pType1_Button", "32", true},
                                            {"pType1_Button", "", false},
                                            {"pType1_Button", "8.5", false}}) {
      press(dialog, type);
      bits->setText(text);
      EXPECT_EQ(accept->isEnabled(), right) << type << text;
    }
    bits->setText("16");
    EXPECT_TRUE(accept->isEnabled());
    press(dialog, "pSwitch0_Button");
    press(dialog, "pType0_Button");
    press(dialog, "pCascade2_Button");
    EXPECT_TRUE(accept->isEnabled());
    press(dialog, "pType1_Button");
    EXPECT_FALSE(accept->isEnabled()) << "fixed point has no 4 multiply sections";
    press(dialog, "pCascade1_Button");
    EXPECT_TRUE(accept->isEnabled());
  });
  window->Output_Quantization();
}

TEST_F(OptionDialogsTest, OptimizationIsForFixedPointOnly) {
  answer_with([](QDialog &dialog) {
    auto *on = dialog.findChild<QRadioButton *>("pOptimize0_Button");
    auto *count = dialog.findChild<QLineEdit *>("pNumOpts_Edit");
    EXPECT_EQ(count->text(), "10");
    EXPECT_FALSE(on->isEnabled()) << "while quantization is off";
    press(dialog, "pSwitch0_Button");
    EXPECT_TRUE(on->isEnabled());
    EXPECT_FALSE(count->isEnabled());
    press(dialog, "pOptimize0_Button");
    EXPECT_TRUE(count->isEnabled());
    for (const char *wrong : {"0", "1001", "", "2.5"}) {
      count->setText(wrong);
      EXPECT_FALSE(dialog.findChild<QPushButton *>("pAccept_Button")->isEnabled()) << wrong;
    }
    count->setText("12");
    press(dialog, "pAccept_Button");
  });
  window->Output_Quantization();
  EXPECT_EQ(quantization_settings.optimize, 1);
  EXPECT_EQ(quantization_settings.op_num, 12);
}

TEST_F(OptionDialogsTest, SystemSettings) {
  answer_with([](QDialog &dialog) {
    EXPECT_EQ(dialog.findChild<QRadioButton *>("pExit0_Button")->text().remove('&'),
              "Save All Setiings in Current Session");
    press(dialog, "pDebug1_Button");
    press(dialog, "pExit2_Button");
    press(dialog, "pView_Box");
    dialog.findChild<QComboBox *>("pLengthIIR_Box")->setCurrentText("22");
    press(dialog, "pAccept_Button");
  });
  window->File_SystemSettings();
  EXPECT_EQ(trace_on, 1);
  EXPECT_EQ(window->exit_mode, ExitMode::defaults);
  EXPECT_EQ(design_state.fview, 1);
  EXPECT_EQ(design_state.fleng, 22);
}

TEST_F(OptionDialogsTest, UserInformation) {
  answer_with([](QDialog &dialog) {
    dialog.findChild<QLineEdit *>("pUser_Edit")->setText(" J. Smith ");
    dialog.findChild<QLineEdit *>("pCompany_Edit")->setText("Audio Works");
    press(dialog, "pAccept_Button");
  });
  window->File_UserInformation();
  EXPECT_EQ(workplace_names.user_name, "J. Smith");
  EXPECT_EQ(workplace_names.co_name, "Audio Works");
}

TEST_F(OptionDialogsTest, ViewsShowTheNumbersOfTheDesign) {
  answer_pages();
  quantization_settings.quant = 1;
  window->Design_IIR();
  ASSERT_TRUE(design_record.valid);
  QString text;
  answer_with([&](QDialog &dialog) {
    text = dialog.findChild<QPlainTextEdit *>("pText_Edit")->toPlainText();
    press(dialog, "pCopy_Button");
  });
  const IirForms *const sets[] = {&design_record.s_normalized, &design_record.s_unnormalized, &design_record.z,
                                  &design_record.z_quantized};
  for (int view = 0; view < 4; view++) {
    window->View_IirData(view + 3); // positions in the menu
    const Triple &first = sets[view]->cascade.denominators[0];
    EXPECT_TRUE(text.contains(QString::fromStdString(formatf("% .16e % .16e % .16e", first[0], first[1], first[2]))))
        << view;
    EXPECT_EQ(QApplication::clipboard()->text(), text);
    EXPECT_EQ(text.contains(QString::fromStdString(formatf("kappa    1  % .16e", sets[view]->lattice.kappa[1]))),
              view >= 2); // of the digital filters
  }
  window->View_IIRQuantizationAnalysis();
  EXPECT_EQ(text.toStdString(), quantization_analysis_text(design_record));
  EXPECT_TRUE(text.contains(QString::fromStdString(formatf("%.2f dB", design_record.noise.output_noise_db))));

  answer_pages();
  window->Design_FIR(1);
  ASSERT_TRUE(design_record.valid);
  answer_with([&](QDialog &dialog) {
    EXPECT_EQ(dialog.windowTitle(), "FIR Coefficients - View Only");
    text = dialog.findChild<QPlainTextEdit *>("pText_Edit")->toPlainText();
  });
  window->View_FIRCoefficients();
  EXPECT_EQ(text.count('\n'), design_record.fir.length + 3);
  for (const double tap : {design_record.fir.coeff[0], design_record.fir_unquantized.coeff[7]})
    EXPECT_TRUE(text.contains(QString::fromStdString(formatf("% .16e", tap))));
}

TEST_F(OptionDialogsTest, SystemsAreLoadedAnalysedAndSavedAgain) {
  for (const char *name : {"biquads.inp", "resonator.inp", "lattice.inp", "triangle-fir.inp"}) {
    dialogs.messages.clear();
    window->load_file(QString::fromStdString(example(name)));
    ASSERT_TRUE(design_record.valid) << name << dialogs.messages.join("; ").toStdString();
    const std::string saved = std::string("again-") + name;
    dialogs.file_names = {at(saved)};
    window->Output_CreateSystemAnalysisFile();
    const auto before = read_file(example(name), 1 << 20), after = read_file(folder.path(saved), 1 << 20);
    ASSERT_TRUE(before && after) << name;
    design_record.valid = 0;
    window->load_file(at(saved));
    EXPECT_TRUE(design_record.valid) << name;
  }
}

TEST_F(OptionDialogsTest, GeneratedCodeBringsWhatItNeedsAndSaysWhatItLacks) {
  answer_pages();
  quantization_settings.quant = 1;
  design_state.GainOption = code(FirScaling::one);
  window->Design_FIR(1);
  ASSERT_TRUE(design_record.valid);
  answer_with([](QDialog &dialog) {
    EXPECT_FALSE(dialog.findChild<QAbstractButton *>("pOctave_Box")->isEnabled());
    press(dialog, "pSimCWrapper_Box");
    EXPECT_TRUE(dialog.findChild<QAbstractButton *>("pOctave_Box")->isEnabled());
    EXPECT_TRUE(dialog.findChild<QAbstractButton *>("pCHeader_Box")->isChecked()) << "the simulation includes it";
    press(dialog, "pOk_Button");
  });
  dialogs.file_names = {at("filter")};
  window->Codegen_dsPIC30();
  auto files = folder.files();
  for (const char *name : {"filter.h", "filter.s", "filter_sim.c"}) EXPECT_TRUE(files.contains(name)) << name;
  EXPECT_FALSE(files.contains("filter_matlab.m")) << "no script was asked for";

  dialogs.file_names = {at("filter.dsp"), at("filter56.h")};
  window->Codegen_ADSP218X();
  window->Codegen_DSP56800();
  for (const char *name : {"dsPIC30", "ADSP-218x", "DSP56800"})
    EXPECT_EQ(dialogs.messages.filter(QString("The %1 file carries no gain").arg(name)).size(), 1) << name;

  dialogs.button = QMessageBox::Yes;
  dialogs.messages.clear();
  std::filesystem::create_directory(folder.path("other"));
  dialogs.file_names = {at("filter.c"), at("other/filter.c")};
  window->Codegen_CCode();
  window->Codegen_CCode();
  files = folder.files();
  for (const char *name : {"brisel_cgen.h", "other/brisel_filt.c"}) EXPECT_TRUE(files.contains(name)) << name;
  EXPECT_EQ(dialogs.messages.size(), 1) << "asked once";
}

} // namespace
} // namespace brisel
