// band_setup.cpp - specification to bands; desired value and weight over frequency.
#include "engine/fir/band_setup.h"

#include "engine/files/text_file.h"
#include "engine/fir/halfband.h"

#include <algorithm>
#include <cmath>

namespace brisel {

// A transition band of the five-band bandpass may leave its curve by this much when passband and stopbands are just
// met: enough to let the filter cross as it likes, too little for a resonance.
constexpr double transition_deviation = 0.3;
// The bands of a specification are meant to have a width; below this one they are a single point of any grid.
constexpr double least_width = 1e-9;

BandDeviations band_deviations(double passband_ripple_db, double stopband_attenuation_db) {
  const double a = std::pow(10, -passband_ripple_db / 20);
  return {(1 - a) / (1 + a), 2 * std::pow(10, -stopband_attenuation_db / 20) / (1 + a)};
}

namespace {

/// Collects bands with the deviation each of them may have; weights follow from the deviations.
class Planner {
public:
  explicit Planner(BandPlan &plan) : plan(plan) {}

  void add(const PlanBand &band, double deviation) {
    deviations[plan.band_count] = deviation;
    plan.bands[plan.band_count++] = band;
  }

  /// The band that may deviate most gets weight 1, the others the ratio of the deviations.
  bool weigh(std::string &reason) {
    const auto end = deviations.begin() + plan.band_count;
    for (auto d = deviations.begin(); d != end; ++d) {
      if (!(*d > 0) || !std::isfinite(*d)) {
        reason = formatf("band %d has no positive ripple", static_cast<int>(d - deviations.begin()) + 1);
        return false;
      }
    }
    plan.allowed_deviation = *std::max_element(deviations.begin(), end);
    for (int b = 0; b < plan.band_count; b++) plan.bands[b].weight = plan.allowed_deviation / deviations[b];
    return true;
  }

private:
  BandPlan &plan;
  std::array<double, max_bands> deviations{};
};

} // namespace

static void add_bands(const FilterSpec &spec, BandPlan &plan, Planner &planner) {
  const double pi = std::numbers::pi;
  const auto &pass = spec.passband_edge;
  const auto &stop = spec.stopband_edge;
  const BandDeviations d = band_deviations(spec.passband_ripple, spec.stopband_ripple);
  switch (static_cast<FilterType>(spec.type)) {
  case FilterType::low_pass:
    planner.add({.lower = 0, .upper = pass[0], .value = 1}, d.passband);
    planner.add({.lower = stop[0], .upper = pi, .side = StopSide::above_passband}, d.stopband);
    break;
  case FilterType::high_pass:
    planner.add({.lower = 0, .upper = stop[0], .side = StopSide::below_passband}, d.stopband);
    planner.add({.lower = pass[0], .upper = pi, .value = 1}, d.passband);
    break;
  case FilterType::band_pass: {
    const double transition = std::max(transition_deviation, std::max(d.passband, d.stopband));
    planner.add({.lower = 0, .upper = stop[0], .side = StopSide::below_passband}, d.stopband);
    if (spec.split_transition)
      planner.add({.lower = stop[0] + band_offset,
                   .upper = pass[0] - band_offset,
                   .value = 1,
                   .shape = BandShape::rising_transition},
                  transition);
    planner.add({.lower = pass[0], .upper = pass[1], .value = 1}, d.passband);
    if (spec.split_transition)
      planner.add({.lower = pass[1] + band_offset,
                   .upper = stop[1] - band_offset,
                   .value = 1,
                   .shape = BandShape::falling_transition},
                  transition);
    planner.add({.lower = stop[1], .upper = pi, .side = StopSide::above_passband}, d.stopband);
    break;
  }
  case FilterType::band_stop:
    planner.add({.lower = 0, .upper = pass[0], .value = 1}, d.passband);
    planner.add({.lower = stop[0], .upper = stop[1]}, d.stopband);
    planner.add({.lower = pass[1], .upper = pi, .value = 1}, d.passband);
    break;
  case FilterType::differentiator:
    planner.add({.lower = pass[0], .upper = pass[1], .value = spec.slope, .shape = BandShape::slope, .relative = true},
                spec.passband_ripple / 100);
    break;
  case FilterType::hilbert:
    planner.add({.lower = pass[0], .upper = pass[1], .value = 1}, spec.passband_ripple / 100);
    break;
  case FilterType::multiband:
    for (int b = 0; b < std::min(spec.band_count, max_bands); b++)
      planner.add({.lower = spec.band_lower[b], .upper = spec.band_upper[b], .value = spec.band_value[b]},
                  spec.band_ripple[b]);
    break;
  case FilterType::arbitrary_magnitude:
    for (int b = 0; b < std::min(spec.band_count, max_arbitrary_bands); b++) {
      plan.tables[b] = magnitude_table(spec, b);
      planner.add({.lower = spec.band_lower[b],
                   .upper = spec.band_upper[b],
                   .value = 1,
                   .shape = BandShape::table,
                   .relative = spec.proportional[b] != 0,
                   .table = b},
                  spec.band_ripple[b]);
    }
    break;
  case FilterType::half_band: // its lowpass has no stopband but the zero that an even length forces
    planner.add({.lower = 0, .upper = 2 * pass[0], .value = 1, .shape = BandShape::half_band_prototype},
                2 * std::pow(10, -spec.stopband_ripple / 20));
    break;
  case FilterType::raised_cosine:
  case FilterType::root_raised_cosine:
    plan.curve_edges = {pass[0], stop[0]};
    if (pass[0] > least_width) planner.add({.lower = 0, .upper = pass[0], .value = 1}, d.passband);
    planner.add({.lower = pass[0],
                 .upper = stop[0],
                 .value = 1,
                 .shape = static_cast<FilterType>(spec.type) == FilterType::raised_cosine
                              ? BandShape::raised_cosine
                              : BandShape::root_raised_cosine},
                d.passband);
    if (stop[0] < pi - least_width)
      planner.add({.lower = stop[0], .upper = pi, .side = StopSide::above_passband}, d.stopband);
    break;
  case FilterType::arbitrary_group_delay: // has no linear phase
    break;
  }
}

// Orders and widths, and neighbours that touch moved apart.
static bool check_bands(BandPlan &plan, std::string &reason) {
  if (plan.band_count < 1) {
    reason = "there are no bands";
    return false;
  }
  for (int b = 0; b < plan.band_count; b++) {
    PlanBand &band = plan.bands[b];
    if (!(band.lower >= 0) || !(band.upper <= std::numbers::pi * (1 + 1e-12))) {
      reason = formatf("band %d lies outside 0 to half the sampling frequency", b + 1);
      return false;
    }
    band.upper = std::min(band.upper, std::numbers::pi);
    if (b > 0) {
      PlanBand &before = plan.bands[b - 1];
      if (band.lower < before.upper) {
        reason = formatf("bands %d and %d overlap", b, b + 1);
        return false;
      }
      if (band.lower - before.upper < band_offset) {
        band.lower += band_offset;
        before.upper -= band_offset;
      }
    }
  }
  for (int b = 0; b < plan.band_count; b++) {
    if (plan.bands[b].upper - plan.bands[b].lower < least_width) {
      reason = formatf("band %d has no width", b + 1);
      return false;
    }
  }
  return true;
}

static bool is_steep(const PlanBand &band) {
  return band.value > 0.0001;
}

bool plan_bands(const FilterSpec &spec, const PlanOptions &options, BandPlan &plan, PlanRefusal &refusal) {
  plan = {};
  refusal = {};
  const bool half_band = static_cast<FilterType>(spec.type) == FilterType::half_band;
  plan.symmetry = options.symmetry;
  plan.length = half_band ? halfband_prototype_length(spec.length) : spec.length;
  plan.compensation = options.compensation;
  // 6 dB an octave is the customary name of a response in inverse proportion to frequency.
  plan.weight_exponent = options.rolloff_db / 6.0;
  if (half_band && !plan.symmetric()) {
    refusal.reason = "a halfband filter is symmetric";
    return false;
  }
  if (const auto b = band_that_jumps(spec)) {
    refusal.reason = formatf("bands %d and %d touch and their gains differ there; leave a gap between them, or use the "
                             "window method",
                             *b, *b + 1);
    return false;
  }

  Planner planner(plan);
  add_bands(spec, plan, planner);
  if (!check_bands(plan, refusal.reason) || !planner.weigh(refusal.reason)) return false;
  for (int b = 0; b < plan.band_count; b++) {
    const PlanBand &band = plan.bands[b];
    const double own_rate = half_band ? 0.5 : 1;
    if (band.value != 0 && comb_null(plan.compensation, band.lower * own_rate, band.upper * own_rate)) {
      refusal = {Message::compensation_null, formatf("the comb has a null inside band %d", b + 1)};
      return false;
    }
    // The weight of a differentiator is 2 pi / w, so its error comes out as relative error times 2 pi times slope.
    // Under that weight no single number tells what the ripples of other shapes allow.
    if (band.relative)
      plan.allowed_deviation *= band.shape == BandShape::slope && is_steep(band) ? two_pi * band.value : 0;
  }
  return true;
}

double band_desired(const BandPlan &plan, double w, int b) {
  const PlanBand &band = plan.bands[b];
  if (band.shape == BandShape::ramp)
    return std::lerp(band.value, band.end_value, (w - band.lower) / (band.upper - band.lower));
  if (band.value == 0) return 0; // also where the compensation is infinite
  const double compensation = compensation_factor(plan.compensation, w);
  switch (band.shape) {
  case BandShape::constant:
    return band.value * compensation;
  case BandShape::slope:
    return band.value * w * compensation;
  case BandShape::table:
    return interpolate(plan.tables[band.table], w) * compensation;
  case BandShape::raised_cosine:
    return raised_cosine(w, plan.curve_edges[0], plan.curve_edges[1]) * compensation;
  case BandShape::root_raised_cosine:
    return root_raised_cosine(w, plan.curve_edges[0], plan.curve_edges[1]) * compensation;
  case BandShape::rising_transition:
    return (1 - raised_cosine(w, band.lower, band.upper)) * compensation;
  case BandShape::falling_transition:
    return raised_cosine(w, band.lower, band.upper) * compensation;
  case BandShape::ramp:
    break;
  case BandShape::half_band_prototype:
    return halfband_prototype_gain(band.value * compensation_factor(plan.compensation, w / 2));
  }
  return 0;
}

std::span<const double> kinks(const BandPlan &plan, int b) {
  if (plan.bands[b].shape != BandShape::table) return {};
  const MagnitudeTable &table = plan.tables[plan.bands[b].table];
  return std::span(table.frequency).first(static_cast<std::size_t>(table.count));
}

double band_weight(const BandPlan &plan, double w, int b) {
  const PlanBand &band = plan.bands[b];
  double weight = band.weight;
  if (plan.weight_exponent != 0) {
    if (band.side == StopSide::above_passband) weight *= std::pow(w / band.lower, plan.weight_exponent);
    if (band.side == StopSide::below_passband) weight *= std::pow(2 - w / band.upper, plan.weight_exponent);
  }
  // Kept: the factor is sampling frequency over frequency, also for an arbitrary magnitude, so "proportional" means
  // proportional to frequency and not to the desired value. A slope up to 0.0001 is weighted evenly.
  if (band.relative && w != 0 && (band.shape != BandShape::slope || is_steep(band))) weight *= two_pi / w;
  return weight;
}

} // namespace brisel
