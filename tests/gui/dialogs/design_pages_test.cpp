// design_pages_test.cpp - the pages of design runs, walked with keys and clicks in the real workstation.
#include "engine/core/design_driver.h"
#include "engine/core/front_end.h"
#include "engine/files/spec_file.h"
#include "gui/dialogs/spec_page.h"
#include "tests/gui/dialogs/page_walk.h"

#include <QRadioButton>

namespace brisel {
namespace {

using DesignPagesTest = PageWalkTest;

TEST_F(DesignPagesTest, EveryFilterTypeRunsToTheSameTapsAsItsSpecificationAlone) {
  const struct {
    int position; // in the Filter menu
    const char *file;
    QStringList pages;
  } rows[] = {
      {0, "lowpass.spc", {"cLowHighSpecDialog", "cFirWinLengthEstDialog"}},
      {1, "highpass.spc", {"cLowHighSpecDialog", "cFirWinLengthEstDialog"}},
      {2, "bandpass.spc", {"cBandPassStopSpecDialog", "cFirWinLengthEstDialog"}},
      {3, "bandstop.spc", {"cBandPassStopSpecDialog", "cFirWinLengthEstDialog"}},
      {4, "differentiator.spc", {"cDifferSpecDialog", "cFirLengthDialog"}},
      {5, "multiband.spc", {"cMBandArbMagSpecDialog", "cMBandSpecDialog", "cFirWinLengthEstDialog"}},
      {6, "hilbert.spc", {"cHilbertSpecDialog", "cFirLengthDialog"}},
      {7,
       "arbitrary-magnitude.spc",
       {"cMBandArbMagSpecDialog", "cArbMagSpec1Dialog", "cArbMagSpec2Dialog", "cFirLengthDialog"}},
      {8, "halfband.spc", {"cHalfbandSpecDialog", "cFirWinLengthEstDialog"}},
      {9, "raised-cosine.spc", {"cRaiseCosSpecDialog", "cFirWinLengthEstDialog"}},
      {10, "root-raised-cosine.spc", {"cRaiseCosSpecDialog", "cFirWinLengthEstDialog"}},
  };
  // The same design without any dialog.
  struct Silent final : FrontEnd {
    PageResult run_page(Page) override { return PageResult::next; }
    void announce(std::string_view) override {}
    void post_message(Message, std::string_view) override {}
    void show_text(std::string_view) override {}
    void reader_complaint(std::string_view) override {}
    bool progress(double) override { return true; }
    void refresh_plots() override {}
  } silent;
  for (const auto &row : rows) {
    ASSERT_EQ(load_filter_spec(example(row.file)), success);
    design_state.DesignOrAnalysisType = code(DesignMethod::window);
    FrontEnd *const shown = front_end;
    front_end = &silent;
    design_filter();
    front_end = shown;
    ASSERT_TRUE(design_record.valid) << row.file;
    const std::vector<double> taps(design_record.fir.coeff.begin(),
                                   design_record.fir.coeff.begin() + design_record.fir.length);

    design_record.valid = 0;
    seen.clear();
    step = 0;
    steps.assign(static_cast<std::size_t>(row.pages.size()), next);
    window->FilterMenuActivated(row.position);
    EXPECT_EQ(seen, row.pages) << row.file;
    ASSERT_TRUE(design_record.valid) << row.file << dialogs.messages.join("; ").toStdString();
    EXPECT_EQ(taps, std::vector<double>(design_record.fir.coeff.begin(),
                                        design_record.fir.coeff.begin() + design_record.fir.length))
        << row.file;
  }
}

TEST_F(DesignPagesTest, AFreshSessionOffersASpecificationThatIsRight) {
  for (int type = 0; type < filter_type_count; type++) {
    FilterSpec offered = starting_spec(type, two_pi);
    if (type >= code(FilterType::raised_cosine)) derive_raised_cosine_edges(offered);
    const auto complaint = check_spec(offered);
    EXPECT_FALSE(complaint) << type << complaint->reason;
  }
}

TEST_F(DesignPagesTest, TypedValuesReachTheDesign) {
  steps = {[](QDialog &dialog) {
             type(dialog, "SamplingFrequency_Edit", "48000");
             type(dialog, "PassbandFrequency_Edit", "5000");
             type(dialog, "StopbandFrequency_Edit", "7000.5");
             type(dialog, "PassbandRipple_Edit", "0.2");
             type(dialog, "StopbandRipple_Edit", "55");
             next(dialog);
           },
           [](QDialog &dialog) {
             EXPECT_EQ(dialog.findChild<QLineEdit *>("pOrder_Edit")->text(),
                       dialog.findChild<QLabel *>("pOrder3_Label")->text());
             click(dialog, "pPrototype0_Button");
             EXPECT_EQ(dialog.findChild<QLineEdit *>("pOrder_Edit")->text(),
                       dialog.findChild<QLabel *>("pOrder0_Label")->text());
             type(dialog, "pOrder_Edit", "8");
             next(dialog);
           }};
  window->FilterMenuActivated(0);
  ASSERT_TRUE(design_record.valid);
  EXPECT_EQ(design_record.loaded.sampling_frequency, 48000 * two_pi);
  EXPECT_EQ(design_record.loaded.passband_edge[0], 5000 * two_pi);
  EXPECT_EQ(design_record.loaded.stopband_edge[0], 7000.5 * two_pi);
  EXPECT_EQ(design_record.loaded.passband_ripple, 0.2);
  EXPECT_EQ(design_record.loaded.stopband_ripple, 55);
  EXPECT_EQ(design_record.selections.analog_type, code(AnalogPrototype::butterworth));
  EXPECT_EQ(design_record.z.cascade.section_count, 4);
}

TEST_F(DesignPagesTest, AWrongFieldIsMarkedAndNextWaits) {
  const struct {
    const char *field, *text, *reason;
  } wrong[] = {
      {"PassbandFrequency_Edit", "5000", "above half the sampling frequency, 4000 Hz"},
      {"PassbandFrequency_Edit", "1500", "is not above the passband edge"},
      {"PassbandFrequency_Edit", "0", "is zero"},
      {"PassbandFrequency_Edit", "-3", "below zero"},
      {"PassbandFrequency_Edit", "1e999", "not a number"},
      {"PassbandFrequency_Edit", "1,5", "not a number"},
      {"SamplingFrequency_Edit", "0", "not above zero"},
      {"PassbandRipple_Edit", "", "a number is needed"},
      {"StopbandRipple_Edit", "0", "not above zero"},
      {"StopbandRipple_Edit", "500", "beyond 400 dB"},
  };
  steps = {[&](QDialog &dialog) {
    for (const auto &row : wrong) {
      auto *edit = dialog.findChild<QLineEdit *>(row.field);
      const QString right = edit->text();
      edit->setText(row.text);
      EXPECT_FALSE(next_enabled(dialog)) << row.field << row.text;
      EXPECT_TRUE(reasons(dialog).contains(row.reason)) << row.text << reasons(dialog).toStdString();
      edit->setText(right);
      EXPECT_TRUE(next_enabled(dialog));
      EXPECT_EQ(reasons(dialog), "");
    }
    QTest::keyClick(&dialog, Qt::Key_Escape);
  }};
  window->FilterMenuActivated(0);
}

TEST_F(DesignPagesTest, PrevKeepsTheValuesOfEveryPage) {
  steps = {[](QDialog &dialog) { // multiband, first page
             EXPECT_FALSE(dialog.findChild<QPushButton *>("pPrev_Button"));
             type(dialog, "pNumBands_Edit", "2");
             next(dialog);
           },
           [](QDialog &dialog) {
             EXPECT_FALSE(dialog.findChild<QLineEdit *>("pLE3_Edit")->isEnabled());
             type(dialog, "pDV1_Edit", "0.75"); // right
             type(dialog, "pR2_Edit", "-");     // not yet
             click(dialog, "pPrev_Button");
           },
           [](QDialog &dialog) {
             EXPECT_EQ(text_in(dialog, "pNumBands_Edit"), "2");
             next(dialog);
           },
           [](QDialog &dialog) {
             EXPECT_EQ(text_in(dialog, "pDV1_Edit"), "0.75");
             EXPECT_EQ(text_in(dialog, "pR2_Edit"), "0.001");
             next(dialog);
           },
           [](QDialog &dialog) {
             type(dialog, "pLength_Edit", "77");
             click(dialog, "pPrev_Button");
           },
           [](QDialog &dialog) {
             EXPECT_EQ(text_in(dialog, "pDV1_Edit"), "0.75");
             click(dialog, "pPrev_Button");
           },
           next,
           next,
           [](QDialog &dialog) {
             EXPECT_EQ(text_in(dialog, "pLength_Edit"), "77");
             next(dialog);
           }};
  window->FilterMenuActivated(5);
  EXPECT_EQ(step, steps.size());
  ASSERT_TRUE(design_record.valid);
  EXPECT_EQ(design_record.loaded.band_count, 2);
  EXPECT_EQ(design_record.loaded.band_value[0], 0.75);
}

TEST_F(DesignPagesTest, PrevKeepsTheOrderAndPrototypeOfTheRun) {
  steps = {next,
           [](QDialog &dialog) {
             click(dialog, "pPrototype1_Button");
             type(dialog, "pOrder_Edit", "11");
             click(dialog, "pPrev_Button");
           },
           next,
           [](QDialog &dialog) {
             EXPECT_TRUE(dialog.findChild<QRadioButton *>("pPrototype1_Button")->isChecked());
             EXPECT_EQ(text_in(dialog, "pOrder_Edit"), "11");
             next(dialog);
           }};
  window->FilterMenuActivated(0);
  ASSERT_TRUE(design_record.valid);
  EXPECT_EQ(design_record.selections.order, 11);
  // The next run begins with the estimate of its own prototype.
  walk({next, [](QDialog &dialog) {
          EXPECT_EQ(text_in(dialog, "pOrder_Edit"), dialog.findChild<QLabel *>("pOrder3_Label")->text());
          cancel(dialog);
        }});
  window->Filter_StartDesign();
  EXPECT_EQ(step, 2u);
}

TEST_F(DesignPagesTest, ChoosingAWindowFillsTheLengthAndAnOwnValueOverridesIt) {
  const auto length = [](QDialog &dialog) { return dialog.findChild<QLineEdit *>("pLength_Edit")->text(); };
  const auto estimate = [](QDialog &dialog, int window) {
    return dialog.findChild<QLabel *>(QString("pLength%1_Label").arg(window))->text();
  };
  QString hamming;
  steps = {next, [&](QDialog &dialog) {
             EXPECT_EQ(length(dialog), estimate(dialog, kaiser_window));
             click(dialog, "pWindow3_Button");
             hamming = estimate(dialog, 3);
             EXPECT_EQ(length(dialog), hamming);
             next(dialog);
           }};
  design_state.DesignOrAnalysisType = code(DesignMethod::window);
  window->FilterMenuActivated(0);
  ASSERT_TRUE(design_record.valid);
  EXPECT_EQ(design_record.loaded.window_type, 3);
  EXPECT_EQ(QString::number(design_record.fir.length), hamming);

  // The estimate follows a new specification; an own length stays.
  step = 0;
  steps[0] = [](QDialog &dialog) {
    type(dialog, "StopbandFrequency_Edit", "2000");
    next(dialog);
  };
  steps[1] = [&](QDialog &dialog) {
    EXPECT_EQ(length(dialog), estimate(dialog, kaiser_window));
    type(dialog, "pLength_Edit", "2");
    EXPECT_FALSE(next_enabled(dialog));
    type(dialog, "pLength_Edit", "41");
    next(dialog);
  };
  window->Filter_StartDesign();
  ASSERT_TRUE(design_record.valid);
  EXPECT_EQ(design_record.fir.length, 41);
}

TEST_F(DesignPagesTest, CancelAnywhereChangesNothing) {
  const auto change = [](QDialog &dialog) {
    type(dialog, "pPassbandFreq0_Edit", "1100");
    next(dialog);
  };
  const std::vector<Step> runs[] = {{cancel}, {change, cancel}};
  for (const auto &run : runs) {
    steps = run;
    step = 0;
    window->FilterMenuActivated(2);
    EXPECT_EQ(step, steps.size());
    EXPECT_FALSE(design_record.valid);
    EXPECT_EQ(design_state.filter_type, code(FilterType::low_pass));
    EXPECT_EQ(spec[2].sampling_frequency, 0);
    EXPECT_EQ(current_spec, &spec[0]);
  }
}

TEST_F(DesignPagesTest, TheDesignMenuBeginsWithItsSelections) {
  const auto choose = [](QDialog &dialog) {
    EXPECT_EQ(dialog.objectName(), "cFirDesignDialog");
    click(dialog, "pType8_Button");
    click(dialog, "pMode1_Button");
    click(dialog, "pCompensation1_Button");
    next(dialog);
  };
  const auto comb = [](QDialog &dialog) {
    click(dialog, "pComb_Button");
    type(dialog, "pRate_Edit", "128");
    EXPECT_FALSE(next_enabled(dialog));
    type(dialog, "pRate_Edit", "16");
    type(dialog, "pStages_Edit", "4");
    next(dialog);
  };
  const auto back = [](QDialog &dialog) { click(dialog, "pPrev_Button"); };
  steps = {choose, back, cancel};
  window->Design_FIR(2);
  EXPECT_EQ(seen, (QStringList{"cFirDesignDialog", "cHalfbandSpecDialog", "cFirDesignDialog"}));
  EXPECT_EQ(design_state.filter_type, code(FilterType::low_pass)) << "cancelled";

  walk({choose, back, choose, next, next, comb});
  window->Design_FIR(2);
  EXPECT_EQ(seen, (QStringList{"cFirDesignDialog", "cHalfbandSpecDialog", "cFirDesignDialog", "cHalfbandSpecDialog",
                               "cEqLpLsEstDialog", "cCompSpecDialog"}));
  ASSERT_TRUE(design_record.valid) << dialogs.messages.join("; ").toStdString();
  EXPECT_EQ(design_record.loaded.type, code(FilterType::half_band));
  EXPECT_EQ(design_record.loaded.sampling_frequency, 8000) << "radians per second";
  EXPECT_EQ(design_record.selections.CompensationType, 1);
  EXPECT_EQ(design_record.selections.CompensationRateChange, 16);
  EXPECT_EQ(design_record.selections.CompensationNumberOfStages, 4);

  seen.clear();
  step = 0;
  steps = {[](QDialog &dialog) {
             click(dialog, "pType3_Button");
             click(dialog, "pMode0_Button");
             click(dialog, "pCompensation0_Button");
             click(dialog, "pRealization1_Button");
             next(dialog);
           },
           next,
           [](QDialog &dialog) {
             type(dialog, "pOrder_Edit", "7");
             EXPECT_FALSE(next_enabled(dialog)) << "a bandstop has an even order";
             type(dialog, "pOrder_Edit", "8");
             next(dialog);
           }};
  window->Design_IIR();
  EXPECT_EQ(seen, (QStringList{"cIirDesignDialog", "cBandPassStopSpecDialog", "cIirOrderEstDialog"}));
  ASSERT_TRUE(design_record.valid) << dialogs.messages.join("; ").toStdString();
  EXPECT_EQ(design_record.realization, code(RealizationForm::parallel));
  EXPECT_EQ(design_record.z.cascade.section_count, 4);
}

TEST_F(DesignPagesTest, CompensationIsOfferedToWhatHasAPassband) {
  steps = {[](QDialog &dialog) {
             click(dialog, "pCompensation1_Button");
             click(dialog, "pType4_Button"); // group delay
             for (const char *name :
                  {"pCompensation0_Button", "pCompensation1_Button", "pEqualization0_Button", "pEqualization1_Button"})
               EXPECT_FALSE(dialog.findChild<QRadioButton *>(name)->isEnabled()) << name;
             click(dialog, "pType1_Button");
             EXPECT_TRUE(dialog.findChild<QRadioButton *>("pCompensation1_Button")->isEnabled());
             EXPECT_TRUE(dialog.findChild<QRadioButton *>("pCompensation1_Button")->isChecked());
             click(dialog, "pType4_Button");
             next(dialog);
           },
           cancel};
  window->Design_IIR();
  EXPECT_EQ(seen, (QStringList{"cIirDesignDialog", "cArbGDSpec1Dialog"}));

  // Cancelled, the choice is what it was; gone through, a group delay filter has none.
  walk({[](QDialog &dialog) {
          click(dialog, "pCompensation1_Button");
          click(dialog, "pType1_Button");
          next(dialog);
        },
        next, next,
        [](QDialog &dialog) {
          click(dialog, "pComb_Button");
          type(dialog, "pDelay_Edit", "2");
          next(dialog);
        }});
  window->Design_IIR();
  EXPECT_EQ(seen, (QStringList{"cIirDesignDialog", "cLowHighSpecDialog", "cIirOrderEstDialog", "cCompSpecDialog"}));
  EXPECT_FALSE(design_record.valid) << "a comb of delay 2 has a null at half the sampling frequency";
  EXPECT_TRUE(dialogs.messages.join("").contains("null at")) << dialogs.messages.join("; ").toStdString();
  walk({next, next, next, [](QDialog &dialog) {
          EXPECT_EQ(text_in(dialog, "pDelay_Edit"), "2");
          click(dialog, "pSinc_Button");
          next(dialog);
        }});
  window->Design_IIR();
  ASSERT_TRUE(design_record.valid) << dialogs.messages.join("; ").toStdString();
  EXPECT_GT(design_record.compensation.sections, 0);
}

} // namespace
} // namespace brisel
