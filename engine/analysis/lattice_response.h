// lattice_response.h - responses of the Gray-Markel lattice and of the continued-fraction ladders, both digital. Form
// conversions says what their coefficients mean.
#pragma once

#include "engine/analysis/response_arrays.h"
#include "engine/core/records.h"

namespace brisel {

/// `points` in radians per sample.
void lattice_frequency_response(const LatticeEntry &lattice, std::span<const double> points,
                                const FrequencyResponse &out);
/// Runs the lattice itself: the forward and backward signals of every stage.
void lattice_time_response(const LatticeEntry &lattice, const TimeResponse &out);

/// Evaluates the continued fraction itself. A ladder has no time response of its own here: with its delay-free loops it
/// runs as the ratio of polynomials that it stands for.
void ladder_frequency_response(const LadderEntry &ladder, std::span<const double> points, const FrequencyResponse &out);

} // namespace brisel
