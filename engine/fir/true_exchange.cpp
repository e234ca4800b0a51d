#include "engine/fir/true_exchange.h"

#include "engine/fir/alternation.h"
#include "engine/fir/barycentric.h"
#include "engine/fir/exchange_start.h"

#include <algorithm>
#include <cmath>

namespace brisel {

constexpr int most_rounds = 60;
constexpr int most_idle_rounds = 6;          // without an improvement, once the optimum is near
constexpr int most_even_functions = 30;      // up to here a reference is spread evenly
constexpr int least_functions = 3;           // up to here in no other way
constexpr double loose = 1e-2, tight = 1e-4; // by how much the largest error may exceed the levelled one
constexpr double acceptable = 1e-2;          // the same when rounding keeps the exchange from coming closer
// What rounding adds to an error, and the deviation of which nothing is left: parts of the largest desired value times
// the largest weight.
constexpr double rounding = 4e-15;
constexpr double below_rounding = 1e-15;
constexpr double least_level = 1e-12; // for which the weight of a tolerance is computed
// Lengths tried for an optimum above rounding.
constexpr int most_attempts = 6;
constexpr double next_attempt = 0.95;
// Points searched between neighbours of the reference, while it moves and once it has settled.
constexpr int coarse_search = 4, fine_search = 16;

namespace {

class TrueExchange {
public:
  TrueExchange(const BandPlan &plan, const Placement &start, double tolerance, bool can_vanish,
               const Progress &progress)
      : plan(plan), progress(progress), tolerance(tolerance), can_vanish(can_vanish),
        r(cosine_count(plan.length, plan.symmetric())), spacing(grid_spacing(design_density, r)) {
    for (std::size_t k = 0; k < start.frequency.size(); k++) reference.add(plan, start.frequency[k], start.band[k]);
    case_transform(plan, reference);
  }

  ExchangeResult run() {
    ExchangeResult best;
    best.error = ExchangeError::not_optimal;
    double best_excess = INFINITY;
    int density = coarse_search, idle = 0;
    for (int round = 1; round <= most_rounds; round++) {
      if (!level()) {
        if (round == 1) best.error = ExchangeError::degenerate;
        break;
      }
      follow_tolerances();
      lay_points(density);
      // The first deviation may vanish because start and desired values have one symmetry.
      if (can_vanish && round > 1 && std::abs(deviation) < below_rounding * scale) {
        best.error = ExchangeError::below_rounding;
        break;
      }
      if (!find_errors(round)) {
        best.error = ExchangeError::stopped;
        break;
      }
      best.iterations = round;
      const double excess = largest / std::abs(deviation) - 1;
      if (excess < best_excess || density != best_density) {
        best_excess = excess;
        best_density = density;
        best.deviation = std::abs(deviation);
        best.scale = scale;
        best.extremal = reference;
        idle = 0;
      }
      const bool settled = (largest <= (1 + tolerance) * std::abs(deviation) + rounding * scale) ||
                           (best_excess <= acceptable && idle >= most_idle_rounds);
      idle++;
      if (settled) {
        if (density == fine_search || tolerance == loose) {
          best.error = ExchangeError::none;
          break;
        }
        density = fine_search;
        continue;
      }
      if (!exchange_points()) break;
    }
    if (best.error == ExchangeError::not_optimal && best_excess <= acceptable) best.error = ExchangeError::none;
    return best;
  }

private:
  bool level() {
    polynomial.node.clear();
    for (const double f : reference.frequency) polynomial.node.push_back(std::cos(two_pi * f));
    if (!polynomial.find_coefficients()) return false;
    deviation = polynomial.level(reference.desired, reference.weight);
    return std::isfinite(deviation);
  }

  // Bands that may deviate by a given amount get the weight that says so at the deviation of this reference.
  void follow_tolerances() {
    const auto within = [&](int b) { return plan.bands[b].tolerance > 0; };
    const double level_now = std::max(std::abs(deviation), least_level);
    bool any = false;
    for (int b = 0; b < plan.band_count; b++) {
      if (!within(b)) continue;
      plan.bands[b].weight = level_now / plan.bands[b].tolerance;
      any = true;
    }
    if (!any) return;
    DesignGrid weighted;
    for (std::size_t k = 0; k < reference.size(); k++) weighted.add(plan, reference.frequency[k], reference.band[k]);
    case_transform(plan, weighted);
    reference = std::move(weighted);
    deviation = polynomial.level(reference.desired, reference.weight);
  }

  // The points to search: those of the reference, the ends and kinks of the bands, and others between them, `density`
  // to an interval.
  void lay_points(int density) {
    points = {};
    node.clear();
    std::size_t k = 0;
    for (int b = 0; b < plan.band_count; b++) {
      const auto [lower, upper] = close_band_limits(plan, b, spacing);
      std::vector<std::pair<double, long>> marks{{lower, none}, {upper, none}};
      for (const double w : kinks(plan, b))
        if (w / two_pi > lower && w / two_pi < upper) marks.emplace_back(w / two_pi, none);
      for (; k < reference.size() && reference.band[k] == b; k++)
        marks.emplace_back(reference.frequency[k], static_cast<long>(k));
      std::sort(marks.begin(), marks.end());
      for (std::size_t m = 0; m < marks.size(); m++) {
        if (m > 0) {
          const double from = marks[m - 1].first, to = marks[m].first;
          if (from == to && marks[m].second == none) continue;
          if (from == to) { // the mark before was an end or a kink where the reference has a point too
            node.back() = marks[m].second;
            continue;
          }
          const int steps = std::max(density, static_cast<int>((to - from) / (4 * spacing)));
          for (int i = 1; i < steps; i++) {
            points.add(plan, std::lerp(from, to, static_cast<double>(i) / steps), b);
            node.push_back(none);
          }
        }
        points.add(plan, marks[m].first, b);
        node.push_back(marks[m].second);
      }
    }
    double desired = 0, weight = 0; // before the case transformation
    for (std::size_t i = 0; i < points.size(); i++) {
      desired = std::max(desired, std::abs(points.desired[i]));
      weight = std::max(weight, points.weight[i]);
    }
    scale = desired * weight;
    case_transform(plan, points);
  }

  bool errors_at(const DesignGrid &at, std::vector<double> &error, int round) {
    constexpr std::size_t chunk = 4096;
    std::vector<double> x(at.size());
    for (std::size_t i = 0; i < x.size(); i++) x[i] = std::cos(two_pi * at.frequency[i]);
    error.resize(x.size());
    for (std::size_t first = 0; first < x.size(); first += chunk) {
      const std::size_t count = std::min(chunk, x.size() - first);
      if (progress && !progress((round - 1 + static_cast<double>(first) / static_cast<double>(x.size())) / most_rounds))
        return false;
      polynomial.evaluate({&x[first], count}, {&error[first], count});
    }
    for (std::size_t i = 0; i < x.size(); i++) error[i] = (error[i] - at.desired[i]) * at.weight[i];
    return true;
  }

  // Weighted errors at the points, and at the tops of the parabolas through the peaks among them, which take the place
  // of the peaks that they top.
  bool find_errors(int round) {
    if (!errors_at(points, error, round)) return false;
    for (std::size_t i = 0; i < node.size(); i++)
      if (node[i] != none) error[i] = node[i] % 2 == 0 ? -deviation : deviation;
    peaks = alternating_peaks(error, points.band);
    DesignGrid tops;
    std::vector<std::size_t> topped;
    for (const std::size_t i : peaks) {
      if (i == 0 || i + 1 == points.size() || points.band[i - 1] != points.band[i + 1]) continue;
      const double before = points.frequency[i - 1] - points.frequency[i];
      const double after = points.frequency[i + 1] - points.frequency[i];
      const double left = (error[i - 1] - error[i]) / before, right = (error[i + 1] - error[i]) / after;
      const double curvature = (right - left) / (after - before);
      const double step = -0.5 * (left / curvature - before);
      if (!(step > before && step < after) || std::abs(step) < 1e-6 * (after - before)) continue;
      tops.add(plan, points.frequency[i] + step, points.band[i]);
      topped.push_back(i);
    }
    case_transform(plan, tops);
    std::vector<double> top_error;
    if (!errors_at(tops, top_error, round)) return false;
    for (std::size_t j = 0; j < topped.size(); j++) {
      const std::size_t i = topped[j];
      if (!(std::abs(top_error[j]) > std::abs(error[i])) || (top_error[j] > 0) != (error[i] > 0)) continue;
      error[i] = top_error[j];
      points.frequency[i] = tops.frequency[j];
      points.desired[i] = tops.desired[j];
      points.weight[i] = tops.weight[j];
    }
    largest = 0;
    for (const std::size_t i : peaks) largest = std::max(largest, std::abs(error[i]));
    return true;
  }

  // The largest alternating peaks become the reference. False when there are too few, or nothing moved.
  bool exchange_points() {
    const std::size_t count = static_cast<std::size_t>(r) + 1;
    keep_largest(peaks, count, error);
    if (peaks.size() < count) return false;
    DesignGrid next;
    for (const std::size_t i : peaks) next.copy_point(points, i);
    if (next.frequency == reference.frequency) return false;
    reference = std::move(next);
    return true;
  }

  static constexpr long none = -1;
  BandPlan plan;
  const Progress &progress;
  const double tolerance;
  const bool can_vanish; // the deviation, in rounding
  const int r;
  const double spacing;
  DesignGrid reference;
  DesignGrid points;
  std::vector<long> node; // which point of the reference this is
  std::vector<double> error;
  std::vector<std::size_t> peaks;
  double deviation = 0, largest = 0, scale = 0;
  int best_density = 0;
  Interpolant polynomial;
};

} // namespace

// A filter of `length` taps, or one fewer, of the same parity.
static BandPlan shortened(const BandPlan &plan, double length) {
  BandPlan shorter = plan;
  shorter.length = std::max(3 + plan.length % 2, static_cast<int>(length) / 2 * 2 + plan.length % 2);
  return shorter;
}

// Exchange from the extremal points of a filter `part` times as long, which begins in the same way. Where the optimum
// is lost in rounding, the result is the longest filter on the way whose optimum is not.
static ExchangeResult exchange_from(const BandPlan &plan, double part, double tolerance, const Progress &progress) {
  const int r = cosine_count(plan.length, plan.symmetric());
  ExchangeResult result;
  if (r <= most_even_functions) {
    result = TrueExchange(plan, even_placement(plan), tolerance, true, progress).run();
    if (result.error == ExchangeError::none || result.error == ExchangeError::stopped || r <= least_functions)
      return result;
  }
  ExchangeResult start = exchange_from(shortened(plan, plan.length * part), part, loose, progress);
  if (start.error == ExchangeError::stopped || start.error == ExchangeError::below_rounding) return start;
  // Twice the length squares the deviation.
  const double squared = start.deviation / start.scale * (start.deviation / start.scale);
  const bool can_vanish = start.error == ExchangeError::none && squared < 1e3 * below_rounding;
  const Placement placement = start.extremal.size() > 0 ? scaled_placement(plan, start.extremal) : even_placement(plan);
  result = TrueExchange(plan, placement, tolerance, can_vanish, progress).run();
  if (result.error != ExchangeError::below_rounding) return result;
  start.error = ExchangeError::below_rounding;
  return start;
}

// The longest filter whose optimum is above rounding, given a shorter one: the logarithm of the deviation is
// proportional to the length.
static TrueOptimum longest_above_rounding(const BandPlan &plan, TrueOptimum known, const Progress &progress) {
  const double digits = std::log(known.exchange.deviation / known.exchange.scale);
  double length = std::min<double>(plan.length, known.length * std::log(5 * below_rounding) / digits);
  for (int attempt = 0; attempt < most_attempts; attempt++) {
    const BandPlan shorter = shortened(plan, length);
    ExchangeResult result = exchange_from(shorter, 0.5, tight, progress);
    if (result.error == ExchangeError::none || result.error == ExchangeError::stopped)
      return {std::move(result), shorter.length};
    length *= next_attempt;
  }
  return known;
}

static int length_of(const ExchangeResult &result, const BandPlan &plan) {
  const int r = static_cast<int>(result.extremal.size()) - 1;
  return 2 * r + (plan.odd_length() ? (plan.symmetric() ? -1 : 1) : 0);
}

TrueOptimum true_exchange(const BandPlan &plan, const Progress &progress) {
  TrueOptimum best;
  for (const double part : {0.5, 0.55, 0.34}) {
    TrueOptimum found{exchange_from(plan, part, tight, progress), plan.length};
    const bool lost = found.exchange.error == ExchangeError::below_rounding && found.exchange.extremal.size() > 0;
    if (lost) {
      found.length = length_of(found.exchange, plan);
      found = longest_above_rounding(plan, std::move(found), progress);
    }
    const ExchangeResult &exchange = found.exchange;
    if (exchange.error == ExchangeError::stopped || (exchange.error == ExchangeError::none && !lost)) return found;
    if (lost && exchange.deviation < 1e-13 * exchange.scale) {
      found.exchange.error = ExchangeError::below_rounding;
      return found;
    }
    found.exchange.error = ExchangeError::not_optimal;
    if (best.length == 0 || exchange.deviation > best.exchange.deviation) best = std::move(found);
  }
  return best;
}

} // namespace brisel
