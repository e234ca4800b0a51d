// wide_impulse_invariance.h - an impulse-invariant cascade by way of partial fractions in 113 bits.
//
// At high orders the terms of the sum are many times the filter that they add up to, and rounded to doubles they lose
// it. Here residues, poles and the sum stay wide until the poles and zeros of the digital filter are known, which
// doubles hold well.
#pragma once

#include "engine/core/records.h"

#include <complex>
#include <functional>
#include <optional>
#include <vector>

namespace brisel {

/// How the filter lies to the lowpass that was sampled: the place of the latter for a place, and back (one or two
/// places; nothing stands for infinity). Empty functions stand for a filter that is sampled as it is.
struct BandMove {
  std::function<std::complex<double>(std::complex<double>)> lowpass_place;
  std::function<std::vector<std::complex<long double>>(std::optional<std::complex<long double>>)> places;
};

struct WideCascade {
  SectionEntry cascade;
  int dropped_delay; // of the cascade
  double digits;     // that its values keep of those of the wide sum
};
/// Samples the impulse response of an analog cascade, times `step`. Nothing when it has equal poles, which have no
/// simple partial fractions, or when no cascade comes out.
std::optional<WideCascade> wide_impulse_invariance(const SectionEntry &analog, double step, const BandMove &move);

} // namespace brisel
