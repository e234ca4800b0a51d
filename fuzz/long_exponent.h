// long_exponent.h - tells texts whose columns may have been shifted.
#pragma once

#include <cctype>
#include <string_view>

/// An exponent of three digits shifts the columns behind it; a file where that matters is refused.
inline bool has_long_exponent(std::string_view text) {
  for (std::size_t at = 0; (at = text.find('E', at)) != text.npos; at++)
    if (at + 4 < text.size() && (text[at + 1] == '+' || text[at + 1] == '-') && std::isdigit(text[at + 4])) return true;
  return false;
}
