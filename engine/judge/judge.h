// judge.h - what a filter attains of the goals of a specification.
//
// Extremes are found on samples dense enough to see every one of them and then closed in on, so that a figure does not
// depend on where the samples lie. Frequencies are radians per sample.
#pragma once

#include "engine/judge/goals.h"
#include "engine/judge/judged_filter.h"

namespace brisel {

/// A quantity of a filter, in its unit. With a trouble it has no value, or none that says what the filter does.
struct Figure {
  double value;
  double worst_at; // where it is reached; the trouble, where there is one that has a place
  Trouble trouble = Trouble::none;
};

/// One goal and what became of it.
struct Judgement {
  Goal goal;
  Figure attained;                 // by the exact filter
  std::optional<Figure> quantized; // by the one that is delivered, where that is another one
  std::optional<bool> met;         // of the filter delivered; nothing where nothing is asked

  const Figure &delivered() const { return quantized ? *quantized : attained; }
};

/// One judgement a goal, in their order.
std::vector<Judgement> judge(const Goals &goals, const JudgedFilter &exact, const JudgedFilter *quantized = nullptr);

/// Whether all is met; nothing when nothing was asked.
std::optional<bool> all_met(std::span<const Judgement> judgements);

/// The same for a filter alone, which looks at nothing that is not asked and stops at the first goal missed.
std::optional<bool> meets(const Goals &goals, const JudgedFilter &filter);

/// Largest and smallest gain in a band, in dB.
struct GainRange {
  Figure largest, smallest;
};
GainRange gain_range(const JudgedFilter &filter, FrequencyBand band);

} // namespace brisel
