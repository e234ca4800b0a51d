#include "tests/batch/run_brisel.h"

#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <numbers>

namespace brisel {
namespace {

using Json = nlohmann::ordered_json;
constexpr double pi = std::numbers::pi;

class DesignJob : public testing::Test {
protected:
  DesignJob() {
    for (const char *name :
         {"lowpass", "highpass", "halfband", "hilbert", "differentiator", "arbitrary-magnitude", "group-delay"})
      shop.write(std::string(name) + ".spc", example(std::string(name) + ".spc"));
  }
  Json design(const std::string &arguments) {
    const Outcome outcome = shop.run("design " + arguments + " --json -");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    return Json::parse(outcome.out);
  }
  Workshop shop;
};

std::vector<std::string> keys(const Json &object) {
  std::vector<std::string> names;
  for (const auto &[key, value] : object.items()) names.push_back(key);
  return names;
}

TEST_F(DesignJob, JsonHoldsTheWholeResultInAFixedOrder) {
  const Json result = design("lowpass.spc --method window --length 63");
  EXPECT_EQ(keys(result), (std::vector<std::string>{"version", "filter_type", "method", "unit", "sampling_frequency",
                                                    "met", "attained", "fir", "responses"}));
  EXPECT_EQ(keys(result["fir"]),
            (std::vector<std::string>{"length", "symmetry", "window", "gain", "shift", "coefficients", "unquantized"}));
  EXPECT_EQ(keys(result["responses"]), (std::vector<std::string>{"frequency", "magnitude", "log_magnitude", "phase",
                                                                 "group_delay", "time", "impulse", "step"}));
  EXPECT_EQ(result["version"], BRISEL_VERSION);
  EXPECT_EQ(result["filter_type"], "LOW PASS");
  EXPECT_EQ(result["method"], "window");
  EXPECT_EQ(result["unit"], "hertz");
  EXPECT_EQ(result["sampling_frequency"], 8000.0);
  EXPECT_EQ(result["fir"]["window"], "kaiser");
  EXPECT_EQ(result["fir"]["symmetry"], "symmetric");
  EXPECT_EQ(result["fir"]["coefficients"].size(), 63u);
}

// What a program reads is what the summary says: band by band, with null for what is no number.
TEST_F(DesignJob, JsonJudgesTheDesign) {
  const Json result = design("lowpass.spc --method window --length 63 --quantize fixed --bits 6");
  EXPECT_EQ(result["met"], false);
  const Json &attained = result["attained"];
  ASSERT_EQ(attained.size(), 3u);
  EXPECT_EQ(keys(attained[1]), (std::vector<std::string>{"band", "from", "to", "quantity", "unit", "asked", "attained",
                                                         "quantized", "met", "worst_at"}));
  EXPECT_EQ(attained[1]["band"], "stopband");
  EXPECT_EQ(attained[1]["from"], 1680.0);
  EXPECT_EQ(attained[1]["quantity"], "attenuation");
  EXPECT_EQ(attained[1]["asked"], 60.0);
  EXPECT_GT(attained[1]["attained"], 60);
  EXPECT_LT(attained[1]["quantized"], 60);
  EXPECT_EQ(attained[1]["met"], false);
  EXPECT_TRUE(attained[2]["asked"].is_null());
  EXPECT_FALSE(attained[2].contains("met"));
  // An even length has a zero at half the sampling frequency, which a highpass passes.
  const Json inverted = design("highpass.spc --method window --length 30")["attained"][0];
  EXPECT_TRUE(inverted["attained"].is_null());
  EXPECT_EQ(inverted["reason"], "infinite: a zero at 22050 Hz");
  EXPECT_EQ(inverted["met"], false);
  EXPECT_NE(
      shop.run("design highpass.spc --method window --length 30").out.find("infinite: a zero at 22050 Hz  missed"),
      std::string::npos);
}

// The responses of the object are those of its own taps, at its own frequencies.
TEST_F(DesignJob, ResponsesBelongToTheCoefficients) {
  const Json result =
      design("lowpass.spc --method window --length 40 --frequency-points 57 --frequency-range 100:3900");
  const auto taps = result["fir"]["coefficients"].get<std::vector<double>>();
  const Json &responses = result["responses"];
  ASSERT_EQ(responses["frequency"].size(), 57u);
  EXPECT_NEAR(responses["frequency"].front(), 100, 1e-9);
  EXPECT_NEAR(responses["frequency"].back(), 3900, 1e-9);
  for (std::size_t i = 0; i < 57; i++) {
    const double w = 2 * pi * responses["frequency"][i].get<double>() / 8000;
    std::complex<double> sum = 0;
    for (std::size_t k = 0; k < taps.size(); k++) sum += taps[k] * std::polar(1.0, -w * static_cast<double>(k));
    EXPECT_NEAR(responses["magnitude"][i], std::abs(sum), 1e-12) << i;
    EXPECT_NEAR(responses["log_magnitude"][i], 20 * std::log10(std::abs(sum)), 1e-6) << i;
    EXPECT_NEAR(std::remainder(responses["phase"][i].get<double>() - std::arg(sum), 2 * pi), 0, 1e-6) << i;
    EXPECT_NEAR(responses["group_delay"][i], 19.5 / 8000, 1e-15) << i;
  }
  double step = 0;
  ASSERT_EQ(responses["impulse"].size(), 40u);
  for (std::size_t i = 0; i < 40; i++) {
    step += taps[i];
    EXPECT_EQ(responses["impulse"][i], taps[i]);
    EXPECT_NEAR(responses["step"][i], step, 1e-15);
    EXPECT_NEAR(responses["time"][i], static_cast<double>(i) / 8000, 1e-15);
  }
}

TEST_F(DesignJob, OptionsReachTheDesign) {
  EXPECT_EQ(design("lowpass.spc --method window --window hamming")["fir"]["window"], "hamming");
  EXPECT_EQ(design("hilbert.spc --length 31")["fir"]["symmetry"], "antisymmetric");
  EXPECT_EQ(design("arbitrary-magnitude.spc --length 31")["fir"]["window"], "rectangular");
  const Json logarithmic = design("lowpass.spc --method window --log-frequency --frequency-points 101");
  const auto f = logarithmic["responses"]["frequency"].get<std::vector<double>>();
  EXPECT_NEAR(f[1] / f[0], f[100] / f[99], 1e-9);
  EXPECT_NEAR(f[100], 4000, 1e-6);

  // A comb of one stage, rate change and delay is flat; two stages of delay 2 are not.
  const Json plain = design("lowpass.spc --method window --length 51");
  const Json flat = design("lowpass.spc --method window --length 51 --compensation comb");
  const Json steep = design("lowpass.spc --method window --length 51 --compensation comb --stages 2 --rate-change 8");
  double flat_change = 0, steep_change = 0;
  for (std::size_t k = 0; k < 51; k++) {
    const double tap = plain["fir"]["coefficients"][k];
    flat_change = std::max(flat_change, std::abs(flat["fir"]["coefficients"][k].get<double>() - tap));
    steep_change = std::max(steep_change, std::abs(steep["fir"]["coefficients"][k].get<double>() - tap));
  }
  EXPECT_LT(flat_change, 1e-9);
  EXPECT_GT(steep_change, 1e-4);

  // A halfband filter has an odd length, and says that it was raised.
  const Json raised = design("halfband.spc --length 30");
  EXPECT_EQ(raised["fir"]["length"], 31);
  EXPECT_TRUE(raised.contains("notes"));
}

TEST_F(DesignJob, EveryOutputIsWrittenAndTheSummaryShown) {
  const Outcome outcome =
      shop.run("design lowpass.spc --method window --length 63 --json a.json --spc copy.spc --plot-data p");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  for (const char *part :
       {"Lowpass Filter", "Kaiser", "63 taps", "passband ripple, 0 to 1200 Hz", "stopband attenuation"})
    EXPECT_NE(outcome.out.find(part), std::string::npos) << part << "\n" << outcome.out;
  const auto files = shop.files();
  EXPECT_EQ(files.at("copy.spc"), files.at("lowpass.spc"));
  const Json result = Json::parse(files.at("a.json"));
  struct Row {
    const char *name, *x, *y;
  };
  for (const Row &row : {Row{"p.gdl", "frequency", "group_delay"}, Row{"p.imp", "time", "impulse"},
                         Row{"p.lmn", "frequency", "log_magnitude"}, Row{"p.mag", "frequency", "magnitude"},
                         Row{"p.pha", "frequency", "phase"}, Row{"p.stp", "time", "step"}}) {
    char expected[100];
    std::string text;
    for (std::size_t i = 0; i < result["responses"][row.x].size(); i++) {
      std::snprintf(expected, sizeof expected, "%12.8e\t%12.8e\n", result["responses"][row.x][i].get<double>(),
                    result["responses"][row.y][i].get<double>());
      text += expected;
    }
    // The frequencies of the object went through one more rounding, so single last digits may differ.
    ASSERT_EQ(files.at(row.name).size(), text.size()) << row.name;
    EXPECT_EQ(files.at(row.name).substr(text.rfind('\n', text.size() - 2)),
              text.substr(text.rfind('\n', text.size() - 2)))
        << row.name;
  }
  EXPECT_EQ(files.count("SFIL.STA") + files.count("SFIL.OUT") + files.count("system.brisel"), 0u);
}

#ifdef BRISEL_PICTURES

TEST_F(DesignJob, PicturesAreTheSameEverywhereAndLeaveNoFolderBehind) {
  const std::string command = "design lowpass.spc --method window --plots made --pdf a.pdf --json a.json";
  const Outcome first = shop.run(command);
  ASSERT_EQ(first.status, 0) << first.err;
  EXPECT_EQ(first.err, "") << "the toolkit keeps quiet";
  const auto expected = shop.files();
  for (const char *kind :
       {"magnitude", "log-magnitude", "phase", "group-delay", "impulse-response", "step-response", "pole-zero"})
    EXPECT_EQ(expected.at("made/" + std::string(kind) + ".png").substr(1, 3), "PNG") << kind;
  EXPECT_EQ(expected.at("a.pdf").substr(0, 5), "%PDF-");
  EXPECT_EQ(shop.run(command, "LC_ALL=C.UTF-8 TZ=Asia/Tokyo DISPLAY=:99 QT_QPA_PLATFORM=xcb").status, 0);
  EXPECT_EQ(differing(shop.files(), expected), Names{});

  const Outcome failed = shop.run("design lowpass.spc --method window --plots other --json nowhere/a.json");
  EXPECT_EQ(failed.status, 1);
  EXPECT_TRUE(failed.is_one_line()) << failed.err;
  EXPECT_EQ(shop.run("design lowpass.spc --method window --plots lowpass.spc").status, 1) << "a file is no folder";
  EXPECT_EQ(shop.run("design lowpass.spc --method window --plots no/such").status, 1);
  EXPECT_EQ(shop.run("design lowpass.spc --method window --plots d --json d/phase.png").status, 2);
  EXPECT_EQ(differing(shop.files(), expected), Names{});
}

#else

TEST_F(DesignJob, PicturesThatAreNotBuiltInAreRefused) {
  const Outcome outcome = shop.run("design lowpass.spc --method window --plots made");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_TRUE(outcome.is_one_line()) << outcome.err;
  EXPECT_NE(outcome.err.find("built without"), std::string::npos) << outcome.err;
}

#endif

TEST_F(DesignJob, FailuresAreOneLineWithStatus1AndLeaveNothingBehind) {
  const std::string spc = shop.read("lowpass.spc");
  shop.write("short.spc", spc.substr(0, spc.find("STOPBAND CUTOFF")));
  shop.write("foreign.spc", "PK\x03\x04");
  shop.write("empty.spc", "");
  shop.write("odd\nname\x1b.spc", "no");
  std::string crossed = spc;
  crossed.replace(crossed.find("0.120000E+04"), 12, "0.200000E+04"); // passband edge above the stopband edge
  shop.write("crossed.spc", crossed);
  shop.write("old.json", "old");
  std::filesystem::create_directory(shop.path("folder"));
  const auto before = shop.files();
  struct Row {
    const char *arguments;
    const char *says;
  };
  const Row rows[]{
      {"design missing.spc", "missing.spc: "},
      {"design folder", "folder: "},
      {"design /dev/null", "/dev/null: "},
      {"design short.spc --json new.json", "short.spc:"},
      {"design foreign.spc --spc new.spc", "foreign.spc:1"},
      {"design empty.spc", "empty.spc"},
      {"design crossed.spc --method window --json old.json", "crossed.spc"},
      {"design odd*.spc", "odd\\x0Aname\\x1B.spc"},
      {"estimate short.spc --json new.json", "short.spc:"},
      {"estimate group-delay.spc", "group-delay.spc"},
      {"design lowpass.spc --method window --json old.json --spc nowhere/x.spc", "nowhere/x.spc: "},
      {"design lowpass.spc --method window --spc new.spc --json folder", "folder: "},
      {"design lowpass.spc --method window --spc new.spc --json /dev/full", "/dev/full: "},
      {"design lowpass.spc --method window --spc new.spc --json - > /dev/full", "standard output: "},
      {"design lowpass.spc --method window --spc new.spc > /dev/full", "standard output: "},
      {"design lowpass.spc --method window --spc new.spc >&-", "standard output: "},
      {"design lowpass.spc --method window --plot-data nowhere/p --json new.json", "nowhere/p.gdl: "},
  };
  for (const Row &row : rows) {
    const Outcome outcome = shop.run(row.arguments);
    EXPECT_EQ(outcome.status, 1) << row.arguments;
    EXPECT_TRUE(outcome.is_one_line()) << row.arguments << "\n" << outcome.out << outcome.err;
    EXPECT_NE(outcome.err.find(row.says), std::string::npos) << row.arguments << "\n" << outcome.err;
    EXPECT_EQ(differing(shop.files(), before), Names{}) << row.arguments;
  }
}

TEST_F(DesignJob, AReaderThatGoesAwayIsAFailureNotSilence) {
  const Outcome outcome = shop.run("design lowpass.spc --method window --json - --frequency-points 10001 | true");
  EXPECT_NE(outcome.err.find("standard output: "), std::string::npos) << outcome.err;
}

TEST_F(DesignJob, MethodsThatATypeCannotHaveAreRefusedByName) {
  const auto before = shop.files();
  const Outcome outcome = shop.run("design group-delay.spc --method window --json x.json");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_TRUE(outcome.is_one_line()) << outcome.err;
  EXPECT_NE(outcome.err.find("only iir"), std::string::npos) << outcome.err;
  EXPECT_EQ(differing(shop.files(), before), Names{});
}

TEST_F(DesignJob, EstimatesAreATableAndAnObject) {
  const Outcome table = shop.run("estimate lowpass.spc");
  EXPECT_EQ(table.status, 0);
  const Json object = Json::parse(shop.run("estimate lowpass.spc --json -").out);
  ASSERT_GE(object["lengths"].size(), 18u);
  for (const auto &[name, length] : object["lengths"].items()) {
    EXPECT_GE(length, 3);
    EXPECT_NE(table.out.find(name), std::string::npos) << table.out;
  }
  // 0.94 * 8000 / 480 = 15.67, truncated; odd already.
  EXPECT_EQ(object["lengths"]["rectangular"], 15);
  EXPECT_FALSE(object.contains("transition_width"));
  EXPECT_GT(Json::parse(shop.run("estimate hilbert.spc --json -").out)["transition_width"], 0);
  EXPECT_NE(shop.run("estimate hilbert.spc").out.find("Transition width used"), std::string::npos);
}

} // namespace
} // namespace brisel
