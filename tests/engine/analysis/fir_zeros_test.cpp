#include "engine/analysis/fir_zeros.h"

#include "tests/engine/analysis/response_references.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace brisel {
namespace {

/// Every expected zero has its own near it.
void expect_zeros(std::span<const double> taps, std::vector<std::complex<double>> expected, double tolerance) {
  const auto found = fir_zeros(taps);
  ASSERT_TRUE(found);
  std::vector<std::complex<double>> left = found->zeros;
  ASSERT_EQ(left.size(), expected.size());
  for (const std::complex<double> &z : expected) {
    const auto nearest = std::min_element(
        left.begin(), left.end(), [&](const auto &a, const auto &b) { return std::abs(a - z) < std::abs(b - z); });
    EXPECT_LT(std::abs(*nearest - z), tolerance * std::max(1.0, std::abs(z))) << z;
    left.erase(nearest);
  }
}

std::vector<double> polynomial_with(std::span<const std::complex<double>> zeros) {
  std::vector<Wide> c{1};
  for (const auto &z : zeros) {
    c.push_back(0);
    for (std::size_t k = c.size() - 1; k > 0; --k) c[k] -= Wide(z.real(), z.imag()) * c[k - 1];
  }
  std::vector<double> real;
  for (const Wide &v : c) real.push_back(static_cast<double>(v.real()));
  return real;
}

TEST(FirZeros, AreThoseThePolynomialWasMadeOf) {
  const std::vector<std::complex<double>> lists[] = {
      {-1},
      {{0.6, 0.8}, {0.6, -0.8}},
      {3, 1 / 3.0, {0.3, 0.4}, {0.3, -0.4}, {1.2, 1.6}, {1.2, -1.6}, -1},
      {-50, 0.02, 1.5, 0.5},
  };
  for (const auto &list : lists) expect_zeros(polynomial_with(list), list, 1e-14);
  // A running mean: all roots of unity but 1.
  for (const int taps : {2, 3, 64, 512}) {
    std::vector<std::complex<double>> roots;
    for (int k = 1; k < taps; ++k) roots.push_back(std::polar(1.0, 2 * std::numbers::pi * k / taps));
    expect_zeros(std::vector<double>(taps, 0.25), roots, 1e-14);
  }
  // A zero of order ten is fixed by its taps to 1e-16 to the power of a tenth.
  expect_zeros(polynomial_with(std::vector<std::complex<double>>(10, -1)), std::vector<std::complex<double>>(10, -1),
               0.1);
}

TEST(FirZeros, LeaveOutZeroTapsAtTheEnds) {
  const struct {
    const char *name;
    std::vector<double> taps;
    std::size_t zeros;
    int poles;
  } cases[] = {
      {"nothing", {0, 0, 0}, 0, 0},           {"a constant", {3}, 0, 0},
      {"a delay", {0, 0, 2}, 0, 2},           {"zeros at infinity", {0, 0, 1, -2}, 1, 3},
      {"a shorter filter", {1, -2, 0}, 1, 1}, {"rounding at the ends", {1e-18, 1, 3, 1, -1e-18}, 2, 3},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    const auto found = fir_zeros(c.taps);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->zeros.size(), c.zeros);
    EXPECT_EQ(found->origin_poles, c.poles);
  }
}

// Windowed low-passes: every zero makes the polynomial vanish against the sum of its terms, conjugates are exact, and
// the stopband's zeros lie on the unit circle as the symmetry of the taps demands.
TEST(FirZeros, OfLongFiltersVanishAndKeepToTheCircle) {
  for (const int length : {63, 256, 511}) {
    std::vector<double> h(length);
    for (int k = 0; k < length; ++k) {
      const double t = k - 0.5 * (length - 1);
      const double angle = 2 * std::numbers::pi * t / length;
      h[k] = (t == 0 ? 0.3 : std::sin(0.3 * std::numbers::pi * t) / (std::numbers::pi * t)) *
             (0.42 + 0.5 * std::cos(angle) + 0.08 * std::cos(2 * angle));
    }
    const auto found = fir_zeros(h);
    ASSERT_TRUE(found);
    ASSERT_EQ(found->zeros.size(), h.size() - 1);
    int on_circle = 0;
    for (std::size_t i = 0; i < found->zeros.size(); ++i) {
      const std::complex<double> z = found->zeros[i];
      const bool inside = std::abs(z) <= 1;
      const Wide x = inside ? Wide(z.real(), z.imag()) : Wide(1) / Wide(z.real(), z.imag());
      Wide value = 0;
      long double size = 0;
      for (int k = 0; k < length; ++k) {
        const double c = inside ? h[k] : h[length - 1 - k];
        value = value * x + Wide(c);
        size = size * std::abs(x) + std::abs(static_cast<long double>(c));
      }
      EXPECT_LT(std::abs(value) / size, 1e-12L) << z; // the last bits of z, times the degree
      EXPECT_TRUE(z.imag() <= 0 || found->zeros[i + 1] == std::conj(z));
      on_circle += std::abs(std::abs(z) - 1) < 1e-12;
    }
    EXPECT_GT(on_circle, 0.6 * length);
  }
}

} // namespace
} // namespace brisel
