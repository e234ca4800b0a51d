// filled_record.h - specifications, systems and settings out of fuzz input.
#pragma once

#include "engine/core/design_state.h"
#include "fuzz/byte_source.h"

#include <algorithm>
#include <array>

namespace brisel {

/// A specification of any type whose frequencies ascend below half the sampling frequency, but for a byte now and then
/// that makes one of them anything.
inline void fill_spec(ByteSource &in, int type, FilterSpec &spec) {
  spec = {};
  spec.type = type;
  spec.sampling_frequency = two_pi * (in.byte() < 250 ? 8000 : in.any());
  const double half = spec.sampling_frequency / 2;
  std::array<double, 20> edges;
  for (double &edge : edges) edge = half * in.fraction();
  const auto usual = [&](int count) {
    std::sort(edges.begin(), edges.begin() + count);
    if (in.byte() >= 252) edges[static_cast<std::size_t>(in.below(count))] = in.any();
  };
  const auto ripple = [&](double most) { return in.byte() < 250 ? most * in.fraction() : in.any(); };
  spec.passband_ripple = ripple(3);
  spec.stopband_ripple = ripple(150);
  spec.slope = in.coefficient();
  spec.symbol_rate = ripple(half);
  spec.rolloff = ripple(1);
  switch (FilterType{static_cast<std::int8_t>(type)}) {
  case FilterType::low_pass:
    usual(2);
    spec.passband_edge[0] = edges[0], spec.stopband_edge[0] = edges[1];
    break;
  case FilterType::high_pass:
    usual(2);
    spec.passband_edge[0] = edges[1], spec.stopband_edge[0] = edges[0];
    break;
  case FilterType::band_pass:
    usual(4);
    spec.passband_edge = {edges[1], edges[2]}, spec.stopband_edge = {edges[0], edges[3]};
    break;
  case FilterType::band_stop:
    usual(4);
    spec.passband_edge = {edges[0], edges[3]}, spec.stopband_edge = {edges[1], edges[2]};
    break;
  case FilterType::multiband:
  case FilterType::arbitrary_magnitude: {
    spec.band_count = in.below(type == code(FilterType::multiband) ? 6 : 4);
    usual(20);
    for (std::size_t i = 0; i < max_bands; i++) {
      spec.band_lower[i] = edges[2 * i], spec.band_upper[i] = edges[2 * i + 1];
      spec.band_value[i] = in.coefficient();
      spec.band_ripple[i] = ripple(0.1);
    }
    for (std::size_t i = 0; i < max_arbitrary_bands; i++) {
      spec.fixed_gain[i] = in.byte() % 2;
      spec.list_flag[i] = in.byte() % 2;
      spec.proportional[i] = in.byte() % 2;
      spec.point_count[i] = in.byte() % 5;
      for (std::size_t k = 0; k < spec.point_count[i]; k++) {
        const std::size_t place = max_points_per_band * i + k;
        spec.function_frequency[place] =
            spec.band_lower[i] + (spec.band_upper[i] - spec.band_lower[i]) * static_cast<double>(k) / 4;
        spec.function_value[place] = in.coefficient();
      }
    }
    break;
  }
  case FilterType::arbitrary_group_delay:
    spec.band_count = in.below(8);
    usual(8);
    for (std::size_t i = 0; i < static_cast<std::size_t>(spec.band_count); i++) {
      spec.function_frequency[i] = edges[i];
      spec.function_value[i] = 5 * in.coefficient();
    }
    break;
  default:
    usual(2);
    spec.passband_edge = {edges[0], edges[1]};
  }
}

inline void fill_triples(ByteSource &in, int count, SectionEntry &entry) {
  entry = {};
  entry.section_count = static_cast<std::int16_t>(count);
  entry.order = static_cast<std::int16_t>(2 * count);
  entry.sample_rate = two_pi * 8000;
  entry.gain = in.coefficient();
  entry.pars = in.coefficient();
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); i++) {
    for (double &b : entry.numerators[i]) b = in.coefficient();
    entry.denominators[i] = {1, in.coefficient(), in.coefficient() / 2};
    if (in.byte() >= 250) entry.denominators[i][0] = in.coefficient();
    entry.shift[i] = in.byte() % 4;
  }
}

inline void fill_ratio(ByteSource &in, int order, RatioEntry &entry) {
  entry = {};
  entry.numerator_order = static_cast<std::int16_t>(in.below(order + 1));
  entry.denominator_order = static_cast<std::int16_t>(order);
  entry.sample_rate = two_pi * 8000;
  entry.gain = in.coefficient();
  for (int i = 0; i <= entry.numerator_order; i++) entry.numerator[static_cast<std::size_t>(i)] = in.coefficient();
  for (int i = 0; i <= order; i++) entry.denominator[static_cast<std::size_t>(i)] = i == 0 ? 1 : in.coefficient();
}

inline void fill_lattice(ByteSource &in, int order, LatticeEntry &entry) {
  entry = {};
  entry.order = static_cast<std::int16_t>(order);
  entry.lead = static_cast<std::int16_t>(in.byte() >= 240 ? in.below(5) : 0);
  entry.sample_rate = two_pi * 8000;
  entry.gain = in.coefficient();
  for (int i = 1; i <= order; i++) entry.kappa[static_cast<std::size_t>(i)] = in.coefficient() / 2;
  for (int i = 0; i <= order + entry.lead; i++) entry.gamma[static_cast<std::size_t>(i)] = in.coefficient();
}

inline void fill_ladder(ByteSource &in, int order, std::int8_t form, LadderEntry &entry) {
  entry = {};
  entry.order = static_cast<std::int16_t>(order);
  entry.form = form;
  entry.lead = static_cast<std::int16_t>(in.byte() >= 240 ? in.below(5) : 0);
  entry.alpha_count = static_cast<std::int16_t>(entry.lead + 2 * order + 1);
  entry.sample_rate = two_pi * 8000;
  entry.gain = in.coefficient();
  for (int i = 0; i < entry.alpha_count; i++) entry.alpha[static_cast<std::size_t>(i)] = in.coefficient();
}

/// Sections or lists of one form, the others empty.
inline void fill_form(ByteSource &in, RealizationForm form, int largest_order, IirForms &forms) {
  forms = {};
  const int order = 1 + in.below(largest_order), sections = (order + 1) / 2;
  switch (form) {
  case RealizationForm::cascade:
    return fill_triples(in, sections, forms.cascade);
  case RealizationForm::parallel:
    return fill_triples(in, sections, forms.parallel);
  case RealizationForm::ratio:
    return fill_ratio(in, order, forms.ratio);
  case RealizationForm::lattice:
    return fill_lattice(in, order, forms.lattice);
  case RealizationForm::ladder_1:
    return fill_ladder(in, std::max(order, 2), 0, forms.ladder_1);
  default:
    return fill_ladder(in, std::max(order, 2), 1, forms.ladder_2);
  }
}

} // namespace brisel
