// prewarp.h - what the bilinear map bends in an entered analog system, bent back beforehand.
#pragma once

#include "engine/core/records.h"

#include <optional>

namespace brisel {

/// At most one of the two; neither is the plain map.
struct Prewarp {
  double frequency = 0;    // radians per second: the frequency that the map keeps, 0 for none
  bool every_root = false; // every pole and zero keeps its own
};

/// True when the map can keep a frequency: 0, or between 0 and half the sampling frequency, exclusive.
bool can_prewarp(double frequency, double sample_rate);

/// Moves every root r of the sections to r tan(|r| T / 2) / (|r| T / 2), T = 2 pi / sampling rate, from where the plain
/// bilinear map brings it to the digital frequency |r|; roots at 0 stay. The leading coefficients stay as well, so that
/// the gain is not kept. Returns the smallest |r| that lies at or above half the sampling frequency and has no such
/// place (`out` is then unspecified), or nothing.
std::optional<double> prewarp_roots(const SectionEntry &sections, SectionEntry &out);

} // namespace brisel
