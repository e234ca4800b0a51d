// A full disk, a failing close, a failing rename at every place where a job writes its outputs: the job ends with one
// line and status 1, and the folder is as it was.
#include "tests/batch/run_brisel.h"

#include <gtest/gtest.h>

namespace brisel {
namespace {

#ifdef BRISEL_PICTURES
const std::string pictures = " --plots plots --pdf a.pdf";
#else
const std::string pictures;
#endif
const std::string everything =
    " --flt a.flt --inp a.inp --report a.rep --trace a.trc --json a.json --plot-data a --c a.c "
    "--dspic30 pic --dspic30-header --dspic30-sim --dspic30-script octave --adsp218x a.dat "
    "--dsp56800 a56.h --cocentric a.ds --data a.txt --frequency-points 20 --time-points 20";

struct FaultyJob {
  const char *name;
  std::string command;
  bool over_old_files; // every output replaces a file
  bool is_long;        // only with the long tests
};
const FaultyJob faulty_jobs[]{
    {"designOverOldFiles",
     "design lowpass.spc --quantize fixed --structure canonic --spc a.spc --matlab a.m" + everything + pictures, true,
     false},
    {"analysisOfANewSystem", "analyze biquads.inp --quantize fixed --structure canonic" + everything, false, false},
    {"firDesignOverOldFiles",
     "design lowpass.spc --method window --quantize fixed --spc a.spc --matlab a.m" + everything, true, false},
    {"estimateOverAnOldFile", "estimate lowpass.spc --json a.json", true, false},
    {"designInANewFolder",
     "design lowpass.spc --quantize fixed --structure canonic --spc a.spc --matlab a.m" + everything + pictures, false,
     true},
    {"analysisOverOldFiles", "analyze biquads.inp --quantize fixed --structure canonic" + everything + pictures, true,
     true},
};

void PrintTo(const FaultyJob &job, std::ostream *out) {
  *out << job.name;
}

using Case = std::tuple<FaultyJob, const char *>;
class Fault : public testing::TestWithParam<Case> {};

TEST_P(Fault, LeavesTheFolderAsItWas) {
  const auto &[job, call] = GetParam();
  // Drawing takes most of the time of a job.
  const bool slow = job.is_long || (call == std::string("open") && job.command.ends_with(pictures) && pictures != "");
  if (slow && !std::getenv("BRISEL_LONG")) GTEST_SKIP() << "one of the long tests: ./test --long";
  const Workshop shop, marks;
  for (const char *name : {"lowpass.spc", "biquads.inp"}) shop.write(name, example(name));
  if (job.over_old_files) {
    const Outcome made = shop.run(job.command);
    ASSERT_EQ(made.status, 0) << made.err;
    for (const auto &[name, content] : shop.files())
      if (name != "lowpass.spc" && name != "biquads.inp" && name != "plots") shop.write(name, "old " + name);
  }
  const auto before = shop.files();
  const std::string shim = "LD_PRELOAD='" BRISEL_FAULT_SHIM "' BRISEL_FAULT_FOLDER=\"$(realpath .)\" "
                           "BRISEL_FAULT_MARK='" +
                           marks.path("hit") + "' BRISEL_FAULT_CALL=" + call + " BRISEL_FAULT_AT=";
  int faults = 0;
  for (;; faults++) {
    const Outcome outcome = shop.run(job.command, shim + std::to_string(faults + 1));
    if (!std::filesystem::remove(marks.path("hit"))) {
      EXPECT_EQ(outcome.status, 0) << outcome.err;
      break;
    }
    EXPECT_EQ(outcome.status, 1) << call << " " << faults + 1;
    EXPECT_TRUE(outcome.is_one_line()) << call << " " << faults + 1 << "\n" << outcome.out << outcome.err;
    EXPECT_EQ(differing(shop.files(), before), Names{}) << call << " " << faults + 1;
  }
  // Every output was reached: what the job makes when nothing fails, less what stood there before.
  const auto outputs = static_cast<int>(shop.files().size()) - (shop.files().count("plots") ? 3 : 2);
  EXPECT_GE(faults, outputs);
  RecordProperty("faults", faults);
  std::printf("%d times %s\n", faults, call);
}

std::string case_name(const testing::TestParamInfo<Case> &info) {
  return std::string(std::get<0>(info.param).name) + "_" + std::get<1>(info.param);
}
INSTANTIATE_TEST_SUITE_P(Jobs, Fault,
                         testing::Combine(testing::ValuesIn(faulty_jobs),
                                          testing::Values("open", "write", "close", "rename")),
                         case_name);

} // namespace
} // namespace brisel
