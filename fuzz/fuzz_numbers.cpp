// fuzz_numbers.cpp - numbers into text and back: the fixed-digit format, the shortest digits, columns of a line.
#include "engine/files/fixed_columns.h"
#include "engine/files/number_format.h"
#include "engine/files/text_file.h"
#include "fuzz/byte_source.h"
#include "fuzz/check.h"

using namespace brisel;

static void check_format(double value, int width) {
  const auto text = number_format(value, width);
  require(text.has_value() == std::isfinite(value), "finite numbers are written, others never");
  if (!text) return;
  const auto size = static_cast<int>(text->size());
  const int expected = std::max(width, 7);
  require(size == expected || size == expected + 1, "the field has its width, or one more for a long exponent");
  const auto back = parse_number(*text);
  // Rounding up at the end of the range leaves it; a denormal has fewer digits than the field.
  if (!back) return require(std::fabs(value) > 1e307 || std::fabs(value) < 1e-300, "what is written is a number");
  if (std::fabs(value) < 1e-290) return;
  const double places = std::fabs(std::log10(std::fabs(value)));
  const double tolerance = 5.01 * std::pow(10.0, -std::max(width - 6, 1)) + (2 * places + 4) * 2.3e-16;
  require(std::fabs(*back - value) <= tolerance * std::fabs(value), "half a unit of the last digit");
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  ByteSource in(data, size);
  const int width = 1 + in.below(40);
  const auto column = static_cast<std::size_t>(in.byte());
  const double value = in.any();
  check_format(value, width);
  if (std::isfinite(value)) require(parse_number(shortest(value)) == value, "the shortest digits are the number");
  const std::string text = in.rest();
  for (const auto &number : {parse_number(text), number_at(text, column), column_number(text, column)})
    if (number) {
      require(std::isfinite(*number), "only finite numbers are read");
      check_format(*number, width);
    }
  std::size_t end = 0;
  if (column_number(text, column, &end)) require(end > column && end <= text.size(), "the end of what was read");
  if (column_integer(text, column, &end)) require(end > column && end <= text.size(), "the end of what was read");
  if (parse_integer(text, &end)) require(end > 0 && end <= text.size(), "the end of what was read");
  return 0;
}
