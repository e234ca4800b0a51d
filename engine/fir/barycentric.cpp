// barycentric.cpp - barycentric sums, vectorized: they are nearly all the work of an exchange.
#include "engine/fir/barycentric.h"

#include "engine/core/multiversion.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace brisel {

typedef double Vector __attribute__((vector_size(32)));
constexpr int vectors = 4;
constexpr int lanes = vectors * static_cast<int>(sizeof(Vector) / sizeof(double));

// Both sums at `lanes` points. Two terms share one division, which costs more than all else.
BRISEL_AVX2_CLONE
static void barycentric_sums(const double *points, const double *node, const double *c, const double *cv,
                             std::size_t count, double *uppers, double *lowers) {
  Vector x[vectors], upper[vectors] = {}, lower[vectors] = {};
  std::memcpy(x, points, sizeof x);
  std::size_t k = 0;
  for (; k + 1 < count; k += 2) {
    for (int v = 0; v < vectors; v++) {
      const Vector d1 = x[v] - node[k];
      const Vector d2 = x[v] - node[k + 1];
      const Vector q = 1.0 / (d1 * d2);
      upper[v] += (cv[k] * d2 + cv[k + 1] * d1) * q;
      lower[v] += (c[k] * d2 + c[k + 1] * d1) * q;
    }
  }
  for (; k < count; k++) {
    for (int v = 0; v < vectors; v++) {
      const Vector q = 1.0 / (x[v] - node[k]);
      upper[v] += cv[k] * q;
      lower[v] += c[k] * q;
    }
  }
  std::memcpy(uppers, upper, sizeof upper);
  std::memcpy(lowers, lower, sizeof lower);
}

// Products over j of 2 (x - node[j]) at `lanes` points, as mantissas; the powers of two are added to `exponents`. A
// factor of 0 (x is a node) is passed over. Interleaved passes of at most 16 factors, renormalized after each,
// never underflow.
BRISEL_AVX2_CLONE
static void difference_products(const double *node, std::size_t count, const double *points, double *mantissas,
                                int *exponents) {
  const std::size_t stride = (count + 15) / 16;
  Vector x[vectors];
  std::memcpy(x, points, sizeof x);
  std::array<double, lanes> product;
  product.fill(1);
  for (std::size_t pass = 0; pass < stride; pass++) {
    Vector p[vectors];
    std::memcpy(p, product.data(), sizeof p);
    for (std::size_t j = pass; j < count; j += stride) {
      for (int v = 0; v < vectors; v++) {
        const Vector d = 2 * (x[v] - node[j]);
        p[v] *= d == 0 ? Vector{} + 1 : d;
      }
    }
    std::memcpy(product.data(), p, sizeof p);
    for (int i = 0; i < lanes; i++) {
      int exponent;
      product[i] = std::frexp(product[i], &exponent);
      exponents[i] += exponent;
    }
  }
  std::memcpy(mantissas, product.data(), sizeof(double) * lanes);
}

// Calls `use` with the first of `lanes` points, how many of them there are, and the points, the last one repeated.
template <class Use> static void in_lanes(std::span<const double> x, Use use) {
  std::array<double, lanes> points;
  for (std::size_t first = 0; first < x.size(); first += lanes) {
    const std::size_t count = std::min<std::size_t>(lanes, x.size() - first);
    for (std::size_t i = 0; i < lanes; i++) points[i] = x[first + std::min(i, count - 1)];
    use(first, count, points.data());
  }
}

std::vector<double> Interpolant::weighted_values() const {
  std::vector<double> weighted(node.size());
  for (std::size_t k = 0; k < node.size(); k++) weighted[k] = coefficient[k] * value[k];
  return weighted;
}

// `computed`, but at a node, where that is no number, the value there.
double Interpolant::or_value(double computed, double x) const {
  if (std::isfinite(computed)) return computed;
  const auto at = std::lower_bound(node.begin(), node.end(), x, std::greater<>());
  return at != node.end() && *at == x ? value[static_cast<std::size_t>(at - node.begin())] : computed;
}

void Interpolant::evaluate(std::span<const double> x, std::span<double> p) const {
  const std::vector<double> weighted = weighted_values();
  in_lanes(x, [&](std::size_t first, std::size_t count, const double *points) {
    std::array<double, lanes> upper, lower;
    barycentric_sums(points, node.data(), coefficient.data(), weighted.data(), node.size(), upper.data(), lower.data());
    for (std::size_t i = 0; i < count; i++) p[first + i] = or_value(upper[i] / lower[i], points[i]);
  });
}

void Interpolant::evaluate_between_bands(std::span<const double> x, std::span<double> p) const {
  const std::vector<double> weighted = weighted_values();
  in_lanes(x, [&](std::size_t first, std::size_t count, const double *points) {
    std::array<double, lanes> upper, lower, mantissa;
    std::array<int, lanes> exponent{};
    barycentric_sums(points, node.data(), coefficient.data(), weighted.data(), node.size(), upper.data(), lower.data());
    difference_products(node.data(), node.size(), points, mantissa.data(), exponent.data());
    for (std::size_t i = 0; i < count; i++)
      p[first + i] = or_value(std::ldexp(mantissa[i] * (upper[i] / 2), exponent[i] - scale), points[i]);
  });
}

// a_k = 1 / product over j of 2 (x_k - x_j), scaled so that the largest is about 1. The product of a thousand factors
// leaves the range of a double long before the design is hopeless, so its exponent is kept apart. False when two nodes
// coincide.
bool Interpolant::find_coefficients() {
  const std::size_t count = node.size();
  for (std::size_t k = 1; k < count; k++) {
    if (!(node[k] < node[k - 1])) return false;
  }
  std::vector<double> padded(node);
  padded.resize(count + lanes, 0.0);
  std::vector<double> mantissa(count + lanes);
  std::vector<int> exponent(count + lanes);
  for (std::size_t k = 0; k < count; k += lanes)
    difference_products(node.data(), count, &padded[k], &mantissa[k], &exponent[k]);
  scale = *std::min_element(exponent.begin(), exponent.begin() + static_cast<long>(count));
  coefficient.resize(count);
  for (std::size_t k = 0; k < count; k++) coefficient[k] = std::ldexp(1 / mantissa[k], scale - exponent[k]);
  return true;
}

double Interpolant::level(std::span<const double> desired, std::span<const double> weight) {
  const auto sign = [](std::size_t k) { return k % 2 == 0 ? 1.0 : -1.0; };
  long double upper = 0, lower = 0;
  for (std::size_t k = 0; k < node.size(); k++) {
    const long double a = coefficient[k];
    upper += a * desired[k];
    lower += a * static_cast<long double>(sign(k)) / weight[k];
  }
  const double deviation = static_cast<double>(upper / lower);
  value.resize(node.size());
  for (std::size_t k = 0; k < node.size(); k++) value[k] = desired[k] - sign(k) * deviation / weight[k];
  return deviation;
}

} // namespace brisel
