// ratio_form.cpp - expanded polynomials from every other form, in wide arithmetic, and the ratio record from them.
#include "engine/analysis/wide_ratio.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace brisel {

double narrow(Wide value) {
  constexpr double limit = std::numeric_limits<double>::max();
  return value > Wide(limit) ? limit : value < Wide(-limit) ? -limit : static_cast<double>(value);
}

int degree(const Triple &triple) {
  return triple[0] != 0 ? 2 : triple[1] != 0 ? 1 : triple[2] != 0 ? 0 : -1;
}

ReducedSection reduced(const Triple &numerator, const Triple &denominator) {
  ReducedSection section{numerator, denominator, degree(numerator), degree(denominator)};
  auto shift = [](Triple &t) { t = {0, t[0], t[1]}; };
  while (section.numerator_degree > 0 && section.denominator_degree > 0 && section.numerator[2] == 0 &&
         section.denominator[2] == 0) {
    shift(section.numerator);
    shift(section.denominator);
    section.numerator_degree--;
    section.denominator_degree--;
  }
  return section;
}

static std::vector<Wide> multiply(const std::vector<Wide> &p, std::span<const double> factor) {
  std::vector<Wide> product(p.size() + factor.size() - 1, Wide(0));
  for (std::size_t i = 0; i < p.size(); i++)
    for (std::size_t k = 0; k < factor.size(); k++)
      if (factor[k] != 0) product[i + k] += p[i] * Wide(factor[k]);
  return product;
}

std::optional<WideRatio> normalized(Wide gain, std::vector<Wide> numerator, std::vector<Wide> denominator) {
  auto is_zero = [](Wide c) { return c == 0; };
  auto leading = [&](const std::vector<Wide> &p) { return std::find_if_not(p.begin(), p.end(), is_zero) - p.begin(); };
  if (std::all_of(numerator.begin(), numerator.end(), is_zero)) return std::nullopt;
  const auto delay = leading(denominator); // a factor x^-1 that both have cancels
  if (static_cast<std::size_t>(delay) == denominator.size() || leading(numerator) < delay) return std::nullopt;
  numerator.erase(numerator.begin(), numerator.begin() + delay);
  denominator.erase(denominator.begin(), denominator.begin() + delay);
  while (denominator.back() == 0) denominator.pop_back();
  while (numerator.back() == 0) numerator.pop_back();
  if (numerator.size() < denominator.size()) numerator.resize(denominator.size(), Wide(0));

  const Wide a0 = denominator[0], b = numerator[leading(numerator)];
  for (Wide &a : denominator) a /= a0;
  for (Wide &c : numerator) c /= b;
  gain *= b / a0;
  auto usable = [](Wide c) { return c - c == 0; }; // neither infinite nor undefined
  if (!usable(gain) || !std::all_of(denominator.begin(), denominator.end(), usable) ||
      !std::all_of(numerator.begin(), numerator.end(), usable))
    return std::nullopt;
  return WideRatio{gain, std::move(numerator), std::move(denominator)};
}

std::optional<WideRatio> wide_ratio(const SectionEntry &cascade) {
  std::vector<Wide> numerator{1}, denominator{1};
  for (int k = 0; k < cascade.section_count; k++) {
    numerator = multiply(numerator, cascade.numerators[k]);
    denominator = multiply(denominator, cascade.denominators[k]);
  }
  return normalized(cascade.gain, std::move(numerator), std::move(denominator));
}

// How many of the leading samples `h` of an impulse response can be taken for 0 without a trace on the unit circle:
// what they contribute to the numerator, over the denominator, must vanish beside the peak of the response. With poles
// near z = 1 the denominator is so small there that even rounding may not be dropped.
static int negligible_samples(const SectionEntry &parallel, std::span<const long double> h) {
  constexpr double negligible = 1e-13;
  constexpr int points = 256;
  using Complex = std::complex<long double>;
  std::vector<long double> d(h.size(), 0); // leading coefficients of the expanded denominator
  d[0] = 1;
  std::vector<Complex> z(points + 1), denominator(points + 1, 1), sum(points + 1, parallel.gain);
  for (int i = 0; i <= points; i++) z[i] = std::polar(1.0L, std::numbers::pi_v<long double> * i / points);
  for (int k = 0; k < parallel.section_count; k++) {
    const ReducedSection s = reduced(parallel.numerators[k], parallel.denominators[k]);
    if (s.denominator_degree < 0) continue;
    const Triple &t = s.denominator, &n = s.numerator;
    const int first = 2 - s.denominator_degree;
    const long double a1 = first < 2 ? static_cast<long double>(t[first + 1]) / t[first] : 0;
    const long double a2 = first < 1 ? static_cast<long double>(t[2]) / t[0] : 0;
    for (std::size_t j = d.size(); j-- > 1;) d[j] += a1 * d[j - 1] + (j > 1 ? a2 * d[j - 2] : 0);
    for (int i = 0; i <= points; i++) {
      const Complex value = ((Complex(t[0]) * z[i] + Complex(t[1])) * z[i] + Complex(t[2]));
      denominator[i] *= value / static_cast<long double>(t[first]);
      sum[i] += ((Complex(n[0]) * z[i] + Complex(n[1])) * z[i] + Complex(n[2])) / value;
    }
  }
  long double peak = 0, least = HUGE_VALL;
  for (int i = 0; i <= points; i++) {
    peak = std::max(peak, std::abs(sum[i]));
    least = std::min(least, std::abs(denominator[i]));
  }
  long double dropped = 0;
  for (std::size_t j = 0; j < h.size(); j++) {
    long double coefficient = 0;
    for (std::size_t i = 0; i <= j; i++) coefficient += h[i] * d[j - i];
    dropped += std::fabs(coefficient);
    if (dropped > negligible * peak * least) return static_cast<int>(j);
  }
  return static_cast<int>(h.size());
}

int zeros_at_infinity(Domain domain, const SectionEntry &parallel, int order) {
  // The numerator's leading coefficients vanish exactly as long as the leading samples of the expansion in x^-1 (in z:
  // of the impulse response) do, and each of those is a plain sum over the sections.
  constexpr double rounding = 1e-13;
  struct Expansion {
    std::array<long double, 2> a, state; // of N/D = sum of h[j] x^-j, D monic
    long double h;
  };
  std::vector<Expansion> terms;
  for (int k = 0; k < parallel.section_count; k++) {
    const ReducedSection s = reduced(parallel.numerators[k], parallel.denominators[k]);
    if (s.denominator_degree < 0) continue;
    std::array<long double, 3> b{}, a{};
    for (int i = 0; i <= s.denominator_degree; i++) {
      b[i] = s.numerator[2 - s.denominator_degree + i];
      a[i] = s.denominator[2 - s.denominator_degree + i];
    }
    const long double h = b[0] / a[0];
    terms.push_back({{a[1] / a[0], a[2] / a[0]}, {b[1] / a[0] - h * a[1] / a[0], b[2] / a[0] - h * a[2] / a[0]}, h});
  }
  std::vector<long double> samples;
  for (int count = 0; count < order; count++) {
    long double sum = count == 0 ? parallel.gain : 0, size = std::fabs(sum);
    for (Expansion &t : terms) {
      sum += t.h;
      size += std::fabs(t.h);
      t.h = t.state[0];
      t.state = {t.state[1] - t.a[0] * t.h, -t.a[1] * t.h};
    }
    if (std::fabs(sum) > rounding * size) break;
    samples.push_back(sum);
  }
  return domain == Domain::s || samples.empty() ? static_cast<int>(samples.size())
                                                : negligible_samples(parallel, samples);
}

std::optional<WideRatio> wide_ratio_of_sum(Domain domain, const SectionEntry &parallel) {
  std::vector<Wide> numerator{parallel.gain}, denominator{1};
  int order = 0;
  for (int k = 0; k < parallel.section_count; k++) {
    const ReducedSection s = reduced(parallel.numerators[k], parallel.denominators[k]);
    if (s.denominator_degree < std::max(0, s.numerator_degree)) return std::nullopt;
    const std::size_t first = 2 - s.denominator_degree;
    const auto n = std::span(s.numerator).subspan(first), d = std::span(s.denominator).subspan(first);
    const std::vector<Wide> term = multiply(denominator, n);
    numerator = multiply(numerator, d);
    denominator = multiply(denominator, d);
    for (std::size_t i = 0; i < numerator.size(); i++) numerator[i] += term[i];
    order += s.denominator_degree;
  }
  std::fill_n(numerator.begin(), zeros_at_infinity(domain, parallel, order), Wide(0));
  return normalized(parallel.pars, std::move(numerator), std::move(denominator));
}

std::optional<WideRatio> wide_ratio(const PoleZeroEntry &pole_zero) {
  auto expanded = [](std::span<const std::complex<double>> listed) -> std::optional<std::vector<Wide>> {
    std::vector<std::complex<double>> roots(listed.begin(), listed.end());
    if (!arrange_pairs(roots)) return std::nullopt;
    std::vector<Wide> p{1};
    for (std::size_t i = 0; i < roots.size(); i++)
      if (roots[i].imag() == 0) {
        p = multiply(p, std::array{1.0, -roots[i].real()});
      } else { // the factor of a pair is not rounded to doubles
        const Wide re = roots[i].real(), im = roots[i].imag();
        p.resize(p.size() + 2, Wide(0));
        for (std::size_t k = p.size() - 1; k >= 1; k--)
          p[k] += -2 * re * p[k - 1] + (k >= 2 ? (re * re + im * im) * p[k - 2] : Wide(0));
        i++;
      }
    return p;
  };
  const int zeros = pole_zero.real_zeros + pole_zero.complex_zeros;
  const int poles = pole_zero.real_poles + pole_zero.complex_poles;
  auto numerator = expanded(std::span(pole_zero.zeros).first(zeros));
  auto denominator = expanded(std::span(pole_zero.poles).first(poles));
  if (!numerator || !denominator || zeros > poles) return std::nullopt;
  numerator->insert(numerator->begin(), poles - zeros, Wide(0));
  return normalized(pole_zero.gain, std::move(*numerator), std::move(*denominator));
}

std::optional<WideRatio> wide_ratio(Domain domain, const RatioEntry &ratio) {
  std::vector<Wide> numerator(ratio.numerator.begin(), ratio.numerator.begin() + ratio.numerator_order + 1);
  std::vector<Wide> denominator(ratio.denominator.begin(), ratio.denominator.begin() + ratio.denominator_order + 1);
  if (domain == Domain::s) { // descending powers of s: both start at the higher of the two degrees
    const std::size_t length = std::max(numerator.size(), denominator.size());
    numerator.insert(numerator.begin(), length - numerator.size(), Wide(0));
    denominator.insert(denominator.begin(), length - denominator.size(), Wide(0));
  }
  return normalized(ratio.gain, std::move(numerator), std::move(denominator));
}

bool write_ratio(Domain domain, const WideRatio &wide, RatioEntry &ratio) {
  if (wide.order() + wide.lead() > max_order) return false;
  ratio.gain = narrow(wide.gain);
  ratio.numerator = {};
  ratio.denominator = {};
  // In s the records are polynomials in s: zeros in front are left out, and both end with the constant.
  const bool s = domain == Domain::s;
  std::size_t skipped = 0;
  if (s)
    while (wide.numerator[skipped] == 0) skipped++;
  const int length = static_cast<int>(wide.numerator.size());
  ratio.numerator_order = static_cast<std::int16_t>(length - 1 - static_cast<int>(skipped));
  ratio.denominator_order = static_cast<std::int16_t>(s ? length - 1 : wide.order());
  for (int i = 0; i <= ratio.numerator_order; i++)
    ratio.numerator[i] = static_cast<double>(wide.numerator[skipped + i]);
  for (int i = 0; i <= wide.order(); i++) ratio.denominator[i] = static_cast<double>(wide.denominator[i]);
  auto finite = [](double c) { return std::isfinite(c); };
  return std::all_of(ratio.numerator.begin(), ratio.numerator.end(), finite) &&
         std::all_of(ratio.denominator.begin(), ratio.denominator.end(), finite);
}

bool cascade_to_ratio(Domain domain, const SectionEntry &cascade, RatioEntry &ratio) {
  const auto wide = wide_ratio(cascade);
  ratio.sample_rate = cascade.sample_rate;
  return wide && write_ratio(domain, *wide, ratio);
}

bool parallel_to_ratio(Domain domain, const SectionEntry &parallel, RatioEntry &ratio) {
  const auto wide = wide_ratio_of_sum(domain, parallel);
  ratio.sample_rate = parallel.sample_rate;
  return wide && write_ratio(domain, *wide, ratio);
}

bool pole_zero_to_ratio(Domain domain, const PoleZeroEntry &pole_zero, RatioEntry &ratio) {
  const auto wide = wide_ratio(pole_zero);
  ratio.sample_rate = pole_zero.sample_rate;
  return wide && write_ratio(domain, *wide, ratio);
}

} // namespace brisel
