// summary.h - the results in a few lines for a person.
#pragma once

#include <string>

namespace brisel {

std::string design_summary();

} // namespace brisel
