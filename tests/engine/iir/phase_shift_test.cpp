// phase_shift_test.cpp - phase shift filters against another derivation of their pole pair, against their response on
// dense grids, and through a whole analysis.
#include "engine/iir/phase_shift.h"

#include "engine/analysis/plot_arrays.h"
#include "engine/core/phase_shift_design.h"
#include "engine/core/start_up.h"
#include "engine/core/system_analysis.h"
#include "tests/support/engine_in_memory.h"
#include "tests/support/scripted_front_end.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>
#include <random>

namespace brisel {
namespace {

constexpr double pi = std::numbers::pi;

PhaseShiftSpec spec_of(double rate, double f1, double f2, double degrees, double zero) {
  return {rate * two_pi, f1 * two_pi, f2 * two_pi, degrees, zero};
}

struct Reference {
  PhaseShiftSpec spec;
  double gain, a1, a2;
};
// Im(exp(-j g) D(exp(j w))) = 0 at both frequencies, g = (lag of the pair) / 2 - w, solved with 40 digits by mpmath;
// the filters have gain 1 and the phase of the shift to 1e-9 degrees in scipy.signal.freqz.
const Reference references[] = {
    {spec_of(8000, 1000, 2000, 90, 4), -1, -0.66029028129225265, 0.83492742967693678},
    {spec_of(8000, 1000, 2000, -90, 4), 1, -0.66029028129225265, 0.83492742967693678},
    {spec_of(8000, 1000, 2000, 90, 100), -1, -1.3804046859207955, 0.986195953140792},
    {spec_of(48000, 697, 1209, 45, 1.05), -1, -1.9793583565733208, 0.99359024064160273},
    {spec_of(48000, 697, 1209, 135, 1.3), -1, -1.9752013257511398, 0.99370987937177901},
    {spec_of(48000, 697, 1209, -30, 1.5), 1, -1.9766257629838795, 0.99561220623505153},
    {spec_of(1, 0.1, 0.4, 60, -4), -1, -1.4375025896872848, 0.86328965615619369},
    {spec_of(1, 0.1, 0.4, 60, 1.5), -1, 1.3447150991632508, 0.86328965615619424},
    {spec_of(1, 0.1, 0.4, -120, 2), 1, 0.24259472689323416, 0.3574318945470058},
    {spec_of(44100, 19000, 21000, -170, 3), 1, 1.947595629784294, 0.99244253525590009},
    {spec_of(44100, 19000, 21000, 170, -1.02), -1, 1.9242541575462726, 0.98776985933841066},
    {spec_of(16000, 20, 7900, -90, 1.5), 1, -0.030685855397513822, -0.95335670852868148}, // two real poles
    {spec_of(16000, 20, 7900, -90, -1.5), 1, -0.038880454895747013, -0.94581163782181599},
    {spec_of(8000, 1000, 1010, 90, 2.42), -1, -1.4054758991844676, 0.99998525168019547}, // poles 7e-6 from the circle
    {spec_of(8000, 1000, 1010, -60, 6.2), 1, -1.4097607355525743, 0.99998196230894287},
    {spec_of(8000, 500, 3500, 765, 2), -1, -0.32610682828973181, -0.058336718271441462},
    // A pair with a2 = 0, whose numerator is a delay and a zero.
    {spec_of(8000, 500, 3500, 765, 7.716424073287854), -1, -0.63577315778738386, 0},
    {spec_of(8000, 500, 3500, 765, 7.7164), -1, -0.63577280538184, -1.923002172972568e-07},
    {spec_of(8000, 500, 3500, -0.001, -1.00002), 1, 1.3320474449555433, 0.99994401708790304},
};

std::complex<double> response(const PhaseShiftFilter &f, double w) {
  const std::complex<double> x = std::polar(1.0, -w);
  const auto [a1, a2] = f.pair;
  return f.gain * (x - f.p) / (1.0 - f.p * x) * (a2 + x * (a1 + x)) / (1.0 + x * (a1 + a2 * x));
}

/// Distance of two angles, whole turns left out.
double angle_between(double a, double b) {
  return std::abs(std::remainder(a - b, two_pi));
}

/// What the filter has to do, by its response alone: magnitude 1 on a dense grid, the shift at both frequencies, and a
/// phase that falls by one turn between them and by one and a half from end to end.
void expect_right(const PhaseShiftSpec &spec, const PhaseShiftFilter &filter) {
  const double to_w = two_pi / spec.sampling_frequency, shift = spec.degrees * pi / 180;
  const double w1 = spec.first_passband * to_w, w2 = spec.second_passband * to_w;
  EXPECT_LE(angle_between(std::arg(response(filter, w1)), shift), 2 * phase_shift_error);
  EXPECT_LE(angle_between(std::arg(response(filter, w2)), shift), 2 * phase_shift_error);
  EXPECT_NEAR(phase_lag(filter, w2) - phase_lag(filter, w1), two_pi, 2 * phase_shift_error);
  EXPECT_NEAR(phase_lag(filter, 0), 0, 1e-15);
  EXPECT_NEAR(phase_lag(filter, pi), 3 * pi, 1e-9);
  // Next to a pole the rounding of the response grows with its nearness.
  const auto [a1, a2] = filter.pair;
  const double tolerance = 1e-12 + 1e-15 / std::min({1 - a2 * a2, 1 + a2 - std::abs(a1), 1 - std::abs(filter.p)});
  double lag = 0;
  for (int i = 0; i <= 20000; i++) {
    const double w = pi * i / 20000;
    const auto h = response(filter, w);
    ASSERT_NEAR(std::abs(h), 1, tolerance) << w;
    ASSERT_LE(angle_between(std::arg(h * filter.gain), -phase_lag(filter, w)), tolerance) << w;
    ASSERT_GE(phase_lag(filter, w), lag - 1e-9) << w;
    lag = phase_lag(filter, w);
  }
}

PhaseShiftFilter designed(const PhaseShiftSpec &spec) {
  const auto outcome = design_phase_shift(spec);
  if (const auto *filter = std::get_if<PhaseShiftFilter>(&outcome)) return *filter;
  ADD_FAILURE() << std::get<PhaseShiftComplaint>(outcome).reason;
  return {};
}

TEST(PhaseShift, EqualsTheSolutionOfTheLinearPhaseConditions) {
  for (const Reference &row : references) {
    SCOPED_TRACE(row.spec.degrees);
    const PhaseShiftFilter filter = designed(row.spec);
    EXPECT_EQ(filter.gain, row.gain);
    EXPECT_EQ(filter.p, 1 / row.spec.real_zero);
    EXPECT_NEAR(filter.pair.a1, row.a1, 1e-12);
    EXPECT_NEAR(filter.pair.a2, row.a2, 1e-12);
    expect_right(row.spec, filter);
  }
}

TEST(PhaseShift, EveryZeroThatIsSaidToWorkDoesAndNoneBeyondTheLimits) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> uniform(0, 1);
  int ranges = 0;
  for (int i = 0; i < 400; i++) {
    const double f1 = 0.002 + 0.47 * uniform(random), f2 = f1 + (0.498 - f1) * (0.02 + 0.98 * uniform(random));
    PhaseShiftSpec spec = spec_of(1, f1, f2, -360 + 720 * uniform(random), 0);
    const auto zeros = working_zeros(spec);
    SCOPED_TRACE(testing::Message() << f1 << ' ' << f2 << ' ' << spec.degrees);
    ASSERT_FALSE(zeros.empty());
    for (const ZeroRange &range : zeros) {
      ranges++;
      ASSERT_GT(std::min(std::abs(range.low), std::abs(range.high)), 1);
      for (const double part : {0.0, 0.3, 1.0}) {
        spec.real_zero = range.low + part * (range.high - range.low);
        const PhaseShiftFilter filter = designed(spec);
        if (i % 40 == 0) expect_right(spec, filter);
      }
    }
    // The first section alone lags by theta at one of the two frequencies: there the pair has nothing left to do.
    const double lag = std::fmod(720 - spec.degrees, 180) * pi / 180;
    for (const double f : {f1, f2}) {
      const double k = std::tan(lag / 2) / std::tan(pi * f);
      const double outside = k * (f == f1 ? 1.0001 : 0.9999); // too much at the first, too little at the second
      spec.real_zero = (outside + 1) / (outside - 1);
      EXPECT_TRUE(std::holds_alternative<PhaseShiftComplaint>(design_phase_shift(spec))) << spec.real_zero;
    }
  }
  EXPECT_GT(ranges, 420); // some tasks have two
}

TEST(PhaseShift, TheBandsEndWhereThePhaseHasMovedByFiveDegrees) {
  for (const Reference &row : references) {
    const PhaseShiftFilter filter = designed(row.spec);
    const double to_w = two_pi / row.spec.sampling_frequency, shift = row.spec.degrees * pi / 180;
    const auto bands = phase_shift_bands(row.spec, filter);
    const double centres[] = {row.spec.first_passband, row.spec.second_passband};
    for (std::size_t i = 0; i < 2; i++) {
      EXPECT_LE(bands[i].low, centres[i]);
      EXPECT_GE(bands[i].high, centres[i]);
      for (const double end : {bands[i].low * to_w, bands[i].high * to_w})
        if (end > 1e-9 && end < pi - 1e-9) {
          EXPECT_NEAR(angle_between(std::arg(response(filter, end)), shift), 5 * pi / 180, 1e-9);
        }
    }
  }
}

TEST(PhaseShift, WhatIsImpossibleIsRefusedByFieldAndReason) {
  const double nan = std::nan("");
  const struct {
    PhaseShiftSpec spec;
    PhaseShiftField field;
    const char *says;
  } rows[] = {
      {spec_of(0, 1000, 2000, 90, 4), PhaseShiftField::sampling_frequency, "is not above zero"},
      {spec_of(nan, 1000, 2000, 90, 4), PhaseShiftField::sampling_frequency, "is not above zero"},
      {spec_of(1e200, 1000, 2000, 90, 4), PhaseShiftField::sampling_frequency, "is beyond all limits"},
      {spec_of(8000, 0, 2000, 90, 4), PhaseShiftField::first_passband, "is not above zero"},
      {spec_of(8000, nan, 2000, 90, 4), PhaseShiftField::first_passband, "is not above zero"},
      {spec_of(8000, 4000, 5000, 90, 4), PhaseShiftField::first_passband, "is not below half the sampling frequency"},
      {spec_of(8000, 1000, 1000, 90, 4), PhaseShiftField::second_passband, "is not above the first passband"},
      {spec_of(8000, 1000, 4000, 90, 4), PhaseShiftField::second_passband, "is not below half the sampling frequency"},
      {spec_of(8000, 1000, nan, 90, 4), PhaseShiftField::second_passband, "is not above the first passband"},
      {spec_of(8000, 1000, 2000, 0, 4), PhaseShiftField::degrees, "is no shift"},
      {spec_of(8000, 1000, 2000, -720, 4), PhaseShiftField::degrees, "is no shift"},
      {spec_of(8000, 1000, 2000, 180, 4), PhaseShiftField::degrees, "is a change of sign"},
      {spec_of(8000, 1000, 2000, -540, 4), PhaseShiftField::degrees, "is a change of sign"},
      {spec_of(8000, 1000, 2000, 3601, 4), PhaseShiftField::degrees, "is beyond 3600 degrees, 10 turns"},
      {spec_of(8000, 1000, 2000, nan, 4), PhaseShiftField::degrees, "is beyond"},
      {spec_of(8000, 1000, 2000, 1e-9, 4), PhaseShiftField::degrees,
       "has no filter: it is too small, or the passbands too near"},
      {spec_of(8000, 1000, 1000.0001, 90, 4), PhaseShiftField::degrees,
       "has no filter: it is too small, or the passbands too near"},
      {spec_of(8000, 1000, 2000, 90, 1), PhaseShiftField::real_zero, "is not above 1 or below -1"},
      {spec_of(8000, 1000, 2000, 90, nan), PhaseShiftField::real_zero, "is not above 1 or below -1"},
      {spec_of(8000, 1000, 2000, 90, -4), PhaseShiftField::real_zero, "gives no stable filter"},
      {spec_of(8000, 1000, 2000, 90, 2.4), PhaseShiftField::real_zero, "gives no stable filter"},
      {spec_of(1, 0.1, 0.4, 60, 1.4), PhaseShiftField::real_zero, "gives no stable filter"},
      {spec_of(1, 0.1, 0.4, 60, 1e7), PhaseShiftField::real_zero, "gives no stable filter"},
  };
  for (const auto &row : rows) {
    const auto outcome = design_phase_shift(row.spec);
    const auto *complaint = std::get_if<PhaseShiftComplaint>(&outcome);
    ASSERT_TRUE(complaint) << row.says;
    EXPECT_EQ(complaint->field, row.field) << complaint->reason;
    EXPECT_NE(complaint->reason.find(row.says), std::string::npos) << complaint->reason;
  }
}

TEST(PhaseShift, TheZerosThatWorkAreTold) {
  EXPECT_EQ(working_zeros_text(spec_of(8000, 1000, 2000, 90, 0)), "from 2.417 to 2269");
  EXPECT_EQ(working_zeros_text(spec_of(1, 0.1, 0.4, 60, 0)), "from -1000000 to -3.588 or from 1.464 to 1000000");
  EXPECT_EQ(working_zeros_text(spec_of(44100, 19000, 21000, 170, 0)), "from -1.039 to -1.014");
  EXPECT_EQ(working_zeros_text(spec_of(8000, 1000, 1000.0001, 90, 0)), ""); // the poles would be on the circle
  EXPECT_EQ(working_zeros_text(spec_of(8000, 2000, 1000, 90, 0)), "");
}

struct Engine {
  ScriptedFrontEnd front;
  Engine() { test::start_engine_in_memory(); }
  ~Engine() { program_exit(ExitMode::discard); }
};

TEST(PhaseShift, RunsAsAnEnteredProductOfSectionsWithoutLosingItsSign) {
  const Engine engine;
  design_state.SDomainAnalysisMaximumGainOption = 1; // of a system before
  z_path[code(InputOption::product)] = "before.inp";
  for (const Reference &row : references) {
    SCOPED_TRACE(row.spec.degrees);
    ASSERT_FALSE(phase_shift_design(row.spec));
    ASSERT_TRUE(design_record.valid);
    EXPECT_EQ(std::memcmp(&last_phase_shift, &row.spec, sizeof row.spec), 0);
    EXPECT_EQ(design_state.z_input_option, code(InputOption::product));
    EXPECT_EQ(z_path[code(InputOption::product)], "");
    EXPECT_EQ(z_entries.product.order, 3);
    const PhaseShiftFilter filter = designed(row.spec);
    for (int i = 0; i < plot_arrays.frequency_count; i++) {
      const double w = pi * i / (plot_arrays.frequency_count - 1);
      ASSERT_NEAR(plot_arrays.magnitude[static_cast<std::size_t>(i)], 1, 1e-9);
      // Of poles that all but touch the circle the response is known to less.
      ASSERT_LE(angle_between(plot_arrays.phase[static_cast<std::size_t>(i)], std::arg(response(filter, w))), 1e-8);
    }
    ASSERT_FALSE(design_notes.empty());
    EXPECT_TRUE(design_notes[0].starts_with("Before any quantization the phase is within 5 degrees of "));
  }
}

TEST(PhaseShift, ARefusalLeavesTheEngineAsItWas) {
  const Engine engine;
  ASSERT_FALSE(phase_shift_design(references[0].spec));
  const auto entries = std::make_unique<SystemEntries>();
  std::memcpy(entries.get(), &z_entries, sizeof z_entries);
  const DesignState state = design_state;
  const auto counter = design_record.design_counter;
  PhaseShiftSpec wrong = references[1].spec;
  wrong.real_zero = 0.5;
  const auto complaint = phase_shift_design(wrong);
  ASSERT_TRUE(complaint);
  EXPECT_EQ(complaint->field, PhaseShiftField::real_zero);
  EXPECT_EQ(std::memcmp(entries.get(), &z_entries, sizeof z_entries), 0);
  EXPECT_EQ(std::memcmp(&state, &design_state, sizeof state), 0);
  EXPECT_EQ(design_record.design_counter, counter);
  EXPECT_TRUE(design_record.valid);
  EXPECT_EQ(last_phase_shift.degrees, references[0].spec.degrees);
}

} // namespace
} // namespace brisel
