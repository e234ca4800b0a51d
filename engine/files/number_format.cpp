#include "engine/files/number_format.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace brisel {

std::optional<std::string> number_format(double value, int width) {
  if (!std::isfinite(value)) return std::nullopt;
  const int digits = std::max(width - 6, 1);
  double magnitude = std::fabs(value);
  int exponent = 0; // one more than that of the leading digit
  if (magnitude > 0) {
    exponent = 1;
    // Kept: repeated multiplication, whose rounding errors decide the last digit of a tie.
    for (; magnitude >= 10; exponent++) magnitude *= 0.1;
    for (; magnitude < 1; exponent--) magnitude *= 10;
    magnitude += 5 / std::pow(10.0, digits); // half a unit of the last digit
    if (magnitude >= 10) {
      magnitude *= 0.1;
      exponent++;
    }
  }
  std::string text(value < 0 ? "-." : "0.");
  for (int i = 0; i < digits; i++) {
    const int digit = static_cast<int>(magnitude);
    text += static_cast<char>('0' + digit);
    magnitude = (magnitude - digit) * 10;
  }
  text += exponent < 0 ? "E-" : "E+";
  const std::string size = std::to_string(std::abs(exponent));
  if (size.size() < 2) text += '0';
  return text + size;
}

void NumberText::number(double value, int width) {
  if (const auto number = number_format(value, width))
    text += *number;
  else
    finite = false;
}

} // namespace brisel
