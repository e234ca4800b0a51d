// Saved files loaded in a new process, and generated C, give the filter that was designed.
#include "tests/batch/generated_c.h"

#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

using namespace brisel;
using Json = nlohmann::json;

namespace {

struct Row {
  const char *example;
  const char *options;
  double inp_tolerance; // a system analysis file carries 9 digits, fewer where a form amplifies their rounding
  double flt_tolerance; // floating coefficient files carry as many as their width holds; quantized ones all
};
const Row rows[] = {
    {"lowpass.spc", "--method window", 1e-8, 1e-13},
    {"hilbert.spc", "--method equiripple --length 31", 1e-8, 1e-13},
    {"bandpass.spc", "--method equiripple --quantize fixed --bits 12 --scaling one", 1e-8,
     1e-8}, // the gain has 9 digits
    {"highpass.spc", "--method linear-programming --quantize floating --bits 20", 1e-8, 1e-13},
    {"lowpass.spc", "--method iir", 1e-6, 1e-6},
    {"lowpass.spc", "--method iir --quantize fixed", 1e-6, 1e-13},
    {"bandstop.spc", "--method iir --quantize fixed --structure canonic --bits 20", 1e-6, 1e-13},
    {"highpass.spc", "--method iir --prototype tschebyscheff --realization parallel --quantize fixed --bits 24", 1e-6,
     1e-6},
    {"lowpass.spc", "--method iir --order 4 --realization ratio", 1e-5, 1e-5},
    {"lowpass.spc", "--method iir --order 4 --realization lattice --quantize floating --bits 24", 1e-5, 1e-5},
    {"lowpass.spc", "--method iir --order 3 --mapping impulse-invariant --prototype butterworth --realization parallel",
     1e-6, 1e-6},
};

std::vector<double> magnitude(const Json &object) {
  return object["responses"]["magnitude"].get<std::vector<double>>();
}

void expect_same(const std::vector<double> &a, const std::vector<double> &b, double tolerance,
                 const std::string &what) {
  ASSERT_EQ(a.size(), b.size()) << what;
  double worst = 0, peak = 0;
  for (std::size_t i = 0; i < a.size(); i++) {
    worst = std::max(worst, std::fabs(a[i] - b[i]));
    peak = std::max(peak, std::fabs(a[i]));
  }
  EXPECT_LE(worst, tolerance * peak) << what;
}

} // namespace

TEST(RoundTrip, SavedFilesGiveTheSameResponseInANewProcess) {
  for (const Row &row : rows) {
    const std::string what = std::string(row.example) + " " + row.options;
    const Workshop shop;
    shop.write("a.spc", example(row.example));
    const Outcome first =
        shop.run(std::string("design a.spc ") + row.options + " --json a.json --spc b.spc --flt a.flt --inp a.inp");
    ASSERT_EQ(first.status, 0) << what << first.err;
    const std::vector<double> designed = magnitude(Json::parse(shop.read("a.json")));
    for (const auto &[file, tolerance] : {std::pair{"a.flt", row.flt_tolerance}, {"a.inp", row.inp_tolerance}}) {
      const Outcome again = shop.run(std::string("analyze ") + file + " --json -");
      ASSERT_EQ(again.status, 0) << what << again.err;
      expect_same(designed, magnitude(Json::parse(again.out)), tolerance, what + " " + file);
    }
    const Outcome redesign = shop.run(std::string("design b.spc ") + row.options + " --json -");
    ASSERT_EQ(redesign.status, 0) << what << redesign.err;
    EXPECT_EQ(magnitude(Json::parse(redesign.out)), designed) << what;
    EXPECT_EQ(shop.read("b.spc"), shop.read("a.spc")) << "the writer's own bytes";
  }
}

TEST(RoundTrip, DigitsAreRaisedUntilTheFileIsTheFilter) {
  const struct {
    const char *options;
    const char *note; // or the refusal
    int status;
  } cases[] = {
      {"--inp a.inp", "The system analysis file has 11 digits: with 9", 0},
      {"--flt a.flt", "The coefficient file has 11 digits: with 8", 0},
      {"--flt a.flt --realization parallel", "digits: with 8 the response would be", 0},
      {"--flt a.flt --digits 9", "The response of the coefficient file with 9 digits is", 0},
      {"--inp a.inp --realization ladder-1 --order 1 --prototype butterworth",
       "the realization \"Cascaded Second Order Sections\" would do", 1},
      {"--inp a.inp --realization lattice --order 1 --prototype butterworth", "", 0},
      {"--flt a.flt --quantize fixed --bits 5 --order 2 --realization parallel", "The gain words", 0},
  };
  for (const auto &c : cases) {
    const Workshop shop;
    shop.write("a.spc",
               "FILTER SPECIFICATION FILE\nFILTER TYPE:LOW PASS                       1H\n"
               "PASSBAND RIPPLE IN -dB        -.1000E+00\nSTOPBAND RIPPLE IN -dB        -.6000E+02\n"
               "PASSBAND CUTOFF FREQUENCY   0.200000E+02 HERTZ\nSTOPBAND CUTOFF FREQUENCY   0.400000E+02 HERTZ\n"
               "SAMPLING FREQUENCY          0.192000E+06 HERTZ\n");
    const std::string range = " --frequency-range 0:60 --json ";
    const Outcome made = shop.run(std::string("design a.spc ") + c.options + range + "a.json");
    ASSERT_EQ(made.status, c.status) << c.options << made.err;
    EXPECT_NE((made.out + made.err).find(c.note), std::string::npos) << c.options << made.out << made.err;
    if (made.status != 0 || std::string(c.options).find("--digits") != std::string::npos) continue;
    const std::string file = std::string(c.options).starts_with("--inp") ? "a.inp" : "a.flt";
    const Outcome again = shop.run("analyze " + file + range + "-");
    ASSERT_EQ(again.status, 0) << c.options << again.err;
    const auto designed = magnitude(Json::parse(shop.read("a.json"))), read = magnitude(Json::parse(again.out));
    for (std::size_t i = 0; i < designed.size(); i++)
      if (designed[i] > 1e-5) ASSERT_NEAR(20 * std::log10(read[i] / designed[i]), 0, 0.05) << c.options << " " << i;
  }
}

TEST(RoundTrip, AnAnalysisIsSavedAsItCameOut) {
  const Workshop shop;
  shop.write("fir.inp", "DIGITAL SYSTEM ANALYSIS - Z DOMAIN INPUT\nINPUT OPTION - NONSYMMETRIC FIR FILTER\n"
                        "SAMPLING FREQUENCY           8.00000e+03 HERTZ\nNUMBER OF TAPS     2 GAIN=  4.000000000e+00\n"
                        "H(   0) =  5.000000000e-01\nH(   1) =  2.500000000e-01\n");
  shop.write("iir.inp",
             "DIGITAL SYSTEM ANALYSIS - Z DOMAIN INPUT\nINPUT OPTION - PRODUCT OF 2ND ORDER SECTIONS\n"
             "SAMPLING FREQUENCY           8.00000e+03 HERTZ\nINITIAL GAIN  4.23000000e+00\n"
             "NUMBER OF SECTIONS   1\nNUMERATOR COEFFICIENTS \n 1.00000000e+00  2.00000000e-01  0.00000000e+00\n"
             "DENOMINATOR COEFFICIENTS\n 1.00000000e+00 -5.00000000e-01  0.00000000e+00\n");
  for (const char *line : {"fir.inp --unity-gain", "fir.inp --quantize fixed --bits 8 --scaling one",
                           "iir.inp --unity-gain", "iir.inp --quantize fixed --bits 8"}) {
    const Outcome made = shop.run(std::string("analyze ") + line + " --json a.json --flt a.flt --inp a.inp");
    ASSERT_EQ(made.status, 0) << line << made.err;
    const auto out = magnitude(Json::parse(shop.read("a.json")));
    for (const char *file : {"a.flt", "a.inp"}) {
      const Outcome again = shop.run(std::string("analyze ") + file + " --json -");
      ASSERT_EQ(again.status, 0) << line << again.err;
      expect_same(out, magnitude(Json::parse(again.out)), 1e-7, std::string(line) + " " + file);
    }
  }
  EXPECT_NEAR(magnitude(Json::parse(shop.run("analyze fir.inp --quantize fixed --scaling one --json -").out))[0], 3,
              1e-3)
      << "scaling to one keeps the gain that was entered";
  // Nothing is quantized where there is nothing digital, and the report has the roots of the system.
  const Outcome analog = shop.run("analyze '" + source_file("examples/analog-butterworth.inp") +
                                  "' --mapping s-domain --quantize fixed --json - --report r.txt");
  ASSERT_EQ(analog.status, 0) << analog.err;
  EXPECT_FALSE(Json::parse(analog.out).contains("quantization"));
  EXPECT_EQ(shop.read("r.txt").find("QUANTIZ"), std::string::npos);
  EXPECT_NE(shop.read("r.txt").find("-6.283185283e+03"), std::string::npos) << "the real pole";
}

TEST(GeneratedC, FiltersAsTheDesignThatItCameFrom) {
  const struct {
    const char *options;
    const char *init;
    const char *structure;
    const char *element;
    double tolerance;
    const char *routine = "";
  } cases[] = {
      {"--method window", "init_fir_dbl", "FIR_f", "double", 1e-12},
      {"--method equiripple --quantize fixed", "init_fir_float", "FIR_f", "float", 1e-6},
      {"--method iir", "init_biquad_dbl", "IIR_f", "double", 1e-12},
      {"--method iir --realization parallel", "init_biquad_dbl", "IIR_f", "double", 1e-12},
      {"--method iir --realization ratio --order 4", "init_rt2_dbl", "RT2_f", "double", 1e-11},
      {"--method iir --realization lattice --order 4", "init_lat_dbl", "LAT_f", "double", 1e-11},
      {"--method iir --quantize fixed", "init_biquad_float", "IIR_f", "float", 1e-5},
      {"--method iir --quantize fixed --structure canonic", "init_biquad_float", "IIR_f", "float", 1e-5},
      {"--method iir --quantize floating --bits 24 --structure float-4", "init_biquad_float", "IIR_f", "float", 1e-5},
      {"--method iir --quantize floating --bits 24 --structure float-5", "init_biquad_float", "IIR_f", "float", 1e-5},
      {"--method iir --mapping impulse-invariant --realization parallel --quantize floating --bits 24",
       "init_biquad_float", "IIR_f", "float", 1e-5, "par_float_fm1"},
      {"--method iir --realization parallel --quantize fixed", "init_biquad_float", "IIR_f", "float", 1e-5,
       "par_blkfloat_fm1"},
  };
  for (const auto &c : cases) {
    const Workshop shop;
    shop.write("a.spc", example("lowpass.spc"));
    const Outcome made = shop.run(std::string("design a.spc ") + c.options + " --c f.c --json a.json");
    ASSERT_EQ(made.status, 0) << c.options << made.err;
    EXPECT_NE(shop.read("f.c").find(c.routine), std::string::npos) << c.options;
    const auto impulse = Json::parse(shop.read("a.json"))["responses"]["impulse"].get<std::vector<double>>();
    std::istringstream out(run_generated_c(shop, "cc", {c.init, c.structure, c.element}));
    std::size_t i = 0;
    for (double y; out >> y && i < impulse.size(); i++)
      ASSERT_NEAR(y, impulse[i], c.tolerance) << c.options << " " << i;
    EXPECT_EQ(i, std::min<std::size_t>(impulse.size(), 200)) << c.options;
  }
}
