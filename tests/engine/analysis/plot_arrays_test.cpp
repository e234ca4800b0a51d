#include "engine/analysis/plot_arrays.h"

#include "engine/analysis/form_conversions.h"
#include "engine/core/trace.h"
#include "tests/engine/analysis/response_references.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace brisel {
namespace {

constexpr double pi = std::numbers::pi;

/// A finished FIR design in the record: `taps`, sampled at `rate_hz`.
void set_fir(std::vector<double> taps, FirSymmetry symmetry, double rate_hz = 1000, double gain = 1) {
  std::memset(static_cast<void *>(&design_record), 0, sizeof design_record);
  design_notes.clear();
  choose_system_files({{SystemFile::Kind::memory, ""}, {SystemFile::Kind::null_device, ""}});
  reopen_system_files();
  DesignRecord &r = design_record;
  r.selections.DesignOrAnalysisType = code(DesignMethod::window);
  r.loaded.sampling_frequency = two_pi * rate_hz;
  r.plot.nfpts = 101;
  r.plot.dnimp = 200;
  r.fir.length = static_cast<int>(taps.size());
  r.fir.fir_type = code(symmetry);
  r.fir.gain = gain;
  r.fir.sample_rate = r.loaded.sampling_frequency;
  std::copy(taps.begin(), taps.end(), r.fir.coeff.begin());
}

std::complex<double> plotted(int i) {
  return std::polar(plot_arrays.magnitude[i], plot_arrays.phase[i]);
}

TEST(InitPlotArray, ResetsARangeThatIsNone) {
  for (const Range range : {Range{0, 0}, Range{500, 100}, Range{5, 5}}) {
    set_fir({1}, FirSymmetry::symmetric);
    design_record.plot.frequency_range = range;
    init_plot_array();
    EXPECT_EQ(plot_state.frequency, (Range{0, two_pi * 500}));
    EXPECT_EQ(plot_arrays.frequency[0], 0);
    EXPECT_NEAR(plot_arrays.frequency[100], pi, 1e-15);
    EXPECT_EQ(plot_arrays.time_count, 200);
    EXPECT_NEAR(plot_state.time[1], 0.199, 1e-15);
  }
}

TEST(InitPlotArray, RefusesRangesWithoutDecades) {
  const double inf = INFINITY;
  for (const bool logarithmic : {true, false})
    for (const Range range :
         {Range{-5, 100}, Range{0, inf}, Range{1, 1e308}, Range{-inf, 100}, Range{std::nan(""), 100},
          Range{1, std::nan("")}, Range{0, 1e-300}, Range{1e-310, 100}, Range{5e-324, 100}}) {
      if (!logarithmic && (range[0] == -5 || range[1] == 1e-300)) continue; // a linear axis has these
      set_fir({1}, FirSymmetry::symmetric);
      design_record.plot.PlotType0Linear1Log = logarithmic;
      design_record.plot.frequency_range = range;
      init_plot_array();
      EXPECT_EQ(plot_state.frequency, (Range{0, two_pi * 500})) << range[0] << " " << range[1];
      for (int i = 1; i < plot_arrays.frequency_count; i++) ASSERT_GT(plot_arrays.frequency[i], 0) << range[0];
      EXPECT_EQ(plot_arrays.frequency[0] > 0, logarithmic);
    }
}

TEST(InitPlotArray, CapsThePointCounts) {
  set_fir({1}, FirSymmetry::symmetric);
  design_record.plot.nfpts = 20000;
  design_record.plot.dnimp = 100000;
  init_plot_array();
  EXPECT_EQ(plot_arrays.frequency_count, max_frequency_points);
  EXPECT_EQ(plot_arrays.time_count, max_time_points);
}

TEST(InitPlotArray, PutsDecadesWhereTheUnitHasThem) {
  for (const bool radians : {false, true}) {
    set_fir({1}, FirSymmetry::symmetric, radians ? 1000 / two_pi : 1000);
    design_record.selections.FrequencyMode = radians;
    design_record.plot.PlotType0Linear1Log = 1;
    init_plot_array();
    const double unit = radians ? 1 : two_pi;
    EXPECT_NEAR(plot_state.log_range[0], 0.1 * unit, 1e-12);
    EXPECT_NEAR(plot_state.log_range[1], 1000 * unit, 1e-9);
    EXPECT_EQ(plot_state.decades, 4);
    EXPECT_NEAR(plot_arrays.frequency[0], two_pi * 1e-4, 1e-15);
    EXPECT_NEAR(plot_arrays.frequency[100], pi, 1e-15);
    const PlotDescription d = setup_plot_labels(PlotKind::log_magnitude);
    EXPECT_EQ(d.x_label, radians ? "Frequency (Radians)" : "Frequency (Hertz)");
    EXPECT_NEAR(d.x_range[1] * d.x_scale, 1000, 1e-9);
    EXPECT_NEAR(d.x[100] * d.x_scale, 500, 1e-9);
  }
}

TEST(LogMagnitude, HasAFloor) {
  const std::vector<double> magnitude{10, 1, 1.0001e-30, 1e-30, 0};
  std::vector<double> db(5);
  log_magnitude(magnitude, db);
  EXPECT_EQ(db[0], 20);
  EXPECT_EQ(db[1], 0);
  EXPECT_NEAR(db[2], -600, 1e-2);
  EXPECT_EQ(db[3], -600);
  EXPECT_EQ(db[4], -600);
}

TEST(PlotRange, WidensAConstant) {
  const std::pair<std::vector<double>, Range> cases[] = {
      {{1, -2, 3}, {-2, 3}}, {{0, 0}, {-1, 1}}, {{-4, -4}, {-8, -2}}, {{3}, {1.5, 6}}};
  for (const auto &[values, range] : cases) EXPECT_EQ(plot_range(values), range);
}

TEST(FirPlotArray, FillsResponsesOfAShortFilter) {
  const std::vector<double> h{0.1, 0.2, 0.4, 0.2, 0.1};
  set_fir(h, FirSymmetry::symmetric, 1000, 3);
  fir_plot_array();
  for (int i = 0; i <= 100; ++i) {
    EXPECT_LT(std::abs(Wide(plotted(i)) - 3.0L * direct_sum(h, i * wide_two_pi / 200)), 4e-15) << i;
    EXPECT_NEAR(plot_arrays.log_magnitude[i], 20 * std::log10(plot_arrays.magnitude[i]), 1e-12);
    EXPECT_NEAR(plot_arrays.group_delay[i], 0.002, 1e-16);
  }
  EXPECT_EQ(plot_arrays.time_count, 5);
  EXPECT_NEAR(plot_state.time[1], 0.004, 1e-16);
  EXPECT_EQ(plot_arrays.impulse[599], 3 * 0.1);
  EXPECT_NEAR(plot_arrays.step[599], 3, 1e-15);
  EXPECT_EQ(plot_state.phase, (Range{-pi, pi}));
  EXPECT_TRUE(plot_state.fir_design);
  EXPECT_EQ(trace_text(), " entering fir plot array\n after init_plot_array\n after computing frequency responses\n"
                          " after computing time responses\n leaving fir plot array\n");
}

// What holds for the taps of one length and symmetry on the whole grid, for every other grid and code.
TEST(FirPlotArray, KnowsEverySymmetryOnBothGrids) {
  const std::vector<double> reflection{0.5, -0.25, 0.125};
  const std::vector<double> lattice_taps{1, 0.34375, -0.203125, 0.125}; // by hand from the recursion
  const struct {
    FirSymmetry symmetry;
    std::vector<double> coefficients, taps;
  } cases[] = {{FirSymmetry::antisymmetric, {1, 2, 0, -2, -1}, {1, 2, 0, -2, -1}},
               {FirSymmetry::antisymmetric, {1, 2, -2, -1}, {1, 2, -2, -1}},
               {FirSymmetry::symmetric, {1, 2, 2, 1}, {1, 2, 2, 1}},
               {FirSymmetry::nonsymmetric, {1, -3, 0.5}, {1, -3, 0.5}},
               {FirSymmetry::lattice, reflection, lattice_taps}};
  for (const auto &c : cases) {
    for (const bool logarithmic : {false, true}) {
      SCOPED_TRACE(testing::Message() << static_cast<int>(c.symmetry) << logarithmic);
      set_fir(c.coefficients, c.symmetry);
      design_record.plot.PlotType0Linear1Log = logarithmic;
      design_record.plot.frequency_range = {two_pi * 7, two_pi * 480};
      fir_plot_array();
      for (int i = 1; i <= 100; ++i) {
        const double w = plot_arrays.frequency[i];
        EXPECT_LT(std::abs(Wide(plotted(i)) - direct_sum(c.taps, w)), 1e-14) << i;
        // Symmetric taps: the middle. Others: the phase's central difference.
        const long double e = 1e-6L;
        const bool linear = c.symmetry == FirSymmetry::symmetric || c.symmetry == FirSymmetry::antisymmetric;
        const double delay =
            linear ? 0.5 * (static_cast<double>(c.taps.size()) - 1)
                   : static_cast<double>(std::arg(direct_sum(c.taps, w - e) / direct_sum(c.taps, w + e)) / (2 * e));
        EXPECT_NEAR(plot_arrays.group_delay[i], delay / 1000, 1e-9 / 1000) << i;
      }
      EXPECT_EQ(plot_arrays.time_count, static_cast<int>(c.taps.size()));
      EXPECT_EQ(plot_arrays.impulse[2], c.taps[2]);
    }
  }
}

TEST(FirPlotArray, FirstPhaseOfAntisymmetricTapsFollowsTheSecond) {
  for (const double sign : {1.0, -1.0}) {
    set_fir({sign, 0, -sign}, FirSymmetry::antisymmetric);
    fir_plot_array();
    EXPECT_EQ(plot_arrays.magnitude[0], 0);
    EXPECT_EQ(plot_arrays.log_magnitude[0], -600);
    EXPECT_EQ(plot_arrays.phase[0], sign * pi / 2);
    EXPECT_NEAR(plot_arrays.phase[1], sign * (pi / 2) - pi / 100, 1e-15);
  }
  set_fir({1, 0, 0, 0, 0, 0, 0, 0, -1}, FirSymmetry::antisymmetric);
  design_record.plot.nfpts = 6; // the second phase is pi / 2 - 4 pi / 5
  fir_plot_array();
  EXPECT_EQ(plot_arrays.phase[0], 0);
}

TEST(FirPlotArray, LongFiltersShowAsManyTapsAsFit) {
  set_fir(std::vector<double>(40000, 1.0), FirSymmetry::symmetric);
  fir_plot_array();
  EXPECT_EQ(plot_arrays.time_count, max_time_points);
  EXPECT_EQ(plot_arrays.step[max_time_points - 1], max_time_points);
  EXPECT_EQ(plot_arrays.magnitude[0], 40000);
}

TEST(FirPlotArray, TimeRangesHaveAMargin) {
  const struct {
    std::vector<double> taps;
    Range impulse, step;
  } cases[] = {{{1, -2, 1}, {-2.4, 2.4}, {-1.2, 1.2}}, // steps 1 -1 0
               {{1, 2, 1}, {1, 2}, {0, 4.8}},
               {{-1, -2, -1}, {-2, -1}, {-4.8, 0}},
               {{0, 0, 0}, {-1, 1}, {-1.2, 1.2}}};
  for (const auto &c : cases) {
    set_fir(c.taps, FirSymmetry::symmetric);
    fir_plot_array();
    for (const int end : {0, 1}) {
      const double margin = c.taps[0] == 0 ? 1.2 : 1; // a constant 0 becomes -1 .. 1, which spans zero
      EXPECT_NEAR(plot_state.impulse[end], margin * c.impulse[end], 1e-15);
      EXPECT_NEAR(plot_state.step[end], c.step[end], 1e-15);
    }
  }
}

TEST(FirPlotArray, RaisedCosineHasItsIdealBeside) {
  for (const FilterType type : {FilterType::raised_cosine, FilterType::root_raised_cosine, FilterType::low_pass}) {
    set_fir({1, 2, 1}, FirSymmetry::symmetric);
    design_record.selections.filter_type = code(type);
    design_record.loaded.passband_edge[0] = two_pi * 100;
    design_record.loaded.stopband_edge[0] = two_pi * 300;
    fir_plot_array();
    if (type == FilterType::low_pass) {
      EXPECT_EQ(plot_state.ideal, nullptr);
      continue;
    }
    const double half = type == FilterType::raised_cosine ? 20 * std::log10(0.5) : 10 * std::log10(0.5);
    EXPECT_EQ(plot_state.ideal[10], 0);
    EXPECT_NEAR(plot_state.ideal[40], half, 1e-12); // 200 Hz
    EXPECT_EQ(plot_state.ideal[60], -600);
    EXPECT_EQ(plot_state.ideal[100], -600);
    // Of an entered system there is no ideal, and the closing trace line is left out.
    design_record.selections.DesignOrAnalysisType = code(DesignMethod::z_analysis);
    fir_plot_array();
    EXPECT_EQ(plot_state.ideal, nullptr);
    EXPECT_TRUE(trace_text().ends_with(" after computing time responses\n"));
  }
}

TEST(FirPlotArray, ZerosComeWithThePoleZeroPlot) {
  set_fir({0, 1, -5, 6, 0}, FirSymmetry::nonsymmetric);
  design_record.plot.cpanz = 1;
  fir_plot_array();
  EXPECT_TRUE(plot_state.poles_zeros_computed);
  setup_plot_labels(PlotKind::pole_zero);
  ASSERT_EQ(plot_state.zeros.size(), 2u);
  EXPECT_NEAR(plot_state.zeros[0].real() + plot_state.zeros[1].real(), 5, 1e-14);
  EXPECT_TRUE(plot_state.poles.empty());
  EXPECT_EQ(plot_state.origin_poles, 3);
  EXPECT_EQ(plot_state.origin_zeros, 0);

  for (const bool asked : {false, true}) {
    set_fir(std::vector<double>(asked ? 513 : 3, 1.0), FirSymmetry::symmetric);
    design_record.plot.cpanz = asked;
    fir_plot_array();
    setup_plot_labels(PlotKind::pole_zero);
    EXPECT_FALSE(plot_state.poles_zeros_computed);
    EXPECT_TRUE(plot_state.zeros.empty());
    EXPECT_EQ(plot_state.origin_poles, asked ? 512 : 2);
  }
}

/// Every digital form of the record is a different constant, the analog system 6 / (s + 3).
void set_iir(RealizationForm form) {
  set_fir({}, FirSymmetry::symmetric);
  DesignRecord &r = design_record;
  r.selections.DesignOrAnalysisType = code(DesignMethod::iir);
  r.realization = code(form);
  r.plot.dnimp = 10;
  r.plot.cpanz = 1;
  const double rate = r.loaded.sampling_frequency;
  IirForms &z = r.z_quantized;
  z.cascade.gain = 1;
  z.parallel.pars = 1;
  z.parallel.gain = 2;
  z.ratio.gain = z.ratio.denominator[0] = 1;
  z.ratio.numerator[0] = 3;
  z.lattice.gain = 1;
  z.lattice.gamma[0] = 4;
  z.ladder_1.gain = z.ladder_2.gain = 1;
  z.ladder_1.alpha[0] = 5;
  z.ladder_2.alpha[0] = 6;
  z.cascade.sample_rate = z.parallel.sample_rate = z.ratio.sample_rate = rate;
  z.lattice.sample_rate = z.ladder_1.sample_rate = z.ladder_2.sample_rate = rate;
  z.pole_zero.real_zeros = 1;
  z.pole_zero.complex_poles = 2;
  z.pole_zero.poles[0] = {0.5, 0.25};
  IirForms &s = r.s_unnormalized;
  s.ratio.sample_rate = s.cascade.sample_rate = rate;
  s.ratio.gain = s.cascade.gain = 6;
  s.ratio.denominator_order = 1;
  s.ratio.numerator[0] = 1;
  s.ratio.denominator = {1, 3};
  s.cascade.section_count = 1;
  s.cascade.numerators[0] = {0, 0, 1};
  s.cascade.denominators[0] = {0, 1, 3};
  s.pole_zero.real_poles = 1;
  s.pole_zero.poles[0] = -3;
}

TEST(IirPlotArray, RespondsFromTheRecordOfItsForm) {
  const struct {
    RealizationForm form;
    double magnitude, impulse;
  } cases[] = {{RealizationForm::cascade, 1, 1},  {RealizationForm::parallel, 2, 2}, {RealizationForm::ratio, 3, 3},
               {RealizationForm::lattice, 4, 4},  {RealizationForm::ladder_1, 5, 3}, // ladders run as the ratio
               {RealizationForm::ladder_2, 6, 3}, {RealizationForm::nonlinear, 2, 6}};
  for (const auto &c : cases) {
    SCOPED_TRACE(static_cast<int>(c.form));
    set_iir(c.form);
    iir_plot_array();
    const bool analog = c.form == RealizationForm::nonlinear;
    EXPECT_NEAR(plot_arrays.magnitude[0], c.magnitude, 1e-15);
    EXPECT_NEAR(plot_arrays.log_magnitude[0], 20 * std::log10(c.magnitude), 1e-13);
    EXPECT_NEAR(plot_arrays.impulse[0], c.impulse, 1e-11);
    EXPECT_NEAR(plot_arrays.impulse[599], analog ? 6 * std::exp(-3 * 0.599) : 0, 1e-11);
    EXPECT_NEAR(plot_arrays.step[599], analog ? 2 - 2 * std::exp(-3 * 0.599) : c.impulse, 1e-13);
    EXPECT_FALSE(plot_state.fir_design);
    EXPECT_EQ(plot_arrays.time_count, 10);
    EXPECT_NEAR(plot_state.time[1], 0.009, 1e-15);
    EXPECT_EQ(plot_state.zeros.size(), analog ? 0u : 1u);
    ASSERT_EQ(plot_state.poles.size(), analog ? 1u : 2u);
    EXPECT_EQ(plot_state.poles[0], analog ? std::complex<double>(-3) : std::complex<double>(0.5, 0.25));
    EXPECT_TRUE(plot_state.poles_zeros_computed);
    EXPECT_EQ(trace_text(), " entering iir plot array\n");
    EXPECT_TRUE(design_notes.empty());
  }
}

// One filter, converted into every form: each form's own evaluation and recursion gives the same curves.
TEST(IirPlotArray, EveryFormOfAFilterRespondsAlike) {
  set_iir(RealizationForm::cascade);
  IirForms &z = design_record.z_quantized;
  std::memset(static_cast<void *>(&z), 0, sizeof z);
  z.cascade.gain = 0.05;
  z.cascade.pars = 1;
  z.cascade.sample_rate = design_record.loaded.sampling_frequency;
  z.cascade.section_count = 3;
  z.cascade.order = 5;
  z.cascade.numerators = {Triple{1, 1, 0}, Triple{1, 0.3, 1}, Triple{1, -0.7, 1}};
  z.cascade.denominators = {Triple{1, -0.6, 0}, Triple{1, -1.1, 0.5}, Triple{1, -1.2, 0.85}};
  FormReport report;
  ASSERT_TRUE(derive_forms(Domain::z, RealizationForm::cascade, z, report));
  iir_plot_array();
  const auto reference = std::make_unique<PlotArrays>(plot_arrays);
  for (const RealizationForm form : {RealizationForm::parallel, RealizationForm::ratio, RealizationForm::lattice,
                                     RealizationForm::ladder_1, RealizationForm::ladder_2}) {
    SCOPED_TRACE(static_cast<int>(form));
    design_record.realization = code(form);
    iir_plot_array();
    for (int i = 0; i <= 100; ++i) {
      EXPECT_LT(std::abs(plotted(i) - std::polar(reference->magnitude[i], reference->phase[i])), 1e-12) << i;
      // The zero at half the sampling frequency leaves nothing but rounding there: the delay is that of a point before.
      EXPECT_NEAR(plot_arrays.group_delay[i], reference->group_delay[i], i < 100 ? 1e-12 : 1e-6) << i;
    }
    for (int k = 0; k < min_time_samples; ++k) {
      EXPECT_NEAR(plot_arrays.impulse[k], reference->impulse[k], 1e-12) << k;
      EXPECT_NEAR(plot_arrays.step[k], reference->step[k], 1e-12) << k;
    }
  }
}

TEST(IirPlotArray, AnalogResponseReadsTheEnteredForm) {
  for (const InputOption option : {InputOption::pole_zero, InputOption::product, InputOption::ladder_1}) {
    set_iir(RealizationForm::nonlinear);
    design_record.selections.s_input_option = code(option);
    design_record.s_unnormalized.pole_zero.gain = 6;
    design_record.s_unnormalized.pole_zero.sample_rate = design_record.loaded.sampling_frequency;
    iir_plot_array();
    for (int i = 0; i <= 100; ++i) EXPECT_NEAR(plot_arrays.magnitude[i], 6 / std::hypot(3, 10 * pi * i), 1e-14);
    EXPECT_NEAR(plot_arrays.group_delay[0], 1 / 3.0, 1e-14);
  }
}

TEST(IirPlotArray, TellsOnceWhatTheTimeResponsesCannotShow) {
  set_iir(RealizationForm::nonlinear);
  design_record.s_unnormalized.cascade.numerators[0] = {0, 1, 4};
  iir_plot_array();
  iir_plot_array();
  EXPECT_EQ(design_notes.size(), 1u);
  design_record.s_unnormalized.cascade.numerators[0] = {1, 1, 4};
  design_record.s_unnormalized.parallel = design_record.s_unnormalized.cascade;
  iir_plot_array();
  EXPECT_EQ(design_notes.size(), 2u);
  EXPECT_EQ(plot_arrays.step[100], 0);
  set_iir(RealizationForm::ladder_2);
  design_record.z_quantized.ratio.denominator[0] = 0;
  iir_plot_array();
  EXPECT_EQ(design_notes.size(), 1u);
}

TEST(IirPlotArray, TimeRangesHaveNoMargin) {
  const struct {
    Triple numerator;
    Range impulse, step;
  } cases[] = {{{1, -3, 1}, {-3, 3}, {-2, 2}}, // steps 1 -2 -1
               {{1, 2, 1}, {0, 2}, {0, 4}},
               {{-1, -2, -1}, {-2, 0}, {-4, 0}},
               {{0, 0, 0}, {-1, 1}, {-1, 1}}};
  for (const auto &c : cases) {
    set_iir(RealizationForm::cascade);
    design_record.z_quantized.cascade.section_count = 1;
    design_record.z_quantized.cascade.numerators[0] = c.numerator;
    design_record.z_quantized.cascade.denominators[0] = {1, 0, 0};
    iir_plot_array();
    EXPECT_EQ(plot_state.impulse, c.impulse);
    EXPECT_EQ(plot_state.step, c.step);
  }
}

TEST(SetupPlotLabels, ChoosesArraysRangesAndLabels) {
  set_fir({1, -2, 1}, FirSymmetry::symmetric);
  design_record.plot.magnitude_range = {0, 2};
  design_record.plot.log_magnitude_range = {-90, 10};
  fir_plot_array();
  const PlotArrays &a = plot_arrays;
  const struct {
    PlotKind kind;
    const char *title, *x_label, *y_label;
    const double *y;
    int count;
    Range range;
  } cases[] = {
      {PlotKind::magnitude,
       "Magnitude vs Frequency",
       "Frequency (Hertz)",
       "Magnitude",
       a.magnitude.data(),
       101,
       {0, 2}},
      {PlotKind::log_magnitude,
       "Log Magnitude vs Frequency",
       "Frequency (Hertz)",
       "Log Magnitude (dB)",
       a.log_magnitude.data(),
       101,
       {-90, 10}},
      {PlotKind::phase, "Phase vs Frequency", "Frequency (Hertz)", "Phase", a.phase.data(), 101, {-pi, pi}},
      {PlotKind::group_delay,
       "Group Delay vs Frequency",
       "Frequency (Hertz)",
       "Group Delay (Seconds)",
       a.group_delay.data(),
       101,
       {0, 0.001}},
      {PlotKind::impulse,
       "Impulse Response vs Time",
       "Time (Milliseconds)",
       "Impulse Response",
       a.impulse.data(),
       3,
       {-2.4, 2.4}},
      {PlotKind::step, "Step Response vs Time", "Time (Milliseconds)", "Step Response", a.step.data(), 3, {-1.2, 1.2}},
      {PlotKind::pole_zero, "Pole / Zero Plot", "", "", nullptr, 0, {0, 0}},
  };
  for (const auto &c : cases) {
    const PlotDescription d = setup_plot_labels(c.kind);
    EXPECT_EQ(d.title, c.title);
    EXPECT_EQ(d.x_label, c.x_label);
    EXPECT_EQ(d.y_label, c.y_label);
    EXPECT_EQ(d.y, c.y);
    EXPECT_EQ(d.count, c.count);
    EXPECT_NEAR(d.y_range[0], c.range[0], 1e-15);
    EXPECT_NEAR(d.y_range[1], c.range[1], 1e-15);
  }
  const PlotDescription time = setup_plot_labels(PlotKind::impulse);
  EXPECT_EQ(time.x_scale, 1000);
  EXPECT_NEAR(time.x_step, 0.001, 1e-18);
  EXPECT_TRUE(time.samples_as_marks);
  set_fir({1, -2, 1}, FirSymmetry::symmetric, 2); // the axis ends at one second
  fir_plot_array();
  EXPECT_EQ(setup_plot_labels(PlotKind::step).x_label, "Time (Seconds)");
  EXPECT_EQ(setup_plot_labels(PlotKind::step).x_scale, 1);
}

TEST(SetupPlotLabels, ShowsTheInterpolatedImpulseResponseWhenAsked) {
  set_fir({1, -2, 1}, FirSymmetry::symmetric);
  design_record.plot.sinc = 1;
  design_record.plot.ninterp = 3;
  fir_plot_array();
  const PlotDescription d = setup_plot_labels(PlotKind::impulse);
  EXPECT_EQ(d.count, 201);
  EXPECT_NEAR(d.x_step * 200, 0.002, 1e-15);
  EXPECT_EQ(d.y[100], -2);
  EXPECT_FALSE(d.samples_as_marks);
  design_record.plot.ninterp = 2;
  EXPECT_EQ(setup_plot_labels(PlotKind::impulse).count, 3);
}

TEST(InterpolateImpulse, GoesThroughTheSamples) {
  for (const int count : {1, 2, 7, 100, 151, 300}) {
    const std::vector<double> samples = random_values(count, 3);
    const std::vector<double> points = interpolate_impulse(samples);
    const int step = 300 / count;
    ASSERT_EQ(points.size(), static_cast<std::size_t>(step * (count - 1) + 1));
    for (int k = 0; k < count; ++k) EXPECT_EQ(points[k * step], samples[k]);
  }
  EXPECT_TRUE(interpolate_impulse({}).empty());
  EXPECT_TRUE(interpolate_impulse(std::vector<double>(301)).empty());
}

TEST(InterpolateImpulse, AddsShiftedSines) {
  const std::vector<double> points = interpolate_impulse(std::vector<double>{0, 0, 1, 0, -0.5});
  for (int i = 0; i < 241; ++i) {
    auto sinc = [](double x) { return x == 0 ? 1 : std::sin(pi * x) / (pi * x); };
    EXPECT_NEAR(points[i], sinc(i / 60.0 - 2) - 0.5 * sinc(i / 60.0 - 4), 1e-14) << i;
  }
}

} // namespace
} // namespace brisel
