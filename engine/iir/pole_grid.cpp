#include "engine/iir/pole_grid.h"

#include "engine/analysis/polynomial_roots.h"

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

// Gauss-Legendre rule of 8 points on [-1, 1], the positive half. [Abramowitz72] table 25.4.
constexpr std::array node{0.1834346424956498, 0.5255324099163290, 0.7966664774136267, 0.9602898564975363};
constexpr std::array node_weight{0.3626837833783620, 0.3137066458778873, 0.2223810344533745, 0.1012285362903763};

void add_panel(double low, double high, std::span<const Resonance> poles, PanelNodes &out) {
  const double middle = (low + high) / 2, half = (high - low) / 2;
  const bool too_long = std::any_of(poles.begin(), poles.end(), [&](const Resonance &pole) {
    return 2 * half > std::hypot(std::max(std::fabs(pole.place - middle) - half, 0.0), pole.distance);
  });
  if (too_long) {
    add_panel(low, middle, poles, out);
    add_panel(middle, high, poles, out);
    return;
  }
  for (std::size_t i = 0; i < 2 * node.size(); i++) {
    const bool left = i < node.size();
    const std::size_t k = left ? node.size() - 1 - i : i - node.size();
    out.place.push_back(middle + (left ? -half : half) * node[k]);
    out.weight.push_back(half * node_weight[k]);
  }
}

std::vector<Resonance> resonances(std::span<const std::complex<double>> poles) {
  std::vector<Resonance> found;
  for (const auto &pole : poles)
    if (pole.imag() >= 0 && pole != 0.0)
      found.push_back({std::arg(pole), std::fabs(std::log(std::abs(pole)))}); // in the plane of log z
  return found;
}

} // namespace

std::vector<std::complex<double>> section_poles(const SectionEntry &sections) {
  std::vector<std::complex<double>> poles;
  for (const Triple &t : std::span(sections.denominators).first(static_cast<std::size_t>(sections.section_count)))
    if (const QuadraticRoots roots = quadratic_roots(t); roots.kind != RootKind::none) {
      poles.push_back(roots.first);
      if (roots.kind == RootKind::distinct_real) poles.push_back(roots.second);
    }
  return poles;
}

PanelNodes panel_nodes(double low, double high, std::span<const Resonance> poles, int panels) {
  const double nearest = 1e-12 * (high - low);
  if (std::any_of(poles.begin(), poles.end(), [&](const Resonance &pole) { return !(pole.distance > nearest); }))
    return {};
  PanelNodes out{{low}, {0}};
  for (int i = 0; i < panels; i++)
    add_panel(low + (high - low) * i / panels, low + (high - low) * (i + 1) / panels, poles, out);
  out.place.push_back(high);
  out.weight.push_back(0);
  return out;
}

CirclePoints::CirclePoints(std::vector<double> angles) {
  set({std::move(angles), {}});
}

// More panels than the poles need, for zeros make a polynomial of that degree.
CirclePoints::CirclePoints(std::span<const std::complex<double>> poles) {
  set(panel_nodes(0, std::numbers::pi, resonances(poles), 8 + static_cast<int>(poles.size() / 2)));
}

CirclePoints::CirclePoints(const SectionEntry &sections) : CirclePoints(section_poles(sections)) {}

void CirclePoints::set(PanelNodes nodes) {
  place = std::move(nodes.place);
  weight = std::move(nodes.weight);
  for (const double angle : place) {
    half_sine.push_back(std::sin(angle / 2));
    half_cosine.push_back(std::cos(angle / 2));
  }
}

double CirclePoints::magnitude(const Triple &t, std::size_t i) const {
  return std::sqrt(std::norm(value(t, i)));
}

std::complex<double> CirclePoints::value(const Triple &t, std::size_t i) const {
  const double s = half_sine[i], c = half_cosine[i];
  const long double ends = static_cast<long double>(t[0]) + t[2];
  // cos w is 1 - 2 s^2 and 2 c^2 - 1.
  const double real = s < c ? static_cast<double>(t[1] + ends) - 2 * s * s * static_cast<double>(ends)
                            : static_cast<double>(t[1] - ends) + 2 * c * c * static_cast<double>(ends);
  return {real, (t[0] - t[2]) * 2 * s * c};
}

std::vector<std::complex<double>> CirclePoints::places() const {
  std::vector<std::complex<double>> z(size());
  for (std::size_t i = 0; i < size(); i++) z[i] = std::polar(1.0, place[i]);
  return z;
}

double CirclePoints::mean(std::span<const double> values) const {
  double sum = 0;
  for (std::size_t i = 0; i < values.size(); i++) sum += weight[i] * values[i];
  return sum / std::numbers::pi;
}

Peak refined_peak(const std::vector<double> &place, const std::vector<double> &magnitude, const MagnitudesAt &at) {
  constexpr int rounds = 4, steps = 16; // each narrows the search to an eighth
  std::vector<double> x = place, y = magnitude;
  for (int round = 0;; round++) {
    const auto best = static_cast<std::size_t>(std::max_element(y.begin(), y.end()) - y.begin());
    if (round == rounds) return {y[best], x[best]};
    const double low = x[best > 0 ? best - 1 : best], high = x[std::min(best + 1, x.size() - 1)];
    x.resize(steps + 1);
    for (int i = 0; i <= steps; i++) x[static_cast<std::size_t>(i)] = low + (high - low) * i / steps;
    y = at(x);
  }
}

Peak peak_or_missed(Peak seen, const std::vector<double> &place, const std::vector<double> &magnitude,
                    const MagnitudesAt &at) {
  if (magnitude.empty() || !std::isnormal(seen.magnitude)) return seen;
  constexpr double near_it = 1 + (noticeable_miss - 1) / 2; // refining adds less than the other half
  if (!(*std::max_element(magnitude.begin(), magnitude.end()) > near_it * seen.magnitude)) return seen;
  const Peak found = refined_peak(place, magnitude, at);
  return std::isfinite(found.magnitude) && found.magnitude > noticeable_miss * seen.magnitude ? found : seen;
}

} // namespace brisel
