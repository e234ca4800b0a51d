// Surroundings and files that mean no good: locales, missing displays and fonts, foreign settings, bands of no width,
// results that are not finite.
#include "batch/job.h"
#include "batch/json_output.h"
#include "engine/analysis/plot_arrays.h"
#include "engine/core/start_up.h"
#include "engine/judge/design_judgement.h"
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
  for (const char *name : {"bandpass.spc", "analog-butterworth.inp"}) shop.write(name, example(name));
  std::string delay = example("group-delay.spc");
  delay.replace(delay.find("0.200000000E+02"), 15, "0.200000000E+06"); // samples that no sections have
  shop.write("delay.spc", delay);
  std::string rate = example("raised-cosine.spc");
  rate.replace(rate.find("SYMBOL RATE") + 28, 12, "0.1000E-310 ");
  shop.write("rate.spc", rate);
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
           Row{"design bands.spc --method linear-programming --length 31", 0},
           Row{"design bands.spc --method linear-programming --length 1000", 1},
           Row{"design bands.spc --method window --length 50000", 0},
           Row{"design narrow.spc --method equiripple", 1}, // too long an estimate
           Row{"design narrow.spc --method linear-programming", 1},
           Row{"design narrow.spc --method equiripple --length 4096", 0},
           Row{"design narrow.spc --method iir", 0},
           Row{"design narrow.spc --method iir --prototype butterworth", 1},
           Row{"design narrow.spc --method iir --prototype bessel --order 200", 0},
           Row{"design lowpass.spc --delay-ripple 1e-300", 0}, // as many sections as there are
           Row{"design bandpass.spc --delay-ripple 1 --phase-equalizer 20", 0},
           Row{"design delay.spc", 0},
           Row{"design rate.spc --length 3", 1},
           Row{"design lowpass.spc --method equiripple --minimum-phase spectral --length 999", 0},
           Row{"design lowpass.spc --method window --minimum-phase dft --length 50000", 1},
           Row{"design lowpass.spc --frequency-range 5e-324:1", 2}, // no decades to count
           Row{"design lowpass.spc --frequency-range 1e-300:1 --log-frequency", 2},
           Row{"analyze analog-butterworth.inp --prewarp 1e-300", 0},
           Row{"analyze analog-butterworth.inp --prewarp 1e308", 2},
           Row{"design lowpass.spc --method window --length 50000 --report r --detail --flt f.flt --inp f.inp", 0},
           Row{"analyze f.inp --report r --detail --json j --frequency-points 10001 --log-frequency", 0},
           Row{"analyze f.flt --quantize floating --bits 52", 0},
           Row{"design lowpass.spc --order 200 --prototype butterworth --inp o.inp --report r --detail", 0},
           Row{"analyze o.inp --json j --quantize fixed --bits 32", 0},
           Row{"estimate narrow.spc", 0},
       }) {
#ifdef BRISEL_SANITIZED
    const Outcome outcome = shop.run(row.arguments, "ulimit -t 100;"); // they take several times as long
#else
    const Outcome outcome = shop.run(row.arguments, "ulimit -t 10;");
#endif
    EXPECT_EQ(outcome.status, row.status) << row.arguments << "\n" << outcome.err; // above 128: it took longer
    if (row.status) {
      EXPECT_TRUE(outcome.is_one_line()) << row.arguments << "\n" << outcome.err;
    }
  }
}

// What may be all there is: little room, few files, closed streams, a folder that is gone.
TEST(Surroundings, ThatLackSomethingAreSaidInOneLineOrDoNotMatter) {
  const Workshop shop;
  shop.write("lowpass.spc", example("lowpass.spc"));
  shop.write("empty.spc", "");
  const Workshop large;
  std::ofstream(large.path("huge.spc")).seekp(100'000'000) << "x"; // of which the disk holds one block
  const struct {
    std::string before, arguments;
    int status; // -1: 0 without a word, or 1 with one line
    const char *says;
  } rows[] = {
    {"ulimit -f 16;", "design lowpass.spc --json a.json --flt a.flt", 1, "File too large"},
    {"", "design lowpass.spc --json a.json <&- >&- 2>&-", 1, ""},
    {"", "design lowpass.spc --json a.json <&- 2>&-", 0, ""},
    {"", "design lowpass.spc --json a.json --quantize fixed --adsp218x a.dat --c a.c >&-", 1, "standard output"},
    {"mkdir gone && cd gone && rmdir ../gone;", "design ../lowpass.spc --json a.json", 1, "a.json: cannot be written"},
    {"", "design empty.spc", 1, "empty.spc:1: the file ends"},
    {"", "analyze empty.spc", 1, "empty.spc:1: the file ends"},
    {"", "design " + large.path("huge.spc"), 1, "huge.spc:1: the line is longer"},
    {"", "analyze " + large.path("huge.spc"), 1, "huge.spc:1: the line is longer"},
    {"", "analyze .", 1, ".: cannot be opened"},
    {"", "design lowpass.spc/", 1, "cannot be opened"},
    {"", "design lowpass.spc --json lowpass.spc", 2, "--json: 'lowpass.spc' is the file to read"},
    {"", "estimate lowpass.spc --json ./lowpass.spc", 2, "is the file to read"},
    {"", "design lowpass.spc --c $(head -c 100000 /dev/zero | tr '\\0' x)", 1, "File name too long"},
    {"", "design $(printf 'a\\377\\033')", 1, "a\377\\x1B: cannot be opened"},
#if defined(BRISEL_PICTURES) && !defined(BRISEL_SANITIZED)
    {"exec 3>&- 4>&-; ulimit -n 4;", "design lowpass.spc --pdf a.pdf", 1, ""},
    {"exec 3>&- 4>&-; ulimit -n 5;", "design lowpass.spc --pdf a.pdf", -1, ""},
    {"ulimit -v 90000;", "design lowpass.spc --pdf a.pdf", -1, ""},
    {"ulimit -v 110000;", "design lowpass.spc --pdf a.pdf", -1, ""},
#endif
  };
  const auto before = shop.files();
  for (const auto &row : rows) {
    const Outcome outcome = shop.run(row.arguments, row.before);
    const std::string job = row.before + row.arguments;
    EXPECT_EQ(outcome.status, row.status == -1 && outcome.status == 0 ? 0 : std::abs(row.status)) << job;
    EXPECT_NE(outcome.err.find(row.says), std::string::npos) << job << "\n" << outcome.err;
    if (outcome.status == 0) {
      EXPECT_EQ(outcome.err, "") << job;
      for (const char *name : {"a.json", "a.pdf"}) std::filesystem::remove(shop.path(name));
    } else if (job.find("2>&-") == job.npos) {
      EXPECT_TRUE(outcome.is_one_line()) << job << "\n" << outcome.out << outcome.err;
    }
    EXPECT_EQ(differing(shop.files(), before), Names{}) << job;
  }
}

TEST(StandardOutput, HasSeveralNames) {
  const Workshop shop;
  shop.write("lowpass.spc", example("lowpass.spc"));
  const std::string expected = shop.run("design lowpass.spc --json -").out;
  ASSERT_GT(expected.size(), 10000u);
  EXPECT_EQ(shop.run("design lowpass.spc --json /dev/stdout").out, expected);
  EXPECT_EQ(shop.run("design lowpass.spc --json /dev/stdout | cat").out, expected);
  EXPECT_EQ(shop.run("design lowpass.spc --json /dev/stdout >>log", "echo before >log;").err, "");
  EXPECT_EQ(shop.read("log"), "before\n" + expected) << "a file that is appended to is not replaced";
  const Outcome left = shop.run("design lowpass.spc --json - --frequency-points 10001 | head -c 1");
  EXPECT_EQ(left.out, "{");
  EXPECT_EQ(left.err, "brisel: standard output: cannot be written: Broken pipe\n");
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
  const auto object = nlohmann::json::parse(design_json(judge_design()));
  EXPECT_TRUE(object["responses"]["group_delay"][1].is_null());
  EXPECT_TRUE(object["responses"]["phase"][2].is_null());
  EXPECT_EQ(object["fir"]["coefficients"][0], 0.5);
  design_record.fir.coeff[0] = std::nan("");
  try {
    design_json(judge_design());
    ADD_FAILURE() << "a coefficient that is no number was written";
  } catch (const JobFailure &failure) {
    EXPECT_EQ(failure.exit_status, exit_failed);
  }
  program_exit(ExitMode::discard);
}

} // namespace
} // namespace brisel
