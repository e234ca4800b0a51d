// Every command of menus and tool bar, with and without a result.
#include "gui/main_window/command_table.h"
#include "tests/gui/main_window/workstation_fixture.h"

#include <QCheckBox>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QToolBar>
#include <QToolButton>

namespace brisel {
namespace {

TEST_F(WorkstationTest, EveryMenuItemAndToolButtonCanBeChosen) {
  for (const bool with_result : {false, true}) {
    if (with_result) design_lowpass();
    QList<QAction *> actions;
    for (QMenu *menu : window->menuBar()->findChildren<QMenu *>())
      if (menu->title() != "&Window" && menu->title() != "&Recent Files") actions += menu->actions();
    actions += window->findChild<QToolBar *>()->actions();
    int chosen = 0;
    for (QAction *action : actions) {
      if (action->menu() || action->isSeparator() || action->text() == "E&xit ...") continue;
      chosen++;
      action->trigger();
      QCoreApplication::processEvents();
      EXPECT_TRUE(window->isVisible()) << action->text().toStdString();
      EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << action->text().toStdString();
    }
    EXPECT_EQ(chosen, 88) << "65 menu items and 23 buttons";
  }
}

TEST_F(WorkstationTest, CommandsWithoutWhatTheyNeedShowTheirMessage) {
  const struct {
    const char *item, *says;
  } rows[] = {{"&Print ...", "nothing to print"},
              {"Create &Specification File ...", "no design or analysis"},
              {"Create &Filter Coefficient File ...", "no design or analysis"},
              {"Create System &Analysis File ...", "no design or analysis"},
              {"Create &Matlab File ...", "no design or analysis"},
              {"Create C&oCentric Dataset ...", "no design or analysis"},
              {"Create &Plot Data Files ...", "no design or analysis"},
              {"&C Code ...", "no design or analysis"},
              {"&ADSP218X", "no design or analysis"},
              {"&DSP56800/DSP56800E", "no design or analysis"},
              {"&dsPIC30", "no design or analysis"},
              {"&Performance Audio", "no design or analysis"},
              {"IIR &Quantized Z Domain Data ...", "needs an IIR design"},
              {"IIR Quantization &Analysis ...", "needs an IIR design"},
              {"&FIR Coefficients ...", "needs a FIR design"},
              {"About Brisel ...", "Copyright"}};
  for (const auto &row : rows) {
    dialogs.messages.clear();
    menu_item(row.item)->trigger();
    ASSERT_EQ(dialogs.messages.size(), 1) << row.item;
    EXPECT_TRUE(dialogs.messages[0].contains(row.says)) << row.item << ": " << dialogs.messages[0].toStdString();
  }
}

TEST_F(WorkstationTest, MenuPositionsStandForTheirCodes) {
  const struct {
    const char *item;
    FilterType type;
  } rows[] = {{"&Lowpass ...", FilterType::low_pass},
              {"Band&stop ...", FilterType::band_stop},
              {"Arbitrary &Magnitude ...", FilterType::arbitrary_magnitude},
              {"Hal&fband ...", FilterType::half_band},
              {"Raised &Cosine ...", FilterType::raised_cosine},
              {"&Root Raised Cosine ...", FilterType::root_raised_cosine},
              {"Arbitrary &Group Delay ...", FilterType::arbitrary_group_delay}};
  for (const auto &row : rows) {
    menu_item(row.item)->trigger();
    EXPECT_EQ(design_state.filter_type, code(row.type)) << row.item;
  }
  const struct {
    const char *item;
    InputOption option;
  } systems[] = {{"&Ratio of 2 Polynomials ...", InputOption::ratio},
                 {"&Lattice IIR Structure ...", InputOption::lattice},
                 {"Symmetric &FIR Filter ...", InputOption::symmetric_fir},
                 {"La&ttice FIR Filter ...", InputOption::lattice_fir}};
  for (const auto &row : systems) {
    menu_item(row.item)->trigger();
    EXPECT_EQ(design_state.z_input_option, code(row.option)) << row.item;
    EXPECT_EQ(design_state.DesignOrAnalysisType, code(DesignMethod::z_analysis)) << row.item;
  }
}

TEST_F(WorkstationTest, TheWindowMenuListsTheVisiblePlots) {
  QMenu *menu = window->menuBar()->actions().last()->menu();
  const auto texts = [&] {
    Q_EMIT menu->aboutToShow();
    QStringList all;
    for (QAction *action : menu->actions())
      if (!action->isSeparator()) all.append(action->text());
    return all;
  };
  EXPECT_EQ(texts(), (QStringList{"&Cascade", "&Tile", "Select &Plots ...", "&Display Control ...", "Magnitude",
                                  "Log Magnitude(dB)", "Phase", "Group Delay", "Impulse Response", "Step Response",
                                  "Pole/Zero Plot"}));
  window->WindowMenuActivated(3);
  Q_EMIT menu->aboutToShow();
  QStringList checked;
  for (QAction *action : menu->actions())
    if (action->isChecked()) checked.append(action->text());
  EXPECT_EQ(checked, QStringList{"Group Delay"});

  dialogs.answer = [](QDialog &dialog) {
    for (QCheckBox *box : dialog.findChildren<QCheckBox *>()) box->setChecked(false);
    dialog.accept();
  };
  window->Window_SelectPlots();
  EXPECT_EQ(texts().size(), 4);
  EXPECT_FALSE(menu->actions().at(0)->isEnabled());
  EXPECT_FALSE(menu->actions().at(1)->isEnabled());
  window->MyCascade();
  window->tile();
}

TEST_F(WorkstationTest, AClosedPlotWindowIsDeselectedAndComesBack) {
  cBriselMdiChild *child = window->plot_window(PlotKind::phase);
  child->parentWidget()->close();
  EXPECT_FALSE(child->isVisible());
  EXPECT_FALSE(z_plot_on[2]);
  window->select_plot(PlotKind::phase, true);
  EXPECT_TRUE(child->isVisible());
}

// The pictures of the documentation are taken here: BRISEL_WRITE_PICTURES names their folder.
TEST_F(WorkstationTest, ShowsEveryPlotOfADesign) {
  design_lowpass();
  window->tile();
  QCoreApplication::processEvents();
  const QColor curve = window->style_of_plots().function.color();
  const auto has_curve = [&](const QImage &picture) {
    for (int y = 0; y < picture.height(); y++)
      for (int x = 0; x < picture.width(); x++)
        if (picture.pixelColor(x, y) == curve) return true;
    return false;
  };
  for (int kind = 0; kind < plot_kind_count; kind++)
    EXPECT_TRUE(has_curve(plot(PlotKind{static_cast<std::int8_t>(kind)}).grab().toImage())) << kind;
  take_screenshot(*window, "workstation"); // the pictures in the README
  take_screenshot(plot(PlotKind::log_magnitude), "log-magnitude");
}

TEST_F(WorkstationTest, CascadedWindowsAreOfOneSize) {
  window->MyCascade();
  for (QMdiSubWindow *frame : window->workspace_area()->subWindowList()) EXPECT_EQ(frame->size(), QSize(500, 300));
}

TEST_F(WorkstationTest, ToolButtonsAreRaisedAndExplained) {
  auto *bar = window->findChild<QToolBar *>();
  int buttons = 0;
  for (auto *button : bar->findChildren<QToolButton *>()) {
    if (!button->defaultAction()) continue;
    buttons++;
    EXPECT_FALSE(button->autoRaise());
    EXPECT_FALSE(button->toolTip().isEmpty());
    EXPECT_FALSE(button->defaultAction()->statusTip().isEmpty());
    const QImage icon = button->icon().pixmap(20, 20).toImage();
    EXPECT_GT(qAlpha(icon.pixel(3, 12)) + qAlpha(icon.pixel(10, 10)) + qAlpha(icon.pixel(5, 3)), 0)
        << button->toolTip().toStdString() << " is blank";
  }
  EXPECT_EQ(buttons, 23);
  menu_item("Tool&bar")->trigger();
  EXPECT_FALSE(bar->isVisible());
  menu_item("Tool&bar")->trigger();
  EXPECT_TRUE(bar->isVisible());
}

} // namespace
} // namespace brisel
