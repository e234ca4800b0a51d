#include "engine/iir/cascade_tail.h"

#include "engine/files/text_file.h"

#include <algorithm>

namespace brisel {

int section_room(const SectionEntry &cascade) {
  return std::min(max_sections - cascade.section_count, (max_order - cascade.order) / 2);
}

std::string no_room(const SectionEntry &cascade, int count, const char *kind) {
  return formatf("a filter of order %d leaves no room for %d %s section%s below the limit of order %d", cascade.order,
                 count, kind, count == 1 ? "" : "s", max_order);
}

void append_section(SectionEntry &cascade, const Triple &numerator, const Triple &denominator) {
  const auto at = static_cast<std::size_t>(cascade.section_count++);
  cascade.numerators[at] = numerator;
  cascade.denominators[at] = denominator;
  cascade.order += 2;
}

} // namespace brisel
