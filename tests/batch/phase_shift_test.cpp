#include "tests/batch/run_brisel.h"

#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <numbers>

namespace brisel {
namespace {

using Json = nlohmann::json;

const std::string task = "phase-shift --sampling-frequency 8000 --first-passband 1000 --second-passband 2000 ";

class PhaseShiftJob : public testing::Test {
protected:
  Json run(const std::string &arguments) {
    const Outcome outcome = shop.run(arguments + " --json -");
    EXPECT_EQ(outcome.status, 0) << arguments << "\n" << outcome.err;
    return outcome.status == 0 ? Json::parse(outcome.out) : Json();
  }
  /// Degrees, at points of a grid from 0 to half the sampling frequency.
  static double phase_at(const Json &result, std::size_t point) {
    return result["responses"]["phase"][point].get<double>() * 180 / std::numbers::pi;
  }
  Workshop shop;
};

TEST_F(PhaseShiftJob, HasTheShiftAtBothFrequenciesAndAGainOfOne) {
  for (const double degrees : {90.0, -90.0, 37.5, -170.0, 150.0, 405.0}) {
    const std::string wanted = task + "--phase-shift " + std::to_string(degrees) + " --real-zero ";
    // The note of the default zero names those that work.
    const std::string said = shop.run(task + "--phase-shift " + std::to_string(degrees)).out;
    const std::size_t place = said.find("values that work here: from ");
    ASSERT_NE(place, std::string::npos) << said;
    double low = 0, high = 0;
    ASSERT_EQ(std::sscanf(said.c_str() + place, "values that work here: from %lf to %lf", &low, &high), 2) << said;
    const std::size_t middle = said.find("The real zero is ");
    ASSERT_NE(middle, std::string::npos) << said;
    for (const double zero : {low, std::atof(said.c_str() + middle + 17), high}) {
      const Json result = run(wanted + std::to_string(zero) + " --frequency-points 4001");
      if (result.is_null()) continue;
      EXPECT_LE(std::abs(std::remainder(phase_at(result, 1000) - degrees, 360)), 1e-6) << degrees << ' ' << zero;
      EXPECT_LE(std::abs(std::remainder(phase_at(result, 2000) - degrees, 360)), 1e-6) << degrees << ' ' << zero;
      for (const double magnitude : result["responses"]["magnitude"]) ASSERT_NEAR(magnitude, 1, 1e-9);
      EXPECT_EQ(result["iir"]["order"], 3);
      EXPECT_NE(result["notes"][0].get<std::string>().find("is within 5 degrees of "), std::string::npos);
    }
  }
}

TEST_F(PhaseShiftJob, RadiansAreHertzInAnotherUnit) {
  const Json
      hertz = run(task + "--phase-shift 60 --real-zero 3"),
      radians =
          run("phase-shift --radians --sampling-frequency 4 --first-passband 0.5 --second-passband 1 --phase-shift 60 "
              "--real-zero 3");
  EXPECT_EQ(radians["unit"], "radians");
  EXPECT_EQ(radians["sampling_frequency"], 4);
  for (std::size_t section = 0; section < 2; section++)
    for (std::size_t i = 0; i < 3; i++)
      EXPECT_NEAR(hertz["iir"]["cascade"]["sections"][section]["denominator"][i].get<double>(),
                  radians["iir"]["cascade"]["sections"][section]["denominator"][i].get<double>(), 1e-14);
}

TEST_F(PhaseShiftJob, WritesWhatEveryAnalysisWrites) {
  const Outcome outcome =
      shop.run(task + "--phase-shift 90 --real-zero 4 --inp a.inp --flt a.flt --c a.c --report a.txt "
                      "--plot-data a --cocentric a.abl --data a.dat --json a.json");
  ASSERT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_NE(outcome.out.find("Product of Second Order Sections, order 3"), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find("Note: Before any quantization the phase is within 5 degrees of 90 from 952.37 to 1044.91 "
                             "Hz and from 1952.3 to 2053.95 Hz."),
            std::string::npos)
      << outcome.out;
  for (const char *name : {"a.inp", "a.flt", "a.c", "a.txt", "a.pha", "a.abl", "a.dat"})
    EXPECT_NE(shop.read(name), "") << name;
  const Json first = Json::parse(shop.read("a.json"));
  for (const char *file : {"a.inp", "a.flt"}) {
    const Json again = run(std::string("analyze ") + file);
    // These files carry nine digits, of all-pass coefficients on both sides alike.
    for (std::size_t i = 0; i < 1001; i++) {
      EXPECT_NEAR(again["responses"]["magnitude"][i].get<double>(), 1, 1e-7) << file;
      EXPECT_LE(std::abs(std::remainder(phase_at(again, i) - phase_at(first, i), 360)), 1e-5) << file;
    }
  }
  EXPECT_EQ(shop.run(task + "--phase-shift 90 --real-zero 4 --quantize fixed --structure canonic --adsp218x b.dat "
                            "--dspic30 b")
                .status,
            0);
}

TEST_F(PhaseShiftJob, RefusalsAreOneLineWithStatus2AndNameTheOption) {
  const struct {
    std::string arguments;
    const char *says;
  } rows[] = {
      {"phase-shift", "--sampling-frequency: has to be given"},
      {"phase-shift FILE.spc", "unexpected argument: FILE.spc"},
      {task, "--phase-shift: has to be given"},
      {task + "--phase-shift 1e-9", "--phase-shift: 1e-09 has no filter"},
      {task + "--phase-shift 90 --real-zero -4",
       "--real-zero: -4 gives no stable filter; values that work here: from 2.417 to 2269"},
      {task + "--phase-shift 90 --real-zero 0.5",
       "--real-zero: 0.5 is not above 1 or below -1; values that work here: from 2.417 to 2269"},
      {task + "--phase-shift 90 --real-zero four", "--real-zero: 'four' is no number"},
      {task + "--phase-shift 180 --real-zero 4", "--phase-shift: 180 is a change of sign"},
      {task + "--phase-shift 1e-9 --real-zero 4", "--phase-shift: 1e-09 has no filter"},
      {"phase-shift --sampling-frequency -1 --first-passband 1", "--sampling-frequency: '-1' is not above zero"},
      {"phase-shift --sampling-frequency 8000 --first-passband 2000 --second-passband 1000 --phase-shift 90",
       "--second-passband: 1000 is not above the first passband"},
      {"phase-shift --sampling-frequency 8000 --first-passband 2000 --second-passband 4000 --phase-shift 90",
       "--second-passband: 4000 is not below half the sampling frequency"},
      {task + "--phase-shift 90 --real-zero 4 --frequency-range 0:9000", "above the sampling frequency, 8000"},
      {task + "--phase-shift 90 --real-zero 4 --bits 12", "--bits: needs --quantize"},
      {task + "--phase-shift 90 --real-zero 4 --unity-gain", "--unity-gain"},
      {task + "--phase-shift 90 --real-zero 4 --scaling one", "--scaling"},
  };
  for (const auto &row : rows) {
    const Outcome outcome = shop.run(row.arguments + (row.arguments.size() > 12 ? " --json x.json" : ""));
    EXPECT_EQ(outcome.status, 2) << row.arguments << outcome.err;
    EXPECT_TRUE(outcome.is_one_line()) << row.arguments << "\n" << outcome.out << outcome.err;
    EXPECT_NE(outcome.err.find(row.says), std::string::npos) << row.arguments << "\n" << outcome.err;
    EXPECT_TRUE(shop.files().empty()) << row.arguments;
  }
}

} // namespace
} // namespace brisel
