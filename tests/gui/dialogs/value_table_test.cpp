#include "gui/dialogs/value_table.h"

#include <gtest/gtest.h>

namespace brisel {
namespace {

using Rows = std::vector<std::vector<double>>;

TEST(RowsOfNumbers, EverySeparatorIsUnderstood) {
  const struct {
    const char *text;
    int columns;
    Rows rows;
  } cases[] = {
      {"0\t1\n100\t0.5\n", 2, {{0, 1}, {100, 0.5}}},      {"0;1\r\n100;0.5", 2, {{0, 1}, {100, 0.5}}},
      {"0, 1\n100 , -0.5", 2, {{0, 1}, {100, -0.5}}},     {"  0   1e3\n\n100 2.5\n", 2, {{0, 1000}, {100, 2.5}}},
      {"Frequency\tValue\n0\t1\n", 2, {{0, 1}}},          {"1\n2\n3\n", 1, {{1}, {2}, {3}}},
      {"Tap list\n\nH\n.5\r\n-.5\r\n", 1, {{.5}, {-.5}}}, {"1;2\t3\n4, 5 6\n", 3, {{1, 2, 3}, {4, 5, 6}}}};
  for (const auto &c : cases) {
    QString why;
    const auto rows = rows_of_numbers(c.text, c.columns, why);
    ASSERT_TRUE(rows) << c.text << why.toStdString();
    EXPECT_EQ(*rows, c.rows) << c.text;
  }
}

TEST(RowsOfNumbers, WhatIsNoTableIsRefusedWithItsLine) {
  const struct {
    const char *text, *why;
  } cases[] = {
      {"0 1\n2\n", "Line 2 does not hold 2 numbers: 2"},
      {"0 1\n2 x\n", "Line 2 does not hold 2 numbers: 2 x"},
      {"0 1 2", "Line 1 does not hold 2 numbers: 0 1 2"},
      {"0 1\n2 nan", "Line 2 does not hold 2 numbers: 2 nan"},
      {"0\t\t1", "Line 1 does not hold 2 numbers: 0\t\t1"},
      {"0;;1", "Line 1 does not hold 2 numbers: 0;;1"},
      {"0,5\t1,25",
       "Line 1 does not hold 2 numbers: 0,5\t1,25\nCommas separate columns; decimals are written with a point."},
      {"words only", "There are no numbers to paste."},
      {"", "There are no numbers to paste."}};
  for (const auto &c : cases) {
    QString why;
    EXPECT_FALSE(rows_of_numbers(c.text, 2, why)) << c.text;
    EXPECT_EQ(why.toStdString(), c.why);
  }
}

} // namespace
} // namespace brisel
