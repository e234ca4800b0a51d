#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

namespace brisel {

/// Matched Z map of every section: roots r become e^(rT), T = 2 pi / sampling rate, and sections with fewer zeros than
/// poles get zeros at the ends of the band where they belong (none for band stop). The gain is not restored.
void matched_z_map(const SectionEntry &s, SectionEntry &z, FilterType band);

} // namespace brisel
