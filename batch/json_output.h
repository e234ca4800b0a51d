// json_output.h - the machine-readable results.
#pragma once

#include "engine/judge/judge.h"

#include <map>
#include <string>
#include <vector>

namespace brisel {

/// The finished design or analysis as one JSON object. Throws JobFailure when a coefficient is not finite.
std::string design_json(std::span<const Judgement> judgements);

struct Estimate {
  std::string name;
  int value;
};
/// Estimates as one JSON object. `transition_width` is in `unit` and left out when it is 0.
std::string estimate_json(const std::vector<Estimate> &lengths, const std::vector<Estimate> &orders,
                          double transition_width);

} // namespace brisel
