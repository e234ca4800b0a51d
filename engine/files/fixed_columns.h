// fixed_columns.h - numbers at stated columns of a line, for the readers of the fixed-column files.
//
// Columns are counted from 0. A number is taken whole or not at all: one that begins before its column (its first
// digits would be skipped) or that runs into other text ("1,5" of another locale, "2x") is no number. The end of what
// was read goes to `end`, if given.
#pragma once

#include <optional>
#include <string_view>

namespace brisel {

std::optional<double> column_number(std::string_view line, std::size_t column, std::size_t *end = nullptr);
std::optional<long long> column_integer(std::string_view line, std::size_t column, std::size_t *end = nullptr);

} // namespace brisel
