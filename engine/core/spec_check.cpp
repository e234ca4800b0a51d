#include "engine/core/spec_check.h"

#include "engine/core/code_tables.h"
#include "engine/core/spec_bands.h"
#include "engine/files/text_file.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <span>
#include <utility>

namespace brisel {

namespace {

constexpr double six_digits = 1e-5; // relative error of an edge that was written with six digits, and some

struct Edge {
  SpecField field;
  int index;
};
struct TypeRules {
  std::array<Edge, 4> edges; // ascending
  int edge_count;
  bool whole_range; // edges may lie at 0 and at half the sampling frequency
  std::array<SpecField, 2> ripples;
  int ripple_count;
  bool ripples_in_db;
};
constexpr Edge pass_1{SpecField::passband_edge, 0}, pass_2{SpecField::passband_edge, 1};
constexpr Edge stop_1{SpecField::stopband_edge, 0}, stop_2{SpecField::stopband_edge, 1};
constexpr SpecField pass_ripple = SpecField::passband_ripple, stop_ripple = SpecField::stopband_ripple;
constexpr std::array type_rules{
    TypeRules{{pass_1, stop_1}, 2, false, {pass_ripple, stop_ripple}, 2, true},
    TypeRules{{stop_1, pass_1}, 2, false, {pass_ripple, stop_ripple}, 2, true},
    TypeRules{{stop_1, pass_1, pass_2, stop_2}, 4, false, {pass_ripple, stop_ripple}, 2, true},
    TypeRules{{pass_1, stop_1, stop_2, pass_2}, 4, false, {pass_ripple, stop_ripple}, 2, true},
    TypeRules{{pass_1, pass_2}, 2, true, {pass_ripple}, 1, false},
    TypeRules{{}, 0, true, {}, 0, false},
    TypeRules{{pass_1, pass_2}, 2, true, {pass_ripple}, 1, false},
    TypeRules{{}, 0, true, {}, 0, false},
    TypeRules{{}, 0, true, {pass_ripple}, 1, false},
    TypeRules{{pass_1}, 1, false, {stop_ripple}, 1, true},
    TypeRules{{}, 0, true, {pass_ripple, stop_ripple}, 2, true},
    TypeRules{{}, 0, true, {pass_ripple, stop_ripple}, 2, true},
};
static_assert(type_rules.size() == filter_type_count);

std::string frequency(const FilterSpec &spec, double value) {
  return in_radians(spec) ? formatf("%.10g rad/s", value) : formatf("%.10g Hz", value * inverse_two_pi);
}

std::string field_name(const FilterSpec &spec, Edge at) {
  const bool two_edges = type_rules[spec.type].edge_count == 4 || type_rules[spec.type].whole_range;
  const char *which = !two_edges ? "" : at.index == 0 ? "lower " : "upper ";
  switch (at.field) {
  case SpecField::sampling_frequency:
    return "the sampling frequency";
  case SpecField::passband_edge:
    return formatf("the %spassband edge", which);
  case SpecField::stopband_edge:
    return formatf("the %sstopband edge", which);
  case SpecField::passband_ripple:
    return type_rules[spec.type].ripples_in_db ? "the passband ripple" : "the ripple";
  case SpecField::stopband_ripple:
    return "the stopband ripple";
  case SpecField::symbol_rate:
    return "the symbol rate";
  case SpecField::rolloff:
    return "the rolloff factor";
  case SpecField::slope:
    return "the slope";
  case SpecField::band_count:
    return spec.type == code(FilterType::arbitrary_group_delay) ? "the number of function points"
                                                                : "the number of bands";
  case SpecField::band_lower:
    return formatf("the lower edge of band %d", at.index + 1);
  case SpecField::band_upper:
    return formatf("the upper edge of band %d", at.index + 1);
  case SpecField::band_value:
    return formatf("the desired value of band %d", at.index + 1);
  case SpecField::band_ripple:
    return formatf("the ripple of band %d", at.index + 1);
  case SpecField::point_count:
    return formatf("the number of function points of band %d", at.index + 1);
  case SpecField::function_frequency:
  case SpecField::function_value:
    break;
  }
  const char *what = at.field == SpecField::function_value ? "value" : "frequency";
  if (spec.type != code(FilterType::arbitrary_magnitude))
    return formatf("the %s of function point %d", what, at.index + 1);
  return formatf("the %s of function point %d of band %d", what, at.index % max_points_per_band + 1,
                 at.index / max_points_per_band + 1);
}

using Complaint = std::optional<SpecComplaint>;

Complaint complain(const FilterSpec &spec, Edge at, const std::string &rest) {
  return SpecComplaint{at.field, at.index, field_name(spec, at) + rest};
}

std::string half_sampling(const FilterSpec &spec) {
  return "half the sampling frequency, " + frequency(spec, spec.sampling_frequency / 2);
}

Complaint check_finite(const FilterSpec &spec) {
  constexpr std::array<std::pair<SpecField, int>, 14> arrays{{{SpecField::sampling_frequency, 1},
                                                              {SpecField::passband_edge, 2},
                                                              {SpecField::stopband_edge, 2},
                                                              {SpecField::passband_ripple, 1},
                                                              {SpecField::stopband_ripple, 1},
                                                              {SpecField::symbol_rate, 1},
                                                              {SpecField::rolloff, 1},
                                                              {SpecField::slope, 1},
                                                              {SpecField::band_lower, max_bands},
                                                              {SpecField::band_upper, max_bands},
                                                              {SpecField::band_value, max_bands},
                                                              {SpecField::band_ripple, max_bands},
                                                              {SpecField::function_frequency, max_function_points},
                                                              {SpecField::function_value, max_function_points}}};
  for (const auto &[field, count] : arrays)
    for (int i = 0; i < count; i++)
      if (!std::isfinite(spec_value(spec, field, i))) return complain(spec, {field, i}, " is not a finite number");
  return {};
}

Complaint check_sampling(const FilterSpec &spec) {
  const double rate = spec.sampling_frequency;
  const Edge at{SpecField::sampling_frequency, 0};
  const std::string shown = ", " + frequency(spec, rate) + ", ";
  if (rate <= 0) return complain(spec, at, shown + "is not above zero");
  if (rate < min_sampling_frequency) return complain(spec, at, shown + "is too small");
  if (rate > max_sampling_frequency) return complain(spec, at, shown + "is too large");
  return {};
}

/// Ascending frequencies between 0 and half the sampling frequency, both included when `whole_range` says so.
/// `touching`: the edges are those of bands, lower and upper in turn, and a band may begin where the one before ends.
Complaint check_edges(const FilterSpec &spec, std::span<const Edge> edges, bool whole_range, bool touching = false) {
  const auto value = [&](Edge edge) { return spec_value(spec, edge.field, edge.index); };
  const auto shown = [&](Edge edge) { return ", " + frequency(spec, value(edge)); };
  const double half = spec.sampling_frequency / 2;
  for (const Edge edge : edges) {
    if (value(edge) < 0) return complain(spec, edge, shown(edge) + ", is below zero");
    if (value(edge) == 0 && !whole_range) return complain(spec, edge, " is zero");
    const bool at_half = same_frequency(value(edge), half);
    if (value(edge) > half && !at_half) return complain(spec, edge, shown(edge) + ", is above " + half_sampling(spec));
    if (at_half && !whole_range) return complain(spec, edge, shown(edge) + ", is not below " + half_sampling(spec));
  }
  for (std::size_t i = 1; i < edges.size(); i++) {
    const bool may_touch = touching && i % 2 == 0;
    if (value(edges[i]) > value(edges[i - 1]) || (may_touch && value(edges[i]) == value(edges[i - 1]))) continue;
    return complain(spec, edges[i],
                    shown(edges[i]) + ", is not above " + field_name(spec, edges[i - 1]) + shown(edges[i - 1]));
  }
  return {};
}

Complaint check_points(const FilterSpec &spec, int first, int count) {
  std::array<Edge, max_function_points> points{};
  for (int i = 0; i < count; i++) points[i] = {SpecField::function_frequency, first + i};
  return check_edges(spec, std::span(points).first(count), true);
}

Complaint check_level(const FilterSpec &spec, Edge at) {
  const double level = spec_value(spec, at.field, at.index);
  if (std::fabs(level) <= max_attenuation_db) return {};
  return complain(spec, at, formatf(", %.10g dB, is beyond %g dB", level, max_attenuation_db));
}

double largest_desired(const FilterSpec &spec) {
  double largest = 0;
  const auto take = [&](double gain) { largest = std::max(largest, std::fabs(gain)); };
  for (int i = 0; i < spec.band_count; i++) {
    if (spec.type == code(FilterType::multiband)) {
      take(spec.band_value[i]);
      continue;
    }
    if (spec.fixed_gain[i]) take(linear_gain(spec, i, spec.band_value[i]));
    for (int k = 0; !spec.fixed_gain[i] && k < spec.point_count[i]; k++)
      take(linear_gain(spec, i, spec.function_value[max_points_per_band * i + k]));
  }
  return largest;
}

/// A filter that does nothing meets a ripple of 100 %, and the length formulas say nothing of larger ones. Where the
/// desired value is 0 everywhere there is nothing to measure a ripple by.
Complaint check_band_ripples(const FilterSpec &spec) {
  const bool arbitrary = spec.type == code(FilterType::arbitrary_magnitude);
  const double largest = largest_desired(spec);
  for (int i = 0; i < spec.band_count; i++) {
    const bool proportional = arbitrary && spec.proportional[i] != 0;
    const double most = proportional ? 1 : largest;
    if (most == 0 || spec.band_ripple[i] <= most) continue;
    return complain(spec, {SpecField::band_ripple, i},
                    formatf(proportional ? ", %.10g, is above %g, which is 100 %%"
                                         : ", %.10g, is above the largest desired value, %.10g",
                            spec.band_ripple[i], most));
  }
  return {};
}

Complaint check_bands(const FilterSpec &spec) {
  const bool arbitrary = spec.type == code(FilterType::arbitrary_magnitude);
  const int most = arbitrary ? max_arbitrary_bands : max_bands;
  if (spec.band_count < 1 || spec.band_count > most)
    return complain(spec, {SpecField::band_count, 0}, formatf(", %d, is not 1 to %d", spec.band_count, most));
  std::array<Edge, 2 * max_bands> edges{};
  for (int i = 0; i < spec.band_count; i++) {
    edges[2 * i] = {SpecField::band_lower, i};
    edges[2 * i + 1] = {SpecField::band_upper, i};
  }
  if (auto complaint = check_edges(spec, std::span(edges).first(2 * spec.band_count), true, true)) return complaint;
  for (int i = 0; i < spec.band_count; i++)
    if (spec.band_ripple[i] <= 0)
      return complain(spec, {SpecField::band_ripple, i}, formatf(", %.10g, is not above zero", spec.band_ripple[i]));
  for (int i = 0; arbitrary && i < spec.band_count; i++) {
    if (spec.fixed_gain[i]) {
      if (!spec.list_flag[i]) continue;
      if (auto complaint = check_level(spec, {SpecField::band_value, i})) return complaint;
      continue;
    }
    if (spec.point_count[i] < 1 || spec.point_count[i] > max_points_per_band)
      return complain(spec, {SpecField::point_count, i},
                      formatf(", %d, is not 1 to %d", spec.point_count[i], max_points_per_band));
    const int first = max_points_per_band * i;
    if (auto complaint = check_points(spec, first, spec.point_count[i])) return complaint;
    for (int k = 0; spec.list_flag[i] && k < spec.point_count[i]; k++)
      if (auto complaint = check_level(spec, {SpecField::function_value, first + k})) return complaint;
  }
  return check_band_ripples(spec);
}

double raised_cosine_edge(const FilterSpec &spec, double sign) {
  return 0.5 * spec.symbol_rate * (1 + sign * spec.rolloff);
}

Complaint check_raised_cosine(const FilterSpec &spec) {
  const Edge rate{SpecField::symbol_rate, 0}, rolloff{SpecField::rolloff, 0};
  if (spec.symbol_rate <= 0)
    return complain(spec, rate, ", " + frequency(spec, spec.symbol_rate) + ", is not above zero");
  if (spec.symbol_rate < min_sampling_frequency)
    return complain(spec, rate, ", " + frequency(spec, spec.symbol_rate) + ", is too small");
  if (spec.rolloff < 0 || spec.rolloff > 1)
    return complain(spec, rolloff, formatf(", %.10g, is not between 0 and 1", spec.rolloff));
  if (spec.rolloff == 0) return complain(spec, rolloff, " is 0, which leaves a transition band of no width");
  const double edge = raised_cosine_edge(spec, 1);
  if (edge > spec.sampling_frequency / 2 * (1 + six_digits))
    return complain(spec, rate,
                    ", " + frequency(spec, spec.symbol_rate) + ", puts the stopband edge, " + frequency(spec, edge) +
                        ", above " + half_sampling(spec));
  return {};
}

Complaint check_ripples(const FilterSpec &spec, const TypeRules &rules) {
  for (int i = 0; i < rules.ripple_count; i++) {
    const Edge ripple{rules.ripples[i], 0};
    const double value = spec_value(spec, ripple.field);
    if (value <= 0)
      return complain(spec, ripple, formatf(", %.10g%s, is not above zero", value, rules.ripples_in_db ? " dB" : ""));
    if (rules.ripples_in_db) {
      if (auto complaint = check_level(spec, ripple)) return complaint;
    } else if (spec.type != code(FilterType::arbitrary_group_delay) && value > 100) { // whose ripple is in samples
      return complain(spec, ripple, formatf(", %.10g %%, is above 100 %%", value));
    }
  }
  return {};
}

} // namespace

double &spec_value(FilterSpec &spec, SpecField field, int index) {
  const auto i = static_cast<std::size_t>(index);
  switch (field) {
  case SpecField::sampling_frequency:
    return spec.sampling_frequency;
  case SpecField::passband_edge:
    return spec.passband_edge[i];
  case SpecField::stopband_edge:
    return spec.stopband_edge[i];
  case SpecField::passband_ripple:
    return spec.passband_ripple;
  case SpecField::stopband_ripple:
    return spec.stopband_ripple;
  case SpecField::symbol_rate:
    return spec.symbol_rate;
  case SpecField::rolloff:
    return spec.rolloff;
  case SpecField::slope:
    return spec.slope;
  case SpecField::band_lower:
    return spec.band_lower[i];
  case SpecField::band_upper:
    return spec.band_upper[i];
  case SpecField::band_value:
    return spec.band_value[i];
  case SpecField::band_ripple:
    return spec.band_ripple[i];
  case SpecField::function_frequency:
    return spec.function_frequency[i];
  case SpecField::function_value:
    return spec.function_value[i];
  case SpecField::band_count:
  case SpecField::point_count:
    break;
  }
  std::abort(); // a count is no number of this kind
}

double spec_value(const FilterSpec &spec, SpecField field, int index) {
  return spec_value(const_cast<FilterSpec &>(spec), field, index);
}

std::optional<SpecComplaint> check_spec(const FilterSpec &spec) {
  const TypeRules &rules = type_rules[spec.type];
  if (auto complaint = check_finite(spec)) return complaint;
  if (auto complaint = check_sampling(spec)) return complaint;
  if (auto complaint = check_edges(spec, std::span(rules.edges).first(rules.edge_count), rules.whole_range))
    return complaint;
  switch (static_cast<FilterType>(spec.type)) {
  case FilterType::differentiator:
    if (spec.slope == 0) return complain(spec, {SpecField::slope, 0}, " is zero");
    break;
  case FilterType::multiband:
  case FilterType::arbitrary_magnitude:
    if (auto complaint = check_bands(spec)) return complaint;
    break;
  case FilterType::arbitrary_group_delay:
    if (spec.band_count < 1 || spec.band_count > max_function_points)
      return complain(spec, {SpecField::band_count, 0},
                      formatf(", %d, is not 1 to %d", spec.band_count, max_function_points));
    if (auto complaint = check_points(spec, 0, spec.band_count)) return complaint;
    break;
  case FilterType::half_band:
    if (spec.passband_edge[0] >= spec.sampling_frequency / 4)
      return complain(spec, pass_1,
                      ", " + frequency(spec, spec.passband_edge[0]) +
                          ", is not below a quarter of the sampling frequency, " +
                          frequency(spec, spec.sampling_frequency / 4));
    break;
  case FilterType::raised_cosine:
  case FilterType::root_raised_cosine:
    if (auto complaint = check_raised_cosine(spec)) return complaint;
    break;
  default:
    break;
  }
  return check_ripples(spec, rules);
}

void derive_raised_cosine_edges(FilterSpec &spec) {
  spec.passband_edge[0] = raised_cosine_edge(spec, -1);
  spec.stopband_edge[0] = raised_cosine_edge(spec, 1);
  settle_edges(spec);
}

bool same_frequency(double a, double b) {
  const double larger = std::max(std::fabs(a), std::fabs(b));
  const double unit = std::nextafter(larger, HUGE_VAL) - larger;
  return std::fabs(a - b) <= 4 * unit;
}

namespace {

std::array<std::span<double>, 5> edges_of(FilterSpec &spec) {
  return {spec.passband_edge, spec.stopband_edge, spec.band_lower, spec.band_upper, spec.function_frequency};
}

} // namespace

void settle_edges(FilterSpec &spec) {
  if (!type_rules[spec.type].whole_range) return;
  const double half = spec.sampling_frequency / 2;
  for (const std::span<double> edges : edges_of(spec))
    for (double &edge : edges)
      if (std::fabs(edge - half) <= half * six_digits) edge = half;
  for (std::size_t b = 1; b < spec.band_lower.size(); b++)
    if (same_frequency(spec.band_lower[b], spec.band_upper[b - 1])) spec.band_lower[b] = spec.band_upper[b - 1];
}

FilterSpec normalised(const FilterSpec &given) {
  FilterSpec out = given;
  const double period = given.sampling_period;
  out.sampling_frequency = two_pi;
  out.sampling_period = 1;
  out.symbol_rate *= period;
  const double half = two_pi / 2;
  for (const std::span<double> edges : edges_of(out))
    for (double &edge : edges) edge = same_frequency(edge * period, half) ? half : edge * period;
  return out;
}

} // namespace brisel
