// Random designs through generated C under both compilers: the program's impulse response is the engine's.
#include "tests/batch/generated_c.h"

#include "engine/core/records.h"
#include "engine/files/spec_file.h"

#include <chrono>
#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>

using namespace brisel;

namespace {

std::mt19937 generator(2026);

double between(double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(generator);
}
int one_of(int count) {
  return std::uniform_int_distribution<int>(0, count - 1)(generator);
}

/// A lowpass, highpass, bandpass or bandstop filter that no method finds hard.
std::string random_spec() {
  FilterSpec spec{};
  spec.type = one_of(4);
  spec.sampling_frequency = two_pi * 8000;
  spec.passband_ripple = between(0.05, 2);
  spec.stopband_ripple = between(20, 70);
  const double hz = two_pi;
  const double width = between(200, 600) * hz, centre = between(1500, 2500) * hz, reach = between(300, 700) * hz;
  switch (spec.type) {
  case 0:
    spec.passband_edge[0] = centre, spec.stopband_edge[0] = centre + width;
    break;
  case 1:
    spec.passband_edge[0] = centre, spec.stopband_edge[0] = centre - width;
    break;
  case 2:
    spec.passband_edge = {centre - reach, centre + reach};
    spec.stopband_edge = {centre - reach - width, centre + reach + width};
    break;
  default:
    spec.stopband_edge = {centre - reach, centre + reach};
    spec.passband_edge = {centre - reach - width, centre + reach + width};
  }
  return *format_filter_spec(spec);
}

struct Choice {
  std::string options;
  GeneratedC code;
};

Choice random_choice() {
  const bool quantized = one_of(2) != 0, fixed = one_of(2) != 0;
  const std::string bits = std::to_string(12 + one_of(13)); // at most 24: such coefficients are exact in a float
  const std::string kind = quantized ? "float" : "dbl";
  Choice choice;
  choice.code.element = quantized ? "float" : "double";
  choice.code.in_double = quantized;
  const auto code = [&](const char *init, const char *structure) {
    choice.code.init = std::string("init_") + init + "_" + kind;
    choice.code.structure = structure;
  };
  if (one_of(3) == 0) {
    code("fir", "FIR_f");
    choice.options = one_of(2) ? "--method window" : "--method equiripple";
  } else {
    const char *const prototypes[] = {"butterworth", "tschebyscheff", "inverse-tschebyscheff", "elliptic"};
    const char *const forms[] = {"cascade", "parallel", "ratio", "lattice"};
    const int form = one_of(4);
    choice.options = std::string("--method iir --prototype ") + prototypes[one_of(4)] + " --realization " + forms[form];
    choice.options += " --order " + std::to_string(2 * (1 + one_of(form < 2 ? 5 : 3)));
    code(form < 2 ? "biquad" : form == 2 ? "rt2" : "lat", form < 2 ? "IIR_f" : form == 2 ? "RT2_f" : "LAT_f");
    if (quantized && form == 0) {
      const char *const structures[] = {"transposed", "canonic", "float-4", "float-5"};
      choice.options += std::string(" --structure ") + structures[fixed ? one_of(2) : 2 + one_of(2)];
    }
  }
  if (quantized) choice.options += std::string(" --quantize ") + (fixed ? "fixed" : "floating") + " --bits " + bits;
  return choice;
}

} // namespace

TEST(RandomDesigns, FilterInGeneratedCAsInTheEngine) {
  const char *const seconds = std::getenv("BRISEL_RANDOM_CODE_SECONDS");
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds ? std::atoi(seconds) : 2);
  int compared = 0, refused = 0;
  double largest = 0;
  while (std::chrono::steady_clock::now() < end) {
    const Workshop shop;
    shop.write("a.spc", random_spec());
    const Choice choice = random_choice();
    const Outcome made = shop.run("design a.spc " + choice.options + " --c f.c --json a.json");
    if (made.status != 0) { // a filter that this form or word length cannot hold
      EXPECT_EQ(made.status, 1) << choice.options << made.err;
      EXPECT_TRUE(made.is_one_line()) << choice.options << made.err;
      refused++;
      continue;
    }
    const auto object = nlohmann::json::parse(shop.read("a.json"));
    const auto impulse = object["responses"]["impulse"].get<std::vector<double>>();
    const char *const compilers[] = {"gcc", "clang"};
    std::istringstream out(run_generated_c(shop, compilers[compared % 2], choice.code));
    double peak = 0, difference = 0;
    std::size_t i = 0;
    for (double y; i < impulse.size() && out >> y; i++) {
      peak = std::max(peak, std::fabs(impulse[i]));
      difference = std::max(difference, std::fabs(y - impulse[i]));
    }
    ASSERT_EQ(i, std::min<std::size_t>(impulse.size(), 200)) << choice.options << out.str();
    // A float file holds gains that are not quantized to 24 bits; without quantization only the order of the sums
    // differs, which recursive forms of high order amplify.
    EXPECT_LE(difference, (choice.code.in_double ? 1e-5 : 1e-9) * peak) << choice.options << "\n" << shop.read("a.spc");
    largest = std::max(largest, difference / peak);
    compared++;
  }
  EXPECT_GT(compared, 3 * refused);
  std::printf("%d designs compared, largest difference %.2g of the peak; %d refused\n", compared, largest, refused);
}
