// judgement_text.h - judgements in the words of tables, for the summary and the workstation alike.
#pragma once

#include "engine/judge/judge.h"

#include <string>

namespace brisel {

/// "passband ripple", "largest gain in between", "band 2, error", ...
std::string goal_text(const Goal &goal);

/// The figure asked for with its unit, or nothing.
std::string asked_text(const Goal &goal);

/// A figure with its unit, with as many digits as it takes to tell one that misses from what was asked for; or what
/// stands in the way of a figure. `where` is its place in the user's words.
std::string figure_text(const Judgement &judgement, const Figure &figure, const std::string &where);

/// Decibels with so many digits, and no minus sign before a zero.
std::string decibel_text(double value, int digits);

/// Why a figure has no value; empty where it has one.
std::string trouble_text(const Figure &figure, const std::string &where);
/// The same for the largest or smallest gain of a system, instead of its decibels.
std::string gain_trouble_text(const Figure &figure);

} // namespace brisel
