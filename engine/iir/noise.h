// noise.h - noise at the output of a digital filter that rounds inside its sections. [Jackson70], see iir_scaling.h.
//
// A section's noise gain is the mean squared magnitude of the path from its rounding point to the output, on the gain
// grid or, where that is off by more than 0.1 dB, integrated on the nodes of pole_grid.h. Cascade,
// transposed structure: 1 / |D_j| |H_{j+1} ... H_last|; canonic: |H_j ... H_last|. Parallel form: scaler / |D_j|.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

#include <span>

namespace brisel {

/// Mean over [0, pi] of values on the gain grid, by the extended Simpson rule with end weights 17/48, 59/48, 43/48,
/// 49/48. At least eight values.
double simpson_mean(std::span<const double> values);

void cascade_noise_gains(const SectionEntry &cascade, SectionStructure structure, std::span<double> gains);
void parallel_noise_gains(const SectionEntry &parallel, std::span<double> gains);

/// Powers, standard deviation and noise floor of `result` from the factor between input and output noise power, for
/// words of `bits` bits. The input noise is that of one rounding.
void store_noise(double factor, int bits, QuantizationResult &result);

} // namespace brisel
