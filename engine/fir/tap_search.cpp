#include "engine/fir/tap_search.h"

#include <unsupported/Eigen/FFT>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numbers>
#include <numeric>
#include <random>

namespace brisel {

namespace {

constexpr double pi = std::numbers::pi;
constexpr std::size_t pairs_up_to = 300; // half the taps; more have too many pairs to try them all
constexpr double least_gain = 1 - 1e-7;  // of a step, in part of the cost

double ratio_of(double db) {
  return std::pow(10, db / 20);
}

// The gain of symmetric taps without their delay is a sum of cosines, one for each tap of the upper half. Its points
// lie on a grid of the circle, whose cosines stand in one table, and on the edges of the bands.
class Cosines {
public:
  Cosines(std::size_t length, const TapGoal &goal, std::size_t points_a_ripple)
      : odd(length % 2 == 1), half((length + 1) / 2), table(std::bit_ceil(2 * points_a_ripple * length)) {
    for (std::size_t k = 0; k < table.size(); k++)
      table[k] = std::cos(2 * pi * static_cast<double>(k) / static_cast<double>(table.size()));
    add_bands(goal.pass);
    passes = points.size();
    add_bands(goal.stop);
  }

  std::size_t size() const { return points.size(); }
  std::size_t pass_count() const { return passes; }
  std::size_t unknowns() const { return half; }
  double frequency(std::size_t point) const { return points[point].w; }
  /// What one unit of tap `m`, counted from the middle, and its mirror image add at `point`.
  double operator()(std::size_t m, std::size_t point) const {
    const Point &p = points[point];
    const std::size_t twice = 2 * m + (odd ? 0 : 1); // distance from the middle, in half samples
    const double weight = odd && m == 0 ? 1 : 2;
    if (p.on_grid) return weight * table[twice * p.step & (table.size() - 1)];
    return weight * std::cos(p.w * static_cast<double>(twice) / 2);
  }

  /// Gain of the taps whose upper half is `half`, at every point: on the grid by one transform.
  std::vector<double> amplitudes(std::span<const double> half_taps) const {
    std::vector<double> in(table.size());
    for (std::size_t m = 0; m < half_taps.size(); m++)
      in[2 * m + (odd ? 0 : 1)] = (odd && m == 0 ? 1 : 2) * half_taps[m];
    std::vector<std::complex<double>> spectrum;
    Eigen::FFT<double> fft;
    fft.SetFlag(Eigen::FFT<double>::HalfSpectrum);
    fft.fwd(spectrum, in);
    std::vector<double> sums(size());
    for (std::size_t i = 0; i < sums.size(); i++) {
      if (points[i].on_grid)
        sums[i] = spectrum[points[i].step].real();
      else
        for (std::size_t m = 0; m < half_taps.size(); m++) sums[i] += half_taps[m] * (*this)(m, i);
    }
    return sums;
  }

private:
  struct Point {
    double w;
    std::size_t step; // of the grid, whose steps are half those of the table
    bool on_grid;
  };
  void add_bands(const std::vector<FrequencyBand> &bands) {
    const double step = 4 * pi / static_cast<double>(table.size());
    for (const FrequencyBand &band : bands) {
      points.push_back({band.low, 0, false});
      for (std::size_t i = static_cast<std::size_t>(band.low / step) + 1; static_cast<double>(i) * step < band.high;
           i++)
        points.push_back({static_cast<double>(i) * step, i, true});
      points.push_back({band.high, 0, false});
    }
  }

  bool odd;
  std::size_t half, passes = 0;
  std::vector<double> table;
  std::vector<Point> points;
};

struct Limits {
  double ripple_db, stop; // asked for; `stop` in part of the largest passband gain
  double cost(double low, double high, double stopband) const {
    if (!(low > 0)) return HUGE_VAL;
    return std::max(20 * std::log10(high / low) / ripple_db, stopband / high / stop);
  }
};

TapFigures figures(const Cosines &cosines, const std::vector<double> &desired, std::span<const double> amplitude,
                   const Limits &limits) {
  TapFigures out{0, HUGE_VAL, 0, 0};
  for (std::size_t i = 0; i < cosines.pass_count(); i++) {
    const double gain = std::abs(amplitude[i]) / desired[i];
    out.passband_low = std::min(out.passband_low, gain);
    out.passband_high = std::max(out.passband_high, gain);
  }
  for (std::size_t i = cosines.pass_count(); i < cosines.size(); i++)
    out.stopband = std::max(out.stopband, std::abs(amplitude[i]));
  out.cost = limits.cost(out.passband_low, out.passband_high, out.stopband);
  return out;
}

std::vector<double> desired_gains(const Cosines &cosines, const TapGoal &goal) {
  std::vector<double> gains(cosines.pass_count());
  for (std::size_t i = 0; i < gains.size(); i++) gains[i] = goal.desired(cosines.frequency(i));
  return gains;
}

Limits limits_of(const TapGoal &goal) {
  return {goal.ripple_db, ratio_of(-goal.attenuation_db)};
}

// One or two taps and by how much they change.
struct Step {
  std::size_t count = 0;
  std::array<std::size_t, 2> tap{};
  std::array<double, 2> change{};
};

class Search {
public:
  Search(std::span<double> taps, const TapGoal &goal, const TapSearch &settings)
      : cosines(taps.size(), goal, 8), desired(desired_gains(cosines, goal)), limits(limits_of(goal)), set(settings),
        order(cosines.size()) {
    for (std::size_t m = 0; m < cosines.unknowns(); m++) half.push_back(taps[taps.size() / 2 + m]);
    least_desired = *std::min_element(desired.begin(), desired.end());
    rebuild();
    middle = centre;
  }

  const TapFigures &figures_now() const { return now; }
  const std::vector<double> &half_taps() const { return half; }

  /// Takes the best step of one tap, or else a step of two. False at a local optimum.
  bool improve() {
    Step best;
    double cost = now.cost * least_gain;
    for (std::size_t m = 0; m < half.size(); m++)
      for (const double change : {set.quantum, -set.quantum}) {
        const Step step{1, {m}, {change}};
        if (try_step(step, cost)) best = step;
      }
    if (best.count == 0 && half.size() <= pairs_up_to) best = first_pair(cost);
    if (best.count == 0) return false;
    take(best);
    return true;
  }

  /// Starts again from `earlier`, a few taps of it shaken. `below` gives whole numbers below its argument.
  template <class Random> void shake(const std::vector<double> &earlier, Random &&below) {
    half = earlier;
    const std::size_t kicks = 2 + below(std::max<std::size_t>(half.size() / 8, 2));
    for (std::size_t k = 0; k < kicks; k++) {
      const Step step{1, {below(half.size())}, {below(2) ? set.quantum : -set.quantum}};
      if (fits(step)) half[step.tap[0]] += step.change[0];
    }
    rebuild();
  }

private:
  bool fits(const Step &step) const {
    for (std::size_t k = 0; k < step.count; k++) {
      const double value = half[step.tap[k]] + step.change[k];
      if (value < -1 || value >= 1) return false;
    }
    return true;
  }
  double amplitude_after(const Step &step, std::size_t point) const {
    double sum = amplitude[point];
    for (std::size_t k = 0; k < step.count; k++) sum += step.change[k] * cosines(step.tap[k], point);
    return sum;
  }

  // True when the step brings the cost below `cost`, which becomes the new one. The points that decide come first, so
  // that most steps are dropped after a few of them: of the passbands, of the stopbands, and only then of all.
  bool try_step(const Step &step, double &cost) const {
    if (!fits(step)) return false;
    constexpr std::size_t deciding = 32;
    const std::size_t passes = cosines.pass_count(), few = std::min(passes, deciding);
    const double widest = ratio_of(cost * limits.ripple_db);
    double low = HUGE_VAL, high = 0, stopband = 0;
    // No point moves further than this: what lies deeper inside the extremes cannot become one.
    const double reach = 2 * (1 + 1e-9) * (std::abs(step.change[0]) + std::abs(step.change[1]));
    const double gain_reach = reach / least_desired + 1e-12;
    const auto passband_holds = [&](std::size_t from, std::size_t to) {
      for (std::size_t k = from; k < to; k++) {
        if (k % 16 == 15) {
          const double most = distance_from_centre(order[k]) + gain_reach;
          if (centre + most <= high && centre - most >= low) return true;
        }
        const double gain = std::abs(amplitude_after(step, order[k])) / desired[order[k]];
        low = std::min(low, gain);
        high = std::max(high, gain);
        if (!(high < low * widest)) return false;
      }
      return true;
    };
    const auto stopband_holds = [&](std::size_t to, double most) {
      for (std::size_t k = passes; k < to; k++) {
        if (std::abs(amplitude[order[k]]) + reach <= stopband) return true;
        stopband = std::max(stopband, std::abs(amplitude_after(step, order[k])));
        if (!(stopband < most)) return false;
      }
      return true;
    };
    // The largest passband gain stays below the lowest one found so far times `widest`, or the ripple is too large.
    if (!passband_holds(0, few) ||
        !stopband_holds(std::min(order.size(), passes + deciding), cost * limits.stop * low * widest) ||
        !passband_holds(few, passes))
      return false;
    if (std::abs((low + high) / 2 / middle - 1) > set.gain_slack) return false;
    if (!stopband_holds(order.size(), cost * limits.stop * high)) return false;
    const double after = limits.cost(low, high, stopband);
    if (!(after < cost)) return false;
    cost = after;
    return true;
  }

  Step first_pair(double cost) const {
    for (std::size_t m = 1; m < half.size(); m++)
      for (std::size_t other = 0; other < m; other++)
        for (const double a : {set.quantum, -set.quantum})
          for (const double b : {set.quantum, -set.quantum}) {
            const Step step{2, {m, other}, {a, b}};
            if (try_step(step, cost)) return step;
          }
    return {};
  }

  double distance_from_centre(std::size_t point) const {
    return std::abs(std::abs(amplitude[point]) / desired[point] - centre);
  }
  void take(const Step &step) {
    for (std::size_t i = 0; i < amplitude.size(); i++) amplitude[i] = amplitude_after(step, i);
    for (std::size_t k = 0; k < step.count; k++) half[step.tap[k]] += step.change[k];
    measure();
  }
  void rebuild() {
    amplitude = cosines.amplitudes(half);
    measure();
  }
  void measure() {
    now = figures(cosines, desired, amplitude, limits);
    centre = (now.passband_low + now.passband_high) / 2;
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto stop = order.begin() + static_cast<std::ptrdiff_t>(cosines.pass_count());
    std::sort(order.begin(), stop,
              [&](std::size_t a, std::size_t b) { return distance_from_centre(a) > distance_from_centre(b); });
    std::sort(stop, order.end(),
              [&](std::size_t a, std::size_t b) { return std::abs(amplitude[a]) > std::abs(amplitude[b]); });
  }

  Cosines cosines;
  std::vector<double> desired;
  Limits limits;
  TapSearch set;
  std::vector<double> half, amplitude;
  std::vector<std::size_t> order; // points, the deciding ones first, passbands before stopbands
  TapFigures now{};
  double centre = 0;        // of the passband gain
  double middle = 0;        // the same before the search
  double least_desired = 0; // gain in the passbands
};

} // namespace

TapFigures tap_figures(std::span<const double> taps, const TapGoal &goal) {
  const Cosines cosines(taps.size(), goal, 32);
  return figures(cosines, desired_gains(cosines, goal), cosines.amplitudes(taps.subspan(taps.size() / 2)),
                 limits_of(goal));
}

bool search_taps(std::span<double> taps, const TapGoal &goal, const TapSearch &settings,
                 const std::function<void(const TapFigures &, int step)> &improved, const Progress &progress) {
  if (!std::all_of(taps.begin(), taps.end(), [](double h) { return h >= -1 && h < 1; })) return true;
  const TapFigures before = tap_figures(taps, goal);
  Search search(taps, goal, settings);
  std::vector<double> best = search.half_taps();
  double cost = search.figures_now().cost;
  if (!std::isfinite(before.cost) || !std::isfinite(cost)) return true; // nothing passes: there is nothing to improve
  std::mt19937 generator(1);                                            // the same taps every time
  const auto below = [&](std::size_t count) { return static_cast<std::size_t>(generator()) % count; };
  for (int run = 0; run < settings.searches; run++) {
    if (run > 0) search.shake(best, below);
    int step = 0;
    for (; step < settings.steps && search.improve(); step++)
      if (!progress((run + static_cast<double>(step) / settings.steps) / settings.searches)) return false;
    if (!(search.figures_now().cost < cost)) continue;
    best = search.half_taps();
    cost = search.figures_now().cost;
    improved(search.figures_now(), step);
  }
  std::vector<double> found(taps.size());
  const std::size_t middle = taps.size() / 2;
  for (std::size_t m = 0; m < best.size(); m++) found[middle + m] = found[taps.size() - 1 - middle - m] = best[m];
  if (tap_figures(found, goal).cost < before.cost) std::copy(found.begin(), found.end(), taps.begin());
  return true;
}

} // namespace brisel
