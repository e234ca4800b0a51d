// method_rule.h - which design method a filter type can have.
#pragma once

#include <cstdint>

namespace brisel {

/// What the rule makes of a method code: outside 0..4 it becomes 0; group delay filters are designed by method 0; other
/// types that IIR design cannot produce (codes 4 and up) by method 1 unless it is 1..4 already.
std::int8_t ruled_method(int method, int filter_type);

/// Applies the rule to the design state; whenever its filter type is set.
void apply_method_rule();

} // namespace brisel
