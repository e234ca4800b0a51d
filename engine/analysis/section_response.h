// section_response.h - responses of second-order sections, as a cascade and in parallel.
#pragma once

#include "engine/analysis/response_arrays.h"
#include "engine/core/records.h"

namespace brisel {

/// Variable of the section triples: z^-1 on the unit circle, or s on the imaginary axis.
enum class Plane { z, s };

/// `points` in radians per sample. The group delay uses the entry's sampling rate; so does, in the s plane, the
/// frequency.
void cascade_frequency_response(const SectionEntry &cascade, Plane plane, std::span<const double> points,
                                const FrequencyResponse &out);
void parallel_frequency_response(const SectionEntry &parallel, Plane plane, std::span<const double> points,
                                 const FrequencyResponse &out);

/// Digital systems only: every section runs in the transposed structure.
void cascade_time_response(const SectionEntry &cascade, const TimeResponse &out);
void parallel_time_response(const SectionEntry &parallel, const TimeResponse &out);

} // namespace brisel
