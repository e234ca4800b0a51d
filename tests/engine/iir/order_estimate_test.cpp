#include "engine/iir/order_estimate.h"

#include "engine/iir/selectivity.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace brisel;

TEST(Selectivity, ComparesTheTransitionsOfTheBand) {
  struct Row {
    const char *what;
    FilterType band;
    ZTransform method;
    std::array<double, 2> pass, stop; // sampling frequency 8000
    double k;
  };
  // tan(pi/8) = sqrt(2) - 1 at 1000 Hz, 1 at 2000 Hz, sqrt(2) + 1 at 3000 Hz
  const double t1 = std::sqrt(2.0) - 1, t3 = std::sqrt(2.0) + 1;
  const Row rows[] = {
      {"bilinear edges are prewarped", FilterType::low_pass, ZTransform::bilinear, {1000}, {2000}, t1},
      {"impulse-invariant edges are not", FilterType::low_pass, ZTransform::impulse_invariant, {1000}, {2000}, 0.5},
      {"matched Z edges are not", FilterType::high_pass, ZTransform::matched_z, {2000}, {500}, 0.25},
      {"highpass is the reciprocal", FilterType::high_pass, ZTransform::bilinear, {3000}, {2000}, 1 / t3},
      // B = 100, w0^2 = 20000 - 40000 ...: edges in plain numbers
      {"bandpass, lower transition tighter",
       FilterType::band_pass,
       ZTransform::matched_z,
       {100, 200},
       {80, 400},
       100 / (20000.0 / 80 - 80)},
      {"bandpass, upper transition tighter",
       FilterType::band_pass,
       ZTransform::matched_z,
       {100, 200},
       {50, 250},
       100 / (250 - 20000.0 / 250)},
      {"bandpass, equal products take the lower one",
       FilterType::band_pass,
       ZTransform::matched_z,
       {100, 200},
       {50, 400},
       100 / (20000.0 / 50 - 50)},
      {"bandstop, upper transition tighter",
       FilterType::band_stop,
       ZTransform::matched_z,
       {100, 400},
       {160, 350},
       (350 - 40000.0 / 350) / 300},
      {"bandstop, lower transition tighter",
       FilterType::band_stop,
       ZTransform::matched_z,
       {100, 400},
       {120, 250},
       (40000.0 / 120 - 120) / 300},
  };
  for (const Row &row : rows) {
    FilterSpec spec{};
    spec.type = code(row.band);
    spec.sampling_frequency = 8000;
    spec.passband_edge = row.pass;
    spec.stopband_edge = row.stop;
    EXPECT_NEAR(iir_selectivity(spec, row.method), row.k, 1e-14) << row.what;
  }
}

TEST(Nome, HoldsAtEverySelectivity) {
  const std::array<double, 2> rows[] = {{1e-9, 6.25e-20}, // mpmath 1.2.1: qfrom(m=k*k)
                                        {0.5, 0.017972387008967239999},
                                        {0.95, 0.14163577664268927779},
                                        {0.999, 0.33345542332578666697},
                                        {0.99999999, 0.6178922153889587609}};
  for (const auto &[k, q] : rows) EXPECT_NEAR(nome(k) / q, 1, 1e-14) << k;
}

TEST(OrderEstimate, TruncatesAndDoubles) {
  struct Row {
    const char *what;
    FilterType band;
    double k, ap, as;
    std::array<int, 5> orders; // Butterworth, Tschebyscheff, its inverse, elliptic, Bessel
  };
  // Formulas of the families evaluated with mpmath 1.2.1; the fractions before truncation stand behind the rows.
  const Row rows[] = {
      {"12.48, 7.57, 5.65", FilterType::low_pass, 0.5, 0.5, 60, {12, 7, 7, 5, 12}},
      {"11.92, 6.71, 4.89", FilterType::high_pass, 0.6, 0.5, 39.3, {11, 6, 6, 4, 11}},
      {"11.92, 6.71, 4.89: truncated, then doubled", FilterType::band_pass, 0.6, 0.5, 39.3, {22, 12, 12, 8, 22}},
      {"217.2, 37.5, 13.8", FilterType::band_stop, 0.95, 0.1, 80, {434, 74, 74, 26, 434}},
      {"no transition worth the name", FilterType::low_pass, 0.999999, 0.1, 80, {1000000, 8333, 8333, 41, 1000000}},
      {"edges the wrong way round", FilterType::low_pass, 1.5, 0.1, 80, {0, 0, 0, 0, 0}},
      {"less attenuation than ripple", FilterType::low_pass, 0.5, 3, 1, {0, 0, 0, 1, 0}},
  };
  for (const Row &row : rows) {
    std::array<int, 5> orders{};
    estimate_iir_orders(orders, row.k, row.ap, row.as, row.band);
    EXPECT_EQ(orders, row.orders) << row.what;
  }
}
