// walks_test.cpp - every sequence from the menu to the plots and back, with keys and clicks, and the result against the
// same job run by the batch command on the specification that the workstation saved.
#include "engine/analysis/plot_arrays.h"
#include "engine/core/start_up.h"
#include "engine/files/spec_file.h"
#include "tests/gui/dialogs/page_walk.h"
#include "tests/gui/tour/dialog_rules.h"

#include <QComboBox>

#include <nlohmann/json.hpp>

#include <tuple>

namespace brisel {
namespace {

struct Entry {
  const char *field, *text; // an item's number for a combo box, a column's for a table: "row,column"
};
struct WalkPage {
  const char *name;
  std::vector<Entry> entries;
};
struct TypeRow {
  const char *name;
  int fir_button, iir_button; // on the design pages, -1 where not offered
  std::vector<WalkPage> pages;
};

const std::vector<TypeRow> &types() {
  const auto edges = [](const char *pass, const char *stop) {
    return std::vector<WalkPage>{{"cLowHighSpecDialog",
                                  {{"SamplingFrequency_Edit", "8000"},
                                   {"PassbandFrequency_Edit", pass},
                                   {"StopbandFrequency_Edit", stop},
                                   {"PassbandRipple_Edit", "0.25"},
                                   {"StopbandRipple_Edit", "45"}}}};
  };
  const auto bands = [](const char *pass0, const char *pass1, const char *stop0, const char *stop1) {
    return std::vector<WalkPage>{{"cBandPassStopSpecDialog",
                                  {{"pSamplingFrequency_Edit", "48000"},
                                   {"pPassbandFreq0_Edit", pass0},
                                   {"pPassbandFreq1_Edit", pass1},
                                   {"pStopbandFreq0_Edit", stop0},
                                   {"pStopbandFreq1_Edit", stop1},
                                   {"pPassbandRipple_Edit", "0.5"},
                                   {"pStopbandRipple_Edit", "40"}}}};
  };
  const std::vector<WalkPage> cosine{{"cRaiseCosSpecDialog",
                                      {{"pSampFreq_Edit", "16000"},
                                       {"pSymbol_Edit", "3000"},
                                       {"pRolloff_Edit", "0.4"},
                                       {"pPassRipple_Edit", "0.2"},
                                       {"pStopRipple_Edit", "35"}}}};
  static const std::vector<TypeRow> rows{
      {"LOW PASS", 0, 0, edges("1100", "1600")},
      {"HIGH PASS", 1, 1, edges("1600", "1100")},
      {"BAND PASS", 2, 2, bands("5000", "9000", "4000", "10500")},
      {"BAND STOP", 3, 3, bands("4000", "10500", "5000", "9000")},
      {"DIFFERENTIATOR",
       4,
       -1,
       {{"cDifferSpecDialog",
         {{"pSampFreq_Edit", "8000"}, {"pEdge2Freq_Edit", "3200"}, {"pRipple_Edit", "2"}, {"pSlope_Edit", "1.5"}}}}},
      {"MULTIBAND",
       5,
       -1,
       {{"cMBandArbMagSpecDialog", {{"pSampFreq_Edit", "8000"}, {"pNumBands_Edit", "2"}}},
        {"cMBandSpecDialog",
         {{"pRE1_Edit", "1000"},
          {"pDV1_Edit", "0.75"},
          {"pR1_Edit", "0.02"},
          {"pLE2_Edit", "1600"},
          {"pRE2_Edit", "4000"},
          {"pR2_Edit", "0.005"}}}}},
      {"HILBERT TRANSFORMER",
       6,
       -1,
       {{"cHilbertSpecDialog",
         {{"pSampFreq_Edit", "8000"},
          {"pEdge1Freq_Edit", "500"},
          {"pEdge2Freq_Edit", "3500"},
          {"pRipple_Edit", "3"}}}}},
      {"ARBITRARY MAGNITUDE",
       7,
       -1,
       {{"cMBandArbMagSpecDialog", {{"pSampFreq_Edit", "8000"}, {"pNumBands_Edit", "2"}}},
        {"cArbMagSpec1Dialog",
         {{"pRE1_Edit", "1400"}, {"pGT1_Box", "1"}, {"pR1_Edit", "0.02"}, {"pLE2_Edit", "2000"}, {"pR2_Edit", "0.01"}}},
        {"cArbMagSpec2Dialog", {{"pPoints_Table", "1,1"}, {"", "0.5"}}}}},
      {"HALF BAND",
       8,
       -1,
       {{"cHalfbandSpecDialog", {{"pSampFreq_Edit", "8000"}, {"pPassFreq_Edit", "1500"}, {"pRipple_Edit", "45"}}}}},
      {"RAISED COSINE", 9, -1, cosine},
      {"ROOT RAISED COSINE", 10, -1, cosine},
  };
  return rows;
}

struct MethodRow {
  const char *item;             // of the menus
  std::vector<Entry> design;    // on the first page: buttons, "" for a click; the Filter menu has none
  const char *page;             // of the method; a type has its own where it has no estimates
  std::vector<Entry> entries;   // there
  const char *options;          // of the batch command
  std::vector<WalkPage> more{}; // optional pages
};
constexpr const char *iir_design = "&IIR Design ...";
constexpr const char *window_design = "&FIR Window Design ...";
constexpr const char *equiripple_design = "&Equiripple Design ...";
constexpr const char *lp_design = "&Linear Programming ...";
constexpr const char *squares_design = "Least &Squares Design ...";

class WalksTest : public WorkstationTest {
protected:
  void SetUp() override {
    WorkstationTest::SetUp();
    set_start_values();
    dialogs.resume(1);
    // Nothing of an earlier analysis may stay in a design, its gain for one.
    for (const char *file : {"analog-butterworth.inp", "biquads.inp"})
      window->load_file(QString::fromStdString(example(file)));
    ASSERT_TRUE(window->has_result());
    set_start_values();
    dialogs.answer = [this](QDialog &dialog) { turn_page(dialog); };
  }

  static void enter(QDialog &dialog, const std::vector<Entry> &entries) {
    for (std::size_t i = 0; i < entries.size(); i++) {
      auto *widget = dialog.findChild<QWidget *>(entries[i].field);
      ASSERT_TRUE(widget) << dialog.objectName().toStdString() << ": " << entries[i].field;
      if (auto *button = qobject_cast<QAbstractButton *>(widget)) {
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(10, button->height() / 2));
      } else if (auto *box = qobject_cast<QComboBox *>(widget)) {
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Home);
        for (int n = QString(entries[i].text).toInt(); n > 0; n--) QTest::keyClick(box, Qt::Key_Down);
      } else if (auto *table = qobject_cast<QTableWidget *>(widget)) {
        const QStringList cell = QString(entries[i].text).split(',');
        type_cell(*table, cell[0].toInt(), cell[1].toInt(), entries[++i].text);
      } else {
        auto *edit = qobject_cast<QLineEdit *>(widget);
        ASSERT_TRUE(edit) << entries[i].field;
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, entries[i].text);
      }
    }
  }

  /// The pages in their order, from the last back to the first of the specification, and forth again: all must have
  /// kept their values.
  void turn_page(QDialog &dialog) {
    const QString name = dialog.objectName();
    if (page >= pages.size()) return dialog.reject();
    const WalkPage &expected = pages[page];
    EXPECT_EQ(name.toStdString(), expected.name);
    EXPECT_EQ(all_faults(dialog).join("\n").toStdString(), "") << expected.name;
    if (!went_back) enter(dialog, expected.entries); // else all is still there
    for (const Entry &entry : expected.entries) {
      const auto *edit = *entry.field ? dialog.findChild<QLineEdit *>(entry.field) : nullptr;
      EXPECT_EQ(edit ? edit->text() : entry.text, entry.text) << entry.field;
    }
    if (page + 1 == pages.size() && !went_back) went_back = going_back = true;
    going_back = going_back && page > first_page;
    if (going_back) {
      page--;
      QTest::mouseClick(dialog.findChild<QPushButton *>("pPrev_Button"), Qt::LeftButton);
      return;
    }
    page++;
    EXPECT_TRUE(dialog.findChild<QPushButton *>("pNext_Button")->isEnabled()) << name.toStdString();
    QTest::keyClick(&dialog, Qt::Key_Return);
    if (dialog.isVisible()) dialog.reject();
  }

  void walk(const TypeRow &type, int type_button, const MethodRow &method) {
    SCOPED_TRACE(std::string(type.name) + " " + method.options);
    const bool iir = std::string(method.item) == iir_design;
    const std::string type_name = "pType" + std::to_string(type_button) + "_Button";
    std::vector<Entry> design = method.design;
    design.push_back({type_name.c_str(), ""});
    pages.clear();
    if (type_button >= 0) pages.push_back({iir ? "cIirDesignDialog" : "cFirDesignDialog", design});
    first_page = pages.size();
    pages.insert(pages.end(), type.pages.begin(), type.pages.end());
    pages.push_back({method.page, method.entries});
    pages.insert(pages.end(), method.more.begin(), method.more.end());
    page = 0;
    went_back = false;
    dialogs.messages.clear();
    design_record.valid = 0;
    choose(method.item);
    EXPECT_EQ(page, pages.size());
    EXPECT_EQ(filter_types[static_cast<std::size_t>(current_spec->type)].file_name, type.name);

    const std::string saved = "walk" + std::to_string(++walks) + ".spc";
    if (!design_record.valid) { // then there is nothing to save; the batch command finds the same file without a design
      ASSERT_TRUE(write_filter_spec(folder.path(saved), *current_spec, nullptr));
    } else {
      dialogs.file_names = {at(saved)};
      window->activateWindow();
      QCoreApplication::processEvents();
      QTest::keyClick(window.get(), Qt::Key_S, Qt::ControlModifier);
      ASSERT_TRUE(dialogs.file_names.empty());
    }
    const Outcome batch = folder.run("design " + saved + " " + method.options + " --json -");
    EXPECT_EQ(batch.status == 0, design_record.valid != 0) << batch.err << dialogs.messages.join("; ").toStdString();
    if (batch.status != 0 || !design_record.valid) return;
    const auto json = nlohmann::json::parse(batch.out);
    if (json.contains("iir"))
      compare(json["iir"]);
    else
      compare_taps(json["fir"]);
    EXPECT_EQ(json["responses"]["magnitude"].get<std::vector<double>>(),
              std::vector<double>(plot_arrays.magnitude.begin(),
                                  plot_arrays.magnitude.begin() + plot_arrays.frequency_count));
    EXPECT_FALSE(plot(PlotKind::magnitude).last_layout().is_empty());
    compared++;
  }

  static void compare_taps(const nlohmann::json &fir) {
    const FirEntry &taps = design_record.fir;
    EXPECT_EQ(fir["coefficients"].get<std::vector<double>>(),
              std::vector<double>(taps.coeff.begin(), taps.coeff.begin() + taps.length));
    EXPECT_EQ(fir["gain"].get<double>(), taps.gain);
  }

  static void compare_sections(const nlohmann::json &json, const SectionEntry &entry) {
    ASSERT_EQ(json["sections"].size(), static_cast<std::size_t>(entry.section_count));
    for (std::size_t i = 0; i < json["sections"].size(); i++) {
      EXPECT_EQ(json["sections"][i]["numerator"].get<Triple>(), entry.numerators[i]);
      EXPECT_EQ(json["sections"][i]["denominator"].get<Triple>(), entry.denominators[i]);
    }
  }

  static void compare(const nlohmann::json &iir) {
    const IirForms &z = design_record.z_quantized;
    compare_sections(iir["cascade"], z.cascade);
    compare_sections(iir["parallel"], z.parallel);
    EXPECT_EQ(iir["cascade"]["gain"].get<double>(), z.cascade.gain);
    EXPECT_EQ(iir["ratio"]["numerator"].get<std::vector<double>>(),
              std::vector<double>(z.ratio.numerator.begin(), z.ratio.numerator.begin() + z.ratio.numerator_order + 1));
    EXPECT_EQ(iir["lattice"]["gain"].get<double>(), z.lattice.gain);
  }

  std::vector<WalkPage> pages;
  std::size_t page = 0, first_page = 0;
  bool went_back = false, going_back = false;
  int walks = 0, compared = 0;
};

TEST_F(WalksTest, EveryFirMethodOfEveryTypeEqualsTheBatchJob) {
  // Types without length estimates ask for window and length on a page of their own.
  const auto without_estimates = [](const std::string &type) {
    return type == "DIFFERENTIATOR" || type == "HILBERT TRANSFORMER" || type == "ARBITRARY MAGNITUDE";
  };
  for (const TypeRow &type : types()) {
    const bool own = without_estimates(type.name);
    const char *window_page = own ? "cFirLengthDialog" : "cFirWinLengthEstDialog";
    const char *page_of_others = own ? "cFirLengthDialog" : "cEqLpLsEstDialog";
    const Entry hamming = own ? Entry{"pWindow_Box", "3"} : Entry{"pWindow3_Button", ""};
    walk(type, type.fir_button,
         {window_design,
          {},
          window_page,
          {hamming, {"pLength_Edit", "49"}},
          "--method window --window hamming --length 49"});
    walk(type, type.fir_button,
         {equiripple_design, {}, page_of_others, {{"pLength_Edit", "43"}}, "--method equiripple --length 43"});
    walk(type, type.fir_button,
         {lp_design, {}, page_of_others, {{"pLength_Edit", "31"}}, "--method linear-programming --length 31"});
    walk(type, type.fir_button,
         {squares_design, {}, page_of_others, {{"pLength_Edit", "37"}}, "--method least-squares --length 37"});
  }
  EXPECT_GE(compared, 25);
}

TEST_F(WalksTest, CompensatedAndEqualizedIirDesignsEqualTheBatchJob) {
  const Entry yes{"pCompensation1_Button", ""}, no{"pCompensation0_Button", ""};
  const WalkPage hold{"cCompSpecDialog", {{"pSinc_Button", ""}}};
  const WalkPage comb{"cCompSpecDialog",
                      {{"pComb_Button", ""}, {"pRate_Edit", "16"}, {"pDelay_Edit", "1"}, {"pStages_Edit", "4"}}};
  const MethodRow rows[] = {
      {iir_design,
       {yes, {"pMethod0_Button", ""}, {"pRealization0_Button", ""}},
       "cIirOrderEstDialog",
       {{"pPrototype3_Button", ""}},
       "--prototype elliptic --compensation sinc",
       {hold}},
      {iir_design,
       {yes, {"pMethod2_Button", ""}, {"pRealization1_Button", ""}},
       "cIirOrderEstDialog",
       {{"pPrototype1_Button", ""}, {"pOrder_Edit", "8"}},
       "--prototype tschebyscheff --order 8 --mapping matched-z --realization parallel --compensation comb "
       "--rate-change 16 --stages 4",
       {comb}},
      {iir_design,
       {yes, {"pEqualization1_Button", ""}, {"pMethod0_Button", ""}, {"pRealization0_Button", ""}},
       "cIirOrderEstDialog",
       {{"pPrototype3_Button", ""}, {"pOrder_Edit", "6"}},
       "--prototype elliptic --order 6 --compensation sinc --phase-equalizer 2",
       {hold, {"cPhaseEQDialog", {{"pNumSections_Edit", "2"}, {"pDesignMethod_Box", "2"}}}}},
      {iir_design,
       {no, {"pEqualization0_Button", ""}},
       "cIirOrderEstDialog",
       {{"pPrototype3_Button", ""}, {"pOrder_Edit", "6"}},
       "--prototype elliptic --order 6"},
  };
  for (const TypeRow &type : types()) {
    if (type.iir_button < 0) continue;
    for (const MethodRow &row : rows) {
      walk(type, type.iir_button, row);
      EXPECT_EQ(design_record.compensation.sections > 0, !row.more.empty()) << type.name << row.options;
    }
  }
  EXPECT_EQ(compared, 16);
}

TEST_F(WalksTest, EveryIirPrototypeMappingAndRealizationEqualsTheBatchJob) {
  const MethodRow rows[] = {
      {iir_design,
       {{"pMethod0_Button", ""}, {"pRealization0_Button", ""}},
       "cIirOrderEstDialog",
       {{"pPrototype0_Button", ""}},
       "--prototype butterworth"},
      {iir_design, {}, "cIirOrderEstDialog", {{"pPrototype1_Button", ""}}, "--prototype tschebyscheff"},
      {iir_design, {}, "cIirOrderEstDialog", {{"pPrototype2_Button", ""}}, "--prototype inverse-tschebyscheff"},
      {iir_design, {}, "cIirOrderEstDialog", {{"pPrototype3_Button", ""}}, "--prototype elliptic"},
      {iir_design,
       {},
       "cIirOrderEstDialog",
       {{"pPrototype4_Button", ""}, {"pOrder_Edit", "6"}},
       "--prototype bessel --order 6"},
      {iir_design,
       {{"pRealization1_Button", ""}},
       "cIirOrderEstDialog",
       {{"pPrototype1_Button", ""}, {"pOrder_Edit", "8"}},
       "--prototype tschebyscheff --order 8 --realization parallel"},
      {iir_design,
       {{"pMethod2_Button", ""}, {"pRealization2_Button", ""}},
       "cIirOrderEstDialog",
       {{"pPrototype0_Button", ""}, {"pOrder_Edit", "4"}},
       "--prototype butterworth --order 4 --mapping matched-z --realization ratio"},
      {iir_design,
       {{"pMethod1_Button", ""}, {"pPath1_Button", ""}, {"pRealization1_Button", ""}},
       "cIirOrderEstDialog",
       {{"pPrototype0_Button", ""}, {"pOrder_Edit", "6"}},
       "--prototype butterworth --order 6 --mapping impulse-invariant --impulse-path z-first --realization parallel"},
      {iir_design,
       {{"pMethod1_Button", ""}, {"pPath0_Button", ""}, {"pRealization0_Button", ""}},
       "cIirOrderEstDialog",
       {{"pPrototype1_Button", ""}, {"pOrder_Edit", "6"}},
       "--prototype tschebyscheff --order 6 --mapping impulse-invariant --impulse-path s-first"},
      {iir_design,
       {{"pMethod0_Button", ""}, {"pRealization3_Button", ""}},
       "cIirOrderEstDialog",
       {{"pPrototype3_Button", ""}},
       "--prototype elliptic --realization lattice"},
  };
  for (const TypeRow &type : types()) {
    if (type.iir_button < 0) continue;
    for (const MethodRow &row : rows) {
      if (&row == &rows[0] || row.design.empty()) // prototypes without choices begin with the first row's
        design_state.ZTransformMethod = design_state.RealizationType = 0;
      walk(type, type.iir_button, row);
    }
  }
  EXPECT_GE(compared, 30);
}

TEST_F(WalksTest, GroupDelayFiltersEqualTheBatchJob) {
  const TypeRow group_delay{
      "ARBITRARY GROUP DELAY",
      -1,
      4,
      {{"cArbGDSpec1Dialog", {{"pSampFreq_Edit", "8000"}, {"pRipple_Edit", "0.5"}, {"pNumValues_Edit", "3"}}},
       {"cArbGDSpec2Dialog",
        {{"pPoints_Table", "0,0"},
         {"", "500"},
         {"pPoints_Table", "0,1"},
         {"", "6"},
         {"pPoints_Table", "1,0"},
         {"", "1500"},
         {"pPoints_Table", "1,1"},
         {"", "8.5"},
         {"pPoints_Table", "2,0"},
         {"", "3000"},
         {"pPoints_Table", "2,1"},
         {"", "9"}}}}};
  for (const auto &[sections, method, options] : {std::tuple{"3", "0", "--sections 3 --delay-method least-squares"},
                                                  {"4", "1", "--sections 4 --delay-method least-p"},
                                                  {"2", "2", "--sections 2 --delay-method minimax"}})
    walk(group_delay, 4,
         {iir_design,
          {},
          "cArbGDOrderDialog",
          {{"pNumSections_Edit", sections}, {"pDesignMethod_Box", method}},
          options});
  walk(group_delay, -1,
       {"Arbitrary &Group Delay ...", {}, "cArbGDOrderDialog", {{"pNumSections_Edit", "3"}}, "--sections 3"});
  EXPECT_EQ(compared, 4);
}

TEST_F(WalksTest, OptionalPagesAndModesEqualTheBatchJob) {
  const std::vector<Entry> taps{{"pLength_Edit", "45"}};
  const auto fir = [](const char *compensation, const char *gain, const char *phase) {
    return std::vector<Entry>{{compensation, ""}, {gain, ""}, {phase, ""}};
  };
  const auto iir = [](const char *equalization) {
    return std::vector<Entry>{{"pMethod0_Button", ""}, {"pRealization0_Button", ""}, {equalization, ""}};
  };
  const char *const window_page = "cFirWinLengthEstDialog", *const optimal_page = "cEqLpLsEstDialog";
  const struct {
    std::size_t type;
    MethodRow method;
  } rows[] = {
      {0,
       {window_design,
        fir("pCompensation1_Button", "pGain0_Button", "pPhase0_Button"),
        window_page,
        taps,
        "--method window --length 45 --compensation sinc",
        {{"cCompSpecDialog", {{"pSinc_Button", ""}}}}}},
      {0,
       {equiripple_design,
        fir("pCompensation1_Button", "pGain1_Button", "pPhase0_Button"),
        optimal_page,
        taps,
        "--method equiripple --length 45 --gain maximum --compensation comb --rate-change 8 --differential-delay 2 "
        "--stages 3",
        {{"cCompSpecDialog",
          {{"pComb_Button", ""}, {"pRate_Edit", "8"}, {"pDelay_Edit", "2"}, {"pStages_Edit", "3"}}}}}},
      {2,
       {window_design, fir("pCompensation0_Button", "pGain1_Button", "pPhase1_Button"), window_page, taps,
        "--method window --length 45 --gain maximum --minimum-phase dft"}},
      {1,
       {equiripple_design,
        fir("pCompensation0_Button", "pGain0_Button", "pPhase2_Button"),
        optimal_page,
        {{"pLength_Edit", "24"}},
        "--method equiripple --length 24 --minimum-phase spectral"}},
      {4,
       {equiripple_design,
        fir("pCompensation0_Button", "pGain0_Button", "pPhase0_Button"),
        "cFirLengthDialog",
        {{"pLength_Edit", "30"}},
        "--method equiripple --length 30"}},
      {0,
       {iir_design,
        iir("pEqualization1_Button"),
        "cIirOrderEstDialog",
        {{"pPrototype0_Button", ""}, {"pOrder_Edit", "4"}},
        "--prototype butterworth --order 4 --phase-equalizer 2 --delay-method least-squares",
        {{"cPhaseEQDialog", {{"pNumSections_Edit", "2"}, {"pDesignMethod_Box", "0"}}}}}},
      {2,
       {iir_design,
        iir("pEqualization1_Button"),
        "cIirOrderEstDialog",
        {{"pPrototype1_Button", ""}, {"pOrder_Edit", "4"}},
        "--prototype tschebyscheff --order 4 --phase-equalizer 3 --delay-ripple 40 --delay-method minimax",
        {{"cPhaseEQDialog", {{"pNumSections_Edit", "3"}, {"pRipple_Edit", "40"}, {"pDesignMethod_Box", "2"}}}}}},
      {3,
       {iir_design,
        iir("pEqualization0_Button"),
        "cIirOrderEstDialog",
        {{"pPrototype3_Button", ""}},
        "--prototype elliptic"}},
  };
  for (const auto &row : rows) {
    const TypeRow &type = types()[row.type];
    walk(type, row.method.item == iir_design ? type.iir_button : type.fir_button, row.method);
  }
  EXPECT_EQ(compared, static_cast<int>(std::size(rows)));
}

// Without a design page the method is that of the session.
TEST_F(WalksTest, EveryItemOfTheFilterMenuEqualsTheBatchJob) {
  const char *const items[] = {
      "&Lowpass ...",        "&Highpass ...",      "&Bandpass ...",          "Band&stop ...",
      "&Differentiator ...", "&Multi-band ...",    "&Hilbert Transform ...", "Arbitrary &Magnitude ...",
      "Hal&fband ...",       "Raised &Cosine ...", "&Root Raised Cosine ..."};
  ASSERT_EQ(std::size(items), types().size());
  for (std::size_t i = 0; i < std::size(items); i++) {
    const std::string name = types()[i].name;
    const bool own = name == "DIFFERENTIATOR" || name == "HILBERT TRANSFORMER" || name == "ARBITRARY MAGNITUDE";
    design_state.DesignOrAnalysisType = code(DesignMethod::equiripple);
    walk(types()[i], -1,
         {items[i],
          {},
          own ? "cFirLengthDialog" : "cEqLpLsEstDialog",
          {{"pLength_Edit", "41"}},
          "--method equiripple --length 41"});
  }
  EXPECT_EQ(compared, static_cast<int>(std::size(items)));
}

} // namespace
} // namespace brisel
