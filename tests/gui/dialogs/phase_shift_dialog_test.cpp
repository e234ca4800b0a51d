// phase_shift_dialog_test.cpp - the phase shift dialog with real keys, its result against the batch job of the same
// values.
#include "engine/analysis/plot_arrays.h"
#include "engine/core/phase_shift_design.h"
#include "engine/core/start_up.h"
#include "tests/gui/dialogs/page_walk.h"

#include <nlohmann/json.hpp>

#include <cstring>

namespace brisel {
namespace {

bool ok_enabled(const QDialog &dialog) {
  return dialog.findChild<QPushButton *>("pOk_Button")->isEnabled();
}

QString result_text(const QDialog &dialog) {
  return dialog.findChild<QLabel *>("pResult_Label")->text();
}

class PhaseShiftDialogTest : public PageWalkTest {
protected:
  void open_dialog() { menu_item("&Phase Shift Filter ...")->trigger(); }

  /// The typed values by the command line; nothing may differ.
  void expect_batch_result(const std::string &options) {
    ASSERT_TRUE(design_record.valid) << dialogs.messages.join("; ").toStdString();
    const Outcome batch = folder.run("phase-shift " + options + " --json -");
    ASSERT_EQ(batch.status, 0) << batch.err;
    const auto json = nlohmann::json::parse(batch.out);
    const SectionEntry &cascade = design_record.z_quantized.cascade;
    EXPECT_EQ(json["iir"]["cascade"]["gain"].get<double>(), cascade.gain);
    ASSERT_EQ(json["iir"]["cascade"]["sections"].size(), static_cast<std::size_t>(cascade.section_count));
    for (std::size_t i = 0; i < 2; i++) {
      EXPECT_EQ(json["iir"]["cascade"]["sections"][i]["numerator"].get<Triple>(), cascade.numerators[i]);
      EXPECT_EQ(json["iir"]["cascade"]["sections"][i]["denominator"].get<Triple>(), cascade.denominators[i]);
    }
    const auto responses = json["responses"];
    const auto same = [&](const char *name, const auto &values, int count) {
      EXPECT_EQ(responses[name].get<std::vector<double>>(), std::vector<double>(values.begin(), values.begin() + count))
          << name;
    };
    same("magnitude", plot_arrays.magnitude, plot_arrays.frequency_count);
    same("phase", plot_arrays.phase, plot_arrays.frequency_count);
    same("group_delay", plot_arrays.group_delay, plot_arrays.frequency_count);
    same("impulse", plot_arrays.impulse, plot_arrays.time_count);
    EXPECT_EQ(json["notes"].get<std::vector<std::string>>(), design_notes);
  }
};

/// Every field by its letter and keys, as nobody touches a mouse.
void type_values(QDialog &dialog, std::initializer_list<const char *> values) {
  const Qt::Key letters[] = {Qt::Key_S, Qt::Key_F, Qt::Key_P, Qt::Key_V, Qt::Key_R};
  QApplication::setActiveWindow(&dialog);
  std::size_t i = 0;
  for (const char *value : values) {
    QTest::keyClick(&dialog, letters[i++], Qt::AltModifier);
    auto *edit = qobject_cast<QLineEdit *>(dialog.focusWidget());
    ASSERT_TRUE(edit);
    edit->selectAll();
    QTest::keyClicks(edit, value);
  }
}

TEST_F(PhaseShiftDialogTest, TypedValuesRunToTheResultOfTheBatchJob) {
  walk({[](QDialog &dialog) {
    EXPECT_EQ(dialog.windowTitle(), "Phase Shift Dialog");
    type_values(dialog, {"48000", "697", "1209", "-30", "1.5"});
    EXPECT_TRUE(ok_enabled(dialog)) << reasons(dialog).toStdString();
    EXPECT_TRUE(result_text(dialog).contains("within 5 degrees of the shift from 593.455 to"))
        << result_text(dialog).toStdString();
    next(dialog);
  }});
  open_dialog();
  EXPECT_EQ(seen, QStringList{"cPhaseShiftSpecDialog"});
  expect_batch_result("--sampling-frequency 48000 --first-passband 697 --second-passband 1209 --phase-shift -30 "
                      "--real-zero 1.5");
  for (const PlotKind kind : {PlotKind::magnitude, PlotKind::log_magnitude, PlotKind::phase, PlotKind::group_delay,
                              PlotKind::impulse, PlotKind::step, PlotKind::pole_zero})
    EXPECT_FALSE(plot(kind).last_layout().is_empty());

  // The dialog opens with these values, in the unit of the session; with quantization on the result is quantized.
  quantization_settings.quant = 1;
  walk({[](QDialog &dialog) {
    EXPECT_EQ(text_in(dialog, "pSampFreq_Edit"), "48000");
    EXPECT_EQ(text_in(dialog, "pFirstPassband_Edit"), "697");
    EXPECT_EQ(text_in(dialog, "pSecondPassband_Edit"), "1209");
    EXPECT_EQ(text_in(dialog, "pPhaseShift_Edit"), "-30");
    EXPECT_EQ(text_in(dialog, "pRealZero_Edit"), "1.5");
    click(dialog, "pOk_Button");
  }});
  open_dialog();
  expect_batch_result("--sampling-frequency 48000 --first-passband 697 --second-passband 1209 --phase-shift -30 "
                      "--real-zero 1.5 --quantize fixed");
  quantization_settings.quant = 0;
  design_state.FrequencyMode = 1;
  apply_frequency_mode();
  walk({[](QDialog &dialog) {
    EXPECT_EQ(text_in(dialog, "pSampFreq_Edit"), "301592.8947");
    type_values(dialog, {"4", "0.5", "1", "60", "3"});
    next(dialog);
  }});
  open_dialog();
  expect_batch_result("--radians --sampling-frequency 4 --first-passband 0.5 --second-passband 1 --phase-shift 60 "
                      "--real-zero 3");
}

TEST_F(PhaseShiftDialogTest, TheResultIsTheEnteredSystem) {
  walk({next});
  open_dialog();
  ASSERT_TRUE(design_record.valid);
  const std::vector<double> before(plot_arrays.phase.begin(), plot_arrays.phase.begin() + 1001);
  design_record.valid = 0;
  walk({[](QDialog &dialog) {
          EXPECT_EQ(text_in(dialog, "pSampFreq_Edit"), "8000");
          EXPECT_EQ(text_in(dialog, "pGain_Edit"), "-1");
          EXPECT_EQ(text_in(dialog, "pOrder_Edit"), "2");
          next(dialog);
        },
        next});
  menu_item("&Product of Second Order Sections ...")->trigger();
  ASSERT_TRUE(design_record.valid);
  EXPECT_EQ(std::vector<double>(plot_arrays.phase.begin(), plot_arrays.phase.begin() + 1001), before);
}

TEST_F(PhaseShiftDialogTest, AWrongFieldIsMarkedAndOkWaits) {
  const struct {
    const char *field, *text, *reason;
  } rows[] = {
      {"pSampFreq_Edit", "0", "is not above zero"},
      {"pSampFreq_Edit", "4000", "is not below half the sampling frequency"},
      {"pFirstPassband_Edit", "-1", "is not above zero"},
      {"pFirstPassband_Edit", "1k", "not a number"},
      {"pFirstPassband_Edit", "2000", "is not above the first passband"},
      {"pSecondPassband_Edit", "4000", "is not below half the sampling frequency"},
      {"pPhaseShift_Edit", "360", "is no shift"},
      {"pPhaseShift_Edit", "-180", "is a change of sign"},
      {"pPhaseShift_Edit", "", "a number is needed"},
      {"pRealZero_Edit", "1", "is not above 1 or below -1"},
      {"pRealZero_Edit", "-2", "gives no stable filter"},
      {"pRealZero_Edit", "nan", "not a number"},
  };
  walk({[&](QDialog &dialog) {
    for (const auto &row : rows) {
      const QString right = text_in(dialog, row.field);
      type(dialog, row.field, row.text);
      if (!*row.text) QTest::keyClick(dialog.focusWidget(), Qt::Key_Delete);
      EXPECT_FALSE(ok_enabled(dialog)) << row.field << row.text;
      EXPECT_TRUE(reasons(dialog).contains(row.reason)) << row.text << ": " << reasons(dialog).toStdString();
      // Which zeros there are to choose from is told as soon as everything else is right.
      EXPECT_EQ(result_text(dialog), QString(row.reason).contains("number") || row.field != QString("pRealZero_Edit")
                                         ? ""
                                         : "Real zero values that work: from 2.417 to 2269; 4.61 is in their middle");
      next(dialog); // Enter does nothing
      EXPECT_TRUE(dialog.isVisible());
      type(dialog, row.field, right);
      EXPECT_TRUE(ok_enabled(dialog)) << row.field;
      EXPECT_EQ(reasons(dialog), "");
      EXPECT_TRUE(result_text(dialog).contains("from 2.417 to 2269"));
    }
    cancel(dialog);
  }});
  open_dialog();
  EXPECT_FALSE(design_record.valid);
  EXPECT_EQ(last_phase_shift.sampling_frequency, 0);
}

TEST_F(PhaseShiftDialogTest, AReasonOfSeveralLinesIsNotCutOff) {
  walk({[&](QDialog &dialog) {
    type(dialog, "pSecondPassband_Edit", "4000");
    for (QLabel *label : dialog.findChildren<QLabel *>()) // narrower than its text on every screen
      if (!label->text().isEmpty() && label->wordWrap()) label->setText(label->text().repeated(4));
    dialogs.pause();
    QTest::qWait(20); // the layout follows by events
    for (const QLabel *label : dialog.findChildren<QLabel *>()) {
      if (label->text().isEmpty() || !label->wordWrap()) continue;
      EXPECT_GE(label->height(), label->heightForWidth(label->width())) << label->text().toStdString();
    }
    dialogs.resume();
    cancel(dialog);
  }});
  open_dialog();
  EXPECT_EQ(step, 1u);
}

TEST_F(PhaseShiftDialogTest, CancelLeavesEverythingAsItWas) {
  window->load_file(QString::fromStdString(example("biquads.inp")));
  ASSERT_TRUE(design_record.valid);
  const auto entries = std::make_unique<SystemEntries>();
  std::memcpy(entries.get(), &z_entries, sizeof z_entries);
  const DesignState state = design_state;
  const auto counter = design_record.design_counter;
  for (const bool by_button : {false, true}) {
    walk({[&](QDialog &dialog) {
      type(dialog, "pPhaseShift_Edit", "45");
      by_button ? click(dialog, "pCancel_Button") : cancel(dialog);
    }});
    open_dialog();
    EXPECT_EQ(step, 1u);
    EXPECT_EQ(std::memcmp(entries.get(), &z_entries, sizeof z_entries), 0);
    EXPECT_EQ(std::memcmp(&state, &design_state, sizeof state), 0);
    EXPECT_EQ(design_record.design_counter, counter);
    EXPECT_EQ(last_phase_shift.sampling_frequency, 0);
  }
}

} // namespace
} // namespace brisel
