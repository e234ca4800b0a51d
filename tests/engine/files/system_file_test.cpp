#include "engine/files/system_file.h"

#include "engine/files/saved_filter.h"

#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "tests/support/scripted_front_end.h"
#include "tests/support/source_folder.h"
#include "tests/support/text_lines.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

using namespace brisel;
namespace fs = std::filesystem;

namespace {

using test::joined;
using test::lines_of;

const std::string z_start = "DIGITAL SYSTEM ANALYSIS - Z DOMAIN INPUT\nINPUT OPTION - ";
const std::string s_start = "DIGITAL SYSTEM ANALYSIS - S DOMAIN INPUT\nINPUT OPTION - ";
const std::string rate = "\nSAMPLING FREQUENCY           8.00000e+03 HERTZ\n";
const std::string unit_gain = "INITIAL GAIN  1.00000000e+00\n";

// One file an option, laid out by hand from the description of the format.
const std::string ratio = z_start + "RATIO OF TWO POLYNOMIALS N(z)/D(z)" + rate +
                          "INITIAL GAIN -5.00000000e-01\n"
                          "NUMERATOR COEFFICIENTS   - HIGHEST ORDER FIRST    7\n"
                          " 1.00000000e+00  2.00000000e+00  3.00000000e+00  4.00000000e+00  5.00000000e+00\n"
                          "-6.00000000e+00  7.00000000e-100\n"
                          "DENOMINATOR COEFFICIENTS - HIGHEST ORDER FIRST    7\n"
                          " 1.00000000e+00  0.00000000e+00  0.00000000e+00  0.00000000e+00  0.00000000e+00\n"
                          " 0.00000000e+00  5.00000000e-01\n";
const std::string pole_zero = z_start + "z PLANE POLES AND ZEROES" + rate + unit_gain +
                              "ZEROES OF TRANSFER FUNCTION H(s)     1\n"
                              "-1.000000000e+00    0.000000000e+00\n"
                              "POLES OF TRANSFER FUNCTION H(s)      3\n"
                              " 5.000000000e-01    5.000000000e-01\n"
                              " 5.000000000e-01   -5.000000000e-01\n"
                              " 2.500000000e-01    0.000000000e+00\n";
const std::string sections = "NUMBER OF SECTIONS   2\n"
                             "NUMERATOR COEFFICIENTS \n"
                             " 1.00000000e+00  2.00000000e+00  1.00000000e+00\n"
                             " 1.00000000e+00  1.00000000e+00  0.00000000e+00\n"
                             "DENOMINATOR COEFFICIENTS\n"
                             " 1.00000000e+00 -5.00000000e-01  2.50000000e-01\n"
                             " 1.00000000e+00 -5.00000000e-01  0.00000000e+00\n";
const std::string ladder = "NUMBER OF LEADING ZEROS   0\n"
                           "ORDER OF LADDER   2\n"
                           "LADDER COEFFICIENTS\n"
                           " 1.00000000e+00\n-2.00000000e+00\n 3.00000000e+00\n 4.00000000e+00\n 5.00000000e+00\n";
const std::string lattice = "NUMBER OF LEADING ZEROS   0\n"
                            "ORDER OF LATTICE   2\n"
                            "LATTICE GAMMA COEFFICIENTS\n"
                            " 1.00000000e+00\n 2.00000000e+00\n 3.00000000e+00\n"
                            "LATTICE KAPPA COEFFICIENTS\n"
                            " 5.00000000e-01\n-2.50000000e-01\n";
const std::string symmetric = z_start + "SYMMETRIC FIR FILTER" + rate +
                              "NUMBER OF TAPS     7 GAIN=  1.000000000e+00\n"
                              "H(   0) = -1.000000000e+00 =  H(   6)\n"
                              "H(   1) =  2.000000000e+00 =  H(   5)\n"
                              "H(   2) =  3.000000000e+00 =  H(   4)\n"
                              "H(   3) =  4.000000000e+00 =  H(   3)\n";
const std::string antisymmetric = z_start + "ANTISYMMETRIC FIR FILTER" + rate +
                                  "NUMBER OF TAPS     3 GAIN=  2.000000000e+00\n"
                                  "-H(   0) = -1.500000000e+00 =  H(   2)\n"
                                  "-H(   1) =  0.000000000e+00 =  H(   1)\n";
const std::string nonsymmetric = z_start + "NONSYMMETRIC FIR FILTER" + rate +
                                 "NUMBER OF TAPS     2 GAIN= -1.000000000e+00\n"
                                 "H(   0) =  5.000000000e-01\n"
                                 "H(   1) = -2.500000000e-01\n";
std::string in_z(const char *option, const std::string &body) {
  return z_start + option + rate + unit_gain + body;
}
std::string in_s(const char *option, const std::string &body) {
  return s_start + option + rate + unit_gain + body;
}

struct OptionFile {
  Domain domain;
  int option;
  std::string text;
};
const OptionFile every_option[] = {
    {Domain::z, 0, ratio},
    {Domain::z, 1, pole_zero},
    {Domain::z, 2, in_z("PRODUCT OF 2ND ORDER SECTIONS", sections)},
    {Domain::z, 3, in_z("SUM OF 2ND ORDER SECTIONS", sections)},
    {Domain::z, 4, in_z("LADDER STRUCTURE FORM 1", ladder)},
    {Domain::z, 5, in_z("LADDER STRUCTURE FORM 2", ladder)},
    {Domain::z, 6, in_z("LATTICE STRUCTURE", lattice)},
    {Domain::z, 7, symmetric},
    {Domain::z, 8, antisymmetric},
    {Domain::z, 9, nonsymmetric},
    {Domain::z, 10,
     z_start + "LATTICE FIR FILTER" + rate +
         "NUMBER OF TAPS     1 GAIN=  1.000000000e+00\nH(   0) =  5.000000000e-01\n"},
    {Domain::s, 0,
     s_start + "RATIO OF TWO POLYNOMIALS N(s)/D(s)" + rate + unit_gain +
         "NUMERATOR COEFFICIENTS   - HIGHEST ORDER FIRST    1\n"
         " 3.00000000e+00\n"
         "DENOMINATOR COEFFICIENTS - HIGHEST ORDER FIRST    2\n"
         " 1.00000000e+00  3.00000000e+00\n"},
    {Domain::s, 1,
     s_start + "s PLANE POLES AND ZEROES" + pole_zero.substr((z_start + "z PLANE POLES AND ZEROES").size())},
    {Domain::s, 2, in_s("PRODUCT OF 2ND ORDER SECTIONS", sections)},
    {Domain::s, 3, in_s("SUM OF 2ND ORDER SECTIONS", sections)},
    {Domain::s, 4, in_s("LADDER STRUCTURE FORM 1", ladder)},
    {Domain::s, 5, in_s("LADDER STRUCTURE FORM 2", ladder)},
    {Domain::s, 6, in_s("LATTICE STRUCTURE", lattice)},
};

int read(const std::string &text, SystemReading *reading = nullptr) {
  return read_system_text(text, design_state, z_entries, s_entries, reading);
}

std::string with_line(const std::string &text, int number, const std::string &line) {
  auto lines = lines_of(text);
  lines.at(number - 1) = line;
  return joined(lines);
}

} // namespace

TEST(SystemFile, EveryOptionIsWrittenAsItWasRead) {
  ScriptedFrontEnd screen;
  for (const OptionFile &file : every_option) {
    SystemReading reading;
    ASSERT_EQ(read(file.text, &reading), 0) << file.text << reading.line << ": " << reading.reason;
    const bool digital = file.domain == Domain::z;
    EXPECT_EQ(design_state.DesignOrAnalysisType, digital ? 6 : 7);
    EXPECT_EQ(digital ? design_state.z_input_option : design_state.s_input_option, file.option);
    EXPECT_EQ(design_state.FrequencyMode, 0);
    EXPECT_EQ(design_state.unit_factor, two_pi);
    const auto option = static_cast<InputOption>(file.option);
    const SystemEntry entry = system_entry(digital ? z_entries : s_entries, option);
    EXPECT_EQ(*format_system_file(file.domain, option, entry, 0), file.text);
  }
  EXPECT_TRUE(screen.complaints.empty());
}

TEST(SystemFile, ValuesLandInTheirPlaces) {
  ScriptedFrontEnd screen;
  ASSERT_EQ(read(pole_zero), 0);
  EXPECT_EQ(z_entries.pole_zero.real_zeros, 1);
  EXPECT_EQ(z_entries.pole_zero.complex_zeros, 0);
  EXPECT_EQ(z_entries.pole_zero.real_poles, 1);
  EXPECT_EQ(z_entries.pole_zero.complex_poles, 2);
  EXPECT_EQ(z_entries.pole_zero.poles[1], (std::complex<double>{0.5, -0.5}));

  ASSERT_EQ(read(symmetric), 0);
  const FirEntry &even = z_entries.fir[0];
  EXPECT_EQ(even.unique_count, 4);
  EXPECT_EQ(even.coeff[0], 4) << "centre first";
  EXPECT_EQ(even.coeff[3], -1) << "the sign stands before the reader's column";
  ASSERT_EQ(read(antisymmetric), 0);
  EXPECT_EQ(z_entries.fir[1].coeff[1], 1.5) << "tap 2 is -1.5, tap 0 its negative";
  EXPECT_EQ(z_entries.fir[1].gain, 2);

  ASSERT_EQ(read(in_z("PRODUCT OF 2ND ORDER SECTIONS", sections)), 0);
  EXPECT_EQ(z_entries.product.order, 3);
  EXPECT_EQ(z_entries.product.pars, 1);
  EXPECT_EQ(z_entries.product.numerators[1], (Triple{1, 1, 0}));
  ASSERT_EQ(read(in_s("PRODUCT OF 2ND ORDER SECTIONS", sections)), 0);
  EXPECT_EQ(s_entries.product.order, 4) << "a section of the s domain begins with s^2";
  ASSERT_EQ(read(in_z("LATTICE STRUCTURE", lattice)), 0);
  EXPECT_EQ(z_entries.lattice.kappa[1], 0.5);
  EXPECT_EQ(z_entries.lattice.kappa[2], -0.25);
}

TEST(SystemFile, PolynomialsInZBecomePowersOfItsInverse) {
  ScriptedFrontEnd screen;
  // (2 z + 1) / (z^3 - 0.5 z^2 + 0.25 z + 0.125)
  const std::string text = z_start + "RATIO OF TWO POLYNOMIALS N(z)/D(z)" + rate + unit_gain +
                           "NUMERATOR COEFFICIENTS   - HIGHEST ORDER FIRST    2\n2 1\n"
                           "DENOMINATOR COEFFICIENTS - HIGHEST ORDER FIRST    4\n1 -0.5 0.25 0.125\n";
  ASSERT_EQ(read(text), 0);
  const RatioEntry &entry = z_entries.ratio;
  EXPECT_EQ(entry.numerator_order, 3);
  EXPECT_EQ(std::vector<double>(entry.numerator.begin(), entry.numerator.begin() + 5),
            (std::vector<double>{0, 0, 2, 1, 0}));
  EXPECT_EQ(entry.denominator[3], 0.125);
  // Written from an entry whose numerator is shorter: 2 + z^-1 = (2 z^3 + z^2) / z^3.
  RatioEntry shorter = entry;
  shorter.numerator_order = 1;
  shorter.numerator = {2, 1};
  ASSERT_EQ(read(*format_system_file(Domain::z, InputOption::ratio, &shorter, 0)), 0);
  EXPECT_EQ(z_entries.ratio.numerator[0], 2);
  EXPECT_EQ(z_entries.ratio.numerator[1], 1);
  EXPECT_EQ(z_entries.ratio.numerator[3], 0);
}

TEST(SystemFile, RequiredOddities) {
  ScriptedFrontEnd screen;
  std::string lower = ratio;
  lower.replace(lower.find("HERTZ"), 5, "hertz");
  ASSERT_EQ(read(lower), 0);
  EXPECT_EQ(z_entries.ratio.sample_rate, 8000) << "a lower-case unit is radians per second";
  EXPECT_EQ(design_state.FrequencyMode, 1);
  EXPECT_EQ(design_state.unit_factor, 1);

  // The system's own ladder with a lead comes back without it.
  LadderEntry leading{};
  leading.order = 2;
  leading.lead = 1;
  leading.alpha_count = 6;
  leading.sample_rate = two_pi;
  leading.alpha = {9, 1, 2, 3, 4, 5};
  ASSERT_EQ(read(*format_system_file(Domain::z, InputOption::ladder_1, &leading, 0)), 0);
  EXPECT_EQ(z_entries.ladder_1.lead, 0);
  EXPECT_EQ(z_entries.ladder_1.alpha_count, 5);
  EXPECT_EQ(z_entries.ladder_1.alpha[0], 9);
  std::string moved = *format_system_file(Domain::z, InputOption::ladder_1, &leading, 0);
  moved.replace(moved.find("NUMBER OF LEADING ZEROS   1"), 27, "NUMBER OF LEADING    1");
  ASSERT_EQ(read(moved), 0);
  EXPECT_EQ(z_entries.ladder_1.lead, 1);
  EXPECT_EQ(z_entries.ladder_1.alpha[5], 5);

  // 161 of the numerator's 200 coefficients are used; what follows is no denominator count.
  std::string long_ratio = z_start + "RATIO OF TWO POLYNOMIALS N(z)/D(z)" + rate + unit_gain +
                           "NUMERATOR COEFFICIENTS   - HIGHEST ORDER FIRST  200\n";
  for (int i = 0; i < 40; i++) long_ratio += "1 2 3 4 5\n";
  long_ratio += "DENOMINATOR COEFFICIENTS - HIGHEST ORDER FIRST    1\n1\n";
  SystemReading reading;
  EXPECT_EQ(read(long_ratio, &reading), 1);
  EXPECT_EQ(reading.line, 5 + 33 + 1) << reading.reason;
  EXPECT_EQ(z_entries.ratio.numerator_order, 160) << "values read before the failure stay";
  EXPECT_EQ(z_entries.ratio.numerator[160], 1);
}

TEST(SystemFile, MalformedTextIsRefusedWithItsLine) {
  struct Row {
    const char *name;
    std::string text;
    int result;
    int line;
    bool complaint;
  };
  const std::string product = in_z("PRODUCT OF 2ND ORDER SECTIONS", sections);
  const std::string ladders = in_z("LADDER STRUCTURE FORM 2", ladder), lattices = in_z("LATTICE STRUCTURE", lattice);
  const Row rows[] = {
      {"an empty file", "", 1, 1, false},
      {"foreign", with_line(ratio, 1, "FILTER SPECIFICATION FILE"), 1, 1, false},
      {"unknown option", with_line(ratio, 2, "INPUT OPTION - STATE SPACE"), 1, 2, false},
      {"option of the other domain", with_line(ratio, 1, s_start.substr(0, 40)), 1, 2, false},
      {"FIR in the s domain", with_line(symmetric, 1, s_start.substr(0, 40)), 1, 2, false},
      {"short option line", with_line(ratio, 2, "INPUT"), 1, 2, false},
      {"no unit", with_line(ratio, 3, "SAMPLING FREQUENCY           8.00000e+03"), 1, 3, false},
      {"sampling frequency zero", with_line(ratio, 3, "SAMPLING FREQUENCY           0.00000e+00 HERTZ"), 1, 3, false},
      {"no gain", with_line(ratio, 4, "INITIAL GAIN"), 1, 4, true},
      {"gain not finite", with_line(ratio, 4, "INITIAL GAIN  inf"), 1, 4, true},
      {"no coefficients", with_line(ratio, 5, "NUMERATOR COEFFICIENTS   - HIGHEST ORDER FIRST    0"), 1, 5, true},
      {"count of 2^31", with_line(ratio, 5, "NUMERATOR COEFFICIENTS   - HIGHEST ORDER FIRST2147483648"), 1, 5, true},
      {"a coefficient missing", with_line(ratio, 6, "1 2 3 4"), 2, 6, true},
      {"a coefficient more", with_line(ratio, 7, "1 2 3"), 2, 7, true},
      {"decimal comma", with_line(ratio, 7, "1,5 2"), 2, 7, true},
      {"hexadecimal", with_line(ratio, 7, "0x1p3 2"), 2, 7, true},
      {"second list", with_line(ratio, 9, "1 2 3 4 nan"), 3, 9, true},
      {"line too long", with_line(ratio, 9, std::string(119, ' ')), 3, 9, true},
      {"endless line", with_line(ratio, 9, std::string(1000000, '1')), 3, 9, true},
      {"201 zeros", with_line(pole_zero, 5, "ZEROES OF TRANSFER FUNCTION H(s)   201"), 1, 5, true},
      {"negative zeros", with_line(pole_zero, 5, "ZEROES OF TRANSFER FUNCTION H(s)    -1"), 1, 5, true},
      {"a zero without imaginary part", with_line(pole_zero, 6, "-1.0"), 2, 6, true},
      {"a pole", with_line(pole_zero, 8, ""), 3, 8, true},
      {"101 sections", with_line(product, 5, "NUMBER OF SECTIONS 101"), 1, 5, true},
      {"no sections", with_line(product, 5, "NUMBER OF SECTIONS   0"), 1, 5, true},
      {"numerator", with_line(product, 7, "1 2"), 2, 7, true},
      {"denominator", with_line(product, 10, "1 2"), 4, 10, true},
      {"ladder of order 1", with_line(ladders, 6, "ORDER OF LADDER   1"), 1, 6, true},
      {"ladder of order 201", with_line(ladders, 6, "ORDER OF LADDER 201"), 1, 6, true},
      {"lead beyond the capacity", with_line(ladders, 5, "NUMBER OF LEADING  322"), 1, 5, true},
      {"lead line too short", with_line(ladders, 5, "NUMBER OF LEADING"), 1, 5, true},
      {"lattice of order 201", with_line(lattices, 6, "ORDER OF LATTICE 201"), 1, 6, true},
      {"gamma", with_line(lattices, 9, "x"), 1, 9, true},
      {"50001 taps", with_line(nonsymmetric, 4, "NUMBER OF TAPS 50001 GAIN=  1.000000000e+00"), 1, 4, true},
      {"no taps", with_line(nonsymmetric, 4, "NUMBER OF TAPS     0 GAIN=  1.000000000e+00"), 1, 4, true},
      {"no FIR gain", with_line(nonsymmetric, 4, "NUMBER OF TAPS     2"), 1, 4, true},
      {"a tap left of its column", with_line(nonsymmetric, 5, "H( 0) = 5.0e-01"), 1, 5, true},
      {"a tap missing", nonsymmetric.substr(0, nonsymmetric.find("H(   1)")), 1, 6, true},
  };
  ScriptedFrontEnd screen;
  const DesignState before = design_state;
  for (const Row &row : rows) {
    SystemReading reading;
    screen.complaints.clear();
    EXPECT_EQ(read(row.text, &reading), row.result) << row.name << ": " << reading.reason;
    EXPECT_EQ(reading.line, row.line) << row.name << ": " << reading.reason;
    ASSERT_EQ(screen.complaints.size(), row.complaint ? 1u : 0u) << row.name;
    if (row.complaint) {
      EXPECT_EQ(screen.complaints[0], "Loading INP file error: Last line is: \n" + reading.last_line + "\n");
    }
  }
  EXPECT_EQ(design_state.DesignOrAnalysisType, before.DesignOrAnalysisType);
  EXPECT_EQ(design_state.FrequencyMode, before.FrequencyMode);
}

TEST(SystemFile, AFileThatEndsEarlyIsRefusedAtEveryLine) {
  ScriptedFrontEnd screen;
  for (const OptionFile &file : every_option) {
    auto lines = lines_of(file.text);
    while (!lines.empty()) {
      lines.pop_back();
      SystemReading reading;
      EXPECT_NE(read(joined(lines), &reading), 0) << joined(lines);
      EXPECT_EQ(reading.line, static_cast<int>(lines.size()) + 1);
    }
  }
}

TEST(LoadSystemFile, RemembersThePathAndTellsTheTrace) {
  ScriptedFrontEnd screen;
  const fs::path folder = fs::temp_directory_path() / ("brisel_inp_" + std::to_string(::getpid()));
  fs::create_directories(folder);
  const std::string good = (folder / "good.inp").string(), bad = (folder / "bad.inp").string();
  std::ofstream(good) << in_s("LATTICE STRUCTURE", lattice);
  std::ofstream(bad) << with_line(ratio, 7, "1 x");
  SystemFiles files;
  files.trace = {SystemFile::Kind::memory, {}};
  files.report = {SystemFile::Kind::null_device, {}};
  choose_system_files(files);
  reopen_system_files();
  ASSERT_EQ(load_system_file(good), 0);
  EXPECT_EQ(s_path[6], good);
  EXPECT_EQ(trace_text(), " read filter analysis file\n S Domain type: Lattice Structure\n");
  EXPECT_EQ(load_system_file(bad), 2);
  ASSERT_EQ(screen.posted.size(), 1u);
  EXPECT_EQ(screen.posted[0].number, Message::system_file_refused);
  EXPECT_EQ(screen.posted[0].detail, bad + ":7: no number at column 2");
  EXPECT_EQ(z_path[0], "");
  EXPECT_EQ(load_system_file((folder / "absent").string()), 1);
  EXPECT_EQ(screen.posted.back().number, Message::system_file_refused);
  fs::remove_all(folder);
}

TEST(CurrentSystemFile, IsTheFilterThatWasDesigned) {
  ScriptedFrontEnd screen;
  design_record.valid = 0;
  EXPECT_FALSE(save_current_system());
  EXPECT_EQ(screen.posted.back().number, Message::no_design);
  design_record.valid = 1;
  design_record.selections = {};
  design_record.selections.DesignOrAnalysisType = code(DesignMethod::window);
  FirEntry &fir = design_record.fir;
  fir.length = 4;
  fir.gain = 0.5;
  fir.sample_rate = two_pi * 8000;
  struct Row {
    std::array<double, 4> taps;
    InputOption option;
  };
  for (const Row &row :
       {Row{{1, 2, 2, 1}, InputOption::symmetric_fir}, Row{{1, -2, 2, -1}, InputOption::antisymmetric_fir},
        Row{{1, 2, 3, 4}, InputOption::nonsymmetric_fir}}) {
    std::ranges::copy(row.taps, fir.coeff.begin());
    ASSERT_EQ(read(save_current_system()->text), 0);
    EXPECT_EQ(design_state.z_input_option, code(row.option));
    const FirEntry &back = z_entries.fir[code(row.option) - 7];
    EXPECT_EQ(back.gain, 0.5);
    for (int i = 0; i < 2; i++)
      EXPECT_EQ(back.coeff[row.option == InputOption::nonsymmetric_fir ? i : 1 - i], row.taps[i]);
  }

  // A quantized sum: shifts and scale are multiplied out.
  design_record.selections.DesignOrAnalysisType = code(DesignMethod::iir);
  design_record.realization = code(RealizationForm::parallel);
  SectionEntry &sum = design_record.z_quantized.parallel;
  sum = {};
  sum.section_count = 1;
  sum.sample_rate = two_pi * 8000;
  sum.gain = 0.25;
  sum.pars = 4;
  sum.shift = {1};
  sum.numerators[0] = {0, 0.125, 0};
  sum.denominators[0] = {0.5, -0.75, 0.5};
  ASSERT_EQ(read(save_current_system()->text), 0);
  EXPECT_EQ(z_entries.sum.gain, 1);
  EXPECT_EQ(z_entries.sum.numerators[0], (Triple{0, 1, 0}));
  EXPECT_EQ(z_entries.sum.denominators[0], (Triple{1, -1.5, 1}));

  sum.numerators[0][1] = NAN;
  EXPECT_FALSE(save_current_system());
  EXPECT_EQ(screen.posted.back().number, Message::result_not_finite);
  design_record.realization = code(RealizationForm::nonlinear);
  EXPECT_FALSE(save_current_system());
  EXPECT_EQ(screen.posted.back().number, Message::unsupported_form);
}

TEST(SystemFile, TheExamplesAreWhatTheWriterWrites) {
  ScriptedFrontEnd screen;
  int count = 0;
  for (const auto &file : fs::directory_iterator(source_file("examples"))) {
    if (file.path().extension() != ".inp") continue;
    count++;
    std::ostringstream text;
    text << std::ifstream(file.path()).rdbuf();
    SystemReading reading;
    ASSERT_EQ(read(text.str(), &reading), 0) << file.path();
    const SystemEntries &entries = reading.domain == Domain::z ? z_entries : s_entries;
    EXPECT_EQ(*format_system_file(reading.domain, reading.option, system_entry(entries, reading.option), 0),
              text.str());
  }
  EXPECT_GE(count, 5);
}
