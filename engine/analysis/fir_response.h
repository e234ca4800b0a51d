// fir_response.h - frequency and time response of a FIR filter given by its taps.
#pragma once

#include "engine/analysis/frequency_grid.h"
#include "engine/analysis/response_arrays.h"

#include <vector>

namespace brisel {

/// sums[i] = sum of h[k] e^(-j (k - (N - 1) / 2) w_i): the response without the delay of its middle, real for symmetric
/// and imaginary for antisymmetric taps. Good to 1e-13 of the sum of |h|. At least one tap and two grid points.
void centred_response(std::span<const double> taps, const FrequencyGrid &grid, std::span<std::complex<double>> sums);

enum class GroupDelay { constant, computed }; // constant: (N - 1) / 2 samples, whatever the taps are

/// Responses of `gain` times the filter. `seconds_per_sample` scales the group delay.
void fir_frequency_response(std::span<const double> taps, double gain, GroupDelay group_delay,
                            double seconds_per_sample, const FrequencyGrid &grid, const FrequencyResponse &out);

/// Impulse and step response; samples behind the last tap are filled with the last values of both.
void fir_time_response(std::span<const double> taps, double gain, const TimeResponse &out);

} // namespace brisel
