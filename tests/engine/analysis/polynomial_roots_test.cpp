#include "engine/analysis/polynomial_roots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace brisel {

using C = std::complex<double>;

TEST(QuadraticRoots, AreClassified) {
  struct Case {
    const char *name;
    Triple triple;
    RootKind kind;
    C first, second;
  };
  const Case cases[] = {
      {"nothing", {0, 0, 0}, RootKind::none, 0, 0},
      {"a constant", {0, 0, 5}, RootKind::none, 0, 0},
      {"first order", {0, 2, 6}, RootKind::single, -3, 0},
      {"a root at the origin", {0, 1, 0}, RootKind::single, 0, 0},
      {"a complex pair, upper half plane first", {1, -2, 5}, RootKind::complex_pair, C(1, 2), C(1, -2)},
      {"the same with a negative lead", {-2, 4, -10}, RootKind::complex_pair, C(1, 2), C(1, -2)},
      {"real roots, the larger first", {1, -3, 2}, RootKind::distinct_real, 2, 1},
      {"no cancellation in the smaller", {1, 1e8, 1}, RootKind::distinct_real, -1e8, -1e-8},
      {"opposite roots", {1, 0, -4}, RootKind::distinct_real, 0, 0}, // either may be first
      {"both at the origin", {3, 0, 0}, RootKind::double_real, 0, 0},
      {"a square", {1, -1.8, 0.81}, RootKind::double_real, 0.9, 0.9},
  };
  for (const Case &c : cases) {
    const QuadraticRoots roots = quadratic_roots(c.triple);
    EXPECT_EQ(roots.kind, c.kind) << c.name;
    if (std::string_view(c.name) == "opposite roots") {
      EXPECT_EQ(roots.first, -roots.second);
      EXPECT_EQ(std::abs(roots.first), 2);
      continue;
    }
    EXPECT_LE(std::abs(roots.first - c.first), 1e-15 * std::abs(c.first)) << c.name;
    EXPECT_LE(std::abs(roots.second - c.second), 1e-15 * std::abs(c.second)) << c.name;
  }
}

static std::vector<double> expand(const std::vector<C> &roots, double lead) {
  std::vector<std::complex<long double>> p{lead};
  for (const C root : roots) {
    p.push_back(0);
    for (std::size_t i = p.size() - 1; i > 0; i--) p[i] -= std::complex<long double>(root) * p[i - 1];
  }
  std::vector<double> c;
  for (const auto v : p) c.push_back(static_cast<double>(v.real()));
  return c;
}

TEST(PolynomialRoots, AreFoundWithTheirMultiplicity) {
  struct Case {
    const char *name;
    std::vector<C> roots; // conjugates and equal ones next to each other
    double lead;
    double tolerance; // relative, by the conditioning of the coefficients
  };
  std::vector<Case> cases{
      {"no roots", {}, 3, 0},
      {"distinct", {C(1, 2), C(1, -2), -3, 0.5}, 2, 1e-14},
      {"at the origin", {C(0, 2), C(0, -2), 1, 0, 0}, 1, 1e-15},
      {"a triple pair", {C(0, 1), C(0, -1), C(0, 1), C(0, -1), C(0, 1), C(0, -1), 2}, 1, 1e-13},
      {"a double real one beside others", {0.5, 0.5, -0.5, 0.25}, -1, 1e-13},
      {"far apart, as in rad/s", {C(-1e2, 1e3), C(-1e2, -1e3), -1e5, C(-1e6, 3e6), C(-1e6, -3e6)}, 1, 1e-13},
      {"one to ten", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 1, 1e-8},
  };
  cases.push_back({"twenty at -1", std::vector<C>(20, -1.0), 1, 1e-15});
  std::vector<C> two(10, 1.0);
  two.insert(two.end(), 10, -1.0);
  cases.push_back({"ten at 1 and ten at -1", two, 1, 1e-14});
  std::vector<C> unity;
  for (int k = 0; k < 200; k++) unity.push_back(std::polar(1.0, 2 * std::numbers::pi * k / 200));
  cases.push_back({"the 200th roots of 1", unity, 1, 1e-13});

  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<double> coefficients = expand(c.roots, c.lead);
    if (c.roots.size() == 200) {
      std::fill(coefficients.begin(), coefficients.end(), 0.0);
      coefficients[0] = 1;
      coefficients[200] = -1;
    }
    coefficients.insert(coefficients.begin(), 2, 0.0);
    std::vector<C> found = polynomial_roots(coefficients);
    ASSERT_EQ(found.size(), c.roots.size());
    bool real = false;
    for (std::size_t i = 0; i < found.size(); i++) {
      real = real || found[i].imag() == 0;
      if (found[i].imag() != 0) {
        EXPECT_FALSE(real) << "pairs come first";
        EXPECT_GT(found[i].imag(), 0);
        EXPECT_EQ(found[i + 1], std::conj(found[i]));
        i++;
      }
    }
    for (const C expected : c.roots) {
      const auto nearest = std::min_element(found.begin(), found.end(),
                                            [&](C a, C b) { return std::abs(a - expected) < std::abs(b - expected); });
      EXPECT_LE(std::abs(*nearest - expected), c.tolerance * std::abs(expected)) << expected;
      found.erase(nearest);
    }
  }
}

} // namespace brisel
