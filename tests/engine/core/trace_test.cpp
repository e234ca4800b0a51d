#include "engine/core/trace.h"
#include "tests/support/scripted_front_end.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <regex>
#include <unistd.h>

using namespace brisel;
namespace fs = std::filesystem;

namespace {

SystemFiles in_memory() {
  return {{SystemFile::Kind::memory, ""}, {SystemFile::Kind::memory, ""}};
}

// What a dump writes, with the address replaced.
template <class Entry> std::string dumped(const Entry &entry) {
  choose_system_files(in_memory());
  reopen_system_files();
  trace_on = 1;
  dump(entry);
  trace_on = 0;
  const std::string text = trace_text();
  close_system_files();
  return std::regex_replace(text, std::regex("id = 0x[0-9a-f]+"), "id = ADDRESS");
}

int lines_with(const std::string &text, const std::string &word) {
  int count = 0;
  for (std::size_t at = 0; (at = text.find(word, at)) != text.npos; at++) count++;
  return count;
}

} // namespace

TEST(Dump, OfAFirEntryListsHalfOrAllTapsByType) {
  auto entry = std::make_unique<FirEntry>();
  entry->length = 7;
  entry->unique_count = 4;
  entry->sample_rate = two_pi;
  entry->gain = 1;
  struct Row {
    int fir_type;
    int taps;
  };
  for (const Row &row : {Row{0, 4}, Row{1, 4}, Row{2, 7}, Row{3, 7}, Row{5, 0}}) {
    entry->fir_type = static_cast<std::int8_t>(row.fir_type);
    EXPECT_EQ(lines_with(dumped(*entry), "/* coeff "), row.taps) << "type " << row.fir_type;
  }
  entry->fir_type = 1;
  entry->unique_count = 1;
  entry->shift = -1;
  entry->coeff[0] = 0.5;
  entry->window[0] = 0.5;
  EXPECT_EQ(dumped(*entry), "\n Fir Filter Entry: id = ADDRESS\n"
                            " sample rate = 6.283185307180e+00, 1.000000000000e+00 (Hertz)\n"
                            " gain =   1.000000000000e+00, shift = ffffffff\n"
                            " length = 7, fir type = 1\n"
                            " h =  5.000000000000e-01 /* coeff 0 */\n"
                            "\n");
  entry->has_window = 14;
  EXPECT_NE(dumped(*entry).find("  Coefficent,         Window,             Product\n"
                                "  5.000000000000e-01  5.000000000000e-01  2.500000000000e-01 /* coeff 0 */\n"),
            std::string::npos);
}

TEST(Dump, OfPolesGivesRadiusAndAngleAndNoneAtTheOrigin) {
  PoleZeroEntry entry{};
  entry.real_poles = 1;
  entry.complex_zeros = 2;
  entry.gain = 2;
  entry.poles[0] = {0, -0.0};
  entry.zeros[0] = {0, 2};
  entry.zeros[1] = {0, -2};
  const std::string text = dumped(entry);
  EXPECT_NE(
      text.find(" Zero 1 :   0.000000000000e+00,   2.000000000000e+00,   2.000000000000e+00,   1.570796326795e+00\n"),
      text.npos);
  EXPECT_NE(
      text.find(" Pole 1 :   0.000000000000e+00,  -0.000000000000e+00,   0.000000000000e+00,   0.000000000000e+00\n"),
      text.npos)
      << text;
}

TEST(Dump, OfTheOtherKindsCountsTheirCoefficients) {
  RatioEntry ratio{};
  ratio.numerator_order = 1;
  ratio.denominator_order = 2;
  EXPECT_EQ(lines_with(dumped(ratio), " Numerator "), 2);
  EXPECT_EQ(lines_with(dumped(ratio), " Denominator "), 3);
  SectionEntry sections{};
  sections.section_count = 2;
  sections.order = 3;
  const std::string section_text = dumped(sections);
  EXPECT_NE(section_text.find(" gain = 0.000000000000e+00, pars = 0.000000000000e+00, order = 3, sections = 2\n"),
            section_text.npos);
  EXPECT_EQ(lines_with(section_text, " 2:   0."), 2);
  LatticeEntry lattice{};
  lattice.order = 2;
  lattice.lead = 3;
  EXPECT_EQ(lines_with(dumped(lattice), " gamma "), 6);
  EXPECT_EQ(lines_with(dumped(lattice), " kappa "), 2);
  LadderEntry ladder{};
  ladder.order = 2;
  ladder.alpha_count = 5;
  ladder.form = 1;
  const std::string ladder_text = dumped(ladder);
  EXPECT_NE(ladder_text.find(" order = 2, lead = 0, form = 2\n"), ladder_text.npos);
  EXPECT_EQ(lines_with(ladder_text, " alpha "), 5);
}

TEST(SystemFiles, AreAppendedToTrimmedAndNeverWrittenThroughALink) {
  const fs::path folder = fs::temp_directory_path() / ("brisel_trace_" + std::to_string(::getpid()));
  const fs::path old = fs::current_path();
  fs::create_directories(folder);
  fs::current_path(folder);
  ScriptedFrontEnd front;
  std::ofstream("precious") << "precious";
  fs::create_symlink("precious", "SFIL.OUT");
  const auto size = [](const char *name) { return fs::file_size(name); };

  choose_system_files({});
  reopen_system_files();
  trace("one\n");
  reopen_system_files();
  EXPECT_EQ(size("SFIL.STA"), 4u) << "on disk after every reopening";
  trace("two\n");
  report("not there");
  reopen_system_files();
  EXPECT_EQ(size("SFIL.STA"), 8u);
  EXPECT_EQ(size("precious"), 8u);
  EXPECT_EQ(front.shown, std::vector<std::string>{"The File SFIL.OUT cannot be opened for write\n"}) << "told once";
  trim_system_files();
  close_system_files();
  EXPECT_EQ(size("SFIL.STA"), std::string(" System files have been trimmed.\n").size());
  fs::current_path(old);
  fs::remove_all(folder);
}
