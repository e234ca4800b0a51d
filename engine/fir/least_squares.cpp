// least_squares.cpp - moments of bands and gaps; blocked Cholesky factorization of the normal equations.
#include "engine/fir/least_squares.h"

#include "engine/core/multiversion.h"
#include "engine/fir/linear_program.h"

#include <Eigen/Cholesky>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>

namespace brisel {

namespace {

// Coefficient k belongs to the cosine (symmetric) or sine (antisymmetric) of k + offset / 2 times w.
int twice_offset(const BandPlan &plan) {
  return plan.odd_length() ? (plan.symmetric() ? 0 : 2) : 1;
}

// Nodes and weights of a Gauss-Legendre rule on -1 to 1: what 16 points integrate exactly, a polynomial of degree 31,
// follows a cosine over 8 radians to the last digit.
constexpr int rule_points = 16;
constexpr double radians_per_panel = 8;
constexpr std::array<double, rule_points / 2> rule_nodes{
    0.0950125098376374402, 0.2816035507792589132, 0.4580167776572273863, 0.6178762444026437484,
    0.7554044083550030339, 0.8656312023878317439, 0.9445750230732325761, 0.9894009349916499326};
constexpr std::array<double, rule_points / 2> rule_weights{
    0.1894506104550684963, 0.1826034150449235889, 0.1691565193950025382, 0.1495959888165767321,
    0.1246289712555338721, 0.0951585116824927848, 0.0622535239386478929, 0.0271524594117540949};

struct Nodes {
  std::vector<double> w, weight, weight_times_desired; // the squared weight, the rule's weight included
};

constexpr int block = 64;
// Adds up weight[i] * f((k + offset) w[i]) over the nodes for every k: f is the cosine, the sine, or 1 - cos.
enum class Wave { cosine, sine, versine };
BRISEL_AVX2_CLONE void add_wave_sums(const std::vector<double> &w, const std::vector<double> &weight, Wave wave,
                                     double offset, std::vector<double> &sums) {
  const double step = wave == Wave::versine ? 0.5 : 1; // 1 - cos x = 2 sin^2(x / 2), of which small x lose no digit
  for (std::size_t first = 0; first < w.size(); first += block) {
    const int count = static_cast<int>(std::min<std::size_t>(block, w.size() - first));
    double re[block] = {}, im[block] = {}, turn_re[block] = {}, turn_im[block] = {}, u[block] = {};
    for (int i = 0; i < count; i++) {
      u[i] = weight[first + i];
      turn_re[i] = std::cos(step * w[first + i]);
      turn_im[i] = std::sin(step * w[first + i]);
    }
    for (std::size_t k = 0; k < sums.size(); k++) {
      if (k % 64 == 0) { // afresh, before rounding has added up
        for (int i = 0; i < count; i++) {
          re[i] = std::cos((static_cast<double>(k) + offset) * step * w[first + i]);
          im[i] = std::sin((static_cast<double>(k) + offset) * step * w[first + i]);
        }
      }
      double lane[8] = {};
      for (int i = 0; i < block; i++) {
        const double value = wave == Wave::cosine ? re[i] : wave == Wave::sine ? im[i] : 2 * im[i] * im[i];
        lane[i % 8] += u[i] * value;
        const double next = re[i] * turn_re[i] - im[i] * turn_im[i];
        im[i] = re[i] * turn_im[i] + im[i] * turn_re[i];
        re[i] = next;
      }
      sums[k] += ((lane[0] + lane[1]) + (lane[2] + lane[3])) + ((lane[4] + lane[5]) + (lane[6] + lane[7]));
    }
  }
}

// Integral of (value + slope (w - from)) e^(j kappa w) from `from` to `to`.
std::complex<double> line_moment(double from, double to, double value, double slope, double kappa) {
  const double width = to - from;
  if (kappa == 0) return width * (value + 0.5 * slope * width);
  const std::complex<double> start = std::polar(1.0, kappa * from), end = std::polar(1.0, kappa * to), j(0, 1);
  return (end * (value + slope * width) - start * value) / (j * kappa) + slope * (end - start) / (kappa * kappa);
}

class Moments {
public:
  explicit Moments(const BandPlan &plan)
      : plan(plan), unknowns(coefficient_count(plan.length, plan.symmetric())), offset(0.5 * twice_offset(plan)),
        least_frequency(std::numbers::pi / (16 * unknowns)) {
    const std::size_t cosines = static_cast<std::size_t>(2 * unknowns - 1 + twice_offset(plan));
    for (auto *sums : {&m.band_cosines, &m.gap_cosines}) sums->assign(cosines, 0);
    for (auto *sums : {&m.band_rights, &m.gap_rights}) sums->assign(static_cast<std::size_t>(unknowns), 0);
  }

  SquareMoments all() {
    for (int b = 0; b < plan.band_count; b++) add_band(b);
    add_nodes();
    const PlanBand &first = plan.bands[0], &last = plan.bands[plan.band_count - 1];
    const double at_first = band_desired(plan, first.lower, 0);
    const double at_last = band_desired(plan, last.upper, plan.band_count - 1);
    const bool zero_at_half = plan.symmetric() != plan.odd_length();
    add_gap(0, first.lower, plan.symmetric() ? at_first : 0, at_first);
    for (int b = 1; b < plan.band_count; b++) {
      const double before = plan.bands[b - 1].upper, after = plan.bands[b].lower;
      add_gap(before, after, band_desired(plan, before, b - 1), band_desired(plan, after, b));
    }
    add_gap(last.upper, std::numbers::pi, at_last, zero_at_half ? 0 : at_last);
    return std::move(m);
  }

private:
  // Where the desired value of a band has corners, and its ends.
  std::vector<double> corners(int b) const {
    const PlanBand &band = plan.bands[b];
    std::vector<double> at{band.lower};
    if (band.shape == BandShape::table) {
      const MagnitudeTable &table = plan.tables[b];
      for (int i = 0; i < table.count; i++)
        if (table.frequency[i] > at.back() && table.frequency[i] < band.upper) at.push_back(table.frequency[i]);
    }
    if (band.relative && least_frequency > at.back() && least_frequency < band.upper) {
      at.push_back(least_frequency);
      std::sort(at.begin(), at.end());
    }
    at.push_back(band.upper);
    return at;
  }

  // A weight in inverse proportion to frequency has no square integral at 0 unless the error vanishes there, as that of
  // antisymmetric taps and a slope does; else it rises to where equiripple grids have their first point, no further.
  double squared_weight(double w, int b) const {
    const PlanBand &band = plan.bands[b];
    const bool bounded = !plan.symmetric() && band.shape == BandShape::slope;
    const double weight = band_weight(plan, band.relative && !bounded ? std::max(w, least_frequency) : w, b);
    return weight * weight;
  }

  void add_band(int b) {
    const PlanBand &band = plan.bands[b];
    const bool even_weight = !band.relative && (plan.weight_exponent == 0 || band.side == StopSide::none);
    const bool linear = band.shape == BandShape::constant || band.shape == BandShape::slope ||
                        band.shape == BandShape::table || band.shape == BandShape::half_band_prototype;
    const bool closed = even_weight && (band.value == 0 || (linear && !plan.compensation.on));
    const std::vector<double> at = corners(b);
    for (std::size_t i = 0; i + 1 < at.size(); i++) {
      if (closed)
        add_line(at[i], at[i + 1], band_desired(plan, at[i], b), band_desired(plan, at[i + 1], b),
                 squared_weight(at[i], b), m.band_cosines, m.band_rights);
      else
        add_panels(at[i], at[i + 1], b);
    }
  }

  void add_line(double from, double to, double value, double end_value, double weight, std::vector<double> &cosines,
                std::vector<double> &rights) const {
    for (std::size_t k = 0; k < cosines.size(); k++)
      cosines[k] += weight * line_moment(from, to, 1, 0, static_cast<double>(k)).real();
    const double slope = (end_value - value) / (to - from);
    for (std::size_t k = 0; k < rights.size(); k++) {
      const auto moment = line_moment(from, to, value, slope, static_cast<double>(k) + offset);
      rights[k] += weight * (plan.symmetric() ? moment.real() : moment.imag());
    }
  }

  void add_gap(double from, double to, double value, double end_value) {
    if (to - from > 4 * band_offset) add_line(from, to, value, end_value, 1, m.gap_cosines, m.gap_rights);
  }

  void add_panels(double from, double to, int b) {
    const double widest = std::min(radians_per_panel / (2 * unknowns + 1), (to - from) / 8);
    for (double left = from; left < to;) {
      double right = left + widest;
      if (plan.bands[b].relative && left > 0) right = std::min(right, 2 * left);
      if (right > to - 1e-3 * widest) right = to;
      const double centre = 0.5 * (left + right), reach = 0.5 * (right - left);
      for (int i = 0; i < rule_points; i++) {
        const double w = centre + (i % 2 ? -reach : reach) * rule_nodes[i / 2];
        const double weight = reach * rule_weights[i / 2] * squared_weight(w, b);
        nodes.w.push_back(w);
        nodes.weight.push_back(weight);
        nodes.weight_times_desired.push_back(weight * band_desired(plan, w, b));
      }
      left = right;
    }
  }

  void add_nodes() {
    // Sines have differences of cosine moments: a common constant does not matter, and would cost digits.
    std::vector<double> sums(m.band_cosines.size(), 0);
    add_wave_sums(nodes.w, nodes.weight, plan.symmetric() ? Wave::cosine : Wave::versine, 0, sums);
    for (std::size_t k = 0; k < sums.size(); k++) m.band_cosines[k] += plan.symmetric() ? sums[k] : -sums[k];
    add_wave_sums(nodes.w, nodes.weight_times_desired, plan.symmetric() ? Wave::cosine : Wave::sine, offset,
                  m.band_rights);
  }

  const BandPlan &plan;
  const int unknowns;
  const double offset, least_frequency;
  Nodes nodes;
  SquareMoments m;
};

using Matrix = Eigen::MatrixXd;

// Lower triangle of A = L L^T in place, block by block, so that a long one can be stopped. A pivot within the rounding
// of the matrix is none.
SquaresOutcome factorize(Matrix &a, const Progress &progress) {
  constexpr Eigen::Index columns = 128;
  const Eigen::Index n = a.rows();
  const double least_pivot = std::numeric_limits<double>::epsilon() * a.diagonal().maxCoeff();
  for (Eigen::Index j = 0; j < n; j += columns) {
    const Eigen::Index width = std::min(columns, n - j), rest = n - j - width;
    auto diagonal = a.block(j, j, width, width);
    Eigen::LLT<Eigen::Ref<Matrix>> cholesky(diagonal);
    if (cholesky.info() != Eigen::Success || !(diagonal.diagonal().array().square().minCoeff() > least_pivot))
      return SquaresOutcome::singular;
    if (rest == 0) break;
    auto below = a.block(j + width, j, rest, width);
    diagonal.triangularView<Eigen::Lower>().transpose().solveInPlace<Eigen::OnTheRight>(below);
    a.bottomRightCorner(rest, rest).selfadjointView<Eigen::Lower>().rankUpdate(below, -1);
    const double left = static_cast<double>(rest) / static_cast<double>(n);
    if (!progress(1 - left * left * left)) return SquaresOutcome::stopped;
  }
  return SquaresOutcome::solved;
}

} // namespace

SquareMoments square_moments(const BandPlan &plan) {
  return Moments(plan).all();
}

SquaresOutcome solve_least_squares(const BandPlan &plan, const SquareMoments &moments, double gap_weight,
                                   const Progress &progress, std::vector<double> &half) {
  const int n = coefficient_count(plan.length, plan.symmetric()), sum_offset = twice_offset(plan);
  std::vector<double> m(moments.band_cosines);
  for (std::size_t i = 0; i < m.size(); i++) m[i] += gap_weight * moments.gap_cosines[i];
  Eigen::VectorXd x(n);
  for (int k = 0; k < n; k++) x[k] = moments.band_rights[k] + gap_weight * moments.gap_rights[k];
  Matrix a(n, n);
  const double sign = plan.symmetric() ? 1 : -1;
  for (int l = 0; l < n; l++)
    for (int k = l; k < n; k++) a(k, l) = 0.5 * (m[k - l] + sign * m[k + l + sum_offset]);
  if (const auto outcome = factorize(a, progress); outcome != SquaresOutcome::solved) return outcome;
  a.triangularView<Eigen::Lower>().solveInPlace(x);
  a.triangularView<Eigen::Lower>().transpose().solveInPlace(x);

  half.assign(static_cast<std::size_t>(plan.half_length()), 0);
  const int first = plan.half_length() - n; // the centre tap of odd antisymmetric taps is 0
  for (int k = 0; k < n; k++) half[first + k] = 0.5 * x[k];
  if (plan.symmetric() && plan.odd_length()) half[0] *= 2;
  return SquaresOutcome::solved;
}

} // namespace brisel
