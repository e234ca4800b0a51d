#include "engine/iir/bessel_prototype.h"

#include "engine/analysis/polynomial_roots.h"
#include "reference_filters.h"
#include "section_probe.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace brisel;

// Largest relative distance of a section's upper pole from the nearest true one.
static double pole_error(const SectionEntry &e, int n) {
  double worst = 0;
  for (int i = 0; i < e.section_count; i++) {
    const auto pole = quadratic_roots(e.denominators[i]).first;
    double nearest = 1e9;
    for (const auto &p : bessel_poles[n]) nearest = std::min(nearest, std::abs(pole - p) / std::abs(p));
    worst = std::max(worst, nearest);
  }
  return worst;
}

TEST(BesselPrototype, PolesUpToOrder23AreExact) {
  for (int n = 1; n <= max_refined_bessel_order; n++) {
    SectionEntry e;
    EXPECT_TRUE(bessel_prototype(n, two_pi, e)) << n;
    EXPECT_EQ(e.section_count, (n + 1) / 2);
    EXPECT_LT(pole_error(e, n), 1e-14) << n;
  }
}

TEST(BesselPrototype, PolesFromOrder24OnAreTheApproximateOnes) {
  for (int n = 24; n <= 30; n++) {
    SectionEntry e;
    EXPECT_FALSE(bessel_prototype(n, two_pi, e)) << n;
    EXPECT_LT(pole_error(e, n), 1e-6) << n;
    EXPECT_GT(pole_error(e, n), 1e-9) << n;
  }
}

TEST(BesselPrototype, OrdersWithTheSameParametersStartFromTheSameStretch) {
  // The outermost real parts of the curve differ by the order only: the stretch t1 gives is 23 / 22.
  std::array<Triple, 12> f22{}, f23{};
  approximate_bessel_factors(22, f22);
  approximate_bessel_factors(23, f23);
  SectionEntry e22, e23;
  bessel_prototype(22, two_pi, e22);
  bessel_prototype(23, two_pi, e23);
  // Both real axes are drawn too wide by the same t1 of order 22, so 23 is the worse of the two.
  const double off22 = f22[0][1] / e22.denominators[0][1], off23 = f23[0][1] / e23.denominators[0][1];
  EXPECT_NEAR(off22 / off23, (1 + 0.5 / 23) / (1 + 0.5 / 22), 1e-5);
}

TEST(BesselPrototype, RefinementThatFailsLeavesTheFactorsAlone) {
  // From that far away each step halves the distance: 600 are not enough.
  std::array<Triple, 3> factors{Triple{1, 1e250, 1e300}, Triple{1, 0, 0}, Triple{1, 0, 0}};
  const auto before = factors;
  EXPECT_FALSE(refine_bessel_factors(6, factors));
  EXPECT_EQ(factors, before);
}

// |H| by the three-term recurrence of the reverse Bessel polynomials, which is stable on the imaginary axis.
TEST(BesselPrototype, ResponseHoldsUpToOrder200) {
  for (const int n : {1, 2, 10, 23, 24, 50, 101, 150, 151, 200}) {
    SectionEntry e;
    bessel_prototype(n, two_pi, e);
    EXPECT_EQ(e.gain == 1, n == 1 || n > 150) << n;
    for (double w = 0; w < 2 * n; w += 0.05 * n) {
      // theta_k / (2 k - 1)!!
      Probe previous = 1, theta = Probe(1, w);
      for (int k = 2; k <= n; k++) {
        const Probe next = theta - static_cast<long double>(w * w) / ((2.0L * k - 1) * (2 * k - 3)) * previous;
        previous = theta;
        theta = next;
      }
      // Approximate poles: 1e-6 each, and their effects add up.
      const double tolerance = n < 24 ? 1e-12 : 1e-5;
      EXPECT_LT(std::abs(product_at(e, Probe(0, w)) * theta - 1.0L), tolerance) << n << " at " << w;
    }
  }
}
