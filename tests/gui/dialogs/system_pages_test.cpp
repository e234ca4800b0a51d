// system_pages_test.cpp - the entry pages of system analysis, walked with keys and clicks from the menu to the plots,
// and held against the command line's analysis of the same system in a file.
#include "engine/analysis/plot_arrays.h"
#include "engine/core/start_up.h"
#include "engine/files/system_file.h"
#include "engine/files/system_lists.h"
#include "tests/gui/dialogs/page_walk.h"

#include <QCheckBox>
#include <QClipboard>
#include <QMessageBox>
#include <QRadioButton>
#include <QTimer>
#include <nlohmann/json.hpp>

#include <cstring>

namespace brisel {
namespace {

using Fields = std::vector<std::pair<const char *, const char *>>; // name, text
using Cells = std::vector<std::pair<const char *, const char *>>;  // table, rows separated by ";"

class SystemPagesTest : public PageWalkTest {
protected:
  void SetUp() override {
    PageWalkTest::SetUp();
    z_entries = s_entries = *std::make_unique<SystemEntries>(); // no system of another test
  }

  /// Largest differences of all responses from those of the command line, relative to their peaks.
  double distance_from_command_line(const std::string &text, const std::string &options = "") {
    folder.write("same.inp", text);
    const Outcome outcome = folder.run("analyze same.inp --json - " + options);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    if (outcome.status != 0) return INFINITY;
    const auto expected = nlohmann::json::parse(outcome.out)["responses"];
    const auto n = static_cast<std::size_t>(plot_arrays.frequency_count),
               m = static_cast<std::size_t>(plot_arrays.time_count);
    double largest = 0;
    const auto compare = [&](const char *name, std::span<const double> got) {
      const auto values = expected[name].get<std::vector<double>>();
      if (values.size() != got.size()) largest = INFINITY;
      double peak = 0, distance = 0;
      for (std::size_t i = 0; i < std::min(got.size(), values.size()); i++) {
        peak = std::max(peak, std::abs(values[i]));
        distance = std::max(distance, std::abs(values[i] - got[i]));
      }
      largest = std::max(largest, peak > 0 ? distance / peak : distance);
    };
    compare("magnitude", std::span(plot_arrays.magnitude).first(n));
    compare("group_delay", std::span(plot_arrays.group_delay).first(n));
    compare("impulse", std::span(plot_arrays.impulse).first(m));
    compare("step", std::span(plot_arrays.step).first(m));
    return largest;
  }
};

std::function<void(QDialog &)> first_page(Fields fields, std::vector<const char *> clicks = {}) {
  return [=](QDialog &dialog) {
    for (const auto &[field, text] : fields) type(dialog, field, text);
    for (const char *button : clicks) click(dialog, button);
    EXPECT_TRUE(next_enabled(dialog)) << dialog.objectName().toStdString() << reasons(dialog).toStdString();
    next(dialog);
  };
}

void fill(QDialog &dialog, const Cells &cells) {
  for (const auto &[name, rows] : cells) {
    auto *table = dialog.findChild<QTableWidget *>(name);
    ASSERT_TRUE(table) << name;
    const QStringList lines = QString(rows).split(";");
    ASSERT_EQ(table->rowCount(), lines.size()) << name;
    for (int r = 0; r < lines.size(); r++) {
      const QStringList words = lines[r].split(" ", Qt::SkipEmptyParts);
      ASSERT_EQ(table->columnCount(), words.size()) << name;
      for (int c = 0; c < words.size(); c++) type_cell(*table, r, c, words[c]);
    }
  }
}

std::function<void(QDialog &)> second_page(Cells cells) {
  return [=](QDialog &dialog) {
    fill(dialog, cells);
    EXPECT_TRUE(next_enabled(dialog)) << dialog.objectName().toStdString() << reasons(dialog).toStdString();
    next(dialog);
  };
}

std::string file(const char *domain, const char *option, const std::string &body) {
  return std::string("DIGITAL SYSTEM ANALYSIS - ") + domain + " DOMAIN INPUT\nINPUT OPTION - " + option +
         "\nSAMPLING FREQUENCY           4.80000e+04 HERTZ\n" + body;
}

struct Row {
  const char *item;
  const char *form; // first part of the names of its dialogs
  Fields fields;
  std::vector<const char *> clicks;
  Cells cells;
  const char *option; // of the file
  const char *body;
  double tolerance;
};
const Row digital_rows[] = {
    {"&Ratio of 2 Polynomials ...",
     "cRatioSpec",
     {{"pSampFreq_Edit", "48000"}, {"pOrderNum_Edit", "1"}, {"pOrderDen_Edit", "3"}, {"pGain_Edit", "0.7"}},
     {},
     {{"pNumerator_Table", "1;0.5"}, {"pDenominator_Table", "1;-0.4;0.3;-0.1"}},
     "RATIO OF TWO POLYNOMIALS N(z)/D(z)",
     "INITIAL GAIN  7.00000000e-01\nNUMERATOR COEFFICIENTS   - HIGHEST ORDER FIRST    2\n1 0.5\n"
     "DENOMINATOR COEFFICIENTS - HIGHEST ORDER FIRST    4\n1 -0.4 0.3 -0.1\n",
     0},
    {"Poles and &Zeros ...",
     "cPoleZeroSpec",
     {{"pSampFreq_Edit", "48000"},
      {"pRealZeros_Edit", "1"},
      {"pComplexZeros_Edit", "2"},
      {"pRealPoles_Edit", "1"},
      {"pComplexPoles_Edit", "2"},
      {"pGain_Edit", "0.3"}},
     {},
     {{"pZeros_Table", "-1 0;0.1 0.9"}, {"pPoles_Table", "0.6 0.5;-0.25 0"}},
     "z PLANE POLES AND ZEROES",
     "INITIAL GAIN  3.00000000e-01\nZEROES OF TRANSFER FUNCTION H(s)     3\n-1 0\n0.1 0.9\n0.1 -0.9\n"
     "POLES OF TRANSFER FUNCTION H(s)      3\n0.6 0.5\n0.6 -0.5\n-0.25 0\n",
     0},
    {"Poles and &Zeros ...",
     "cPoleZeroSpec", // the pair at 0.8 e^(j pi / 3), which 8000 Hz is
     {{"pSampFreq_Edit", "48000"},
      {"pRealZeros_Edit", "1"},
      {"pComplexZeros_Edit", "0"},
      {"pRealPoles_Edit", "0"},
      {"pComplexPoles_Edit", "2"},
      {"pGain_Edit", "1"}},
     {"pCoordinates2_Button"},
     {{"pZeros_Table", "1 24000"}, {"pPoles_Table", "0.8 8000"}},
     "z PLANE POLES AND ZEROES",
     "INITIAL GAIN  1.00000000e+00\nZEROES OF TRANSFER FUNCTION H(s)     1\n-1 0\nPOLES OF TRANSFER FUNCTION H(s)      "
     "2\n"
     "0.4 0.69282032302755092\n0.4 -0.69282032302755092\n",
     1e-12},
    {"&Product of Second Order Sections ...",
     "cSosAnalysisSpec",
     {{"pSampFreq_Edit", "48000"}, {"pOrder_Edit", "3"}, {"pGain_Edit", "0.02"}},
     {},
     {{"pSections_Table", "1 2 1 1 -1.2 0.6;1 0.5 0.2 1 -0.9 0.3;1 1 0 1 -0.5 0"}},
     "PRODUCT OF 2ND ORDER SECTIONS",
     "INITIAL GAIN  2.00000000e-02\nNUMBER OF SECTIONS   3\n\n1 2 1\n1 0.5 0.2\n1 1 0\n\n1 -1.2 0.6\n1 -0.9 0.3\n1 "
     "-0.5 "
     "0\n",
     0},
    {"&Sum of Second Order Sections ...",
     "cSosAnalysisSpec",
     {{"pSampFreq_Edit", "48000"}, {"pOrder_Edit", "2"}, {"pGain_Edit", "0"}},
     {"pMaximumGain_Box"},
     {{"pSections_Table", "0.2 0.1 0 1 -1.2 0.6;0.3 0 0 1 -0.5 0"}},
     "SUM OF 2ND ORDER SECTIONS",
     "INITIAL GAIN  0.00000000e+00\nNUMBER OF SECTIONS   2\n\n0.2 0.1 0\n0.3 0 0\n\n1 -1.2 0.6\n1 -0.5 0\n",
     0},
    {"&Lattice IIR Structure ...",
     "cLatticeSpec",
     {{"pSampFreq_Edit", "48000"}, {"pLatticeOrder_Edit", "3"}, {"pGain_Edit", "2"}},
     {},
     {{"pGamma_Table", "0.1;0.2;0.3;0.4"}, {"pKappa_Table", "-0.5;0.25;0.125"}},
     "LATTICE STRUCTURE",
     "INITIAL GAIN  2.00000000e+00\nNUMBER OF LEADING ZEROS   0\nORDER OF LATTICE   "
     "3\n\n0.1\n0.2\n0.3\n0.4\n\n-0.5\n0.25\n"
     "0.125\n",
     0},
    {"Symmetric &FIR Filter ...",
     "cFirAnalysisSpec",
     {{"pSampFreq_Edit", "48000"}, {"pNumTaps_Edit", "6"}, {"pGain_Edit", "0.5"}},
     {},
     {{"pTaps_Table", "0.1;0.2;0.4"}},
     "SYMMETRIC FIR FILTER",
     "NUMBER OF TAPS     6 GAIN=  5.000000000e-01\nH(   0) =  0.1\nH(   1) =  0.2\nH(   2) =  0.4\n",
     0},
    {"&Anti-symmetric &FIR Filter ...",
     "cFirAnalysisSpec",
     {{"pSampFreq_Edit", "48000"}, {"pNumTaps_Edit", "5"}, {"pGain_Edit", "1"}},
     {"pMaximumGain_Box"},
     {{"pTaps_Table", "-0.1;0.6;0"}},
     "ANTISYMMETRIC FIR FILTER",
     "NUMBER OF TAPS     5 GAIN=  1.000000000e+00\n-H(   0) =  0.1\n-H(   1) = -0.6\n-H(   2) =  0.0\n",
     0},
    {"&Non-symmetric &FIR Filter ...",
     "cFirAnalysisSpec",
     {{"pSampFreq_Edit", "48000"}, {"pNumTaps_Edit", "4"}, {"pGain_Edit", "-2"}},
     {},
     {{"pTaps_Table", "0.1;0.6;0.3;-0.2"}},
     "NONSYMMETRIC FIR FILTER",
     "NUMBER OF TAPS     4 GAIN= -2.000000000e+00\nH(   0) =  0.1\nH(   1) =  0.6\nH(   2) =  0.3\nH(   3) = -0.2\n",
     0},
    {"La&ttice FIR Filter ...",
     "cFirAnalysisSpec",
     {{"pSampFreq_Edit", "48000"}, {"pNumTaps_Edit", "2"}, {"pGain_Edit", "3"}},
     {},
     {{"pTaps_Table", "0.5;-0.7"}},
     "LATTICE FIR FILTER",
     "NUMBER OF TAPS     2 GAIN=  3.000000000e+00\nH(   0) =  0.5\nH(   1) = -0.7\n",
     0},
};

TEST_F(SystemPagesTest, EveryDigitalFormRunsToTheSameResultAsItsFile) {
  for (const Row &row : digital_rows) {
    const std::string what(row.option);
    design_record.valid = 0;
    design_state.SDomainAnalysisMaximumGainOption = 0;
    walk({first_page(row.fields, row.clicks), second_page(row.cells)});
    choose(row.item);
    const QString form = row.form;
    EXPECT_EQ(seen, (QStringList{form + "1Dialog", form + "2Dialog"})) << what;
    ASSERT_TRUE(design_record.valid) << what << dialogs.messages.join("; ").toStdString();
    const std::string options = design_state.SDomainAnalysisMaximumGainOption ? "--unity-gain" : "";
    EXPECT_EQ(options.empty(), row.clicks.empty() || row.clicks[0] != std::string("pMaximumGain_Box"));
    EXPECT_LE(distance_from_command_line(file("Z", row.option, row.body), options), row.tolerance) << what;
  }
}

TEST_F(SystemPagesTest, EveryAnalogFormAndMappingRunsToTheSameResultAsItsFile) {
  const struct {
    const char *form_button;
    const char *form;
    Fields fields;
    Cells cells;
    const char *option;
    const char *body;
  } forms[] = {
      {"pForm0_Button",
       "cRatioSpec",
       {{"pSampFreq_Edit", "48000"}, {"pOrderNum_Edit", "0"}, {"pOrderDen_Edit", "2"}, {"pGain_Edit", "1"}},
       {{"pNumerator_Table", "4e8"}, {"pDenominator_Table", "1;3e4;4e8"}},
       "RATIO OF TWO POLYNOMIALS N(s)/D(s)",
       "INITIAL GAIN  1.00000000e+00\nNUMERATOR COEFFICIENTS   - HIGHEST ORDER FIRST    1\n4e8\n"
       "DENOMINATOR COEFFICIENTS - HIGHEST ORDER FIRST    3\n1 3e4 4e8\n"},
      {"pForm1_Button",
       "cPoleZeroSpec",
       {{"pSampFreq_Edit", "48000"},
        {"pRealZeros_Edit", "0"},
        {"pComplexZeros_Edit", "2"},
        {"pRealPoles_Edit", "1"},
        {"pComplexPoles_Edit", "2"},
        {"pGain_Edit", "7000"}},
       {{"pZeros_Table", "0 50000"}, {"pPoles_Table", "-9000 16000;-20000 0"}},
       "s PLANE POLES AND ZEROES",
       "INITIAL GAIN  7.00000000e+03\nZEROES OF TRANSFER FUNCTION H(s)     2\n0 50000\n0 -50000\n"
       "POLES OF TRANSFER FUNCTION H(s)      3\n-9000 16000\n-9000 -16000\n-20000 0\n"},
      {"pForm2_Button",
       "cSosAnalysisSpec",
       {{"pSampFreq_Edit", "48000"}, {"pOrder_Edit", "2"}, {"pGain_Edit", "3"}},
       {{"pSections_Table", "0 1e4 0 1 1e4 9e8;0 0 1e4 0 1 1e4"}},
       "PRODUCT OF 2ND ORDER SECTIONS",
       "INITIAL GAIN  3.00000000e+00\nNUMBER OF SECTIONS   2\n\n0 1e4 0\n0 0 1e4\n\n1 1e4 9e8\n0 1 1e4\n"},
      {"pForm3_Button",
       "cSosAnalysisSpec",
       {{"pSampFreq_Edit", "48000"}, {"pOrder_Edit", "2"}, {"pGain_Edit", "0"}},
       {{"pSections_Table", "0 1e4 0 1 1e4 9e8;0 0 1e4 0 1 1e4"}},
       "SUM OF 2ND ORDER SECTIONS",
       "INITIAL GAIN  0.00000000e+00\nNUMBER OF SECTIONS   2\n\n0 1e4 0\n0 0 1e4\n\n1 1e4 9e8\n0 1 1e4\n"},
  };
  const struct {
    const char *button;
    const char *options;
    std::vector<Step> prewarp;
  } mappings[] = {
      {"pMethod0_Button", "--mapping bilinear", {next}},
      {"pMethod0_Button", "--prewarp 5000", {first_page({{"pPrewarpFreq_Edit", "5000"}})}},
      {"pMethod0_Button", "--prewarp-all", {first_page({}, {"pPrewarpAll_Box"})}},
      {"pMethod1_Button", "--mapping impulse-invariant", {}},
      {"pMethod2_Button", "--mapping matched-z", {}},
      {"pMethod3_Button", "--mapping s-domain", {}},
  };
  for (const auto &form : forms) {
    for (const auto &mapping : mappings) {
      const std::string what = std::string(form.option) + " " + mapping.options;
      design_record.valid = 0;
      design_state.PrewarpOption = 0;
      design_state.prewarp_frequency = 0;
      std::vector<Step> run{first_page({}, {form.form_button, mapping.button}), first_page(form.fields),
                            second_page(form.cells)};
      run.insert(run.end(), mapping.prewarp.begin(), mapping.prewarp.end());
      walk(run);
      choose("&S Domain ...");
      const QString name = form.form;
      QStringList pages{"cSDomainSpecDialog", name + "1Dialog", name + "2Dialog"};
      if (!mapping.prewarp.empty()) pages.append("cPrewarpSpecDialog");
      EXPECT_EQ(seen, pages) << what;
      ASSERT_TRUE(design_record.valid) << what << dialogs.messages.join("; ").toStdString();
      EXPECT_EQ(distance_from_command_line(file("S", form.option, form.body), mapping.options), 0) << what;
    }
  }
}

TEST_F(SystemPagesTest, PrevLeadsThroughAllPagesAndKeepsWhatWasTyped) {
  walk({first_page({}, {"pForm1_Button"}),
        [](QDialog &dialog) {
          type(dialog, "pComplexPoles_Edit", "4");
          type(dialog, "pGain_Edit", "x"); // never a number
          click(dialog, "pPrev_Button");
        },
        [](QDialog &dialog) {
          EXPECT_TRUE(dialog.findChild<QRadioButton *>("pForm1_Button")->isChecked());
          EXPECT_FALSE(dialog.findChild<QPushButton *>("pPrev_Button"));
          next(dialog);
        },
        [](QDialog &dialog) {
          EXPECT_EQ(text_in(dialog, "pComplexPoles_Edit"), "4");
          EXPECT_EQ(text_in(dialog, "pGain_Edit"), "39478417.6");
          next(dialog);
        },
        [](QDialog &dialog) {
          auto *poles = dialog.findChild<QTableWidget *>("pPoles_Table");
          ASSERT_EQ(poles->rowCount(), 2);
          type_cell(*poles, 1, 0, "-1234.5");
          EXPECT_EQ(dialog.findChild<QLabel *>("pComplexPoles_Label")->text(), "Complex Poles: 4");
          click(dialog, "pPrev_Button");
        },
        first_page({}, {"pCoordinates1_Button"}), [](QDialog &dialog) { click(dialog, "pPrev_Button"); },
        first_page({}, {"pCoordinates0_Button"}),
        [](QDialog &dialog) {
          EXPECT_EQ(dialog.findChild<QTableWidget *>("pPoles_Table")->item(1, 0)->text(), "-1234.5");
          next(dialog);
        },
        [](QDialog &dialog) {
          EXPECT_EQ(dialog.findChild<QLabel *>("pSampFreq_Label")->text(), "Sampling Frequency: 8000");
          EXPECT_EQ(dialog.findChild<QLabel *>("pUnit_Label")->text(), "Hz");
          type(dialog, "pPrewarpFreq_Edit", "77");
          click(dialog, "pPrev_Button");
        },
        next,
        [](QDialog &dialog) {
          EXPECT_EQ(text_in(dialog, "pPrewarpFreq_Edit"), "77");
          next(dialog);
        }});
  choose("&S Domain ...");
  EXPECT_EQ(step, steps.size());
  ASSERT_TRUE(design_record.valid);
  EXPECT_EQ(s_entries.pole_zero.poles[2].real(), -1234.5);
  EXPECT_EQ(design_state.prewarp_frequency, 77 * two_pi);
}

TEST_F(SystemPagesTest, CancelAnywhereLeavesEverythingAsItWas) {
  window->load_file(QString::fromStdString(example("resonator.inp")));
  ASSERT_TRUE(design_record.valid);
  const auto z_before = std::make_unique<SystemEntries>(), s_before = std::make_unique<SystemEntries>();
  std::memcpy(z_before.get(), &z_entries, sizeof z_entries);
  std::memcpy(s_before.get(), &s_entries, sizeof s_entries);
  const DesignState state_before = design_state;
  const auto counter = design_record.design_counter;
  const std::string path = z_path[code(InputOption::pole_zero)];
  const Step gain = first_page({{"pGain_Edit", "5"}}, {"pMaximumGain_Box"});
  const struct {
    const char *item;
    std::vector<Step> steps;
  } runs[] = {
      {"Poles and &Zeros ...", {cancel}},
      {"Poles and &Zeros ...", {gain, cancel}},
      {"&Sum of Second Order Sections ...", {gain, cancel}},
      {"&S Domain ...", {first_page({}, {"pForm2_Button", "pMethod2_Button"}), gain, cancel}},
      {"&S Domain ...", {next, gain, next, cancel}},
      {"&S Domain ...", {next, gain, next, [](QDialog &dialog) { click(dialog, "pCancel_Button"); }}},
  };
  for (const auto &run : runs) {
    walk(run.steps);
    choose(run.item);
    EXPECT_EQ(step, steps.size());
    EXPECT_EQ(std::memcmp(z_before.get(), &z_entries, sizeof z_entries), 0) << run.item;
    EXPECT_EQ(std::memcmp(s_before.get(), &s_entries, sizeof s_entries), 0) << run.item;
    EXPECT_EQ(std::memcmp(&state_before, &design_state, sizeof design_state), 0) << run.item;
    EXPECT_EQ(z_path[code(InputOption::pole_zero)], path);
    EXPECT_EQ(design_record.design_counter, counter);
    EXPECT_TRUE(design_record.valid);
  }
}

TEST_F(SystemPagesTest, ThePagesBeginWithTheSystemThatWasLoadedInAllItsDigits) {
  const char *const files[] = {"biquads.inp", "resonator.inp", "lattice.inp", "triangle-fir.inp",
                               "analog-butterworth.inp"};
  const char *const items[] = {"&Product of Second Order Sections ...", "Poles and &Zeros ...",
                               "&Lattice IIR Structure ...", "Symmetric &FIR Filter ...", "&S Domain ..."};
  for (std::size_t i = 0; i < std::size(files); i++) {
    window->load_file(QString::fromStdString(example(files[i])));
    ASSERT_TRUE(design_record.valid) << files[i];
    const std::vector<double> before(plot_arrays.magnitude.begin(), plot_arrays.magnitude.begin() + 1001);
    design_record.valid = 0;
    walk({next, next, next, next});
    choose(items[i]);
    ASSERT_TRUE(design_record.valid) << files[i];
    EXPECT_EQ(std::vector<double>(plot_arrays.magnitude.begin(), plot_arrays.magnitude.begin() + 1001), before)
        << files[i];
  }
}

TEST_F(SystemPagesTest, AWrongFieldIsMarkedAndNextWaits) {
  const struct {
    const char *item, *field, *text, *reason;
  } rows[] = {
      {"&Ratio of 2 Polynomials ...", "pSampFreq_Edit", "0", "is not above zero"},
      {"&Ratio of 2 Polynomials ...", "pSampFreq_Edit", "1e31", "is beyond all limits"},
      {"&Ratio of 2 Polynomials ...", "pSampFreq_Edit", "nan", "not a number"},
      {"&Ratio of 2 Polynomials ...", "pGain_Edit", "0", "is 0, and so is the system"},
      {"&Ratio of 2 Polynomials ...", "pOrderNum_Edit", "161", "a whole number from 0 to 160"},
      {"Poles and &Zeros ...", "pComplexPoles_Edit", "3", "an even number"},
      {"Poles and &Zeros ...", "pRealZeros_Edit", "3", "there are more zeros than poles"},
      {"Poles and &Zeros ...", "pRealPoles_Edit", "199", "more than 200 poles"},
      {"&Sum of Second Order Sections ...", "pOrder_Edit", "101", "a whole number from 1 to 100"},
      {"&Lattice IIR Structure ...", "pLatticeOrder_Edit", "1", "a whole number from 2 to 200"},
      {"Symmetric &FIR Filter ...", "pNumTaps_Edit", "50001", "a whole number from 1 to 50000"},
  };
  for (const auto &row : rows) {
    walk({[&](QDialog &dialog) {
      const QString right = text_in(dialog, row.field);
      type(dialog, row.field, row.text);
      EXPECT_FALSE(next_enabled(dialog)) << row.field << row.text;
      EXPECT_TRUE(reasons(dialog).contains(row.reason)) << row.text << ": " << reasons(dialog).toStdString();
      type(dialog, row.field, right);
      EXPECT_TRUE(next_enabled(dialog)) << row.field;
      cancel(dialog);
    }});
    choose(row.item);
    EXPECT_EQ(step, 1u);
  }
  const struct {
    const char *item, *table;
    int row;
    const char *text, *reason;
  } cells[] = {
      {"&Ratio of 2 Polynomials ...", "pDenominator_Table", 0, "0", "answer before its input"},
      {"&Ratio of 2 Polynomials ...", "pNumerator_Table", 1, "1.2.3", "row 2: Numerator is not a number"},
      {"&Anti-symmetric &FIR Filter ...", "pTaps_Table", 3, "1", "must be 0"},
      {"&Product of Second Order Sections ...", "pSections_Table", 1, "1e400", "row 2: b0 is not a number"},
  };
  for (const auto &cell : cells) {
    walk({next, [&](QDialog &dialog) {
            auto &table = *dialog.findChild<QTableWidget *>(cell.table);
            type_cell(table, cell.row, 0, cell.text);
            EXPECT_FALSE(next_enabled(dialog)) << cell.item;
            EXPECT_TRUE(reasons(dialog).contains(cell.reason)) << cell.reason << ": " << reasons(dialog).toStdString();
            cancel(dialog);
          }});
    choose(cell.item);
    EXPECT_EQ(step, 2u);
  }
  // A notch at 2500 Hz and a sampling frequency of 4000 Hz.
  walk({first_page({}, {"pForm1_Button"}), first_page({{"pSampFreq_Edit", "4000"}, {"pComplexZeros_Edit", "2"}}),
        second_page({{"pZeros_Table", "0 15708"}}), [](QDialog &dialog) {
          for (const auto &[text, right] : {std::pair("2000", false), {"-1", false}, {"1999", true}}) {
            type(dialog, "pPrewarpFreq_Edit", text);
            EXPECT_EQ(next_enabled(dialog), right) << text;
          }
          click(dialog, "pPrewarpAll_Box");
          EXPECT_FALSE(next_enabled(dialog));
          EXPECT_TRUE(reasons(dialog).contains("is not below half the sampling frequency, 2000 Hz"));
          cancel(dialog);
        }});
  choose("&S Domain ...");
  EXPECT_EQ(step, 4u);
}

TEST_F(SystemPagesTest, RowsAreAddedDeletedAndPastedAndTheCountsFollow) {
  const auto label = [](QDialog &dialog, const char *name) { return dialog.findChild<QLabel *>(name)->text(); };
  walk({next,
        [&](QDialog &dialog) {
          auto &numerator = *dialog.findChild<QTableWidget *>("pNumerator_Table");
          numerator.setCurrentCell(2, 0);
          click(dialog, "pNumeratorDelete_Button");
          EXPECT_EQ(label(dialog, "pNumOrder_Label"), "Numerator Order: 1");
          QGuiApplication::clipboard()->setText("1\n-0.5\n0.25\n0.125\n");
          click(dialog, "pDenominatorPaste_Button");
          EXPECT_EQ(label(dialog, "pDenOrder_Label"), "Denominator Order: 3");
          click(dialog, "pNumeratorAdd_Button");
          EXPECT_EQ(label(dialog, "pNumOrder_Label"), "Numerator Order: 2");
          click(dialog, "pPrev_Button");
        },
        [](QDialog &dialog) {
          EXPECT_EQ(text_in(dialog, "pOrderNum_Edit"), "2");
          EXPECT_EQ(text_in(dialog, "pOrderDen_Edit"), "3");
          type(dialog, "pOrderDen_Edit", "2");
          next(dialog);
        },
        [&](QDialog &dialog) {
          EXPECT_EQ(dialog.findChild<QTableWidget *>("pDenominator_Table")->rowCount(), 3);
          cancel(dialog);
        }});
  choose("&Ratio of 2 Polynomials ...");
  EXPECT_EQ(step, steps.size());

  walk({first_page({{"pNumTaps_Edit", "6"}}), [&](QDialog &dialog) {
          auto &taps = *dialog.findChild<QTableWidget *>("pTaps_Table");
          EXPECT_EQ(taps.rowCount(), 3);
          EXPECT_EQ(taps.verticalHeaderItem(0)->text(), "H(0) = H(5)");
          click(dialog, "pTapsAdd_Button");
          EXPECT_EQ(label(dialog, "pNumTaps_Label"), "Number of Taps: 8");
          taps.setRangeSelected(QTableWidgetSelectionRange(1, 0, 3, 0), true);
          click(dialog, "pTapsDelete_Button");
          EXPECT_EQ(label(dialog, "pNumTaps_Label"), "Number of Taps: 2");
          taps.selectAll();
          click(dialog, "pTapsDelete_Button");
          EXPECT_FALSE(next_enabled(dialog));
          EXPECT_TRUE(reasons(dialog).contains("there are no taps"));
          cancel(dialog);
        }});
  choose("Symmetric &FIR Filter ...");
  EXPECT_EQ(step, steps.size());
}

TEST_F(SystemPagesTest, WhatCannotBePastedIsToldAndChangesNothing) {
  QString many;
  for (int i = 0; i <= max_ratio_order + 1; i++) many += "1\n";
  const struct {
    QString text;
    const char *told;
    int rows; // afterwards
  } cases[] = {{many, "There are 162 rows; at most 161 can be entered.", 3},
               {"0,5\r\n1,5\r\n", "Line 1 does not hold one number: 0,5\nCommas separate columns", 3},
               {"1 2\n", "Line 1 does not hold one number: 1 2", 3},
               {"1\nx\n", "Line 2 does not hold one number: x", 3},
               {"no numbers\n", "There are no numbers to paste.", 3},
               {"Denominator\r\n1\r\n-0.5\r\n", nullptr, 2}};
  walk({next, [&](QDialog &dialog) {
          auto &table = *dialog.findChild<QTableWidget *>("pDenominator_Table");
          for (const auto &c : cases) {
            QString told;
            QTimer::singleShot(0, [&told] { // from the event loop of the box
              if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                told = box->text();
                box->accept();
              }
            });
            QGuiApplication::clipboard()->setText(c.text);
            click(dialog, "pDenominatorPaste_Button");
            QCoreApplication::processEvents(); // the shot when there was no box
            EXPECT_EQ(table.rowCount(), c.rows) << c.text.toStdString();
            EXPECT_TRUE(c.told ? told.contains(c.told) : told.isEmpty()) << told.toStdString();
          }
          cancel(dialog);
        }});
  choose("&Ratio of 2 Polynomials ...");
  EXPECT_EQ(step, 2u);
}

TEST_F(SystemPagesTest, EveryPageHasItsHelp) {
  const auto help = [](QDialog &dialog) {
    click(dialog, "pHelp_Button");
    bool shown = false;
    for (QDialog *child : dialog.findChildren<QDialog *>()) {
      shown = shown || child->windowTitle() == "Help";
      child->close();
    }
    EXPECT_TRUE(shown) << dialog.objectName().toStdString();
    next(dialog);
  };
  for (const Row &row : digital_rows) {
    walk({help, help});
    choose(row.item);
    EXPECT_EQ(step, 2u);
  }
  walk({help, help, help, help});
  choose("&S Domain ...");
  EXPECT_EQ(step, 4u);
}

} // namespace
} // namespace brisel
