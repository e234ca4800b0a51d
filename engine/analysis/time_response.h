// time_response.h - impulse and step response of a recursion, in as long a type as its rounding asks for.
//
// Rounding inside a recursion passes through everything behind it. Where sections of high order amplify it, doubles
// lose most of their digits although the filter itself is well behaved. So every recursion also runs in a longer type,
// whose distance from the doubles is their error and shows what its own must be.
#pragma once

#include "engine/analysis/response_arrays.h"
#include "engine/analysis/wide_ratio.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace brisel {

/// Fills `out` with what a recursion makes of an impulse or, with `step`, of a step of the height `amplitude`.
/// `make(Real(0))` returns the recursion with empty states: a function from the input sample to the output sample.
template <class Make> void run_recursion(double amplitude, bool step, std::span<double> out, Make make) {
  const auto run = [&]<class Real>(Real zero, std::span<double> to) {
    auto next = make(zero);
    for (std::size_t k = 0; k < to.size(); ++k)
      to[k] = static_cast<double>(next(step || k == 0 ? Real(amplitude) : zero));
  };
  run(0.0, out);
  constexpr double enough = 5e-10; // of the peak
  double peak = 0, error = 0;
  for (const double sample : out) peak = std::max(peak, std::abs(sample));
  if (peak >= 1e30) return; // clamped samples are nobody's response
  std::vector<double> longer(out.size());
  run(0.0L, longer);
  for (std::size_t k = 0; k < out.size(); ++k) error = std::max(error, std::abs(longer[k] - out[k]));
  if (error <= enough * peak) return;
  constexpr double gained = std::numeric_limits<double>::epsilon() / std::numeric_limits<long double>::epsilon() / 16;
  if (error > gained * enough * peak) run(Wide(0), longer);
  std::copy(longer.begin(), longer.end(), out.begin());
}

template <class Make> void time_response(double amplitude, const TimeResponse &out, Make make) {
  run_recursion(amplitude, false, out.impulse, make);
  run_recursion(amplitude, true, out.step, make);
}

} // namespace brisel
