// Frequency responses are held against N(x) / D(x) in long double, term by term, with the group delay from the
// derivatives of the polynomials; time responses against the difference equation of the same polynomials.
#include "engine/analysis/analog_response.h"
#include "engine/analysis/lattice_response.h"
#include "engine/analysis/ratio_response.h"
#include "engine/analysis/section_response.h"

#include "tests/engine/analysis/response_references.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace brisel {
namespace {

constexpr double pi = std::numbers::pi;

std::vector<double> even_grid(std::size_t count, double from = 0, double to = pi) {
  std::vector<double> points(count);
  for (std::size_t i = 0; i < count; ++i) points[i] = from + static_cast<double>(i) * (to - from) / (count - 1.0);
  return points;
}

SectionEntry sections(double gain, double pars, std::initializer_list<std::pair<Triple, Triple>> list) {
  SectionEntry e{};
  e.gain = gain;
  e.pars = pars;
  e.sample_rate = two_pi * 4; // a quarter of a second a sample
  for (const auto &[numerator, denominator] : list) {
    e.numerators[e.section_count] = numerator;
    e.denominators[e.section_count++] = denominator;
  }
  return e;
}

// H and its group delay in samples from a polynomial quotient in z^-1.
struct Reference {
  Wide response;
  long double delay;
};
Reference quotient(std::span<const double> b, std::span<const double> a, long double w) {
  auto delay = [&](std::span<const double> c) {
    std::vector<double> ramp(c.begin(), c.end());
    for (std::size_t k = 0; k < ramp.size(); ++k) ramp[k] *= static_cast<double>(k);
    return (direct_sum(ramp, w) / direct_sum(c, w)).real();
  };
  return {direct_sum(b, w) / direct_sum(a, w), delay(b) - delay(a)};
}

// y[n] = sum b[k] x[n-k] - sum a[k] y[n-k], a[0] = 1.
std::vector<double> difference_equation(std::span<const double> b, std::span<const double> a, std::size_t count,
                                        bool step) {
  std::vector<long double> y(count);
  for (std::size_t n = 0; n < count; ++n) {
    for (std::size_t k = 0; k < b.size() && k <= n; ++k) y[n] += step || k == n ? static_cast<long double>(b[k]) : 0;
    for (std::size_t k = 1; k < a.size() && k <= n; ++k) y[n] -= static_cast<long double>(a[k]) * y[n - k];
  }
  return {y.begin(), y.end()};
}

std::vector<double> product(std::span<const double> p, std::span<const double> q) {
  std::vector<double> r(p.size() + q.size() - 1);
  for (std::size_t i = 0; i < p.size(); ++i)
    for (std::size_t k = 0; k < q.size(); ++k) r[i + k] += p[i] * q[k];
  return r;
}

const Triple b1{0.5, -0.3, 0.2}, a1{1, -1.2, 0.81}, b2{1, 1.7, 1}, a2{1, 0.4, 0.5}, b3{2, 0.5, 0}, a3{1, -0.9, 0};

SectionEntry three_sections(double gain, double pars) {
  return sections(gain, pars, {{b1, a1}, {b2, a2}, {b3, a3}});
}
const std::vector<double> denominator = product(product(a1, a2), a3);
std::vector<double> cascade_numerator(double gain) {
  return product(product(product(b1, b2), b3), std::vector<double>{gain});
}
std::vector<double> parallel_numerator(double direct, double scale) {
  std::vector<double> sum = product(denominator, std::vector<double>{direct});
  const std::vector<double> terms[] = {product(product(b1, a2), a3), product(product(b2, a1), a3),
                                       product(product(b3, a1), a2)};
  for (std::size_t k = 0; k < sum.size(); ++k) {
    for (const auto &term : terms) sum[k] += term[k];
    sum[k] *= scale;
  }
  return sum;
}

void expect_quotient(const FrequencyArrays &r, std::span<const double> points, std::span<const double> b,
                     std::span<const double> a, double bound = 1e-12) {
  for (std::size_t i = 0; i < points.size(); ++i) {
    const Reference expected = quotient(b, a, points[i]);
    ASSERT_LT(std::abs(Wide(r.at(i)) - expected.response), bound) << i;
    ASSERT_NEAR(r.group_delay[i], static_cast<double>(expected.delay) / 4, 100 * bound)
        << i; // a zero lies on the circle
  }
}
void expect_difference_equation(const TimeArrays &r, std::span<const double> b, std::span<const double> a) {
  const auto impulse = difference_equation(b, a, r.impulse.size(), false);
  const auto step = difference_equation(b, a, r.step.size(), true);
  for (std::size_t n = 0; n < r.impulse.size(); ++n) {
    ASSERT_NEAR(r.impulse[n], impulse[n], 1e-12) << n;
    ASSERT_NEAR(r.step[n], step[n], 1e-12) << n;
  }
}

TEST(CascadeResponse, IsTheProductOfItsSections) {
  const std::vector<double> points = even_grid(501);
  const SectionEntry cascade = three_sections(0.7, 1);
  FrequencyArrays r(points.size());
  cascade_frequency_response(cascade, Plane::z, points, r.view());
  expect_quotient(r, points, cascade_numerator(0.7), denominator);
  TimeArrays t(700);
  cascade_time_response(cascade, t.view());
  expect_difference_equation(t, cascade_numerator(0.7), denominator);
}

TEST(ParallelResponse, IsTheSumOfItsSections) {
  const std::vector<double> points = even_grid(501);
  const SectionEntry parallel = three_sections(-0.4, 1.5);
  FrequencyArrays r(points.size());
  parallel_frequency_response(parallel, Plane::z, points, r.view());
  expect_quotient(r, points, parallel_numerator(-0.4, 1.5), denominator);
  TimeArrays t(700);
  parallel_time_response(parallel, t.view());
  expect_difference_equation(t, parallel_numerator(-0.4, 1.5), denominator);
}

TEST(RatioResponse, IsTheQuotient) {
  const std::vector<double> points = even_grid(501);
  RatioEntry ratio{};
  ratio.gain = 0.7;
  ratio.sample_rate = two_pi * 4;
  ratio.numerator_order = 6;
  ratio.denominator_order = 5;
  const std::vector<double> b = cascade_numerator(1);
  std::copy(b.begin(), b.end(), ratio.numerator.begin());
  std::copy(denominator.begin(), denominator.end(), ratio.denominator.begin());
  FrequencyArrays r(points.size());
  ratio_frequency_response(ratio, points, r.view());
  expect_quotient(r, points, cascade_numerator(0.7), denominator);
  TimeArrays t(700);
  ratio_time_response(ratio, t.view());
  expect_difference_equation(t, cascade_numerator(0.7), denominator);
}

TEST(RatioResponse, LeadingDenominatorCoefficientMultiplies) { // Kept: it does not divide
  RatioEntry ratio{};
  ratio.gain = 1;
  ratio.denominator_order = 1;
  ratio.numerator[0] = 3;
  ratio.denominator = {2, 1};
  TimeArrays t(600);
  ratio_time_response(ratio, t.view());
  EXPECT_EQ(t.impulse[0], 6);
  EXPECT_EQ(t.impulse[1], -12);
}

TEST(RatioResponse, HoldsMagnitudeAndPhaseWhereTheDenominatorVanishes) {
  RatioEntry ratio{};
  ratio.gain = 1;
  ratio.sample_rate = two_pi;
  ratio.denominator_order = 1;
  ratio.numerator[0] = 1;
  ratio.denominator = {1, -1};
  const std::vector<double> points{1, 0, 1};
  FrequencyArrays r(3);
  ratio_frequency_response(ratio, points, r.view());
  EXPECT_EQ(r.magnitude[1], r.magnitude[0]);
  EXPECT_EQ(r.phase[1], r.phase[0]);
  EXPECT_EQ(r.group_delay[1], 0);
}

TEST(SectionResponse, OfTheSimplestSections) {
  const std::vector<double> points = even_grid(11);
  const double sample = 0.25; // seconds
  const struct {
    const char *name;
    bool parallel;
    SectionEntry entry;
    double magnitude, group_delay;
    std::vector<double> impulse;
  } cases[] = {
      {"a constant", false, sections(2, 1, {{{1, 0, 0}, {1, 0, 0}}}), 2, 0, {2, 0, 0}},
      {"a pure delay", false, sections(1, 1, {{{0, 1, 0}, {1, 0, 0}}}), 1, sample, {0, 1, 0}},
      {"no sections", false, sections(3, 1, {}), 3, 0, {3, 0, 0}},
      {"no parallel sections", true, sections(1, 0.5, {}), 0.5, 0, {0.5, 0, 0}},
      {"a parallel delay", true, sections(0, 2, {{{0, 0, 1}, {1, 0, 0}}}), 2, 2 * sample, {0, 0, 2}},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    FrequencyArrays r(points.size());
    TimeArrays t(600);
    (c.parallel ? parallel_frequency_response : cascade_frequency_response)(c.entry, Plane::z, points, r.view());
    (c.parallel ? parallel_time_response : cascade_time_response)(c.entry, t.view());
    for (std::size_t i = 0; i < points.size(); ++i) {
      EXPECT_NEAR(r.magnitude[i], c.magnitude, 1e-15);
      EXPECT_NEAR(r.group_delay[i], c.group_delay, 1e-15);
    }
    double sum = 0;
    for (std::size_t n = 0; n < 600; ++n) {
      EXPECT_EQ(t.impulse[n], n < 3 ? c.impulse[n] : 0);
      EXPECT_EQ(t.step[n], sum += t.impulse[n]);
    }
  }
}

TEST(SectionResponse, LeavesOutASectionWhoseDenominatorVanishes) { // Kept: its numerator goes with it
  const std::vector<double> points{0, 1};
  FrequencyArrays r(2);
  cascade_frequency_response(sections(5, 1, {{{7, 0, 0}, {1, -1, 0}}, {{2, 0, 0}, {1, 0, 0}}}), Plane::z, points,
                             r.view());
  EXPECT_EQ(r.magnitude[0], 10);
  EXPECT_NEAR(r.magnitude[1], 70 / (2 * std::sin(0.5)), 1e-12);
}

TEST(SectionResponse, HoldsThePhaseWhereTheResponseVanishes) {
  const std::vector<double> points{1, 0};
  FrequencyArrays r(2);
  const SectionEntry entry = sections(1, 1, {{{1, -1, 0}, {1, 0, 0}}});
  cascade_frequency_response(entry, Plane::z, points, r.view());
  EXPECT_EQ(r.magnitude[1], 0);
  EXPECT_EQ(r.phase[1], r.phase[0]);
  parallel_frequency_response(entry, Plane::z, points, r.view());
  EXPECT_GT(r.magnitude[1], 0);
  SectionEntry none = sections(0, 1, {{{1, -1, 0}, {1, 0, 0}}});
  parallel_frequency_response(none, Plane::z, points, r.view());
  EXPECT_EQ(r.magnitude[1], 0);
  EXPECT_EQ(r.phase[1], r.phase[0]);
  EXPECT_EQ(r.group_delay[1], r.group_delay[0]);
}

// Zeros and poles at an end of the axis: near them the polynomials are differences of nearly equal numbers. A high-pass
// of order 4 as powers of (1 - z^-1) and its mirror image, at 1e-7 of the sampling frequency from its zeros.
TEST(SectionResponse, KeepsDigitsBesideZerosAtTheEnds) {
  for (const bool mirrored : {false, true}) {
    const double sign = mirrored ? 1 : -1;
    const SectionEntry entry = sections(1, 1, {{{1, 2 * sign, 1}, {1, 0, 0.25}}, {{1, sign, 0}, {1, 0, 0.25}}});
    const double w = 1e-7;
    const std::vector<double> points{mirrored ? pi - w : w};
    FrequencyArrays r(1);
    cascade_frequency_response(entry, Plane::z, points, r.view());
    EXPECT_NEAR(r.magnitude[0] / (w * w * w / 1.5625), 1, mirrored ? 1e-8 : 1e-12); // pi - w has 1e-16 of rounding
    EXPECT_NEAR(r.group_delay[0], (1.5 - 2 * 0.4) / 4, 1e-12);
  }
}

// Sections whose single factors would leave the range of a double on their way to a harmless product.
TEST(SectionResponse, ProductsOfExtremeSectionsDoNotOverflow) {
  SectionEntry entry = sections(1, 1, {});
  entry.section_count = 100;
  for (int k = 0; k < 100; ++k) {
    const double size = k < 50 ? 1e9 : 1e-9;
    entry.numerators[k] = {size, size / 2, 0};
    entry.denominators[k] = {1, 0.5, 0};
  }
  const std::vector<double> points = even_grid(7);
  FrequencyArrays r(points.size());
  cascade_frequency_response(entry, Plane::z, points, r.view());
  for (const double m : r.magnitude) EXPECT_NEAR(m, 1, 1e-13);
}

// Butterworth of order 200 at an eighth of the sampling frequency. The step response is the sum of the impulse
// response, which doubles miss by 1e-3: rounding in the early sections passes through all the others.
TEST(SectionResponse, TimeResponsesOfHighOrderKeepTheirDigits) {
  SectionEntry cascade = sections(1, 1, {});
  const double w = std::tan(std::numbers::pi / 8);
  for (cascade.section_count = 0; cascade.section_count < 100; ++cascade.section_count) {
    const double c = 2 * w * std::cos(std::numbers::pi * (cascade.section_count + 0.5) / 200), d = 1 + c + w * w;
    cascade.numerators[cascade.section_count] = {1, 2, 1};
    cascade.denominators[cascade.section_count] = {1, 2 * (w * w - 1) / d, (1 - c + w * w) / d};
    cascade.gain *= w * w / d;
  }
  TimeArrays t(1500);
  cascade_time_response(cascade, t.view());
  double sum = 0;
  for (std::size_t n = 0; n < 1500; ++n) EXPECT_NEAR(t.step[n], sum += t.impulse[n], 1e-12) << n;
}

TEST(SectionResponse, UnstableAndBrokenSectionsSaturate) {
  const struct {
    SectionEntry entry;
    double last;
  } cases[] = {{sections(1, 1, {{{1, 0, 0}, {1, -2, 0}}}), 1e30},
               {sections(-1, -1, {{{1, 0, 0}, {1, -2, 0}}}), -1e30},
               {sections(1, 1, {{{0, 0, 0}, {0, 0, 0}}}), -1e30}}; // 0 / 0
  for (const auto &c : cases) {
    TimeArrays t(1000);
    cascade_time_response(c.entry, t.view());
    EXPECT_EQ(t.impulse.back(), c.last);
    SectionEntry parallel = c.entry;
    parallel.gain = 0;
    parallel_time_response(parallel, t.view());
    EXPECT_EQ(t.impulse.back(), c.last);
  }
}

// Gray-Markel recursion on coefficients: A_m = A_(m-1) + k_m z^-m A_(m-1)(1/z), and the taps on the mirrored A_m.
TEST(LatticeResponse, IsTheQuotientThatItStandsFor) {
  LatticeEntry lattice{};
  lattice.order = 4;
  lattice.lead = 2;
  lattice.gain = 0.8;
  lattice.sample_rate = two_pi * 4;
  const std::vector<double> kappa{0, 0.6, -0.3, 0.85, -0.5}, gamma{0.3, -0.2, 1.1, 0.4, 0.7, -0.6, 0.25};
  std::copy(kappa.begin(), kappa.end(), lattice.kappa.begin());
  std::copy(gamma.begin(), gamma.end(), lattice.gamma.begin());
  std::vector<double> a{1}, b(7);
  for (std::size_t m = 0; m < 7; ++m) {
    if (m > 0 && m <= 4) {
      std::vector<double> next(a);
      next.push_back(0);
      for (std::size_t k = 0; k < a.size(); ++k) next[k + 1] += kappa[m] * a[a.size() - 1 - k];
      a = next;
    }
    for (std::size_t k = 0; k < a.size(); ++k) b[m - k] += 0.8 * gamma[m] * (m <= 4 ? a[k] : 0);
    if (m > 4)
      for (std::size_t k = 0; k < a.size(); ++k) b[m - k] += 0.8 * gamma[m] * a[k];
  }
  const std::vector<double> points = even_grid(301);
  FrequencyArrays r(points.size());
  lattice_frequency_response(lattice, points, r.view());
  expect_quotient(r, points, b, a);
  TimeArrays t(650);
  lattice_time_response(lattice, t.view());
  expect_difference_equation(t, b, a);
  lattice.kappa[2] = 1.5; // unstable
  lattice_time_response(lattice, t.view());
  EXPECT_TRUE(std::all_of(t.step.begin(), t.step.end(), [](double y) { return std::abs(y) <= 1e30; }));
  EXPECT_EQ(std::abs(t.step.back()), 1e30);
}

// The fraction written out as it stands, in long double.
TEST(LadderResponse, IsItsContinuedFraction) {
  const std::vector<double> points = even_grid(301, 0.01, 3.1);
  for (const int form : {0, 1}) {
    auto ladder = std::make_unique<LadderEntry>();
    ladder->form = static_cast<std::int8_t>(form);
    ladder->order = 3;
    ladder->lead = 2;
    ladder->alpha_count = 9;
    ladder->gain = 0.5;
    ladder->sample_rate = two_pi * 4;
    const std::vector<double> alpha{0.2, -0.1, 0.7, 1.3, -0.4, 2.1, 0.9, 0.6, 1.7};
    std::copy(alpha.begin(), alpha.end(), ladder->alpha.begin());
    auto value = [&](long double w) {
      const Wide z = std::polar<long double>(1, w), x = form == 0 ? z : Wide(1) / z;
      const Wide one = 1;
      Wide h = alpha[8];
      for (const int k : {7, 5, 3}) h = Wide(alpha[k - 1]) + one / (Wide(alpha[k]) * x + one / h);
      return 0.5L * (h + Wide(alpha[0]) / z + Wide(alpha[1]) / (z * z));
    };
    FrequencyArrays r(points.size());
    ladder_frequency_response(*ladder, points, r.view());
    for (std::size_t i = 0; i < points.size(); ++i) {
      const long double w = points[i], e = 1e-6L;
      ASSERT_LT(std::abs(Wide(r.at(i)) - value(w)), 1e-13) << i;
      const long double delay = std::arg(value(w - e) / value(w + e)) / (2 * e);
      ASSERT_NEAR(r.group_delay[i], static_cast<double>(delay) / 4, 1e-9) << i; // the difference quotient's error
    }
  }
}

// A system of order 3 in all its analog forms, as sampled at 4 Hz: 3 (s + 2) / ((s + 1) (s^2 + 0.6 s + 9.09)), poles
// -1 and -0.3 +- 3 j.
struct AnalogSystem {
  AnalogSystem() {
    ratio.numerator_order = 1;
    ratio.denominator_order = 3;
    ratio.numerator = {1, 2};
    ratio.denominator = {1, 1.6, 9.69, 9.09};
    pole_zero.real_zeros = pole_zero.real_poles = 1;
    pole_zero.complex_poles = 2;
    pole_zero.zeros[0] = -2;
    pole_zero.poles[0] = {-0.3, 3};
    pole_zero.poles[1] = {-0.3, -3};
    pole_zero.poles[2] = -1;
    ratio.gain = pole_zero.gain = 3;
    ratio.sample_rate = pole_zero.sample_rate = two_pi * 4;
    cascade = sections(3, 1, {{{0, 1, 2}, {1, 0.6, 9.09}}, {{0, 0, 1}, {0, 1, 1}}});
    // Residue at -1: 1 / (1 - 0.6 + 9.09) = r; the rest is (-r s + c) with the constant from s = 0.
    const double r = 1 / 9.49;
    parallel = sections(0, 3, {{{0, -r, 2 - 9.09 * r}, {1, 0.6, 9.09}}, {{0, 0, r}, {0, 1, 1}}});
  }
  static Wide response(long double w) { // radians per second
    const Wide s(0, w), one = 1;
    return Wide(3) * (s + Wide(2)) / ((s + one) * (s * s + Wide(0.6) * s + Wide(9.09)));
  }
  // By partial fractions: r e^-t + 2 Re(q e^(pt)).
  static std::complex<double> residue(std::complex<double> p) {
    return 3.0 * (p + 2.0) / ((p + 1.0) * (p - std::conj(p)));
  }
  static double impulse(double t) {
    const std::complex<double> p(-0.3, 3);
    return 3 / 9.49 * std::exp(-t) + 2 * (residue(p) * std::exp(p * t)).real();
  }
  static double step(double t) {
    const std::complex<double> p(-0.3, 3);
    return 3 / 9.49 * (1 - std::exp(-t)) + 2 * (residue(p) / p * (std::exp(p * t) - 1.0)).real();
  }
  RatioEntry ratio{};
  PoleZeroEntry pole_zero{};
  SectionEntry cascade, parallel;
};

TEST(AnalogResponse, IsTheSameInEveryForm) {
  const AnalogSystem system;
  const std::vector<double> points = even_grid(301);
  for (const int form : {0, 1, 2, 3}) {
    SCOPED_TRACE(form);
    FrequencyArrays r(points.size());
    if (form == 0) analog_ratio_response(system.ratio, points, r.view());
    if (form == 1) analog_pole_zero_response(system.pole_zero, points, r.view());
    if (form == 2) cascade_frequency_response(system.cascade, Plane::s, points, r.view());
    if (form == 3) parallel_frequency_response(system.parallel, Plane::s, points, r.view());
    for (std::size_t i = 0; i < points.size(); ++i) {
      const long double w = 4 * static_cast<long double>(points[i]), e = 1e-6L;
      ASSERT_LT(std::abs(Wide(r.at(i)) - AnalogSystem::response(w)), 1e-14) << i;
      const long double delay =
          std::arg(AnalogSystem::response(w - e) / AnalogSystem::response(w + e)) / (2 * e); // seconds
      ASSERT_NEAR(r.group_delay[i], static_cast<double>(delay), 1e-9) << i;
    }
  }
}

TEST(AnalogResponse, TimeResponsesAreExactAtTheSamplingInstants) {
  const AnalogSystem system;
  for (const Connection connection : {Connection::cascade, Connection::parallel}) {
    TimeArrays t(600);
    const auto direct = analog_time_response(connection == Connection::cascade ? system.cascade : system.parallel,
                                             connection, t.view());
    ASSERT_TRUE(direct);
    EXPECT_NEAR(*direct, 0, 1e-15);
    for (int k = 0; k < 600; ++k) {
      ASSERT_NEAR(t.impulse[k], AnalogSystem::impulse(k / 4.0), 1e-13) << k;
      ASSERT_NEAR(t.step[k], AnalogSystem::step(k / 4.0), 1e-13) << k;
    }
  }
}

TEST(AnalogResponse, DirectPathIsToldAndImproperSystemsHaveNone) {
  TimeArrays t(600);
  // (s + 3) / (s + 1) = 1 + 2 / (s + 1), twice over: direct gain 2, step 2 + 4 (1 - e^-t).
  EXPECT_EQ(analog_time_response(sections(2, 1, {{{0, 1, 3}, {0, 1, 1}}}), Connection::cascade, t.view()), 2);
  EXPECT_NEAR(t.impulse[4], 4 * std::exp(-1), 1e-14);
  EXPECT_NEAR(t.step[4], 2 + 4 * (1 - std::exp(-1)), 1e-14);
  EXPECT_EQ(analog_time_response(sections(2, 1, {{{1, 1, 3}, {0, 1, 1}}}), Connection::cascade, t.view()),
            std::nullopt);
}

} // namespace
} // namespace brisel
