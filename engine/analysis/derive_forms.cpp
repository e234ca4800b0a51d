// derive_forms.cpp - every form of a system from one of them, with the digits that each form keeps.
#include "engine/analysis/form_conversions.h"

#include "engine/analysis/pole_zero_form.h"
#include "engine/analysis/wide_ratio.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace brisel {

using Complex = std::complex<double>;

namespace {

// A conversion may leave the range of a double on its way; what comes out is then no form of the system.
template <class Values> bool finite(const Values &values) {
  return std::all_of(values.begin(), values.end(), [](const auto &v) { return std::isfinite(std::abs(v)); });
}
bool is_finite(const SectionEntry &e) {
  const auto count = static_cast<std::size_t>(e.section_count);
  return std::isfinite(e.gain) && std::isfinite(e.pars) &&
         std::all_of(e.numerators.begin(), e.numerators.begin() + count, finite<Triple>) &&
         std::all_of(e.denominators.begin(), e.denominators.begin() + count, finite<Triple>);
}
bool is_finite(const RatioEntry &e) {
  return std::isfinite(e.gain) && finite(e.numerator) && finite(e.denominator);
}
bool is_finite(const PoleZeroEntry &e) {
  return std::isfinite(e.gain) && finite(e.poles) && finite(e.zeros);
}
bool is_finite(const LatticeEntry &e) {
  return std::isfinite(e.gain) && finite(e.kappa) && finite(e.gamma);
}
bool is_finite(const LadderEntry &e) {
  return std::isfinite(e.gain) && finite(e.alpha);
}

// `source` names a realization; nothing stands for the poles and zeros.
bool derive(Domain domain, std::optional<RealizationForm> source, IirForms &forms, FormReport &found) {
  std::optional<WideRatio> wide;
  PoleZeroEntry pole_zero{};
  double sample_rate = 0;
  bool rooted = false, good = false;
  auto take = [&](const auto &entry, std::optional<WideRatio> expanded) {
    wide = std::move(expanded);
    sample_rate = entry.sample_rate;
    good = is_finite(entry);
  };
  switch (source.value_or(RealizationForm::nonlinear)) {
  case RealizationForm::cascade:
    take(forms.cascade, wide_ratio(forms.cascade));
    rooted = cascade_to_pole_zero(domain, forms.cascade, pole_zero);
    break;
  case RealizationForm::parallel:
    take(forms.parallel, wide_ratio_of_sum(domain, forms.parallel));
    rooted = parallel_to_pole_zero(domain, forms.parallel, pole_zero);
    break;
  case RealizationForm::ratio:
    take(forms.ratio, wide_ratio(domain, forms.ratio));
    break;
  case RealizationForm::lattice:
    take(forms.lattice, wide_ratio(forms.lattice));
    break;
  case RealizationForm::ladder_1:
    take(forms.ladder_1, wide_ratio(forms.ladder_1));
    break;
  case RealizationForm::ladder_2:
    take(forms.ladder_2, wide_ratio(forms.ladder_2));
    break;
  case RealizationForm::nonlinear:
    if (source) return false;
    take(forms.pole_zero, wide_ratio(forms.pole_zero));
    pole_zero = forms.pole_zero;
    rooted = arrange_pairs(std::span(pole_zero.poles).first(pole_count(pole_zero))) &&
             arrange_pairs(std::span(pole_zero.zeros).first(zero_count(pole_zero)));
    if (!rooted) return false;
    break;
  }
  const bool of_sections = source == RealizationForm::cascade || source == RealizationForm::parallel || !source;
  if (!of_sections) rooted = wide && write_pole_zero(*wide, pole_zero);
  rooted = rooted && is_finite(pole_zero);
  if (!good || (!rooted && !wide)) return false;
  if (!rooted) pole_zero = {}; // leading taps can make more poles at the origin than the record holds

  const Values x = comparison_points(domain, std::span(pole_zero.poles).first(pole_count(pole_zero)));
  auto values_of = [&]<class Real>(RealizationForm form, Real) {
    switch (form) {
    case RealizationForm::cascade:
      return cascade_values<Real>(forms.cascade, x);
    case RealizationForm::parallel:
      return parallel_values<Real>(forms.parallel, x);
    case RealizationForm::ratio:
      return ratio_values<Real>(domain, forms.ratio, x);
    case RealizationForm::lattice:
      return lattice_values<Real>(forms.lattice, x);
    case RealizationForm::ladder_1:
      return ladder_values<Real>(forms.ladder_1, x);
    default:
      return ladder_values<Real>(forms.ladder_2, x);
    }
  };
  // The source as its coefficients stand, without rounding of its own.
  const Values reference = source ? values_of(*source, 0.0L) : pole_zero_values<long double>(forms.pole_zero, x);
  if (std::none_of(reference.begin(), reference.end(),
                   [](Complex v) { return std::isfinite(std::abs(v)) && v != 0.0; }))
    return false;

  const std::int8_t keep_gain = forms.cascade.keep_gain || forms.parallel.keep_gain;
  pole_zero.sample_rate = sample_rate;
  if (source) forms.pole_zero = pole_zero;
  found.pole_zero = !source ? 16 : rooted ? digits_kept(x, reference, pole_zero_values(forms.pole_zero, x)) : -1;
  // Zeros of a sum are sometimes had better from its expanded numerator.
  if (PoleZeroEntry other{}; source == RealizationForm::parallel && found.pole_zero < 12 && wide &&
                             write_pole_zero(*wide, other) && is_finite(other)) {
    other.sample_rate = sample_rate;
    if (const double digits = digits_kept(x, reference, pole_zero_values(other, x)); digits > found.pole_zero) {
      forms.pole_zero = other;
      found.pole_zero = digits;
      rooted = true;
    }
  }
  found.dropped_delay = 0;

  // One form after the other: made by `make`, or emptied when there is none.
  auto derive = [&](RealizationForm form, auto &entry, auto make) -> double {
    if (form == source) return 16;
    if (entry = {}; make() && is_finite(entry)) {
      entry.sample_rate = sample_rate;
      const bool earlier = form == RealizationForm::cascade || form == RealizationForm::parallel;
      return digits_kept(x, reference, values_of(form, 0.0), earlier ? -found.dropped_delay : 0);
    }
    entry = {};
    entry.sample_rate = sample_rate;
    return -1;
  };
  found.cascade = derive(RealizationForm::cascade, forms.cascade, [&] {
    if (!rooted || !pole_zero_to_cascade(domain, forms.pole_zero, forms.cascade, found.dropped_delay)) return false;
    // Poles and zeros that were entered run as these sections, and answer when they say.
    if (!source && domain == Domain::z) restore_delay(forms.cascade, found.dropped_delay);
    return true;
  });
  found.parallel = derive(RealizationForm::parallel, forms.parallel, [&] {
    return found.cascade >= 0 && cascade_to_parallel(domain, forms.cascade, forms.parallel);
  });
  found.ratio =
      derive(RealizationForm::ratio, forms.ratio, [&] { return wide && write_ratio(domain, *wide, forms.ratio); });
  found.lattice =
      derive(RealizationForm::lattice, forms.lattice, [&] { return wide && write_lattice(*wide, forms.lattice); });
  found.ladder_1 = derive(RealizationForm::ladder_1, forms.ladder_1,
                          [&] { return wide && write_ladder(*wide, LadderForm::one, forms.ladder_1); });
  found.ladder_2 = derive(RealizationForm::ladder_2, forms.ladder_2,
                          [&] { return wide && write_ladder(*wide, LadderForm::two, forms.ladder_2); });
  forms.cascade.keep_gain = forms.parallel.keep_gain = keep_gain;
  return true;
}

} // namespace

bool derive_forms(Domain domain, RealizationForm source, IirForms &forms, FormReport &found) {
  return derive(domain, source, forms, found);
}

bool derive_forms_of_pole_zero(Domain domain, IirForms &forms, FormReport &found) {
  return derive(domain, std::nullopt, forms, found);
}

double digits_of(const FormReport &found, RealizationForm form) {
  const std::array digits{found.cascade, found.parallel, found.ratio, found.lattice, found.ladder_1, found.ladder_2};
  const auto index = static_cast<std::size_t>(code(form));
  return index < digits.size() ? digits[index] : -1;
}

bool form_exists(const IirForms &forms, RealizationForm form) {
  switch (form) {
  case RealizationForm::cascade:
    return forms.cascade.gain != 0;
  case RealizationForm::parallel:
    return forms.parallel.pars != 0;
  case RealizationForm::ratio:
    return forms.ratio.gain != 0;
  case RealizationForm::lattice:
    return forms.lattice.gain != 0;
  case RealizationForm::ladder_1:
    return forms.ladder_1.gain != 0;
  case RealizationForm::ladder_2:
    return forms.ladder_2.gain != 0;
  default:
    return false;
  }
}

static bool is_stable(const SectionEntry &entry) {
  for (int k = 0; k < entry.section_count; k++) {
    const ReducedSection section = reduced(entry.numerators[k], entry.denominators[k]);
    const auto [a, b, c] = section.denominator;
    // The triangle of stable second-order polynomials, its sides taken with the sign of the leading coefficient.
    const bool inside = section.denominator_degree == 2 ? std::fabs(c) < std::fabs(a) && std::fabs(b) < std::fabs(a + c)
                        : section.denominator_degree == 1 ? std::fabs(c) < std::fabs(b)
                                                          : section.denominator_degree == 0;
    if (!inside) return false;
  }
  return true;
}

bool is_stable(const IirForms &forms, RealizationForm form) {
  auto stable = [](const std::optional<WideRatio> &wide) { return wide && is_stable(*wide); };
  switch (form) {
  case RealizationForm::cascade:
    return is_stable(forms.cascade);
  case RealizationForm::parallel:
    return is_stable(forms.parallel);
  case RealizationForm::ratio:
    return stable(wide_ratio(Domain::z, forms.ratio));
  case RealizationForm::lattice:
    return stable(wide_ratio(forms.lattice));
  case RealizationForm::ladder_1:
    return stable(wide_ratio(forms.ladder_1));
  case RealizationForm::ladder_2:
    return stable(wide_ratio(forms.ladder_2));
  default:
    return false;
  }
}

} // namespace brisel
