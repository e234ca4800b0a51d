// output_dialogs_test.cpp - the commands that write systems and numbers, driven by clicks.
#include "codegen/data_files.h"
#include "engine/analysis/plot_arrays.h"
#include "engine/core/front_end.h"
#include "engine/core/system_conversion.h"
#include "tests/gui/main_window/workstation_fixture.h"

#include <QClipboard>
#include <QLabel>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QTextBrowser>

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

// --- systems in the form of one's choice

SystemPointer read_back(const QString &path) {
  std::string why;
  SystemPointer system = read_convertible_system(path.toStdString(), why);
  EXPECT_TRUE(system) << why;
  return system;
}

TEST_F(OutputDialogsTest, AnIirDesignIsWrittenInTheChosenDomainAndForm) {
  const struct {
    const char *domain, *form, *item;
    Domain read_domain;
    InputOption option;
  } rows[] = {
      {"pDomain1_Button", "pForm1_Button", "IIR Filter Output ...", Domain::z, InputOption::pole_zero},
      {"pDomain1_Button", "pForm4_Button", "Create System &Analysis File ...", Domain::z, InputOption::lattice},
      {"pDomain0_Button", "pForm2_Button", "IIR Filter Output ...", Domain::s, InputOption::product},
      {"pDomain0_Button", "pForm0_Button", "Create System &Analysis File ...", Domain::s, InputOption::ratio},
  };
  design_iir();
  int number = 0;
  for (const auto &row : rows) {
    answer_with([&](QDialog &dialog) {
      EXPECT_EQ(dialog.windowTitle(), "IIR Filter Design Output");
      EXPECT_TRUE(dialog.findChild<QAbstractButton *>("pForm2_Button")->isChecked()) << "as the filter runs";
      press(dialog, row.domain);
      press(dialog, row.form);
      EXPECT_TRUE(dialog.findChild<QLabel *>("pDigits_Label")->text().contains("digits"));
      QTest::keyClick(&dialog, Qt::Key_Return);
    });
    const QString name = at("form") + QString::number(number++);
    dialogs.file_names = {name};
    menu_item(row.item)->trigger();
    const SystemPointer system = read_back(name + ".inp");
    ASSERT_TRUE(system);
    EXPECT_EQ(system->domain, row.read_domain);
    EXPECT_EQ(system->option, row.option);
  }
  EXPECT_EQ(dialogs.messages, QStringList{});
}

TEST_F(OutputDialogsTest, AllFormsAreWrittenTogetherAndOnesThatDoNotExistAreNamed) {
  design_iir();
  const auto write = [&](const char *domain) {
    answer_with([&](QDialog &dialog) {
      press(dialog, domain);
      press(dialog, "pAllForms_Button");
    });
    dialogs.file_names = {at("all")};
    menu_item("IIR Filter Output ...")->trigger();
  };
  write("pDomain1_Button");
  EXPECT_EQ(dialogs.messages, QStringList{});
  const struct {
    const char *suffix;
    InputOption option;
  } forms[] = {{"_ratio", InputOption::ratio},
               {"_pole_zero", InputOption::pole_zero},
               {"_cascade", InputOption::product},
               {"_parallel", InputOption::sum},
               {"_lattice", InputOption::lattice}};
  for (const auto &form : forms) {
    const SystemPointer system = read_back(at("all") + form.suffix + ".inp");
    ASSERT_TRUE(system);
    EXPECT_EQ(system->option, form.option);
    EXPECT_TRUE(std::filesystem::remove((at("all") + form.suffix + ".inp").toStdString()));
  }
  write("pDomain0_Button");
  ASSERT_EQ(dialogs.messages.size(), 1);
  EXPECT_TRUE(dialogs.messages[0].contains("Lattice Structure: ")) << dialogs.messages[0].toStdString();
  EXPECT_FALSE(folder.files().contains("all_lattice.inp"));
  EXPECT_TRUE(folder.files().contains("all_parallel.inp"));

  dialogs.messages.clear();
  folder.write("all_ratio.inp", "precious");
  dialogs.button = QMessageBox::No;
  write("pDomain0_Button");
  EXPECT_EQ(folder.read("all_ratio.inp"), "precious");
}

TEST_F(OutputDialogsTest, AFormThatDoesNotExistIsRefusedWithItsReason) {
  design_iir();
  answer_with([](QDialog &dialog) {
    press(dialog, "pDomain0_Button");
    press(dialog, "pForm4_Button");
    EXPECT_FALSE(dialog.findChild<QPushButton *>("pOk_Button")->isEnabled());
    EXPECT_TRUE(problem(dialog).contains("does not exist in this form")) << problem(dialog).toStdString();
    press(dialog, "pForm3_Button");
    EXPECT_TRUE(dialog.findChild<QPushButton *>("pOk_Button")->isEnabled());
    QTest::keyClick(&dialog, Qt::Key_Escape);
  });
  menu_item("IIR Filter Output ...")->trigger();
  EXPECT_EQ(dialogs.captions.last(), "IIR Filter Design Output") << "no file was asked for";
}

TEST_F(OutputDialogsTest, TheTapsOfAFirFilterAreWrittenAsTheyRun) {
  quantization_settings.quant = quantization_settings.qtype = 1;
  design_lowpass();
  dialogs.file_names = {at("taps")};
  menu_item("FIR Filter Output")->trigger();
  const SystemPointer system = read_back(at("taps.inp"));
  ASSERT_TRUE(system);
  EXPECT_EQ(system->option, InputOption::symmetric_fir);
  ASSERT_EQ(system->taps.size(), static_cast<std::size_t>(design_record.fir.length));
  EXPECT_NEAR(system->taps[20], design_record.fir.coeff[20], 1e-9);
  menu_item("IIR Filter Output ...")->trigger();
  ASSERT_EQ(dialogs.messages.size(), 1);
  EXPECT_TRUE(dialogs.messages[0].contains("needs an IIR design"));
  design_iir();
  menu_item("FIR Filter Output")->trigger();
  ASSERT_EQ(dialogs.messages.size(), 2);
  EXPECT_TRUE(dialogs.messages[1].contains("needs a FIR design"));
}

// --- conversions

QString shown_text(const QDialog &dialog) {
  return dialog.findChild<QPlainTextEdit *>("pText_Edit")->toPlainText();
}

TEST_F(OutputDialogsTest, AConvertedIirSystemIsShownCopiedSavedAndAnalysed) {
  window->load_file(QString::fromStdString(example("biquads.inp")));
  ASSERT_TRUE(window->has_result());
  const std::vector<double> magnitude(plot_arrays.magnitude.begin(), plot_arrays.magnitude.begin() + 1001);
  int step = 0;
  answer_with([&](QDialog &dialog) {
    if (step++ > 0) return; // the save dialog stands over it, or it is done
    EXPECT_EQ(dialog.windowTitle(), "IIR Form Conversion");
    EXPECT_FALSE(dialog.findChild<QPushButton *>("pSave_Button")->isEnabled());
    press(dialog, "pForm4_Button");
    press(dialog, "pConvert_Button");
    EXPECT_TRUE(shown_text(dialog).contains(QRegularExpression("keeps 1[3-6] digits")))
        << shown_text(dialog).toStdString();
    EXPECT_TRUE(shown_text(dialog).contains("kappa    4"));
    press(dialog, "pCopy_Button");
    EXPECT_EQ(QApplication::clipboard()->text(), shown_text(dialog));
    press(dialog, "pForm0_Button");
    EXPECT_EQ(shown_text(dialog), "") << "the result of other choices";
    EXPECT_FALSE(dialog.findChild<QPushButton *>("pCopy_Button")->isEnabled());
    press(dialog, "pForm4_Button");
    press(dialog, "pConvert_Button");
    auto *save = dialog.findChild<QPushButton *>("pSave_Button");
    ASSERT_TRUE(save->isEnabled());
    QTimer::singleShot(0, save, [save, &dialog] {
      QTest::mouseClick(save, Qt::LeftButton);
      QTest::keyClick(&dialog, Qt::Key_Return); // OK
    });
  });
  dialogs.file_names = {at("lattice")};
  menu_item("IIR Form Conversion ...")->trigger();
  EXPECT_EQ(read_back(at("lattice.inp"))->option, InputOption::lattice);
  EXPECT_EQ(design_record.selections.z_input_option, code(InputOption::lattice));
  ASSERT_TRUE(window->has_result());
  for (std::size_t i = 0; i < magnitude.size(); i += 100)
    EXPECT_NEAR(plot_arrays.magnitude[i], magnitude[i], 1e-12) << i;
  EXPECT_EQ(dialogs.messages, QStringList{});
}

TEST_F(OutputDialogsTest, ALoadedSystemIsConvertedWithoutTouchingTheCurrentOne) {
  design_lowpass();
  const DesignState before = design_state;
  answer_with([&](QDialog &dialog) {
    auto *load = dialog.findChild<QPushButton *>("pLoad_Button");
    if (dialogs.file_names.empty()) {
      EXPECT_TRUE(dialog.findChild<QLabel *>("pSource_Label")->text().contains("analog-butterworth.inp"));
      press(dialog, "pForm3_Button");
      press(dialog, "pConvert_Button");
      EXPECT_TRUE(shown_text(dialog).contains("s domain"));
      return dialog.reject();
    }
    EXPECT_TRUE(problem(dialog).contains("no IIR system to convert")) << problem(dialog).toStdString();
    EXPECT_FALSE(dialog.findChild<QPushButton *>("pOk_Button")->isEnabled());
    QTimer::singleShot(0, load, [load] { QTest::mouseClick(load, Qt::LeftButton); });
  });
  dialogs.file_names = {QString::fromStdString(example("triangle-fir.inp")),
                        QString::fromStdString(example("analog-butterworth.inp"))};
  menu_item("IIR Form Conversion ...")->trigger();
  ASSERT_EQ(dialogs.messages.size(), 1) << "a FIR filter is no IIR system";
  EXPECT_TRUE(dialogs.messages[0].contains("FIR form conversion")) << dialogs.messages[0].toStdString();
  EXPECT_EQ(design_state.DesignOrAnalysisType, before.DesignOrAnalysisType);
  EXPECT_TRUE(is_fir_result());
}

TEST_F(OutputDialogsTest, ALinearPhaseFilterHasNoLattice) {
  design_lowpass();
  answer_with([](QDialog &dialog) {
    EXPECT_EQ(dialog.windowTitle(), "FIR Form Conversion");
    press(dialog, "pForm3_Button");
    press(dialog, "pConvert_Button");
    EXPECT_TRUE(problem(dialog).contains("linear-phase")) << problem(dialog).toStdString();
    EXPECT_FALSE(dialog.findChild<QPushButton *>("pOk_Button")->isEnabled());
    press(dialog, "pForm2_Button");
    EXPECT_TRUE(dialog.findChild<QPushButton *>("pOk_Button")->isEnabled());
    QTest::keyClick(&dialog, Qt::Key_Return); // converts first
  });
  menu_item("FIR Form Conversion ...")->trigger();
  ASSERT_TRUE(window->has_result());
  EXPECT_EQ(design_record.selections.z_input_option, code(InputOption::nonsymmetric_fir));
}

TEST_F(OutputDialogsTest, AnAnalogSystemIsConvertedByEveryMethod) {
  window->load_file(QString::fromStdString(example("analog-butterworth.inp")));
  ASSERT_TRUE(window->has_result());
  answer_with([](QDialog &dialog) {
    EXPECT_EQ(dialog.windowTitle(), "Analysis Domain Conversion");
    for (const char *method : {"pMethod0_Button", "pMethod1_Button", "pMethod2_Button"}) {
      press(dialog, method);
      EXPECT_EQ(dialog.findChild<QAbstractButton *>("pPadding0_Button")->isEnabled(),
                method == QString("pMethod2_Button"));
      press(dialog, "pConvert_Button");
      EXPECT_TRUE(shown_text(dialog).contains(QRegularExpression("keeps 1[2-6] digits")))
          << shown_text(dialog).toStdString();
      EXPECT_TRUE(shown_text(dialog).contains("differs from the analog one"));
    }
    press(dialog, "pPadding1_Button");
    press(dialog, "pForm1_Button");
    QTest::keyClick(&dialog, Qt::Key_Return);
  });
  menu_item("Domain Conversion ...")->trigger();
  ASSERT_TRUE(window->has_result());
  EXPECT_EQ(design_record.selections.DesignOrAnalysisType, code(DesignMethod::z_analysis));
  const PoleZeroEntry &pz = z_entries.pole_zero;
  ASSERT_EQ(pz.real_zeros, 3);
  for (int i = 0; i < 3; i++) EXPECT_NEAR(pz.zeros[static_cast<std::size_t>(i)].real(), 1, 1e-12) << "highpass padding";
}

TEST_F(OutputDialogsTest, EveryConversionDialogHasItsHelpPage) {
  window->load_file(QString::fromStdString(example("analog-butterworth.inp")));
  const struct {
    const char *item, *title;
  } rows[] = {{"IIR Filter Output ...", "IIR Filter Design Output"},
              {"IIR Form Conversion ...", "IIR Form Conversion"},
              {"FIR Form Conversion ...", "FIR Form Conversion"},
              {"Domain Conversion ...", "Analysis Domain Conversion"},
              {"Create C&oCentric Dataset ...", "CoCentric Data Format"}};
  for (const auto &row : rows) {
    QString page;
    answer_with([&](QDialog &dialog) {
      if (const QString pictures = qEnvironmentVariable("BRISEL_SCREENSHOTS"); !pictures.isEmpty()) {
        if (auto *convert = dialog.findChild<QPushButton *>("pConvert_Button")) convert->click();
        QCoreApplication::processEvents();
        dialog.grab().save(pictures + "/" + dialog.objectName() + ".png");
      }
      press(dialog, "pHelp_Button");
      if (auto *browser = dialog.findChild<QTextBrowser *>()) page = browser->toPlainText();
      dialog.reject();
    });
    menu_item(row.item)->trigger();
    EXPECT_TRUE(page.startsWith(row.title)) << row.item << page.left(60).toStdString();
  }
}

} // namespace
} // namespace brisel
