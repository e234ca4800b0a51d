#include "codegen/dsp_code.h"
#include "codegen/dspic30.h"
#include "tests/support/source_folder.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

using namespace brisel;

namespace {

const Origin origin{"A. User", "Sat Nov 21 2026", "10:11:12"};

struct Section {
  double b0, b1, b2, a1, a2;
};
// Coefficients below 1, between 1 and 2, and above 2: shifts 0, 1 and 2.
const std::vector<Section> sections{
    {0.25, 0.125, 0.0625, -0.5, 0.25}, {0.25, 0.5, 0.25, -1.5, 0.625}, {0.5, 2.5, 0.5, -0.75, 0.375}};

CoefficientFile iir_image(ScalingCode scaling, double gain) {
  CoefficientFile image;
  image.variant = CoefficientVariant::iir;
  image.section_count = static_cast<int>(sections.size());
  image.count = 2 * image.section_count;
  image.bits = 16;
  image.quantization = QuantizationType::fractional_fixed_point;
  image.scaling = scaling;
  image.sampling_frequency = two_pi * 8000;
  image.gain_multiplier = gain;
  int exponent = 0;
  image.gain_word = static_cast<std::int64_t>(std::frexp(gain, &exponent) * 32768);
  image.shift = exponent;
  for (const Section &s : sections) {
    const double largest =
        std::max({std::fabs(s.b0), std::fabs(s.b1), std::fabs(s.b2), std::fabs(s.a1), std::fabs(s.a2), 1.0});
    SectionIntegers words{};
    while (std::ldexp(1.0, static_cast<int>(words.shift)) < largest) words.shift++;
    const auto word = [&](double c) {
      return static_cast<std::int64_t>(c * 32768 / std::ldexp(1.0, static_cast<int>(words.shift)));
    };
    words.b = {word(s.b0), word(s.b1), word(s.b2)};
    words.a = {word(s.a1), word(s.a2)};
    image.section_integers.push_back(words);
  }
  return image;
}

CoefficientFile fir_image(int taps) {
  CoefficientFile image;
  image.variant = CoefficientVariant::fir;
  image.count = taps;
  image.bits = 16;
  image.quantization = QuantizationType::fir_fixed_point;
  image.sampling_frequency = two_pi * 48000;
  image.gain_multiplier = 0.5;
  for (int i = 0; i < taps; i++) {
    image.integers.push_back((i % 2 ? -1 : 1) * 1000 * (i + 1));
    image.reals.push_back(static_cast<double>(image.integers.back()) / 32768);
  }
  return image;
}

// --- the target: 16-bit words, a 40-bit accumulator in units of 2^-30, and saturation when it is stored

std::int64_t stored(std::int64_t accumulator) {
  EXPECT_LT(std::abs(accumulator), std::int64_t{1} << 39) << "the accumulator overflows";
  return std::clamp<std::int64_t>((accumulator + (1 << 14)) >> 15, -32768, 32767);
}

struct Words {
  std::int64_t b0, b1, b2, minus_a1, minus_a2;
};

// All words are halved, so a product sum is doubled when it is stored.
std::vector<double> run_transposed(const std::vector<Words> &words, int shift, const std::vector<std::int64_t> &input) {
  std::vector<std::int64_t> s1(words.size()), s2(words.size()); // kept at the accumulator's precision
  std::vector<double> output;
  for (std::int64_t x : input) {
    for (std::size_t k = 0; k < words.size(); k++) {
      const Words &w = words[k];
      const std::int64_t y = stored((w.b0 * x + s1[k]) * 2);
      s1[k] = w.b1 * x + w.minus_a1 * y + s2[k];
      s2[k] = w.b2 * x + w.minus_a2 * y;
      x = y;
    }
    output.push_back(std::ldexp(static_cast<double>(x), shift - 15));
  }
  return output;
}

std::vector<double> run_canonic(const std::vector<Words> &words, int shift, const std::vector<std::int64_t> &input) {
  std::vector<std::int64_t> w1(words.size()), w2(words.size());
  std::vector<double> output;
  for (std::int64_t x : input) {
    for (std::size_t k = 0; k < words.size(); k++) {
      const Words &w = words[k];
      const std::int64_t v = stored(((x << 14) + w.minus_a1 * w1[k] + w.minus_a2 * w2[k]) * 2);
      x = stored((w.b0 * v + w.b1 * w1[k] + w.b2 * w2[k]) * 2);
      w2[k] = w1[k];
      w1[k] = v;
    }
    output.push_back(std::ldexp(static_cast<double>(x), shift - 15));
  }
  return output;
}

std::vector<double> run_exact(double amplitude, std::size_t count) {
  std::vector<double> x(count);
  x[0] = amplitude;
  for (const Section &s : sections) {
    double s1 = 0, s2 = 0;
    for (double &v : x) {
      const double y = s.b0 * v + s1;
      s1 = s.b1 * v - s.a1 * y + s2;
      s2 = s.b2 * v - s.a2 * y;
      v = y;
    }
  }
  return x;
}

// The words of a text, one match of the pattern each.
std::vector<std::int64_t> words_of(const std::string &text, const char *pattern) {
  std::vector<std::int64_t> words;
  const std::regex expression(pattern);
  for (auto it = std::sregex_iterator(text.begin(), text.end(), expression); it != std::sregex_iterator(); ++it)
    words.push_back(static_cast<std::int16_t>(std::stoul((*it)[1], nullptr, 16)));
  return words;
}

// Five words a section in the order given as letters: 0 1 2 for b, p q for -a1 -a2.
std::vector<Words> parsed(const std::vector<std::int64_t> &list, std::string_view order) {
  std::vector<Words> out;
  for (std::size_t at = 0; at + order.size() <= list.size() && out.size() < sections.size(); at += order.size()) {
    Words w{};
    for (std::size_t i = 0; i < order.size(); i++) {
      const std::int64_t v = list[at + i];
      (order[i] == '0'   ? w.b0
       : order[i] == '1' ? w.b1
       : order[i] == '2' ? w.b2
       : order[i] == 'p' ? w.minus_a1
                         : w.minus_a2) = v;
    }
    out.push_back(w);
  }
  return out;
}

std::string assembly(const std::string &base, const CoefficientFile &image,
                     CoefficientSpace space = CoefficientSpace::x_data) {
  DsPic30Options options;
  options.space = space;
  return format_dspic30(base, image, options, 200).back().text;
}

const std::string golden_folder = source_file("tests/codegen/golden/");

void expect_golden(const std::string &file, const std::string &text) {
  if (std::getenv("BRISEL_WRITE_GOLDEN")) std::ofstream(golden_folder + file) << text;
  std::ifstream in(golden_folder + file);
  std::ostringstream golden;
  golden << in.rdbuf();
  EXPECT_EQ(text, golden.str()) << file;
}

} // namespace

TEST(DspWords, RunTheDesignInSixteenBits) {
  const CoefficientFile transposed = iir_image(ScalingCode::cascade_1, 0.75),
                        canonic = iir_image(ScalingCode::cascade_2, 0.75);
  const struct {
    const char *name;
    std::string text;
    const char *pattern, *order;
    bool is_transposed;
  } rows[] = {
      {"dsPIC30 transposed", assembly("f", transposed), "\\.hword\t0x([0-9A-F]{4})\t;", "01p2q", true},
      {"dsPIC30 canonic", assembly("f", canonic), "\\.hword\t0x([0-9A-F]{4})\t;", "qp210", false},
      {"ADSP-218x transposed", format_adsp218x("f", transposed, origin), "   0x([0-9a-f]{4}),", "210qp", true},
      {"ADSP-218x canonic", format_adsp218x("f", canonic, origin), "   0x([0-9a-f]{4}),", "qp021", false},
      {"DSP56800 transposed", format_dsp56800("f", transposed, origin), "  0x([0-9a-f]{4})[,;] \\{", "210qp", true},
      {"DSP56800 canonic", format_dsp56800("f", canonic, origin), "  0x([0-9a-f]{4})[,}];? //\\{[-+]", "pq012", false},
  };
  std::vector<std::int64_t> input(100);
  input[0] = 8192; // a quarter: no node of these sections exceeds 1
  const std::vector<double> exact = run_exact(0.25, input.size());
  for (const auto &row : rows) {
    const std::vector<Words> words = parsed(words_of(row.text, row.pattern), row.order);
    ASSERT_EQ(words.size(), sections.size()) << row.name << "\n" << row.text;
    const std::vector<double> y = row.is_transposed ? run_transposed(words, final_shift(transposed, 0), input)
                                                    : run_canonic(words, final_shift(canonic, 0), input);
    // Each store rounds by half a unit; three sections of noise gain below 10 and a final shift of 1 stay within this.
    for (std::size_t i = 0; i < y.size(); i++)
      ASSERT_NEAR(y[i], exact[i], 24 / 32768.0) << row.name << ", sample " << i;
  }
}

TEST(DspWords, FollowTheShiftsOfTheSections) {
  const SectionIntegers halved{0, {0x4000, 0, 0}, 32768, {-0x2000, 0}};
  EXPECT_EQ(section_words(halved).b0, 0x2000);
  EXPECT_EQ(-section_words(halved).a1, 0x1000);
  const SectionIntegers shifted{3, {100, 200, 300}, 4096, {-1000, 500}};
  EXPECT_EQ(section_words(shifted).b1, 200);
  EXPECT_EQ(section_words(shifted).a1, -4000);
  EXPECT_EQ(section_words(shifted).exponent, 3);
  CoefficientFile image = iir_image(ScalingCode::cascade_2, 0.75);
  image.section_integers[0].shift = 3;
  image.section_integers[1].shift = 2;
  image.section_integers[2].shift = 1;
  EXPECT_EQ(final_shift(image, 0), 3);
  const std::string text = assembly("f", image);
  EXPECT_NE(text.find("/8\n"), text.npos);
  EXPECT_NE(text.find(".hword 0xFFFD\n"), text.npos) << "the final shift word";
}

TEST(DspWords, GainWordsKeepTheirAsymmetry) {
  const struct {
    std::int64_t gain, shift;
    const char *closing; // transposed ADSP-218x
  } rows[] = {{16384, 1, "   0x7fff;\n"},
              {12000, 1, "   0x5dc0;\n"},
              {20000, 1, "   0x4e20;\n"},
              {20000, -2, "   0x1388;\n"},
              {-20000, 0, "   0xffffb1e0;\n"}}; // 32 bits of a negative gain
  for (const auto &row : rows) {
    CoefficientFile image = iir_image(ScalingCode::cascade_1, 0.75);
    image.gain_word = row.gain;
    image.shift = row.shift;
    EXPECT_TRUE(format_adsp218x("f", image, origin).ends_with(row.closing)) << row.gain;
  }
  CoefficientFile image = iir_image(ScalingCode::cascade_2, 0.75);
  image.gain_word = 20001;
  image.shift = -1;
  EXPECT_EQ(gain_word(image), 5000);
}

TEST(DspWords, ThatDoNotFitAreRefused) {
  CoefficientFile tap = fir_image(5), section = iir_image(ScalingCode::cascade_2, 0.75);
  tap.integers[3] = 32768;
  section.section_integers[1] = {1, {0, 0, 0}, 16384, {-32768, 0}};
  const auto cascade = [](ScalingCode scaling, double gain) { return iir_image(scaling, gain); };
  const struct {
    CoefficientFile image;
    DspFamily family;
    const char *says; // null: it fits
  } rows[] = {
      {fir_image(5), DspFamily::dspic30, nullptr},
      {tap, DspFamily::dspic30, "tap 3"},
      {section, DspFamily::adsp218x, "-a1 of section 2"},
      {cascade(ScalingCode::cascade_1, 1.5), DspFamily::adsp218x, nullptr},
      {cascade(ScalingCode::cascade_1, -1.5), DspFamily::adsp218x, "-1.5 is too large"}, // its word lost the sign
      {cascade(ScalingCode::cascade_2, 1.5), DspFamily::dsp56800, "1.5 is too large"},
      {cascade(ScalingCode::cascade_2, 1.5), DspFamily::dspic30, nullptr}, // it has no gain word
      {cascade(ScalingCode::cascade_1, 1e-5), DspFamily::adsp218x, "1e-05 is too small"},
  };
  for (const auto &row : rows) {
    const auto why = misfit(row.image, row.family);
    EXPECT_EQ(why.has_value(), row.says != nullptr) << why.value_or(row.says ? row.says : "");
    if (row.says) EXPECT_NE(why.value_or("").find(row.says), std::string::npos) << why.value_or("");
  }
}

TEST(DspWords, TheGainThatAFileDoesNotCarryIsTold) {
  const struct {
    ScalingCode scaling;
    double gain;
    DspFamily family;
    const char *factor; // "" when the file carries the gain
  } rows[] = {
      {ScalingCode::cascade_1, 0.75, DspFamily::adsp218x, ""},
      {ScalingCode::cascade_1, 1, DspFamily::adsp218x, ""},
      {ScalingCode::cascade_1, 1.5, DspFamily::adsp218x, "samples by 2."},
      {ScalingCode::cascade_2, 0.0009, DspFamily::adsp218x, "samples by 1.0532"},
      {ScalingCode::cascade_2, -0.75, DspFamily::dsp56800, ""},
      {ScalingCode::cascade_1, -0.75, DspFamily::dsp56800, "samples by -0.75."},
      {ScalingCode::cascade_2, 0.75, DspFamily::dspic30, "samples by 0.75."},
      {ScalingCode::cascade_2, 1, DspFamily::dspic30, ""},
  };
  for (const auto &row : rows) {
    const std::string note = gain_note(iir_image(row.scaling, row.gain), row.family).value_or("");
    EXPECT_EQ(note.empty(), !*row.factor) << row.gain << note;
    EXPECT_NE(note.find(row.factor), note.npos) << row.gain << note;
  }
}

TEST(DspFiles, AreByteForByteTheGoldenFiles) {
  const CoefficientFile transposed = iir_image(ScalingCode::cascade_1, 0.75),
                        canonic = iir_image(ScalingCode::cascade_2, 0.375);
  const CoefficientFile fir = fir_image(10);
  const struct {
    const char *name;
    const CoefficientFile &image;
  } rows[] = {{"fir", fir}, {"transposed", transposed}, {"canonic", canonic}};
  for (const auto &row : rows) {
    const std::string name = row.name;
    expect_golden(name + "-adsp218x.dsp", format_adsp218x("out/lowpass.dsp", row.image, origin));
    expect_golden(name + "-dsp56800.h", format_dsp56800("out/lowpass.h", row.image, origin));
    for (const bool program : {false, true}) {
      DsPic30Options options;
      options.header = options.simulation = true;
      options.space = program ? CoefficientSpace::program : CoefficientSpace::x_data;
      options.script = program ? PlotScript::octave : PlotScript::matlab;
      for (const GeneratedFile &file : format_dspic30("lowpass", row.image, options, program ? 8001 : 200))
        expect_golden(name + (program ? "-program-" : "-x-") + file.path, file.text);
    }
  }
}

TEST(DspFiles, TableOfTapsBreaksAfterNine) {
  const std::string text = assembly("f", fir_image(10));
  EXPECT_NE(text.find("\t\t.align 32\n"), text.npos);
  EXPECT_NE(text.find(",\t0x2328\n.hword \t0xD8F0\n"), text.npos) << text;
}

TEST(DspFiles, BaseNamesStandInCommandLines) {
  for (const char *good : {"lowpass", "3 dir&/low-pass.v1", "a_b"}) EXPECT_TRUE(is_usable_base_name(good)) << good;
  for (const char *bad : {"", "dir/", "low pass", "3rd", "_low", "-o", "FIR_Filter", "a'b", "a&b", "a\nb", "\xc3\xa4"})
    EXPECT_FALSE(is_usable_base_name(bad)) << bad;
}

TEST(DspFiles, HeaderCannotBeLeft) {
  const Origin evil{"*/ evil", "d", "t"};
  const std::string text = format_dsp56800("a*/b.h", fir_image(3), evil);
  EXPECT_EQ(text.find("*/ evil"), text.npos);
  EXPECT_EQ(text.find("a*/b"), text.npos);
}
