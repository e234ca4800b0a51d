// section_response.cpp - responses of second-order sections.
//
// A digital triple (b0, b1, b2), times e^(jw) that cancels between numerator and denominator, is (b0 + b2) cos w + b1 +
// j (b0 - b2) sin w. Written with the cosine it loses its digits where the three terms cancel, at the ends of the
// frequency axis, which is where zeros are; so the real part is taken as (b0 + b2) u + beta with u = -2 sin^2(w/2),
// beta = b0 + b1 + b2 below a quarter of the sampling frequency, and u = 2 cos^2(w/2), beta = b1 - b0 - b2 above it.
// An analog triple (a, b, c) is c - a w^2 + j b w: the same shape, so one loop serves both.
//
// Points go through the sections in blocks, so that the loop over a block can be vectorized.
#include "engine/analysis/section_response.h"

#include "engine/analysis/time_response.h"

#include <algorithm>
#include <array>
#include <vector>

namespace brisel {

namespace {

using Complex = std::complex<double>;

constexpr std::size_t block_size = 128;
using Block = std::array<double, block_size>;

// What a point contributes: real part alpha u + beta, imaginary part gamma v; du and dv are derivatives by w.
struct Basis {
  std::size_t count;
  Block u, v, du, dv;
  Block upper; // 1: the second beta
};

struct Quadratic {
  double alpha, gamma;
  std::array<double, 2> beta;
  int exponent; // the triple was divided by 2^exponent, so that no square of it leaves the range of a double
};

struct TripleValues {
  Block re, im, dre, dim, square;
};

void set_digital(Basis &basis, std::span<const double> points) {
  basis.count = points.size();
  for (std::size_t i = 0; i < points.size(); ++i) {
    const double s = std::sin(points[i] / 2);
    const double c = std::cos(points[i] / 2);
    const bool upper = s * s > c * c;
    basis.upper[i] = upper;
    basis.u[i] = upper ? 2 * c * c : -2 * s * s;
    basis.v[i] = 2 * s * c;
    basis.du[i] = -basis.v[i];
    basis.dv[i] = (c - s) * (c + s);
  }
}

void set_analog(Basis &basis, std::span<const double> points) {
  basis.count = points.size();
  for (std::size_t i = 0; i < points.size(); ++i) {
    basis.upper[i] = 0;
    basis.u[i] = points[i] * points[i];
    basis.v[i] = points[i];
    basis.du[i] = 2 * points[i];
    basis.dv[i] = 1;
  }
}

Quadratic quadratic(Triple t, Plane plane, double rate) {
  if (plane == Plane::s) t = {t[0] * rate * rate, t[1] * rate, t[2]}; // s in radians per sample
  const double largest = std::max({std::abs(t[0]), std::abs(t[1]), std::abs(t[2])});
  const int exponent = largest > 0 && std::isfinite(largest) ? std::ilogb(largest) : 0;
  for (double &c : t) c = std::ldexp(c, -exponent);
  if (plane == Plane::s) return {-t[0], t[1], {t[2], t[2]}, exponent};
  const long double ends = static_cast<long double>(t[0]) + t[2];
  return {t[0] + t[2], t[0] - t[2], {static_cast<double>(t[1] + ends), static_cast<double>(t[1] - ends)}, exponent};
}

void evaluate(const Quadratic &q, const Basis &basis, TripleValues &out) {
  for (std::size_t i = 0; i < basis.count; ++i) {
    const double beta = basis.upper[i] != 0 ? q.beta[1] : q.beta[0];
    out.re[i] = q.alpha * basis.u[i] + beta;
    out.im[i] = q.gamma * basis.v[i];
    out.dre[i] = q.alpha * basis.du[i];
    out.dim[i] = q.gamma * basis.dv[i];
    out.square[i] = out.re[i] * out.re[i] + out.im[i] * out.im[i];
  }
}

// Im(X' / X), 0 where X vanishes.
double turning(const TripleValues &x, std::size_t i) {
  const double cross = x.dim[i] * x.re[i] - x.dre[i] * x.im[i];
  return x.square[i] > 0 ? cross / x.square[i] : 0;
}

struct Section {
  Quadratic numerator, denominator;
};

std::vector<Section> sections_of(const SectionEntry &entry, Plane plane) {
  std::vector<Section> sections;
  const double rate = entry.sample_rate / two_pi;
  for (int k = 0; k < entry.section_count; ++k) {
    sections.push_back({quadratic(entry.numerators[k], plane, rate), quadratic(entry.denominators[k], plane, rate)});
  }
  return sections;
}

// Calls `compute(first, basis)` for one block of points after the other.
template <class Compute> void for_each_block(Plane plane, std::span<const double> points, Compute compute) {
  Basis basis;
  for (std::size_t first = 0; first < points.size(); first += block_size) {
    const auto block = points.subspan(first, std::min(block_size, points.size() - first));
    if (plane == Plane::z)
      set_digital(basis, block);
    else
      set_analog(basis, block);
    compute(first, basis);
  }
}

} // namespace

void cascade_frequency_response(const SectionEntry &cascade, Plane plane, std::span<const double> points,
                                const FrequencyResponse &out) {
  const std::vector<Section> sections = sections_of(cascade, plane);
  TripleValues n, d;
  Block re, im, delay;
  std::array<int, block_size> exponent; // the product is (re + j im) 2^exponent
  for_each_block(plane, points, [&](std::size_t first, const Basis &basis) {
    re.fill(1);
    im.fill(0);
    delay.fill(0);
    exponent.fill(0);
    for (const Section &section : sections) {
      evaluate(section.numerator, basis, n);
      evaluate(section.denominator, basis, d);
      const int shift = section.numerator.exponent - section.denominator.exponent;
      for (std::size_t i = 0; i < basis.count; ++i) {
        delay[i] += turning(d, i) - turning(n, i);
        // Kept: where the denominator vanishes the section is left out of the product, its numerator included.
        const bool left_out = !(d.square[i] > 0);
        const double scale = 1 / (left_out ? 1 : d.square[i]);
        const double qr = left_out ? 1 : (n.re[i] * d.re[i] + n.im[i] * d.im[i]) * scale;
        const double qi = left_out ? 0 : (n.im[i] * d.re[i] - n.re[i] * d.im[i]) * scale;
        const double r = re[i] * qr - im[i] * qi;
        im[i] = re[i] * qi + im[i] * qr;
        re[i] = r;
        exponent[i] += left_out ? 0 : shift;
      }
      // A hundred factors may leave the range of a double on their way to a product that lies well within it.
      for (std::size_t i = 0; i < basis.count; ++i) {
        const double size = std::abs(re[i]) + std::abs(im[i]);
        if ((size > 0x1p-300 && size < 0x1p300) || size == 0 || !std::isfinite(size)) continue;
        const int e = std::ilogb(size);
        re[i] = std::ldexp(re[i], -e);
        im[i] = std::ldexp(im[i], -e);
        exponent[i] += e;
      }
    }
    int gain_exponent = 0;
    const double gain = std::frexp(cascade.gain, &gain_exponent);
    for (std::size_t i = 0; i < basis.count; ++i) {
      const int e = exponent[i] + gain_exponent;
      out.set(first + i, {std::ldexp(re[i] * gain, e), std::ldexp(im[i] * gain, e)}, 1);
      out.group_delay[first + i] = delay[i] * two_pi / cascade.sample_rate;
    }
  });
}

void parallel_frequency_response(const SectionEntry &parallel, Plane plane, std::span<const double> points,
                                 const FrequencyResponse &out) {
  const std::vector<Section> sections = sections_of(parallel, plane);
  TripleValues n, d;
  Block re, im, dre, dim, size; // size: sum of the terms' magnitudes
  for_each_block(plane, points, [&](std::size_t first, const Basis &basis) {
    re.fill(parallel.gain);
    im.fill(0);
    dre.fill(0);
    dim.fill(0);
    size.fill(std::abs(parallel.gain));
    for (const Section &section : sections) {
      evaluate(section.numerator, basis, n);
      evaluate(section.denominator, basis, d);
      const double shift = std::ldexp(1.0, section.numerator.exponent - section.denominator.exponent);
      for (std::size_t i = 0; i < basis.count; ++i) {
        if (!(d.square[i] > 0)) continue;
        // (N' D - D' N) / D^2 is (N' - D' N/D) / D.
        const double scale = shift / d.square[i];
        const double qr = (n.re[i] * d.re[i] + n.im[i] * d.im[i]) / d.square[i];
        const double qi = (n.im[i] * d.re[i] - n.re[i] * d.im[i]) / d.square[i];
        const double tr = n.dre[i] - (d.dre[i] * qr - d.dim[i] * qi);
        const double ti = n.dim[i] - (d.dre[i] * qi + d.dim[i] * qr);
        re[i] += shift * qr;
        im[i] += shift * qi;
        size[i] += shift * (std::abs(qr) + std::abs(qi));
        dre[i] += (tr * d.re[i] + ti * d.im[i]) * scale;
        dim[i] += (ti * d.re[i] - tr * d.im[i]) * scale;
      }
    }
    for (std::size_t i = 0; i < basis.count; ++i) {
      const Complex sum(re[i], im[i]);
      out.set(first + i, sum, parallel.pars);
      if (std::abs(sum) > rounding_floor * size[i])
        out.group_delay[first + i] = -(Complex(dre[i], dim[i]) / sum).imag() * two_pi / parallel.sample_rate;
      else
        out.repeat_group_delay(first + i);
    }
  });
}

namespace {

// Delay elements of all sections and one step of one of them.
template <class Real> struct SectionStates {
  explicit SectionStates(const SectionEntry &entry) : entry(entry), s1(entry.section_count), s2(entry.section_count) {}
  Real run(int k, Real x) {
    const Triple &b = entry.numerators[k];
    const Triple &a = entry.denominators[k];
    const Real y = clamp_sample((x * b[0] + s1[k]) / a[0]);
    s1[k] = x * b[1] + s2[k] - y * a[1];
    s2[k] = x * b[2] - y * a[2];
    return y;
  }
  const SectionEntry &entry;
  std::vector<Real> s1, s2;
};

} // namespace

void cascade_time_response(const SectionEntry &cascade, const TimeResponse &out) {
  time_response(cascade.gain, out, [&]<class Real>(Real) {
    return [states = SectionStates<Real>(cascade)](Real x) mutable {
      for (int k = 0; k < states.entry.section_count; ++k) x = states.run(k, x);
      return x;
    };
  });
}

void parallel_time_response(const SectionEntry &parallel, const TimeResponse &out) {
  time_response(parallel.pars, out, [&]<class Real>(Real) {
    return [states = SectionStates<Real>(parallel)](Real x) mutable {
      Real sum = x * states.entry.gain;
      for (int k = 0; k < states.entry.section_count; ++k) sum += states.run(k, x);
      return sum;
    };
  });
}

} // namespace brisel
