// analog_response.h - responses of an analog system over the frequency grid of a digital one.
#pragma once

#include "engine/analysis/response_arrays.h"
#include "engine/core/records.h"

#include <optional>

namespace brisel {

/// H(j w) with w = point * sampling rate / 2 pi; `points` in radians per sample, roots and coefficients in radians per
/// second. Analog sections have theirs in section_response.
void analog_ratio_response(const RatioEntry &ratio, std::span<const double> points, const FrequencyResponse &out);
void analog_pole_zero_response(const PoleZeroEntry &pole_zero, std::span<const double> points,
                               const FrequencyResponse &out);

enum class Connection { cascade, parallel };
/// Impulse response (per second) and step response at the sampling instants, without the error of a digital
/// approximation: the sections' state equations are solved over one sampling interval. Returns the gain of the direct
/// path, which adds to the impulse response an impulse of this area at t = 0 that no sample can show. Nothing, and no
/// samples, when a section has more zeros than poles.
std::optional<double> analog_time_response(const SectionEntry &sections, Connection connection,
                                           const TimeResponse &out);

} // namespace brisel
