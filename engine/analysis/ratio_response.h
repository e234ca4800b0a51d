// ratio_response.h - responses of a digital ratio of polynomials.
#pragma once

#include "engine/analysis/response_arrays.h"
#include "engine/core/records.h"

namespace brisel {

/// `points` in radians per sample.
void ratio_frequency_response(const RatioEntry &ratio, std::span<const double> points, const FrequencyResponse &out);
/// The polynomials run in the transposed direct form.
void ratio_time_response(const RatioEntry &ratio, const TimeResponse &out);

} // namespace brisel
