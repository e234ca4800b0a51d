#include "engine/analysis/analog_response.h"

#include <unsupported/Eigen/MatrixFunctions>

#include <vector>

namespace brisel {

// Powers of a frequency in radians per second leave the range of a double from order 60 on, not that of a long double.
using Complex = std::complex<long double>;

namespace {

// A polynomial and its derivative by s, coefficients in descending powers.
struct Jet {
  Complex value;
  Complex slope;
};
Jet polynomial(std::span<const double> c, Complex s) {
  Jet p{c[0], 0};
  for (std::size_t k = 1; k < c.size(); ++k) {
    p.slope = p.slope * s + p.value;
    p.value = p.value * s + Complex(c[k]);
  }
  return p;
}

// H = gain * n / d; `delay` in seconds.
void set_quotient(std::size_t i, Complex n, Complex d, double gain, double delay, const FrequencyResponse &out) {
  if (d == Complex(0)) {
    out.magnitude[i] = i > 0 ? out.magnitude[i - 1] : 0;
    out.repeat_phase(i);
  } else {
    const Complex h = n / d;
    out.set(i, {static_cast<double>(h.real()), static_cast<double>(h.imag())}, gain);
  }
  out.group_delay[i] = delay;
}

} // namespace

void analog_ratio_response(const RatioEntry &ratio, std::span<const double> points, const FrequencyResponse &out) {
  for (std::size_t i = 0; i < points.size(); ++i) {
    const Complex s(0, static_cast<long double>(points[i]) * ratio.sample_rate / two_pi);
    const Jet n = polynomial(std::span(ratio.numerator).first(ratio.numerator_order + 1), s);
    const Jet d = polynomial(std::span(ratio.denominator).first(ratio.denominator_order + 1), s);
    long double delay = 0;
    if (n.value != Complex(0)) delay -= (n.slope / n.value).real();
    if (d.value != Complex(0)) delay += (d.slope / d.value).real();
    set_quotient(i, n.value, d.value, ratio.gain, static_cast<double>(delay), out);
  }
}

void analog_pole_zero_response(const PoleZeroEntry &pole_zero, std::span<const double> points,
                               const FrequencyResponse &out) {
  const auto poles = std::span(pole_zero.poles).first(pole_zero.real_poles + pole_zero.complex_poles);
  const auto zeros = std::span(pole_zero.zeros).first(pole_zero.real_zeros + pole_zero.complex_zeros);
  for (std::size_t i = 0; i < points.size(); ++i) {
    const Complex s(0, static_cast<long double>(points[i]) * pole_zero.sample_rate / two_pi);
    long double delay = 0;
    auto product = [&](std::span<const std::complex<double>> roots, long double sign) {
      Complex p = 1;
      for (const std::complex<double> &root : roots) {
        const Complex distance = s - Complex(root.real(), root.imag());
        p *= distance;
        if (distance != Complex(0)) delay += sign * (Complex(1) / distance).real();
      }
      return p;
    };
    const Complex n = product(zeros, -1);
    const Complex d = product(poles, 1);
    set_quotient(i, n, d, pole_zero.gain, static_cast<double>(delay), out);
  }
}

namespace {

int degree(const Triple &t) {
  return t[0] != 0 ? 2 : t[1] != 0 ? 1 : t[2] != 0 ? 0 : -1;
}

// x' = A x + B u, y = C x + direct u, time in samples.
struct StateEquations {
  Eigen::MatrixXd a;
  Eigen::VectorXd b;
  Eigen::RowVectorXd c;
  double direct;
};

// Adds one section in controllable form, driven by `input` (a row of outputs of the states so far and a direct part),
// and returns its output. In samples, s^2, s, 1 become s^2, s T, T^2; the factor cancels.
struct Signal {
  Eigen::RowVectorXd states;
  double direct;
};
Signal add_section(StateEquations &e, int &used, const Triple &numerator, const Triple &denominator, double interval,
                   const Signal &input) {
  const int order = degree(denominator);
  const int lead = 2 - order;
  const std::array<double, 3> power{1, interval, interval * interval};
  const double leading = denominator[lead] * power[lead];
  const double direct = numerator[lead] * power[lead] / leading;
  Signal output{direct * input.states, direct * input.direct};
  for (int k = 1; k <= order; ++k) {
    const double d = denominator[lead + k] * power[lead + k] / leading;
    const double n = numerator[lead + k] * power[lead + k] / leading;
    e.a(used, used + k - 1) -= d;
    output.states(used + k - 1) += n - direct * d;
  }
  if (order == 0) return output;
  e.a.row(used) += input.states;
  e.b(used) = input.direct;
  if (order == 2) e.a(used + 1, used) = 1;
  used += order;
  return output;
}

} // namespace

std::optional<double> analog_time_response(const SectionEntry &sections, Connection connection,
                                           const TimeResponse &out) {
  int order = 0;
  for (int k = 0; k < sections.section_count; ++k) {
    const int poles = degree(sections.denominators[k]);
    if (poles < degree(sections.numerators[k]) || poles < 0) return std::nullopt;
    order += poles;
  }
  StateEquations e{Eigen::MatrixXd::Zero(order, order), Eigen::VectorXd::Zero(order), Eigen::RowVectorXd::Zero(order),
                   0};
  const double interval = two_pi / sections.sample_rate;
  const Eigen::RowVectorXd none = Eigen::RowVectorXd::Zero(order);
  int used = 0;
  if (connection == Connection::cascade) {
    Signal signal{none, sections.gain};
    for (int k = 0; k < sections.section_count; ++k) {
      signal = add_section(e, used, sections.numerators[k], sections.denominators[k], interval, signal);
    }
    e.c = signal.states;
    e.direct = signal.direct;
  } else {
    e.direct = sections.pars * sections.gain;
    for (int k = 0; k < sections.section_count; ++k) {
      const Signal term =
          add_section(e, used, sections.numerators[k], sections.denominators[k], interval, Signal{none, sections.pars});
      e.c += term.states;
      e.direct += term.direct;
    }
  }

  // One interval with the input held: exp of (A B; 0 0) holds both e^A and the integral of e^(A t) B.
  Eigen::MatrixXd held = Eigen::MatrixXd::Zero(order + 1, order + 1);
  held.topLeftCorner(order, order) = e.a;
  held.topRightCorner(order, 1) = e.b;
  const Eigen::MatrixXd advanced = held.exp();
  const Eigen::MatrixXd transition = advanced.topLeftCorner(order, order);
  const Eigen::VectorXd drive = advanced.topRightCorner(order, 1);

  Eigen::VectorXd x = e.b;
  for (double &sample : out.impulse) {
    sample = clamp_sample(e.c.dot(x) / interval);
    x = (transition * x).eval().unaryExpr(&clamp_sample<double>);
  }
  x.setZero();
  for (double &sample : out.step) {
    sample = clamp_sample(e.c.dot(x) + e.direct);
    x = (transition * x + drive).eval().unaryExpr(&clamp_sample<double>);
  }
  return e.direct;
}

} // namespace brisel
