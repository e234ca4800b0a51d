// allpass_delay.cpp - least p-th approximation of a group delay, and its levelling to equal ripples.
//
// A section with k = a1 / (1 + a2) = -cos(phi) and g = (1 - a2) / (1 + a2) has the delay
//   2 g (1 + k c) / ((k + c)^2 + g^2 s^2),  c = cos w, s = sin w,
// near w = phi a peak of height 2 / g and half width g. phi and ln g take any value, and the section is stable for all
// of them: they are what is varied.
//
// The sum of the p-th powers of the error is made small by damped Gauss-Newton steps [Deczky72], p growing, from
// several starts, which share the area under the wanted delay among the sections. From there the largest error is made
// small by linear programs: the errors at their extremes, linear in the unknowns for so far as a step may go
// [Madsen75]. (The family has no Haar condition, so that alternating extremes alone do not show a best approximation.)
//
// [Deczky72]: see least_power.h. [Madsen75] K. Madsen, An algorithm for minimax solution of overdetermined systems of
// non-linear equations, J. Inst. Maths Applics 16, 1975. [Mehrotra92] S. Mehrotra, On the implementation of a
// primal-dual interior point method, SIAM J. Optimization 2, 1992.
#include "engine/iir/allpass_delay.h"

#include "engine/iir/least_power.h"

#include <Eigen/Dense>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>

namespace brisel {

namespace {

constexpr double pi = std::numbers::pi;
using Vector = Eigen::VectorXd;
using Matrix = Eigen::MatrixXd;

struct Pair { // of poles
  double phi, log_g;
};

// The unknowns: phi and ln g of every section, then the constant.
struct Trial {
  std::vector<Pair> pairs;
  double constant = 0;
  double least_log_g = -16; // sharper peaks than this are of no use: their poles would lie on the unit circle

  Eigen::Index unknowns() const { return static_cast<Eigen::Index>(2 * pairs.size() + 1); }
  Trial moved(const Vector &step) const {
    Trial out = *this;
    for (std::size_t i = 0; i < pairs.size(); i++) {
      out.pairs[i].phi += step[static_cast<Eigen::Index>(2 * i)];
      double &log_g = out.pairs[i].log_g;
      log_g = std::max(log_g + step[static_cast<Eigen::Index>(2 * i + 1)], least_log_g);
    }
    out.constant += step[unknowns() - 1];
    return out;
  }
};

struct Place {
  double w, c, s, wanted;
};
Place place_at(const DelayGoal &goal, double w) {
  return {w, std::cos(w), std::sin(w), goal.wanted(w)};
}

// Ascending, closer towards the ends of every band, where the errors of such an approximation change fastest.
struct Grid {
  std::vector<Place> places;
  std::vector<double> weight;     // width that a place stands for, in part of all bands
  std::vector<char> ends_a_piece; // the next place belongs to another band
};
Grid make_grid(const DelayGoal &goal, std::size_t count) {
  double width = 0;
  for (const FrequencyBand &band : goal.bands) width += band.high - band.low;
  Grid grid;
  for (const FrequencyBand &band : goal.bands) {
    const double part = (band.high - band.low) / width;
    const std::size_t points = 24 + static_cast<std::size_t>(part * static_cast<double>(count));
    std::vector<double> w;
    for (std::size_t i = 0; i <= points; i++) {
      const double rise = std::sin(pi / 2 * static_cast<double>(i) / static_cast<double>(points));
      w.push_back(i == points ? band.high : band.low + (band.high - band.low) * rise * rise);
    }
    for (const double corner : goal.corners)
      if (corner > band.low && corner < band.high) w.push_back(corner);
    std::sort(w.begin(), w.end());
    w.erase(std::unique(w.begin(), w.end()), w.end());
    for (std::size_t i = 0; i < w.size(); i++) {
      const double left = i == 0 ? w[0] : w[i - 1], right = i + 1 == w.size() ? w[i] : w[i + 1];
      grid.places.push_back(place_at(goal, w[i]));
      grid.weight.push_back((right - left) / 2 / width);
      grid.ends_a_piece.push_back(i + 1 == w.size());
    }
  }
  return grid;
}

// A pair as its delay needs it.
struct Peak {
  double k, sine, g;
};
struct Delay {
  double value, along_phi, along_log_g;
};
Delay delay_of(const Peak &peak, const Place &x) {
  const double near = peak.k + x.c, spread = peak.g * peak.g * x.s * x.s, rise = 1 + peak.k * x.c;
  const double q = 1 / (near * near + spread), value = 2 * peak.g * rise * q;
  return {value, 2 * peak.g * (x.c - 2 * rise * near * q) * q * peak.sine, value * (1 - 2 * spread * q)};
}

class Approximation {
public:
  explicit Approximation(const Trial &trial) : constant(trial.constant) {
    for (const Pair &pair : trial.pairs)
      peaks.push_back({-std::cos(pair.phi), std::sin(pair.phi), std::exp(pair.log_g)});
  }
  double error(const Place &x) const {
    double sum = -x.wanted - constant;
    for (const Peak &peak : peaks) sum += delay_of(peak, x).value;
    return sum;
  }
  /// The error, and its slopes along all unknowns.
  template <class Slopes> double error(const Place &x, Slopes &&slopes) const {
    double sum = -x.wanted - constant;
    Eigen::Index at = 0;
    for (const Peak &peak : peaks) {
      const Delay d = delay_of(peak, x);
      sum += d.value;
      slopes[at++] = d.along_phi;
      slopes[at++] = d.along_log_g;
    }
    slopes[at] = -1;
    return sum;
  }

private:
  std::vector<Peak> peaks;
  double constant;
};

struct GridErrors {
  const Grid &grid;

  Vector operator()(const Trial &trial) const {
    Vector e(static_cast<Eigen::Index>(grid.places.size()));
    const Approximation now(trial);
    for (std::size_t i = 0; i < grid.places.size(); i++) e[static_cast<Eigen::Index>(i)] = now.error(grid.places[i]);
    return e;
  }
  Vector operator()(const Trial &trial, Matrix &slopes) const {
    Vector e(static_cast<Eigen::Index>(grid.places.size()));
    const Approximation now(trial);
    for (Eigen::Index i = 0; i < e.size(); i++)
      e[i] = now.error(grid.places[static_cast<std::size_t>(i)], slopes.col(i));
    return e;
  }
};

void reduce_power_sum(Trial &trial, const Grid &grid, double p, int most_steps, double least_gain) {
  brisel::reduce_power_sum(trial, GridErrors{grid}, grid.weight, p, most_steps, least_gain);
}

// Signed extremes of the error, in order, their places between those of the grid.
struct Extreme {
  Place place;
  double error;
  std::size_t nearest; // place of the grid
};
std::vector<Extreme> extremes(const DelayGoal &goal, const Trial &trial, const Grid &grid) {
  const Vector e = GridErrors{grid}(trial);
  const Approximation now(trial);
  std::vector<Extreme> found;
  const std::size_t count = grid.places.size();
  for (std::size_t i = 0; i < count; i++) {
    const auto at = [&](std::size_t k) { return e[static_cast<Eigen::Index>(k)]; };
    const bool first = i == 0 || grid.ends_a_piece[i - 1], last = grid.ends_a_piece[i];
    const double sign = at(i) < 0 ? -1 : 1;
    if ((!first && sign * at(i - 1) > sign * at(i)) || (!last && sign * at(i + 1) >= sign * at(i))) continue;
    Extreme extreme{grid.places[i], at(i), i};
    // The top of the parabola, twice: of the grid, then of three close places.
    double left = first ? 0 : grid.places[i].w - grid.places[i - 1].w, right = left;
    if (!first && !last) right = grid.places[i + 1].w - grid.places[i].w;
    for (int round = 0; round < 3 && !first && !last; round++) {
      const double before = now.error(place_at(goal, extreme.place.w - left)) - extreme.error,
                   after = now.error(place_at(goal, extreme.place.w + right)) - extreme.error;
      const double bend = (after / right + before / left) / (left + right), slope = after / right - bend * right;
      if (!(bend * sign < 0)) break;
      const double w =
          std::clamp(extreme.place.w - slope / (2 * bend), extreme.place.w - left, extreme.place.w + right);
      const Place place = place_at(goal, w);
      const double error = now.error(place);
      if (sign * error < sign * extreme.error) break; // a corner, or the top itself
      extreme = {place, error, i};
      left = right = std::min(left, right) / 8;
    }
    found.push_back(extreme);
  }
  return found;
}

double largest(const std::vector<Extreme> &found) {
  double size = 0;
  for (const Extreme &x : found) {
    if (!std::isfinite(x.error)) return HUGE_VAL;
    size = std::max(size, std::abs(x.error));
  }
  return size;
}

struct Range {
  double low, high;
};
// Smallest and largest error; of a curve without a turn between two places, those at the places. Not finite when one
// of the errors is not.
Range error_range(const DelayGoal &goal, const Trial &trial, const Grid &grid) {
  const Vector e = GridErrors{grid}(trial);
  if (!e.allFinite()) return {-HUGE_VAL, HUGE_VAL};
  Range range{e.minCoeff(), e.maxCoeff()};
  for (const Extreme &x : extremes(goal, trial, grid)) {
    range.low = std::min(range.low, x.error);
    range.high = std::max(range.high, x.error);
  }
  return range;
}

// The x that makes x[last] smallest under a x <= b, from an x strictly inside, by a primal-dual interior point method.
// Nothing when the system is singular.
std::optional<Vector> linear_program(const Matrix &a, const Vector &b, Vector x) {
  const Eigen::Index m = a.rows(), n = a.cols();
  Vector slack = b - a * x, price = Vector::Ones(m), goal = Vector::Zero(n);
  goal[n - 1] = 1;
  const double scale = slack.maxCoeff();
  price /= static_cast<double>(m);
  for (int step = 0; step < 60; step++) {
    const Vector dual = goal + a.transpose() * price, primal = a * x + slack - b, weight = price.cwiseQuotient(slack);
    const double gap = slack.dot(price) / static_cast<double>(m);
    if (gap * static_cast<double>(m) < 1e-11 * scale && dual.cwiseAbs().maxCoeff() < 1e-9) break;
    Matrix normal = Matrix::Zero(n, n);
    normal.selfadjointView<Eigen::Lower>().rankUpdate(a.transpose() * weight.cwiseSqrt().asDiagonal());
    const Eigen::LDLT<Matrix> system(normal);
    // `pull` is what slack times price is to become, less what they are.
    const auto direction = [&](const Vector &pull, Vector &dx, Vector &ds, Vector &dp) {
      dx = system.solve(-dual - a.transpose() * (pull.cwiseQuotient(slack) + weight.cwiseProduct(primal)));
      ds = -primal - a * dx;
      dp = (pull - price.cwiseProduct(ds)).cwiseQuotient(slack);
    };
    const auto room = [](const Vector &v, const Vector &dv) {
      double part = 1;
      for (Eigen::Index i = 0; i < v.size(); i++)
        if (dv[i] < 0) part = std::min(part, -v[i] / dv[i]);
      return part;
    };
    Vector dx, ds, dp;
    direction(-slack.cwiseProduct(price), dx, ds, dp);
    const double reached = (slack + room(slack, ds) * ds).dot(price + room(price, dp) * dp) / static_cast<double>(m);
    const double centring = std::pow(reached / gap, 3);
    direction(-slack.cwiseProduct(price) - ds.cwiseProduct(dp) + Vector::Constant(m, centring * gap), dx, ds, dp);
    if (!dx.allFinite() || !dp.allFinite()) return std::nullopt;
    const double along = std::min(1.0, 0.99 * room(slack, ds)), along_price = std::min(1.0, 0.99 * room(price, dp));
    x += along * dx;
    slack += along * ds;
    price += along_price * dp;
  }
  return x;
}

// Makes the largest error smaller until steps no longer do.
void reduce_largest(const DelayGoal &goal, const Grid &grid, Trial &trial, const Progress &progress) {
  const Eigen::Index n = trial.unknowns();
  std::vector<Extreme> found = extremes(goal, trial, grid);
  double now = largest(found), reach = 0.1; // of phi and ln g
  int small_gains = 0;
  for (int step = 0; step < 100 && reach > 1e-9 && small_gains < 3 && progress(step / 100.0); step++) {
    // The extremes and their neighbours, which may become extremes.
    std::vector<Place> places;
    std::vector<double> signs;
    for (const Extreme &x : found) {
      const double sign = x.error < 0 ? -1 : 1;
      const auto add = [&](const Place &place) {
        places.push_back(place);
        signs.push_back(sign);
      };
      add(x.place);
      for (std::size_t i = x.nearest, k = 0; k < 3 && i > 0 && !grid.ends_a_piece[i - 1]; k++) add(grid.places[--i]);
      for (std::size_t i = x.nearest, k = 0; k < 3 && !grid.ends_a_piece[i]; k++) add(grid.places[++i]);
    }
    // sign * (error + slopes * move) <= h, and |move| <= reach; everything in part of the largest error.
    const auto count = static_cast<Eigen::Index>(places.size());
    Matrix a = Matrix::Zero(count + 2 * (n - 1), n + 1);
    Vector b(a.rows()), slopes(n), inside = Vector::Zero(n + 1);
    const Approximation approximation(trial);
    for (Eigen::Index i = 0; i < count; i++) {
      const double sign = signs[static_cast<std::size_t>(i)];
      b[i] = -sign * approximation.error(places[static_cast<std::size_t>(i)], slopes) / now;
      a.row(i).head(n) = sign * slopes.transpose() / now;
      a.row(i).segment(0, n - 1) *= reach; // moves of the poles in part of the reach
      a(i, n) = -1;
    }
    for (Eigen::Index k = 0; k + 1 < n; k++) {
      a(count + 2 * k, k) = -1;
      a(count + 2 * k + 1, k) = 1;
      const double room = k % 2 ? (trial.pairs[static_cast<std::size_t>(k / 2)].log_g - trial.least_log_g) / reach : 1;
      b[count + 2 * k] = std::clamp(room, 1e-6, 1.0); // the program starts inside
      b[count + 2 * k + 1] = 1;
    }
    inside[n] = 1.5;
    const auto solution = linear_program(a, b, inside);
    if (!solution) return;
    const double expected = 1 - (*solution)[n];
    if (expected < 1e-10) return;
    Vector move = solution->head(n);
    move.head(n - 1) *= reach;
    const Trial moved = trial.moved(move);
    auto next = extremes(goal, moved, grid);
    const double size = largest(next), gain = 1 - size / now;
    if (gain > 0) {
      trial = moved;
      now = size;
      found = std::move(next);
      small_gains = gain < 1e-9 ? small_gains + 1 : 0;
    }
    if (gain > 0.7 * expected)
      reach = std::min(1.0, reach * 2);
    else if (gain < 0.25 * expected)
      reach /= gain > 0 ? 2 : 4;
  }
}

// Sections along the area under the wanted delay, each with the same share of it. `fill` is the part of all the
// sections' area, 2 pi a section, that falls into the bands; `width` is the half width of a peak, in shares.
Trial shared_area(const Grid &grid, int count, double band_width, double fill, double width) {
  const std::size_t points = grid.places.size();
  double mean = 0;
  for (std::size_t i = 0; i < points; i++) mean += grid.weight[i] * grid.places[i].wanted;
  const double level = 2 * pi * count * fill / band_width; // mean delay of the sections in the bands
  std::vector<double> delay(points), area(points);
  double total = 0;
  for (std::size_t i = 0; i < points; i++) {
    delay[i] = std::max(grid.places[i].wanted - mean + level, 0.05 * level);
    total += grid.weight[i] * delay[i];
    area[i] = total;
  }
  Trial trial;
  trial.constant = level - mean;
  trial.least_log_g = std::log(0.02 * 2 * pi / *std::max_element(delay.begin(), delay.end()));
  std::size_t at = 0;
  for (int i = 0; i < count; i++) {
    while (at + 1 < points && area[at] < total * (i + 0.5) / count) at++;
    trial.pairs.push_back({grid.places[at].w, std::log(std::min(width * 2 * pi / delay[at], 2.0))});
  }
  return trial;
}

// The same, shaken, sometimes with a pair of real poles at either end: where the approximation has several local
// optima, one of these starts finds a good one. The same numbers every time.
std::vector<Trial> starts_for(const Grid &grid, int count, double band_width) {
  std::vector<Trial> starts;
  for (const double fill : {0.9, 0.75, 0.5})
    for (const double width : {0.5, 1.0}) starts.push_back(shared_area(grid, count, band_width, fill, width));
  std::mt19937 generator(1);
  const auto within = [&](double low, double high) { return low + (high - low) * 0x1p-32 * generator(); };
  const double least = starts.front().least_log_g;
  for (int shaken = 0; shaken < 10; shaken++) {
    Trial trial = shared_area(grid, count, band_width, within(0.4, 1), within(0.3, 1.4));
    for (Pair &pair : trial.pairs) {
      pair.phi *= within(0.75, 1.25);
      pair.log_g += within(-0.5, 0.5);
    }
    if (within(0, 1) < 0.4) trial.pairs.front() = {within(0.05, 0.8), std::log(within(0.3, 1))};
    if (within(0, 1) < 0.4) trial.pairs.back() = {within(0.6, 0.95) * pi, std::log(within(0.3, 1))};
    starts.push_back(std::move(trial));
  }
  for (Trial &trial : starts) trial.least_log_g = least;
  return starts;
}

struct Candidate {
  Trial trial;
  double size; // what the norm makes small
};

AllpassSection section_of(const Pair &pair) {
  const double g = std::exp(pair.log_g), a2 = (1 - g) / (1 + g);
  return {-std::cos(pair.phi) * (1 + a2), a2};
}

bool is_stable(const AllpassSection &s) {
  return std::abs(s.a2) < 1 && std::abs(s.a1) < 1 + s.a2 && s.a2 != 0; // a delay of two samples has no section here
}

DelayDesign finished(const Trial &trial, double ripple) {
  DelayDesign out{{}, trial.constant, ripple};
  std::vector<Pair> pairs = trial.pairs;
  for (Pair &pair : pairs) pair.phi = std::acos(std::clamp(std::cos(pair.phi), -1.0, 1.0));
  std::sort(pairs.begin(), pairs.end(), [](const Pair &a, const Pair &b) { return a.phi < b.phi; });
  for (const Pair &pair : pairs) out.sections.push_back(section_of(pair));
  return out;
}

// Puts the constant into the middle of the range of the errors and returns half that range, seen on a grid that no peak
// of the sections slips through.
double centre(const DelayGoal &goal, Trial &trial) {
  DelayGoal closer = goal;
  for (const Pair &pair : trial.pairs) {
    const double phi = std::acos(std::clamp(std::cos(pair.phi), -1.0, 1.0)), g = std::exp(pair.log_g);
    for (const double offset : {-3.0, -2.0, -1.0, -0.5, 0.0, 0.5, 1.0, 2.0, 3.0})
      closer.corners.push_back(phi + offset * g);
  }
  const Grid grid = make_grid(closer, 2000 + 200 * trial.pairs.size());
  const auto [low, high] = error_range(closer, trial, grid);
  trial.constant += (low + high) / 2;
  return (high - low) / 2;
}

double width_of(const DelayGoal &goal) {
  double width = 0;
  for (const FrequencyBand &band : goal.bands) width += band.high - band.low;
  return width;
}

bool is_finite(const Grid &grid) {
  return std::all_of(grid.places.begin(), grid.places.end(), [](const Place &x) { return std::isfinite(x.wanted); });
}

// `enough` is a ripple that would do. The mean p-th power of the error never exceeds its largest value, so a mean well
// above `enough` shows early that these sections cannot keep it: then the design has no sections and a ripple above
// `enough`.
std::optional<DelayDesign> design(const DelayGoal &goal, int count, DelayNorm norm, int p, double enough,
                                  const Progress &progress) {
  constexpr double margin = 1.5; // the means are those of the best starts, not yet at their smallest
  const Grid coarse = make_grid(goal, static_cast<std::size_t>(200 + 30 * count)),
             fine = make_grid(goal, static_cast<std::size_t>(400 + 100 * count));
  if (!is_finite(fine)) return std::nullopt;
  std::vector<Trial> starts = starts_for(coarse, count, width_of(goal));
  const double power = norm == DelayNorm::least_squares ? 2 : norm == DelayNorm::least_p ? p : 8;
  std::vector<Candidate> candidates;
  for (double now = 2; now <= power; now = now < power ? std::min(2 * now, power) : HUGE_VAL) {
    candidates.clear();
    double least = HUGE_VAL, done = 0;
    for (Trial &trial : starts) {
      reduce_power_sum(trial, coarse, now, now < power ? 40 : 60, 1e-4);
      const Vector e = GridErrors{coarse}(trial);
      const double size = e.cwiseAbs().maxCoeff();
      if (std::isfinite(size))
        candidates.push_back(
            {trial, size * std::pow(power_sum(e, coarse.weight, std::max(size, 1e-300), now), 1 / now)});
      if (!candidates.empty()) least = std::min(least, candidates.back().size);
      if (!progress(0.5 * now / power * ++done / static_cast<double>(starts.size()))) return std::nullopt;
    }
    if (!candidates.empty() && least > margin * enough) return DelayDesign{{}, 0, least};
  }
  std::sort(candidates.begin(), candidates.end(),
            [](const Candidate &a, const Candidate &b) { return a.size < b.size; });
  std::optional<DelayDesign> best;
  const std::size_t most = norm == DelayNorm::minimax ? 4 : 1;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < candidates.size() && kept < most; i++) {
    if (i > 0 && candidates[i].size < candidates[i - 1].size * (1 + 1e-5)) continue; // the same optimum
    Trial trial = candidates[i].trial;
    const auto part = [&](double done) {
      return progress(0.5 + 0.5 * (static_cast<double>(kept) + done) / static_cast<double>(most));
    };
    if (norm == DelayNorm::minimax) {
      for (const double higher : {16.0, 32.0}) reduce_power_sum(trial, fine, higher, 30, 1e-3);
      reduce_largest(goal, fine, trial, part);
    } else {
      reduce_power_sum(trial, fine, power, 300, 1e-10);
    }
    if (!part(1)) return std::nullopt;
    kept++;
    const double ripple = centre(goal, trial);
    const DelayDesign found = finished(trial, ripple);
    const bool stable = std::all_of(found.sections.begin(), found.sections.end(), is_stable);
    if (stable && std::isfinite(found.ripple) && (!best || found.ripple < best->ripple)) best = found;
    if (best && best->ripple > margin * enough) break;
  }
  return best;
}

} // namespace

double allpass_delay(const AllpassSection &section, double w) {
  const double k = section.a1 / (1 + section.a2), g = (1 - section.a2) / (1 + section.a2);
  const double c = std::cos(w), s = std::sin(w);
  return 2 * g * (1 + k * c) / ((k + c) * (k + c) + g * g * s * s);
}

std::optional<DelayDesign> design_allpass_delay(const DelayGoal &goal, int count, DelayNorm norm, int p,
                                                const Progress &progress) {
  return design(goal, count, norm, p, HUGE_VAL, progress);
}

std::optional<DelayDesign> fewest_allpass_sections(const DelayGoal &goal, double ripple, int most, DelayNorm norm,
                                                   int p, const Progress &progress) {
  int tried = 0;
  const auto part = [&](double) { return progress(std::min(tried / 10.0, 0.99)); };
  const auto attempt = [&](int count) {
    tried++;
    return design(goal, count, norm, p, count < most ? ripple : HUGE_VAL, part); // `most` attain what they can
  };
  // Twice as many until they are enough, then the least between.
  int too_few = 0, count = 1;
  std::optional<DelayDesign> found = attempt(count);
  while (found && found->ripple > ripple && count < most) {
    too_few = count;
    count = std::min(2 * count, most);
    found = attempt(count);
  }
  if (!found || found->ripple > ripple) return found;
  while (count - too_few > 1) {
    const int middle = (too_few + count) / 2;
    auto fewer = attempt(middle);
    if (!fewer) return fewer;
    if (fewer->ripple > ripple) {
      too_few = middle;
    } else {
      count = middle;
      found = std::move(fewer);
    }
  }
  return found;
}

double unequalized_ripple(const DelayGoal &goal) {
  const Range range = error_range(goal, Trial{}, make_grid(goal, 4000));
  return (range.high - range.low) / 2;
}

} // namespace brisel
