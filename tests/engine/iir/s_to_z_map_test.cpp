#include "engine/iir/bilinear_map.h"
#include "engine/iir/digital_transform.h"
#include "engine/iir/impulse_invariant_map.h"
#include "engine/iir/matched_z_map.h"
#include "section_probe.h"

#include <gtest/gtest.h>
#include <numbers>

using namespace brisel;
using std::numbers::pi;

namespace {

struct Section {
  Triple numerator, denominator;
};
SectionEntry entry(std::initializer_list<Section> sections, double sample_rate = two_pi, double gain = 1) {
  SectionEntry e{};
  e.sample_rate = sample_rate;
  e.gain = gain;
  e.pars = 1;
  for (const Section &s : sections) {
    e.numerators[e.section_count] = s.numerator;
    e.denominators[e.section_count++] = s.denominator;
  }
  return e;
}
void expect_triple(const Triple &got, const Triple &expected, const std::string &what) {
  for (int i = 0; i < 3; i++)
    EXPECT_NEAR(got[i], expected[i], 1e-14 * (1 + std::fabs(expected[i]))) << what << ", place " << i;
}

} // namespace

TEST(BilinearMap, IsTheSubstitutionOfS) {
  const SectionEntry s = entry(
      {{{2, 3, 5}, {1, 0.4, 7}}, {{0, 0, 1}, {1, 0.5, 2}}, {{0, 2, 1}, {0, 3, 4}}, {{0, 0, 3}, {0, 0, 2}}}, 3.0, 1.5);
  SectionEntry z;
  bilinear_map(s, z);
  EXPECT_EQ(z.section_count, 4);
  EXPECT_EQ(z.gain, 1.5);
  for (int i = 0; i < 4; i++) {
    for (double w : {0.0, 0.3, 1.7, 3.0}) {
      const Probe x = on_circle(w), point = Probe(3.0L / std::numbers::pi_v<long double>) * (x - 1.0L) / (x + 1.0L);
      const Probe digital = at(z.numerators[i], x) / at(z.denominators[i], x);
      EXPECT_LT(std::abs(digital - at(s.numerators[i], point) / at(s.denominators[i], point)), 1e-14L) << i << " " << w;
    }
  }
  EXPECT_EQ(z.numerators[2][0], 0) << "first-order sections keep an empty first place";
  EXPECT_EQ(z.denominators[2][0], 0);
  expect_triple(z.numerators[3], {0, 0, 3}, "constant sections are copied");
}

TEST(ImpulseInvariantMap, SamplesTheImpulseResponseOfEveryKindOfTerm) {
  struct Row {
    const char *what;
    Section term;
    double (*response)(double t); // of the term, by hand
  };
  const Row rows[] = {
      {"complex pair",
       {{0, 3, 5}, {1, 0.4, 4.04}},
       [](double t) { return std::exp(-0.2 * t) * (3 * std::cos(2 * t) + (5 - 0.6) / 2 * std::sin(2 * t)); }},
      {"complex pair, leading coefficient 2",
       {{0, 3, 5}, {2, 0.8, 8.08}},
       [](double t) { return 0.5 * std::exp(-0.2 * t) * (3 * std::cos(2 * t) + (5 - 0.6) / 2 * std::sin(2 * t)); }},
      {"two real roots", {{0, 1, 4}, {1, 3, 2}}, [](double t) { return 3 * std::exp(-t) - 2 * std::exp(-2 * t); }},
      {"double real root", {{0, 1, 4}, {1, 2, 1}}, [](double t) { return (1 + 3 * t) * std::exp(-t); }},
      {"nearly double root",
       {{0, 1, 4}, {1, 2 + 1e-6, 1 + 1e-6}},
       [](double t) { return std::exp(-t) * (1 - 3 * std::expm1(-1e-6 * t) / 1e-6 + std::expm1(-1e-6 * t)); }},
      {"single root", {{0, 0, 6}, {0, 2, 1}}, [](double t) { return 3 * std::exp(-0.5 * t); }},
  };
  for (const double step : {0.01, 1.0}) {
    for (const Row &row : rows) {
      SectionEntry z;
      impulse_invariant_map(entry({row.term}, two_pi, 0.25), z, step);
      EXPECT_EQ(z.gain, 0.25) << "the direct term is an impulse in both domains";
      Triple n = z.numerators[0], d = z.denominators[0];
      if (d[0] == 0) n = {n[1], n[2], 0}, d = {d[1], d[2], 0};
      std::array<double, 30> h{};
      for (int i = 0; i < 30; i++) {
        double sum = i < 3 ? n[i] : 0;
        for (int k = 1; k <= std::min(i, 2); k++) sum -= d[k] * h[i - k];
        h[i] = sum / d[0];
        EXPECT_NEAR(h[i], step * row.response(i * step), 1e-9) << row.what << ", sample " << i;
      }
    }
  }
}

TEST(ImpulseInvariantMap, StepOfTheNormalizedPrototypeIsKeptInLimits) {
  EXPECT_EQ(normalized_step(1e-5), 0.001);
  EXPECT_EQ(normalized_step(0.004), 0.004);
  EXPECT_EQ(normalized_step(1.0), 0.01);
}

TEST(MatchedZMap, MovesRootsAndAddsZerosWhereTheBandHasThem) {
  const double e = std::exp(-0.2), e1 = std::exp(-1.0), e3 = std::exp(-3.0);
  const Triple pair{1, 0.4, 4.04}, mapped_pair{1, -2 * e * std::cos(2.0), e * e};
  struct Row {
    const char *what;
    FilterType band;
    std::vector<Section> sections, expected;
  };
  const Row rows[] = {
      {"lowpass, constant numerator, whatever it was",
       FilterType::low_pass,
       {{{0, 0, 17}, pair}},
       {{{1, 2, 1}, mapped_pair}}},
      {"highpass, constant numerator", FilterType::high_pass, {{{0, 0, 17}, pair}}, {{{1, -2, 1}, mapped_pair}}},
      {"bandpass, constant numerator", FilterType::band_pass, {{{0, 0, 17}, pair}}, {{{1, 0, -1}, mapped_pair}}},
      {"bandstop adds none", FilterType::band_stop, {{{0, 0, 17}, pair}}, {{{0, 0, 17}, mapped_pair}}},
      {"lowpass, first-order numerator",
       FilterType::low_pass,
       {{{0, 2, 2}, pair}},
       {{{2, 2 - 2 * e1, -2 * e1}, mapped_pair}}},
      {"highpass, first-order numerator",
       FilterType::high_pass,
       {{{0, 2, 2}, pair}},
       {{{2, -2 * e1 - 2, 2 * e1}, mapped_pair}}},
      {"bandpass: 1 + z^-1 and 1 - z^-1 in turn, over sections of both orders",
       FilterType::band_pass,
       {{{0, 2, 0}, pair}, {{0, 2, 0}, pair}, {{0, 0, 5}, {0, 1, 1}}, {{0, 2, 0}, pair}},
       {{{2, 0, -2}, mapped_pair}, {{2, -4, 2}, mapped_pair}, {{0, 1, 1}, {0, 1, -e1}}, {{2, -4, 2}, mapped_pair}}},
      {"first-order lowpass", FilterType::low_pass, {{{0, 0, 5}, {0, 1, 1}}}, {{{0, 1, 1}, {0, 1, -e1}}}},
      {"first-order highpass", FilterType::high_pass, {{{0, 0, 5}, {0, 1, 1}}}, {{{0, 1, -1}, {0, 1, -e1}}}},
      {"two real roots",
       FilterType::low_pass,
       {{{3, 12, 9}, {2, 8, 6}}},
       {{{3, -3 * (e1 + e3), 3 * e1 * e3}, {2, -2 * (e1 + e3), 2 * e1 * e3}}}},
      {"zeros on the axis", FilterType::low_pass, {{{0.5, 0, 2}, pair}}, {{{0.5, -std::cos(2.0), 0.5}, mapped_pair}}},
      {"no z^-2 left: one place toward the end",
       FilterType::low_pass,
       {{{1, 2e4, 1e8}, {1, 3e4, 2e8}}},
       {{{0, 1, 0}, {0, 1, 0}}}},
  };
  for (const Row &row : rows) {
    SectionEntry s = entry({}), z;
    for (const Section &section : row.sections) {
      s.numerators[s.section_count] = section.numerator;
      s.denominators[s.section_count++] = section.denominator;
    }
    matched_z_map(s, z, row.band);
    for (std::size_t i = 0; i < row.expected.size(); i++) {
      expect_triple(z.numerators[i], row.expected[i].numerator, std::string(row.what) + ", numerator");
      expect_triple(z.denominators[i], row.expected[i].denominator, std::string(row.what) + ", denominator");
    }
  }
}

// The transformed filter at w is the lowpass at the frequency onto which the all-pass puts w; band edges go to the
// cutoff.
TEST(DigitalTransform, IsTheAllPassSubstitution) {
  const double theta_p = 0.01;
  SectionEntry lowpass;
  impulse_invariant_map(
      entry({{{0, -0.9, 0.3}, {1, 0.8, 1.1}}, {{0, 0, 0.7}, {0, 1, 1.2}}, {{0, 0.2, 0.1}, {1, 3, 2}}}, two_pi, 0.05),
      lowpass, theta_p);
  struct Row {
    FilterType band;
    std::array<double, 2> pass, stop;
    int order;
  };
  for (const Row &row :
       {Row{FilterType::low_pass, {1.0}, {1.2}, 5}, Row{FilterType::high_pass, {1.4}, {0.8}, 5},
        Row{FilterType::band_pass, {0.9, 1.3}, {0.7, 1.7}, 10}, Row{FilterType::band_stop, {0.5, 2.0}, {0.9, 1.6}, 10},
        Row{FilterType::band_pass, {0.8, 2.4}, {0.7, 2.37}, 10}}) {
    FilterSpec spec{};
    spec.type = code(row.band);
    spec.sampling_frequency = two_pi;
    spec.passband_edge = row.pass;
    spec.stopband_edge = row.stop;
    lowpass.order = 5;
    SectionEntry moved;
    digital_transform(lowpass, moved, spec, theta_p);
    EXPECT_EQ(moved.order, row.order);
    // As functions of half angles the all-passes are mappings of tan(w / 2), the bilinear images of the analog band
    // transformations, which fixes them independently of alpha and k.
    const long double e1 = (row.pass[0] + row.stop[0]) / 2, e2 = (row.pass[1] + row.stop[1]) / 2;
    const long double t1 = std::tan(e1 / 2), t2 = std::tan(e2 / 2), tp = std::tan(theta_p / 2.0L);
    const auto lowpass_tangent = [&](long double w) {
      const long double t = std::tan(w / 2);
      switch (row.band) {
      case FilterType::low_pass:
        return tp * t / t1;
      case FilterType::high_pass:
        return -tp * t1 / t;
      case FilterType::band_pass:
        return tp * (t * t - t1 * t2) / (t * (t2 - t1));
      default:
        return tp * t * (t2 - t1) / (t1 * t2 - t * t);
      }
    };
    for (int i = 1; i < 300; i++) {
      const long double w = pi * i / 300;
      const Probe expected = sum_at(lowpass, on_circle(2 * std::atan(lowpass_tangent(w))));
      // 1e-10: the lowpass coefficients hold the poles' distance from z = 1, 1e-2, to 1e-14
      EXPECT_LT(std::abs(sum_at(moved, on_circle(w)) - expected), 1e-10L) << int(row.band) << " at " << double(w);
    }
  }
}
