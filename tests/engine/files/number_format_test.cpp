#include "engine/files/fixed_columns.h"
#include "engine/files/number_format.h"
#include "engine/files/text_file.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using namespace brisel;

TEST(NumberFormat, WritesAFixedNumberOfDigits) {
  struct Row {
    const char *name;
    double value;
    int width;
    const char *text;
  };
  const Row rows[] = {
      {"a number of zero or more starts with 0", 1000, 12, "0.100000E+04"},
      {"a negative one with the minus sign", -0.5, 10, "-.5000E+00"},
      {"zero has no digits and no exponent", 0, 12, "0.000000E+00"},
      {"minus zero is zero", -0.0, 10, "0.0000E+00"},
      {"the last digit is rounded", 1.23456789, 12, "0.123457E+01"},
      {"rounding carries into the exponent", 9.9999996, 12, "0.100000E+02"},
      {"and only when it reaches ten", 9.9999944, 12, "0.999999E+01"},
      {"values below one", 0.01, 12, "0.100000E-01"},
      {"the terminator of point lists", -1, 15, "-.100000000E+01"},
      {"narrow fields keep one digit", 4.4, 3, "0.4E+01"},
      {"two digits of the exponent", 1e98, 12, "0.100000E+99"},
      {"three digits of the exponent", 1e99, 12, "0.100000E+100"},
      {"the smallest two-digit exponent", 2e-100, 12, "0.200000E-99"},
      {"values below 1e-100", 2e-101, 12, "0.200000E-100"},
      {"the largest double", std::numeric_limits<double>::max(), 12, "0.179769E+309"},
      {"the smallest double", std::numeric_limits<double>::denorm_min(), 12, "0.494066E-323"},
  };
  for (const Row &row : rows) EXPECT_EQ(number_format(row.value, row.width), row.text) << row.name;
  EXPECT_EQ(number_format(1.0 / 3, 24)->substr(0, 17), "0.333333333333333");
}

TEST(NumberFormat, RefusesWhatIsNotFinite) {
  for (const double value : {double{INFINITY}, double{-INFINITY}, std::nan("")})
    EXPECT_EQ(number_format(value, 12), std::nullopt);
  NumberText text;
  text.number(1, 12);
  text.number(NAN, 12);
  text.number(2, 12);
  EXPECT_EQ(std::move(text).result(), std::nullopt) << "the first failure sticks";
}

TEST(NumberFormat, IsWithinHalfAUnitOfTheLastDigitOverTheWholeRange) {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> mantissa(-10, 10);
  std::uniform_int_distribution<int> exponent(-300, 300);
  for (int i = 0; i < 20000; i++) {
    const double value = mantissa(random) * std::pow(10.0, exponent(random));
    for (const int width : {10, 12, 15, 22}) {
      const std::string text = *number_format(value, width);
      const double back = *parse_number(text);
      // Half a unit of the last of width - 6 digits, and the rounding of up to 300 multiplications by 0.1 or 10.
      EXPECT_LE(std::fabs(back - value), std::fabs(value) * (5.01 * std::pow(10.0, 6 - width) + 600 * 2.3e-16)) << text;
      const bool long_exponent = text[text.size() - 4] != 'E' && text[text.size() - 5] == 'E';
      EXPECT_EQ(text.size(), static_cast<std::size_t>(width + long_exponent)) << text;
    }
  }
}

TEST(FixedColumns, TakeANumberWholeOrNotAtAll) {
  struct Row {
    const char *name;
    const char *line;
    std::size_t column;
    std::optional<double> value;
  };
  const Row rows[] = {{"blanks before", "ab   1.5 Hz", 2, 1.5},
                      {"at the column", "ab 1.5", 3, 1.5},
                      {"ends with the line", "1.5", 0, 1.5},
                      {"a label may end at the column", "ab 1.5", 2, 1.5},
                      {"beginning before the column", "ab 12.5", 4, {}},
                      {"decimal comma", "ab 1,5", 2, {}},
                      {"runs into text", "ab 1.5Hz", 2, {}},
                      {"short line", "ab", 2, {}},
                      {"blank to the end", "ab    ", 2, {}},
                      {"infinity", "ab inf", 2, {}},
                      {"hexadecimal", "ab 0x10", 2, {}}};
  for (const Row &row : rows) EXPECT_EQ(column_number(row.line, row.column), row.value) << row.name;
  std::size_t end = 0;
  EXPECT_EQ(column_integer("ab  12 3", 2, &end), 12);
  EXPECT_EQ(end, 6u);
  EXPECT_EQ(column_integer("1.5", 0), std::nullopt);
}
