// halfband.h - a halfband filter from a lowpass of half its length, for all FIR methods.
//
// The odd half-taps of a halfband filter are those of an even-length lowpass G at half the rate, halved, and its centre
// tap is 1/2: H(w) = 1/2 + G(2w)/2. Its stopband is the image of its passband, H(pi - w) = 1 - H(w).
#pragma once

#include "engine/core/records.h"

namespace brisel {

/// Where the stopband of a halfband specification begins, in the unit of its frequencies.
inline double halfband_stopband_edge(const FilterSpec &spec) {
  return spec.sampling_frequency / 2 - spec.passband_edge[0];
}

/// Number of taps of the lowpass that belongs to a halfband filter of `length` taps (odd, at least 3); always even.
constexpr int halfband_prototype_length(int length) {
  return (length + 1) / 4 * 2;
}

/// The specification of that lowpass: `spec` with type, length and edges replaced (passband edge doubled, stopband edge
/// at half the sampling frequency). `spec.length` is the length of the halfband filter.
FilterSpec halfband_prototype(const FilterSpec &spec);

/// Gain that the lowpass needs at 2w for the halfband filter to have `gain` at w.
constexpr double halfband_prototype_gain(double gain) {
  return 2 * gain - 1;
}

/// Turns the entry of that lowpass (symmetric, half response centre first) into the halfband filter of `length` taps:
/// length, unique count, odd flag and half response are replaced.
void halfband_fold(FirEntry &entry, int length);

} // namespace brisel
