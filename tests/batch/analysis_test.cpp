#include "tests/batch/run_brisel.h"

#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <numbers>

namespace brisel {
namespace {

using Json = nlohmann::ordered_json;

class Analysis : public testing::Test {
protected:
  Analysis() {
    for (const char *name :
         {"lowpass.spc", "bandpass.spc", "hilbert.spc", "biquads.inp", "resonator.inp", "analog-butterworth.inp"})
      shop.write(name, example(name));
  }
  Json run(const std::string &arguments) {
    const Outcome outcome = shop.run(arguments + " --json -");
    EXPECT_EQ(outcome.status, 0) << arguments << "\n" << outcome.err;
    return outcome.status == 0 ? Json::parse(outcome.out) : Json();
  }
  Workshop shop;
};

TEST_F(Analysis, TheObjectHasTheFormsOfTheSystem) {
  const Json digital = run("analyze biquads.inp");
  EXPECT_FALSE(digital.contains("method"));
  EXPECT_FALSE(digital.contains("filter_type"));
  EXPECT_FALSE(digital["iir"].contains("analog"));
  EXPECT_FALSE(digital["iir"].contains("prototype"));
  for (const char *form : {"cascade", "parallel", "ratio", "pole_zero", "lattice"})
    EXPECT_TRUE(digital["iir"].contains(form)) << form;
  const Json mapped = run("analyze analog-butterworth.inp --mapping matched-z");
  EXPECT_EQ(mapped["iir"]["mapping"], "matched-z");
  EXPECT_TRUE(mapped["iir"]["analog"].contains("unnormalized"));
  EXPECT_TRUE(mapped["iir"].contains("cascade"));
  const Json analog = run("analyze analog-butterworth.inp --mapping s-domain");
  EXPECT_TRUE(analog["iir"]["analog"].contains("unnormalized"));
  EXPECT_FALSE(analog["iir"].contains("cascade"));

  const auto peak = [](const Json &result) {
    const auto gains = result["responses"]["magnitude"].get<std::vector<double>>();
    return *std::max_element(gains.begin(), gains.end());
  };
  EXPECT_NEAR(peak(run("analyze resonator.inp --unity-gain")), 1, 1e-3); // the peak may lie between two grid points
  EXPECT_GT(std::abs(peak(run("analyze resonator.inp")) - 1), 1e-3);

  // 4000 taps that pass 1002 Hz, 2 Hz wide; even steps of the gain stand at 1000 and 1004 Hz.
  std::string tone = "DIGITAL SYSTEM ANALYSIS - Z DOMAIN INPUT\nINPUT OPTION - SYMMETRIC FIR FILTER\n"
                     "SAMPLING FREQUENCY           8.00000e+03 HERTZ\nNUMBER OF TAPS  4000 GAIN=  1.000000000e+00\n";
  for (int k = 0; k < 2000; k++) {
    char line[80];
    std::snprintf(line, sizeof line, "H(%4d) = % .9e =  H(%4d)\n", k,
                  std::cos(2 * std::numbers::pi * 1002 / 8000 * (k - 1999.5)), 3999 - k);
    tone += line;
  }
  shop.write("tone.inp", tone);
  EXPECT_NEAR(peak(run("analyze tone.inp --unity-gain --frequency-range 1000:1004")), 1, 1e-6);
}

TEST_F(Analysis, APrewarpedMapKeepsItsFrequency) {
  // A Butterworth filter of order 3 with its corner at 1000 Hz, where its magnitude is the root of 1/2.
  const auto at_corner = [&](const char *options) {
    const Json result = run(std::string("analyze analog-butterworth.inp --frequency-points 1001 "
                                        "--frequency-range 0:2000 ") +
                            options);
    return result["responses"]["magnitude"][500].get<double>();
  };
  const double corner = std::sqrt(0.5);
  EXPECT_NEAR(at_corner("--prewarp 1000"), corner, 1e-8); // the file has nine digits
  EXPECT_NEAR(at_corner("--prewarp-all"), corner, 1e-8);
  EXPECT_GT(std::abs(at_corner("") - corner), 0.01);
  EXPECT_EQ(at_corner("--prewarp 0"), at_corner(""));
}

TEST_F(Analysis, ReportAndTraceAreOutputsLikeOthers) {
  ASSERT_EQ(shop.run("design lowpass.spc --report r.txt --trace t.txt").status, 0);
  ASSERT_EQ(shop.run("design lowpass.spc --report d.txt --detail --trace h.txt --trace-level high").status, 0);
  const std::string plain = shop.read("r.txt"), detailed = shop.read("d.txt");
  EXPECT_NE(plain.find("FILTER ORDER:"), std::string::npos);
  EXPECT_EQ(plain.find("Impulse "), std::string::npos);
  EXPECT_NE(detailed.find("Impulse "), std::string::npos);
  EXPECT_NE(shop.read("t.txt").find(" entering filter_dsgn_dsgn \n"), std::string::npos);
  EXPECT_EQ(shop.files().count("SFIL.OUT"), 0u);
}

TEST_F(Analysis, GeneratedCodeIsWrittenAndTheSameEveryTime) {
  const std::string command = "design lowpass.spc --quantize fixed --structure canonic --c a.c --adsp218x a.dat "
                              "--dsp56800 a.h --dspic30 pic --dspic30-sim --dspic30-script octave --c-support";
  ASSERT_EQ(shop.run(command).status, 0);
  const auto files = shop.files();
  for (const char *name : {"a.c", "a.dat", "a.h", "pic.s", "pic.h", "pic_sim.c", "pic_sim.cmd", "pic_make.bat",
                           "brisel_cgen.h", "brisel_filt.c"})
    EXPECT_EQ(files.count(name), 1u) << name;
  for (const char *name : {"a.dat_BRISELSYS", "a.h_BRISELSYS", "pic", "_temp.flt"})
    EXPECT_EQ(files.count(name), 0u) << name;
  ASSERT_EQ(shop.run(command, "TZ=Asia/Tokyo").status, 0);
  EXPECT_EQ(differing(shop.files(), files), Names{});
  ASSERT_EQ(shop.run(command, "SOURCE_DATE_EPOCH=86400").status, 0);
  EXPECT_NE(shop.read("a.c").find("1970-01-02 00:00:00 UTC"), std::string::npos);
}

TEST_F(Analysis, WhatTheImpulseInvariantMapFoldsBackIsTold) {
  // A highpass of first order at 1 kHz passes everything above half of 48 kHz; a lowpass of order 3 passes nothing.
  const std::string head =
                        "DIGITAL SYSTEM ANALYSIS - S DOMAIN INPUT\nINPUT OPTION - RATIO OF TWO POLYNOMIALS N(s)/D(s)\n"
                        "SAMPLING FREQUENCY           4.80000e+04 HERTZ\nINITIAL GAIN  1.0\n",
                    numerator = "NUMERATOR COEFFICIENTS   - HIGHEST ORDER FIRST    ",
                    denominator = "DENOMINATOR COEFFICIENTS - HIGHEST ORDER FIRST    ";
  shop.write("high.inp", head + numerator + "2\n 1.0 0.0\n" + denominator + "2\n 1.0 6283.185307\n");
  shop.write("low.inp", head + numerator + "1\n 2.48e11\n" + denominator + "4\n 1.0 1.257e4 7.9e7 2.48e11\n");
  const std::string high = shop.run("analyze high.inp --mapping impulse-invariant").out;
  EXPECT_NE(high.find("folds back what lies above"), std::string::npos) << high;
  EXPECT_EQ(shop.run("analyze low.inp --mapping impulse-invariant").out.find("folds back"), std::string::npos);
  EXPECT_EQ(shop.run("analyze high.inp --mapping bilinear").out.find("folds"), std::string::npos);
}

TEST_F(Analysis, RefusalsAreOneLineAndLeaveNothingBehind) {
  shop.write("taken.dat_BRISELSYS", "mine");
  shop.write("short.inp", example("biquads.inp").substr(0, 120));
  shop.write("short.flt", "FILTER COEFFICIENT FILE\nFIR DESIGN\n");
  const auto before = shop.files();
  struct Row {
    const char *arguments;
    int status;
    const char *says;
  };
  for (const Row &row : {
           Row{"analyze missing.inp", 1, "missing.inp: cannot be opened for reading: No such file or directory"},
           Row{"design . --method iir", 1, ".: cannot be opened for reading: Is a directory"},
           Row{"design /dev/null", 1, "/dev/null: cannot be opened for reading: it is no regular file"},
           Row{"analyze lowpass.spc", 1, "lowpass.spc:1: "},
           Row{"analyze short.inp --json x.json", 1, "short.inp:"},
           Row{"analyze short.flt --json x.json", 1, "short.flt:"},
           Row{"analyze biquads.inp --mapping bilinear", 2, "--mapping: has no meaning for a digital system"},
           Row{"analyze biquads.inp --scaling one --quantize fixed", 2,
               "--scaling: has a meaning for FIR systems only"},
           Row{"analyze analog-butterworth.inp --frequency-range 0:1e9", 2, "above the sampling frequency"},
           Row{"analyze biquads.inp --method iir", 2, "--method"},
           Row{"analyze biquads.inp --prewarp 100", 2, "--prewarp: has no meaning for a digital system"},
           Row{"analyze analog-butterworth.inp --prewarp 4000", 2, "not below half the sampling frequency, 4000"},
           Row{"analyze analog-butterworth.inp --prewarp 1k", 2, "'1k' is no number"},
           Row{"analyze analog-butterworth.inp --prewarp -1", 2, "below zero"},
           Row{"analyze analog-butterworth.inp --prewarp 10 --prewarp-all", 2, "cannot go with --prewarp-all"},
           Row{"analyze analog-butterworth.inp --prewarp-all --mapping matched-z", 2, "needs --mapping bilinear"},
           Row{"design lowpass.spc --unity-gain", 2, "--unity-gain"},
           Row{"design lowpass.spc --mapping s-domain", 2, "--mapping: s-domain is for the analysis"},
           Row{"design lowpass.spc --detail", 2, "--detail: needs --report"},
           Row{"design lowpass.spc --dspic30-sim", 2, "--dspic30-sim: needs --dspic30"},
           Row{"design lowpass.spc --realization ladder-1 --c x.c", 1, "--c: "},
           Row{"design lowpass.spc --adsp218x x.dat", 1, "IIR output requires fixed point quantization"},
           Row{"design lowpass.spc --quantize fixed --dsp56800 x.h", 1,
               "IIR output requires canonic fixed point quantization"},
           Row{"design lowpass.spc --quantize fixed --bits 12 --adsp218x x.dat", 1,
               "The number of quantized bits must be 16"},
           Row{"design lowpass.spc --quantize fixed --realization parallel --adsp218x x.dat", 1,
               "Only cascaded 2nd order sections supported for IIR designs."},
           Row{"design lowpass.spc --method window --adsp218x x.dat", 1, "not quantized"},
           Row{"design lowpass.spc --quantize fixed --adsp218x taken.dat", 1, "taken.dat_BRISELSYS"},
           Row{"design lowpass.spc --quantize fixed --dspic30 'a;b'", 1, "a;b"},
           Row{"design lowpass.spc --c /dev/null --c-support", 1, "/dev/null"},
           Row{"analyze analog-butterworth.inp --quantize fixed --adsp218x x.dat", 1, "Only cascaded 2nd order"},
           Row{"analyze biquads.inp --quantize fixed --dspic30 lowpass.spc", 1, "lowpass.spc"},
           Row{"design lowpass.spc --quantize fixed --dspic30 pic --json pic.s", 2, "two outputs"},
           Row{"design lowpass.spc --quantize fixed --dspic30 pic --adsp218x no/where.dat", 1, "no/where.dat"},
       }) {
    const Outcome outcome = shop.run(row.arguments);
    EXPECT_EQ(outcome.status, row.status) << row.arguments << outcome.err;
    EXPECT_TRUE(outcome.is_one_line()) << row.arguments << "\n" << outcome.out << outcome.err;
    EXPECT_NE(outcome.err.find(row.says), std::string::npos) << row.arguments << "\n" << outcome.err;
    EXPECT_EQ(differing(shop.files(), before), Names{}) << row.arguments;
  }
}

} // namespace
} // namespace brisel
