#include "engine/judge/goals.h"

#include "engine/core/code_tables.h"
#include "engine/files/text_file.h"
#include "engine/fir/desired_response.h"
#include "engine/fir/halfband.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace brisel {

namespace {

constexpr double pi = std::numbers::pi;
using Bands = std::vector<FrequencyBand>;
using Curve = std::function<double(double)>;

std::optional<double> figure_asked(double value) {
  return value > 0 ? std::optional(value) : std::nullopt;
}

// "passband", or "lower passband" and "upper passband" of two.
std::string side(const char *name, const Bands &bands, std::size_t i) {
  return bands.size() == 1 ? name : std::string(i == 0 ? "lower " : "upper ") + name;
}

void add_gaps(const Bands &gaps, std::vector<Goal> &goals) {
  int number = 0;
  for (const FrequencyBand gap : gaps) {
    number++;
    if (gap.high > gap.low)
      goals.push_back({gaps.size() == 1 ? "gap" : formatf("gap %d", number), {gap}, Quantity::gain, {}});
  }
}

Curve compensated(Curve gain, const Compensation &compensation) {
  return [gain = std::move(gain), compensation](double w) {
    const double value = gain(w);
    return value == 0 ? 0 : value * compensation_factor(compensation, w); // which may be infinite
  };
}

Goals pass_and_stop(double ripple, double attenuation, const Bands &pass, const Bands &stop, const Bands &gaps,
                    const Compensation &compensation) {
  Goals all{{}, pass, [compensation](double w) { return compensation_factor(compensation, w); }};
  for (std::size_t i = 0; i < pass.size(); i++)
    all.goals.push_back({side("passband", pass, i), {pass[i]}, Quantity::ripple, figure_asked(ripple), all.desired});
  // Two passbands that are flat at different levels are not what was asked for.
  if (pass.size() > 1) all.goals.push_back({"passbands", pass, Quantity::ripple, figure_asked(ripple), all.desired});
  for (std::size_t i = 0; i < stop.size(); i++)
    all.goals.push_back({side("stopband", stop, i), {stop[i]}, Quantity::attenuation, figure_asked(attenuation)});
  add_gaps(gaps, all.goals);
  return all;
}

Bands gaps_between_bands(const FilterSpec &spec) {
  Bands gaps;
  for (int b = 1; b < spec.band_count; b++) gaps.push_back({spec.band_upper[b - 1], spec.band_lower[b]});
  return gaps;
}

// The points of a table and where the straight lines between them cross 0: the magnitude has corners at both.
std::vector<double> corners(const MagnitudeTable &table) {
  std::vector<double> found;
  for (int i = 0; i < table.count; i++) {
    const double w = table.frequency[i], gain = table.gain[i];
    if (i > 0 && table.gain[i - 1] * gain < 0)
      found.push_back(std::lerp(table.frequency[i - 1], w, table.gain[i - 1] / (table.gain[i - 1] - gain)));
    found.push_back(w);
  }
  return found;
}

Goal magnitude_goal(const FilterSpec &spec, int b, const Compensation &compensation) {
  const MagnitudeTable table = magnitude_table(spec, b);
  const auto gain = [table](double w) { return interpolate(table, w); };
  Goal goal{formatf("band %d", b + 1),
            {{spec.band_lower[b], spec.band_upper[b]}},
            Quantity::error,
            figure_asked(spec.band_ripple[b])};
  goal.desired = compensated([gain](double w) { return std::abs(gain(w)); }, compensation);
  goal.kinks = corners(table);
  bool positive = gain(spec.band_lower[b]) > 0 && gain(spec.band_upper[b]) > 0;
  for (const double w : goal.kinks)
    if (w > spec.band_lower[b] && w < spec.band_upper[b]) positive = positive && gain(w) > 0;
  if (spec.proportional[b] && positive) goal.quantity = Quantity::relative_error;
  return goal;
}

Goal multiband_goal(const FilterSpec &spec, int b, const Compensation &compensation) {
  return {formatf("band %d", b + 1),
          {{spec.band_lower[b], spec.band_upper[b]}},
          Quantity::error,
          figure_asked(spec.band_ripple[b]),
          compensated([value = std::abs(spec.band_value[b])](double) { return value; }, compensation)};
}

template <class MakeGoal> Goals band_by_band(const FilterSpec &spec, MakeGoal make) {
  Goals all;
  for (int b = 0; b < spec.band_count; b++) all.goals.push_back(make(b));
  add_gaps(gaps_between_bands(spec), all.goals);
  return all;
}

Goals one_passband(const FilterSpec &spec, Curve desired) {
  return {{{"passband",
            {{spec.passband_edge[0], spec.passband_edge[1]}},
            Quantity::relative_error,
            figure_asked(spec.passband_ripple / 100),
            std::move(desired),
            {},
            true}},
          {}};
}

Goals raised_cosine_goals(const FilterSpec &spec, const Compensation &compensation) {
  const double pass = spec.passband_edge[0], stop = spec.stopband_edge[0];
  Goals all = pass_and_stop(spec.passband_ripple, spec.stopband_ripple, {{0, pass}}, {{stop, pi}}, {}, compensation);
  const auto curve = spec.type == code(FilterType::raised_cosine) ? raised_cosine : root_raised_cosine;
  all.goals.push_back({"gap",
                       {{pass, stop}},
                       Quantity::error,
                       {},
                       compensated([=](double w) { return curve(w, pass, stop); }, compensation)});
  return all;
}

Goals group_delay_goals(const FilterSpec &spec) {
  std::vector<double> w(spec.function_frequency.begin(), spec.function_frequency.begin() + spec.band_count),
      delay(spec.function_value.begin(), spec.function_value.begin() + spec.band_count);
  if (w.empty()) return {};
  const auto wanted = [w, delay](double x) {
    const auto i = static_cast<std::size_t>(std::upper_bound(w.begin(), w.end(), x) - w.begin());
    if (i == 0 || i == w.size()) return i == 0 ? delay.front() : delay.back();
    return std::lerp(delay[i - 1], delay[i], (x - w[i - 1]) / (w[i] - w[i - 1]));
  };
  return {
      {{"passband", {{w.front(), w.back()}}, Quantity::delay_ripple, figure_asked(spec.passband_ripple), wanted, w}},
      {}};
}

} // namespace

Goals goals_of(const FilterSpec &spec, const Compensation &compensation) {
  const double ripple = spec.passband_ripple, attenuation = spec.stopband_ripple;
  switch (static_cast<FilterType>(spec.type)) {
  case FilterType::low_pass:
  case FilterType::high_pass:
  case FilterType::band_pass:
  case FilterType::band_stop:
    return pass_and_stop(ripple, attenuation, passbands(spec), stopbands(spec), transition_bands(spec), compensation);
  case FilterType::half_band: {
    const double pass = spec.passband_edge[0], stop = halfband_stopband_edge(spec);
    return pass_and_stop(0, attenuation, {{0, pass}}, {{stop, pi}}, {{pass, stop}}, compensation);
  }
  case FilterType::raised_cosine:
  case FilterType::root_raised_cosine:
    return raised_cosine_goals(spec, compensation);
  case FilterType::differentiator:
    return one_passband(spec,
                        compensated([slope = std::abs(spec.slope)](double w) { return slope * w; }, compensation));
  case FilterType::hilbert:
    return one_passband(spec, [compensation](double w) { return compensation_factor(compensation, w); });
  case FilterType::multiband:
    return band_by_band(spec, [&](int b) { return multiband_goal(spec, b, compensation); });
  case FilterType::arbitrary_magnitude:
    return band_by_band(spec, [&](int b) { return magnitude_goal(spec, b, compensation); });
  case FilterType::arbitrary_group_delay:
    return group_delay_goals(spec);
  }
  return {};
}

Goal equalizer_goal(const FilterSpec &spec, double ripple) {
  const Bands pass = passbands(spec);
  return {pass.size() == 1 ? "passband" : "passbands", pass, Quantity::delay_ripple, figure_asked(ripple)};
}

} // namespace brisel
