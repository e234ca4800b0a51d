// matched_z_map.cpp - L. R. Rabiner, B. Gold, Theory and Application of Digital Signal Processing, ch. 4.
#include "engine/iir/matched_z_map.h"

#include "engine/analysis/polynomial_roots.h"

#include <cmath>

namespace brisel {

static Triple mapped(const Triple &t, double step) {
  const QuadraticRoots roots = quadratic_roots(t);
  const double a = t[0];
  switch (roots.kind) {
  case RootKind::complex_pair: {
    const double e = std::exp(roots.first.real() * step);
    return {a, -2 * a * e * std::cos(roots.first.imag() * step), a * e * e};
  }
  case RootKind::distinct_real:
  case RootKind::double_real: {
    const double e1 = std::exp(roots.first.real() * step), e2 = std::exp(roots.second.real() * step);
    return {a, -a * (e1 + e2), a * e1 * e2};
  }
  case RootKind::single:
    return {0, t[1], -t[1] * std::exp(roots.first.real() * step)};
  case RootKind::none:
    return {0, 0, t[2]};
  }
  return {};
}

void matched_z_map(const SectionEntry &s, SectionEntry &z, FilterType band) {
  z = s;
  const double step = two_pi / s.sample_rate;
  // Sign of z^-1 in the factor to add: zeros at z = -1 for lowpass, at 1 for highpass, in turn for bandpass, one flag
  // for sections of both orders.
  double sign = band == FilterType::high_pass ? -1 : 1;
  const auto next_sign = [&] {
    const double current = sign;
    if (band == FilterType::band_pass) sign = -sign;
    return current;
  };
  for (int i = 0; i < s.section_count; i++) {
    Triple &n = z.numerators[i], &d = z.denominators[i];
    n = mapped(s.numerators[i], step);
    d = mapped(s.denominators[i], step);
    if (band != FilterType::band_stop && n[0] == 0) {
      // Kept: a constant is overwritten, so sections lose their scale; compute_cas_gain restores the whole.
      const bool constant = n[1] == 0;
      if (d[0] != 0 && constant) {
        if (band == FilterType::band_pass)
          n = {1, 0, -1};
        else
          n = {1, 2 * sign, 1};
      } else if (d[0] != 0) {
        const double added = next_sign();
        n = {n[1], n[2] + added * n[1], added * n[2]};
      } else if (d[1] != 0 && constant) {
        n = {0, 1, next_sign()};
      }
    }
    if (n[2] == 0 && d[2] == 0) {
      n = {0, n[0], n[1]};
      d = {0, d[0], d[1]};
    }
  }
}

} // namespace brisel
