// droop_fit.h - minimum-phase second-order sections whose gain approximates a wanted curve in some bands.
//
// Frequencies in radians per sample. A level that all frequencies have in common is free: the sections give the shape.
#pragma once

#include "engine/core/spec_bands.h"

#include <functional>
#include <optional>

namespace brisel {

/// Poles and zeros of the sections lie inside this radius.
inline constexpr double safe_root_radius = 0.995;

struct DroopGoal {
  std::vector<FrequencyBand> bands; // ascending
  std::function<double(double)> wanted_db;
};

struct DroopFit {
  SectionEntry sections; // leading coefficients and gain 1, smallest poles first
  double residual_db;    // largest over smallest gain of the sections over the wanted one
};

/// Largest over smallest wanted gain in the bands, dB.
double droop_range(const DroopGoal &goal);

/// As few sections as leave a residual of `enough_db`, from 1 to `most`; where that is beyond them, those that come
/// closest. The same numbers every time. Nothing when the wanted curve is not finite.
std::optional<DroopFit> fewest_droop_sections(const DroopGoal &goal, double enough_db, int most);

} // namespace brisel
