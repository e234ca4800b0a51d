// Files of plain numbers, read back and run against the responses of the same job.
#include "tests/batch/run_brisel.h"

#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

using namespace brisel;
using Json = nlohmann::json;

namespace {

std::vector<std::vector<double>> rows_of(const std::string &text) {
  std::vector<std::vector<double>> rows;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    rows.emplace_back();
    for (double value; words >> value;) rows.back().push_back(value);
  }
  return rows;
}

// The sections as difference equations on an impulse, in direct form I.
std::vector<double> impulse_of(const std::vector<std::vector<double>> &sections, std::size_t count) {
  std::vector<double> x(count);
  x[0] = 1;
  for (const auto &s : sections) {
    std::vector<double> y(count);
    for (std::size_t n = 0; n < count; n++)
      for (std::size_t k = 0; k < 3 && k <= n; k++) y[n] += s[k] * x[n - k] - (k > 0 ? s[3 + k] * y[n - k] : 0);
    x = y;
  }
  return x;
}

} // namespace

TEST(MatlabFile, FiltersAsTheDesignThatItCameFrom) {
  const struct {
    const char *example, *options;
    double tolerance;
  } rows[] = {
      {"lowpass.spc", "--method iir", 1e-13},
      {"lowpass.spc", "--method iir --quantize fixed --bits 12", 1e-13},
      {"bandstop.spc", "--method iir --prototype tschebyscheff --quantize fixed --structure canonic --bits 20", 1e-13},
      {"highpass.spc", "--method iir --mapping matched-z --quantize floating --structure float-4 --bits 20", 1e-13},
      {"bandpass.spc", "--method iir --prototype butterworth --mapping impulse-invariant --order 6", 1e-12},
      // The cascade is made from other forms, which answer some samples later.
      {"lowpass.spc",
       "--method iir --prototype butterworth --mapping impulse-invariant --order 5 --realization parallel", 1e-10},
      {"lowpass.spc", "--method iir --order 5 --realization ratio --quantize floating --bits 30", 1e-10},
      {"lowpass.spc", "--method iir --order 4 --realization lattice", 1e-10},
      {"lowpass.spc", "--method window", 0},
      {"hilbert.spc", "--method equiripple --length 31 --quantize floating --bits 12", 0},
      {"bandpass.spc", "--method equiripple --quantize fixed --bits 12 --scaling one", 1e-15},
  };
  for (const auto &row : rows) {
    const std::string what = std::string(row.example) + " " + row.options;
    const Workshop shop;
    shop.write("a.spc", example(row.example));
    const Outcome outcome = shop.run(std::string("design a.spc ") + row.options + " --json a.json --matlab a.dat");
    ASSERT_EQ(outcome.status, 0) << what << outcome.err;
    const auto expected = Json::parse(shop.read("a.json"))["responses"]["impulse"].get<std::vector<double>>();
    const auto matrix = rows_of(shop.read("a.dat"));
    const bool fir = what.find("iir") == what.npos;
    const std::vector<double> got = fir ? matrix[0] : impulse_of(matrix, expected.size());
    ASSERT_EQ(got.size(), expected.size()) << what;
    double peak = 0, worst = 0;
    for (std::size_t n = 0; n < got.size(); n++) {
      peak = std::max(peak, std::fabs(expected[n]));
      worst = std::max(worst, std::fabs(expected[n] - got[n]));
    }
    EXPECT_LE(worst, row.tolerance * peak) << what;
    for (const auto &section : matrix)
      if (!fir) {
        ASSERT_EQ(section.size(), 6u) << what;
        EXPECT_EQ(section[3], 1) << what;
      }
  }
}

TEST(DataFile, OptionsThatWouldDoNothingAreRefused) {
  const Workshop shop;
  shop.write("a.spc", example("lowpass.spc"));
  shop.write("a.inp", example("biquads.inp"));
  const struct {
    const char *arguments, *says;
    int status;
  } rows[] = {
      {"design a.spc --data-layout commas", "--data-layout: needs --data", 2},
      {"design a.spc --cocentric-comments", "--cocentric-comments: needs --cocentric", 2},
      {"design a.spc --data x --data-notation hexadecimal", "words need --quantize fixed", 2},
      {"design a.spc --cocentric x --cocentric-format integer", "words need --quantize fixed", 2},
      {"analyze a.inp --matlab x", "--matlab", 2},
      {"design a.spc --realization lattice --quantize fixed --data x --data-notation word", "no coefficients that are",
       1},
      {"design a.spc --quantize fixed --data x --data-notation word --data-stage unquantized",
       "no coefficients that are", 1},
  };
  const auto before = shop.files();
  for (const auto &row : rows) {
    const Outcome outcome = shop.run(row.arguments);
    EXPECT_EQ(outcome.status, row.status) << row.arguments << outcome.err;
    EXPECT_TRUE(outcome.is_one_line()) << outcome.err;
    EXPECT_NE(outcome.err.find(row.says), std::string::npos) << outcome.err;
  }
  EXPECT_EQ(shop.files(), before);
  ASSERT_EQ(shop.run("analyze a.inp --cocentric a.abl --data a.dat").status, 0);
  EXPECT_EQ(shop.read("a.abl"), shop.read("a.dat"));
}
