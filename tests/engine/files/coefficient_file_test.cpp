#include "engine/files/coefficient_file.h"

#include "engine/files/saved_filter.h"
#include "engine/files/text_file.h"
#include "tests/support/scripted_front_end.h"
#include "tests/support/text_lines.h"

#include <cmath>
#include <complex>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <span>
#include <sstream>

using namespace brisel;
namespace fs = std::filesystem;

namespace {

using test::joined;
using test::lines_of;

/// A folder of its own that is the current one as long as the object lives.
struct CurrentFolder {
  fs::path before = fs::current_path();
  fs::path path = fs::temp_directory_path() / ("brisel_flt_" + std::to_string(::getpid()));
  CurrentFolder() {
    fs::create_directories(path);
    fs::current_path(path);
  }
  ~CurrentFolder() {
    fs::current_path(before);
    fs::remove_all(path);
  }
};

std::string content(const fs::path &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

void start_design(DesignMethod method, bool quantize, bool fixed, int bits) {
  design_record.valid = 1;
  design_record.selections = {};
  design_record.selections.DesignOrAnalysisType = code(method);
  design_record.quantization = {};
  design_record.quantization.quant = quantize;
  design_record.quantization.qtype = fixed;
  design_record.quantization.ibit = bits;
  design_record.loaded = {};
  design_record.loaded.sampling_frequency = two_pi * 8000;
  design_state.fleng = 14;
}

void set_fir(const std::vector<double> &taps, double gain, int shift) {
  FirEntry &fir = design_record.fir;
  fir.length = static_cast<int>(taps.size());
  fir.shift = shift;
  fir.gain = gain;
  fir.fir_type = code(FirSymmetry::symmetric);
  fir.sample_rate = two_pi * 8000;
  std::ranges::copy(taps, fir.coeff.begin());
}

const char *const fixed_fir = "FILTER COEFFICIENT FILE\n"
                              "FIR DESIGN          \n"
                              "SAMPLING FREQUENCY          0.800000E+04 HERTZ\n"
                              "   3                  /* number of taps in decimal     */\n"
                              "   3                  /* number of taps in hexadecimal */\n"
                              "16                    /* number of bits in quantized coefficients (dec) */\n"
                              "  10                  /* number of bits in quantized coefficients (hex) */\n"
                              "-1                    /* shift count in decimal  */\n"
                              "FFFFFFFF  0.500000000E+00 /* shift count (hex), gain multiplier */\n"
                              "      -8192 FFFFE000  /* coefficient of tap     0 */\n"
                              "      16384     4000  /* coefficient of tap     1 */\n"
                              "      -8192 FFFFE000  /* coefficient of tap     2 */\n"
                              "  -.2500000000000000E+00 BFD0000000000000/* coefficient of tap     0 */\n"
                              "  0.5000000000000000E+00 3FE0000000000000/* coefficient of tap     1 */\n"
                              "  -.2500000000000000E+00 BFD0000000000000/* coefficient of tap     2 */\n";
const char *const floating_fir = "FILTER COEFFICIENT FILE\n"
                                 "FIR DESIGN          FLOATING POINT\n"
                                 "SAMPLING FREQUENCY          0.800000E+04 HERTZ\n"
                                 "   2                  /* number of taps in decimal     */\n"
                                 "   2                  /* number of taps in hexadecimal */\n"
                                 "52                    /* number of bits in quantized coefficients (dec) */\n"
                                 "  34                  /* number of bits in quantized coefficients (hex) */\n"
                                 "  0.500000000000000000E+00 /* coefficient of tap     0 */\n"
                                 "  -.125000000000000000E+00 /* coefficient of tap     1 */\n";
// H = 0.75 (0.25 + 1.5 z^-1 + 0.25 z^-2) / (1 - 1.5 z^-1 + 0.625 z^-2) * (0.5 + 0.5 z^-1) / (1 - 0.25 z^-1)
const char *const fixed_cascade = "FILTER COEFFICIENT FILE\n"
                                  "IIR DESIGN\n"
                                  "FILTER TYPE                 BAND PASS\n"
                                  "ANALOG FILTER TYPE          ELLIPTIC\n"
                                  "PASSBAND RIPPLE IN -dB        -.1000E+00\n"
                                  "STOPBAND RIPPLE IN -dB        -.6000E+02\n"
                                  "PASSBAND CUTOFF FREQUENCIES 0.100000E+04 0.200000E+04 HERTZ\n"
                                  "STOPBAND CUTOFF FREQUENCIES 0.800000E+03 0.220000E+04 HERTZ\n"
                                  "SAMPLING FREQUENCY          0.800000E+04 HERTZ\n"
                                  "FILTER DESIGN METHOD: INVARIANT IMPULSE\n"
                                  "FILTER ORDER            3    3h\n"
                                  "NUMBER OF SECTIONS      2    2h\n"
                                  "NO. OF QUANTIZED BITS  16   10h\n"
                                  "QUANTIZATION TYPE - FRACTIONAL FIXED POINT\n"
                                  "COEFFICIENTS SCALED FOR CASCADE FORM II\n"
                                  "          0        0     /* shift count for overall gain */\n"
                                  "      24576     6000     /* overall gain                 */\n"
                                  "          1        1     /* Section 1 shift count        */\n"
                                  "       4096     1000     /* Section 1 Coeff B0           */\n"
                                  "      24576     6000     /* Section 1 Coeff B1           */\n"
                                  "       4096     1000     /* Section 1 Coeff B2           */\n"
                                  "      24576     6000     /* Section 1 Coeff -A1          */\n"
                                  "     -10240 FFFFD800     /* Section 1 Coeff -A2          */\n"
                                  "          0        0     /* Section 2 shift count        */\n"
                                  "      16384     4000     /* Section 2 Coeff B0           */\n"
                                  "      16384     4000     /* Section 2 Coeff B1           */\n"
                                  "          0        0     /* Section 2 Coeff B2           */\n"
                                  "       8192     2000     /* Section 2 Coeff -A1          */\n"
                                  "          0        0     /* Section 2 Coeff -A2          */\n"
                                  "0.25000000E+00        /* Section 1 Coeff B0 */\n"
                                  "0.15000000E+01        /* Section 1 Coeff B1 */\n"
                                  "0.25000000E+00        /* Section 1 Coeff B2 */\n"
                                  "0.15000000E+01        /* Section 1 Coeff -A1 */\n"
                                  "-.62500000E+00        /* Section 1 Coeff -A2 */\n"
                                  "0.50000000E+00        /* Section 2 Coeff B0 */\n"
                                  "0.50000000E+00        /* Section 2 Coeff B1 */\n"
                                  "0.00000000E+00        /* Section 2 Coeff B2 */\n"
                                  "0.25000000E+00        /* Section 2 Coeff -A1 */\n"
                                  "0.00000000E+00        /* Section 2 Coeff -A2 */\n";

/// Sections as the quantizer leaves them: divided by 2^shift.
void set_sections(SectionEntry &entry) {
  entry = {};
  entry.section_count = 2;
  entry.order = 3;
  entry.sample_rate = two_pi * 8000;
  entry.gain = 0.75;
  entry.pars = 1.5;
  entry.shift = {1, 0};
  entry.numerators[0] = {0.125, 0.75, 0.125};
  entry.denominators[0] = {0.5, -0.75, 0.3125};
  entry.numerators[1] = {0.5, 0.5, 0};
  entry.denominators[1] = {1, -0.25, 0};
}

std::complex<double> value(const Triple &t, std::complex<double> z) {
  return t[0] + t[1] / z + t[2] / (z * z);
}

/// Response of a section entry, computed here from the definition of its record.
std::complex<double> response(const SectionEntry &entry, bool parallel, std::complex<double> z) {
  std::complex<double> total = entry.gain;
  for (int i = 0; i < entry.section_count; i++) {
    const auto section = value(entry.numerators[i], z) / value(entry.denominators[i], z);
    if (parallel)
      total += section;
    else
      total *= section;
  }
  return parallel ? entry.pars * total : total;
}

/// Writes the current design and makes an entered system of the file again.
std::optional<InputOption> round_trip(int width) {
  const auto text = format_current_coefficient_file(width);
  if (!text) return std::nullopt;
  CoefficientFile image;
  CoefficientReading reading;
  EXPECT_EQ(read_coefficient_text(*text, image, &reading), 0) << reading.reason << "\n" << *text;
  EXPECT_TRUE(image.loaded);
  EXPECT_EQ(format_coefficient_file(image, width)->size(), text->size());
  return coefficients_to_system(image, z_entries);
}

} // namespace

TEST(FirCoefficientFile, IsWrittenAsLaidOut) {
  ScriptedFrontEnd screen;
  start_design(DesignMethod::equiripple, true, true, 16);
  set_fir({-0.25, 0.5, -0.25}, 0.5, -1);
  EXPECT_EQ(*format_current_coefficient_file(14), fixed_fir);
  start_design(DesignMethod::window, false, true, 16);
  set_fir({0.5, -0.125}, 1, 0);
  EXPECT_EQ(*format_current_coefficient_file(14), floating_fir) << "52 bits when nothing was quantized";
  EXPECT_EQ(design_record.quantization.ibit, 16);
}

TEST(FirCoefficientFile, ReadsBackAsTheSameFilter) {
  ScriptedFrontEnd screen;
  std::mt19937 random(3);
  std::uniform_real_distribution<double> value(-1, 1);
  struct Row {
    const char *name;
    bool fixed;
    int bits, length;
    double symmetry; // 1, -1, 0
    InputOption option;
  };
  for (const Row &row : {Row{"symmetric, even", false, 52, 40, 1, InputOption::symmetric_fir},
                         Row{"antisymmetric, odd", false, 52, 41, -1, InputOption::antisymmetric_fir},
                         Row{"nonsymmetric", false, 52, 33, 0, InputOption::nonsymmetric_fir},
                         Row{"fixed", true, 16, 41, 1, InputOption::symmetric_fir},
                         Row{"fixed, 32 bits", true, 32, 12, 0, InputOption::nonsymmetric_fir},
                         Row{"one tap", false, 52, 1, 1, InputOption::symmetric_fir}}) {
    std::vector<double> taps(row.length);
    for (double &tap : taps)
      tap = row.fixed ? std::ldexp(std::trunc(std::ldexp(value(random), row.bits - 1)), 1 - row.bits) : value(random);
    if (row.fixed) taps[0] = 1; // 2^31 with 32 bits
    for (int i = 0; i < row.length / 2 && row.symmetry != 0; i++) taps[row.length - 1 - i] = row.symmetry * taps[i];
    if (row.symmetry < 0) taps[row.length / 2] = 0;
    start_design(DesignMethod::equiripple, row.fixed, row.fixed, row.bits);
    set_fir(taps, row.fixed ? 0.375 : 1, 0);
    const auto option = round_trip(14);
    ASSERT_EQ(option, row.option) << row.name;
    const FirEntry &fir = z_entries.fir[code(*option) - 7];
    EXPECT_EQ(fir.length, row.length);
    EXPECT_NEAR(fir.sample_rate, two_pi * 8000, 1e-9);
    EXPECT_EQ(fir.gain, row.fixed ? 0.375 : 1);
    const bool half = row.symmetry != 0;
    for (int i = 0; i < (half ? fir.unique_count : fir.length); i++) {
      const double tap = taps[half ? fir.unique_count - 1 - i : i];
      // 18 digits are written, the scaling to them rounds a few times.
      EXPECT_NEAR(fir.coeff[i], tap, row.fixed ? 0 : std::fabs(tap) * 1.5e-15) << row.name << " " << i;
    }
  }
  // The gain of an entered filter has no line of its own in a floating-point file.
  start_design(DesignMethod::z_analysis, false, true, 16);
  design_record.selections.z_input_option = code(InputOption::nonsymmetric_fir);
  set_fir({0.5, 0.25}, 3, 0);
  ASSERT_EQ(round_trip(14), InputOption::nonsymmetric_fir);
  EXPECT_NEAR(z_entries.fir[2].coeff[0] * z_entries.fir[2].gain, 1.5, 1e-14);
}

TEST(IirCoefficientFile, IsWrittenAsLaidOut) {
  ScriptedFrontEnd screen;
  start_design(DesignMethod::iir, true, true, 16);
  design_record.selections.analog_type = code(AnalogPrototype::elliptic);
  design_record.selections.ZTransformMethod = code(ZTransform::impulse_invariant);
  design_record.quantization.rtype1 = code(SectionStructure::canonic);
  design_record.realization = code(RealizationForm::cascade);
  FilterSpec &loaded = design_record.loaded;
  loaded.type = code(FilterType::band_pass);
  loaded.passband_ripple = 0.1;
  loaded.stopband_ripple = 60;
  loaded.passband_edge = {two_pi * 1000, two_pi * 2000};
  loaded.stopband_edge = {two_pi * 800, two_pi * 2200};
  set_sections(design_record.z_quantized.cascade);
  EXPECT_EQ(*format_current_coefficient_file(14), fixed_cascade);

  CoefficientFile image;
  ASSERT_EQ(read_coefficient_text(fixed_cascade, image), 0);
  EXPECT_EQ(image.filter_type, 2);
  EXPECT_EQ(image.count, 3);
  EXPECT_EQ(image.scaling, ScalingCode::cascade_2);
  EXPECT_EQ(image.gain_word, 24576);
  EXPECT_EQ(image.section_integers[0].shift, 1);
  EXPECT_EQ(image.section_integers[0].b, (std::array<std::int64_t, 3>{4096, 24576, 4096}));
  EXPECT_EQ(image.section_integers[0].a, (std::array<std::int64_t, 2>{-24576, 10240})) << "as the denominator has them";
  EXPECT_EQ(image.passband_ripple, 0.1);
  EXPECT_NEAR(image.stopband_edge[1], two_pi * 2200, 1e-9);
}

TEST(IirCoefficientFile, EverySectionFormReadsBackAsTheSameFilter) {
  struct Row {
    const char *name;
    RealizationForm form;
    bool quantize, fixed;
    int structure;
    const char *scaled_for;
    const char *quantization;
  };
  const Row rows[] = {
      {"transposed", RealizationForm::cascade, true, true, 0, "CASCADE FORM I\n", "FRACTIONAL"},
      {"canonic", RealizationForm::cascade, true, true, 1, "CASCADE FORM II\n", "FRACTIONAL"},
      {"five multiplies in fixed point", RealizationForm::cascade, true, true, 3, "IMPLEMENTATION\n", "FRACTIONAL"},
      {"floating", RealizationForm::cascade, true, false, 0, "FLOATING POINT IMPLEMENTATION\n", "- FLOATING"},
      {"unquantized", RealizationForm::cascade, false, true, 0, "FLOATING POINT IMPLEMENTATION\n", "- FLOATING"},
      {"sum", RealizationForm::parallel, true, true, 0, "PARALLEL FORM I (TRANSPOSE FORM)\n", "FRACTIONAL"},
      {"floating sum", RealizationForm::parallel, true, false, 0, "IMPLEMENTATION - SUM\n", "- FLOATING"},
  };
  ScriptedFrontEnd screen;
  for (const Row &row : rows)
    for (const bool own_leading : {false, true}) {
      const bool fixed = row.quantize && row.fixed;
      start_design(DesignMethod::iir, row.quantize, row.fixed, 16);
      design_record.quantization.rtype1 = row.structure;
      design_record.realization = code(row.form);
      const bool parallel = row.form == RealizationForm::parallel;
      SectionEntry &entry = parallel ? design_record.z_quantized.parallel : design_record.z_quantized.cascade;
      set_sections(entry);
      if (!fixed) entry.numerators[1] = {1, 0.5, 0.25}; // the short form
      if (own_leading) entry.denominators[0][0] = 0.625;
      const auto text = format_current_coefficient_file(22);
      ASSERT_TRUE(text);
      EXPECT_NE(text->find(row.scaled_for), text->npos) << row.name;
      const bool block = own_leading && fixed && row.structure < 2;
      EXPECT_NE(text->find(block ? "BLOCK FLOATING" : row.quantization), text->npos) << row.name;
      if (!fixed && !parallel) {
        EXPECT_NE(text->find("Section 2 Coeff B2"), text->npos);
        EXPECT_EQ(text->find("Section 2 Coeff B0"), text->npos);
      }
      ASSERT_EQ(round_trip(22), parallel ? InputOption::sum : InputOption::product) << row.name;
      const SectionEntry &back = parallel ? z_entries.sum : z_entries.product;
      SectionEntry truth = entry;
      for (int i = 0; i < 2; i++)
        for (int k = 0; k < 3; k++) {
          // What is common to both triples of a section cancels.
          truth.numerators[i][k] = std::ldexp(truth.numerators[i][k], truth.shift[i]);
          truth.denominators[i][k] = std::ldexp(truth.denominators[i][k], truth.shift[i]);
        }
      for (int i = 0; i <= 32; i++) {
        const auto z = std::polar(1.0, i * M_PI / 32);
        // 16 digits of the reals; the integers are exact.
        EXPECT_LT(std::abs(response(back, parallel, z) - response(truth, parallel, z)), 3e-14) << row.name << " " << i;
      }
    }
}

TEST(IirCoefficientFile, TheGainWordIsAtLeastHalfScale) {
  ScriptedFrontEnd screen;
  for (const double gain : {1.0, 0.99996948242187500, 0.5, 3.0517578125e-05, -0.75, 5.0, 0.0}) {
    start_design(DesignMethod::iir, true, true, 16);
    design_record.realization = code(RealizationForm::cascade);
    set_sections(design_record.z_quantized.cascade);
    design_record.z_quantized.cascade.gain = gain;
    CoefficientFile image;
    ASSERT_EQ(read_coefficient_text(*format_current_coefficient_file(14), image), 0);
    EXPECT_EQ(image.gain_multiplier, gain);
    if (gain != 0) {
      EXPECT_GE(std::llabs(image.gain_word), 16384) << gain;
      EXPECT_LT(std::llabs(image.gain_word), 32768) << gain;
    }
  }
}

TEST(IirCoefficientFile, ListFormsReadBackAsTheyWere) {
  ScriptedFrontEnd screen;
  start_design(DesignMethod::iir, true, true, 16);
  IirForms &forms = design_record.z_quantized;
  forms.ratio = {};
  forms.ratio.numerator_order = 1;
  forms.ratio.denominator_order = 3;
  forms.ratio.sample_rate = two_pi;
  forms.ratio.gain = 0.3;
  forms.ratio.numerator = {1, -0.5};
  forms.ratio.denominator = {1, -1.2e-100, 0.7, -0.1};
  forms.lattice = {};
  forms.lattice.order = 3;
  forms.lattice.lead = 2;
  forms.lattice.sample_rate = two_pi;
  forms.lattice.gain = 2;
  forms.lattice.kappa = {0, 0.5, -0.25, 0.125};
  forms.lattice.gamma = {1, 2, 3, 4, 5, 6};
  forms.ladder_1 = {};
  forms.ladder_1.order = 2;
  forms.ladder_1.lead = 1;
  forms.ladder_1.alpha_count = 6;
  forms.ladder_1.sample_rate = two_pi;
  forms.ladder_1.gain = -1;
  forms.ladder_1.alpha = {0.5, 1, 2, 3, 4, 5};
  forms.ladder_2 = forms.ladder_1;
  forms.ladder_2.form = 1;
  forms.ladder_2.lead = 0;
  forms.ladder_2.alpha_count = 5;

  for (const int width : {14, 22}) {
    design_record.realization = code(RealizationForm::ratio);
    ASSERT_EQ(round_trip(width), InputOption::ratio);
    EXPECT_EQ(z_entries.ratio.numerator_order, 1);
    EXPECT_EQ(z_entries.ratio.denominator_order, 3);
    EXPECT_NEAR(z_entries.ratio.gain, 0.3, 1e-15);
    EXPECT_NEAR(z_entries.ratio.denominator[1] / -1.2e-100, 1, 1e-13) << "three digits of the exponent";
    EXPECT_EQ(z_entries.ratio.denominator[2], 0.7);

    design_record.realization = code(RealizationForm::lattice);
    ASSERT_EQ(round_trip(width), InputOption::lattice);
    EXPECT_EQ(z_entries.lattice.lead, 2);
    EXPECT_EQ(z_entries.lattice.kappa, forms.lattice.kappa);
    EXPECT_EQ(z_entries.lattice.gamma, forms.lattice.gamma);

    design_record.realization = code(RealizationForm::ladder_1);
    ASSERT_EQ(round_trip(width), InputOption::ladder_1);
    EXPECT_EQ(z_entries.ladder_1.alpha, forms.ladder_1.alpha);
    EXPECT_EQ(z_entries.ladder_1.lead, 1);
    EXPECT_EQ(z_entries.ladder_1.gain, -1);

    design_record.realization = code(RealizationForm::ladder_2);
    ASSERT_EQ(round_trip(width), InputOption::ladder_2);
    EXPECT_EQ(z_entries.ladder_2.alpha_count, 5);
    EXPECT_EQ(z_entries.ladder_2.form, 1);
  }
}

TEST(CoefficientFile, MalformedTextGivesItsStatus) {
  struct Row {
    const char *name;
    const char *text;
    int line; // replaced
    std::string by;
    int status;
    int result;
  };
  const Row rows[] = {
      {"foreign", fixed_fir, 1, "FILTER SPECIFICATION FILE", 3, 2},
      {"second line", fixed_fir, 2, "FIR FILTER", 5, 2},
      {"second line empty", fixed_fir, 2, "", 5, 2},
      {"variant", fixed_fir, 2, "XIR DESIGN", 6, 2},
      {"fixed point read as floating", fixed_fir, 2, "FIR DESIGN          FLOATING POINT", 16001 + 1, 1},
      {"no unit", fixed_fir, 3, "SAMPLING FREQUENCY          0.800000E+04", 10001, 2},
      {"no sampling frequency", fixed_fir, 3, "SAMPLING FREQUENCY          0 HERTZ", 10001, 2},
      {"no taps", fixed_fir, 4, "   0", 10003, 2},
      {"negative taps", fixed_fir, 4, "  -3", 10003, 2},
      {"a million taps", fixed_fir, 4, "1000000", 10003, 2},
      {"2^31 taps", fixed_fir, 4, "2147483648", 10003, 2},
      {"no bits", fixed_fir, 6, " 0", 10006, 2},
      {"53 bits", fixed_fir, 6, "53", 10006, 2},
      {"shift too large", fixed_fir, 8, "32", 10010, 2},
      {"shift too small", fixed_fir, 8, "-1101", 10010, 2},
      {"gain", fixed_fir, 9, "FFFFFFFF  nan", 10011, 2},
      {"gain missing", fixed_fir, 9, "0.5", 10011, 2},
      {"hexadecimal tap", fixed_fir, 11, "0x4000", 12002, 1},
      {"infinite tap", fixed_fir, 14, "  inf", 16002, 1},
      {"endless line", fixed_fir, 15, std::string(1000000, '0'), 16003, 1},
      {"filter type", fixed_cascade, 3, "FILTER TYPE                 MULTIBAND", 20002, 2},
      {"ripple", fixed_cascade, 5, "PASSBAND RIPPLE IN -dB", 20004, 2},
      {"ripple", fixed_cascade, 6, "STOPBAND RIPPLE IN -dB        nan", 20005, 2},
      {"one of two edges", fixed_cascade, 7, "PASSBAND CUTOFF FREQUENCIES 0.100000E+04 HERTZ", 20006, 2},
      {"edges", fixed_cascade, 8, "", 20007, 2},
      {"sampling", fixed_cascade, 9, "SAMPLING FREQUENCY          -.800000E+04 HERTZ", 20008, 2},
      {"negative order", fixed_cascade, 11, "FILTER ORDER           -1    1h", 20011, 2},
      {"order beyond the capacity", fixed_cascade, 11, "FILTER ORDER          201   C9h", 20011, 2},
      {"order 2^31", fixed_cascade, 11, "FILTER ORDER         2147483648", 20011, 2},
      {"section count", fixed_cascade, 12, "NUMBER OF SECTIONS      3    3h", 20013, 2},
      {"bits", fixed_cascade, 13, "NO. OF QUANTIZED BITS  53   35h", 20015, 2},
      {"quantization type", fixed_cascade, 14, "QUANTIZATION TYPE - FLOATING POINT.", 20017, 2},
      {"scaling", fixed_cascade, 15, "COEFFICIENTS SCALED FOR CASCADE FORM", 20019, 2},
      {"gain shift", fixed_cascade, 16, "32", 26001, 1},
      {"gain", fixed_cascade, 17, "9223372036854775807", 26002, 1},
      {"section shift", fixed_cascade, 18, "32", 26003, 1},
      {"negative section shift", fixed_cascade, 18, "-1", 26003, 1},
      {"feedback integer", fixed_cascade, 22, "1.5", 26007, 1},
      {"real", fixed_cascade, 31, "x", 28002, 1},
      {"section line without B", fixed_cascade, 30, "0.25 /* first */", 28555, 1},
  };
  ScriptedFrontEnd screen;
  const CurrentFolder folder;
  for (const Row &row : rows) {
    auto lines = lines_of(row.text);
    lines.at(row.line - 1) = row.by;
    std::ofstream("bad.flt") << joined(lines);
    CoefficientReading reading;
    screen.complaints.clear();
    EXPECT_EQ(load_coefficient_file("bad.flt", &reading), row.result) << row.name;
    EXPECT_EQ(reading.status, row.status) << row.name << ": " << reading.reason;
    if (row.status < 16000) {
      EXPECT_EQ(reading.line, row.line) << row.name << ": " << reading.reason;
    }
    ASSERT_EQ(screen.complaints.size(), 1u);
    EXPECT_EQ(screen.complaints[0], formatf("filter loading status = %d\nThe last line read from flt file is\n%s\n",
                                            row.status, reading.last_line.c_str()));
    EXPECT_FALSE(coefficient_file.loaded);
    EXPECT_TRUE(coefficient_file.reals.empty() && coefficient_file.integers.empty());
  }
  EXPECT_EQ(load_coefficient_file("absent.flt"), 1);
  EXPECT_EQ(load_coefficient_file("."), 1) << "a folder";
}

TEST(CoefficientFile, AFileThatEndsEarlyGivesTheStatusOfTheMissingLine) {
  ScriptedFrontEnd screen;
  const int fir[] = {2, 4, 10001, 10002, 10004, 10005, 10007, 10010, 10011, 12001, 12002, 12003, 16001, 16002, 16003};
  const int iir[] = {2,     4,     20001, 20003, 20004, 20005, 20006, 20007, 20008, 20009, 20010, 20012, 20014,
                     20016, 20018, 26001, 26002, 26003, 26004, 26005, 26006, 26007, 26008, 26009, 26010, 26011,
                     26012, 26013, 26014, 28001, 28002, 28003, 28004, 28005, 28006, 28007, 28008, 28009, 28010};
  for (const auto &[text, statuses] :
       {std::pair(fixed_fir, std::span<const int>(fir)), std::pair(fixed_cascade, std::span<const int>(iir))}) {
    auto lines = lines_of(text);
    ASSERT_EQ(lines.size(), statuses.size());
    while (!lines.empty()) {
      lines.pop_back();
      CoefficientFile image;
      EXPECT_EQ(read_coefficient_text(joined(lines), image), statuses[lines.size()]) << lines.size();
    }
  }
}

TEST(CoefficientFile, ListsOfTheWrongLengthAreRefused) {
  ScriptedFrontEnd screen;
  start_design(DesignMethod::iir, false, false, 16);
  LatticeEntry &lattice = design_record.z_quantized.lattice;
  lattice = {};
  lattice.order = 2;
  lattice.sample_rate = two_pi;
  lattice.gain = 1;
  design_record.realization = code(RealizationForm::lattice);
  const auto lattice_lines = lines_of(*format_current_coefficient_file(14));
  ASSERT_EQ(lattice_lines.size(), 15u + 1 + 3 + 2);
  struct Row {
    const char *name;
    int removed, doubled;
    int status;
  };
  // The number is that of the value where the list ended; the gain is the first.
  for (const Row row :
       {Row{"the gain", 15, 15, 0}, Row{"a gamma missing", 17, 16, 22004}, Row{"a gamma more", -1, 17, 22006},
        Row{"a kappa missing", 20, 16, 22006}, Row{"a kappa more", -1, 20, 22008}}) {
    auto lines = lattice_lines;
    if (row.doubled >= 0 && row.removed < 0) lines.insert(lines.begin() + row.doubled, lines[row.doubled]);
    if (row.removed >= 0 && row.removed != row.doubled) lines.erase(lines.begin() + row.removed);
    CoefficientFile image;
    CoefficientReading reading;
    EXPECT_EQ(read_coefficient_text(joined(lines), image, &reading), row.status) << row.name << ": " << reading.reason;
  }
  LadderEntry &ladder = design_record.z_quantized.ladder_1;
  ladder = {};
  ladder.order = 2;
  ladder.alpha_count = 5;
  ladder.sample_rate = two_pi;
  design_record.realization = code(RealizationForm::ladder_1);
  auto lines = lines_of(*format_current_coefficient_file(14));
  lines.pop_back();
  CoefficientFile image;
  EXPECT_EQ(read_coefficient_text(joined(lines), image), 22006);
  // A ratio is refused only when its gain is missing; what its buffer cannot take is passed over.
  RatioEntry &ratio = design_record.z_quantized.ratio;
  ratio = {};
  ratio.numerator_order = ratio.denominator_order = 1;
  ratio.sample_rate = two_pi;
  ratio.denominator[0] = 1;
  design_record.realization = code(RealizationForm::ratio);
  lines = lines_of(*format_current_coefficient_file(14));
  lines.push_back(lines.back());
  EXPECT_EQ(read_coefficient_text(joined(lines), image), 0);
  EXPECT_EQ(image.reals.size(), 4u);
  lines.resize(16);
  EXPECT_EQ(read_coefficient_text(joined(lines), image), 0);
  EXPECT_EQ(coefficients_to_system(image, z_entries), std::nullopt) << "no denominator, no system";
  lines.resize(15);
  EXPECT_EQ(read_coefficient_text(joined(lines), image), 22001);
}

TEST(CoefficientFile, WritersRefuseWhatTheyCannotSay) {
  ScriptedFrontEnd screen;
  const CurrentFolder folder;
  std::ofstream("old.flt") << "old";
  const auto last = [&] { return screen.posted.empty() ? Message::about : screen.posted.back().number; };
  design_record.valid = 0;
  EXPECT_EQ(write_coefficient_file("old.flt"), form_not_supported);
  EXPECT_EQ(last(), Message::no_design);
  start_design(DesignMethod::window, false, false, 16);
  set_fir({0.5, INFINITY}, 1, 0);
  EXPECT_EQ(write_coefficient_file("old.flt"), form_not_supported);
  EXPECT_EQ(last(), Message::result_not_finite);
  EXPECT_EQ(write_iir_coefficient_file("old.flt"), form_not_supported);
  EXPECT_EQ(last(), Message::needs_iir_design);
  set_fir({0.5, 0.5}, 1, 0);
  EXPECT_EQ(write_fir_coefficient_file("no folder/x.flt"), cannot_create);
  EXPECT_EQ(last(), Message::cannot_create_file);
  start_design(DesignMethod::iir, true, true, 16);
  design_record.realization = code(RealizationForm::nonlinear);
  EXPECT_EQ(write_coefficient_file("old.flt"), form_not_supported);
  EXPECT_EQ(last(), Message::unsupported_form);
  EXPECT_EQ(content("old.flt"), "old");
}

TEST(LoadCurrentDesign, GoesByWayOfATemporaryFile) {
  ScriptedFrontEnd screen;
  const CurrentFolder folder;
  design_record.valid = 0;
  EXPECT_EQ(load_current_design(), 1);
  EXPECT_EQ(screen.posted.back().number, Message::no_design);
  start_design(DesignMethod::equiripple, false, true, 16);
  EXPECT_EQ(load_current_design(), 2);
  EXPECT_EQ(screen.posted.back().number, Message::not_quantized);

  start_design(DesignMethod::equiripple, true, true, 16);
  set_fir({-0.25, 0.5, -0.25}, 0.5, -1);
  std::ofstream("_temp.flt") << "mine";
  EXPECT_EQ(load_current_design(), 1);
  EXPECT_EQ(screen.posted.back().number, Message::temporary_file_in_the_way);
  EXPECT_EQ(content("_temp.flt"), "mine") << "a file of the user's is not destroyed";
  fs::remove("_temp.flt");
  screen.posted.clear();
  ASSERT_EQ(load_current_design(), 0);
  EXPECT_TRUE(coefficient_file.loaded);
  EXPECT_EQ(coefficient_file.integers, (std::vector<std::int64_t>{-8192, 16384, -8192}));
  EXPECT_EQ(coefficient_file.shift, -1);
  EXPECT_FALSE(fs::exists("_temp.flt"));
  EXPECT_TRUE(screen.posted.empty());
  EXPECT_EQ(design_state.fleng, 14);

  ASSERT_EQ(analyze_coefficient_file(), success);
  EXPECT_EQ(design_state.DesignOrAnalysisType, 6);
  EXPECT_EQ(design_state.z_input_option, code(InputOption::symmetric_fir));
  EXPECT_EQ(design_state.FrequencyMode, 0);
  release_coefficient_file();
  EXPECT_FALSE(coefficient_file.loaded);
  EXPECT_TRUE(coefficient_file.integers.empty());
}
