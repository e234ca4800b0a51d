// droop_fit.cpp - least p-th approximation of a gain in decibels by second-order sections, p growing to 64, where it is
// the largest error that counts.
//
// A factor 1 + b1 z^-1 + b2 z^-2 has both roots inside the radius rho when b2 = rho^2 tanh u and b1 = rho (1 + tanh u)
// tanh v: the stability triangle of Jury's test, drawn smaller. u and v take any value; they are what is varied, and
// whatever they are, the sections are stable and of minimum phase. Errors are in nepers: they are linear in the logs of
// the factors, and the constant costs nothing.
//
// Outside the bands nothing is wanted, so that the sections could rise to anything there. They are asked, with a
// thousandth of the weight, to stay below the gain that the nearest band edges want.
#include "engine/iir/droop_fit.h"

#include "engine/iir/least_power.h"
#include "engine/iir/reorder.h"

#include <array>
#include <complex>
#include <numbers>
#include <random>

namespace brisel {

namespace {

constexpr double pi = std::numbers::pi;
constexpr double rho = safe_root_radius;
constexpr double neper_db = 20 / std::numbers::ln10;
constexpr double outer_weight = 1e-3;
constexpr double most_flexed = 4; // of u and v: nearer the radius their moves no longer matter
using Vector = Eigen::VectorXd;
using Matrix = Eigen::MatrixXd;

struct Factor {
  double u, v;
};

// u and v of every factor, numerators and denominators in turn, then the constant.
struct Trial {
  std::vector<Factor> factors;
  double constant = 0;

  Eigen::Index unknowns() const { return static_cast<Eigen::Index>(2 * factors.size() + 1); }
  Trial moved(const Vector &step) const {
    Trial out = *this;
    Eigen::Index at = 0;
    for (Factor &f : out.factors) {
      f.u = std::clamp(f.u + step[at], -most_flexed, most_flexed);
      f.v = std::clamp(f.v + step[at + 1], -most_flexed, most_flexed);
      at += 2;
    }
    out.constant += step[at];
    return out;
  }
};

Triple triple_of(const Factor &f) {
  const double a = std::tanh(f.u);
  return {1, rho * (1 + a) * std::tanh(f.v), rho * rho * a};
}

struct Place {
  double c, c2; // cosines of w and 2 w
  double wanted;
  double weight;
  bool from_above; // only a gain above the wanted one is an error
};

// A factor as its gain needs it: |factor|^2 = even + odd cos w + twice cos 2w.
struct Shape {
  double b1, b2, even, odd, twice;
  double b1_along_u, b2_along_u, b1_along_v;

  explicit Shape(const Factor &f) {
    const double a = std::tanh(f.u), b = std::tanh(f.v);
    b1 = rho * (1 + a) * b;
    b2 = rho * rho * a;
    even = 1 + b1 * b1 + b2 * b2;
    odd = 2 * b1 * (1 + b2);
    twice = 2 * b2;
    b1_along_u = rho * b * (1 - a * a);
    b2_along_u = rho * rho * (1 - a * a);
    b1_along_v = rho * (1 + a) * (1 - b * b);
  }
  double square(const Place &x) const { return even + odd * x.c + twice * x.c2; }
};

class Errors {
public:
  explicit Errors(const std::vector<Place> &all_places) : places(all_places) {}

  Vector operator()(const Trial &trial) const {
    const std::vector<Shape> shapes = shapes_of(trial);
    Vector e(size());
    for (Eigen::Index i = 0; i < size(); i++) e[i] = error_at(i, shapes, trial.constant);
    return e;
  }
  Vector operator()(const Trial &trial, Matrix &slopes) const {
    const std::vector<Shape> shapes = shapes_of(trial);
    Vector e(size());
    for (Eigen::Index i = 0; i < size(); i++) {
      const Place &x = places[static_cast<std::size_t>(i)];
      e[i] = error_at(i, shapes, trial.constant);
      if (x.from_above && e[i] <= 0) {
        slopes.col(i).setZero();
        continue;
      }
      Eigen::Index at = 0;
      double part = x.weight; // of numerators, less it of denominators
      for (const Shape &f : shapes) {
        const double over = part / f.square(x);
        const double along_b1 = (f.b1 + (1 + f.b2) * x.c) * over, along_b2 = (f.b2 + x.c2 + f.b1 * x.c) * over;
        slopes(at++, i) = along_b1 * f.b1_along_u + along_b2 * f.b2_along_u;
        slopes(at++, i) = along_b1 * f.b1_along_v;
        part = -part;
      }
      slopes(at, i) = x.weight;
    }
    return e;
  }

  double mean_in_bands(const Trial &trial) const {
    const Vector e = (*this)(trial);
    double sum = 0, count = 0;
    for (Eigen::Index i = 0; i < size(); i++)
      if (!places[static_cast<std::size_t>(i)].from_above) {
        sum += e[i];
        count++;
      }
    return sum / count;
  }

private:
  Eigen::Index size() const { return static_cast<Eigen::Index>(places.size()); }
  static std::vector<Shape> shapes_of(const Trial &trial) { return {trial.factors.begin(), trial.factors.end()}; }
  double error_at(Eigen::Index i, const std::vector<Shape> &shapes, double constant) const {
    const Place &x = places[static_cast<std::size_t>(i)];
    double square = 1;
    for (std::size_t k = 0; k < shapes.size(); k += 2) square *= shapes[k].square(x) / shapes[k + 1].square(x);
    const double error = x.weight * (constant + 0.5 * std::log(square) - x.wanted);
    return x.from_above ? std::max(error, 0.0) : error;
  }

  const std::vector<Place> &places;
};

// Closer towards the ends of the band, where the errors of such an approximation change fastest.
std::vector<double> points_in(const FrequencyBand &band, int steps) {
  std::vector<double> w;
  for (int i = 0; i <= steps; i++) {
    const double rise = std::sin(pi / 2 * i / steps);
    w.push_back(i == steps ? band.high : band.low + (band.high - band.low) * rise * rise);
  }
  return w;
}

std::vector<FrequencyBand> gaps_between(const std::vector<FrequencyBand> &bands) {
  std::vector<FrequencyBand> gaps;
  double from = 0;
  for (const FrequencyBand &band : bands) {
    if (band.low > from) gaps.push_back({from, band.low});
    from = band.high;
  }
  if (from < pi) gaps.push_back({from, pi});
  return gaps;
}

std::vector<Place> places_of(const DroopGoal &goal) {
  std::vector<Place> places;
  const auto add = [&](double w, double wanted_db, double weight, bool from_above) {
    places.push_back({std::cos(w), std::cos(2 * w), wanted_db / neper_db, weight, from_above});
  };
  for (const FrequencyBand &band : goal.bands)
    for (const double w : points_in(band, 120 / static_cast<int>(goal.bands.size())))
      add(w, goal.wanted_db(w), 1, false);
  for (const FrequencyBand &gap : gaps_between(goal.bands)) {
    // A straight line between the edges of two bands, level beside one.
    const double left = goal.wanted_db(gap.low > 0 ? gap.low : gap.high),
                 right = goal.wanted_db(gap.high < pi ? gap.high : gap.low);
    for (const double w : points_in(gap, 16))
      add(w, left + (right - left) * (w - gap.low) / (gap.high - gap.low), outer_weight, true);
  }
  return places;
}

// The factor 1 + b1 z^-1 + b2 z^-2.
Factor factor_of(double b1, double b2) {
  const double a = std::clamp(b2 / (rho * rho), -0.99, 0.99), b = b1 / (rho * (1 + a));
  return {std::atanh(a), std::atanh(std::clamp(b, -0.99, 0.99))};
}

// Random starts, the same every time.
class Starts {
public:
  explicit Starts(const DroopGoal &goal) : bands(goal.bands) {}
  Trial all(int sections) {
    Trial trial;
    for (int i = 0; i < 2 * sections; i++) trial.factors.push_back(drawn());
    return trial;
  }
  /// Adds a pole pair and a zero pair that almost cancel.
  Trial with_one_more(Trial trial) {
    const Factor pole = drawn();
    trial.factors.push_back({0.95 * pole.u, 0.95 * pole.v});
    trial.factors.push_back(pole);
    return trial;
  }

private:
  double within(double low, double high) { return low + (high - low) * 0x1p-32 * generator(); }
  double radius() { return 1 - std::exp(within(std::log(1 - rho), 0)); }
  // A corner of the wanted curve at half the sampling frequency takes real roots ever closer to -1, a steep end of a
  // band roots beside it. Others lie anywhere.
  Factor drawn() {
    const FrequencyBand &band = bands[generator() % bands.size()];
    const double width = band.high - band.low, kind = within(0, 1);
    if (band.high >= pi && kind < 0.5) {
      const double first = -radius(), second = -radius();
      return factor_of(-first - second, first * second);
    }
    double angle = within(0, pi);
    if (kind < 0.4)
      angle = within(band.low, band.high);
    else if (kind < 0.8)
      angle = kind < 0.6 ? band.low - within(0, width / 2) : band.high + within(0, width / 2);
    const double distance = radius();
    return factor_of(-2 * distance * std::cos(angle), distance * distance);
  }

  const std::vector<FrequencyBand> &bands;
  std::mt19937 generator{1};
};

SectionEntry sections_of(const Trial &trial) {
  SectionEntry out{};
  out.gain = out.pars = 1;
  out.sample_rate = two_pi;
  for (std::size_t k = 0; k < trial.factors.size(); k += 2) {
    const auto at = static_cast<std::size_t>(out.section_count++);
    out.numerators[at] = triple_of(trial.factors[k]);
    out.denominators[at] = triple_of(trial.factors[k + 1]);
    out.order += 2;
  }
  PoleZeroEntry work;
  int dropped_delay = 0;
  return reorder_sections(out, work, dropped_delay) && dropped_delay == 0 ? out : SectionEntry{};
}

double gain_db(const SectionEntry &sections, double w) {
  const std::complex<double> x = std::polar(1.0, -w);
  double square = 1;
  for (int i = 0; i < sections.section_count; i++) {
    const auto &b = sections.numerators[i], &a = sections.denominators[i];
    square *= std::norm(b[0] + x * (b[1] + x * b[2])) / std::norm(a[0] + x * (a[1] + x * a[2]));
  }
  return 10 * std::log10(square);
}

// Largest less smallest value in the bands, on a grid far denser than the one of the design.
template <class Curve> double range_in(const std::vector<FrequencyBand> &bands, Curve curve) {
  double low = HUGE_VAL, high = -HUGE_VAL;
  for (const FrequencyBand &band : bands)
    for (const double w : points_in(band, 1000)) {
      const double value = curve(w);
      if (!std::isfinite(value)) return HUGE_VAL;
      low = std::min(low, value);
      high = std::max(high, value);
    }
  return high - low;
}

struct Candidate {
  Trial trial;
  double size;
};

// The best of several starts. All go a short way, some go on.
Candidate best_of(const std::vector<Place> &places, std::vector<Trial> all) {
  constexpr std::size_t go_on_count = 3;
  const Errors errors(places);
  const std::vector<double> weight(places.size(), 1.0 / static_cast<double>(places.size()));
  std::vector<Candidate> found;
  for (Trial &trial : all) {
    trial.constant -= errors.mean_in_bands(trial);
    reduce_power_sum(trial, errors, weight, 2, 20, 1e-3);
    found.push_back({trial, errors(trial).squaredNorm()});
  }
  std::stable_sort(found.begin(), found.end(), [](const Candidate &a, const Candidate &b) { return a.size < b.size; });
  Candidate best{{}, HUGE_VAL};
  for (std::size_t i = 0; i < go_on_count; i++) {
    Trial trial = found[i].trial;
    for (double p = 2; p <= 64; p *= 2) reduce_power_sum(trial, errors, weight, p, 30, 1e-3);
    const double size = errors(trial).cwiseAbs().maxCoeff();
    if (size < best.size) best = {trial, size};
  }
  return best;
}

// Random ones, half of them by adding a section to what one less has found.
std::vector<Trial> starts_of(Starts &starts, int sections, const Trial &one_less) {
  constexpr int start_count = 20;
  std::vector<Trial> all;
  for (int i = 0; i < start_count; i++)
    all.push_back(sections > 1 && i < start_count / 2 ? starts.with_one_more(one_less) : starts.all(sections));
  return all;
}

} // namespace

double droop_range(const DroopGoal &goal) {
  return range_in(goal.bands, goal.wanted_db);
}

std::optional<DroopFit> fewest_droop_sections(const DroopGoal &goal, double enough_db, int most) {
  constexpr double worth_a_section = 0.9;
  if (!std::isfinite(droop_range(goal))) return std::nullopt;
  const std::vector<Place> places = places_of(goal);
  Starts starts(goal);
  std::optional<DroopFit> best;
  Trial before;
  for (int count = 1; count <= most; count++) {
    const Candidate found = best_of(places, starts_of(starts, count, before));
    if (!std::isfinite(found.size)) continue;
    before = found.trial;
    const SectionEntry sections = sections_of(found.trial);
    if (sections.section_count != count) continue;
    const double residual = range_in(goal.bands, [&](double w) { return gain_db(sections, w) - goal.wanted_db(w); });
    if (!std::isfinite(residual)) continue;
    if (!best || residual <= enough_db || residual < worth_a_section * best->residual_db)
      best = DroopFit{sections, residual};
    if (best && best->residual_db <= enough_db) break;
  }
  return best;
}

} // namespace brisel
