// fir_rounding.h - scaling of FIR coefficients and their rounding to a word length.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

#include <span>

namespace brisel {

/// Scales all taps of an unfolded entry by the rule of `option` for the quantum `q`, and keeps gain and shift in step.
/// Taps that are all zero are left alone.
void fir_scale(double q, FirEntry &entry, FirScaling option);

/// Scales an unfolded entry and rounds its taps to multiples of 2^-(bits - 1). `bits` is 2 to 52.
void fir_fixed_quantize(FirEntry &entry, int bits, FirScaling option);

/// Cuts mantissas to `bits` bits, the hidden one included.
void fir_float_quantize(std::span<double> coefficients, int bits);

} // namespace brisel
