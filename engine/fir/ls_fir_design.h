// ls_fir_design.h - the least-squares method, which has no solver of its own.
#pragma once

namespace brisel {

/// Kept: prepares the FIR entry of the design record and leaves it the coefficients of the design before. Without such
/// a design a message says so, and the entry is not marked as designed.
void ls_fir_design();

} // namespace brisel
