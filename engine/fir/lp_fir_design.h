// lp_fir_design.h - linear-phase FIR design by linear programming.
#pragma once

#include "engine/fir/linear_program.h"
#include "engine/fir/optimality_check.h"

namespace brisel {

/// Designs into the FIR entry of the design record and sets its valid flag. Failures post a message and leave it clear.
void lp_fir_design();

} // namespace brisel
