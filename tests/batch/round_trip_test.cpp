// Saved files loaded in a new process, and generated C, give the filter that was designed.
#include "tests/batch/run_brisel.h"

#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

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

TEST(GeneratedC, FiltersAsTheDesignThatItCameFrom) {
  const struct {
    const char *options;
    const char *init;
    const char *structure;
    const char *element;
    double tolerance;
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
       "init_biquad_float", "IIR_f", "float", 1e-5},
  };
  for (const auto &c : cases) {
    const Workshop shop;
    shop.write("a.spc", example("lowpass.spc"));
    const Outcome made = shop.run(std::string("design a.spc ") + c.options + " --c f.c --json a.json");
    ASSERT_EQ(made.status, 0) << c.options << made.err;
    const auto impulse = Json::parse(shop.read("a.json"))["responses"]["impulse"].get<std::vector<double>>();
    std::string driver =
        "#define DEFINE_SUBROUTINE\n#include \"f.c\"\n#include \"brisel_filt.c\"\n#include <stdio.h>\n";
    driver += std::string("int main(void) {\n  static ") + c.element + " x[200] = {1}, y[200];\n  int i;\n  " + c.init +
              "(&" + c.structure + ");\n  " + c.structure + ".filter(x, y, 200, &" + c.structure +
              ");\n  for (i = 0; i < 200; i++) printf(\"%.17g\\n\", (double)y[i]);\n  return 0;\n}\n";
    shop.write("driver.c", driver);
    const std::string build = "cd '" + shop.path("") +
                              "' && cc -std=c99 -Wall -Wextra -pedantic -Werror -I " BRISEL_SOURCE_DIR
                              "/codegen/support driver.c -o driver 2> log && ./driver > out";
    ASSERT_EQ(std::system(build.c_str()), 0) << c.options << shop.read("log");
    std::istringstream out(shop.read("out"));
    std::size_t i = 0;
    for (double y; out >> y && i < impulse.size(); i++)
      ASSERT_NEAR(y, impulse[i], c.tolerance) << c.options << " " << i;
    EXPECT_EQ(i, std::min<std::size_t>(impulse.size(), 200)) << c.options;
  }
}

TEST(Analyze, RefusesInOneLineAndLeavesNothing) {
  const struct {
    const char *command;
    int status;
    const char *said;
  } cases[] = {
      {"analyze none.inp", 1, "none.inp"},
      {"analyze a.spc", 1, "a.spc:1:"},
      {"analyze cut.inp --json x.json", 1, "cut.inp:"},
      {"analyze cut.flt --json x.json", 1, "cut.flt:"},
      {"analyze a.inp --mapping bilinear", 2, "--mapping"},
      {"analyze a.inp --scaling one", 2, "--scaling"},
      {"analyze a.inp --adsp218x x.dsp", 1, "IIR output requires fixed point quantization"},
      {"analyze a.inp --quantize fixed --bits 12 --adsp218x x.dsp", 1, "The number of quantized bits must be 16"},
      {"analyze a.inp --quantize fixed --dsp56800 x.h", 1, "IIR output requires canonic fixed point quantization"},
      {"analyze a.inp --quantize fixed --dspic30 'a;b'", 1, "a;b"},
      {"analyze a.inp --quantize fixed --dspic30 a.spc", 1, "a.spc"},
      {"analyze a.inp --detail", 2, "--report"},
      {"design a.spc --method iir --realization parallel --quantize fixed --adsp218x x.dsp", 1,
       "Only cascaded 2nd order sections supported for IIR designs."},
      {"design a.spc --method iir --c none/x.c", 1, "none/x.c"},
  };
  const Workshop shop;
  shop.write("a.spc", example("lowpass.spc"));
  shop.write("a.inp", example("biquads.inp"));
  shop.write("cut.inp", example("biquads.inp").substr(0, 200));
  ASSERT_EQ(shop.run("design a.spc --method window --flt cut.flt").status, 0);
  shop.write("cut.flt", shop.read("cut.flt").substr(0, 900));
  const auto before = shop.files();
  for (const auto &c : cases) {
    const Outcome ended = shop.run(c.command);
    EXPECT_EQ(ended.status, c.status) << c.command << ended.err;
    EXPECT_TRUE(ended.is_one_line()) << c.command << "\n" << ended.out << ended.err;
    EXPECT_NE(ended.err.find(c.said), std::string::npos) << c.command << ended.err;
    EXPECT_EQ(differing(before, shop.files()), Names{}) << c.command;
  }
}
