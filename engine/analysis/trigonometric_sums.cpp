// trigonometric_sums.cpp - Clenshaw's recurrence in the form of Reinsch.
//
// Clenshaw's b_k = c_k + 2 cos(w) b_(k+1) - b_(k+2) loses digits with the square of the number of terms near w = 0 and
// w = pi. Reinsch carries the differences d_k = b_k - b_(k+1) along, in which the factor is -4 sin^2(w/2), small where
// the danger is: d_k = c_k + factor b_(k+1) + d_(k+1), b_k = b_(k+1) + d_k. Points nearer to pi than to 0 go to
// pi - w, with every second coefficient negated; cosine and sine change places in the half kinds.
//
// [Oliver77] J. Oliver, An error analysis of the modified Clenshaw method for evaluating Chebyshev and Fourier series,
// J. Inst. Maths Applics 20, 1977.
#include "engine/analysis/trigonometric_sums.h"

#include "engine/core/multiversion.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

namespace brisel {

typedef double Vector __attribute__((vector_size(32)));
constexpr int vectors = 6; // enough independent recurrences to hide the latency of one
constexpr int lanes = vectors * static_cast<int>(sizeof(Vector) / sizeof(double));
using Lanes = std::array<double, lanes>;

// Returns b_1 and d_0 for each factor.
BRISEL_AVX2_CLONE
static void reinsch(const double *c, std::size_t count, const double *factors, double *b1, double *d0) {
  Vector factor[vectors], b[vectors] = {}, d[vectors] = {};
  std::memcpy(factor, factors, sizeof factor);
  for (std::size_t k = count; --k > 0;) {
    for (int v = 0; v < vectors; ++v) {
      d[v] = (d[v] + c[k]) + factor[v] * b[v];
      b[v] += d[v];
    }
  }
  for (int v = 0; v < vectors; ++v) d[v] = (d[v] + c[0]) + factor[v] * b[v];
  std::memcpy(b1, b, sizeof b);
  std::memcpy(d0, d, sizeof d);
}

namespace {

// One finished recurrence: b_1 and d_0 of point i, sine and cosine of half its angle from the near end of the axis.
struct Finished {
  std::size_t i;
  bool near_pi;
  double s, c, b, d;

  double cosine() const { return d + 2 * s * s * b; }
  double sine() const { return (near_pi ? -2 : 2) * s * c * b; }
  double half_cosine() const { return near_pi ? s * (d + 2 * b) : c * d; }
  double half_sine() const { return near_pi ? c * d : s * (d + 2 * b); }
};

template <class Use> void run(std::span<const double> c, std::span<const double> points, Use use) {
  std::vector<double> alternating(c.begin(), c.end());
  for (std::size_t k = 1; k < alternating.size(); k += 2) alternating[k] = -alternating[k];

  std::array<std::vector<std::size_t>, 2> near; // points near 0 and near pi
  for (std::size_t i = 0; i < points.size(); ++i) near[std::cos(points[i]) < 0].push_back(i);

  for (const bool near_pi : {false, true}) {
    const double *terms = near_pi ? alternating.data() : c.data();
    for (std::size_t first = 0; first < near[near_pi].size(); first += lanes) {
      const std::size_t count = std::min<std::size_t>(lanes, near[near_pi].size() - first);
      const std::size_t *members = near[near_pi].data() + first;
      Lanes s{}, co{}, factor{}, b, d;
      for (std::size_t j = 0; j < count; ++j) {
        s[j] = std::sin(points[members[j]] / 2);
        co[j] = std::cos(points[members[j]] / 2);
        if (near_pi) std::swap(s[j], co[j]);
        factor[j] = -4 * s[j] * s[j];
      }
      reinsch(terms, c.size(), factor.data(), b.data(), d.data());
      for (std::size_t j = 0; j < count; ++j) use(Finished{members[j], near_pi, s[j], co[j], b[j], d[j]});
    }
  }
}

} // namespace

void trigonometric_sums(std::span<const double> c, SumKind kind, std::span<const double> points,
                        std::span<double> sums) {
  run(c, points, [&](const Finished &f) {
    switch (kind) {
    case SumKind::cosine:
      sums[f.i] = f.cosine();
      break;
    case SumKind::sine:
      sums[f.i] = f.sine();
      break;
    case SumKind::half_cosine:
      sums[f.i] = f.half_cosine();
      break;
    case SumKind::half_sine:
      sums[f.i] = f.half_sine();
      break;
    }
  });
}

void fourier_sums(std::span<const double> c, std::span<const double> points, std::span<std::complex<double>> sums) {
  run(c, points, [&](const Finished &f) { sums[f.i] = {f.cosine(), -f.sine()}; });
}

} // namespace brisel
