#include "engine/core/design_driver.h"

#include "engine/analysis/plot_arrays.h"
#include "engine/core/design_state.h"
#include "engine/core/start_up.h"
#include "engine/files/spec_file.h"
#include "tests/support/engine_in_memory.h"
#include "tests/support/scripted_front_end.h"
#include "tests/support/source_folder.h"

#include <gtest/gtest.h>

using namespace brisel;

namespace {

const std::string examples = source_file("examples/");

// An engine with the lowpass example loaded, its system files in memory.
struct Engine {
  ScriptedFrontEnd front;
  explicit Engine(const char *file = "lowpass.spc") {
    test::start_engine_in_memory();
    EXPECT_EQ(load_filter_spec(examples + file), success);
    design_state.DesignOrAnalysisType = code(DesignMethod::window);
  }
  ~Engine() { program_exit(ExitMode::discard); }
};

// Where each text stands in the trace; fails when one is missing or out of order.
void expect_in_order(const std::string &text, const std::vector<const char *> &lines) {
  std::size_t at = 0;
  for (const char *line : lines) {
    const std::size_t found = text.find(line, at);
    ASSERT_NE(found, text.npos) << line << " in\n" << text;
    at = found + 1;
  }
}

} // namespace

TEST(DesignRun, GoesThroughItsStagesInOrder) {
  Engine engine;
  design_filter();
  ASSERT_TRUE(design_record.valid);
  expect_in_order(trace_text(),
                  {"Program starts at ", " entering SetFilterDesignType\n", " filter pointer 0x", ", type = 0\n",
                   " entering GetFilterParameters\n", " entering GetOptionalPhaseEqualizationData\n",
                   "\n design counter = 1\n", " entering filter_dsgn_dsgn \n", "\n Fir Filter Design\n",
                   " entering filter_dsgn_quan \n", " entering filter_dsgn_plot \n", " entering fir plot array\n",
                   " leaving fir plot array\n"});
  EXPECT_EQ(engine.front.announced, (std::vector<std::string>{"Working...", "Ready"}));
  EXPECT_EQ(engine.front.pages, (std::vector{Page::low_high_parameters, Page::window}));
  EXPECT_EQ(engine.front.refreshes, 1);
  EXPECT_TRUE(engine.front.posted.empty());
}

TEST(DesignRun, HoldsTrueRatesOutsideAndTwoPiInside) {
  Engine engine;
  design_filter();
  const double rate = two_pi * 8000;
  EXPECT_DOUBLE_EQ(design_record.loaded.sampling_frequency, rate);
  EXPECT_EQ(design_record.spec.sampling_frequency, two_pi);
  EXPECT_EQ(design_record.spec.sampling_period, 1);
  EXPECT_DOUBLE_EQ(design_record.spec.passband_edge[0], two_pi * 1200 / 8000);
  EXPECT_DOUBLE_EQ(design_record.fir_designed.sample_rate, rate);
  EXPECT_DOUBLE_EQ(design_record.fir.sample_rate, rate);
  const double samples = (design_record.fir.length - 1) / 2.0;
  EXPECT_NEAR(plot_arrays.group_delay[10], samples / 8000, 1e-15) << "seconds";
  EXPECT_DOUBLE_EQ(plot_settings.frequency_range[1], rate / 2);
}

TEST(DesignRun, OpensThePagesOfTypeAndMethod) {
  const struct {
    FilterType type;
    DesignMethod method;
    std::vector<Page> pages;
  } rows[] = {
      {FilterType::high_pass, DesignMethod::iir, {Page::low_high_parameters, Page::iir}},
      {FilterType::band_stop, DesignMethod::equiripple, {Page::band_pass_stop_parameters, Page::optimisation}},
      {FilterType::differentiator, DesignMethod::window, {Page::differentiator_parameters, Page::fir}},
      {FilterType::multiband, DesignMethod::window, {Page::multiband_parameters, Page::window}},
      {FilterType::hilbert, DesignMethod::linear_programming, {Page::hilbert_parameters, Page::fir}},
      {FilterType::arbitrary_magnitude, DesignMethod::iir, {Page::arbitrary_magnitude_parameters, Page::fir}},
      {FilterType::arbitrary_group_delay, DesignMethod::window, {Page::group_delay_parameters, Page::group_delay}},
      {FilterType::half_band, DesignMethod::least_squares, {Page::halfband_parameters, Page::optimisation}},
      {FilterType::root_raised_cosine, DesignMethod::window, {Page::raised_cosine_parameters, Page::window}},
  };
  for (const auto &row : rows) {
    Engine engine;
    design_state.filter_type = code(row.type);
    design_state.DesignOrAnalysisType = code(row.method);
    engine.front.answer = [&](Page page) {
      return page == row.pages.back() ? PageResult::cancelled : PageResult::next;
    };
    design_filter();
    EXPECT_EQ(engine.front.pages, row.pages) << filter_types[code(row.type)].file_name;
    EXPECT_EQ(status, 0);
  }
}

TEST(DesignRun, PrevOpensThePageBefore) {
  using enum Page;
  const struct {
    std::vector<PageResult> answers;
    std::vector<Page> pages;
    PageResult end;
  } rows[] = {
      {{PageResult::back}, {low_high_parameters}, PageResult::back}, // to whoever started the run
      {{PageResult::next, PageResult::back, PageResult::cancelled},
       {low_high_parameters, iir, low_high_parameters},
       PageResult::cancelled},
      {{PageResult::next, PageResult::next, PageResult::next, PageResult::back, PageResult::back, PageResult::back,
        PageResult::back},
       {low_high_parameters, iir, compensation, phase_equalization, compensation, iir, low_high_parameters},
       PageResult::back},
  };
  Engine engine;
  design_filter();
  const double tap = design_record.fir.coeff[3];
  for (const auto &row : rows) {
    design_state.DesignOrAnalysisType = code(DesignMethod::iir);
    design_state.CompensationOption = design_state.PhaseEqualizationOption = 1;
    engine.front.pages.clear();
    engine.front.answer = [&](Page) { return row.answers[engine.front.pages.size() - 1]; };
    EXPECT_EQ(design_filter(), row.end);
    EXPECT_EQ(engine.front.pages, row.pages);
    EXPECT_TRUE(design_record.valid) << "the design before the cancelled run";
    EXPECT_EQ(design_record.fir.coeff[3], tap);
  }
}

TEST(DesignRun, RefusesWhatIsImpossibleOrMissingBeforeItStarts) {
  const struct {
    const char *name;
    void (*prepare)();
    Message message;
  } rows[] = {
      {"edges", [] { current_spec->stopband_edge[0] = current_spec->passband_edge[0]; },
       Message::impossible_specification},
      {"length", [] { current_spec->length = 50001; }, Message::length_out_of_limits},
      {"compensation of an all-pass filter",
       [] {
         EXPECT_EQ(load_filter_spec(examples + "group-delay.spc"), success);
         design_state.DesignOrAnalysisType = 0;
         design_state.CompensationOption = 1;
       },
       Message::iir_compensation_refused},
      {"compensation of a raised cosine by the window method",
       [] {
         EXPECT_EQ(load_filter_spec(examples + "raised-cosine.spc"), success);
         design_state.CompensationOption = 1;
       },
       Message::fir_compensation_refused},
      {"phase equalizer without sections",
       [] {
         design_state.DesignOrAnalysisType = 0;
         design_state.PhaseEqualizationOption = 1;
       },
       Message::phase_equalizer_refused},
  };
  for (const auto &row : rows) {
    Engine engine;
    row.prepare();
    design_filter();
    EXPECT_FALSE(design_record.valid) << row.name;
    ASSERT_EQ(engine.front.posted.size(), 1u) << row.name;
    EXPECT_EQ(engine.front.posted[0].number, row.message) << row.name;
  }
}

TEST(DesignRun, TrimsTheSystemFilesEveryFiveRuns) {
  Engine engine;
  std::vector<int> trimmed;
  for (int run = 1; run <= 12; run++) {
    const std::size_t before = trace_text().size();
    design_filter();
    if (trace_text().size() < before) trimmed.push_back(run);
  }
  EXPECT_EQ(trimmed, (std::vector{6, 11}));
}

TEST(SetFilterDesignType, MakesMethodWindowAndPrototypeFitTheType) {
  const struct {
    int type, method, ruled_method, window;
  } rows[] = {{8, 2, 0, 14}, {6, 0, 1, 14}, {2, 3, 3, 14}, {0, 7, 0, 14},
              {5, 7, 1, 14}, {7, 2, 2, 0},  {10, 1, 1, 0}, {11, 4, 4, 0}};
  for (const auto &row : rows) {
    Engine engine;
    spec[0].passband_ripple = 0.25;
    design_state.filter_type = static_cast<std::int8_t>(row.type);
    design_state.DesignOrAnalysisType = static_cast<std::int8_t>(row.method);
    design_state.analog_type = 1;
    SetFilterDesignType();
    EXPECT_EQ(design_state.DesignOrAnalysisType, row.ruled_method) << row.type;
    EXPECT_EQ(current_spec, &spec[row.type]);
    EXPECT_EQ(current_spec->window_type, row.window);
    EXPECT_EQ(design_state.analog_type, 3);
    EXPECT_EQ(spec[0].passband_ripple, 0.25) << "the lowpass specification stays";
  }
}
