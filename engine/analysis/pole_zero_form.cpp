// pole_zero_form.cpp - poles and zeros of sections and polynomials, and sections from poles and zeros.
#include "engine/analysis/pole_zero_form.h"

#include "engine/analysis/polynomial_roots.h"
#include "engine/analysis/root_polishing.h"
#include "engine/analysis/wide_ratio.h"

#include <algorithm>
#include <cmath>

namespace brisel {

using Complex = std::complex<double>;

bool arrange_pairs(std::span<Complex> values) {
  constexpr double same = 1e-6; // conjugates that were typed with six digits
  const auto end = values.end();
  for (auto first = values.begin(); end - first > 1;) {
    auto partner = end;
    if (first->imag() == 0) {
      partner = std::find_if(first + 1, end, [](Complex v) { return v.imag() == 0; });
      if (partner == end) { // the odd real value
        std::rotate(first, first + 1, end);
        continue;
      }
    } else {
      partner = std::min_element(first + 1, end, [&](Complex a, Complex b) {
        return std::abs(a - std::conj(*first)) < std::abs(b - std::conj(*first));
      });
      if (!(std::abs(*partner - std::conj(*first)) <= same * std::abs(*first)) || partner->imag() == 0) return false;
      const Complex mean = 0.5 * (*first + std::conj(*partner));
      *first = {mean.real(), std::fabs(mean.imag())};
      *partner = std::conj(*first);
    }
    std::rotate(first + 1, partner, partner + 1);
    first += 2;
  }
  return values.empty() || values.size() % 2 == 0 || values.back().imag() == 0;
}

bool store_roots(std::span<const Complex> zeros, std::span<const Complex> poles, PoleZeroEntry &entry) {
  if (zeros.size() > entry.zeros.size() || poles.size() > entry.poles.size()) return false;
  auto real = [](std::span<const Complex> list) {
    return static_cast<std::int16_t>(std::count_if(list.begin(), list.end(), [](Complex v) { return v.imag() == 0; }));
  };
  entry.real_zeros = real(zeros);
  entry.complex_zeros = static_cast<std::int16_t>(static_cast<int>(zeros.size()) - entry.real_zeros);
  entry.real_poles = real(poles);
  entry.complex_poles = static_cast<std::int16_t>(static_cast<int>(poles.size()) - entry.real_poles);
  std::copy(zeros.begin(), zeros.end(), entry.zeros.begin());
  std::copy(poles.begin(), poles.end(), entry.poles.begin());
  return true;
}

namespace {

struct RootList {
  std::vector<Complex> pairs, singles;
  void add(const Triple &triple) {
    const QuadraticRoots roots = quadratic_roots(triple);
    if (roots.kind == RootKind::none) return;
    if (roots.kind == RootKind::single) {
      singles.push_back(roots.first);
    } else {
      pairs.push_back(roots.first);
      pairs.push_back(roots.second);
    }
  }
  const std::vector<Complex> &all() {
    pairs.insert(pairs.end(), singles.begin(), singles.end());
    return pairs;
  }
};

} // namespace

bool collect_roots(const SectionEntry &cascade, PoleZeroEntry &pole_zero, long double &gain) {
  RootList zeros, poles;
  gain = cascade.gain;
  for (int k = 0; k < cascade.section_count; k++) {
    const ReducedSection section = reduced(cascade.numerators[k], cascade.denominators[k]);
    if (section.numerator_degree < 0 || section.denominator_degree < 0) return false;
    zeros.add(section.numerator);
    poles.add(section.denominator);
    gain *= static_cast<long double>(section.numerator[2 - section.numerator_degree]) /
            section.denominator[2 - section.denominator_degree];
  }
  pole_zero.sample_rate = cascade.sample_rate;
  return store_roots(zeros.all(), poles.all(), pole_zero);
}

bool cascade_to_pole_zero(Domain, const SectionEntry &cascade, PoleZeroEntry &pole_zero) {
  long double gain;
  if (!collect_roots(cascade, pole_zero, gain)) return false;
  pole_zero.gain = narrow(gain);
  return true;
}

// Monic polynomial of pair `i` of a list; the last value may stand alone, and beyond the list there is none.
static Triple factor(Domain domain, std::span<const Complex> values, std::size_t i) {
  const bool z = domain == Domain::z;
  if (2 * i >= values.size()) return z ? Triple{1, 0, 0} : Triple{0, 0, 1};
  const Complex first = values[2 * i];
  if (2 * i + 1 == values.size()) return z ? Triple{1, -first.real(), 0} : Triple{0, 1, -first.real()};
  const Complex second = values[2 * i + 1];
  return {1, -(first + second).real(), (first * second).real()};
}

bool build_sections(Domain domain, const PoleZeroEntry &pole_zero, long double gain, SectionEntry &cascade,
                    int &dropped_delay) {
  const auto listed_zeros = std::span(pole_zero.zeros).first(zero_count(pole_zero));
  const auto listed_poles = std::span(pole_zero.poles).first(pole_count(pole_zero));
  std::vector<Complex> zeros(listed_zeros.begin(), listed_zeros.end()), poles(listed_poles.begin(), listed_poles.end());
  if (!arrange_pairs(zeros) || !arrange_pairs(poles)) return false;

  const std::size_t order = std::max(zeros.size(), poles.size()), count = (order + 1) / 2;
  cascade.order = static_cast<std::int16_t>(order);
  cascade.section_count = static_cast<std::int16_t>(count);
  cascade.sample_rate = pole_zero.sample_rate;
  cascade.pars = 1;
  cascade.shift = {};
  for (std::size_t i = 0; i < count; i++) {
    cascade.numerators[i] = factor(domain, zeros, i);
    cascade.denominators[i] = factor(domain, poles, i);
  }
  dropped_delay = domain == Domain::z ? static_cast<int>(poles.size()) - static_cast<int>(zeros.size()) : 0;

  if (!std::isfinite(gain)) return false;
  const int exponent = gain == 0 ? 0 : std::ilogb(gain);
  if (std::abs(exponent) > 1000 && count > 0) {
    const int step = exponent / static_cast<int>(count);
    for (Triple &numerator : std::span(cascade.numerators).first(count))
      for (double &c : numerator) c = std::ldexp(c, step);
    gain = std::ldexp(gain, -step * static_cast<int>(count));
  }
  cascade.gain = narrow(gain);
  return true;
}

void restore_delay(SectionEntry &cascade, int &dropped_delay) {
  for (Triple &numerator : std::span(cascade.numerators).first(static_cast<std::size_t>(cascade.section_count)))
    for (; dropped_delay > 0 && numerator[2] == 0; dropped_delay--) numerator = {0, numerator[0], numerator[1]};
}

bool pole_zero_to_cascade(Domain domain, const PoleZeroEntry &pole_zero, SectionEntry &cascade, int &dropped_delay) {
  return build_sections(domain, pole_zero, pole_zero.gain, cascade, dropped_delay);
}

bool parallel_to_cascade(Domain domain, const SectionEntry &parallel, SectionEntry &cascade, int &dropped_delay) {
  PoleZeroEntry pole_zero{};
  cascade.keep_gain = parallel.keep_gain;
  return parallel_to_pole_zero(domain, parallel, pole_zero) &&
         pole_zero_to_cascade(domain, pole_zero, cascade, dropped_delay);
}

bool write_pole_zero(const WideRatio &wide, PoleZeroEntry &pole_zero) {
  if (wide.order() + wide.lead() > max_order) return false;
  // Both as polynomials in x of the same length: what the numerator is longer are poles at the origin.
  auto roots = [&](const std::vector<Wide> &p) {
    std::vector<Wide> c = p;
    c.resize(wide.numerator.size(), Wide(0));
    return wide_polynomial_roots(std::move(c));
  };
  pole_zero.gain = narrow(wide.gain);
  std::vector<Complex> zeros = roots(wide.numerator), poles = roots(wide.denominator);
  while (!zeros.empty() && !poles.empty() && zeros.back() == 0.0 && poles.back() == 0.0) {
    zeros.pop_back();
    poles.pop_back();
  }
  return store_roots(zeros, poles, pole_zero);
}

bool ratio_to_pole_zero(Domain domain, const RatioEntry &ratio, PoleZeroEntry &pole_zero) {
  const auto wide = wide_ratio(domain, ratio);
  pole_zero.sample_rate = ratio.sample_rate;
  return wide && write_pole_zero(*wide, pole_zero);
}

} // namespace brisel
