// ladder_form.cpp - continued-fraction ladders from the expanded polynomials and back.
//
// [Mitra72] S. K. Mitra and R. J. Sherwood, Canonic realizations of digital filters using the continued fraction
// expansion, IEEE Trans. Audio Electroacoust. AU-20, 1972. A_i and B_i are the source's. Both forms are one expansion
// in a variable y: y = z for form 1, y = z^-1 for form 2, which reverses the polynomials.
#include "engine/analysis/wide_ratio.h"

#include <algorithm>
#include <cmath>

namespace brisel {

bool write_ladder(const WideRatio &wide, LadderForm form, LadderEntry &ladder) {
  const int n = wide.order(), lead = wide.lead();
  if (n > max_order || lead > max_lead) return false;
  ladder.order = static_cast<std::int16_t>(n);
  ladder.lead = static_cast<std::int16_t>(lead);
  ladder.alpha_count = static_cast<std::int16_t>(2 * n + 1 + lead);
  ladder.form = static_cast<std::int8_t>(form);
  ladder.gain = narrow(wide.gain);
  ladder.alpha = {};

  std::vector<Wide> p = wide.numerator, q = wide.denominator;
  for (int i = lead; i >= 1; i--) {
    const Wide tap = p[n + i] / q[n];
    ladder.alpha[i - 1] = static_cast<double>(tap);
    for (int k = 0; k <= n; k++) p[i + k] -= tap * q[k];
  }
  p.resize(n + 1);
  if (form == LadderForm::two) {
    std::reverse(p.begin(), p.end());
    std::reverse(q.begin(), q.end());
  }

  // p and q hold descending powers of y from y^(n-i) at index i on. A coefficient that is lost in the rounding of what
  // it was computed from has vanished.
  auto vanished = [](Wide value, Wide from) { return magnitude(value) <= Wide(1e-30) * magnitude(from); };
  int place = lead;
  for (int i = 0; i <= n; i++) {
    const Wide a = p[i] / q[i];
    ladder.alpha[place++] = static_cast<double>(a);
    if (i == n) break;
    const Wide from = p[i + 1];
    for (int k = i; k <= n; k++) p[k] -= a * q[k];
    if (p[i + 1] == 0 || vanished(p[i + 1], from)) return false;
    const Wide b = q[i] / p[i + 1], above = q[i + 1];
    ladder.alpha[place++] = static_cast<double>(b);
    for (int k = i; k < n; k++) q[k] -= b * p[k + 1];
    if (q[i + 1] == 0 || vanished(q[i + 1], above)) return false;
  }
  return std::all_of(ladder.alpha.begin(), ladder.alpha.end(), [](double v) { return std::isfinite(v); });
}

std::optional<WideRatio> wide_ratio(const LadderEntry &ladder) {
  const int n = ladder.order, lead = ladder.lead;
  const auto alpha = std::span(ladder.alpha).subspan(lead);
  std::vector<Wide> p{alpha[2 * n]}, q{1}; // ascending powers of y
  for (int i = n; i >= 1; i--) {
    const Wide a = alpha[2 * i - 2], b = alpha[2 * i - 1];
    q.resize(p.size() + 1, Wide(0));
    for (std::size_t k = 0; k < p.size(); k++) q[k + 1] += b * p[k]; // b y p + q
    p.resize(q.size(), Wide(0));
    for (std::size_t k = 0; k < q.size(); k++) p[k] += a * q[k];
  }
  if (ladder.form == static_cast<std::int8_t>(LadderForm::one)) {
    std::reverse(p.begin(), p.end());
    std::reverse(q.begin(), q.end());
  }
  p.resize(n + 1 + lead, Wide(0));
  for (int i = 1; i <= lead; i++)
    for (int k = 0; k <= n; k++) p[i + k] += Wide(ladder.alpha[i - 1]) * q[k];
  return normalized(ladder.gain, std::move(p), std::move(q));
}

bool ratio_to_ladder(Domain domain, const RatioEntry &ratio, LadderForm form, LadderEntry &ladder) {
  const auto wide = wide_ratio(domain, ratio);
  ladder.sample_rate = ratio.sample_rate;
  return wide && write_ladder(*wide, form, ladder);
}

bool cascade_to_ladder(Domain, const SectionEntry &cascade, LadderForm form, LadderEntry &ladder) {
  const auto wide = wide_ratio(cascade);
  ladder.sample_rate = cascade.sample_rate;
  return wide && write_ladder(*wide, form, ladder);
}

bool ladder_to_ratio(Domain domain, const LadderEntry &ladder, RatioEntry &ratio) {
  const auto wide = wide_ratio(ladder);
  ratio.sample_rate = ladder.sample_rate;
  return wide && write_ratio(domain, *wide, ratio);
}

} // namespace brisel
