#include "engine/judge/judged_filter.h"

#include "engine/analysis/form_conversions.h"
#include "engine/analysis/pole_zero_form.h"

#include <unsupported/Eigen/FFT>

#include <algorithm>
#include <bit>
#include <cmath>
#include <memory>
#include <numbers>

namespace brisel {

namespace {

using Complex = std::complex<double>;
constexpr double pi = std::numbers::pi;

/// Points from `low` to `high`, closer and closer towards both.
void append_clustered(double low, double high, int count, std::vector<double> &w) {
  for (int i = 0; i <= count; i++) {
    const double rise = std::sin(pi / 2 * i / count);
    w.push_back(i == count ? high : low + (high - low) * rise * rise);
  }
}

/// The response of taps about their middle: one transform, and between its points interpolation.
class TapResponse {
public:
  TapResponse(std::span<const double> taps, double gain)
      : lobe(2 * pi / static_cast<double>(taps.size())),
        points(std::bit_ceil(8 * std::max<std::size_t>(taps.size(), 4))), step(2 * pi / static_cast<double>(points)) {
    std::vector<double> in(points);
    for (std::size_t k = 0; k < taps.size(); k++) in[(k + points - taps.size() / 2) % points] = taps[k] * gain;
    Eigen::FFT<double> fft;
    fft.SetFlag(Eigen::FFT<double>::HalfSpectrum);
    fft.fwd(spectrum, in);
  }

  double gain(double w) const {
    const double place = w / step, below = std::floor(place);
    const auto first = static_cast<std::int64_t>(below) - order / 2;
    if (place == below) return std::abs(at(first + order / 2));
    // Eight and more points lie between neighbouring extrema, so that a polynomial through 24 of them leaves 1e-17.
    // Barycentric form: the weights of even steps are binomial coefficients of alternating sign.
    Complex sum = 0;
    double weights = 0;
    for (int k = 0; k <= order; k++) {
      const double weight = binomial[k] / (place - static_cast<double>(first + k));
      sum += weight * at(first + k);
      weights += weight;
    }
    return std::abs(sum) / std::abs(weights);
  }

  GainSamples samples(FrequencyBand band) const {
    GainSamples out;
    const double edge = 2 * lobe; // extrema crowd next to a steep transition
    if (band.high - band.low < 3 * edge) {
      append_clustered(band.low, band.high, band.high > band.low ? 192 : 1, out.w);
    } else {
      constexpr int steps = 64;
      const auto squares = [](int i) { return static_cast<double>(i * i) / (steps * steps); };
      for (int i = 0; i < steps; i++) out.w.push_back(band.low + edge * squares(i));
      const std::size_t near = out.w.size();
      const auto from = static_cast<std::int64_t>(std::ceil((band.low + edge) / step)),
                 to = static_cast<std::int64_t>(std::floor((band.high - edge) / step));
      for (std::int64_t i = from; i <= to; i++) out.w.push_back(static_cast<double>(i) * step);
      for (int i = steps - 1; i >= 0; i--) out.w.push_back(i == 0 ? band.high : band.high - edge * squares(i));
      out.gain.resize(near);
      for (std::size_t i = 0; i < near; i++) out.gain[i] = gain(out.w[i]);
      for (std::int64_t i = from; i <= to; i++) out.gain.push_back(std::abs(at(i)));
    }
    for (std::size_t i = out.gain.size(); i < out.w.size(); i++) out.gain.push_back(gain(out.w[i]));
    return out;
  }

private:
  static constexpr int order = 23;
  static constexpr std::array<double, order + 1> binomial = [] {
    std::array<double, order + 1> weights{1};
    for (int k = 0; k < order; k++) weights[k + 1] = -weights[k] * (order - k) / (k + 1); // exact in doubles
    return weights;
  }();

  Complex at(std::int64_t i) const {
    const std::size_t place = static_cast<std::uint64_t>(i) % points; // a power of two, so negative ones come out right
    return place <= points / 2 ? spectrum[place] : std::conj(spectrum[points - place]);
  }

  double lobe; // between neighbouring extrema
  std::size_t points;
  double step;
  std::vector<Complex> spectrum;
};

/// A point of the unit circle, for polynomials of degree 2 without cancellation near z = 1 and z = -1.
template <class Real> struct CirclePoint {
  explicit CirclePoint(Real w)
      : sine(std::sin(w)), low(std::cos(w) > 0), square(low ? std::sin(w / 2) : std::cos(w / 2)) {
    square *= 2 * square;
  }

  /// t0 z + t1 + t2 / z. Sums are taken in the order in which they are exact for roots near 1 and -1.
  std::complex<Real> value(const Triple &t) const {
    const Real a = t[0], b = t[1], c = t[2];
    return {low ? ((a + b) + c) - (a + c) * square : (a + c) * square - ((a - b) + c), (a - c) * sine};
  }
  /// Group delay of t0 + t1 / z + t2 / z^2, in samples.
  Real delay(const Triple &t) const {
    const Real a = t[0], b = t[1], c = t[2], size = std::norm(value(t));
    if (size == 0) return 0; // a zero on the circle turns the phase by half of what its neighbourhood is delayed
    return 1 + (c - a) * (low ? ((a + b) + c) - b * square : ((a - b) + c) + b * square) / size;
  }

  Real sine;
  bool low;
  Real square;
};

/// Magnitude, also where its square leaves the range of a double.
double size(Complex value) {
  const double square = std::norm(value);
  return square > 1e-290 && square < 1e290 ? std::sqrt(square) : std::abs(value);
}

double cascade_gain(const SectionEntry &cascade, double w) {
  const CirclePoint<double> point(w);
  double gain = std::abs(cascade.gain);
  int exponent = 0; // of a product that would leave the range of a double on its way
  for (int k = 0; k < cascade.section_count; k++) {
    gain *= size(point.value(cascade.numerators[k])) / size(point.value(cascade.denominators[k]));
    if (gain > 1e-100 && gain < 1e100) continue;
    int shift = 0;
    gain = std::frexp(gain, &shift);
    exponent += shift;
  }
  return std::ldexp(gain, exponent);
}

double cascade_delay(const SectionEntry &cascade, double w) {
  const CirclePoint<double> point(w);
  double sum = 0;
  for (int k = 0; k < cascade.section_count; k++)
    sum += point.delay(cascade.numerators[k]) - point.delay(cascade.denominators[k]);
  return sum;
}

/// Wide, because partial fractions may be a million times larger than what is left of their sum.
double parallel_gain(const SectionEntry &parallel, double w) {
  const CirclePoint<long double> point(w);
  std::complex<long double> sum = parallel.gain;
  for (int k = 0; k < parallel.section_count; k++) {
    const auto denominator = point.value(parallel.denominators[k]);
    sum += point.value(parallel.numerators[k]) * std::conj(denominator) / std::norm(denominator);
  }
  return static_cast<double>(std::abs(static_cast<long double>(parallel.pars) * sum));
}

double gain_of(const IirForms &forms, RealizationForm form, double w) {
  const Complex z = std::polar(1.0, w);
  switch (form) {
  case RealizationForm::parallel:
    return parallel_gain(forms.parallel, w);
  case RealizationForm::ratio:
    return std::abs(ratio_values<long double>(Domain::z, forms.ratio, {&z, 1})[0]);
  case RealizationForm::lattice:
    return std::abs(lattice_values<long double>(forms.lattice, {&z, 1})[0]);
  case RealizationForm::ladder_1:
    return std::abs(ladder_values<long double>(forms.ladder_1, {&z, 1})[0]);
  case RealizationForm::ladder_2:
    return std::abs(ladder_values<long double>(forms.ladder_2, {&z, 1})[0]);
  case RealizationForm::cascade:
  case RealizationForm::nonlinear:
    break;
  }
  return cascade_gain(forms.cascade, w);
}

/// Where on the axis a root stands, and how far from it.
struct Place {
  double w, distance;
};

/// Around each root the response changes over the distance of the root from the axis, so points in geometric steps of
/// that distance follow every change however narrow it is.
std::vector<double> places_around(FrequencyBand band, const std::vector<Place> &roots) {
  if (!(band.high > band.low)) return {band.low, band.high};
  const double width = band.high - band.low;
  std::vector<double> w;
  append_clustered(band.low, band.high, 256, w);
  const auto add = [&](double x) {
    if (x > band.low && x < band.high) w.push_back(x);
  };
  for (const Place &root : roots) {
    add(root.w);
    const double outside = std::max({band.low - root.w, root.w - band.high, 0.0});
    const double least = std::max({root.distance, outside, 1e-9 * std::max(std::abs(root.w), width)}) / 8;
    for (double d = least; d < outside + width; d *= 1.4) {
      add(root.w - d);
      add(root.w + d);
    }
  }
  std::sort(w.begin(), w.end());
  w.erase(std::unique(w.begin(), w.end()), w.end());
  return w;
}

std::span<const Complex> poles_of(const PoleZeroEntry &roots) {
  return std::span(roots.poles).first(static_cast<std::size_t>(pole_count(roots)));
}

template <class Root> std::vector<Place> places_of(const PoleZeroEntry &roots, Root place) {
  std::vector<Place> places;
  const auto add = [&](std::span<const Complex> list) {
    for (const Complex root : list) places.push_back(place(root));
  };
  add(poles_of(roots));
  add(std::span(roots.zeros).first(static_cast<std::size_t>(zero_count(roots))));
  return places;
}

JudgedFilter searched(std::function<double(double)> gain, std::vector<Place> roots) {
  JudgedFilter filter;
  filter.gain = gain;
  filter.samples = [gain, roots = std::move(roots)](FrequencyBand band) {
    GainSamples out{places_around(band, roots), {}};
    out.gain.reserve(out.w.size());
    for (const double w : out.w) out.gain.push_back(gain(w));
    return out;
  };
  return filter;
}

} // namespace

JudgedFilter judged_fir(std::span<const double> taps, double gain) {
  const auto response = std::make_shared<const TapResponse>(taps, gain);
  JudgedFilter filter;
  filter.gain = [response](double w) { return response->gain(w); };
  filter.samples = [response](FrequencyBand band) { return response->samples(band); };
  const double middle = 0.5 * static_cast<double>(taps.size() - 1);
  double moment = 0;
  for (std::size_t k = 0; k < taps.size(); k++) moment += (static_cast<double>(k) - middle) * taps[k];
  filter.slope_at_zero = std::abs(moment * gain);
  return filter;
}

JudgedFilter judged_iir(const IirForms &forms, int realization) {
  const RealizationForm form{static_cast<std::int8_t>(realization)};
  // A form that the poles and zeros could not be derived from has those of the cascade it was made of.
  PoleZeroEntry roots{};
  const bool listed = pole_count(forms.pole_zero) + zero_count(forms.pole_zero) > 0;
  if (!listed) cascade_to_pole_zero(Domain::z, forms.cascade, roots);
  const auto on_circle = [](Complex root) {
    const double radius = std::abs(root);
    const double angle = root.imag() < 0 ? 2 * pi + std::arg(root) : std::arg(root); // bands may go on to 2 pi
    return radius == 0 ? Place{0, 1} : Place{angle, std::abs(1 - radius) / std::max(radius, 1.0)};
  };
  JudgedFilter filter = searched([&forms, form](double w) { return gain_of(forms, form, w); },
                                 places_of(listed ? forms.pole_zero : roots, on_circle));
  filter.delay = [&forms](double w) { return cascade_delay(forms.cascade, w); };
  if (is_stable(forms, form)) return filter;
  const auto poles = poles_of(listed ? forms.pole_zero : roots);
  const auto outermost =
      std::max_element(poles.begin(), poles.end(), [](Complex a, Complex b) { return std::abs(a) < std::abs(b); });
  filter.trouble = Trouble::unstable;
  if (outermost == poles.end()) return filter;
  constexpr double rounding = 1e-13;
  if (std::abs(*outermost) <= 1 + rounding) filter.trouble = Trouble::pole_on_circle;
  filter.trouble_at = std::abs(std::arg(*outermost));
  return filter;
}

JudgedFilter judged_analog(const IirForms &forms, InputOption option) {
  const auto gain = [&forms, option](double w) {
    const Complex s(0, w);
    switch (option) {
    case InputOption::pole_zero:
      return std::abs(pole_zero_values<long double>(forms.pole_zero, {&s, 1})[0]);
    case InputOption::product:
      return std::abs(cascade_values<long double>(forms.cascade, {&s, 1})[0]);
    case InputOption::sum:
      return std::abs(parallel_values<long double>(forms.parallel, {&s, 1})[0]);
    default:
      return std::abs(ratio_values<long double>(Domain::s, forms.ratio, {&s, 1})[0]);
    }
  };
  const auto on_axis = [](Complex root) { return Place{root.imag(), std::abs(root.real())}; };
  JudgedFilter filter = searched(gain, places_of(forms.pole_zero, on_axis));
  constexpr double rounding = 1e-13;
  for (const Complex pole : poles_of(forms.pole_zero)) {
    if (pole.imag() < 0 || std::abs(pole.real()) > rounding * std::abs(pole)) continue;
    filter.trouble = Trouble::pole_on_axis;
    filter.trouble_at = pole.imag();
  }
  return filter;
}

} // namespace brisel
