// system_conversion_test.cpp - conversions against responses written out from the definitions, on dense grids.
#include "engine/core/system_conversion.h"

#include "engine/core/design_driver.h"
#include "engine/core/start_up.h"
#include "engine/core/system_analysis.h"
#include "engine/files/design_report.h"
#include "engine/files/spec_file.h"
#include "engine/files/system_file.h"
#include "engine/files/text_file.h"
#include "tests/engine/analysis/iir_systems.h"
#include "tests/support/engine_in_memory.h"
#include "tests/support/scripted_front_end.h"
#include "tests/support/source_folder.h"

#include <gtest/gtest.h>
#include <set>

using namespace brisel;
using test::Complex;

namespace {

struct Engine {
  ScriptedFrontEnd front;
  Engine() {
    test::start_engine_in_memory();
    report_off = true;
  }
  ~Engine() {
    design_record.valid = 0;
    program_exit(ExitMode::discard);
  }
};

constexpr double rate = 8000 * two_pi;

Complex response(const ConvertibleSystem &system, Complex x) {
  switch (system.option) {
  case InputOption::ratio:
    if (system.domain == Domain::s) {
      Complex n = 0, d = 0;
      const RatioEntry &r = system.iir.ratio;
      for (int i = 0; i <= r.numerator_order; i++) n = n * x + (long double)r.numerator[i];
      for (int i = 0; i <= r.denominator_order; i++) d = d * x + (long double)r.denominator[i];
      return (long double)r.gain * n / d;
    }
    return test::response(system.iir.ratio, x);
  case InputOption::pole_zero:
    return test::response(system.iir.pole_zero, x);
  case InputOption::product:
    return test::response(system.iir.cascade, x, false);
  case InputOption::sum:
    return test::response(system.iir.parallel, x, true);
  case InputOption::ladder_1:
    return test::response(system.iir.ladder_1, x);
  case InputOption::ladder_2:
    return test::response(system.iir.ladder_2, x);
  default:
    return test::response(system.iir.lattice, x);
  }
}

const Conversion *made(const ConversionOutcome &outcome) {
  const auto *conversion = std::get_if<std::unique_ptr<Conversion>>(&outcome);
  return conversion ? conversion->get() : nullptr;
}
std::string refusal(const ConversionOutcome &outcome) {
  const auto *why = std::get_if<std::string>(&outcome);
  return why ? *why : "";
}

ConvertibleSystem roots(Domain domain, double gain, std::vector<std::complex<double>> zeros,
                        std::vector<std::complex<double>> poles) {
  ConvertibleSystem system;
  system.domain = domain;
  system.option = InputOption::pole_zero;
  system.sample_rate = rate;
  PoleZeroEntry &entry = system.iir.pole_zero;
  entry.sample_rate = rate;
  entry.gain = gain;
  for (const auto &zero : zeros) (zero.imag() == 0 ? entry.real_zeros : entry.complex_zeros)++;
  for (const auto &pole : poles) (pole.imag() == 0 ? entry.real_poles : entry.complex_poles)++;
  std::copy(zeros.begin(), zeros.end(), entry.zeros.begin());
  std::copy(poles.begin(), poles.end(), entry.poles.begin());
  return system;
}

constexpr std::complex<double> j(0, 1);

// scipy.signal.ellip(5, 0.5, 60, 0.25, output='zpk'), rounded to 8 digits, which makes it a system of its own.
ConvertibleSystem elliptic() {
  return roots(Domain::z, 0.0065374921,
               {-0.16344049 + 0.9865532 * j, -0.16344049 - 0.9865532 * j, 0.25893541 + 0.96589464 * j,
                0.25893541 - 0.96589464 * j, -1},
               {0.71402985, 0.68102357 + 0.42056482 * j, 0.68102357 - 0.42056482 * j, 0.65650448 + 0.66928825 * j,
                0.65650448 - 0.66928825 * j});
}

// Three poles and no zero: two samples of delay beside the roll-off.
ConvertibleSystem delayed() {
  return roots(Domain::z, 0.25, {-0.5}, {0.5, 0.25 + 0.5 * j, 0.25 - 0.5 * j});
}

// Butterworth of order 3 at 1000 Hz with a zero at 2500 Hz on the axis, radians per second.
ConvertibleSystem analog() {
  const double w = 1000 * two_pi, zero = 2500 * two_pi;
  return roots(Domain::s, -w * w * w / (zero * zero), {zero * j, -zero * j},
               {-w, w * (-0.5 + std::sqrt(0.75) * j), w * (-0.5 - std::sqrt(0.75) * j)});
}

constexpr InputOption iir_options[] = {InputOption::ratio,   InputOption::pole_zero, InputOption::product,
                                       InputOption::sum,     InputOption::lattice,   InputOption::ladder_1,
                                       InputOption::ladder_2};

// Distance of two systems over the dense grid of their domain.
double distance(const std::function<Complex(Complex)> &expected, const ConvertibleSystem &system, int delay = 0) {
  if (system.domain == Domain::z)
    return test::distance(
        expected, [&](Complex z) { return response(system, z); }, delay);
  long double peak = 0, worst = 0;
  for (int i = 0; i <= 2000; i++) {
    const Complex s(0, std::pow(10.0L, 2 + i / 500.0L)); // 100 to 1e6 rad/s
    peak = std::max(peak, std::abs(expected(s)));
    worst = std::max(worst, std::abs(expected(s) - response(system, s)));
  }
  return static_cast<double>(worst / peak);
}

} // namespace

TEST(FormConversion, EveryFormOfASystemIsTheSystem) {
  Engine engine;
  const struct {
    const char *name;
    ConvertibleSystem system;
    std::set<InputOption> without;
  } rows[] = {{"elliptic", elliptic(), {}},
              {"delayed", delayed(), {InputOption::ladder_1}},
              // Reflection coefficients of polynomials in radians per second are of the order of 1e11.
              {"analog", analog(), {InputOption::lattice, InputOption::ladder_2}}};
  for (const auto &row : rows)
    for (const InputOption first : iir_options) {
      const ConversionOutcome to_first = convert_iir_form(row.system, first);
      const Conversion *source = made(to_first);
      if (!source) {
        EXPECT_TRUE(row.without.contains(first)) << row.name << int(code(first)) << refusal(to_first);
        continue;
      }
      EXPECT_FALSE(row.without.contains(first)) << row.name << int(code(first));
      EXPECT_EQ(source->dropped_delay, 0) << row.name << int(code(first));
      EXPECT_LT(distance([&](Complex x) { return response(row.system, x); }, source->system, source->dropped_delay),
                1e-10)
          << row.name << int(code(first));
      for (const InputOption second : iir_options) {
        const ConversionOutcome to_second = convert_iir_form(source->system, second);
        const Conversion *target = made(to_second);
        if (!target) continue;
        const double d =
            distance([&](Complex x) { return response(source->system, x); }, target->system, target->dropped_delay);
        EXPECT_LT(d, 1e-9) << row.name << int(code(first)) << int(code(second));
        // What is claimed is what is measured here, to the digit that two grids may differ in.
        EXPECT_LT(d, std::pow(10, 1 - target->digits)) << row.name << int(code(first)) << int(code(second));
        EXPECT_EQ(target->system.sample_rate, rate);
      }
    }
}

TEST(FormConversion, CoefficientsAreThoseOfSciPy) {
  Engine engine;
  ConvertibleSystem source;
  source.option = InputOption::product;
  source.iir.cascade = test::elliptic_5(); // sections of scipy.signal.zpk2sos
  // scipy.signal.zpk2tf and residuez of the same filter
  const double numerator[] = {0.006537492075792873, 0.005288897490030798, 0.010719709049903188,
                              0.01071970904990319,  0.005288897490030798, 0.006537492075792872};
  const double denominator[] = {
      1, -3.3890859405474023, 5.2180627369183155, -4.400372639181867, 2.01856663386529, -0.4020785938228816};
  const ConversionOutcome to_ratio = convert_iir_form(source, InputOption::ratio);
  ASSERT_TRUE(made(to_ratio)) << refusal(to_ratio);
  const RatioEntry &ratio = made(to_ratio)->system.iir.ratio;
  for (std::size_t i = 0; i < 6; i++) {
    EXPECT_NEAR(ratio.gain * ratio.numerator[i], numerator[i], 1e-14) << i;
    EXPECT_NEAR(ratio.denominator[i], denominator[i], 1e-13) << i;
  }
  const ConversionOutcome to_sum = convert_iir_form(source, InputOption::sum);
  ASSERT_TRUE(made(to_sum));
  EXPECT_NEAR(
      made(to_sum)->system.iir.parallel.gain +
          [&] {
            double first = 0;
            const SectionEntry &p = made(to_sum)->system.iir.parallel;
            for (int k = 0; k < p.section_count; k++) first += p.numerators[k][0];
            return first;
          }(),
      numerator[0], 1e-13)
      << "the first sample of the impulse response";
}

TEST(FormConversion, FormsThatDoNotExistAreRefusedWithTheirReason) {
  Engine engine;
  const struct {
    ConvertibleSystem system;
    InputOption target;
    const char *says;
  } rows[] = {
      {roots(Domain::z, 1, {}, {0.5, 2}), InputOption::lattice, "mirror each other"},
      {roots(Domain::z, 1, {}, {1, -0.5}), InputOption::lattice, "poles lie on the unit circle"},
      {roots(Domain::z, 1, {0, 0}, {0.5, -0.5}), InputOption::ladder_1, "ends early"},
      {roots(Domain::s, 1, {-1, -2}, {-3}), InputOption::sum, "at least as many poles as zeros"},
      {roots(Domain::z, 1, {}, {0.5 * j, 0.5}), InputOption::ratio, "no system that has other forms"},
      {roots(Domain::z, 0, {0.5}, {0.25}), InputOption::ratio, "no system that has other forms"},
  };
  for (const auto &row : rows) {
    const ConversionOutcome outcome = convert_iir_form(row.system, row.target);
    EXPECT_NE(refusal(outcome).find(row.says), std::string::npos) << row.says << "; " << refusal(outcome);
  }
  // Forty poles at nearly one place: the expanded polynomials hold nothing of the system.
  std::vector<std::complex<double>> crowd;
  for (int k = 0; k < 20; k++)
    for (const double sign : {1.0, -1.0}) crowd.push_back(std::polar(0.99 + 1e-4 * k, sign * 0.02));
  EXPECT_NE(refusal(convert_iir_form(roots(Domain::z, 1e-30, {}, crowd), InputOption::ratio)).find("would keep"),
            std::string::npos);
}

TEST(DomainConversion, EveryMappingIsWhatItsNameSays) {
  Engine engine;
  const ConvertibleSystem source = analog();
  const PoleZeroEntry &pz = source.iir.pole_zero;
  const long double period = 1 / 8000.0L;
  const auto h_s = [&](Complex s) { return test::response(pz, s); };
  const auto bilinear = [&](Complex z) {
    return std::abs(z + 1.0L) < 1e-9L ? Complex(0) : h_s(2 / period * (z - 1.0L) / (z + 1.0L));
  };
  const auto impulse = [&](Complex z) {
    Complex sum = 0;
    for (int i = 0; i < 3; i++) {
      const Complex p(pz.poles[i]);
      Complex residue = pz.gain;
      for (int k = 0; k < 2; k++) residue *= p - Complex(pz.zeros[k]);
      for (int k = 0; k < 3; k++)
        if (k != i) residue /= p - Complex(pz.poles[k]);
      sum += period * residue / (1.0L - std::exp(p * period) / z);
    }
    return sum;
  };
  const auto matched = [&](long double padding) {
    return [&pz, period, padding, h_s](Complex z) {
      const auto shape = [&](Complex at) {
        Complex h = at - padding;
        for (int k = 0; k < 2; k++) h *= at - std::exp(Complex(pz.zeros[k]) * period);
        for (int k = 0; k < 3; k++) h /= at - std::exp(Complex(pz.poles[k]) * period);
        return h;
      };
      static long double analog_peak = 0, digital_peak = 0, of = 0;
      if (of != padding) {
        of = padding;
        analog_peak = digital_peak = 0;
        for (int i = 0; i <= 1000; i++) {
          analog_peak = std::max(analog_peak, std::abs(h_s(Complex(0, test::pi / period * i / 1000))));
          digital_peak = std::max(digital_peak, std::abs(shape(std::polar<long double>(1, test::pi * i / 1000))));
        }
      }
      return -shape(z) * analog_peak / digital_peak; // the analog gain is negative
    };
  };
  const struct {
    ZTransform method;
    MatchedPadding padding;
    std::function<Complex(Complex)> expected;
  } rows[] = {{ZTransform::bilinear, MatchedPadding::lowpass, bilinear},
              {ZTransform::impulse_invariant, MatchedPadding::lowpass, impulse},
              {ZTransform::matched_z, MatchedPadding::lowpass, matched(-1)},
              {ZTransform::matched_z, MatchedPadding::highpass, matched(1)},
              {ZTransform::matched_z, MatchedPadding::bandpass, matched(-1)}};
  for (const auto &row : rows)
    for (const InputOption form : {InputOption::pole_zero, InputOption::product, InputOption::ratio, InputOption::sum})
      for (const InputOption target : iir_options) {
        const ConversionOutcome from = convert_iir_form(source, form);
        ASSERT_TRUE(made(from)) << int(code(form)) << refusal(from);
        const ConversionOutcome outcome = convert_domain(made(from)->system, row.method, row.padding, target);
        const Conversion *conversion = made(outcome);
        ASSERT_TRUE(conversion) << int(code(row.method)) << int(code(target)) << refusal(outcome);
        const double d = distance(row.expected, conversion->system);
        EXPECT_LT(d, 1e-9) << int(code(row.method)) << int(code(form)) << int(code(target));
        EXPECT_LT(d, std::pow(10, 1.5 - conversion->digits)) << int(code(row.method)) << int(code(target));
        EXPECT_EQ(conversion->system.domain, Domain::z);
        EXPECT_EQ(conversion->system.sample_rate, rate);
      }
}

TEST(DomainConversion, PaddingOfABandpassTakesBothEnds) {
  Engine engine;
  const double w = 1000 * two_pi;
  // Two pairs, one zero at 0: three zeros at infinity.
  const ConvertibleSystem source = roots(Domain::s, 1, {0}, {-w + w * j, -w - w * j, -w + 2 * w * j, -w - 2 * w * j});
  const ConversionOutcome outcome =
      convert_domain(source, ZTransform::matched_z, MatchedPadding::bandpass, InputOption::pole_zero);
  ASSERT_TRUE(made(outcome)) << refusal(outcome);
  const PoleZeroEntry &pz = made(outcome)->system.iir.pole_zero;
  int at_pi = 0, at_0 = 0;
  for (int i = 0; i < pz.real_zeros; i++) (pz.zeros[i].real() < 0 ? at_pi : at_0)++;
  EXPECT_EQ(at_pi, 2);
  EXPECT_EQ(at_0, 2) << "one of them is the analog zero";
  EXPECT_GT(made(outcome)->digits, 12);
}

TEST(DomainConversion, WhatCannotBeMappedIsRefused) {
  Engine engine;
  const ConvertibleSystem improper = roots(Domain::s, 1, {-1, -2}, {-3});
  for (const ZTransform method : {ZTransform::impulse_invariant, ZTransform::matched_z})
    EXPECT_NE(refusal(convert_domain(improper, method, MatchedPadding::lowpass, InputOption::product))
                  .find("more zeros than poles"),
              std::string::npos);
  EXPECT_NE(refusal(convert_domain(elliptic(), ZTransform::bilinear, MatchedPadding::lowpass, InputOption::product))
                .find("z domain"),
            std::string::npos);
  const ConversionOutcome growing = convert_domain(roots(Domain::s, 1, {}, {1000}), ZTransform::bilinear,
                                                   MatchedPadding::lowpass, InputOption::ratio);
  ASSERT_TRUE(made(growing));
  EXPECT_NE(made(growing)->notes[0].find("unstable"), std::string::npos);
}

namespace {

ConvertibleSystem fir(InputOption option, std::vector<double> taps, double gain = 1) {
  ConvertibleSystem system;
  system.option = option;
  system.sample_rate = rate;
  system.taps = std::move(taps);
  system.gain = gain;
  return system;
}

// A lattice by its own recursion, stage by stage at one place.
Complex fir_response(const ConvertibleSystem &system, Complex z) {
  Complex a = 1, b = 1;
  if (system.option == InputOption::lattice_fir) {
    for (const double k : system.taps) {
      const Complex delayed = b / z;
      b = (long double)k * a + delayed;
      a += (long double)k * delayed;
    }
    return (long double)system.gain * a;
  }
  Complex sum = 0;
  for (auto tap = system.taps.rbegin(); tap != system.taps.rend(); ++tap) sum = sum / z + (long double)*tap;
  return (long double)system.gain * sum;
}

} // namespace

TEST(FirConversion, ALatticeHasTheReflectionCoefficientsOfExactArithmetic) {
  Engine engine;
  const ConversionOutcome outcome = convert_fir_form(
      fir(InputOption::nonsymmetric_fir, {2, -1.5, 1.25, 0.25, -0.5, 0.375}, 3), InputOption::lattice_fir);
  ASSERT_TRUE(made(outcome)) << refusal(outcome);
  const ConvertibleSystem &lattice = made(outcome)->system;
  // A_{m-1} = (A_m - k B_m) / (1 - k^2) in Python's fractions.
  const double expected[] = {-0.41673985696524507, 0.6512528434332846, -0.07548360315483603, -0.11336032388663968,
                             0.1875};
  ASSERT_EQ(lattice.taps.size(), 5u);
  for (std::size_t i = 0; i < 5; i++) EXPECT_NEAR(lattice.taps[i], expected[i], 1e-16) << i;
  EXPECT_EQ(lattice.gain, 6);
}

TEST(FirConversion, EveryFormIsTheFilter) {
  Engine engine;
  std::vector<double> any, even, odd;
  for (int i = 0; i < 60; i++) any.push_back(std::exp(-0.1 * i) * std::cos(0.7 * i) + (i == 17 ? 0.4 : 0));
  for (int i = 0; i < 31; i++) even.push_back(1 / (1.0 + std::abs(i - 15)));
  for (int i = 0; i < 30; i++) odd.push_back(i < 15 ? 0.1 * i + 0.3 : -(0.1 * (29 - i) + 0.3));
  const struct {
    ConvertibleSystem source;
    InputOption target;
  } rows[] = {{fir(InputOption::nonsymmetric_fir, any, -0.5), InputOption::lattice_fir},
              {fir(InputOption::nonsymmetric_fir, even), InputOption::symmetric_fir},
              {fir(InputOption::symmetric_fir, even, 2), InputOption::nonsymmetric_fir},
              {fir(InputOption::nonsymmetric_fir, odd), InputOption::antisymmetric_fir},
              {fir(InputOption::lattice_fir, {0.5, -0.25, 0.125, 0.75, -3}, 2), InputOption::nonsymmetric_fir},
              {fir(InputOption::lattice_fir, {0.5, 1}), InputOption::symmetric_fir},
              {fir(InputOption::lattice_fir, {0.5, -1}), InputOption::antisymmetric_fir}};
  for (const auto &row : rows) {
    const ConversionOutcome outcome = convert_fir_form(row.source, row.target);
    const Conversion *conversion = made(outcome);
    ASSERT_TRUE(conversion) << int(code(row.target)) << refusal(outcome);
    const double d = test::distance([&](Complex z) { return fir_response(row.source, z); },
                                    [&](Complex z) { return fir_response(conversion->system, z); });
    EXPECT_LT(d, 1e-12) << int(code(row.target));
    EXPECT_LT(d, std::pow(10, 0.5 - conversion->digits) + 1e-18) << int(code(row.target));
    EXPECT_GE(conversion->file_digits, 8);
  }
}

TEST(FirConversion, FormsThatDoNotExistAreRefusedWithTheirReason) {
  Engine engine;
  const struct {
    std::vector<double> taps;
    InputOption target;
    const char *says;
  } rows[] = {{{1, 2, 3, 2, 1}, InputOption::lattice_fir, "reflection coefficient 4 is 1 or -1"},
              {{-1, 2, 0, -2, 1}, InputOption::lattice_fir, "reflection coefficient 4 is 1 or -1"},
              {{1, 0.75, 1.125, 0.5}, InputOption::lattice_fir, "reflection coefficient 2 is 1 or -1"},
              {{0, 1, 0.5}, InputOption::lattice_fir, "the first tap is 0"},
              {{1}, InputOption::lattice_fir, "a single tap"},
              {{1, 0.5, 0.999}, InputOption::symmetric_fir, "tap 0 is 1 and its mirror image 0.999"},
              {{1, 0.5, -1}, InputOption::antisymmetric_fir, "tap 1 is 0.5"}};
  for (const auto &row : rows) {
    const ConversionOutcome outcome = convert_fir_form(fir(InputOption::nonsymmetric_fir, row.taps), row.target);
    EXPECT_NE(refusal(outcome).find(row.says), std::string::npos) << row.says << "; " << refusal(outcome);
  }
}

TEST(SystemFiles, WhatDoesNotReadBackIsKnownBeforehand) {
  Engine engine;
  const ConversionOutcome sections = convert_iir_form(elliptic(), InputOption::product);
  EXPECT_GT(made(sections)->file_digits, 6);
  EXPECT_LT(made(sections)->file_digits, 10) << "nine digits a coefficient";
  // Leading taps, which the file's own label hides, and an order of 1: a lattice has a longer one that is the same
  // system, a ladder has none.
  for (const auto &system :
       {roots(Domain::z, 1, {0.5, 0.25, 0.125}, {0, 0, 0.75}), roots(Domain::z, 1, {0.5}, {0.25})}) {
    const ConversionOutcome lattice = convert_iir_form(system, InputOption::lattice);
    ASSERT_TRUE(made(lattice)) << refusal(lattice);
    EXPECT_GT(made(lattice)->file_digits, 7);
    const ConversionOutcome ladder = convert_iir_form(system, InputOption::ladder_1);
    ASSERT_TRUE(made(ladder)) << refusal(ladder);
    EXPECT_GT(made(ladder)->digits, 14);
    EXPECT_LT(made(ladder)->file_digits, 0);
    EXPECT_NE(made(ladder)->notes.back().find("cannot hold"), std::string::npos);
  }
  EXPECT_TRUE(engine.front.complaints.empty()) << "trying a file is silent";
}

TEST(CurrentSystem, AnEnteredConversionIsAnalysedAsTheSameSystem) {
  Engine engine;
  const ConvertibleSystem source = elliptic();
  for (const InputOption option : iir_options) {
    const ConversionOutcome outcome = convert_iir_form(source, option);
    ASSERT_TRUE(made(outcome)) << int(code(option)) << refusal(outcome);
    enter_system(made(outcome)->system);
    analyze_system();
    ASSERT_TRUE(design_record.valid) << int(code(option));
    EXPECT_EQ(design_record.selections.z_input_option, code(option));
    const SystemPointer again = current_iir_system(Domain::z);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->option, option);
    EXPECT_LT(distance([&](Complex z) { return response(source, z); }, *again), 1e-10) << int(code(option));
    EXPECT_FALSE(current_iir_system(Domain::s));
    EXPECT_FALSE(current_fir_system());
  }
  enter_system(fir(InputOption::lattice_fir, {0.5, -0.25}, 2));
  analyze_system();
  const SystemPointer lattice = current_fir_system();
  ASSERT_TRUE(lattice);
  EXPECT_EQ(lattice->taps, (std::vector<double>{0.5, -0.25}));
  EXPECT_EQ(lattice->gain, 2);
  EXPECT_FALSE(current_iir_system(Domain::z));
}

TEST(CurrentSystem, TheAnalogFilterOfADesignMapsToTheDesign) {
  Engine engine;
  const struct {
    const char *example;
    ZTransform method;
    AnalogPrototype prototype;
    MatchedPadding padding;
  } rows[] = {{"lowpass", ZTransform::bilinear, AnalogPrototype::elliptic, MatchedPadding::lowpass},
              {"bandstop", ZTransform::bilinear, AnalogPrototype::tschebyscheff, MatchedPadding::lowpass},
              {"bandpass", ZTransform::matched_z, AnalogPrototype::butterworth, MatchedPadding::bandpass},
              {"lowpass", ZTransform::impulse_invariant, AnalogPrototype::butterworth, MatchedPadding::lowpass}};
  for (const auto &row : rows) {
    ASSERT_EQ(load_filter_spec(source_file("examples/") + std::string(row.example) + ".spc"), success);
    design_state.FrequencyMode = 0;
    design_state.DesignOrAnalysisType = code(DesignMethod::iir);
    design_state.ZTransformMethod = code(row.method);
    engine.front.answer = [&](Page page) {
      if (page == Page::iir) design_state.analog_type = code(row.prototype);
      return PageResult::next;
    };
    design_filter();
    ASSERT_TRUE(design_record.valid) << row.example;
    const SystemPointer digital = current_iir_system(Domain::z), analog_filter = current_iir_system(Domain::s);
    ASSERT_TRUE(digital && analog_filter) << row.example;
    EXPECT_DOUBLE_EQ(analog_filter->sample_rate, design_record.loaded.sampling_frequency);
    const ConversionOutcome mapped = convert_domain(*analog_filter, row.method, row.padding, InputOption::pole_zero);
    ASSERT_TRUE(made(mapped)) << row.example << refusal(mapped);
    // The design sets its gain to a peak of 1 on 1001 points.
    long double scale = 0;
    for (const Complex z : test::circle()) scale = std::max(scale, std::abs(response(made(mapped)->system, z)));
    long double peak = 0;
    for (const Complex z : test::circle()) peak = std::max(peak, std::abs(response(*digital, z)));
    const double d =
        test::distance([&](Complex z) { return std::abs(response(*digital, z)); },
                       [&](Complex z) { return std::abs(response(made(mapped)->system, z)) * peak / scale; });
    EXPECT_LT(d, 1e-8) << row.example << int(code(row.method));
    for (const Domain domain : {Domain::s, Domain::z})
      for (const InputOption option :
           {InputOption::ratio, InputOption::pole_zero, InputOption::product, InputOption::sum, InputOption::lattice}) {
        const SystemPointer form = current_iir_result(domain, option);
        if (!form) continue;
        EXPECT_EQ(form->option, option);
        EXPECT_EQ(form->domain, domain);
      }
  }
}

TEST(CurrentSystem, AnalysisAndConversionMapAnalogSystemsAlike) {
  Engine engine;
  for (const ZTransform method : {ZTransform::bilinear, ZTransform::impulse_invariant, ZTransform::matched_z}) {
    enter_system(analog()); // of negative gain
    design_state.SDomainAnalysisRealizationMethod = static_cast<std::uint8_t>(code(method));
    current_spec->type = code(FilterType::low_pass);
    analyze_system();
    ASSERT_TRUE(design_record.valid);
    const ConversionOutcome outcome = convert_domain(analog(), method, MatchedPadding::lowpass, InputOption::product);
    ASSERT_TRUE(made(outcome)) << refusal(outcome);
    const SystemPointer analysed = current_iir_result(Domain::z, InputOption::product);
    ASSERT_TRUE(analysed);
    EXPECT_LT(distance([&](Complex z) { return response(*analysed, z); }, made(outcome)->system), 1e-10)
        << int(code(method));
  }
}
