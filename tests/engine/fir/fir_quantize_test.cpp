// fir_quantize_test.cpp - from a designed entry to the working entry: unfolding, settings, trace, notes.
#include "engine/fir/fir_quantize.h"

#include "engine/core/design_state.h"
#include "engine/core/trace.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace brisel {
namespace {

class FirQuantize : public testing::Test {
protected:
  void SetUp() override {
    choose_system_files({{SystemFile::Kind::memory, ""}, {SystemFile::Kind::null_device, ""}});
    reopen_system_files();
    design_notes.clear();
    design_record.selections = {};
    design_record.quantization = {};
  }
  void TearDown() override {
    trace_on = 0;
    close_system_files();
  }

  // Half response, centre first.
  static void design(const std::vector<double> &half, bool odd, FirSymmetry symmetry, FirScaling scaling) {
    FirEntry &entry = design_record.fir_designed;
    entry.unique_count = static_cast<int>(half.size());
    entry.length = 2 * entry.unique_count - (odd ? 1 : 0);
    entry.odd_length = odd;
    entry.fir_type = code(symmetry);
    entry.has_window = 0;
    entry.gain = 1;
    entry.shift = 0;
    entry.gain_option = code(scaling);
    entry.sample_rate = 8000 * two_pi;
    std::copy(half.begin(), half.end(), entry.coeff.begin());
  }
  static std::vector<double> taps(const FirEntry &entry) {
    return {entry.coeff.begin(), entry.coeff.begin() + entry.length};
  }
  static void quantize(bool fixed, int bits) {
    design_record.quantization.quant = 1;
    design_record.quantization.qtype = fixed;
    design_record.quantization.ibit = bits;
    fir_quantize();
  }
  static bool noted(const char *words) {
    return !design_notes.empty() && design_notes[0].find(words) != std::string::npos;
  }
};

TEST_F(FirQuantize, OffLeavesTheUnfoldedTaps) {
  design({0.3, 0.2, -0.1}, true, FirSymmetry::symmetric, FirScaling::half);
  fir_quantize();
  const std::vector<double> all{-0.1, 0.2, 0.3, 0.2, -0.1};
  EXPECT_EQ(taps(design_record.fir), all);
  EXPECT_EQ(taps(design_record.fir_unquantized), all);
  EXPECT_EQ(design_record.fir.gain, 1);
  EXPECT_EQ(design_record.fir.sample_rate, 8000 * two_pi);
  EXPECT_EQ(design_record.selections.symmetry, code(FirSymmetry::symmetric));
  EXPECT_EQ(trace_text().find("After quantization"), std::string::npos);
}

TEST_F(FirQuantize, FixedPointScalesAndRounds) {
  design({0.3, 0.2, -0.1}, true, FirSymmetry::symmetric, FirScaling::half);
  quantize(true, 8);
  // Times 2: 76.8, 51.2 and -25.6 units of 1/128.
  EXPECT_EQ(taps(design_record.fir),
            (std::vector<double>{-25.0 / 128, 51.0 / 128, 77.0 / 128, 51.0 / 128, -25.0 / 128}));
  EXPECT_EQ(design_record.fir.gain, 0.5);
  EXPECT_EQ(design_record.fir.shift, -1);
  EXPECT_EQ(taps(design_record.fir_unquantized), (std::vector<double>{-0.1, 0.2, 0.3, 0.2, -0.1}));
  EXPECT_EQ(design_record.fir_unquantized.gain, 1);
  EXPECT_TRUE(design_notes.empty());
}

TEST_F(FirQuantize, FloatingPointCutsMantissas) {
  design({0.3, 0.1}, false, FirSymmetry::antisymmetric, FirScaling::one);
  quantize(false, 4);
  // 0.3 is 1.2 / 4 and 1.001 in binary below it; 0.1 is 1.6 / 16 and 1.100. No scaling, and no rewriting of the half.
  EXPECT_EQ(taps(design_record.fir), (std::vector<double>{0.09375, 0.28125, -0.28125, -0.09375}));
  EXPECT_EQ(design_record.fir.gain, 1);
  EXPECT_EQ(design_record.selections.symmetry, code(FirSymmetry::antisymmetric));
  EXPECT_TRUE(design_notes.empty());
}

TEST_F(FirQuantize, NotesWhatTheWordCannotHold) {
  design({1.5, -0.2}, true, FirSymmetry::symmetric, FirScaling::none);
  quantize(true, 8);
  EXPECT_TRUE(noted("1.5 does not fit"));
  design_notes.clear();
  design({1e-4, -1e-5}, true, FirSymmetry::symmetric, FirScaling::none);
  quantize(true, 8);
  EXPECT_TRUE(noted("All coefficients are zero"));
  for (const FirScaling scaling : {FirScaling::half, FirScaling::one}) { // neither scales for ever
    design_notes.clear();
    design({0, 0}, true, FirSymmetry::symmetric, scaling);
    quantize(true, 8);
    EXPECT_TRUE(noted("All coefficients are zero"));
    EXPECT_EQ(design_record.fir.gain, 1);
  }
  for (const bool odd : {false, true}) {
    design_notes.clear();
    design({odd ? 0 : 0.3, 0.1}, odd, FirSymmetry::antisymmetric, FirScaling::half);
    quantize(true, 8);
    EXPECT_EQ(noted("breaks the symmetry"), !odd);
  }
}

TEST_F(FirQuantize, TracesBeforeAndAfter) {
  trace_on = 1;
  design({0.3, 0.2, -0.1}, true, FirSymmetry::symmetric, FirScaling::half);
  quantize(true, 8);
  const std::string text = trace_text();
  std::size_t at = 0;
  for (const char *line : {" FIR Before quantization\n", "\n Fir Filter Entry: id = ", " FIR After quantization\n",
                           "\n Fir Filter Entry: id = "}) {
    at = text.find(line, at);
    ASSERT_NE(at, std::string::npos) << line;
    at++;
  }
}

} // namespace
} // namespace brisel
