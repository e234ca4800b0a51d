#include "engine/iir/cascade_gain.h"

#include "engine/iir/pole_grid.h"

#include <algorithm>
#include <cmath>

namespace brisel {

GainGrid::GainGrid() : cosine(gain_grid_points), sine(gain_grid_points) {
  for (std::size_t i = 0; i < size(); i++) {
    cosine[i] = std::cos(angle(i));
    sine[i] = std::sin(angle(i));
  }
}

double GainGrid::angle(std::size_t i) const {
  return static_cast<double>(i) * std::numbers::pi / static_cast<double>(size() - 1);
}

double GainGrid::magnitude(const Triple &t, std::size_t i) const {
  return std::sqrt(std::norm(value(t, i)));
}

std::vector<std::complex<double>> GainGrid::places() const {
  std::vector<std::complex<double>> z(size());
  for (std::size_t i = 0; i < size(); i++) z[i] = {cosine[i], sine[i]};
  return z;
}

// Product of the section magnitudes; a section is left out where its denominator vanishes. The products are formed
// section by section, as the scaling does, so that both find the same peak to the last digit.
template <class Grid> static std::vector<double> product_magnitudes(const SectionEntry &cascade, const Grid &grid) {
  std::vector<double> product(grid.size(), 1.0);
  for (int k = 0; k < cascade.section_count; k++)
    for (std::size_t i = 0; i < grid.size(); i++) {
      const double d = grid.magnitude(cascade.denominators[k], i);
      if (d != 0) product[i] *= grid.magnitude(cascade.numerators[k], i) / d;
    }
  return product;
}

static double largest(std::span<const double> magnitudes) {
  double peak = 0;
  for (const double m : magnitudes) {
    if (std::isnan(m)) return m;
    peak = std::max(peak, m);
  }
  return peak;
}

// The largest magnitude on the grid or, where that misses it, near the poles.
static double true_peak(double seen, const CirclePoints &near_poles, const MagnitudesAt &at) {
  return peak_or_missed({seen, 0}, near_poles.angles(), at(near_poles.angles()), at).magnitude;
}

static double product_peak(const SectionEntry &cascade, const GainGrid &grid) {
  return true_peak(largest(product_magnitudes(cascade, grid)), CirclePoints(cascade), [&](std::vector<double> angles) {
    return product_magnitudes(cascade, CirclePoints(std::move(angles)));
  });
}

double missed_by_grid(const SectionEntry &cascade) {
  const GainGrid grid;
  const double seen = largest(product_magnitudes(cascade, grid));
  return std::isnormal(seen) ? product_peak(cascade, grid) / seen : 1;
}

// Brings every section to a magnitude near 1 where the product is largest, in powers of two, and returns the power
// taken out of the product.
static int even_out(SectionEntry &cascade, const GainGrid &grid) {
  auto log_magnitude = [&](int k, std::size_t i) {
    const double d = grid.magnitude(cascade.denominators[k], i);
    return d == 0 ? 0 : std::log2(grid.magnitude(cascade.numerators[k], i) / d);
  };
  std::size_t best = 0;
  double largest = -HUGE_VAL;
  for (std::size_t i = 0; i < grid.size(); i++) {
    double sum = 0;
    for (int k = 0; k < cascade.section_count; k++) sum += log_magnitude(k, i);
    if (sum > largest) {
      largest = sum;
      best = i;
    }
  }
  if (!std::isfinite(largest)) return 0;
  int taken = 0;
  for (int k = 0; k < cascade.section_count; k++) {
    const int exponent = static_cast<int>(std::lround(log_magnitude(k, best)));
    for (double &b : cascade.numerators[k]) b = std::ldexp(b, -exponent);
    taken += exponent;
  }
  return taken;
}

double compute_cas_gain(SectionEntry &cascade) {
  const GainGrid grid;
  double peak = product_peak(cascade, grid), old_gain = cascade.gain;
  if (!std::isnormal(peak) || !std::isnormal(1 / peak)) {
    old_gain = std::ldexp(old_gain, even_out(cascade, grid));
    peak = product_peak(cascade, grid);
  }
  cascade.gain = peak == 0 || !std::isfinite(peak) ? 1 : 1 / peak;
  return old_gain * peak;
}

template <class Grid> static std::vector<double> sum_magnitudes(const SectionEntry &parallel, const Grid &grid) {
  std::vector<double> sum(grid.size());
  for (std::size_t i = 0; i < grid.size(); i++) {
    std::complex<double> h = parallel.gain;
    for (int k = 0; k < parallel.section_count; k++)
      if (const auto d = grid.value(parallel.denominators[k], i); d != 0.0)
        h += grid.value(parallel.numerators[k], i) / d;
    sum[i] = std::abs(h);
  }
  return sum;
}

double regain_parallel(SectionEntry &parallel) {
  parallel.pars = 1;
  const double seen = largest(sum_magnitudes(parallel, GainGrid()));
  if (std::isnan(seen)) return seen;
  const double peak = true_peak(seen, CirclePoints(parallel), [&](std::vector<double> angles) {
    return sum_magnitudes(parallel, CirclePoints(std::move(angles)));
  });
  if (peak == 0 || peak == 1) return peak;
  const double s = 1 / peak;
  parallel.gain *= s;
  for (int k = 0; k < parallel.section_count; k++)
    for (double &b : parallel.numerators[k]) b *= s;
  return peak;
}

template <class Entry, class ValuesOf> static double regain(Entry &entry, Places poles, ValuesOf values_of) {
  const double old_gain = entry.gain;
  entry.gain = 1;
  const auto magnitudes = [&](const Values &places) {
    std::vector<double> found;
    for (const std::complex<double> h : values_of(places))
      found.push_back(std::isfinite(std::abs(h)) ? std::abs(h) : 0);
    return found;
  };
  const double peak =
      true_peak(largest(magnitudes(GainGrid().places())), CirclePoints(poles),
                [&](std::vector<double> angles) { return magnitudes(CirclePoints(std::move(angles)).places()); });
  if (peak != 0) entry.gain = 1 / peak;
  return old_gain * peak;
}

double regain_ratio(RatioEntry &ratio, Places poles) {
  return regain(ratio, poles, [&](const Values &z) { return ratio_values(Domain::z, ratio, z); });
}

double regain_lattice(LatticeEntry &lattice, Places poles) {
  return regain(lattice, poles, [&](const Values &z) { return lattice_values(lattice, z); });
}

double regain_ladder(LadderEntry &ladder, Places poles) {
  return regain(ladder, poles, [&](const Values &z) { return ladder_values(ladder, z); });
}

void normalize_ratio(RatioEntry &ratio) {
  const auto numerator = std::span(ratio.numerator).first(ratio.numerator_order + 1);
  const auto denominator = std::span(ratio.denominator).first(ratio.denominator_order + 1);
  const double a0 = denominator[0];
  const auto first = std::find_if(numerator.begin(), numerator.end(), [](double b) { return b != 0; });
  if (a0 == 0 || first == numerator.end()) return;
  const double b = *first;
  ratio.gain *= b / a0;
  for (double &a : denominator) a /= a0;
  for (double &c : numerator) c /= b;
}

void normalize_sections(SectionEntry &cascade) {
  for (Triple &numerator : std::span(cascade.numerators).first(cascade.section_count)) {
    const auto first = std::find_if(numerator.begin(), numerator.end(), [](double b) { return b != 0; });
    if (first == numerator.end()) continue;
    const double b = *first;
    cascade.gain *= b;
    for (double &c : numerator) c /= b;
  }
}

} // namespace brisel
