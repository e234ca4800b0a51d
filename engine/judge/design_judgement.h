// design_judgement.h - the judgement on the finished design, for summary, JSON and the workstation alike.
#pragma once

#include "engine/judge/judge.h"

namespace brisel {

/// What the design of the record attains, frequencies in radians per sample; empty for an analysis.
std::vector<Judgement> judge_design();

/// Whether the design meets its specification, at the least cost; nothing when it asks for nothing.
std::optional<bool> design_meets();

/// Largest and smallest gain of the filter or system of the record, as delivered, over the frequencies shown;
/// frequencies in radians per second.
GainRange delivered_gain_range();

} // namespace brisel
