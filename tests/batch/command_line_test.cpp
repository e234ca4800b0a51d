#include "tests/batch/run_brisel.h"

#include <gtest/gtest.h>

namespace brisel {
namespace {

TEST(CommandLine, HelpAndVersionAreTextsOnStandardOutput) {
  const Workshop shop;
  struct Row {
    const char *arguments;
    int status;
    const char *holds;
  };
  const Row rows[]{
#ifndef BRISEL_PICTURES // else the workstation
      {"", 2, "Usage:"},
#endif
      {"--help", 0, "brisel design FILE.spc"},
#ifdef BRISEL_PICTURES
      {"--help", 0, "brisel [FILE] "},
#endif
      {"-h", 0, "Usage:"},
      {"--version", 0, "brisel " BRISEL_VERSION "\n"},
      {"design --help", 0, "--method"},
      {"estimate --help", 0, "--json"},
  };
  for (const Row &row : rows) {
    const Outcome outcome = shop.run(row.arguments);
    EXPECT_EQ(outcome.status, row.status) << row.arguments;
    EXPECT_NE(outcome.out.find(row.holds), std::string::npos) << row.arguments << "\n" << outcome.out;
    EXPECT_EQ(outcome.err, "") << row.arguments;
  }
  EXPECT_EQ(shop.run("estimate --help").out.find("--window"), std::string::npos) << "an option it does not take";
  EXPECT_EQ(shop.run("--help > /dev/full").status, 1);
}

TEST(CommandLine, WhatIsWrongIsNamedInOneLineWithStatus2) {
  const Workshop shop;
  for (const char *name : {"lowpass", "hilbert"})
    shop.write(std::string(name) + ".spc", example(std::string(name) + ".spc"));
  shop.write("-", "");
  const auto before = shop.files();
  struct Row {
    const char *arguments;
    const char *says;
  };
  const Row rows[]{
      {"nonsense", "nonsense"},
      {"desing lowpass.spc --method iir", "desing; did you mean design?"},
      {"design lowpass.spc --metohd=iir", "--metohd=iir; did you mean --method?"},
      {"lowpass.spc hilbert.spc", "lowpass.spc"},
      {"--nonsense", "--nonsense"},
      {"design", "FILE.spc is required"},
      {"design ''", "empty"},
      {"design lowpass.spc hilbert.spc", "hilbert.spc"},
      {"design lowpass.spc --nonsense", "--nonsense"},
      {"design lowpass.spc --method window --length", "--length: a value is missing"},
      {"design lowpass.spc --method window --length 63 --length 64", "--length: is given more than once"},
      {"design lowpass.spc --method window --length 2", "--length: 2 is outside 3 to 50000"},
      {"design lowpass.spc --method window --length -5", "--length: -5 is outside"},
      {"design lowpass.spc --method window --length 50001", "--length: 50001 is outside"},
      {"design lowpass.spc --method window --length 99999999999999999999", "--length: '99999999999999999999'"},
      {"design lowpass.spc --method window --length 0x40", "--length: '0x40' is no whole number"},
      {"design lowpass.spc --method window --length 63.5", "--length: '63.5'"},
      {"design lowpass.spc --method window --length 1e3", "--length: '1e3'"},
      {"design lowpass.spc --method window --length ''", "--length: ''"},
      {"design lowpass.spc --method magic", "--method: 'magic' is none of"},
      {"design lowpass.spc --method window --window exponential", "--window: 'exponential' is none of"},
      {"design lowpass.spc --method window --window ''", "--window: ''"},
      {"design lowpass.spc --method window --frequency-points 1", "--frequency-points: 1 is outside 2 to 10001"},
      {"design lowpass.spc --method window --frequency-points 10002", "--frequency-points"},
      {"design lowpass.spc --method window --time-points 0", "--time-points: 0 is outside 1 to 32002"},
      {"design lowpass.spc --method window --frequency-range 5", "--frequency-range: '5' is not of the form"},
      {"design lowpass.spc --method window --frequency-range 1,5:7", "--frequency-range"},
      {"design lowpass.spc --method window --frequency-range 0:nan", "--frequency-range"},
      {"design lowpass.spc --method window --frequency-range 0:inf", "--frequency-range"},
      {"design lowpass.spc --method window --frequency-range 1:2:3", "--frequency-range"},
      {"design lowpass.spc --method window --frequency-range 100:100", "does not ascend"},
      {"design lowpass.spc --method window --frequency-range=-1:100", "begins below zero"},
      {"design lowpass.spc --method window --frequency-range 0:8001", "above the sampling frequency, 8000"},
      {"design lowpass.spc --method window --stages 3", "--stages: needs --compensation comb"},
      {"design lowpass.spc --method window --compensation sinc --rate-change 8", "--rate-change: needs"},
      {"design lowpass.spc --method window --compensation comb --stages 128", "--stages: 128 is outside 1 to 127"},
      {"design lowpass.spc --method window --json ''", "--json: the name is empty"},
      {"design lowpass.spc --method window --json --spc x", "--json: '--spc' looks like an option"},
      {"design lowpass.spc --method window --spc -", "--spc: '-'"},
      {"design lowpass.spc --method window --json a --spc ./a", "two outputs would be written to"},
      {"design lowpass.spc --method window --json p.mag --plot-data p", "two outputs would be written to p.mag"},
      {"estimate lowpass.spc --window kaiser", "--window; it is an option of design"},
      {"design lowpass.spc \"$(printf 'a\\nb\\033')\"", "a\\x0Ab\\x1B"},
  };
  for (const Row &row : rows) {
    const Outcome outcome = shop.run(row.arguments);
    EXPECT_EQ(outcome.status, 2) << row.arguments;
    EXPECT_TRUE(outcome.is_one_line()) << row.arguments << "\n" << outcome.out << outcome.err;
    EXPECT_NE(outcome.err.find(row.says), std::string::npos) << row.arguments << "\n" << outcome.err;
    EXPECT_EQ(outcome.err.find("brisel: "), 0u) << outcome.err;
  }
  EXPECT_EQ(differing(shop.files(), before), Names{}) << "a refused command line writes nothing";
}

} // namespace
} // namespace brisel
