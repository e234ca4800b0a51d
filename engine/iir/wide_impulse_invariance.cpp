// wide_impulse_invariance.cpp - wide residues; zeros of the sum in a variable v of z = centre + scale v, in which
// the poles of a finely sampled filter do not crowd.
#include "engine/iir/wide_impulse_invariance.h"

#include "engine/analysis/form_conversions.h"
#include "engine/analysis/pole_zero_form.h"
#include "engine/analysis/root_polishing.h"

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

constexpr Wide epsilon = 1e-34; // less than the rounding of a Wide; tolerances are multiples of it

Wide norm(const WideRoot &x) {
  return x.re * x.re + x.im * x.im;
}
WideRoot operator/(const WideRoot &x, const WideRoot &y) {
  const Wide n = norm(y);
  return {(x.re * y.re + x.im * y.im) / n, (x.im * y.re - x.re * y.im) / n};
}
WideRoot widened(std::complex<double> x) {
  return {x.real(), x.imag()};
}

Wide square_root(Wide x) {
  Wide root = std::sqrt(static_cast<long double>(x));
  if (root != 0) root = (root + x / root) / 2;
  return root;
}

WideRoot exponential(WideRoot x) {
  int halvings = 0;
  for (long double magnitude = size(x); magnitude > 0.02L && halvings < 40; magnitude /= 2) halvings++;
  const Wide scale = std::ldexp(1.0, -halvings);
  x = {x.re * scale, x.im * scale};
  WideRoot sum{1, 0}, term{1, 0};
  for (int k = 1; k <= 16; k++) { // 0.02^16 / 16! is below the last digit
    term = term * x * WideRoot{Wide(1) / k, 0};
    sum = sum + term;
  }
  for (; halvings > 0; halvings--) sum = sum * sum;
  return sum;
}

WideRoot value(const Triple &t, const WideRoot &x) {
  return (WideRoot{t[0], 0} * x + WideRoot{t[1], 0}) * x + WideRoot{t[2], 0};
}

// Finite roots of a triple; conjugates are neighbours, the upper one first.
std::vector<WideRoot> roots(const Triple &t) {
  const Wide a = t[0], b = t[1], c = t[2];
  if (a == 0) return b == 0 ? std::vector<WideRoot>{} : std::vector<WideRoot>{{-c / b, 0}};
  const Wide half = b / 2, discriminant = half * half - a * c;
  if (discriminant < 0) {
    const Wide im = magnitude(square_root(-discriminant) / a);
    return {{-half / a, im}, {-half / a, -im}};
  }
  const Wide root = square_root(discriminant), q = -(half < 0 ? half - root : half + root);
  return {{q / a, 0}, {q == 0 ? Wide(0) : c / q, 0}};
}

// direct + step * sum of residue / (1 - e^(step pole) z^-1), in v of z = centre + scale v.
struct WideSum {
  Wide direct = 0, step = 0, centre = 1, scale = 1;
  std::vector<WideRoot> residues, places; // of the poles, in v

  WideRoot value_at(std::complex<double> z) const {
    const WideRoot wide = widened(z), v = (wide - WideRoot{centre, 0}) * WideRoot{1 / scale, 0};
    WideRoot sum{0, 0};
    for (std::size_t k = 0; k < places.size(); k++) sum = sum + residues[k] / (v - places[k]);
    return WideRoot{direct, 0} + WideRoot{step / scale, 0} * wide * sum;
  }
};

std::optional<WideSum> wide_sum(const SectionEntry &analog, double step, int centre) {
  WideSum sum;
  sum.centre = centre;
  sum.step = step;
  std::vector<WideRoot> poles;
  std::vector<ReducedSection> sections;
  Wide lead = analog.gain, denominator_lead = 1;
  int zeros = 0;
  for (int k = 0; k < analog.section_count; k++) {
    const ReducedSection s = reduced(analog.numerators[k], analog.denominators[k]);
    if (s.numerator_degree < 0 || s.denominator_degree < 0) return std::nullopt;
    for (const WideRoot &pole : roots(s.denominator)) poles.push_back(pole);
    lead *= Wide(s.numerator[2 - s.numerator_degree]);
    denominator_lead *= Wide(s.denominator[2 - s.denominator_degree]);
    sections.push_back(s);
    zeros += s.numerator_degree;
  }
  if (poles.empty() || zeros > static_cast<int>(poles.size())) return std::nullopt;
  if (zeros == static_cast<int>(poles.size())) sum.direct = lead / denominator_lead;
  for (std::size_t k = 0; k < poles.size(); k++) {
    WideRoot residue{analog.gain / denominator_lead, 0};
    for (const ReducedSection &s : sections) residue = residue * value(s.numerator, poles[k]);
    for (std::size_t j = 0; j < poles.size(); j++) {
      if (j == k) continue;
      const WideRoot apart = poles[k] - poles[j];
      if (!(size(apart) > 1e-7L * size(poles[k]))) return std::nullopt;
      residue = residue / apart;
    }
    sum.residues.push_back(residue);
    sum.places.push_back(exponential(poles[k] * WideRoot{sum.step, 0}) - WideRoot{sum.centre, 0});
  }
  long double reach = 0;
  for (const WideRoot &place : sum.places) reach = std::max(reach, size(place));
  sum.scale = reach;
  for (WideRoot &place : sum.places) place = place * WideRoot{1 / sum.scale, 0};
  return sum;
}

// Numerator of the sum over the product of its poles, descending powers of v; leading coefficients that are nothing but
// rounding are 0. Without a direct term the factor z is left out.
std::vector<Wide> numerator(const WideSum &sum) {
  const std::size_t n = sum.places.size();
  std::vector<WideRoot> p(1), d{{1, 0}};            // ascending powers
  std::vector<long double> p_size(1), d_size(1, 1); // of what they are summed from
  const auto times = [](auto &poly, auto root) {    // by v + root
    poly.push_back(poly.back());
    for (std::size_t i = poly.size() - 2; i > 0; i--) poly[i] = poly[i - 1] + root * poly[i];
    poly[0] = root * poly[0];
  };
  for (std::size_t k = 0; k < n; k++) {
    const WideRoot root = WideRoot{0, 0} - sum.places[k];
    times(p, root);
    times(p_size, size(root));
    for (std::size_t i = 0; i < d.size(); i++) {
      p[i] = p[i] + sum.residues[k] * d[i];
      p_size[i] += size(sum.residues[k]) * d_size[i];
    }
    times(d, root);
    times(d_size, size(root));
  }
  // p has the degree n - 1: its highest place is 0.
  if (sum.direct != 0) {
    const WideRoot share{sum.step / sum.scale, 0}, scale{sum.scale, 0};
    for (std::size_t i = n + 1; i-- > 0;) {
      p[i] = share * (WideRoot{sum.centre, 0} * p[i] + (i > 0 ? scale * p[i - 1] : WideRoot{0, 0})) +
             WideRoot{sum.direct, 0} * d[i];
      p_size[i] = p_size[i] + (i > 0 ? p_size[i - 1] : 0) + d_size[i];
    }
  }
  std::vector<Wide> descending;
  for (std::size_t i = n + 1; i-- > 0;) {
    const bool noise = magnitude(p[i].re) <= 4 * epsilon * p_size[i];
    if (!descending.empty() || !noise) descending.push_back(p[i].re);
  }
  return descending;
}

using Place = std::complex<long double>;

// Adds the places of a root and of its conjugate.
void add_places(std::vector<std::complex<double>> &all, const BandMove &move, std::optional<Place> z) {
  const bool pair = z && z->imag() != 0;
  for (const Place &place : move.places ? move.places(z) : std::vector<Place>{*z}) {
    all.emplace_back(place);
    if (pair) all.push_back(std::conj(all.back()));
  }
}

std::optional<WideCascade> made_around(int centre, const SectionEntry &analog, double step, const BandMove &move) {
  const auto sum = wide_sum(analog, step, centre);
  if (!sum) return std::nullopt;
  const std::vector<Wide> coefficients = numerator(*sum);
  if (coefficients.empty()) return std::nullopt;
  const long double scale = static_cast<long double>(sum->scale);
  const auto in_z = [&](Place v) { return Place(centre) + scale * v; };
  std::vector<std::complex<double>> zeros, poles;
  for (const WideRoot &place : sum->places)
    if (const Place v(place); v.imag() >= 0) add_places(poles, move, in_z(v));
  const std::vector<std::complex<double>> finite = wide_polynomial_roots(coefficients);
  for (const std::complex<double> v : finite)
    if (v.imag() >= 0) add_places(zeros, move, in_z(v));
  int at_infinity = static_cast<int>(sum->places.size() - finite.size());
  if (sum->direct == 0) {
    add_places(zeros, move, Place(0));
    at_infinity--;
  }
  if (move.places)
    for (; at_infinity > 0; at_infinity--) add_places(zeros, move, std::nullopt);
  if (!arrange_pairs(zeros) || !arrange_pairs(poles)) return std::nullopt;

  PoleZeroEntry pole_zero{};
  if (!store_roots(zeros, poles, pole_zero)) return std::nullopt;
  pole_zero.sample_rate = analog.sample_rate;
  const Values x = comparison_points(Domain::z, poles);
  Values reference;
  for (const auto z : x) reference.emplace_back(Place(sum->value_at(move.lowpass_place ? move.lowpass_place(z) : z)));
  const auto peak =
      std::max_element(reference.begin(), reference.end(), [](auto a, auto b) { return std::abs(a) < std::abs(b); });
  const Place at(x[static_cast<std::size_t>(peak - reference.begin())]);
  Place product = 1;
  for (std::size_t i = 0; i < poles.size(); i++) {
    product /= at - Place(poles[i]);
    if (i < zeros.size()) product *= at - Place(zeros[i]);
  }
  WideCascade made{};
  if (!build_sections(Domain::z, pole_zero, (Place(*peak) / product).real(), made.cascade, made.dropped_delay))
    return std::nullopt;
  made.cascade.sample_rate = analog.sample_rate;
  made.cascade.keep_gain = analog.keep_gain;
  made.digits = digits_kept(x, reference, cascade_values(made.cascade, x), -made.dropped_delay);
  return made;
}

} // namespace

std::optional<WideCascade> wide_impulse_invariance(const SectionEntry &analog, double step, const BandMove &move) {
  auto best = made_around(0, analog, step, move);
  if (best && best->digits >= 12) return best;
  auto other = made_around(1, analog, step, move); // for fine sampling, whose poles crowd there
  return other && (!best || other->digits > best->digits) ? other : best;
}

} // namespace brisel
