// least_squares_design.h - linear-phase FIR design by weighted least squares.
#pragma once

namespace brisel {

/// Designs into the FIR entry of the design record and sets its valid flag. Failures post a message and leave it clear.
void least_squares_design();

} // namespace brisel
