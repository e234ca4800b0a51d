// A full disk, a failing close, a failing rename at every place where a job writes its outputs: the job ends with one
// line and status 1, and the folder is as it was.
#include "tests/batch/run_brisel.h"

#include <gtest/gtest.h>

#include <numeric>

namespace brisel {
namespace {

constexpr const char *everything =
    " --flt a.flt --inp a.inp --report a.rep --trace a.trc --json a.json --plot-data a --c a.c "
    "--dspic30 pic --dspic30-header --dspic30-sim --dspic30-script octave --adsp218x a.dat "
    "--dsp56800 a56.h --cocentric a.ds --data a.txt --frequency-points 20 --time-points 20";
#ifdef BRISEL_PICTURES
constexpr const char *pictures = " --plots plots --pdf a.pdf";
#endif

struct FaultyJob {
  const char *name;
  const char *command, *outputs, *more_outputs;
  bool over_old_files; // every output replaces a file
  int least;           // failures that the job has room for
};
constexpr std::array jobs{
    FaultyJob{"designOverOldFiles", "design lowpass.spc --quantize fixed --structure canonic --spc a.spc --matlab a.m",
              everything, "", true, 90},
    FaultyJob{"analysisOfANewSystem", "analyze biquads.inp --quantize fixed --structure canonic", everything, "", false,
              80},
    FaultyJob{"firDesignOverOldFiles", "design lowpass.spc --method window --quantize fixed --spc a.spc --matlab a.m",
              everything, "", true, 90},
    FaultyJob{"estimateOverAnOldFile", "estimate lowpass.spc --json a.json", "", "", true, 4},
#ifdef BRISEL_PICTURES
    FaultyJob{"picturesOverOldFiles", "design lowpass.spc", "", pictures, true, 32},
#endif
};
static_assert(std::accumulate(jobs.begin(), jobs.end(), 0,
                              [](int sum, const FaultyJob &job) { return sum + job.least; }) >= 200);

#ifdef BRISEL_PICTURES
// Drawing takes most of the time of a job, so these are for the long tests.
constexpr std::array long_jobs{
    FaultyJob{"designInANewFolder", "design lowpass.spc --quantize fixed --structure canonic --spc a.spc --matlab a.m",
              everything, pictures, false, 90},
    FaultyJob{"designWithPicturesOverOldFiles",
              "design lowpass.spc --quantize fixed --structure canonic --spc a.spc --matlab a.m", everything, pictures,
              true, 90},
    FaultyJob{"analysisOverOldFiles", "analyze biquads.inp --quantize fixed --structure canonic", everything, pictures,
              true, 80},
};
#endif

std::vector<FaultyJob> jobs_to_run() {
  std::vector<FaultyJob> all(jobs.begin(), jobs.end());
#ifdef BRISEL_PICTURES
  if (std::getenv("BRISEL_LONG")) all.insert(all.end(), long_jobs.begin(), long_jobs.end());
#endif
  return all;
}

void PrintTo(const FaultyJob &job, std::ostream *out) {
  *out << job.name;
}

class Fault : public testing::TestWithParam<FaultyJob> {};

TEST_P(Fault, LeavesTheFolderAsItWas) {
  const FaultyJob &job = GetParam();
  const std::string command = std::string(job.command) + job.outputs + job.more_outputs;
  int faults = 0;
  for (const char *const call : {"open", "write", "close", "rename"}) {
    const Workshop shop, marks;
    for (const char *name : {"lowpass.spc", "biquads.inp"}) shop.write(name, example(name));
    if (job.over_old_files) {
      const Outcome made = shop.run(command);
      ASSERT_EQ(made.status, 0) << made.err;
      for (const auto &[name, content] : shop.files())
        if (name != "lowpass.spc" && name != "biquads.inp" && name != "plots") shop.write(name, "old " + name);
    }
    const auto before = shop.files();
    const std::string shim = "LD_PRELOAD='" BRISEL_FAULT_SHIM "' BRISEL_FAULT_FOLDER=\"$(realpath .)\" "
                             "BRISEL_FAULT_MARK='" +
                             marks.path("hit") + "' BRISEL_FAULT_CALL=" + call + " BRISEL_FAULT_AT=";
    int of_call = 0;
    for (;; of_call++) {
      const Outcome outcome = shop.run(command, shim + std::to_string(of_call + 1));
      if (!std::filesystem::remove(marks.path("hit"))) {
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        break;
      }
      EXPECT_EQ(outcome.status, 1) << call << " " << of_call + 1;
      EXPECT_TRUE(outcome.is_one_line()) << call << " " << of_call + 1 << "\n" << outcome.out << outcome.err;
      EXPECT_EQ(differing(shop.files(), before), Names{}) << call << " " << of_call + 1;
    }
    // Every output was reached: what the job makes when nothing fails, less what stood there before.
    const auto outputs = static_cast<int>(shop.files().size()) - (shop.files().count("plots") ? 3 : 2);
    EXPECT_GE(of_call, outputs) << call;
    faults += of_call;
  }
  EXPECT_GE(faults, job.least);
  std::printf("%d failures injected\n", faults);
}

INSTANTIATE_TEST_SUITE_P(Jobs, Fault, testing::ValuesIn(jobs_to_run()),
                         [](const auto &info) { return std::string(info.param.name); });

} // namespace
} // namespace brisel
