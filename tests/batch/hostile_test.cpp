// Surroundings and files that mean no good: locales, missing displays and fonts, foreign settings, bands of no width,
// results that are not finite.
#include "batch/job.h"
#include "batch/json_output.h"
#include "engine/analysis/plot_arrays.h"
#include "engine/core/start_up.h"
#include "tests/batch/run_brisel.h"
#include "tests/support/scripted_front_end.h"

#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace brisel {
namespace {

#ifdef BRISEL_PICTURES
const std::string pictures = " --plots plots --pdf a.pdf";
#else
const std::string pictures;
#endif
const std::string every_output =
    "design lowpass.spc --quantize fixed --structure canonic --json a.json --report a.rep --detail --spc a.spc --flt "
    "a.flt --inp a.inp --plot-data a --c a.c --dspic30 pic --dspic30-header --dspic30-sim --dspic30-script octave "
    "--adsp218x a.dat --dsp56800 a56.h --matlab a.m --cocentric a.ds --data a.txt" +
    pictures;

TEST(Surroundings, DoNotChangeAnOutputOrMakeANoise) {
  const Workshop shop;
  shop.write("lowpass.spc", example("lowpass.spc"));
  const Outcome first = shop.run(every_output);
  ASSERT_EQ(first.status, 0) << first.err;
  ASSERT_EQ(std::system(("localedef -i de_DE -f UTF-8 '" + shop.path("de_DE.UTF-8") + "' >/dev/null 2>&1").c_str()), 0)
      << "the package locales is missing";
  // Settings of somebody else in the folder: a batch run reads none, and whatever they name is never run.
  shop.write("system.brisel", "Brisel System Setup File V6.1\nBrisel.ibit: 8 \nBrisel.pp_comd: 10 touch evil\n");
  const auto expected = shop.files();
  for (const std::string &before : {
           "LOCPATH='" + shop.path("") + "' LC_ALL=de_DE.UTF-8", // a decimal comma, once the toolkit runs
           "env -i LOCPATH='" + shop.path("") + "' LC_NUMERIC=de_DE.UTF-8",
           std::string("env -u DISPLAY -u XDG_RUNTIME_DIR -u QT_QPA_PLATFORM"),
           std::string("DISPLAY=:99 WAYLAND_DISPLAY=none QT_QPA_PLATFORM=nonsense QT_PLUGIN_PATH=/nonexistent"),
           std::string("LC_ALL=nonsense LANG=xx TZ=Asia/Tokyo"),
           std::string("HOME=/nonexistent XDG_RUNTIME_DIR=/nonexistent XDG_CACHE_HOME=/proc"),
       }) {
    const Outcome again = shop.run(every_output, before);
    EXPECT_EQ(again.status, 0) << before << again.err;
    EXPECT_EQ(again.out, first.out) << before;
    EXPECT_EQ(again.err, "") << before;
    EXPECT_EQ(differing(shop.files(), expected), Names{}) << before;
  }
  std::filesystem::create_directory(shop.path("elsewhere"));
  ASSERT_EQ(shop.run("design ../lowpass.spc --json a.json", "cd elsewhere;").status, 0);
  ASSERT_EQ(shop.run("design lowpass.spc --json a.json").status, 0);
  EXPECT_EQ(shop.read("elsewhere/a.json"), shop.read("a.json"));
}

TEST(SmallFiles, EndWithinTenSeconds) {
  const Workshop shop;
  shop.write("lowpass.spc", example("lowpass.spc"));
  std::string narrow = example("lowpass.spc");
  narrow.replace(narrow.find("0.168000E+04"), 12, "0.120001E+04");
  shop.write("narrow.spc", narrow); // 0.01 Hz of transition at 8000 Hz
  shop.write("bands.spc", "FILTER SPECIFICATION FILE\nFILTER TYPE:MULTIBAND                      6H\n"
                          "SAMPLING FREQUENCY          0.100000E+05 HERTZ\nNUMBER OF BANDS  2\n\n"
                          "                        BAND  1        BAND  2\n"
                          "  LOWER BAND EDGE   0.100000E+04   0.300000E+04\n"
                          "  UPPER BAND EDGE   0.100001E+04   0.300001E+04\n" // of nearly no width
                          "  DESIRED VALUE     0.100000E+01   0.000000E+00\n"
                          "  DESIRED RIPPLE    0.100000E-01   0.100000E-02\n");
  struct Row {
    const char *arguments;
    int status;
  };
  for (const Row &row : {
           Row{"design bands.spc --method equiripple --length 31", 1},
           Row{"design bands.spc --method equiripple --length 4096", 1}, // no grid fits
           Row{"design bands.spc --method linear-programming --length 31", 1},
           Row{"design bands.spc --method linear-programming --length 1000", 1},
           Row{"design bands.spc --method window --length 50000", 0},
           Row{"design narrow.spc --method equiripple", 1}, // too long an estimate
           Row{"design narrow.spc --method linear-programming", 1},
           Row{"design narrow.spc --method equiripple --length 4096", 0},
           Row{"design narrow.spc --method iir", 0},
           Row{"design narrow.spc --method iir --prototype butterworth", 1},
           Row{"design narrow.spc --method iir --prototype bessel --order 200", 0},
           Row{"design lowpass.spc --method window --length 50000 --report r --detail --flt f.flt --inp f.inp", 0},
           Row{"analyze f.inp --report r --detail --json j --frequency-points 10001 --log-frequency", 0},
           Row{"analyze f.flt --quantize floating --bits 52", 0},
           Row{"design lowpass.spc --order 200 --prototype butterworth --inp o.inp --report r --detail", 0},
           Row{"analyze o.inp --json j --quantize fixed --bits 32", 0},
           Row{"estimate narrow.spc", 0},
       }) {
    const Outcome outcome = shop.run(row.arguments, "timeout 10");
    EXPECT_EQ(outcome.status, row.status) << row.arguments << "\n" << outcome.err; // 124: it took longer
    if (row.status) {
      EXPECT_TRUE(outcome.is_one_line()) << row.arguments << "\n" << outcome.err;
    }
  }
}

TEST(Json, HasNullForAResponseAndRefusesACoefficientThatIsNotFinite) {
  ScriptedFrontEnd screen;
  const SystemFile nowhere{SystemFile::Kind::null_device, {}};
  program_start({.read_setup = false, .files = {nowhere, nowhere}});
  design_state.DesignOrAnalysisType = code(DesignMethod::equiripple);
  design_record.selections = design_state;
  design_record.loaded = {};
  design_record.loaded.sampling_frequency = two_pi * 8;
  design_record.plot = plot_settings;
  design_record.plot.nfpts = 3;
  for (FirEntry *entry : {&design_record.fir, &design_record.fir_unquantized}) {
    entry->length = 1;
    entry->gain = 1;
    entry->coeff[0] = 0.5;
  }
  design_record.valid = 1;
  init_plot_array();
  plot_arrays.group_delay[1] = INFINITY;
  plot_arrays.phase[2] = std::nan("");
  const auto object = nlohmann::json::parse(design_json());
  EXPECT_TRUE(object["responses"]["group_delay"][1].is_null());
  EXPECT_TRUE(object["responses"]["phase"][2].is_null());
  EXPECT_EQ(object["fir"]["coefficients"][0], 0.5);
  design_record.fir.coeff[0] = std::nan("");
  try {
    design_json();
    ADD_FAILURE() << "a coefficient that is no number was written";
  } catch (const JobFailure &failure) {
    EXPECT_EQ(failure.exit_status, exit_failed);
  }
  program_exit(ExitMode::discard);
}

} // namespace
} // namespace brisel
