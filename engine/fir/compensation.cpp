// compensation.cpp - inverse gain of a zero-order hold and of a comb decimator.
#include "engine/fir/compensation.h"

#include "engine/core/records.h"

#include <algorithm>
#include <cmath>

namespace brisel {

std::optional<Compensation> make_compensation(bool on, int type, int rate_change, int differential_delay, int stages) {
  Compensation c;
  c.on = on;
  c.type = type == 0 ? CompensationCurve::sinc : type == 1 ? CompensationCurve::comb : CompensationCurve::none;
  c.rate_change = std::max(rate_change, 1);
  c.differential_delay = std::max(differential_delay, 1);
  c.stages = std::max(stages, 1);
  if (c.on && c.type == CompensationCurve::comb &&
      std::max({c.rate_change, c.differential_delay, c.stages}) > max_compensation_setting)
    return std::nullopt;
  return c;
}

double compensation_factor(const Compensation &compensation, double w) {
  if (!is_active(compensation) || w == 0) return 1;
  switch (compensation.type) {
  case CompensationCurve::sinc:
    return (w / 2) / std::sin(w / 2);
  case CompensationCurve::comb: {
    const double r = compensation.rate_change;
    const double d = compensation.differential_delay;
    return std::pow(std::abs(r * d * std::sin(w / (2 * r)) / std::sin(d * w / 2)), compensation.stages);
  }
  case CompensationCurve::none:
    break;
  }
  return 1;
}

double compensation_db(const Compensation &compensation, double w) {
  Compensation stage = compensation;
  stage.stages = 1;
  const int stages = compensation.type == CompensationCurve::comb ? compensation.stages : 1;
  return stages * 20 * std::log10(compensation_factor(stage, w));
}

std::optional<double> comb_null(const Compensation &compensation, double lower, double upper) {
  if (!compensation.on || compensation.type != CompensationCurve::comb) return std::nullopt;
  // Nulls at the multiples of 2 pi / D; the one at 0 belongs to the passband of the comb. Edges that meet a null up to
  // their rounding contain it.
  constexpr double rounding = 1e-12;
  const double spacing = two_pi / compensation.differential_delay;
  const double null = std::max(std::ceil(lower / spacing - rounding), 1.0) * spacing;
  if (null > upper * (1 + rounding)) return std::nullopt;
  return null;
}

} // namespace brisel
