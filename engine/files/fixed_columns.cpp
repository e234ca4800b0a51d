#include "engine/files/fixed_columns.h"

#include "engine/files/text_file.h"

#include <cstring>

namespace brisel {

static bool blank_at(std::string_view line, std::size_t column) {
  return column >= line.size() || (line[column] != '\0' && std::strchr(" \t\r\v\f", line[column]));
}

template <class Parse>
static auto whole(std::string_view line, std::size_t column, std::size_t *end, Parse parse)
    -> decltype(parse(line, end)) {
  if (column >= line.size()) return std::nullopt;
  if (column > 0 && !blank_at(line, column - 1) && !blank_at(line, column)) return std::nullopt;
  std::size_t used = 0;
  const auto value = parse(line.substr(column), &used);
  if (!value || !blank_at(line, column + used)) return std::nullopt;
  if (end) *end = column + used;
  return value;
}

std::optional<double> column_number(std::string_view line, std::size_t column, std::size_t *end) {
  return whole(line, column, end, parse_number);
}

std::optional<long long> column_integer(std::string_view line, std::size_t column, std::size_t *end) {
  return whole(line, column, end, parse_integer);
}

} // namespace brisel
