// lattice_form.cpp - Gray-Markel lattice from the expanded polynomials and back.
//
// [Gray73] A. H. Gray and J. D. Markel, Digital lattice and ladder filter synthesis, IEEE Trans. Audio Electroacoust.
// AU-21, 1973. A_m and B_m are the source's polynomials of stage m.
#include "engine/analysis/wide_ratio.h"

#include <algorithm>
#include <cmath>

namespace brisel {

// A_m into A_{m-1}, in place; returns the reflection coefficient. Its magnitude must not be 1.
static Wide step_down(std::vector<Wide> &a) {
  const std::size_t m = a.size() - 1;
  const Wide k = a[m], scale = 1 / (1 - k * k);
  for (std::size_t i = 1, j = m - 1; i <= j; i++, j--) {
    const Wide low = a[i], high = a[j];
    a[i] = (low - k * high) * scale;
    a[j] = (high - k * low) * scale;
  }
  a.pop_back();
  return k;
}

bool is_stable(const WideRatio &wide) {
  std::vector<Wide> a = wide.denominator;
  while (a.size() > 1)
    if (!(magnitude(a.back()) < 1))
      return false;
    else
      step_down(a);
  return true;
}

bool write_lattice(const WideRatio &wide, LatticeEntry &lattice) {
  const int n = wide.order(), lead = wide.lead();
  if (n > max_order || lead > max_lead) return false;
  lattice.order = static_cast<std::int16_t>(n);
  lattice.lead = static_cast<std::int16_t>(lead);
  lattice.gain = narrow(wide.gain);
  lattice.kappa = {};
  lattice.gamma = {};

  std::vector<Wide> a = wide.denominator, c = wide.numerator;
  for (int m = n + lead; m >= 0; m--) {
    const Wide gamma = c[m]; // B_m ends with 1 z^-m and no later polynomial reaches that far
    lattice.gamma[m] = static_cast<double>(gamma);
    const int length = std::min(m, n), delay = m - length; // above n, B_m is B_n delayed
    for (int i = 0; i <= length; i++) c[delay + i] -= gamma * a[length - i];
    if (m > 0 && m <= n) {
      if (magnitude(a[m]) == 1) return false;
      lattice.kappa[m] = static_cast<double>(step_down(a));
    }
  }
  auto finite = [](double v) { return std::isfinite(v); };
  return std::all_of(lattice.kappa.begin(), lattice.kappa.end(), finite) &&
         std::all_of(lattice.gamma.begin(), lattice.gamma.end(), finite);
}

std::optional<WideRatio> wide_ratio(const LatticeEntry &lattice) {
  const int n = lattice.order, lead = lattice.lead;
  std::vector<Wide> a{1}, numerator(n + lead + 1, Wide(0));
  for (int m = 0;; m++) {
    const int length = std::min(m, n);
    for (int i = 0; i <= length; i++) numerator[m - length + i] += Wide(lattice.gamma[m]) * a[length - i];
    if (m == n + lead) break;
    if (m >= n) continue;
    const Wide k = lattice.kappa[m + 1];
    a.push_back(k); // A_{m+1} = A_m + k z^-1 B_m
    for (std::size_t i = 1, j = a.size() - 2; i <= j; i++, j--) {
      const Wide low = a[i], high = a[j];
      a[i] = low + k * high;
      if (i != j) a[j] = high + k * low;
    }
  }
  return normalized(lattice.gain, std::move(numerator), std::move(a));
}

bool ratio_to_lattice(Domain domain, const RatioEntry &ratio, LatticeEntry &lattice) {
  const auto wide = wide_ratio(domain, ratio);
  lattice.sample_rate = ratio.sample_rate;
  return wide && write_lattice(*wide, lattice);
}

bool cascade_to_lattice(Domain, const SectionEntry &cascade, LatticeEntry &lattice) {
  const auto wide = wide_ratio(cascade);
  lattice.sample_rate = cascade.sample_rate;
  return wide && write_lattice(*wide, lattice);
}

bool lattice_to_ratio(Domain domain, const LatticeEntry &lattice, RatioEntry &ratio) {
  const auto wide = wide_ratio(lattice);
  ratio.sample_rate = lattice.sample_rate;
  return wide && write_ratio(domain, *wide, ratio);
}

} // namespace brisel
