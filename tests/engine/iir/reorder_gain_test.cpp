#include "engine/iir/cascade_gain.h"
#include "engine/iir/reorder.h"

#include "tests/engine/analysis/iir_systems.h"

#include <gtest/gtest.h>

namespace brisel::test {

using C = std::complex<double>;

static PoleZeroEntry pole_zero(const std::vector<C> &zeros, const std::vector<C> &poles) {
  PoleZeroEntry entry{};
  entry.gain = 1;
  auto add = [](const std::vector<C> &from, auto &to, std::int16_t &real, std::int16_t &complex) {
    std::copy(from.begin(), from.end(), to.begin());
    for (const C v : from) (v.imag() == 0 ? real : complex)++;
  };
  add(zeros, entry.zeros, entry.real_zeros, entry.complex_zeros);
  add(poles, entry.poles, entry.real_poles, entry.complex_poles);
  return entry;
}

TEST(OrderPairs, SmallestPolesFirstWithTheNearestZerosFromTheLast) {
  struct Case {
    const char *name;
    std::vector<C> zeros, poles; // of every pair its first value
    std::vector<C> ordered_zeros, ordered_poles;
  };
  const C near1 = std::polar(0.9, 0.5), near2 = std::polar(0.5, 1.5), near3 = std::polar(0.7, 2.5);
  const C z1 = std::polar(1.0, 0.6), z2 = std::polar(1.0, 1.6), z3 = std::polar(1.0, 2.6);
  const std::vector<Case> cases{
      {"sorted by magnitude, each with its zero",
       {z3, z1, z2},
       {near1, near2, near3},
       {z2, z3, z1},
       {near2, near3, near1}},
      {"equal magnitudes keep their order",
       {z1, z2},
       {std::polar(0.8, 1.0), std::polar(0.8, 2.0)},
       {z1, z2},
       {std::polar(0.8, 1.0), std::polar(0.8, 2.0)}},
      // The last pole takes its choice although the first would lose more.
      {"the last pole pair chooses first",
       {z1, z3},
       {std::polar(0.3, 0.6), std::polar(0.9, 0.7)},
       {z3, z1},
       {std::polar(0.3, 0.6), std::polar(0.9, 0.7)}},
      {"of zeros equally near the one nearest the end",
       {C(0, 1), C(0, 1)},
       {C(0.1, 0.5), C(0.2, 0.6)},
       {C(0, 1), C(0, 1)},
       {C(0.1, 0.5), C(0.2, 0.6)}},
  };
  auto pairs = [](const std::vector<C> &upper) {
    std::vector<C> list;
    for (const C v : upper) list.insert(list.end(), {v, std::conj(v)});
    return list;
  };
  for (const Case &c : cases) {
    PoleZeroEntry entry = pole_zero(pairs(c.zeros), pairs(c.poles));
    order_pairs(entry);
    for (std::size_t i = 0; i < c.poles.size(); i++) {
      EXPECT_EQ(entry.poles[2 * i], c.ordered_poles[i]) << c.name;
      EXPECT_EQ(entry.zeros[2 * i], c.ordered_zeros[i]) << c.name;
      EXPECT_EQ(entry.zeros[2 * i + 1], std::conj(c.ordered_zeros[i])) << c.name;
    }
  }
}

// Every section with a magnitude of 1 at frequency 0, so that the gain is 1.
static SectionEntry evenly_scaled(SectionEntry entry) {
  entry.gain = 1;
  for (int k = 0; k < entry.section_count; k++) {
    const Triple &d = entry.denominators[k];
    Triple &n = entry.numerators[k];
    const double scale = (d[0] + d[1] + d[2]) / (n[0] + n[1] + n[2]);
    for (double &b : n) b *= scale;
  }
  return entry;
}

TEST(ReorderSections, KeepsTheFilterAndDropsDelays) {
  struct Case {
    const char *name;
    SectionEntry cascade;
    int dropped;
    int section_count;
  };
  const std::vector<Case> cases{
      {"odd order with the first-order section in front", elliptic_5(), 0, 3},
      {"order 200", butterworth(200, 0.3), 0, 100},
      {"order 200 whose gain no double holds", evenly_scaled(butterworth(200, 0.01)), 0, 100},
      {"matched-z bandstop numerators", sections(2, {{{{0, 0, 3}, {1, -1.2, 0.7}}}, {{{1, 0.5, 1}, {2, 0.4, 1}}}}), 2,
       2},
      {"first-order sections of bilinear maps",
       sections(1, {{{{0, 0.2, 0.2}, {0, 1.5, -0.5}}}, {{{0, 1, 0.3}, {0, 1, 0.8}}}}), 0, 1},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    SectionEntry cascade = c.cascade;
    PoleZeroEntry work{};
    int dropped = -1;
    ASSERT_TRUE(reorder_sections(cascade, work, dropped));
    EXPECT_EQ(dropped, c.dropped);
    ASSERT_EQ(cascade.section_count, c.section_count);
    for (int k = 0; k < cascade.section_count; k++) {
      EXPECT_EQ(cascade.denominators[k][0], 1);
      EXPECT_NE(cascade.numerators[k][0], 0);
      if (k > 0 && k + 1 < cascade.section_count) {
        EXPECT_GE(cascade.denominators[k][2], cascade.denominators[k - 1][2]);
      }
    }
    EXPECT_LT(distance([&](Complex z) { return response(c.cascade, z, false); },
                       [&](Complex z) { return response(cascade, z, false); }, dropped),
              1e-9);
  }
  SectionEntry empty = sections(1, {{{{0, 0, 0}, {1, 0, 0.5}}}});
  PoleZeroEntry work{};
  int dropped;
  EXPECT_FALSE(reorder_sections(empty, work, dropped));
}

TEST(CascadeGain, PeaksAtOneOnItsOwnGrid) {
  SectionEntry cascade = elliptic_5();
  const double old_gain = cascade.gain = 0.02;
  const double returned = compute_cas_gain(cascade);
  EXPECT_NEAR(returned * cascade.gain, old_gain, 1e-15);
  long double peak = 0;
  for (int i = 0; i <= 1000; i++)
    peak = std::max(peak, std::abs(response(cascade, std::polar<long double>(1, pi * i / 1000), false)));
  EXPECT_NEAR(static_cast<double>(peak), 1, 1e-14);
}

TEST(CascadeGain, APeakOfZeroOrNoneLeavesAGainOfOne) {
  SectionEntry silent = sections(5, {{{{0, 0, 0}, {1, 0, 0.5}}}});
  EXPECT_EQ(compute_cas_gain(silent), 0);
  EXPECT_EQ(silent.gain, 1);
  SectionEntry undefined = sections(5, {{{{std::nan(""), 0, 0}, {1, 0, 0.5}}}});
  EXPECT_TRUE(std::isnan(compute_cas_gain(undefined)));
  EXPECT_EQ(undefined.gain, 1);
  // A denominator that vanishes leaves its section out at that point: 1 at frequency 0, and 1/4 everywhere else.
  SectionEntry on_circle = sections(3, {{{{0.25, -0.5, 0.25}, {1, -2, 1}}}});
  compute_cas_gain(on_circle);
  EXPECT_EQ(on_circle.gain, 1);
}

TEST(CascadeGain, ProductsBeyondADoubleAreSpreadOverTheSections) {
  std::vector<std::array<Triple, 2>> rows(100, {{{1, 2, 1}, {1, -1.998, 0.998001}}}); // 4e6 to the 100th
  SectionEntry cascade = sections(1, rows);
  compute_cas_gain(cascade);
  EXPECT_TRUE(std::isnormal(cascade.gain));
  // A denominator of 1e-6 summed from values near 2 has ten digits, and enters a hundred times.
  EXPECT_NEAR(static_cast<double>(std::abs(response(cascade, 1, false))), 1, 1e-7);
  EXPECT_EQ(cascade.numerators[0][1], 2 * cascade.numerators[0][0]) << "by powers of two";
}

TEST(RegainParallel, DividesTermsAndDirectTermByThePeak) {
  SectionEntry sum = sections(0.25, {{{{0.5, 0, 0}, {1, -0.5, 0}}}}); // 1.25 at frequency 0
  sum.pars = 7;
  EXPECT_DOUBLE_EQ(regain_parallel(sum), 1.25);
  EXPECT_EQ(sum.pars, 1);
  EXPECT_DOUBLE_EQ(sum.gain, 0.2);
  EXPECT_DOUBLE_EQ(sum.numerators[0][0], 0.4);
  SectionEntry one = sections(0.5, {{{{0.25, 0, 0}, {1, -0.5, 0}}}}), same = one; // exactly 1
  EXPECT_EQ(regain_parallel(one), 1);
  EXPECT_EQ(one.gain, same.gain);
  EXPECT_EQ(one.numerators, same.numerators);
}

TEST(Regain, EveryOtherFormPeaksAtOne) {
  IirForms all{};
  all.cascade = elliptic_5();
  all.cascade.gain *= 3;
  FormReport found{};
  ASSERT_TRUE(derive_forms(Domain::z, RealizationForm::cascade, all, found));
  const double expected = 3 * elliptic_5().gain;
  const Places poles(all.pole_zero.poles.data(), 5);
  SectionEntry reference = elliptic_5();
  compute_cas_gain(reference);
  EXPECT_NEAR(regain_ratio(all.ratio, poles) * all.ratio.gain, expected, 1e-14);
  EXPECT_NEAR(all.ratio.gain, reference.gain, 1e-14);
  regain_lattice(all.lattice, poles);
  EXPECT_NEAR(all.lattice.gain, reference.gain, 1e-14);
  for (LadderEntry *ladder : {&all.ladder_1, &all.ladder_2}) {
    regain_ladder(*ladder, poles);
    EXPECT_NEAR(ladder->gain, reference.gain, 1e-13);
  }
}

TEST(Normalize, MovesTheFirstNumeratorCoefficientIntoTheGain) {
  SectionEntry cascade = sections(2, {{{{0, 4, 2}, {1, 0.5, 0}}}, {{{-3, 6, 9}, {1, 0, 0.5}}}});
  normalize_sections(cascade);
  EXPECT_EQ(cascade.gain, -24);
  EXPECT_EQ(cascade.numerators[0], (Triple{0, 1, 0.5}));
  EXPECT_EQ(cascade.numerators[1], (Triple{1, -2, -3}));
  RatioEntry ratio{};
  ratio.gain = 3;
  ratio.numerator_order = ratio.denominator_order = 1;
  ratio.numerator = {0, 8};
  ratio.denominator = {2, 1};
  normalize_ratio(ratio);
  EXPECT_EQ(ratio.gain, 12);
  EXPECT_EQ(ratio.numerator[1], 1);
  EXPECT_EQ(ratio.denominator[0], 1);
  EXPECT_EQ(ratio.denominator[1], 0.5);
}

} // namespace brisel::test
