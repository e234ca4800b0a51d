// plot_dialogs_test.cpp - the dialogs that steer the plots, opened by their commands.
#include "engine/analysis/plot_arrays.h"
#include "engine/core/display_defaults.h"
#include "engine/files/design_report.h"
#include "tests/gui/main_window/workstation_fixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTextBrowser>

namespace brisel {
namespace {

class PlotDialogsTest : public WorkstationTest {
protected:
  void SetUp() override {
    WorkstationTest::SetUp();
    set_start_values();
    design_lowpass();
  }
  /// Runs a command whose dialog is answered by `step` and then closed with `button`.
  void run(void (cBriselApp::*command)(), const char *button, std::function<void(QDialog &)> step) {
    dialogs.answer = [=](QDialog &dialog) {
      step(dialog);
      dialog.findChild<QAbstractButton *>(button)->click();
      if (dialog.isVisible()) dialog.reject();
    };
    (window.get()->*command)();
  }
};

void type(QDialog &dialog, const char *field, const char *text) {
  auto *edit = dialog.findChild<QLineEdit *>(field);
  ASSERT_TRUE(edit) << field;
  edit->selectAll();
  QTest::keyClicks(edit, text);
}

TEST_F(PlotDialogsTest, AcceptedPlotParametersAreComputedAndDrawn) {
  run(&cBriselApp::Output_PlotControl, "pAccept_Button", [](QDialog &dialog) {
    type(dialog, "pFreqMin_Edit", "500");
    type(dialog, "pFreqMax_Edit", "1500");
    type(dialog, "pLogMin_Edit", "-20");
    type(dialog, "pLogMax_Edit", "5");
    type(dialog, "pNumFreqPoints_Edit", "201");
    dialog.findChild<QCheckBox *>("pGrid_Box")->setChecked(false);
    dialog.findChild<QCheckBox *>("pDetail_Box")->setChecked(true);
  });
  EXPECT_EQ(plot_settings.nfpts, 201);
  EXPECT_EQ(plot_arrays.frequency_count, 201);
  EXPECT_DOUBLE_EQ(plot_state.frequency[0], 500 * two_pi);
  EXPECT_EQ(plot_settings.magnitude_range, default_magnitude_ranges[1]) << "untouched fields keep their values";
  EXPECT_FALSE(report_off);
  const PlotData shown = plot(PlotKind::log_magnitude).data();
  EXPECT_EQ(shown.y_range, (Range{-20, 5}));
  EXPECT_DOUBLE_EQ(shown.x_range[1], 1500);
  EXPECT_FALSE(shown.grid);
  EXPECT_GT(folder.read("SFIL.OUT").size(), 10000u) << "the report lists the points";
}

TEST_F(PlotDialogsTest, WrongPlotParametersCannotBeAccepted) {
  const struct {
    const char *field, *text, *reason;
  } rows[] = {{"pFreqMin_Edit", "x", "not a number"},
              {"pFreqMin_Edit", "-1", "frequencies begin at 0"},
              {"pFreqMin_Edit", "9999", "begins above its end"},
              {"pFreqMax_Edit", "1e308", "too large"},
              {"pFreqMax_Edit", "nan", "not a number"},
              {"pMagMin_Edit", "3", "begins above its end"},
              {"pLogMax_Edit", "", "a number is needed"},
              {"pNumTimePoints_Edit", "0", "1 to 32002"},
              {"pNumFreqPoints_Edit", "10002", "2 to 10001"},
              {"pMaxInterpPoints_Edit", "301", "0 to 300"}};
  const PlotSettings before = plot_settings;
  for (const auto &row : rows)
    run(&cBriselApp::Output_PlotControl, "pAccept_Button", [&](QDialog &dialog) {
      type(dialog, row.field, *row.text ? row.text : "\b");
      EXPECT_FALSE(dialog.findChild<QPushButton *>("pAccept_Button")->isEnabled()) << row.text;
      EXPECT_TRUE(dialog.findChild<QLabel *>("pProblem_Label")->text().contains(row.reason)) << row.text;
    });
  EXPECT_EQ(plot_settings.nfpts, before.nfpts);
  EXPECT_EQ(plot_settings.frequency_range, before.frequency_range);
}

TEST_F(PlotDialogsTest, DefaultFillsInTheStartValues) {
  plot_settings.nfpts = 77;
  plot_settings.sgrid = 0;
  run(&cBriselApp::Output_PlotControl, "pAccept_Button",
      [](QDialog &dialog) { dialog.findChild<QAbstractButton *>("pDefault_Button")->click(); });
  EXPECT_EQ(plot_settings.nfpts, default_frequency_points);
  EXPECT_EQ(plot_settings.sgrid, 1);
  EXPECT_DOUBLE_EQ(plot_settings.frequency_range[1], 4000 * two_pi);
}

TEST_F(PlotDialogsTest, ColoursReachThePlotsOnApplyOnly) {
  QColor before_apply, after_apply;
  run(&cBriselApp::Window_DisplayControl, "pCancel_Button", [&](QDialog &dialog) {
    dialog.findChild<QAbstractButton *>("pColorMono_Button")->click();
    before_apply = plot(PlotKind::phase).grab().toImage().pixelColor(2, 2);
    dialog.findChild<QAbstractButton *>("pApply_Button")->click();
    after_apply = plot(PlotKind::phase).grab().toImage().pixelColor(2, 2);
  });
  EXPECT_EQ(before_apply, Qt::black);
  EXPECT_EQ(after_apply, Qt::white);
  run(&cBriselApp::Window_DisplayControl, "pOk_Button",
      [&](QDialog &dialog) { dialog.findChild<QAbstractButton *>("pColorDefault_Button")->click(); });
  EXPECT_EQ(display_settings.back_color, 0);
  EXPECT_EQ(display_settings.funct_color, 5) << "yellow";
}

TEST_F(PlotDialogsTest, FontsAndLinesAreSetAndReset) {
  run(&cBriselApp::Window_DisplayControl, "pOk_Button", [](QDialog &dialog) {
    dialog.findChild<QComboBox *>("pTitlesFont_Box")->setCurrentIndex(2);
    dialog.findChild<QAbstractButton *>("pTitlesBold_Box")->setChecked(false);
    dialog.findChild<QAbstractButton *>("pTitlesItalic_Box")->setChecked(true);
    dialog.findChild<QComboBox *>("pFunctionLine_Box")->setCurrentIndex(1);
  });
  EXPECT_EQ(display_settings.titles_font, 2);
  EXPECT_EQ(display_settings.title_style, 2);
  EXPECT_EQ(display_settings.func_line, 1);
  EXPECT_EQ(window->style_of_plots().function.style(), Qt::DashLine);
  run(&cBriselApp::Window_DisplayControl, "pOk_Button", [](QDialog &dialog) {
    dialog.findChild<QAbstractButton *>("pFontDefault_Button")->click();
    dialog.findChild<QAbstractButton *>("pLineDefault_Button")->click();
  });
  DisplaySettings start = display_settings;
  set_display_defaults(start);
  EXPECT_EQ(display_settings.titles_font, start.titles_font);
  EXPECT_EQ(display_settings.title_style, start.title_style);
  EXPECT_EQ(display_settings.func_line, start.func_line);
}

TEST_F(PlotDialogsTest, HelpOpensItsPage) {
  QString page;
  run(&cBriselApp::Output_PlotControl, "pClose_Button", [&](QDialog &dialog) {
    dialog.findChild<QAbstractButton *>("pHelp_Button")->click();
    if (auto *browser = dialog.findChild<QTextBrowser *>()) page = browser->toPlainText();
  });
  EXPECT_TRUE(page.startsWith("Plot Parameter Input")) << page.left(40).toStdString();
}

TEST_F(PlotDialogsTest, PrintingAsksForPlotsAndPrinterAndCanBeCancelledAtEitherStep) {
  QStringList seen;
  for (const bool with_plots : {false, true}) {
    dialogs.answer = [&](QDialog &dialog) {
      seen.append(dialog.windowTitle());
      if (dialog.windowTitle() != "Print Selection") return dialog.reject();
      for (QCheckBox *box : dialog.findChildren<QCheckBox *>()) box->setChecked(with_plots);
      dialog.accept();
    };
    window->File_Print();
    EXPECT_FALSE(window->is_printing());
  }
  ASSERT_EQ(seen.size(), 3) << "no plot selected: no printer is asked for";
  EXPECT_EQ(seen[0], "Print Selection");
}

} // namespace
} // namespace brisel
