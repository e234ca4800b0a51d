// compensate_cascade.h - the stage of an IIR design that makes up for the droop of what stands before or behind it.
#pragma once

#include "engine/fir/compensation.h"
#include "engine/iir/droop_fit.h"

#include <optional>

namespace brisel {

inline constexpr int max_compensation_sections = 4;

/// Residual that is small enough for a passband ripple, both in dB: never more than half of it.
double enough_compensation(double passband_ripple);

/// The sections for one design; none where the droop is flat or nothing is to be compensated.
struct CompensationPlan {
  Compensation droop;
  double droop_db = 0; // largest over smallest gain of the droop in the passbands
  DroopFit fit{};
};

/// As few sections as undo the droop that the record's selections name in the passbands of its specification. Nothing,
/// after a message, where none do.
std::optional<CompensationPlan> plan_compensation();

/// Passband ripple for which the filter itself is to be designed: what the residual leaves of the specification's, or
/// half of that where it leaves next to nothing.
double ripple_beside(const CompensationPlan &plan, double passband_ripple);

/// Appends the sections to the record's digital cascade, sets its peak to 1, fills the record's `compensation` and
/// tells what came of it. False after a message.
bool compensate_cascade(const CompensationPlan &plan);

} // namespace brisel
