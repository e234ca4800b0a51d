#include "tests/engine/analysis/iir_systems.h"

#include <gtest/gtest.h>

#include <functional>

namespace brisel::test {

using Response = std::function<Complex(Complex)>;

static Response response_of(RealizationForm form, const IirForms &f) {
  switch (form) {
  case RealizationForm::cascade:
    return [&f](Complex z) { return response(f.cascade, z, false); };
  case RealizationForm::parallel:
    return [&f](Complex z) { return response(f.parallel, z, true); };
  case RealizationForm::ratio:
    return [&f](Complex z) { return response(f.ratio, z); };
  case RealizationForm::lattice:
    return [&f](Complex z) { return response(f.lattice, z); };
  case RealizationForm::ladder_1:
    return [&f](Complex z) { return response(f.ladder_1, z); };
  default:
    return [&f](Complex z) { return response(f.ladder_2, z); };
  }
}

// Exact references: polynomials, step-down and continued fractions in rational arithmetic (python fractions) from the
// section coefficients of elliptic_5(), residues in long double. 1e-12 leaves room for the amplification of one
// rounding.
TEST(FormConversions, AgreeWithRationalArithmetic) {
  const SectionEntry cascade = elliptic_5();
  RatioEntry ratio{};
  ASSERT_TRUE(cascade_to_ratio(Domain::z, cascade, ratio));
  EXPECT_EQ(ratio.numerator_order, 5);
  EXPECT_EQ(ratio.denominator_order, 5);
  EXPECT_EQ(ratio.gain, cascade.gain);
  const double b[] = {
      1.0, 0.809010156909346, 1.6397280372386671, 1.6397280372386671, 0.809010156909346, 0.9999999999999999};
  const double a[] = {
      1.0, -3.3890859405474023, 5.2180627369183155, -4.400372639181868, 2.01856663386529, -0.40207859382288164};
  for (int i = 0; i <= 5; i++) {
    EXPECT_NEAR(ratio.numerator[i], b[i], 1e-15);
    EXPECT_NEAR(ratio.denominator[i], a[i], 1e-15);
  }

  LatticeEntry lattice{};
  ASSERT_TRUE(cascade_to_lattice(Domain::z, cascade, lattice));
  const double kappa[] = {-0.8185785492387435, 0.9240202422183664, -0.8787837664261551, 0.7823715368299314,
                          -0.40207859382288164};
  const double gamma[] = {1.1687487404099577, 6.171540231722588, 11.03732398467099,
                          9.328758322152268,  4.198096097456748, 0.9999999999999999};
  EXPECT_EQ(lattice.order, 5);
  EXPECT_EQ(lattice.lead, 0);
  for (int i = 1; i <= 5; i++) EXPECT_NEAR(lattice.kappa[i], kappa[i - 1], 1e-15);
  for (int i = 0; i <= 5; i++) EXPECT_NEAR(lattice.gamma[i], gamma[i], 1e-14);

  const double one[] = {1.0,
                        0.23820321802681238,
                        -1.6549340119476361,
                        -0.9478996666897221,
                        0.876342590152025,
                        1.9995223234507298,
                        -0.9565454010250816,
                        5.093451375662355,
                        0.09267114973040559,
                        -4.56069750437424,
                        -1.8446102751520774};
  const double two[] = {-2.4870759482423646, -0.06897499283579656, 4.233975343285537,  0.2722089542149802,
                        -2.576700560455852,  -0.6923943215164635,  1.5427889647688513, 2.583456409296274,
                        -0.2939445753718994, -4.165183833864218,   0.5809567760157273};
  LadderEntry ladder{};
  ASSERT_TRUE(cascade_to_ladder(Domain::z, cascade, LadderForm::one, ladder));
  EXPECT_EQ(ladder.alpha_count, 11);
  EXPECT_EQ(ladder.form, 0);
  for (int i = 0; i < 11; i++) EXPECT_NEAR(ladder.alpha[i], one[i], 1e-13) << i;
  ASSERT_TRUE(cascade_to_ladder(Domain::z, cascade, LadderForm::two, ladder));
  EXPECT_EQ(ladder.form, 1);
  for (int i = 0; i < 11; i++) EXPECT_NEAR(ladder.alpha[i], two[i], 1e-13) << i;

  SectionEntry parallel{};
  ASSERT_TRUE(cascade_to_parallel(Domain::z, cascade, parallel));
  const Triple terms[] = {{0, 0.2773068367678638, 0},
                          {0, -0.24471365199470946, 0.2947723419836764},
                          {0, -0.005148164802613833, -0.08308638730508629}};
  EXPECT_EQ(parallel.gain, cascade.gain);
  ASSERT_EQ(parallel.section_count, 3);
  for (int k = 0; k < 3; k++) {
    EXPECT_EQ(parallel.denominators[k], cascade.denominators[k]);
    for (int i = 0; i < 3; i++) EXPECT_NEAR(parallel.numerators[k][i], terms[k][i], 1e-15);
  }
}

struct System {
  const char *name;
  SectionEntry cascade;
};
static const std::vector<System> &systems() {
  static const std::vector<System> all{
      {"elliptic 5", elliptic_5()},
      {"Butterworth 1", butterworth(1, 0.3)},
      {"Butterworth 4", butterworth(4, 0.2)},
      {"Butterworth 7", butterworth(7, 0.45)},
      {"Butterworth 20", butterworth(20, 0.3)},
      {"narrow Butterworth 12", butterworth(12, 0.02)},
      {"half-rate Butterworth 9 with a pole at the origin", butterworth(9, 0.5)},
      {"Butterworth bandpass 20", band_pass(butterworth(10, 0.1))},
      {"resonators 20", resonators(10, 0.97)},
  };
  return all;
}

// Every form made from every form is compared on 1501 points with the form it came from. Section forms agree to 1e-9 of
// the peak; the others to the digits that the report says they keep, no more and no fewer.
TEST(FormConversions, EveryFormIsTheSameFilterOrSaysHowFar) {
  constexpr std::array forms{RealizationForm::cascade, RealizationForm::parallel, RealizationForm::ratio,
                             RealizationForm::lattice, RealizationForm::ladder_1, RealizationForm::ladder_2};
  for (const System &system : systems()) {
    IirForms first{};
    first.cascade = system.cascade;
    FormReport found{};
    ASSERT_TRUE(derive_forms(Domain::z, RealizationForm::cascade, first, found)) << system.name;
    const std::array<double, 6> made{16, found.parallel, found.ratio, found.lattice, found.ladder_1, found.ladder_2};
    for (std::size_t from = 0; from < forms.size(); from++) {
      const RealizationForm source = forms[from];
      if (made[from] < 1) continue; // no form, or nothing left of it
      SCOPED_TRACE(std::string(system.name) + " from form " + std::to_string(static_cast<int>(source)));
      IirForms all = first;
      ASSERT_TRUE(derive_forms(Domain::z, source, all, found));
      const bool sections = source == RealizationForm::cascade || source == RealizationForm::parallel;
      const Response reference = response_of(source, all);
      const std::array<double, 6> digits{found.cascade, found.parallel, found.ratio,
                                         found.lattice, found.ladder_1, found.ladder_2};
      for (std::size_t i = 0; i < forms.size(); i++) {
        if (digits[i] < 0) continue;
        const double attained = distance(reference, response_of(forms[i], all), i < 2 ? found.dropped_delay : 0);
        if (sections && i < 2) {
          EXPECT_LT(attained, 1e-9) << i;
        }
        if (digits[i] >= 9) {
          EXPECT_LT(attained, 3e-9) << i; // between the report's points it may be a little worse
        } else {
          EXPECT_GT(attained, 1e-10) << i << ": the warning is not idle, " << digits[i];
        }
        if (digits[i] < 1) {
          EXPECT_FALSE(attained < 0.01) << i; // it may not even be a number
          continue;
        }
        EXPECT_NEAR(std::min(-std::log10(attained), 13.0), std::min(digits[i], 13.0), 1.5) << i;
      }
      const double roots = distance(reference, [&](Complex z) { return response(all.pole_zero, z); });
      if (sections) {
        EXPECT_LT(roots, 1e-9);
      }
      EXPECT_NEAR(std::min(-std::log10(roots), 13.0), std::min(found.pole_zero, 13.0), 1.5);
    }
  }
}

TEST(FormConversions, SectionFormsStayRightToOrder200) {
  for (const System &system :
       {System{"Butterworth 100", butterworth(100, 0.3)}, System{"Butterworth 200", butterworth(200, 0.3)},
        System{"narrow Butterworth 199", butterworth(199, 0.05)}, System{"resonators 200", resonators(100, 0.97)}}) {
    SCOPED_TRACE(system.name);
    IirForms all{};
    all.cascade = system.cascade;
    FormReport found{};
    ASSERT_TRUE(derive_forms(Domain::z, RealizationForm::cascade, all, found));
    const Response reference = response_of(RealizationForm::cascade, all);
    EXPECT_LT(distance(reference, [&](Complex z) { return response(all.pole_zero, z); }), 1e-9);
    SectionEntry rebuilt{};
    int dropped = -1;
    ASSERT_TRUE(pole_zero_to_cascade(Domain::z, all.pole_zero, rebuilt, dropped));
    EXPECT_EQ(dropped, 0);
    EXPECT_LT(distance(reference, [&](Complex z) { return response(rebuilt, z, false); }), 1e-9);
    // The residues of a Butterworth filter of order 200 outgrow any double, and the report says so.
    const double attained = distance(reference, response_of(RealizationForm::parallel, all));
    EXPECT_EQ(attained < 1e-9, found.parallel >= 9);
    EXPECT_EQ(found.parallel >= 9, system.cascade.numerators[0][1] != 2 && system.cascade.numerators[0][1] != 1);
    if (found.parallel < 9) continue;
    ASSERT_TRUE(parallel_to_cascade(Domain::z, all.parallel, rebuilt, dropped));
    EXPECT_EQ(dropped, 0);
    EXPECT_LT(distance(reference, [&](Complex z) { return response(rebuilt, z, false); }), 1e-9);
  }
}

TEST(FormConversions, APureDelayIsDroppedFromTheCascadeAndCounted) {
  // Impulse-invariant terms of a lowpass: the first sample of the response is 0 but for rounding.
  IirForms all{};
  all.parallel = sections(0, {{{{0, 0.1, 0}, {0, 1, -0.9}}}, {{{-0.1, 0.03, 0}, {1, -1.5, 0.6}}}});
  FormReport found{};
  ASSERT_TRUE(derive_forms(Domain::z, RealizationForm::parallel, all, found));
  EXPECT_EQ(found.dropped_delay, 1);
  EXPECT_EQ(all.pole_zero.real_poles + all.pole_zero.complex_poles, 3);
  EXPECT_EQ(all.pole_zero.real_zeros + all.pole_zero.complex_zeros, 2);
  for (int k = 0; k < all.cascade.section_count; k++) {
    EXPECT_NE(all.cascade.numerators[k][0], 0);
    EXPECT_EQ(all.cascade.denominators[k][0], 1);
  }
  EXPECT_EQ(all.cascade.denominators[1], (Triple{1, -0.9, 0}));
  const Response reference = response_of(RealizationForm::parallel, all);
  EXPECT_LT(distance(reference, response_of(RealizationForm::cascade, all), 1), 1e-14);
  EXPECT_LT(distance(reference, response_of(RealizationForm::ratio, all)), 1e-14);
  EXPECT_EQ(all.ratio.numerator[0], 0);
  EXPECT_GE(found.cascade, 14);
}

// A sum of second-order sections cannot hold equal conjugate pairs; they are moved apart and the loss is reported.
TEST(FormConversions, RepeatedPolesKeepNineDigitsInTheParallelForm) {
  const Triple pair{1, -1.2, 0.72}, one{1, 0, 0};
  struct Case {
    const char *name;
    std::vector<std::array<Triple, 2>> rows;
    double tolerance;
  };
  const std::vector<Case> cases{
      {"a pair twice", {{{one, pair}}, {{Triple{1, 2, 1}, pair}}}, 1e-9},
      {"a pair three times", {{{one, pair}}, {{Triple{1, 2, 1}, pair}}, {{one, pair}}}, 1e-8},
      {"a double real pole in one section is no loss", {{{one, {1, -1, 0.25}}}, {{one, pair}}}, 1e-14},
      {"a double real pole over two sections is none either",
       {{{{1, 1, 0}, {1, -0.5, 0}}}, {{one, {1, -0.2, -0.15}}}},
       1e-13},
      {"a real pole three times", {{{one, {1, -1, 0.25}}}, {{{1, 1, 0}, {1, -0.5, 0}}}}, 1e-8},
      {"a real pole four times", {{{one, {1, -1, 0.25}}}, {{one, {1, -1, 0.25}}}}, 1e-7},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    IirForms all{};
    all.cascade = sections(0.1, c.rows);
    FormReport found{};
    ASSERT_TRUE(derive_forms(Domain::z, RealizationForm::cascade, all, found));
    const double attained =
        distance(response_of(RealizationForm::cascade, all), response_of(RealizationForm::parallel, all));
    EXPECT_LT(attained, c.tolerance);
    EXPECT_NEAR(std::min(found.parallel, 13.0), std::min(-std::log10(attained), 13.0), 1);
  }
}

TEST(FormConversions, SectionsFromPolesAndZeros) {
  using C = std::complex<double>;
  struct Case {
    const char *name;
    Domain domain;
    std::vector<C> zeros, poles;
    bool possible;
    int dropped;
    std::vector<std::array<Triple, 2>> rows;
  };
  const C p(0.5, 0.25), q(-0.5, 0.5);
  const std::vector<Case> cases{
      {"conjugates need not be neighbours",
       Domain::z,
       {},
       {p, q, std::conj(p), std::conj(q)},
       true,
       4,
       {{{{1, 0, 0}, {1, -1, 0.3125}}}, {{{1, 0, 0}, {1, 1, 0.5}}}}},
      {"an odd real pole goes last, with the odd zero",
       Domain::z,
       {-1.0, p, std::conj(p)},
       {0.5, q, std::conj(q)},
       true,
       0,
       {{{{1, -1, 0.3125}, {1, 1, 0.5}}}, {{{1, 1, 0}, {1, -0.5, 0}}}}},
      {"more zeros than poles answer later", Domain::z, {1.0, -1.0}, {0.5}, true, -1, {{{{1, 0, -1}, {1, -0.5, 0}}}}},
      {"first order in s", Domain::s, {}, {-2.0}, true, 0, {{{{0, 0, 1}, {0, 1, 2}}}}},
      {"second order in s with one zero", Domain::s, {-3.0}, {std::conj(q), q}, true, 0, {{{{0, 1, 3}, {1, 1, 0.5}}}}},
      {"no poles and zeros", Domain::z, {}, {}, true, 0, {}},
      {"a complex value without its conjugate", Domain::z, {}, {p, q}, false, 0, {}},
      {"a lone complex value", Domain::z, {p}, {0.5}, false, 0, {}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    PoleZeroEntry entry{};
    entry.gain = 3;
    auto real = [](const std::vector<C> &v) {
      return static_cast<std::int16_t>(std::count_if(v.begin(), v.end(), [](C x) { return x.imag() == 0; }));
    };
    entry.real_zeros = real(c.zeros);
    entry.complex_zeros = static_cast<std::int16_t>(c.zeros.size() - entry.real_zeros);
    entry.real_poles = real(c.poles);
    entry.complex_poles = static_cast<std::int16_t>(c.poles.size() - entry.real_poles);
    std::copy(c.zeros.begin(), c.zeros.end(), entry.zeros.begin());
    std::copy(c.poles.begin(), c.poles.end(), entry.poles.begin());
    SectionEntry cascade{};
    int dropped = 99;
    ASSERT_EQ(pole_zero_to_cascade(c.domain, entry, cascade, dropped), c.possible);
    if (!c.possible) continue;
    EXPECT_EQ(dropped, c.dropped);
    EXPECT_EQ(cascade.gain, 3);
    ASSERT_EQ(cascade.section_count, static_cast<int>(c.rows.size()));
    EXPECT_EQ(cascade.order, static_cast<int>(std::max(c.zeros.size(), c.poles.size())));
    for (std::size_t k = 0; k < c.rows.size(); k++) {
      EXPECT_EQ(cascade.numerators[k], c.rows[k][0]);
      EXPECT_EQ(cascade.denominators[k], c.rows[k][1]);
    }
  }
}

TEST(FormConversions, LeadingTapsGoThereAndBack) {
  RatioEntry ratio{}, back{};
  ratio.gain = 2;
  ratio.numerator_order = 5;
  ratio.denominator_order = 3;
  const double b[] = {1, -0.3, 0.2, 0.7, -0.4, 0.25}, a[] = {1, -0.9, 0.5, 0.1};
  std::copy(std::begin(b), std::end(b), ratio.numerator.begin());
  std::copy(std::begin(a), std::end(a), ratio.denominator.begin());
  auto expect_back = [&] {
    ASSERT_EQ(back.numerator_order, 5);
    ASSERT_EQ(back.denominator_order, 3);
    for (int i = 0; i <= 5; i++) EXPECT_NEAR(back.gain * back.numerator[i], 2 * b[i], 1e-14);
    for (int i = 0; i <= 3; i++) EXPECT_NEAR(back.denominator[i], a[i], 1e-14);
    back = {};
  };
  LatticeEntry lattice{};
  ASSERT_TRUE(ratio_to_lattice(Domain::z, ratio, lattice));
  EXPECT_EQ(lattice.order, 3);
  EXPECT_EQ(lattice.lead, 2);
  EXPECT_LT(distance([&](Complex z) { return response(ratio, z); }, [&](Complex z) { return response(lattice, z); }),
            1e-14);
  ASSERT_TRUE(lattice_to_ratio(Domain::z, lattice, back));
  expect_back();
  for (const LadderForm form : {LadderForm::one, LadderForm::two}) {
    LadderEntry ladder{};
    ASSERT_TRUE(ratio_to_ladder(Domain::z, ratio, form, ladder));
    EXPECT_EQ(ladder.lead, 2);
    EXPECT_EQ(ladder.alpha_count, 9);
    EXPECT_LT(distance([&](Complex z) { return response(ratio, z); }, [&](Complex z) { return response(ladder, z); }),
              1e-13);
    ASSERT_TRUE(ladder_to_ratio(Domain::z, ladder, back));
    expect_back();
  }
  PoleZeroEntry roots{};
  ASSERT_TRUE(ratio_to_pole_zero(Domain::z, ratio, roots));
  EXPECT_EQ(roots.real_poles + roots.complex_poles, 5) << "two of them at the origin";
  EXPECT_LT(distance([&](Complex z) { return response(ratio, z); }, [&](Complex z) { return response(roots, z); }),
            1e-14);
}

TEST(FormConversions, MoreLeadingTapsThanTheOtherRecordsHold) {
  IirForms all{};
  LadderEntry &ladder = all.ladder_1;
  ASSERT_TRUE(cascade_to_ladder(Domain::z, sections(1, {{{{1, 0.2, 0.3}, {1, -0.6, 0.5}}}}), LadderForm::one, ladder));
  std::copy_backward(ladder.alpha.begin(), ladder.alpha.begin() + 5, ladder.alpha.begin() + max_lead + 5);
  for (int i = 0; i < max_lead; i++) ladder.alpha[i] = std::cos(i);
  ladder.lead = max_lead;
  ladder.alpha_count = max_lead + 5;
  FormReport found{};
  ASSERT_TRUE(derive_forms(Domain::z, RealizationForm::ladder_1, all, found));
  EXPECT_EQ(found.pole_zero, -1);
  EXPECT_EQ(found.cascade, -1);
  EXPECT_EQ(found.ratio, -1);
  EXPECT_GE(found.lattice, 12);
  EXPECT_EQ(all.lattice.lead, max_lead);
  EXPECT_LT(
      distance([&](Complex z) { return response(ladder, z); }, [&](Complex z) { return response(all.lattice, z); }),
      1e-12);
}

TEST(FormConversions, FormsThatDoNotExistAreReported) {
  IirForms all{};
  FormReport found{};
  all.cascade = sections(1, {{{{1, 0, 0}, {1, 0, 1}}}}); // poles on the circle: a reflection coefficient of 1
  ASSERT_TRUE(derive_forms(Domain::z, RealizationForm::cascade, all, found));
  EXPECT_EQ(found.lattice, -1);
  EXPECT_EQ(all.lattice.order, 0);
  all = {};
  all.cascade = sections(1, {{{{1, 0, 0}, {1, 0, 0.5}}}}); // even in z: the continued fraction skips a power
  ASSERT_TRUE(derive_forms(Domain::z, RealizationForm::cascade, all, found));
  EXPECT_EQ(found.ladder_1, -1);
  EXPECT_EQ(all.ladder_1.alpha_count, 0);
  EXPECT_GE(found.lattice, 15);

  all = {};
  all.cascade = sections(1, {{{{0, 0, 0}, {1, 0, 0.5}}}});
  EXPECT_FALSE(derive_forms(Domain::z, RealizationForm::cascade, all, found)) << "no numerator";
  all.cascade = sections(1, {{{{1, 0, 0}, {0, 0, 0}}}});
  EXPECT_FALSE(derive_forms(Domain::z, RealizationForm::cascade, all, found)) << "no denominator";
  all.parallel = sections(0, {{{{1, 0, 0}, {1, 0, 0.5}}}, {{{-1, 0, 0}, {1, 0, 0.5}}}});
  EXPECT_FALSE(derive_forms(Domain::z, RealizationForm::parallel, all, found)) << "a sum that is 0";
  EXPECT_FALSE(derive_forms(Domain::z, RealizationForm::nonlinear, all, found));
}

// Butterworth polynomials in s are tabulated: order 4 has 1, 2 cos(pi/8) + 2 cos(3 pi/8), ...
TEST(FormConversions, TheSDomainHasTheSameForms) {
  const double c1 = 2 * std::cos(std::numbers::pi / 8), c3 = 2 * std::cos(3 * std::numbers::pi / 8);
  IirForms all{};
  all.cascade = sections(1, {{{{0, 0, 1}, {1, c1, 1}}}, {{{0, 0, 1}, {1, c3, 1}}}, {{{0, 0, 1}, {0, 1, 1}}}});
  all.cascade.order = 5;
  FormReport found{};
  ASSERT_TRUE(derive_forms(Domain::s, RealizationForm::cascade, all, found));
  EXPECT_EQ(all.ratio.numerator_order, 0);
  ASSERT_EQ(all.ratio.denominator_order, 5);
  const double fourth[] = {1, c1 + c3, 2 + c1 * c3, c1 + c3, 1, 0};
  for (int i = 0; i <= 5; i++) EXPECT_NEAR(all.ratio.denominator[i], fourth[i] + (i ? fourth[i - 1] : 0), 1e-14);
  EXPECT_GE(found.parallel, 14);
  EXPECT_GE(found.pole_zero, 14);
  EXPECT_GE(found.ratio, 13);
  EXPECT_EQ(all.parallel.denominators[2], (Triple{0, 1, 1}));
  EXPECT_EQ(all.parallel.numerators[2][0], 0);
  EXPECT_EQ(all.parallel.numerators[2][1], 0);
  EXPECT_EQ(found.dropped_delay, 0);

  // From the sum the zeros at infinity are found to be such, and the cascade is the all-pole one again.
  ASSERT_TRUE(derive_forms(Domain::s, RealizationForm::parallel, all, found));
  EXPECT_EQ(all.pole_zero.real_zeros + all.pole_zero.complex_zeros, 0);
  EXPECT_NEAR(all.pole_zero.gain, 1, 1e-13);
  for (int k = 0; k < 3; k++) EXPECT_EQ(all.cascade.numerators[k], (Triple{0, 0, 1}));
}

} // namespace brisel::test
