// cascade_tail.h - second-order sections put behind a finished digital cascade.
#pragma once

#include "engine/core/records.h"

#include <string>

namespace brisel {

/// How many more there can be, and what to say when `count` of them, named by `kind`, are too many.
int section_room(const SectionEntry &cascade);
std::string no_room(const SectionEntry &cascade, int count, const char *kind);

/// There must be room.
void append_section(SectionEntry &cascade, const Triple &numerator, const Triple &denominator);

} // namespace brisel
