#include "engine/iir/domain_conversion.h"

#include "engine/analysis/pole_zero_form.h"
#include "engine/iir/bilinear_map.h"
#include "engine/iir/cascade_gain.h"
#include "engine/iir/design_iir_sections.h"
#include "engine/iir/impulse_invariant_map.h"
#include "engine/iir/matched_z_map.h"
#include "engine/iir/reorder.h"

#include <algorithm>
#include <cmath>

namespace brisel {

namespace {

using Complex = std::complex<double>;

FilterType band_of(MatchedPadding padding) {
  switch (padding) {
  case MatchedPadding::lowpass:
    return FilterType::low_pass;
  case MatchedPadding::highpass:
    return FilterType::high_pass;
  case MatchedPadding::bandpass:
    return FilterType::band_pass;
  }
  return FilterType::low_pass;
}

// Where the bilinear map finds the analog response of a point on the unit circle.
Values bilinear_places(Places z, double sample_rate) {
  const double twice_fs = sample_rate / std::numbers::pi;
  Values s(z.size());
  std::ranges::transform(z, s.begin(), [&](Complex p) { return Complex(0, twice_fs * std::tan(std::arg(p) / 2)); });
  return s;
}

// The matched Z system from its roots, in extended precision, up to a factor.
Values matched_values(const PoleZeroEntry &analog, MatchedPadding padding, Places z) {
  using Real = long double;
  const Real step = Real(two_pi) / analog.sample_rate;
  const int missing = pole_count(analog) - zero_count(analog);
  const int at_pi = padding == MatchedPadding::lowpass    ? missing
                    : padding == MatchedPadding::highpass ? 0
                                                          : (missing + 1) / 2;
  const auto mapped = [&](Complex root) { return std::exp(std::complex<Real>(root) * step); };
  Values values(z.size());
  for (std::size_t i = 0; i < z.size(); i++) {
    const std::complex<Real> x(z[i]);
    std::complex<Real> h = 1;
    for (int k = 0; k < pole_count(analog); k++) {
      h /= x - mapped(analog.poles[k]);
      h *= k < zero_count(analog)           ? x - mapped(analog.zeros[k])
           : k - zero_count(analog) < at_pi ? x + Real(1)
                                            : x - Real(1);
    }
    values[i] = Complex(h);
  }
  return values;
}

// `values` times the factor that makes them those of `others` where they are largest.
void fit_gain(Values &values, const Values &others) {
  const auto size = [](Complex v) { return std::isfinite(std::abs(v)) ? std::abs(v) : 0; };
  const auto peak = std::ranges::max_element(values, {}, size) - values.begin();
  const Complex factor = others[static_cast<std::size_t>(peak)] / values[static_cast<std::size_t>(peak)];
  for (Complex &value : values) value *= factor.real();
}

void measure_deviation(const FormOfSystem &analog, const FormOfSystem &digital, double sample_rate,
                       DomainConversion &out) {
  constexpr int points = 2001;
  Values s(points), z(points);
  for (int i = 0; i < points; i++) {
    s[i] = {0, sample_rate / 2 * i / (points - 1)};
    z[i] = std::polar(1.0, std::numbers::pi * i / (points - 1));
  }
  const Values a = form_values<double>(analog, s), d = form_values<double>(digital, z);
  double peak = 0;
  for (const Complex value : a)
    if (std::isfinite(std::abs(value))) peak = std::max(peak, std::abs(value));
  for (int i = 0; i < points; i++) {
    const double distance = std::fabs(std::abs(a[i]) - std::abs(d[i])) / peak;
    if (!(distance > out.deviation)) continue;
    out.deviation = distance;
    out.deviation_at = s[i].imag();
  }
}

} // namespace

DomainConversion to_z_domain(ZTransform method, MatchedPadding padding, const FormOfSystem &source,
                             const FormReport &analog_forms, InputOption target, IirForms &digital) {
  DomainConversion out;
  const IirForms &analog = *source.forms;
  const double rate = analog.pole_zero.sample_rate;
  const auto refused = [&](const char *why) {
    out.refusal = why;
    return out;
  };
  if (analog_forms.cascade < 0) return refused("the analog system has no second-order sections to be mapped");
  if (method != ZTransform::bilinear && zero_count(analog.pole_zero) > pole_count(analog.pole_zero))
    return refused("the analog system has more zeros than poles; only the bilinear transformation maps it");

  SectionEntry sum = analog.parallel; // with its scale in its terms
  bool by_sum = false;
  switch (method) {
  case ZTransform::impulse_invariant:
    if (analog_forms.parallel < 0) return refused("the analog system has no partial fractions");
    by_sum = true;
    sum.gain *= sum.pars;
    for (Triple &t : sum.numerators)
      for (double &b : t) b *= sum.pars;
    sum.pars = 1;
    impulse_invariant_map(sum, digital.parallel, two_pi / rate);
    cancel_delays(digital.parallel);
    break;
  case ZTransform::bilinear:
    bilinear_map(analog.cascade, digital.cascade);
    break;
  case ZTransform::matched_z:
    matched_z_map(analog.cascade, digital.cascade, band_of(padding));
    break;
  case ZTransform::s_domain_only:
    return refused("this is no mapping");
  }
  if (!by_sum) {
    PoleZeroEntry work{};
    int dropped_delay = 0;
    if (!reorder_sections(digital.cascade, work, dropped_delay))
      return refused("the mapped sections have no poles or zeros");
    if (method == ZTransform::matched_z) {
      compute_cas_gain(digital.cascade);
      digital.cascade.gain *= std::copysign(analog_peak(analog.cascade), analog.pole_zero.gain);
    }
  }
  const RealizationForm first = by_sum ? RealizationForm::parallel : RealizationForm::cascade;
  if (!derive_forms(Domain::z, first, digital, out.found)) return refused("the digital system is not finite");

  const FormOfSystem mapped{Domain::z, target, &digital};
  const auto realization = form_of_option(target);
  if ((realization ? digits_of(out.found, *realization) : out.found.pole_zero) < 0) {
    out.digits = -1;
    return out;
  }
  // A sum answers with its own delay, which sections and poles and zeros derived from it show only in part.
  const bool earlier = target == InputOption::product || (target == InputOption::sum && !by_sum);
  out.dropped_delay = earlier ? out.found.dropped_delay : 0;
  out.stable = is_stable(digital, first);

  Values z = dense_points(Domain::z, poles_of({Domain::z, *option_of_form(first), &digital}));
  std::erase_if(z, [](Complex p) { return p.real() < -1 + 1e-12; }); // infinity of the s plane
  const Values got = form_values<double>(mapped, z);
  Values expected;
  switch (method) {
  case ZTransform::bilinear:
    expected = form_values<long double>(source, bilinear_places(z, rate));
    break;
  case ZTransform::matched_z:
    expected = matched_values(analog.pole_zero, padding, z);
    fit_gain(expected, got);
    break;
  default:
    expected = impulse_invariant_values(sum, two_pi / rate, z);
  }
  out.digits = digits_kept(z, expected, got, -out.dropped_delay);
  if (by_sum) out.digits = std::min(out.digits, form_digits_kept(source, {Domain::s, InputOption::sum, &analog}, 0));
  measure_deviation(source, mapped, rate, out);
  return out;
}

} // namespace brisel
