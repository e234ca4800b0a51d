#include "codegen/data_files.h"

#include "engine/files/text_file.h"

#include <cmath>
#include <gtest/gtest.h>
#include <sstream>

using namespace brisel;

namespace {

std::vector<double> numbers(std::string text) {
  for (char &c : text)
    if (c == ',') c = ' ';
  std::istringstream in(text);
  std::vector<double> out;
  for (std::string word; in >> word;) out.push_back(parse_number(word).value_or(NAN));
  return out;
}

std::string made(const DataText &text) {
  const auto *good = std::get_if<std::string>(&text);
  return good ? *good : "refused";
}
Message refused(const DataText &text) {
  const auto *why = std::get_if<DataRefusal>(&text);
  return why ? why->number : Message::about;
}

const DesignRecord empty{}; // too large for the stack

class DataFiles : public testing::Test {
protected:
  void SetUp() override {
    design_record = empty;
    design_record.valid = 1;
  }
  void TearDown() override { design_record = empty; }

  static void fir(std::vector<double> taps, double gain) {
    design_record.selections.DesignOrAnalysisType = code(DesignMethod::window);
    for (FirEntry *entry : {&design_record.fir, &design_record.fir_unquantized}) {
      entry->length = static_cast<int>(taps.size());
      entry->fir_type = code(FirSymmetry::symmetric);
      entry->gain = entry == &design_record.fir ? gain : 1;
      entry->sample_rate = 8000 * two_pi;
      std::copy(taps.begin(), taps.end(), entry->coeff.begin());
    }
  }
  static void quantized(int bits) {
    design_record.quantization.quant = design_record.quantization.qtype = 1;
    design_record.quantization.ibit = bits;
  }
  // Two sections stored divided by 2^1 and 2^0, the second of first order.
  static void iir(RealizationForm form) {
    design_record.selections.DesignOrAnalysisType = code(DesignMethod::iir);
    design_record.realization = code(form);
    for (SectionEntry *s : {&design_record.z_quantized.cascade, &design_record.z_quantized.parallel}) {
      s->section_count = 2;
      s->order = 3;
      s->gain = 0.375;
      s->pars = 1.25;
      s->sample_rate = 8000 * two_pi;
      s->numerators[0] = {0.25, 0.5, 0.25};
      s->denominators[0] = {0.5, -0.75, 0.3125};
      s->numerators[1] = {0.5, 0.5, 0};
      s->denominators[1] = {1, -0.25, 0};
      s->shift[0] = 1;
    }
  }
};

TEST_F(DataFiles, ARowVectorIsTheFilterToTheLastBit) {
  fir({1.0 / 3, -2e-17, 0.1, 5e-324, 1.7976931348623157e308, 0}, 1);
  EXPECT_EQ(numbers(made(matlab_text())),
            (std::vector<double>{1.0 / 3, -2e-17, 0.1, 5e-324, 1.7976931348623157e308, 0}));
  fir({0.25, 0.75, 0.25}, 0.5);
  EXPECT_EQ(made(matlab_text()), "0.125 0.375 0.125\n");
  fir({0.25, 1e308, 0.25}, 1e10);
  EXPECT_EQ(refused(matlab_text()), Message::result_not_finite);
}

TEST_F(DataFiles, AMatrixHasTheGainAndLeadingOnes) {
  iir(RealizationForm::cascade);
  EXPECT_EQ(made(matlab_text()), "0.1875 0.375 0.1875 1 -1.5 0.625\n0.5 0.5 0 1 -0.25 0\n");
  design_record.z_quantized.cascade.gain = 0; // as the record of a form that does not exist
  EXPECT_EQ(refused(matlab_text()), Message::unsupported_form);
}

TEST_F(DataFiles, SectionsMadeFromAnotherFormGetItsDelayBack) {
  SectionEntry cascade{};
  cascade.section_count = 2;
  cascade.gain = 2;
  cascade.numerators = {{{1, 0, 0}, {1, 0.5, 0}}};
  cascade.denominators = {{{1, -0.5, 0.25}, {1, -0.25, 0}}};
  const struct {
    int delay;
    SectionMatrix rows;
  } cases[] = {{0, {{2, 0, 0, 1, -0.5, 0.25}, {1, 0.5, 0, 1, -0.25, 0}}},
               {2, {{0, 0, 2, 1, -0.5, 0.25}, {1, 0.5, 0, 1, -0.25, 0}}},
               {3, {{0, 0, 2, 1, -0.5, 0.25}, {0, 1, 0.5, 1, -0.25, 0}}}};
  for (const auto &row : cases) EXPECT_EQ(section_matrix(cascade, row.delay), row.rows) << row.delay;
  EXPECT_FALSE(section_matrix(cascade, 4)) << "no numerator has room for it";
  EXPECT_FALSE(section_matrix(cascade, -1));
  // What both have in front cancels; a denominator that begins later has no such row.
  cascade.numerators[1] = {0, 1, 0.5};
  cascade.denominators[1] = {0, 1, -0.25};
  EXPECT_EQ(section_matrix(cascade, 0), cases[0].rows);
  cascade.numerators[1] = {1, 1, 0.5};
  EXPECT_FALSE(section_matrix(cascade, 0));
}

TEST_F(DataFiles, EnteredSystemsHaveNoMatlabFile) {
  for (const DesignMethod method : {DesignMethod::z_analysis, DesignMethod::s_analysis}) {
    design_record.selections.DesignOrAnalysisType = code(method);
    EXPECT_EQ(refused(matlab_text()), Message::matlab_needs_design);
  }
}

TEST_F(DataFiles, EveryFormListsItsNumbersInOrder) {
  iir(RealizationForm::cascade);
  IirForms &z = design_record.z_quantized;
  z.ratio.numerator_order = z.ratio.denominator_order = 1;
  z.ratio.gain = 3;
  z.ratio.numerator = {1, 2};
  z.ratio.denominator = {2, 1};
  z.lattice.order = z.lattice.lead = 1;
  z.lattice.gain = 2;
  z.lattice.gamma = {1, 2, 3};
  z.lattice.kappa = {0, 0.5};
  z.ladder_1.order = z.ladder_1.lead = 1;
  z.ladder_1.alpha_count = 4;
  z.ladder_1.gain = 2;
  z.ladder_1.alpha = {9, 1, 2, 3};
  const struct {
    RealizationForm form;
    std::vector<double> list;
  } rows[] = {{RealizationForm::cascade, {0.375, 0.5, 1, 0.5, -1.5, 0.625, 0.5, 0.5, 0, -0.25, 0}},
              {RealizationForm::parallel, {0.46875, 0.625, 1.25, 0.625, -1.5, 0.625, 0.625, 0.625, 0, -0.25, 0}},
              {RealizationForm::ratio, {1.5, 3, 1, 0.5}},
              {RealizationForm::lattice, {2, 4, 6, 0.5}},
              {RealizationForm::ladder_1, {2, 9, 1, 2, 3}}};
  for (const auto &row : rows) {
    design_record.realization = code(row.form);
    EXPECT_EQ(numbers(made(cocentric_text(DatasetFormat::real, false))), row.list) << int(row.form);
  }
  design_record.realization = code(RealizationForm::nonlinear);
  EXPECT_EQ(refused(cocentric_text(DatasetFormat::real, false)), Message::unsupported_form);
}

TEST_F(DataFiles, WordsAreThoseOfTheCoefficientFile) {
  fir({-0.25, 0.5, -0.25}, 0.5);
  EXPECT_EQ(refused(cocentric_text(DatasetFormat::integer, true)), Message::no_coefficient_words);
  quantized(12);
  EXPECT_EQ(made(cocentric_text(DatasetFormat::integer, true)),
            "# FIR filter, taps: 3, sampling frequency 8000 Hz\n# tap 0 and on\n"
            "# a tap is its word / 2^11, times the gain 0.5\n-512\n1024\n-512\n");
  const struct {
    DataFileOptions options;
    const char *text;
  } rows[] = {{{CoefficientStage::unquantized, NumberNotation::decimal, DataLayout::lines}, "-0.25\n0.5\n-0.25\n"},
              {{CoefficientStage::quantized, NumberNotation::decimal, DataLayout::commas}, "-0.125, 0.25, -0.125\n"},
              {{CoefficientStage::quantized, NumberNotation::word, DataLayout::commas}, "-512, 1024, -512\n"},
              {{CoefficientStage::quantized, NumberNotation::hexadecimal, DataLayout::lines}, "E00\n400\nE00\n"},
              {{CoefficientStage::quantized, NumberNotation::hexadecimal, DataLayout::c_array},
               "/* FIR filter, taps: 3, sampling frequency 8000 Hz\n * tap 0 and on\n"
               " * a tap is its word / 2^11, times the gain 0.5\n * words of 12 bits in two's complement\n */\n"
               "#include <stdint.h>\n\nstatic const uint16_t words[3] = {\n    0xE00,\n    0x400,\n    0xE00,\n};\n"}};
  for (const auto &row : rows) EXPECT_EQ(made(data_file_text("/a/words.dat", row.options)), row.text);
  EXPECT_EQ(refused(data_file_text("x", {CoefficientStage::unquantized, NumberNotation::word, {}})),
            Message::no_coefficient_words);
  fir({-0.25, 1, -0.25}, 1);
  EXPECT_EQ(refused(cocentric_text(DatasetFormat::integer, false)), Message::coefficient_word_misfit);
}

TEST_F(DataFiles, SectionWordsComeWithTheirShifts) {
  iir(RealizationForm::cascade);
  quantized(8);
  // gain 0.375 = 96 / 128 / 2, sections in units of 2^-7
  EXPECT_EQ(numbers(made(cocentric_text(DatasetFormat::integer, false))),
            (std::vector<double>{-1, 96, 1, 32, 64, 32, -96, 40, 0, 64, 64, 0, -32, 0}));
  EXPECT_TRUE(has_coefficient_words());
  design_record.quantization.rtype1 = code(SectionStructure::float_4_multiplies);
  EXPECT_FALSE(has_coefficient_words());
}

} // namespace
