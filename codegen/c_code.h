// c_code.h - portable C source for the current design: coefficients, delay lines, a filled-in filter structure and a
// test program. It includes the fixed support files brisel_cgen.h and brisel_filt.c.
#pragma once

#include "engine/core/design_state.h"
#include "engine/core/status.h"

#include <string>

namespace brisel {

/// The C source of `design` in `out`. 166 (form_not_supported) when no C structure holds the system: ladders, a lattice
/// with leading taps, a lattice FIR filter, a cascade with a section whose b0 is 0 where the structure assumes 1; 912
/// (not_finite) when a coefficient is no number of its type.
/// `path` is the file's name as its header shows it; the filter is named after it.
Status format_c_code(const std::string &path, const DesignRecord &design, const std::string &user,
                     const std::string &date, const std::string &time, std::string &out);

/// Writes it to `path`: 0, 166 or 912 (nothing is written) or 208 when the file cannot be written.
int generate_c_code(const std::string &path, const DesignRecord &design, const std::string &user,
                    const std::string &date, const std::string &time);

} // namespace brisel
