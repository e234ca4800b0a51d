#include "engine/iir/iir_quantize.h"

#include "engine/core/design_state.h"
#include "engine/core/trace.h"
#include "engine/iir/cascade_gain.h"

#include "tests/engine/analysis/iir_systems.h"
#include "tests/support/scripted_front_end.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>

namespace brisel::test {

static double square(double x) {
  return x * x;
}

// Truncation by integer arithmetic: a double is significand * 2^exponent with a whole significand.
static double fixed_by_integers(double c, int bits, int shift) {
  int exponent;
  const std::int64_t significand = std::llround(std::ldexp(std::frexp(std::fabs(c), &exponent), 53));
  const int down = 53 - exponent - (bits - 1) + shift; // right shift to units of 2^(1 - bits + shift)
  const std::int64_t units = down > 62 ? 0 : down >= 0 ? significand >> down : significand << -down;
  return std::ldexp(static_cast<double>(c < 0 ? -units : units), 1 - bits);
}

TEST(QuantizeSections, FixedPointCoefficientsAndShifts) {
  struct Case {
    const char *name;
    double largest;
    int shift;
  };
  const Case cases[] = {
      {"below 1", 0.3, 0},      {"exactly 1", 1, 0},    {"just above 1", 1.0000001, 1}, {"2", 2, 1},
      {"just above 2", 2.1, 2}, {"negative", -3.99, 2}, {"many bits", 1000, 10},
  };
  for (const Case &c : cases)
    for (const int bits : {8, 16, 24, 32}) {
      const Triple n{c.largest, -0.123456789, 1e-5}, d{1, -0.987654321, 0.777777777};
      SectionEntry entry = sections(0.99999, {{{n, d}}});
      quantize_section_coefficients(entry, true, bits);
      EXPECT_EQ(entry.shift[0], c.shift) << c.name;
      EXPECT_EQ(entry.gain, fixed_by_integers(0.99999, bits, 0));
      for (int i = 0; i < 3; i++) {
        EXPECT_EQ(entry.numerators[0][i], fixed_by_integers(n[i], bits, c.shift)) << c.name << bits;
        EXPECT_EQ(entry.denominators[0][i], fixed_by_integers(d[i], bits, c.shift)) << c.name << bits;
      }
    }
  SectionEntry entry = sections(0.99999, {});
  quantize_section_coefficients(entry, true, 16);
  EXPECT_EQ(entry.gain, 32767.0 / 32768);
  entry.gain = -0.99999;
  quantize_section_coefficients(entry, true, 16);
  EXPECT_EQ(entry.gain, -32767.0 / 32768) << "toward zero";
}

TEST(QuantizeSections, FloatingPointKeepsSignificantBits) {
  for (const int bits : {2, 8, 21, 22, 24, 32, 33, 40, 52, 53})
    for (const double value : {1.0 / 3, -2.0 / 3, 1.0, std::nextafter(2.0, 0.0), 1e-300, -123456.789, 0.0}) {
      int exponent;
      const double fraction = std::frexp(value, &exponent); // 0.5 <= |fraction| < 1
      const double expected = std::ldexp(std::trunc(std::ldexp(fraction, bits)), exponent - bits);
      double v[] = {value};
      truncate_significands(v, bits);
      EXPECT_EQ(v[0], expected) << value << " to " << bits;
    }
  SectionEntry entry = sections(1 + std::ldexp(1, -23) + std::ldexp(1, -24), {{{{1.1, 0, 0}, {1, 1.2, 0}}}});
  quantize_section_coefficients(entry, false, 24);
  EXPECT_EQ(entry.gain, 1 + std::ldexp(1, -23)) << "23 fraction bits";
  EXPECT_EQ(entry.numerators[0][0], std::ldexp(std::trunc(std::ldexp(1.1, 23)), -23));
  EXPECT_EQ(entry.shift[0], 0);
}

class QuantizeIir : public testing::Test {
protected:
  void SetUp() override {
    std::memset(static_cast<void *>(&design_record), 0, sizeof design_record);
    design_notes.clear();
    choose_system_files({{SystemFile::Kind::memory, ""}, {SystemFile::Kind::null_device, ""}});
    reopen_system_files();
    r.quantization.quant = 1;
    r.quantization.qtype = 1;
    r.quantization.ibit = 16;
    use(elliptic_5());
  }
  void TearDown() override { close_system_files(); }
  void use(const SectionEntry &cascade) {
    design_record.z = {};
    design_record.z.cascade = cascade;
    FormReport found;
    ASSERT_TRUE(derive_forms(Domain::z, RealizationForm::cascade, design_record.z, found));
  }
  static double peak(const std::function<Complex(Complex)> &h) {
    long double largest = 0;
    for (int i = 0; i <= 1000; i++) largest = std::max(largest, std::abs(h(std::polar<long double>(1, pi * i / 1000))));
    return static_cast<double>(largest);
  }
  ScriptedFrontEnd screen;
  DesignRecord &r = design_record;
};

TEST_F(QuantizeIir, EveryRealizationIsQuantizedAndTheOtherFormsFollowIt) {
  auto near_first = [&](auto h, auto reference, double tolerance) { EXPECT_LT(distance(reference, h), tolerance); };
  for (int form = 0; form <= 5; form++) {
    SCOPED_TRACE(form);
    r.realization = static_cast<std::int8_t>(form);
    r.quantization.qtype = form < 2;
    r.quantization.ibit = 24;
    ASSERT_TRUE(quantize_iir());
    const IirForms &q = r.z_quantized;
    auto cascade = [&](Complex z) { return response(q.cascade, z, false); };
    auto original = [&](Complex z) { return response(r.z.cascade, z, false); };
    const double change = distance([&](Complex z) { return original(z); }, cascade);
    EXPECT_LT(change, 3e-4) << "24 bits are near";
    EXPECT_GT(change, 1e-8) << "and truncate";
    near_first([&](Complex z) { return response(q.parallel, z, true); }, cascade, 1e-11);
    near_first([&](Complex z) { return response(q.pole_zero, z); }, cascade, 1e-11);
    near_first([&](Complex z) { return response(q.ratio, z); }, cascade, 1e-11);
    near_first([&](Complex z) { return response(q.lattice, z); }, cascade, 1e-11);
    near_first([&](Complex z) { return response(q.ladder_1, z); }, cascade, 1e-11);
    EXPECT_EQ(r.noise.unstable, 0);
  }
  EXPECT_TRUE(screen.posted.empty());
}

TEST_F(QuantizeIir, RatioLatticeAndLadderCoefficientsHaveTheirBits) {
  r.quantization.qtype = 1; // Kept: these forms are truncated the floating-point way whatever the setting says
  auto expect_short = [](std::span<const double> values) {
    for (const double v : values) {
      double copy[] = {v};
      truncate_significands(copy, 16);
      EXPECT_EQ(copy[0], v);
    }
  };
  r.realization = code(RealizationForm::ratio);
  ASSERT_TRUE(quantize_iir());
  expect_short(r.z_quantized.ratio.numerator);
  expect_short(r.z_quantized.ratio.denominator);
  EXPECT_EQ(r.z_quantized.ratio.denominator[0], 1);
  r.realization = code(RealizationForm::lattice);
  ASSERT_TRUE(quantize_iir());
  expect_short(r.z_quantized.lattice.kappa);
  expect_short(r.z_quantized.lattice.gamma);
  r.realization = code(RealizationForm::ladder_2);
  ASSERT_TRUE(quantize_iir());
  expect_short(r.z_quantized.ladder_2.alpha);
}

TEST_F(QuantizeIir, StructuresAreTracedAsTheyScale) {
  struct Case {
    int structure;
    bool scaled;
  };
  for (const Case c : {Case{0, true}, Case{1, true}, Case{2, false}, Case{3, false}}) {
    SCOPED_TRACE(c.structure);
    TearDown();
    SetUp();
    r.quantization.rtype1 = c.structure;
    ASSERT_TRUE(quantize_iir());
    const std::string text = trace_text();
    EXPECT_NE(text.find("\n IIR quantization\n"), std::string::npos);
    EXPECT_NE(text.find("\n After quantization\n Cascaded form\n"), std::string::npos);
    EXPECT_EQ(text.find(" Scaling by ") != std::string::npos, c.scaled);
    EXPECT_EQ(text.find(" in section 3\n") != std::string::npos, c.scaled);
    EXPECT_EQ(text.find("\n For cascade gain scaler: ") != std::string::npos, c.scaled);
    EXPECT_EQ(r.noise.node_count, c.scaled ? 4 : 0);
    EXPECT_GT(r.noise.output_noise_power, 0);
    if (c.structure == 0) {
      for (int j = 0; j < 3; j++) EXPECT_NEAR(r.noise.scaled_node_peak[j], 1, 1e-13);
    }
  }
  r.realization = code(RealizationForm::parallel);
  ASSERT_TRUE(quantize_iir());
  EXPECT_NE(trace_text().find("\n For parallel scaler: "), std::string::npos);
  EXPECT_NE(r.z_quantized.parallel.pars, 1);
  r.quantization.rtype3 = 1;
  ASSERT_TRUE(quantize_iir());
  EXPECT_EQ(r.z_quantized.parallel.pars, 1);
}

TEST_F(QuantizeIir, TheParallelNoiseCountsTheLastSectionAlone) {
  r.realization = code(RealizationForm::parallel);
  ASSERT_TRUE(quantize_iir());
  const double m = r.z_quantized.parallel.pars, last = r.noise.section_noise_gain[2];
  EXPECT_NEAR(r.noise.output_noise_power / r.noise.input_noise_power, m * m + last, 1e-12 * last);
  r.realization = code(RealizationForm::cascade);
  ASSERT_TRUE(quantize_iir());
  const auto &g = r.noise.section_noise_gain;
  EXPECT_NEAR(r.noise.output_noise_power / r.noise.input_noise_power, g[0] + g[1] + g[2], 1e-12 * g[0]);
}

TEST_F(QuantizeIir, WithoutQuantizationSectionsAreNormalizedAndNothingIsLost) {
  r.quantization.quant = 0;
  ASSERT_TRUE(quantize_iir());
  for (int k = 0; k < 3; k++) EXPECT_EQ(r.z_quantized.cascade.numerators[k][0], 1);
  for (int form = 0; form <= 5; form++) {
    r.realization = static_cast<std::int8_t>(form);
    r.z.cascade.gain = 0.01; // all forms follow the new gain
    r.z.parallel.pars = 0.01 / elliptic_5().gain;
    for (double *gain :
         {&r.z.ratio.gain, &r.z.pole_zero.gain, &r.z.lattice.gain, &r.z.ladder_1.gain, &r.z.ladder_2.gain})
      *gain = 0.01;
    ASSERT_TRUE(quantize_iir());
    const IirForms &q = r.z_quantized;
    EXPECT_NEAR(peak([&](Complex z) { return response(q.cascade, z, false); }), 1, 1e-12) << form;
    EXPECT_NEAR(peak([&](Complex z) { return response(q.pole_zero, z); }), 1, 1e-12) << form;
    EXPECT_NEAR(peak([&](Complex z) { return response(q.lattice, z); }), 1, 1e-12) << form;
  }
  EXPECT_TRUE(design_notes.empty());
}

TEST_F(QuantizeIir, AnEnteredSystemCanKeepItsGain) {
  r.quantization.quant = 0;
  r.z.cascade.gain *= 5;
  r.z.cascade.keep_gain = 1;
  ASSERT_TRUE(quantize_iir());
  EXPECT_LT(distance([&](Complex z) { return response(r.z.cascade, z, false); },
                     [&](Complex z) { return response(r.z_quantized.cascade, z, false); }),
            1e-13);
}

TEST_F(QuantizeIir, AnEnteredProductIsReordered) {
  r.quantization.quant = 0;
  r.selections.DesignOrAnalysisType = code(DesignMethod::z_analysis);
  r.selections.z_input_option = code(InputOption::product);
  use(sections(1, {{{{1, 0, 1}, {1, 0, 0.9}}}, {{{0, 1, 0}, {1, -0.5, 0}}}, {{{1, 1, 0}, {1, 0.3, 0}}}}));
  ASSERT_TRUE(quantize_iir());
  EXPECT_EQ(r.z_quantized.cascade.section_count, 2);
  EXPECT_NEAR(r.z_quantized.cascade.denominators[0][2], -0.15, 1e-15);
  EXPECT_NEAR(r.z_quantized.cascade.denominators[1][2], 0.9, 1e-15);
  // The sample of delay stays, wherever it stands now.
  EXPECT_EQ(r.z_quantized.cascade.numerators[0][0] * r.z_quantized.cascade.numerators[1][0], 0);
  const Values at{std::polar(1.0, 0.7)};
  const std::complex<double> x = 1.0 / at[0], entered = (1.0 + x * x) * x * (1.0 + x) /
                                                        ((1.0 + 0.9 * x * x) * (1.0 - 0.5 * x) * (1.0 + 0.3 * x));
  const SectionEntry &kept = r.z_quantized.cascade;
  EXPECT_LT(std::abs(cascade_values(kept, at)[0] / kept.gain - entered), 1e-13);
  EXPECT_TRUE(design_notes.empty());
}

TEST_F(QuantizeIir, PolesThatLeaveTheUnitCircleAreSaid) {
  // In 9 bits after the sign and a shift the denominator is 256, -511, 255: a pole at 1.
  use(sections(1, {{{{1, -2, 1}, {1, -1.9995, 0.99975}}}}));
  r.quantization.ibit = 10;
  r.quantization.rtype1 = 2;
  ASSERT_TRUE(quantize_iir());
  EXPECT_EQ(r.noise.unstable, 1);
  ASSERT_EQ(screen.posted.size(), 1u);
  EXPECT_EQ(screen.posted[0].number, Message::quantized_unstable);
  EXPECT_NE(std::find(design_notes.begin(), design_notes.end(),
                      "The quantized filter is unstable: it has poles on or outside the unit circle. Choose more bits, "
                      "another structure or realization, or a lower order."),
            design_notes.end());
  r.quantization.ibit = 32;
  screen.posted.clear();
  ASSERT_TRUE(quantize_iir());
  EXPECT_EQ(r.noise.unstable, 0);
  EXPECT_TRUE(screen.posted.empty());
}

TEST_F(QuantizeIir, WhatCannotBeIsRefusedWithAMessage) {
  struct Case {
    const char *name;
    std::function<void()> prepare;
    Message expected;
  };
  const std::vector<Case> cases{
      {"a gain that truncates to 0",
       [&] {
         r.quantization.rtype1 = 2;
         r.quantization.ibit = 6;
       },
       Message::quantized_to_zero},
      {"numerators that truncate to 0",
       [&] {
         use(sections(1, {{{{1e-4, 0, 0}, {1, -0.5, 0}}}}));
         r.z.cascade.keep_gain = 1;
         r.quantization.rtype1 = 2;
         r.quantization.ibit = 8;
       },
       Message::quantized_to_zero},
      {"a ladder that does not exist",
       [&] {
         use(sections(1, {{{{1, 0, 0}, {1, 0, 0.5}}}}));
         r.realization = code(RealizationForm::ladder_1);
       },
       Message::form_does_not_exist},
      {"a nonlinear system", [&] { r.realization = code(RealizationForm::nonlinear); }, Message::form_does_not_exist},
      {"a pole at a place of the grid, canonic",
       [&] {
         use(sections(1, {{{{1, 0, 0}, {1, 2, 1}}}}));
         r.quantization.rtype1 = 1;
       },
       Message::scaling_impossible},
  };
  for (const Case &c : cases) {
    TearDown();
    SetUp();
    screen.posted.clear();
    c.prepare();
    EXPECT_FALSE(quantize_iir()) << c.name;
    ASSERT_EQ(screen.posted.size(), 1u) << c.name;
    EXPECT_EQ(screen.posted[0].number, c.expected) << c.name;
  }
}

TEST_F(QuantizeIir, DigitsThatAFormLosesAreNoted) {
  r.quantization.quant = 1;
  r.quantization.ibit = 32;
  use(elliptic_5());
  ASSERT_TRUE(quantize_iir());
  EXPECT_TRUE(design_notes.empty()) << design_notes[0];
  use(butterworth(20, 0.05));
  ASSERT_TRUE(quantize_iir());
  EXPECT_NE(std::find(design_notes.begin(), design_notes.end(), "After quantization the ratio form keeps 0 digits."),
            design_notes.end());
}

// Poles between the 1001 frequencies. Of 1 / (1 - 2 r cos(a) / z + r^2 / z^2) the largest magnitude and the mean
// squared one have closed forms.
TEST_F(QuantizeIir, PeaksAndNoiseBetweenTheFrequenciesOfTheGridAreFound) {
  for (const double distance : {1e-3, 1e-5, 1e-8}) {
    const double q = square(1 - distance), a = 0.2505 * std::numbers::pi;
    const double peak = 1 / ((1 - q) * std::sin(a)), energy = (1 + q) / (1 - q) / (1 - 2 * q * std::cos(2 * a) + q * q);
    use(sections(1, {{{{1, 0, 0}, {1, -2 * std::sqrt(q) * std::cos(a), q}}}}));
    for (const RealizationForm form :
         {RealizationForm::parallel, RealizationForm::ratio, RealizationForm::lattice, RealizationForm::cascade}) {
      r.quantization.quant = 0;
      r.realization = code(form);
      ASSERT_TRUE(quantize_iir());
      EXPECT_NEAR(r.z_quantized.ratio.gain * peak, 1, 1e-6) << code(form);
    }
    EXPECT_NEAR(r.noise.node_peak[0] / peak, 1, 1e-6);
    EXPECT_NEAR(r.noise.scaled_node_peak[0], 1, 1e-6);
    EXPECT_NEAR(r.noise.section_noise_gain[0] / energy, 1, 1e-6) << distance;
  }
  const auto told = [](const std::string &note) { return note.find("reaches 43.92 dB") != note.npos; };
  EXPECT_TRUE(std::any_of(design_notes.begin(), design_notes.end(), told)) << "1e-5: over SciPy's freqz on the grid";

  // A Tschebyscheff lowpass whose band ends below the first step: no pole's own angle shows its 3 dB of ripple.
  const double epsilon = std::sqrt(std::pow(10, 0.3) - 1), size = std::asinh(1 / epsilon) / 2, k = 1e-4;
  const double re = k * std::sinh(size) * std::sqrt(0.5), square_of_pole = re * re + square(k * std::cosh(size)) / 2;
  const double a0 = 1 + 2 * re + square_of_pole;
  use(sections(1, {{{{1, 2, 1}, {1, (2 * square_of_pole - 2) / a0, (1 - 2 * re + square_of_pole) / a0}}}}));
  r.realization = code(RealizationForm::cascade);
  ASSERT_TRUE(quantize_iir());
  EXPECT_NEAR(std::abs(cascade_values(r.z_quantized.cascade, Values{1.0})[0]), std::pow(10, -0.15), 1e-6);
}

} // namespace brisel::test
