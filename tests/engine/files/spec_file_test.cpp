#include "engine/files/spec_file.h"

#include "engine/core/design_state.h"
#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "tests/support/scripted_front_end.h"
#include "tests/support/source_folder.h"
#include "tests/support/text_lines.h"

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

using namespace brisel;
namespace fs = std::filesystem;

namespace {

using test::joined;
using test::lines_of;

struct Folder {
  fs::path path = fs::temp_directory_path() / ("brisel_spec_" + std::to_string(::getpid()));
  Folder() { fs::create_directories(path); }
  ~Folder() { fs::remove_all(path); }
  std::string file(const char *name, std::string_view text) const {
    const std::string full = (path / name).string();
    std::ofstream(full, std::ios::binary) << text;
    return full;
  }
};

std::string content(const fs::path &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

// One file a type, laid out by hand from the description of the format.
const char *const low_pass = "FILTER SPECIFICATION FILE\n"
                             "FILTER TYPE:LOW PASS                       1H\n"
                             "PASSBAND RIPPLE IN -dB        -.1000E+00\n"
                             "STOPBAND RIPPLE IN -dB        -.6000E+02\n"
                             "PASSBAND CUTOFF FREQUENCY   0.120000E+04 HERTZ\n"
                             "STOPBAND CUTOFF FREQUENCY   0.168000E+04 HERTZ\n"
                             "SAMPLING FREQUENCY          0.800000E+04 HERTZ\n";
const char *const band_stop = "FILTER SPECIFICATION FILE\n"
                              "FILTER TYPE:BAND STOP                      4R\n"
                              "PASSBAND RIPPLE IN -dB        -.2000E+00\n"
                              "STOPBAND RIPPLE IN -dB        -.4500E+02\n"
                              "PASSBAND CUTOFF FREQUENCIES 0.100000E+01 0.250000E+01 RADIAN/SEC.\n"
                              "STOPBAND CUTOFF FREQUENCIES 0.125000E+01 0.200000E+01 RADIAN/SEC.\n"
                              "SAMPLING FREQUENCY          0.700000E+01 RADIAN/SEC.\n";
const char *const differentiator = "FILTER SPECIFICATION FILE\n"
                                   "FILTER TYPE:DIFFERENTIATOR                 5H\n"
                                   "PASSBAND CUTOFF FREQUENCIES 0.000000E+00 0.300000E+04 HERTZ\n"
                                   "  DESIRED SLOPE     -.250000E+00\n"
                                   "  DESIRED RIPPLE    0.100000E-01\n"
                                   "SAMPLING FREQUENCY          0.800000E+04 HERTZ\n";
const char *const hilbert = "FILTER SPECIFICATION FILE\n"
                            "FILTER TYPE:HILBERT TRANSFORMER            7H\n"
                            "PASSBAND CUTOFF FREQUENCIES 0.400000E+03 0.360000E+04 HERTZ\n"
                            "  DESIRED RIPPLE    0.200000E-01\n"
                            "SAMPLING FREQUENCY          0.800000E+04 HERTZ\n";
const char *const half_band = "FILTER SPECIFICATION FILE\n"
                              "FILTER TYPE:HALF BAND                     10H\n"
                              "STOPBAND RIPPLE IN -dB        -.5000E+02\n"
                              "PASSBAND CUTOFF FREQUENCY   0.170000E+04 HERTZ\n"
                              "SAMPLING FREQUENCY          0.800000E+04 HERTZ\n";
const char *const root_raised_cosine = "FILTER SPECIFICATION FILE\n"
                                       "FILTER TYPE:ROOT RAISED COSINE            12H\n"
                                       "PASSBAND RIPPLE IN -dB        -.1000E+00\n"
                                       "STOPBAND RIPPLE IN -dB        -.4000E+02\n"
                                       "SYMBOL RATE                 0.200000E+04 HERTZ\n"
                                       "ROLLOF FACTOR               0.250000E+00\n"
                                       "SAMPLING FREQUENCY          0.800000E+04 HERTZ\n";
const char *const multiband = "FILTER SPECIFICATION FILE\n"
                              "FILTER TYPE:MULTIBAND                      6H\n"
                              "SAMPLING FREQUENCY          0.100000E+05 HERTZ\n"
                              "NUMBER OF BANDS  5\n"
                              "\n"
                              "                        BAND  1        BAND  2        BAND  3        BAND  4\n"
                              "  LOWER BAND EDGE   0.000000E+00   0.120000E+04   0.220000E+04   0.320000E+04\n"
                              "  UPPER BAND EDGE   0.100000E+04   0.200000E+04   0.300000E+04   0.400000E+04\n"
                              "  DESIRED VALUE     0.100000E+01   0.000000E+00   0.500000E+00   0.000000E+00\n"
                              "  DESIRED RIPPLE    0.100000E-01   0.100000E-02   0.100000E-01   0.100000E-02\n"
                              "\n"
                              "                        BAND  5\n"
                              "  LOWER BAND EDGE   0.420000E+04\n"
                              "  UPPER BAND EDGE   0.500000E+04\n"
                              "  DESIRED VALUE     -.100000E+01\n"
                              "  DESIRED RIPPLE    0.200000E-01\n";
const char *const arbitrary_magnitude = "FILTER SPECIFICATION FILE\n"
                                        "FILTER TYPE:ARBITRARY MAGNITUDE            8H\n"
                                        "SAMPLING FREQUENCY          0.800000E+04 HERTZ\n"
                                        "NUMBER OF BANDS  2\n"
                                        "\n"
                                        "                        BAND  1        BAND  2\n"
                                        "  LOWER BAND EDGE   0.000000E+00   0.200000E+04\n"
                                        "  UPPER BAND EDGE   0.150000E+04   0.400000E+04\n"
                                        "  DESIRED VALUE     0.250000E+00   0.000000E+00\n"
                                        "  FIX/VAR GAIN           F              V   \n"
                                        "  RIPPLE TYPE            P              F  \n"
                                        "  DESIRED RIPPLE    0.100000E-01   0.200000E-01\n"
                                        "FUNCTION VALUES FOR BAND 2 D\n"
                                        "  0.200000000E+04  0.600000000E+01\n"
                                        "  0.400000000E+04  0.120000000E+02\n"
                                        "  -.100000000E+01\n";
const char *const group_delay = "FILTER SPECIFICATION FILE\n"
                                "FILTER TYPE:ARBITRARY GROUP DELAY          9H\n"
                                "SAMPLING FREQUENCY          0.800000E+04 HERTZ\n"
                                "FUNCTION VALUES FOR\n"
                                "  0.000000000E+00  0.100000000E-02\n"
                                "  0.200000000E+04  0.300000000E-02\n"
                                "  0.400000000E+04  0.100000000E-02\n"
                                "  -.100000000E+01\n"
                                "GROUP DELAY RIPPLE (LINEAR) 0.500000E-01\n";
const char *const every_kind[] = {low_pass,           band_stop, differentiator,      hilbert,    half_band,
                                  root_raised_cosine, multiband, arbitrary_magnitude, group_delay};

std::string with_line(std::string_view text, int number, const std::string &line) {
  auto lines = lines_of(text);
  lines.at(number - 1) = line;
  return joined(lines);
}

FilterSpec read(std::string_view text) {
  FilterSpec spec{};
  EXPECT_EQ(read_filter_spec_text(text, spec), success) << text;
  return spec;
}

/// As a front end does before a save: the letter that the file gave becomes the flag.
FilterSpec to_write(FilterSpec spec) {
  spec.unit = spec.unit == 'H' ? 0 : 1;
  return spec;
}

} // namespace

TEST(SpecFile, EveryKindIsWrittenAsItWasRead) {
  ScriptedFrontEnd screen;
  for (const char *text : every_kind) EXPECT_EQ(*format_filter_spec(to_write(read(text))), text);
  EXPECT_EQ(*format_filter_spec_body(to_write(read(hilbert))), std::string(hilbert).substr(26));
}

TEST(SpecFile, TheOtherUnitIsTheSameSpecification) {
  ScriptedFrontEnd screen;
  for (const char *text : every_kind) {
    FilterSpec spec = to_write(read(text));
    spec.unit = 1 - spec.unit;
    const FilterSpec again = read(*format_filter_spec(spec));
    // Six digits are written, nine of the points: an error of half a unit in 100000.
    EXPECT_NEAR(again.sampling_frequency, spec.sampling_frequency, spec.sampling_frequency * 1e-5) << text;
    EXPECT_NEAR(again.passband_edge[1], spec.passband_edge[1], spec.sampling_frequency * 1e-5);
    EXPECT_NEAR(again.band_upper[4], spec.band_upper[4], spec.sampling_frequency * 1e-5);
    EXPECT_NEAR(again.function_frequency[2], spec.function_frequency[2], spec.sampling_frequency * 1e-8);
    EXPECT_EQ(again.slope, spec.slope) << "a slope carries no unit";
  }
}

TEST(SpecFile, ValuesLandInTheirFields) {
  ScriptedFrontEnd screen;
  const FilterSpec low = read(low_pass);
  EXPECT_EQ(low.type, 0);
  EXPECT_EQ(low.unit, 'H');
  EXPECT_EQ(low.sampling_frequency, two_pi * 8000);
  EXPECT_EQ(low.passband_edge, (std::array<double, 2>{two_pi * 1200, 0}));
  EXPECT_EQ(low.stopband_edge, (std::array<double, 2>{two_pi * 1680, 0}));
  EXPECT_EQ(low.passband_ripple, 0.1);
  EXPECT_EQ(low.stopband_ripple, 60);

  const FilterSpec stop = read(band_stop);
  EXPECT_EQ(stop.unit, 'R');
  EXPECT_EQ(stop.passband_edge, (std::array{1.0, 2.5})) << "radians stay";
  EXPECT_EQ(stop.stopband_edge, (std::array{1.25, 2.0}));

  const FilterSpec slope = read(differentiator);
  EXPECT_EQ(slope.slope, -0.25) << "not converted to radians";
  EXPECT_EQ(slope.passband_ripple, 0.01);

  const FilterSpec cosine = read(root_raised_cosine);
  EXPECT_EQ(cosine.rolloff, 0.25);
  EXPECT_DOUBLE_EQ(cosine.symbol_rate, two_pi * 2000);
  EXPECT_DOUBLE_EQ(cosine.passband_edge[0], two_pi * 750);
  EXPECT_DOUBLE_EQ(cosine.stopband_edge[0], two_pi * 1250);

  const FilterSpec bands = read(multiband);
  EXPECT_EQ(bands.band_count, 5);
  EXPECT_EQ(bands.band_lower[4], two_pi * 4200);
  EXPECT_EQ(bands.band_value[4], -1);
  EXPECT_EQ(bands.band_ripple[3], 0.001);

  const FilterSpec magnitude = read(arbitrary_magnitude);
  EXPECT_EQ(magnitude.fixed_gain, (std::array<std::uint8_t, 5>{1, 0}));
  EXPECT_EQ(magnitude.proportional, (std::array<std::uint8_t, 5>{1, 0}));
  EXPECT_EQ(magnitude.list_flag, (std::array<std::uint8_t, 5>{0, 1}));
  EXPECT_EQ(magnitude.point_count, (std::array<std::uint8_t, 5>{0, 2}));
  EXPECT_EQ(magnitude.function_frequency[51], two_pi * 4000);
  EXPECT_EQ(magnitude.function_value[51], 12);

  const FilterSpec delay = read(group_delay);
  EXPECT_EQ(delay.band_count, 3);
  EXPECT_EQ(delay.function_value[1], 0.003);
  EXPECT_EQ(delay.passband_ripple, 0.05);
  auto lines = lines_of(group_delay);
  lines.pop_back();
  EXPECT_EQ(read(joined(lines)).passband_ripple, 0.01) << "without its line";
}

TEST(SpecFile, RequiredOdditiesOfArbitraryMagnitudes) {
  ScriptedFrontEnd screen;
  FilterSpec spec = to_write(read(arbitrary_magnitude));
  spec.fixed_gain = {1, 1};
  spec.band_value = {6, 20};
  spec.list_flag = {0, 1};
  EXPECT_NE(format_filter_spec(spec)->find("DESIRED VALUE     0.600000E+01   0.200000E+02\n"), std::string::npos);
  spec.list_flag = {1, 0};
  EXPECT_NE(format_filter_spec(spec)->find("DESIRED VALUE     0.501187E+00   0.100000E+00\n"), std::string::npos)
      << "the list flag of the block's first band decides";

  // Five bands: the second block is read four columns wide, whatever of them the file holds.
  FilterSpec five{};
  five.type = 7;
  five.sampling_frequency = two_pi * 10;
  five.band_count = 5;
  five.fixed_gain = {1, 1, 1, 1, 1};
  for (int i = 0; i < 5; i++) {
    five.band_lower[i] = two_pi * i;
    five.band_upper[i] = two_pi * (i + 0.5);
    five.band_ripple[i] = 0.01;
  }
  const std::string text = *format_filter_spec(five);
  EXPECT_EQ(read(text).band_lower[5], 0);
  auto lines = lines_of(text);
  ASSERT_EQ(lines[14], "  LOWER BAND EDGE   0.400000E+01");
  lines[14] += "   0.700000E+01   0.800000E+01   x";
  lines[17] += "              F              F";
  const FilterSpec surplus = read(joined(lines));
  EXPECT_EQ(surplus.band_lower[4], two_pi * 4);
  EXPECT_EQ(surplus.band_lower[5], two_pi * 7);
  EXPECT_EQ(surplus.band_lower[6], two_pi * 8);
  EXPECT_EQ(surplus.band_lower[7], 0);
  EXPECT_EQ(surplus.proportional, (std::array<std::uint8_t, 5>{})) << "flags beyond the five are dropped";
}

TEST(SpecFile, MalformedTextIsRefusedWithItsLine) {
  struct Row {
    const char *name;
    std::string text;
    int line;
    const char *reason;
  };
  std::string points;
  for (int i = 0; i < 51; i++) points += formatf("  0.%09dE+01  0.100000000E+01\n", i);
  std::string magnitude(arbitrary_magnitude);
  const std::string too_many_points = magnitude.substr(0, magnitude.find("  0.200000000E+04")) + points;
  std::string endless_points = std::string(group_delay).substr(0, std::string(group_delay).find("  0.0000"));
  for (int i = 0; i < 251; i++) endless_points += "  0.000000000E+00  0.100000000E+01\n";
  const std::string type_name = "FILTER TYPE:LOW PASS                      ";
  const Row rows[] = {
      {"an empty file", "", 1, "the file ends where FILTER SPECIFICATION FILE was expected"},
      {"a foreign file", "PK\3\4", 1, "does not begin with"},
      {"type 13", with_line(low_pass, 2, type_name + "13H"), 2, "filter type 13 is not 1 to 12"},
      {"type 0", with_line(low_pass, 2, type_name + " 0H"), 2, "filter type 0 is not 1 to 12"},
      {"a type line without type", with_line(low_pass, 2, "FILTER TYPE:LOW PASS"), 2, "no filter type number"},
      {"an unknown unit", with_line(low_pass, 2, type_name + " 1K"), 2, "unit letter"},
      {"no unit", with_line(low_pass, 2, type_name + " 1"), 2, "unit letter"},
      {"a line too short", with_line(low_pass, 5, "PASSBAND CUTOFF FREQUENCY"), 5, "no number at column 28"},
      {"a line too long", with_line(low_pass, 4, std::string(98, '1')), 4, "longer than 97 characters"},
      {"an endless line", with_line(low_pass, 4, std::string(1000000, '1')), 4, "longer than 97 characters"},
      {"not a number", with_line(low_pass, 7, "SAMPLING FREQUENCY          nan HERTZ"), 7, "no number"},
      {"infinity", with_line(low_pass, 7, "SAMPLING FREQUENCY          inf HERTZ"), 7, "no number"},
      {"beyond a double", with_line(low_pass, 7, "SAMPLING FREQUENCY          1e400 HERTZ"), 7, "no number"},
      {"hexadecimal", with_line(low_pass, 7, "SAMPLING FREQUENCY          0x1p9 HERTZ"), 7, "no number"},
      {"a decimal comma", with_line(low_pass, 7, "SAMPLING FREQUENCY          0,8E+04 HERTZ"), 7, "no number"},
      {"a number left of its column", with_line(low_pass, 3, "PASSBAND RIPPLE IN -dB -0.125"), 3, "no number"},
      {"the second of two edges", with_line(band_stop, 5, "PASSBAND CUTOFF FREQUENCIES 0.1E+01 RADIAN/SEC."), 5,
       "no number"},
      {"no bands", with_line(multiband, 4, "NUMBER OF BANDS  0"), 4, "the number of bands, 0, is not 1 to 10"},
      {"negative bands", with_line(multiband, 4, "NUMBER OF BANDS -1"), 4, "is not 1 to 10"},
      {"eleven bands", with_line(multiband, 4, "NUMBER OF BANDS 11"), 4, "is not 1 to 10"},
      {"six arbitrary bands", with_line(arbitrary_magnitude, 4, "NUMBER OF BANDS  6"), 4, "is not 1 to 5"},
      {"a band without edge", with_line(multiband, 7, "  LOWER BAND EDGE   0.000000E+00"), 7, "no number at column 36"},
      {"a band without letter", with_line(arbitrary_magnitude, 10, "  FIX/VAR GAIN           F"), 10,
       "no letter F or V at column 41"},
      {"a list without letter", with_line(arbitrary_magnitude, 13, "FUNCTION VALUES FOR BAND 2"), 13,
       "no letter D or L"},
      {"a point that is no number", with_line(arbitrary_magnitude, 14, "  nan  1"), 14, "no number at column 1"},
      {"a point without value", with_line(arbitrary_magnitude, 14, "  0.000000000E+00"), 14, "no number at column 18"},
      {"51 points in a band", too_many_points, 64, "more than 50 function points"},
      {"251 points of delay", endless_points, 255, "more than 250 function points"},
      {"a short ripple line", with_line(group_delay, 9, "GROUP DELAY RIPPLE"), 9, "no number at column 28"},
  };
  ScriptedFrontEnd screen;
  for (const Row &row : rows) {
    FilterSpec spec{};
    SpecReading reading;
    screen.complaints.clear();
    EXPECT_EQ(read_filter_spec_text(row.text, spec, &reading), format_error) << row.name;
    EXPECT_EQ(reading.line, row.line) << row.name << ": " << reading.reason;
    EXPECT_NE(reading.reason.find(row.reason), std::string::npos) << row.name << ": " << reading.reason;
    ASSERT_EQ(screen.complaints.size(), 1u) << row.name;
    EXPECT_LE(reading.last_line.size(), 98u) << row.name;
    EXPECT_EQ(screen.complaints[0], "Loading SPC file error: Last line is \n" + reading.last_line + "\n") << row.name;
  }
}

TEST(SpecFile, AFileThatEndsEarlyIsRefusedAtEveryLine) {
  ScriptedFrontEnd screen;
  for (const char *text : every_kind) {
    auto lines = lines_of(text);
    if (text == group_delay) lines.pop_back(); // the ripple may be missing
    while (!lines.empty()) {
      lines.pop_back();
      FilterSpec spec{};
      SpecReading reading;
      EXPECT_EQ(read_filter_spec_text(joined(lines), spec, &reading), format_error) << joined(lines);
      EXPECT_EQ(reading.line, static_cast<int>(lines.size()) + 1);
      EXPECT_EQ(reading.last_line, lines.empty() ? "" : lines.back());
    }
    std::string unfinished(text);
    unfinished.pop_back();
    EXPECT_EQ(*format_filter_spec(to_write(read(unfinished))), text) << "the last line feed may be missing";
  }
}

TEST(SpecFile, WhatIsNotFiniteOrDoesNotFitIsNotWritten) {
  ScriptedFrontEnd screen;
  const Folder folder;
  const std::string old = folder.file("old.spc", "old");
  FilterSpec spec = to_write(read(low_pass));
  std::string why;
  spec.passband_edge[0] = INFINITY;
  EXPECT_FALSE(write_filter_spec(old, spec, &why));
  EXPECT_NE(why.find("old.spc"), why.npos);
  EXPECT_EQ(content(old), "old");
  spec = to_write(read(arbitrary_magnitude));
  spec.band_count = 6;
  EXPECT_EQ(format_filter_spec(spec), std::nullopt);
  spec.band_count = 2;
  spec.point_count[1] = 51;
  EXPECT_EQ(format_filter_spec(spec), std::nullopt);
  spec = to_write(read(group_delay));
  EXPECT_FALSE(write_filter_spec((folder.path / "no folder" / "x.spc").string(), spec)) << "silently";
  EXPECT_TRUE(screen.posted.empty() && screen.complaints.empty());
  ASSERT_TRUE(write_filter_spec(old, spec));
  EXPECT_EQ(content(old), group_delay);
}

TEST(LoadFilterSpec, SelectsTheTypeAndKeepsTheOthers) {
  ScriptedFrontEnd screen;
  const Folder folder;
  design_state.FrequencyMode = 0;
  trace_on = 1;
  SystemFiles files;
  files.trace = {SystemFile::Kind::memory, {}};
  files.report = {SystemFile::Kind::null_device, {}};
  choose_system_files(files);
  reopen_system_files();
  const std::string low = folder.file("low.spc", low_pass), transformer = folder.file("transformer.spc", hilbert);
  ASSERT_EQ(load_filter_spec(low), success);
  EXPECT_EQ(design_state.DesignOrAnalysisType, 0);
  ASSERT_EQ(load_filter_spec(transformer), success);
  EXPECT_EQ(design_state.filter_type, 6);
  EXPECT_EQ(current_spec, &spec[6]);
  EXPECT_EQ(design_state.DesignOrAnalysisType, 1) << "a Hilbert transformer has no IIR design";
  EXPECT_EQ(spec_path[0], low);
  EXPECT_EQ(spec_path[6], transformer);
  EXPECT_EQ(spec[0].stopband_ripple, 60);
  EXPECT_EQ(trace_text(), " read filter spc:" + low + "\n filter type: Lowpass Filter\n read filter spc:" +
                              transformer + "\n filter type: Hilbert Transformer\n");
  trace_on = 0;
  EXPECT_TRUE(screen.posted.empty());
}

TEST(LoadFilterSpec, ARefusedFileLeavesTheStateAsItWas) {
  ScriptedFrontEnd screen;
  const Folder folder;
  ASSERT_EQ(load_filter_spec(folder.file("low.spc", low_pass)), success);
  const FilterSpec before = spec[0];
  const DesignState state_before = design_state;
  struct Row {
    const char *name;
    std::string text;
    Message message;
    const char *detail;
  };
  const Row rows[] = {
      {"malformed", with_line(low_pass, 6, "STOPBAND"), Message::specification_refused,
       "bad.spc:6: no number at column 28"},
      {"edge above half the sampling frequency",
       with_line(low_pass, 6, "STOPBAND CUTOFF FREQUENCY   0.450000E+04 HERTZ"), Message::impossible_specification,
       "bad.spc:6: the stopband edge, 4500 Hz, is above half the sampling frequency, 4000 Hz"},
      {"ripple of zero", with_line(low_pass, 3, "PASSBAND RIPPLE IN -dB        0"), Message::impossible_specification,
       "bad.spc:3: the passband ripple, 0 dB, is not above zero"},
      {"second band below the first",
       with_line(multiband, 7,
                 "  LOWER BAND EDGE   0.000000E+00   0.900000E+03   "
                 "0.220000E+04   0.320000E+04"),
       Message::impossible_specification,
       "bad.spc:7: the lower edge of band 2, 900 Hz, is not above the upper edge of "
       "band 1, 1000 Hz"},
      {"a list without points", with_line(arbitrary_magnitude, 14, "  -.100000000E+01"),
       Message::impossible_specification, "bad.spc:13: the number of function points of band 2, 0, is not 1 to 50"},
      {"a rate that overflows in radians", with_line(low_pass, 7, "SAMPLING FREQUENCY          1e308 HERTZ"),
       Message::impossible_specification, "bad.spc:7: the sampling frequency is not a finite number"},
  };
  for (const Row &row : rows) {
    screen.posted.clear();
    EXPECT_EQ(load_filter_spec(folder.file("bad.spc", row.text)), format_error) << row.name;
    ASSERT_EQ(screen.posted.size(), 1u) << row.name;
    EXPECT_EQ(screen.posted[0].number, row.message) << row.name;
    EXPECT_TRUE(screen.posted[0].detail.ends_with(row.detail)) << row.name << ": " << screen.posted[0].detail;
    EXPECT_EQ(std::memcmp(&spec[0], &before, sizeof before), 0) << row.name;
    EXPECT_EQ(std::memcmp(&design_state, &state_before, sizeof state_before), 0) << row.name;
  }
  screen.posted.clear();
  EXPECT_EQ(load_filter_spec((folder.path / "absent.spc").string()), cannot_open);
  EXPECT_EQ(load_filter_spec(folder.path.string()), cannot_open) << "a folder";
  EXPECT_TRUE(screen.posted.empty()) << "no message of the reader's";
}

TEST(LoadFilterSpec, AnEdgeAtHalfTheSamplingFrequencyStaysThereInSixDigits) {
  ScriptedFrontEnd screen;
  const Folder folder;
  // fs = 1234563 Hz: its half, 617281.5, is written as 617282, above half of the written 1234560.
  FilterSpec bands = to_write(read(multiband));
  bands.sampling_frequency = two_pi * 1234563;
  bands.band_upper[4] = bands.sampling_frequency / 2;
  ASSERT_EQ(load_filter_spec(folder.file("half.spc", *format_filter_spec(bands))), success);
  EXPECT_EQ(spec[5].band_upper[4], spec[5].sampling_frequency / 2);
}

TEST(SpecFile, TheExamplesAreWhatTheWriterWrites) {
  ScriptedFrontEnd screen;
  int count = 0;
  for (const auto &entry : fs::directory_iterator(source_file("examples"))) {
    if (entry.path().extension() != ".spc") continue;
    count++;
    const std::string text = content(entry.path());
    FilterSpec example = read(text);
    EXPECT_EQ(format_filter_spec(to_write(example)), text) << entry.path();
    EXPECT_FALSE(check_spec(example).has_value()) << entry.path();
  }
  EXPECT_GE(count, filter_type_count);
}
