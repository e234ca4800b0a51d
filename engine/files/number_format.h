// number_format.h - the fixed-digit numbers of specification, coefficient and report lines.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace brisel {

/// `value` as a sign ("0" or "-"), a point, max(width - 6, 1) digits, "E" and a signed exponent of two digits, so that
/// value = 0.ddd * 10^e: 1000 in width 12 is "0.100000E+04". An exponent beyond 99 takes three digits and makes the
/// text one character longer. Nothing when the value is not finite.
std::optional<std::string> number_format(double value, int width);

/// Text under construction that holds only finite numbers: the first other value sticks.
struct NumberText {
  std::string text;
  bool finite = true;

  void append(std::string_view words) { text += words; }
  void number(double value, int width);
  /// The text, or nothing when a number was not finite.
  std::optional<std::string> result() && { return finite ? std::optional(std::move(text)) : std::nullopt; }
};

} // namespace brisel
