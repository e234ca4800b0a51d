// fourier_taps.cpp - Legendre series of amplitudes and their transforms.
//
// [Knuth97] D. E. Knuth, The Art of Computer Programming, vol. 2, 3rd ed. (1997).
//
// Letters: a stretch has the midpoint m and the half width h; at the tap t, x = h t.
#include "engine/fir/fourier_taps.h"

#include "engine/core/multiversion.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>

namespace brisel {

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();

struct GaussNodes {
  static constexpr int count = max_legendre_terms;
  std::array<double, count> u;
  std::array<double, count> weight;
  std::array<std::array<double, count>, count> p; // p[n][i] = P_n(u_i)

  GaussNodes() {
    for (int i = 0; i < count; i++) {
      double x = std::cos(std::numbers::pi * (i + 0.75) / (count + 0.5)); // Newton from Tricomi's estimate
      double slope = 0;
      for (int pass = 0; pass < 8; pass++) {
        double before = 1, value = x;
        for (int n = 1; n < count; n++) before = std::exchange(value, ((2 * n + 1) * x * value - n * before) / (n + 1));
        slope = count * (x * value - before) / (x * x - 1);
        x -= value / slope;
      }
      u[i] = x;
      weight[i] = 2 / ((1 - x * x) * slope * slope);
      p[0][i] = 1;
      p[1][i] = x;
      for (int n = 1; n + 1 < count; n++) p[n + 1][i] = ((2 * n + 1) * x * p[n][i] - n * p[n - 1][i]) / (n + 1);
    }
  }
};

double largest(std::span<const double> values) {
  double result = 0;
  for (const double v : values) result = std::max(result, std::abs(v));
  return result;
}

} // namespace

void add_line(std::vector<LegendreStretch> &stretches, double lower, double upper, double lower_value,
              double upper_value) {
  if (!(lower < upper) || (lower_value == 0 && upper_value == 0)) return;
  const double mean = lower_value / 2 + upper_value / 2, rise = upper_value / 2 - lower_value / 2;
  stretches.push_back({lower, upper, rise == 0 ? 1 : 2, {mean, rise}});
}

static void add_smooth(std::vector<LegendreStretch> &stretches, double lower, double upper,
                       const std::function<double(double)> &amplitude, double steepness, int depth) {
  static const GaussNodes nodes;
  constexpr int tail = 4; // trailing coefficients that show whether the series has converged
  const double m = lower / 2 + upper / 2, h = upper / 2 - lower / 2;
  LegendreStretch stretch{lower, upper, GaussNodes::count, {}};
  for (int i = 0; i < GaussNodes::count; i++) {
    const double value = nodes.weight[i] * amplitude(m + h * nodes.u[i]);
    for (int n = 0; n < GaussNodes::count; n++) stretch.coefficient[n] += (n + 0.5) * value * nodes.p[n][i];
  }
  const auto c = std::span<const double>(stretch.coefficient);
  const double peak = largest(c), last = largest(c.last(tail)), before = largest(c.last(2 * tail).first(tail));
  // Converged: to the last digit, or down to a floor of noise, which no longer falls. The noise of the values is that
  // of w, and near a pole a rounding error of w counts in units of the distance, which is about the width.
  const double noise = 8 * epsilon * (1 + steepness * upper / (upper - lower));
  const bool converged = last <= 4 * epsilon * peak || (last <= noise * peak && last >= 0.1 * before);
  constexpr int max_depth = 60;
  if (converged || depth == max_depth || !std::isfinite(peak)) {
    const double floor = 2 * std::max(last, epsilon * peak); // what is not above it is noise
    while (stretch.terms > 1 && std::abs(stretch.coefficient[stretch.terms - 1]) <= floor) stretch.terms--;
    stretches.push_back(stretch);
    return;
  }
  add_smooth(stretches, lower, m, amplitude, steepness, depth + 1);
  add_smooth(stretches, m, upper, amplitude, steepness, depth + 1);
}

void add_smooth(std::vector<LegendreStretch> &stretches, double lower, double upper,
                const std::function<double(double)> &amplitude, double steepness) {
  if (lower < upper) add_smooth(stretches, lower, upper, amplitude, steepness, 0);
}

namespace {

constexpr int block = 64; // taps that are computed together

/// a + b and what rounding took from it [Knuth97] 4.2.2.
struct ExactSum {
  double value, rest;
  ExactSum(double a, double b) : value(a + b) {
    const double b_part = value - a;
    rest = (a - (value - b_part)) + (b - b_part);
  }
};

using Block = std::array<double, block>;

/// cos(a + b_k) and sin(a + b_k).
BRISEL_AVX2_CLONE
void rotate(double cos_a, double sin_a, const Block &cos_b, const Block &sin_b, Block &cosine, Block &sine) {
  for (int k = 0; k < block; k++) {
    cosine[k] = cos_a * cos_b[k] - sin_a * sin_b[k];
    sine[k] = sin_a * cos_b[k] + cos_a * sin_b[k];
  }
}

/// cos and sin of t w for blocks of taps. The product t w is exact: at tap 25000 its rounding would cost the taps of a
/// narrow band four digits.
struct Phases {
  Block step_cos{}, step_sin{}; // of k w
  Block cosine, sine;           // of the current block
  ExactSum w;

  Phases(const ExactSum &w, int taps) : w(w) {
    for (int k = 0; k < std::min(taps, block); k++) evaluate(k, step_cos[k], step_sin[k]);
  }
  void evaluate(double t, double &c, double &s) const {
    const double product = t * w.value, rest = std::fma(t, w.value, -product) + t * w.rest;
    const double c0 = std::cos(product), s0 = std::sin(product);
    c = c0 - rest * s0;
    s = s0 + rest * c0;
  }
  void start(double t) {
    double c, s;
    evaluate(t, c, s);
    rotate(c, s, step_cos, step_sin, cosine, sine);
  }
};

/// Sums of a stretch at the taps of a block: even = sum (-1)^(n/2) c_n j_n, odd = sum (-1)^((n-1)/2) c_n j_n.
struct BlockSums {
  Block even, odd;
};

/// x above half the number of terms: the upward recurrence of j_n loses little there, and that only in the highest
/// orders, which have the smallest coefficients.
BRISEL_AVX2_CLONE
void sum_upward(const LegendreStretch &stretch, const Block &inverse_x, const Phases &half_width, BlockSums &sums) {
  Block before, current;
  for (int k = 0; k < block; k++) {
    before[k] = half_width.sine[k] * inverse_x[k];
    sums.even[k] = stretch.coefficient[0] * before[k];
  }
  if (stretch.terms == 1) return sums.odd.fill(0);
  for (int k = 0; k < block; k++) {
    current[k] = (before[k] - half_width.cosine[k]) * inverse_x[k];
    sums.odd[k] = stretch.coefficient[1] * current[k];
  }
  for (int n = 2; n < stretch.terms; n++) {
    const double c = n & 2 ? -stretch.coefficient[n] : stretch.coefficient[n];
    auto &sum = n & 1 ? sums.odd : sums.even;
    for (int k = 0; k < block; k++) {
      const double next = (2 * n - 1) * inverse_x[k] * current[k] - before[k];
      before[k] = current[k];
      current[k] = next;
      sum[k] += c * next;
    }
  }
}

constexpr int max_order = 4 * max_legendre_terms;

/// The order above which j_n(x) < x^n / (2n + 1)!! counts for nothing.
int top_order(double x) {
  int top = 1;
  for (double bound = x / 3; top < max_order && bound > epsilon / 64; top++) bound *= x / (2 * top + 3);
  return top;
}

/// x of half the number of terms and less: ratios j_n / j_(n-1) from `top` down to where they may have poles, then the
/// downward recurrence; the scale follows from sum (2n + 1) j_n^2 = 1 [Abramowitz64] 10.1.50.
void sum_downward(const LegendreStretch &stretch, double x, int top, double &even, double &odd) {
  std::array<double, max_order + 1> j;
  const int turn = static_cast<int>(x) + 1;
  double ratio = 0;
  for (int n = top; n >= turn; n--) j[n] = ratio = x / (2 * n + 1 - x * ratio);
  // Take j_(turn-1) = 1; the last ratio is then j_turn.
  double norm = 0, value = 1;
  for (int n = turn; n <= top; n++) {
    value *= j[n];
    j[n] = value;
    norm += (2 * n + 1) * value * value;
  }
  double above = ratio, current = 1;
  for (int n = turn - 1; n >= 0; n--) {
    j[n] = current;
    norm += (2 * n + 1) * current * current;
    if (n > 0) above = std::exchange(current, (2 * n + 1) / x * current - above);
  }
  const double scale = 1 / std::sqrt(norm);
  even = odd = 0;
  for (int n = 0; n < std::min(stretch.terms, top + 1); n++) {
    const double term = (n & 2 ? -scale : scale) * stretch.coefficient[n] * j[n];
    (n & 1 ? odd : even) += term;
  }
}

} // namespace

void add_fourier_taps(std::span<const LegendreStretch> stretches, TapSymmetry symmetry, bool odd_length,
                      std::span<double> half) {
  const int taps = static_cast<int>(half.size());
  const double first = odd_length ? 0 : 0.5;
  std::vector<double> inverse_t(half.size() + block);
  for (std::size_t k = 0; k < inverse_t.size(); k++) inverse_t[k] = 1 / (static_cast<double>(k) + first);
  for (const LegendreStretch &stretch : stretches) {
    const ExactSum mid_sum(stretch.lower / 2, stretch.upper / 2), width_sum(-stretch.lower / 2, stretch.upper / 2);
    const double h = width_sum.value, inverse_h = 1 / h;
    Phases mid(mid_sum, taps), width(width_sum, taps);
    BlockSums sums;
    Block inverse_x;
    for (int start = 0; start < taps; start += block) {
      const int count = std::min(block, taps - start);
      const double t0 = start + first;
      mid.start(t0);
      width.start(t0);
      for (int k = 0; k < block; k++) inverse_x[k] = inverse_h * inverse_t[start + k];
      sum_upward(stretch, inverse_x, width, sums);
      const int small = static_cast<int>(std::clamp(std::ceil(stretch.terms / (2 * h) - t0), 0.0, 1.0 * count));
      const int top = small > 0 ? top_order(h * (t0 + small)) : 0;
      for (int k = 0; k < small; k++) sum_downward(stretch, h * (t0 + k), top, sums.even[k], sums.odd[k]);
      const double scale = 2 * h * std::numbers::inv_pi;
      double *out = half.data() + start;
      if (symmetry == TapSymmetry::cosine) {
        for (int k = 0; k < count; k++) out[k] += scale * (mid.cosine[k] * sums.even[k] - mid.sine[k] * sums.odd[k]);
      } else {
        for (int k = 0; k < count; k++) out[k] += scale * (mid.sine[k] * sums.even[k] + mid.cosine[k] * sums.odd[k]);
      }
    }
  }
}

} // namespace brisel
