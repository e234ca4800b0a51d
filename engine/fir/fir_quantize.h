// fir_quantize.h - from a designed FIR entry to the working entry that analysis, files and generators use.
#pragma once

namespace brisel {

/// Unfolds the designed entry of the design record into its working entry, and, with quantization on, scales and rounds
/// the working entry by the record's settings. The taps before that stay in `fir_unquantized`.
void fir_quantize();

} // namespace brisel
