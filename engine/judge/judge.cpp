#include "engine/judge/judge.h"

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

double in_db(double ratio) {
  return 20 * std::log10(ratio);
}

struct Extreme {
  double value, w;
};

/// Closes in on the largest value between two places around a sample that is no smaller than they are, by golden
/// section: it asks nothing of the function but one peak, and so finds the point of a cusp too.
template <class Value> Extreme refined(Value value, double low, double high, Extreme best) {
  constexpr double golden = 0.6180339887498949;
  double left = high - golden * (high - low), right = low + golden * (high - low);
  double at_left = value(left), at_right = value(right);
  for (int i = 0; i < 60; i++) {
    const bool first = at_left > at_right;
    if (first) {
      high = right;
      right = left;
      at_right = at_left;
      left = high - golden * (high - low);
      at_left = value(left);
    } else {
      low = left;
      left = right;
      at_left = at_right;
      right = low + golden * (high - low);
      at_right = value(right);
    }
    if (std::abs(at_left - at_right) <= 1e-13 * std::abs(at_left) && i >= 8) break;
  }
  for (const Extreme found : {Extreme{at_left, left}, Extreme{at_right, right}})
    if (found.value > best.value) best = found;
  return best;
}

/// Largest of `value(w)`, of which `values` are samples at the places `w`.
template <class Value> Extreme largest(const std::vector<double> &w, const std::vector<double> &values, Value value) {
  // The parabola through three neighbours, over their index because their places are uneven, says which peaks are
  // worth closing in on; it is no figure.
  struct Candidate {
    double height;
    std::size_t i;
  };
  std::vector<Candidate> candidates;
  constexpr double rounding = 1e-12; // on a plateau, whose end says more than any place on it
  Extreme best{values.front(), w.front()};
  if (values.back() > best.value) best = {values.back(), w.back()};
  for (std::size_t i = 1; i + 1 < w.size(); i++) {
    const double left = values[i - 1], here = values[i], right = values[i + 1];
    if (!(here >= left && here >= right)) continue;
    const double curvature = left + right - 2 * here, slope = (right - left) / 2;
    candidates.push_back({curvature < 0 ? here - slope * slope / (2 * curvature) : here, i});
  }
  // More peaks than these that are so nearly equal need no telling apart.
  const auto count = std::min<std::size_t>(candidates.size(), 32);
  std::partial_sort(candidates.begin(), candidates.begin() + static_cast<std::ptrdiff_t>(count), candidates.end(),
                    [](const Candidate &a, const Candidate &b) { return a.height > b.height; });
  for (std::size_t k = 0; k < count; k++) {
    const std::size_t i = candidates[k].i;
    const Extreme found = refined(value, w[i - 1], w[i + 1], {values[i], w[i]});
    if (found.value > best.value + rounding * std::abs(best.value)) best = found;
  }
  return best;
}

struct Extremes {
  Extreme largest{-INFINITY, 0}, smallest{INFINITY, 0};
  bool zero = false;  // the smallest is a zero
  bool number = true; // no sample was NaN
};

/// A gain that is rounding alone, seen from not far away. Nothing but a zero is that deep and that narrow.
template <class Value> bool is_zero(Value value, FrequencyBand piece, Extreme smallest) {
  const double step = 1e-3 * (piece.high - piece.low);
  const double beside =
      std::max(value(std::max(piece.low, smallest.w - step)), value(std::min(piece.high, smallest.w + step)));
  return smallest.value <= 1e-9 * beside;
}

/// Extremes of `value(gain, w)` over bands, cut at the kinks in which its derivative jumps.
template <class Value>
Extremes extremes(const JudgedFilter &filter, const std::vector<FrequencyBand> &bands, const std::vector<double> &kinks,
                  Value value) {
  Extremes found;
  const auto search = [&](FrequencyBand piece) {
    const GainSamples samples = filter.samples(piece);
    std::vector<double> values(samples.w.size());
    for (std::size_t i = 0; i < values.size(); i++) {
      values[i] = value(samples.gain[i], samples.w[i]);
      found.number = found.number && !std::isnan(values[i]);
    }
    const auto at = [&](double w) { return value(filter.gain(w), w); };
    const Extreme high = largest(samples.w, values, at);
    for (double &v : values) v = -v;
    const Extreme low = largest(samples.w, values, [&](double w) { return -at(w); });
    if (high.value > found.largest.value) found.largest = high;
    if (!(-low.value < found.smallest.value)) return;
    found.smallest = {-low.value, low.w};
    found.zero = is_zero(at, piece, found.smallest);
  };
  for (const FrequencyBand band : bands) {
    double low = band.low;
    for (const double kink : kinks) {
      if (!(kink > low && kink < band.high)) continue;
      search({low, kink});
      low = kink;
    }
    search({low, band.high});
  }
  return found;
}

/// Judges goal by goal and keeps what several of them need.
class Judge {
public:
  Judge(const Goals &goals, const JudgedFilter &filter) : goals(goals), filter(filter) {}

  Figure figure(const Goal &goal) {
    if (filter.trouble != Trouble::none) return {NAN, filter.trouble_at, filter.trouble};
    const Figure found = quantity(goal);
    return std::isnan(found.value) && found.trouble == Trouble::none ? Figure{NAN, found.worst_at, Trouble::no_number}
                                                                     : found;
  }

private:
  Figure quantity(const Goal &goal) {
    switch (goal.quantity) {
    case Quantity::ripple:
      return ripple(goal.bands);
    case Quantity::attenuation:
      return attenuation(goal);
    case Quantity::gain: {
      const Extremes gain = extremes(filter, goal.bands, {}, [](double gain, double) { return gain; });
      if (gain.largest.value == 0) return {NAN, gain.largest.w, Trouble::no_gain};
      return {gain.number ? in_db(gain.largest.value) : NAN, gain.largest.w};
    }
    case Quantity::error:
    case Quantity::relative_error:
      return error(goal);
    case Quantity::delay_ripple:
      return delay_ripple(goal);
    }
    return {};
  }

  /// Gain over desired gain in some of the passbands.
  Extremes pass(const std::vector<FrequencyBand> &bands) {
    Extremes all;
    for (const FrequencyBand band : bands) {
      auto known = std::find_if(passed.begin(), passed.end(), [&](const auto &p) { return p.first.low == band.low; });
      if (known == passed.end()) {
        passed.push_back({band, extremes(filter, {band}, {}, [&](double gain, double w) {
                            return goals.desired ? gain / goals.desired(w) : gain;
                          })});
        known = passed.end() - 1;
      }
      const Extremes &found = known->second;
      if (found.largest.value > all.largest.value) all.largest = found.largest;
      if (found.smallest.value < all.smallest.value) {
        all.smallest = found.smallest;
        all.zero = found.zero;
      }
      all.number = all.number && found.number;
    }
    return all;
  }

  Figure ripple(const std::vector<FrequencyBand> &bands) {
    const Extremes ratio = pass(bands);
    if (!ratio.number) return {NAN, bands.front().low, Trouble::no_number};
    if (ratio.largest.value == 0) return {NAN, ratio.largest.w, Trouble::no_gain};
    if (ratio.zero) return {INFINITY, ratio.smallest.w, Trouble::zero};
    const double above = in_db(ratio.largest.value), below = in_db(ratio.smallest.value);
    return {above - below, above > -below ? ratio.largest.w : ratio.smallest.w};
  }

  Figure attenuation(const Goal &goal) {
    const Extremes reference = pass(goals.passbands);
    const Extremes gain = extremes(filter, goal.bands, {}, [](double gain, double) { return gain; });
    if (!reference.number || !gain.number) return {NAN, gain.largest.w, Trouble::no_number};
    if (reference.largest.value == 0) return {NAN, reference.largest.w, Trouble::no_gain};
    return {in_db(reference.largest.value) - in_db(gain.largest.value), gain.largest.w};
  }

  Figure error(const Goal &goal) {
    const bool relative = goal.quantity == Quantity::relative_error;
    // Where the desired gain starts from 0, in proportion to w, the relative error is that of the slopes.
    constexpr double at_zero = 1e-9;
    double slope = 0, dc = 0;
    if (relative && goal.bands.front().low == 0 && goal.desired(0) == 0) {
      slope = goal.desired(at_zero) / at_zero;
      dc = filter.gain(0);
    }
    const auto value = [&](double gain, double w) {
      const double desired = goal.desired ? goal.desired(w) : 1;
      if (!relative) return gain - desired;
      if (w == 0 && slope > 0) return filter.slope_at_zero / slope - 1;
      return gain / desired - 1;
    };
    if (slope > 0 && dc > 1e-13 * filter.gain(goal.bands.front().high)) return {INFINITY, 0, Trouble::gain_at_zero};
    const Extremes found = extremes(filter, goal.bands, goal.kinks, value);
    if (!found.number) return {NAN, goal.bands.front().low, Trouble::no_number};
    const Extreme low{-found.smallest.value, found.smallest.w};
    const Extreme worst = found.largest.value > low.value ? found.largest : low;
    return {worst.value, worst.w};
  }

  Figure delay_ripple(const Goal &goal) {
    if (!filter.delay) return {NAN, goal.bands.front().low, Trouble::no_number};
    const Extremes found = extremes(filter, goal.bands, goal.kinks, [&](double, double w) {
      return filter.delay(w) - (goal.desired ? goal.desired(w) : 0);
    });
    return {found.number ? (found.largest.value - found.smallest.value) / 2 : NAN, found.largest.w};
  }

  const Goals &goals;
  const JudgedFilter &filter;
  std::vector<std::pair<FrequencyBand, Extremes>> passed;
};

/// Designs that attain what they were asked to exactly are met, whatever the rounding of their coefficients.
bool is_met(const Goal &goal, const Figure &figure) {
  if (figure.trouble != Trouble::none) return false;
  const double slack = std::max(1e-9 * *goal.asked, is_in_decibels(goal.quantity) ? 1e-7 : 0);
  return goal.quantity == Quantity::attenuation ? figure.value >= *goal.asked - slack
                                                : figure.value <= *goal.asked + slack;
}

} // namespace

std::vector<Judgement> judge(const Goals &goals, const JudgedFilter &exact, const JudgedFilter *quantized) {
  std::vector<Judgement> all;
  Judge judge_exact(goals, exact), judge_quantized(goals, quantized ? *quantized : exact);
  for (const Goal &goal : goals.goals) {
    Judgement judgement{goal, judge_exact.figure(goal), {}, {}};
    if (quantized) judgement.quantized = judge_quantized.figure(goal);
    if (goal.asked) judgement.met = is_met(goal, judgement.delivered());
    all.push_back(std::move(judgement));
  }
  return all;
}

std::optional<bool> all_met(std::span<const Judgement> judgements) {
  std::optional<bool> met;
  for (const Judgement &judgement : judgements)
    if (judgement.met) met = met.value_or(true) && *judgement.met;
  return met;
}

std::optional<bool> meets(const Goals &goals, const JudgedFilter &filter) {
  std::optional<bool> met;
  Judge judge(goals, filter);
  for (const Goal &goal : goals.goals) {
    if (!goal.asked) continue;
    met = is_met(goal, judge.figure(goal));
    if (!*met) break;
  }
  return met;
}

GainRange gain_range(const JudgedFilter &filter, FrequencyBand band) {
  const Extremes found = extremes(filter, {band}, {}, [](double gain, double) { return gain; });
  const auto figure = [&](Extreme extreme, bool zero) {
    if (!found.number) return Figure{NAN, extreme.w, Trouble::no_number};
    if (zero) return Figure{-INFINITY, extreme.w, Trouble::zero};
    return Figure{in_db(extreme.value), extreme.w};
  };
  GainRange range{figure(found.largest, found.largest.value == 0), figure(found.smallest, found.zero)};
  const bool infinite = filter.trouble == Trouble::pole_on_circle || filter.trouble == Trouble::pole_on_axis;
  if (infinite && filter.trouble_at >= band.low && filter.trouble_at <= band.high)
    range.largest = {INFINITY, filter.trouble_at, filter.trouble};
  return range;
}

} // namespace brisel
