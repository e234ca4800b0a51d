// fir_rounding_test.cpp - scaling rules, fixed-point rounding and mantissa masks, worked out by hand.
#include "engine/fir/fir_rounding.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

namespace brisel {
namespace {

std::unique_ptr<FirEntry> entry_of(const std::vector<double> &taps, FirSymmetry symmetry = FirSymmetry::symmetric) {
  auto entry = std::make_unique<FirEntry>();
  entry->length = static_cast<int>(taps.size());
  entry->unique_count = (entry->length + 1) / 2;
  entry->odd_length = entry->length % 2;
  entry->fir_type = code(symmetry);
  entry->gain = 1;
  std::copy(taps.begin(), taps.end(), entry->coeff.begin());
  return entry;
}
std::vector<double> taps_of(const FirEntry &entry) {
  return {entry.coeff.begin(), entry.coeff.begin() + entry.length};
}

TEST(FirScale, Rules) {
  struct Case {
    const char *name;
    FirScaling option;
    std::vector<double> taps, scaled;
    double gain;
    int shift;
  };
  const double q = std::ldexp(1.0, -15);
  const double tiny = 4.9406564584124654e-324; // 2^-1074, the smallest double
  const std::vector<Case> cases{
      {"no scaling", FirScaling::none, {0.1, -0.2, 0.1}, {0.1, -0.2, 0.1}, 1, 0},
      {"doubled until a half is reached", FirScaling::half, {0.05, -0.15, 0.05}, {0.2, -0.6, 0.2}, 0.25, -2},
      {"exactly a half stays", FirScaling::half, {0.1, 0.5, 0.1}, {0.1, 0.5, 0.1}, 1, 0},
      {"more than 1 stays", FirScaling::half, {0.1, 1.5, 0.1}, {0.1, 1.5, 0.1}, 1, 0},
      {"largest becomes 1 less a quantum",
       FirScaling::one,
       {0.125, 0.25, 0.125},
       {(1 - q) / 2, 1 - q, (1 - q) / 2},
       0.25 / (1 - q),
       0},
      {"zeros have nothing to scale to a half", FirScaling::half, {0, 0, 0}, {0, 0, 0}, 1, 0},
      {"zeros have nothing to scale to 1", FirScaling::one, {0, 0, 0}, {0, 0, 0}, 1, 0},
      {"the smallest double reaches a half",
       FirScaling::half,
       {0, tiny, 0},
       {0, 0.5, 0},
       std::ldexp(1.0, -1073),
       -1073},
      {"a factor beyond a double is not applied", FirScaling::one, {0, tiny, 0}, {0, tiny, 0}, 1, 0},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    const auto entry = entry_of(c.taps);
    fir_scale(q, *entry, c.option);
    for (std::size_t i = 0; i < c.taps.size(); i++) EXPECT_DOUBLE_EQ(entry->coeff[i], c.scaled[i]);
    EXPECT_DOUBLE_EQ(entry->gain, c.gain);
    EXPECT_EQ(entry->shift, c.shift);
  }
}

TEST(FirFixedQuantize, RoundsByAddingAHalfAndCutting) {
  // In units of 1/128: eight bits.
  const std::vector<double> units{2.5, 2.49, 0.5, 0.49, -0.5, -0.49, -1.2, -1.5, -1.51, -2.2, -2.7, -3, 127.4, 127.5};
  const std::vector<double> rounded{3, 2, 1, 0, 0, 0, 0, -1, -1, -1, -2, -2, 127, 128};
  std::vector<double> taps;
  for (const double u : units) taps.push_back(u / 128);
  const auto entry = entry_of(taps, FirSymmetry::nonsymmetric);
  fir_fixed_quantize(*entry, 8, FirScaling::none);
  for (std::size_t i = 0; i < units.size(); i++) EXPECT_EQ(entry->coeff[i] * 128, rounded[i]) << units[i];
}

TEST(FirFixedQuantize, UpperHalfOfAntisymmetricTaps) {
  struct Case {
    const char *name;
    std::vector<double> units, rounded; // 1/8: four bits
  };
  for (const Case &c : {
           Case{"odd: the antisymmetry that rounding broke comes back", {2.7, -1.6, 0, 1.6, -2.7}, {3, -1, 0, 1, -3}},
           Case{"even: tap M - 1 is negated, the mirror shifted, the last tap left",
                {1, 2, 3, -3, -2, -1},
                {1, 2, -3, -2, -1, 0}},
           Case{"even, two taps", {3, -3}, {-3, -2}},
       }) {
    SCOPED_TRACE(c.name);
    std::vector<double> taps;
    for (const double u : c.units) taps.push_back(u / 8);
    const auto entry = entry_of(taps, FirSymmetry::antisymmetric);
    fir_fixed_quantize(*entry, 4, FirScaling::none);
    for (std::size_t i = 0; i < c.units.size(); i++) EXPECT_EQ(entry->coeff[i] * 8, c.rounded[i]) << i;
  }
}

TEST(FirFixedQuantize, WordLengths) {
  for (const int bits : {2, 16, 32, 52}) {
    const auto entry = entry_of({0.1, -0.7, 0.1});
    fir_fixed_quantize(*entry, bits, FirScaling::one);
    const double s = std::ldexp(1.0, bits - 1);
    for (const double h : taps_of(*entry)) EXPECT_EQ(h * s, std::trunc(h * s)) << bits;
    EXPECT_NEAR(entry->coeff[1], -(1 - 1 / s), 1 / s) << bits;
    EXPECT_DOUBLE_EQ(entry->gain, 0.7 / (1 - 1 / s)) << bits;
  }
}

TEST(FirFloatQuantize, KeepsLeadingMantissaBits) {
  struct Case {
    int bits;
    int kept; // mantissa bits, the hidden one included
  };
  // All 52 stored bits set. From 33 on the shift of the low word wraps and only the high word's 21 bits are left.
  for (const Case &c : {Case{2, 2}, Case{3, 3}, Case{16, 16}, Case{20, 20}, Case{21, 21}, Case{22, 22}, Case{24, 24},
                        Case{31, 31}, Case{32, 32}, Case{33, 21}, Case{40, 21}, Case{52, 21}}) {
    for (const double sign : {1.0, -1.0}) {
      std::vector<double> value{sign * (2 - std::ldexp(1.0, -52)), sign * 0x1.8p-3, 0.0};
      fir_float_quantize(value, c.bits);
      EXPECT_EQ(value[0], sign * (2 - std::ldexp(1.0, 1 - c.kept))) << c.bits;
      EXPECT_EQ(value[1], sign * 0x1.8p-3) << c.bits;
      EXPECT_EQ(value[2], 0) << c.bits;
    }
  }
}

} // namespace
} // namespace brisel
