#include "engine/iir/analog_prototype.h"

#include "engine/iir/band_transform.h"
#include "engine/iir/bessel_prototype.h"
#include "engine/iir/bilinear_map.h"
#include "engine/iir/order_estimate.h"
#include "engine/iir/selectivity.h"
#include "reference_filters.h"
#include "section_probe.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

using namespace brisel;

namespace {

FilterSpec make_spec(FilterType band, std::array<double, 2> pass, std::array<double, 2> stop, double ap = 0.5,
                     double as = 60) {
  FilterSpec spec{};
  spec.type = code(band);
  spec.sampling_frequency = two_pi;
  spec.passband_edge = pass;
  spec.stopband_edge = stop;
  spec.passband_ripple = ap;
  spec.stopband_ripple = as;
  return spec;
}

SectionEntry bilinear_design(AnalogPrototype family, const FilterSpec &spec, int order) {
  SectionEntry normalized, analog, digital;
  const double wp = design_analog_prototype(family, spec, ZTransform::bilinear, order, normalized).wp;
  transform_analog_lowpass(normalized, analog, spec, ZTransform::bilinear, wp);
  bilinear_map(analog, digital);
  return digital;
}

Probe roots_product(const std::vector<std::complex<double>> &roots, Probe z) {
  Probe product = 1;
  for (const auto &r : roots) {
    product *= z - Probe(r);
    if (r.imag() != 0) product *= z - std::conj(Probe(r));
  }
  return product;
}

Probe reference_at(const ReferenceFilter &f, Probe z) {
  return roots_product(f.zeros, z) / roots_product(f.poles, z) * std::pow(z - 1.0L, f.zeros_at_1) *
         std::pow(z + 1.0L, f.zeros_at_minus_1);
}

std::vector<double> scaled_to_peak(std::vector<double> magnitude) {
  const double peak = *std::max_element(magnitude.begin(), magnitude.end());
  for (double &m : magnitude) m /= peak;
  return magnitude;
}

// Even steps over the whole axis and over the neighbourhood of the passband.
std::vector<double> dense_grid(const std::array<double, 2> &pass, const std::array<double, 2> &stop) {
  std::vector<double> grid;
  for (int i = 0; i <= 2000; i++) grid.push_back(std::numbers::pi * i / 2000);
  for (int i = 0; i < 2 && pass[i] > 0; i++) {
    const double reach = 2 * std::fabs(pass[i] - stop[i]);
    for (int j = -500; j <= 500; j++) grid.push_back(std::clamp(pass[i] + reach * j / 500, 0.0, std::numbers::pi));
  }
  return grid;
}

std::string name(AnalogPrototype family, FilterType band, int order) {
  return std::string(analog_prototypes[code(family)].option) + ", " + std::string(filter_types[code(band)].file_name) +
         ", order " + std::to_string(order);
}

} // namespace

TEST(AnalogPrototypes, GiveTheReferenceResponseInEveryBand) {
  for (const ReferenceFilter &f : reference_filters) {
    const FilterSpec spec = make_spec(f.band, f.passband, f.stopband);
    const SectionEntry digital = bilinear_design(f.family, spec, f.order);
    const auto grid = dense_grid(f.passband, f.stopband);
    std::vector<double> got, expected;
    for (const double w : grid) {
      got.push_back(static_cast<double>(std::abs(product_at(digital, on_circle(w)))));
      expected.push_back(static_cast<double>(std::abs(reference_at(f, on_circle(w)))));
    }
    got = scaled_to_peak(got);
    expected = scaled_to_peak(expected);
    double worst = 0;
    for (std::size_t i = 0; i < grid.size(); i++) worst = std::max(worst, std::fabs(got[i] - expected[i]));
    EXPECT_LT(worst, 1e-9) << name(f.family, f.band, f.order) << " edge " << f.passband[0];
  }
}

TEST(AnalogPrototypes, ButterworthOfOddOrderEndsWithItsFirstOrderSection) {
  SectionEntry e;
  FilterSpec spec = make_spec(FilterType::low_pass, {1}, {2}, 3);
  const auto [wp, approximate] =
      design_analog_prototype(AnalogPrototype::butterworth, spec, ZTransform::bilinear, 5, e);
  EXPECT_NEAR(wp, std::pow(std::pow(10, 0.3) - 1, 0.1), 1e-15);
  EXPECT_FALSE(approximate);
  EXPECT_EQ(e.section_count, 3);
  EXPECT_EQ(e.order, 5);
  EXPECT_EQ(e.gain, 1);
  EXPECT_EQ(e.sample_rate, two_pi);
  EXPECT_EQ(e.denominators[0], (Triple{1, 2 * std::cos(2 * std::numbers::pi / 10), 1}));
  EXPECT_EQ(e.denominators[1], (Triple{1, 2 * std::cos(4 * std::numbers::pi / 10), 1}));
  EXPECT_EQ(e.denominators[2], (Triple{0, 1, 1}));
  EXPECT_EQ(e.numerators[2], (Triple{0, 0, 1}));
}

TEST(AnalogPrototypes, BandFiltersGetAPrototypeOfHalfTheOrder) {
  SectionEntry e;
  design_analog_prototype(AnalogPrototype::elliptic, make_spec(FilterType::band_stop, {1, 2}, {1.2, 1.7}),
                          ZTransform::bilinear, 6, e);
  EXPECT_EQ(e.order, 3);
  EXPECT_EQ(e.section_count, 2);
}

TEST(AnalogPrototypes, UnknownFamilyLeavesTheRecordAlone) {
  SectionEntry e{};
  e.order = 77;
  const auto [wp, approximate] = design_analog_prototype(AnalogPrototype{9}, make_spec(FilterType::low_pass, {1}, {2}),
                                                         ZTransform::bilinear, 4, e);
  EXPECT_EQ(wp, 0);
  EXPECT_FALSE(approximate);
  EXPECT_EQ(e.order, 77);
}

// The magnitude of the whole families by their defining functions, which need no poles.
TEST(AnalogPrototypes, FollowTheirDefiningFunctionUpToOrder200) {
  const double ap = 0.5, as = 60, e2 = std::pow(10, 0.05) - 1, d2 = std::pow(10, 6.0) - 1;
  const auto tschebyscheff = [](int n, double x) {
    return std::fabs(x) <= 1 ? std::cos(n * std::acos(x)) : std::cosh(n * std::acosh(std::fabs(x)));
  };
  for (const int n : {1, 2, 7, 40, 99, 200}) {
    for (double w = 0.02; w < 3; w += 0.0173) {
      const auto attenuation = [&](AnalogPrototype family) {
        static SectionEntry e;
        design_analog_prototype(family, make_spec(FilterType::low_pass, {1}, {2}, ap, as), ZTransform::bilinear, n, e);
        return static_cast<double>(1 / std::norm(product_at(e, Probe(0, w))));
      };
      const double ripple_top =
          n % 2 ? 1 : 1 / (1 + e2); // gain 1 at s = 0, where even orders have their ripple's bottom
      const double t = tschebyscheff(n, w), u = tschebyscheff(n, 1 / w);
      // 1e-9 of the attenuation: at order 200 it changes by 200 times the relative error of a root
      const double butterworth = 1 + std::pow(w, 2 * n), first = ripple_top * (1 + e2 * t * t);
      EXPECT_NEAR(attenuation(AnalogPrototype::butterworth) / butterworth, 1, 1e-9) << n << " at " << w;
      EXPECT_NEAR(attenuation(AnalogPrototype::tschebyscheff) / first, 1, 1e-9) << n << " at " << w;
      if (std::fabs(u) > 1e-3) { // off the zeros
        EXPECT_NEAR(attenuation(AnalogPrototype::inverse_tschebyscheff) / (1 + d2 / (u * u)), 1, 1e-8) << n << " " << w;
      }
    }
  }
}

// A ripple so small that the series still grows at their last term.
TEST(AnalogPrototypes, EllipticSeriesEndAtTheir25thTerm) {
  const double k = 1 - 1e-12, ap = 3e-10, q = nome(k);
  const double l_minus_1 = std::expm1(std::log(10) * 0.05 * ap), lambda = std::log((l_minus_1 + 2) / l_minus_1) / 2;
  ASSERT_GT(std::pow(q, 625) * std::cosh(50 * lambda), 1);
  double s = std::sinh(lambda), c = 0;
  for (int m = 1; m <= 25; m++) {
    s += (m % 2 ? -1 : 1) * std::pow(q, m * (m + 1)) * std::sinh((2 * m + 1) * lambda);
    c += (m % 2 ? -1 : 1) * std::pow(q, m * m) * std::cosh(2 * m * lambda);
  }
  const double sigma0 = std::fabs(2 * std::pow(q, 0.25) * s / (1 + 2 * c));
  FilterSpec spec = make_spec(FilterType::low_pass, {k}, {1}, ap);
  SectionEntry e;
  design_analog_prototype(AnalogPrototype::elliptic, spec, ZTransform::matched_z, 1, e);
  EXPECT_NEAR(e.denominators[0][2] / sigma0, 1, 1e-9);
}

TEST(AnalogPrototypes, DesignsOfTheEstimatedOrderMeetTheirSpecification) {
  struct Row {
    FilterType band;
    std::array<double, 2> pass, stop;
    double ap, as;
  };
  const Row rows[] = {
      {FilterType::low_pass, {0.6}, {0.8}, 0.1, 60},
      {FilterType::low_pass, {2.0}, {2.9}, 3, 20},
      {FilterType::low_pass, {0.01}, {0.014}, 1, 100},
      {FilterType::high_pass, {1.9}, {1.6}, 0.5, 50},
      {FilterType::high_pass, {2.0}, {0.2}, 1, 40},
      {FilterType::band_pass, {0.9, 1.3}, {0.7, 1.7}, 1, 60},
      {FilterType::band_pass, {0.9, 1.3}, {0.85, 2.5}, 0.2, 30},
      {FilterType::band_pass, {1.0, 1.01}, {0.99, 1.015}, 0.5, 40},
      {FilterType::band_stop, {0.5, 1.5}, {0.8, 1.0}, 0.5, 60},
      {FilterType::band_stop, {0.5, 2.5}, {0.6, 0.9}, 2, 45},
      {FilterType::band_stop, {1.2, 1.3}, {1.22, 1.29}, 0.5, 40},
      {FilterType::low_pass, {1.0}, {1.00001}, 0.1, 60}, // selectivity 0.99999: elliptic alone
  };
  for (const Row &row : rows) {
    const FilterSpec spec = make_spec(row.band, row.pass, row.stop, row.ap, row.as);
    std::array<int, 5> orders{};
    estimate_iir_orders(orders, iir_selectivity(spec, ZTransform::bilinear), row.ap, row.as, row.band);
    for (const auto family : {AnalogPrototype::butterworth, AnalogPrototype::tschebyscheff,
                              AnalogPrototype::inverse_tschebyscheff, AnalogPrototype::elliptic}) {
      if (orders[code(family)] > max_order) continue;
      const SectionEntry digital = bilinear_design(family, spec, orders[code(family)]);
      auto grid = dense_grid(row.pass, row.stop);
      for (const auto &edges : {row.pass, row.stop})
        for (const double edge : edges)
          if (edge > 0) grid.push_back(edge);
      std::vector<double> magnitude;
      for (const double w : grid) magnitude.push_back(static_cast<double>(std::abs(product_at(digital, on_circle(w)))));
      magnitude = scaled_to_peak(magnitude);
      const auto within = [](double w, double low, double high) { return w >= low && w <= high; };
      double ripple = 0, attenuation = 1e9;
      for (std::size_t i = 0; i < grid.size(); i++) {
        const double w = grid[i], db = -20 * std::log10(magnitude[i]), end = std::numbers::pi;
        const auto [p1, p2] = row.pass;
        const auto [s1, s2] = row.stop;
        bool pass = false, stop = false;
        if (row.band == FilterType::low_pass) pass = w <= p1, stop = w >= s1;
        if (row.band == FilterType::high_pass) pass = w >= p1, stop = w <= s1;
        if (row.band == FilterType::band_pass) pass = within(w, p1, p2), stop = w <= s1 || w >= s2;
        if (row.band == FilterType::band_stop) pass = w <= p1 || within(w, p2, end), stop = within(w, s1, s2);
        if (pass) ripple = std::max(ripple, db);
        if (stop) attenuation = std::min(attenuation, db);
      }
      const std::string which = name(family, row.band, orders[code(family)]);
      // 1e-9 dB: a passband edge lies where the ripple is used up exactly, inverse Tschebyscheff ripples touch as_db
      EXPECT_LE(ripple, row.ap + 1e-9) << which << " edge " << row.pass[0];
      EXPECT_GE(attenuation, row.as - 1e-9) << which << " edge " << row.pass[0];
    }
  }
}
