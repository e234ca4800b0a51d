// remez.cpp - grid, exchange and conversion to taps; letters as in the texts that the header names.
#include "engine/fir/remez.h"

#include "engine/fir/barycentric.h"

#include <algorithm>
#include <cmath>

namespace brisel {

constexpr int most_iterations = 50;
// An error counts as larger than another when it is by more than this: rounding must not keep the exchange going.
constexpr double clearly_larger = 1.00001;

// ---- grid ----

void DesignGrid::add(const BandPlan &plan, double f, int b) {
  frequency.push_back(f);
  desired.push_back(band_desired(plan, two_pi * f, b));
  weight.push_back(band_weight(plan, two_pi * f, b));
  band.push_back(b);
}

void DesignGrid::copy_point(const DesignGrid &grid, std::size_t i) {
  frequency.push_back(grid.frequency[i]);
  desired.push_back(grid.desired[i]);
  weight.push_back(grid.weight[i]);
  band.push_back(grid.band[i]);
}

double grid_bytes(int density, int functions) {
  constexpr double bytes_per_point = 6 * sizeof(double) + sizeof(int); // the grid, its abscissae, values and errors
  return (static_cast<double>(density) * functions + max_bands) * bytes_per_point;
}

BandLimits band_limits(const BandPlan &plan, int band, double spacing) {
  const bool zero_at_half = plan.symmetric() != plan.odd_length(); // Q(0.5) = 0
  BandLimits limits{plan.bands[band].lower / two_pi, plan.bands[band].upper / two_pi};
  if (!plan.symmetric()) limits.lower = std::min(std::max(limits.lower, spacing), limits.upper);
  if (zero_at_half) limits.upper = std::max(std::min(limits.upper, 0.5 - spacing), limits.lower);
  return limits;
}

BandLimits close_band_limits(const BandPlan &plan, int band, double spacing) {
  constexpr double closer = 0.25;
  return band_limits(plan, band, plan.bands[band].value == 0 ? closer * spacing : spacing);
}

DesignGrid remez_grid(const BandPlan &plan, int density) {
  const double delf = grid_spacing(density, cosine_count(plan.length, plan.symmetric()));
  DesignGrid grid;
  for (int b = 0; b < plan.band_count; b++) {
    const auto [lower, upper] = band_limits(plan, b, delf);
    const double below_upper = upper - 1e-9 * delf; // a point on the upper edge but for rounding is not below it
    double f = lower;
    for (long j = 1; f < below_upper; j++) {
      grid.add(plan, f, b);
      f = lower + static_cast<double>(j) * delf;
    }
    const bool merges = grid.size() > 0 && grid.band.back() == b &&
                        std::cos(two_pi * upper) == std::cos(two_pi * grid.frequency.back());
    if (merges) {
      grid.frequency.pop_back();
      grid.desired.pop_back();
      grid.weight.pop_back();
      grid.band.pop_back();
    }
    grid.add(plan, upper, b);
  }
  return grid;
}

static double case_factor(const BandPlan &plan, double f) {
  const double w = two_pi * f;
  if (plan.symmetric()) return plan.odd_length() ? 1 : std::cos(w / 2);
  return plan.odd_length() ? std::sin(w) : std::sin(w / 2);
}

void case_transform(const BandPlan &plan, DesignGrid &grid) {
  for (std::size_t i = 0; i < grid.size(); i++) {
    const double q = case_factor(plan, grid.frequency[i]);
    grid.desired[i] /= q;
    grid.weight[i] *= q;
  }
}

// ---- exchange ----

namespace {

class Exchange {
public:
  Exchange(const DesignGrid &grid, int functions, const Progress &progress)
      : grid(grid), r(static_cast<std::size_t>(functions)), progress(progress), abscissa(grid.size()),
        error(grid.size()) {
    for (std::size_t i = 0; i < grid.size(); i++) abscissa[i] = std::cos(two_pi * grid.frequency[i]);
    const std::size_t g = grid.size();
    for (std::size_t j = 0; j < r; j++) extremal.push_back(j * (g - 1) / r);
    extremal.push_back(g - 1);
  }

  ExchangeResult run() {
    ExchangeResult result;
    result.no_transformation = (grid.frequency.front() < 0.01 && grid.frequency.back() > 0.49) || r <= 3;
    double last_deviation = -1;
    while (result.iterations < most_iterations) {
      result.iterations++;
      polynomial.node.clear();
      for (const std::size_t i : extremal) polynomial.node.push_back(abscissa[i]);
      if (!polynomial.find_coefficients()) {
        result.error = ExchangeError::degenerate;
        return result;
      }
      level();
      levelled = extremal;
      if (!(std::abs(deviation) >= last_deviation)) break;
      last_deviation = std::abs(deviation);
      if (!compute_errors(result.iterations)) {
        result.error = ExchangeError::stopped;
        return result;
      }
      if (!exchange_points()) break;
    }
    result.deviation = std::abs(deviation);
    for (const std::size_t i : levelled) result.extremal.copy_point(grid, i);
    return result;
  }

private:
  static double sign(std::size_t k) { return k % 2 == 0 ? 1 : -1; }

  void level() {
    std::vector<double> desired, weight;
    for (const std::size_t i : extremal) {
      desired.push_back(grid.desired[i]);
      weight.push_back(grid.weight[i]);
    }
    deviation = polynomial.level(desired, weight);
  }

  // Weighted error P - D on the whole grid. False when asked to stop.
  bool compute_errors(int iteration) {
    constexpr std::size_t chunk = 4096;
    for (std::size_t first = 0; first < grid.size(); first += chunk) {
      const std::size_t count = std::min(chunk, grid.size() - first);
      if (progress && !progress((iteration - 1 + static_cast<double>(first) / grid.size()) / most_iterations))
        return false;
      polynomial.evaluate({&abscissa[first], count}, {&error[first], count});
    }
    for (std::size_t i = 0; i < grid.size(); i++) error[i] = (error[i] - grid.desired[i]) * grid.weight[i];
    for (std::size_t k = 0; k <= r; k++) error[extremal[k]] = -sign(k) * deviation;
    return true;
  }

  // Largest `sign` times error strictly between two indices that beats `comparison`, which is updated; `none` if
  // there is no such point.
  long largest(long after, long before, double sign, double &comparison) const {
    long best = none;
    for (long i = after + 1; i < before; i++) {
      if (sign * error[static_cast<std::size_t>(i)] > comparison) {
        comparison = sign * error[static_cast<std::size_t>(i)];
        best = i;
      }
    }
    return best;
  }

  // One exchange. Every extremal point moves to the largest error of its sign between its neighbours; then an end
  // point of the other sign beyond the first or the last one, if larger than what it replaces, rotates the set. False
  // when nothing moved.
  bool exchange_points() {
    const double level = clearly_larger * std::abs(deviation);
    const double first_sign = deviation < 0 ? 1 : -1; // of the error at the first extremal point
    const long size = static_cast<long>(grid.size());
    std::vector<std::size_t> next(extremal);
    double first_value = 0, last_value = 0;
    bool moved = false;
    for (std::size_t k = 0; k <= r; k++) {
      const long after = k == 0 ? -1 : static_cast<long>(next[k - 1]);
      const long before = k == r ? size : static_cast<long>(extremal[k + 1]);
      double value = level;
      const long best = largest(after, before, first_sign * sign(k), value);
      if (best != none && best != static_cast<long>(extremal[k])) {
        next[k] = static_cast<std::size_t>(best);
        moved = true;
      }
      if (k == 0) first_value = value;
      last_value = value;
    }
    double comparison = clearly_larger * last_value;
    const long low_end = static_cast<long>(std::min(next.front(), extremal.front()));
    const long below = largest(-1, low_end, -first_sign, comparison);
    if (below != none) {
      next.insert(next.begin(), static_cast<std::size_t>(below));
      first_value = std::max(first_value, comparison);
    }
    comparison = clearly_larger * first_value;
    const long high_end = static_cast<long>(std::max(next.back(), extremal.back()));
    const long above = largest(high_end, size, -first_sign * sign(r), comparison);
    if (above != none) next.push_back(static_cast<std::size_t>(above));
    // Points in excess go from the end that was not found to be the larger one.
    if (above != none) next.erase(next.begin(), next.end() - static_cast<long>(r + 1));
    next.resize(r + 1);
    extremal = std::move(next);
    return moved || below != none || above != none;
  }

  static constexpr long none = -1;
  const DesignGrid &grid;
  const std::size_t r;
  const Progress &progress;
  std::vector<double> abscissa;
  std::vector<double> error;
  std::vector<std::size_t> extremal;
  std::vector<std::size_t> levelled; // the extremal set of the last deviation
  Interpolant polynomial;
  double deviation = 0;
};

} // namespace

ExchangeResult remez_exchange(const DesignGrid &grid, int functions, const Progress &progress) {
  return Exchange(grid, functions, progress).run();
}

// ---- conversion ----

namespace {

// The gain between bands may be thousands of times that inside them, and there the interpolation loses digits that the
// conversion to taps spreads over all frequencies. So the last polynomial is computed once more in extended precision.
using Real = long double;
using Series = std::vector<Real>;
constexpr Real exact_two_pi = 2 * std::numbers::pi_v<Real>;

class LevelledPolynomial {
public:
  explicit LevelledPolynomial(const DesignGrid &extremal) {
    const std::size_t count = extremal.size();
    std::vector<int> exponents(count);
    for (const double f : extremal.frequency) node.push_back(std::cos(exact_two_pi * f));
    for (std::size_t k = 0; k < count; k++) coefficient.push_back(1 / product(k, exponents[k]));
    const int smallest = *std::min_element(exponents.begin(), exponents.end());
    Real upper = 0, lower = 0;
    for (std::size_t k = 0; k < count; k++) {
      coefficient[k] = std::ldexp(coefficient[k], smallest - exponents[k]);
      upper += coefficient[k] * extremal.desired[k];
      lower += sign(k) * coefficient[k] / extremal.weight[k];
    }
    for (std::size_t k = 0; k < count; k++)
      value.push_back(extremal.desired[k] - sign(k) * upper / lower / extremal.weight[k]);
  }

  Real operator()(Real x) const {
    Real upper = 0, lower = 0;
    for (std::size_t k = 0; k < node.size(); k++) {
      if (x == node[k]) return value[k];
      const Real term = coefficient[k] / (x - node[k]);
      upper += term * value[k];
      lower += term;
    }
    return upper / lower;
  }

private:
  static Real sign(std::size_t k) { return k % 2 == 0 ? 1 : -1; }

  // Product over j of 2 (node[k] - node[j]) as a mantissa and a power of two.
  Real product(std::size_t k, int &exponent) const {
    Real p = 1;
    for (std::size_t j = 0; j < node.size(); j++) {
      if (j != k) p *= 2 * (node[k] - node[j]);
      if (j % 64 != 63 && j + 1 != node.size()) continue;
      int e;
      p = std::frexp(p, &e);
      exponent += e;
    }
    return p;
  }

  Series node, coefficient, value;
};

} // namespace

// Turns sum b[k] T_k(s x + t) into sum a[k] T_k(x) by Clenshaw's recurrence on Chebyshev series:
// B_k = b_k + 2 (s x + t) B_(k+1) - B_(k+2), the sum being b_0 + (s x + t) B_1 - B_2.
static Series undo_abscissa_transformation(const Series &b, Real s, Real t) {
  const std::size_t r = b.size();
  // Adds the series of factor (s x + t) c, for a c of `terms` terms.
  const auto add_times_line = [&](Real factor, const Series &c, std::size_t terms, Series &sum) {
    for (std::size_t j = 0; j < terms; j++) {
      sum[j] += factor * t * c[j];
      if (j == 0) {
        sum[1] += factor * s * c[0];
      } else {
        sum[j + 1] += factor * s * c[j] / 2;
        sum[j - 1] += factor * s * c[j] / 2;
      }
    }
  };
  Series b1(r + 1), b2(r + 1); // B_(k+1) and B_(k+2)
  for (std::size_t k = r; k-- > 0;) {
    for (std::size_t j = 0; j < r; j++) b2[j] = -b2[j];
    add_times_line(k == 0 ? 1 : 2, b1, r - 1 - k, b2);
    b2[0] += b[k];
    std::swap(b1, b2);
  }
  b1.resize(r);
  return b1;
}

std::vector<double> cosine_series(const ExchangeResult &exchange, double first, double last) {
  const std::size_t r = exchange.extremal.size() - 1;
  const std::size_t points = 2 * r - 1;
  const LevelledPolynomial polynomial(exchange.extremal);
  // The transformed abscissa runs over [-1, 1] while x runs over the range of the grid.
  const Real x_first = std::cos(exact_two_pi * first);
  const Real x_last = std::cos(exact_two_pi * last);
  Series cosine(points), p(r);
  for (std::size_t k = 0; k < points; k++)
    cosine[k] = std::cos(exact_two_pi * static_cast<Real>(std::min(k, points - k)) / static_cast<Real>(points));
  for (std::size_t k = 0; k < r; k++)
    p[k] = polynomial(exchange.no_transformation ? cosine[k] : std::lerp(x_last, x_first, (1 + cosine[k]) / 2));

  // Inverse DFT of the even sequence of which p is the first half; phases are reduced exactly.
  Series a(r);
  for (std::size_t k = 0; k < r; k++) {
    Real sum = 0;
    std::size_t phase = 0;
    for (std::size_t n = 1; n < r; n++) {
      phase += k;
      if (phase >= points) phase -= points;
      sum += p[n] * cosine[phase];
    }
    a[k] = (p[0] + 2 * sum) * (k == 0 ? 1 : 2) / static_cast<Real>(points);
  }
  if (!exchange.no_transformation)
    a = undo_abscissa_transformation(a, 2 / (x_first - x_last), -(x_first + x_last) / (x_first - x_last));
  if (r <= 3) a.resize(r + 2, 0);
  return {a.begin(), a.end()};
}

std::vector<double> remez_to_taps(const BandPlan &plan, std::vector<double> a) {
  const std::size_t r = static_cast<std::size_t>(cosine_count(plan.length, plan.symmetric()));
  for (std::size_t k = 1; k < r; k++) a[k] /= 2;
  std::vector<double> h(static_cast<std::size_t>(plan.half_length()));
  if (plan.symmetric() && plan.odd_length()) {
    std::copy_n(a.begin(), r, h.begin());
  } else if (plan.symmetric()) {
    for (std::size_t k = 0; k < r; k++) {
      h[k] = a[k] / 2;
      if (k >= 1) h[k - 1] += a[k] / 2;
    }
  } else if (plan.odd_length()) {
    for (std::size_t k = 0; k < r; k++) {
      h[k + 1] = a[k] / 2;
      if (k >= 2) h[k - 1] -= a[k] / 2;
    }
  } else {
    for (std::size_t k = 0; k < r; k++) {
      h[k] = a[k] / 2;
      if (k >= 1) h[k - 1] -= a[k] / 2;
    }
  }
  return h;
}

} // namespace brisel
