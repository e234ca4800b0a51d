// summary.h - the results in a few lines for a person.
#pragma once

#include "engine/judge/judge.h"

#include <string>

namespace brisel {

/// `judgements` are those of the design, of which there are none for an analysis.
std::string design_summary(std::span<const Judgement> judgements);

} // namespace brisel
