#include "tests/batch/run_brisel.h"

#include <cmath>
#include <complex>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <numbers>

namespace brisel {
namespace {

using Json = nlohmann::ordered_json;
using Complex = std::complex<double>;

class Methods : public testing::Test {
protected:
  Methods() {
    for (const char *name : {"lowpass", "bandpass", "hilbert", "group-delay"})
      shop.write(std::string(name) + ".spc", example(std::string(name) + ".spc"));
  }
  Json design(const std::string &arguments) {
    const Outcome outcome = shop.run("design " + arguments + " --json -");
    EXPECT_EQ(outcome.status, 0) << arguments << "\n" << outcome.err;
    return outcome.status == 0 ? Json::parse(outcome.out) : Json();
  }
  Workshop shop;
};

TEST_F(Methods, EveryFirMethodDesignsAndQuantizes) {
  for (const std::string method : {"window", "equiripple", "linear-programming", "least-squares"}) {
    for (const std::string scaling : {"none", "half", "one"}) {
      const Json result = design("lowpass.spc --method " + method +
                                 " --length 41 --quantize fixed --bits 12 --scaling " + scaling + " --flt f.flt");
      EXPECT_EQ(result["method"], method);
      EXPECT_EQ(result["fir"].contains("window"), method == "window");
      EXPECT_EQ(result["quantization"], Json::parse(R"({"type": "fixed", "bits": 12})"));
      const double gain = result["fir"]["gain"];
      double largest = 0;
      for (std::size_t k = 0; k < 41; k++) {
        const double tap = result["fir"]["coefficients"][k];
        largest = std::max(largest, std::abs(tap));
        EXPECT_EQ(std::remainder(tap, 0x1p-11), 0) << "a multiple of the quantum";
        // Negative taps are cut towards zero after half a quantum was added: one and a half quanta at most.
        EXPECT_NEAR(tap * gain, result["fir"]["unquantized"][k], 1.5 * 0x1p-11 * gain) << method << scaling << k;
      }
      EXPECT_GE(largest, scaling == "one" ? 1 - 0x1p-10 : scaling == "half" ? 0.5 - 0x1p-11 : 0) << method;
      EXPECT_EQ(shop.read("f.flt").find("FILTER COEFFICIENT FILE\n"), 0u);
    }
  }
  // Floating point: 8 bits of mantissa leave every tap within 2^-7 of itself.
  const Json floating = design("lowpass.spc --method equiripple --length 41 --quantize floating --bits 8");
  for (std::size_t k = 0; k < 41; k++) {
    const double exact = floating["fir"]["unquantized"][k];
    EXPECT_NEAR(floating["fir"]["coefficients"][k], exact, 0x1p-7 * std::abs(exact));
  }
  EXPECT_EQ(design("lowpass.spc --method equiripple --length 40 --symmetry antisymmetric")["fir"]["symmetry"],
            "antisymmetric");
}

// The estimates of these miss by little, and the note names the least length of their parity that does not.
TEST_F(Methods, ShortEstimatesNameTheLengthThatMeets) {
  for (const std::string name : {"lowpass", "bandpass", "hilbert"}) {
    const std::string job = name + ".spc --method equiripple";
    int named = 0;
    const Json result = design(job);
    for (const std::string note : result["notes"]) std::sscanf(note.c_str(), "%d taps meet", &named);
    EXPECT_EQ(design(job + " --length " + std::to_string(named))["met"], true) << name << named;
    EXPECT_EQ(design(job + " --length " + std::to_string(named - 2))["met"], false) << name << named;
  }
}

TEST_F(Methods, ACompensatedIirFilterIsFlatBehindItsDroop) {
  // A hold of one sample, and a comb as the mean of its 16 input samples, four times over.
  const auto mean = [](int points, double step) {
    Complex sum = 0;
    for (int i = 0; i < points; i++) sum += std::polar(1.0, i * step);
    return std::abs(sum) / points;
  };
  for (const bool comb : {false, true}) {
    const std::string options = comb ? "--compensation comb --rate-change 16 --stages 4" : "--compensation sinc";
    const Json whole = design("lowpass.spc --realization lattice --report r.txt --frequency-points 601 " + options);
    const Json &told = whole["iir"]["compensation"];
    EXPECT_EQ(told["curve"], comb ? "comb" : "sinc");
    EXPECT_EQ(told.contains("stages"), comb);
    EXPECT_EQ(told["sections"], 1);
    EXPECT_EQ(whole["iir"]["order"], design("lowpass.spc")["iir"]["order"].get<int>() + 2);
    const Json &responses = whole["responses"];
    double low = 1e9, high = 0;
    for (std::size_t i = 0; responses["frequency"][i] <= 1200; i++) {
      const double w = 2 * std::numbers::pi * responses["frequency"][i].get<double>() / 8000;
      const double droop = comb ? std::pow(mean(16, w / 16), 4) : mean(1000, w / 1000);
      const double gain = responses["magnitude"][i].get<double>() * droop;
      low = std::min(low, gain);
      high = std::max(high, gain);
    }
    EXPECT_LE(20 * std::log10(high / low), 0.1 * (1 + 1e-4)) << options;
    EXPECT_LT(told["residual"], 0.01);
    EXPECT_NEAR(told["droop"].get<double>(), comb ? 1.2905 : 0.3239, 1e-4);
    const std::string report = shop.read("r.txt");
    EXPECT_NE(report.find(comb ? "COMPENSATION TYPE:   COMB FILTER COMPENSATION\n" : "COMPENSATION TYPE:   SIN(X)/X\n"),
              report.npos);
    EXPECT_NE(report.find("COMPENSATION:              1 SECTION, RESIDUAL 0.00"), report.npos);
    const Outcome summary = shop.run("design lowpass.spc " + options);
    EXPECT_EQ(summary.out.find("missed"), summary.out.npos) << summary.out;
    for (const char *part :
         {"Bilinear Transformation, compensation\nOrder 9", "compensation residual", "behind the filter"})
      EXPECT_NE(summary.out.find(part), summary.out.npos) << summary.out;
  }
  // FIR filters tell the curve too.
  EXPECT_EQ(design("lowpass.spc --method window --compensation sinc")["fir"]["compensation"],
            Json::parse(R"({"curve": "sinc"})"));
  EXPECT_FALSE(design("lowpass.spc")["iir"].contains("compensation"));
}

TEST_F(Methods, TheSummaryShowsTheQuantizedFilterBesideTheExactOne) {
  const Outcome outcome = shop.run("design lowpass.spc --method window --quantize fixed --bits 6");
  EXPECT_NE(outcome.out.find("attained  quantized"), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find("missed"), std::string::npos) << "six bits do not hold 60 dB\n" << outcome.out;
}

TEST_F(Methods, OptimizedTapsKeepWhatRoundedOnesMiss) {
  const std::string job = "design lowpass.spc --method equiripple --length 51 --quantize fixed --bits 12";
  EXPECT_NE(shop.run(job).out.find("missed"), std::string::npos);
  const Outcome optimized = shop.run(job + " --optimize 10");
  EXPECT_EQ(optimized.out.find("missed"), std::string::npos) << optimized.out;
  EXPECT_NE(optimized.out.find("Optimization changed"), std::string::npos) << optimized.out;
  // Where the search does not apply, the rounded taps stay, and a note says why.
  const Outcome not_symmetric = shop.run(job + " --minimum-phase dft --optimize 10");
  EXPECT_NE(not_symmetric.out.find("were not optimized"), std::string::npos) << not_symmetric.out;
}

TEST_F(Methods, LeastSquaresHasASolver) {
  const Json taps = design("lowpass.spc --method least-squares --length 63")["fir"]["coefficients"];
  // Octave 7.3, signal 1.4.3: firls(62, [0 0.3 0.42 1], [1 1 0 0], w), w the squares of the equiripple weights
  // dmax / dp and dmax / ds with dp = (1 - a) / (1 + a), a = 10^-0.005, ds = 2e-3 / (1 + a).
  EXPECT_NEAR(taps[31], 0.35427033439738886, 1e-12);
  EXPECT_NEAR(taps[0], 0.00014639881759316979, 1e-12);
}

TEST_F(Methods, OptionsWithoutMeaningAreRefused) {
  struct Row {
    const char *arguments;
    const char *says;
  };
  for (const Row &row : {
           Row{"lowpass.spc --method window --symmetry symmetric", "--symmetry: has no meaning for method window"},
           Row{"lowpass.spc --method equiripple --window kaiser", "--window: has no meaning for method equiripple"},
           Row{"lowpass.spc --method equiripple --order 5", "--order: has no meaning"},
           Row{"lowpass.spc --length 5", "--length: has no meaning for method iir"},
           Row{"lowpass.spc --compensation sinc --stages 2", "--stages: needs --compensation comb"},
           Row{"group-delay.spc --compensation sinc",
               "--compensation: has no meaning for a filter of type ARBITRARY GROUP DELAY"},
           Row{"lowpass.spc --scaling half", "--scaling: has no meaning for method iir"},
           Row{"lowpass.spc --method window --bits 12", "--bits: needs --quantize"},
           Row{"lowpass.spc --method window --quantize floating --scaling one", "--scaling: needs --quantize fixed"},
           Row{"lowpass.spc --method window --quantize fixed --bits 33",
               "--bits: 33 is outside 2 to 32 for fixed point"},
           Row{"lowpass.spc --method window --quantize floating --bits 53", "--bits: 53 is outside 2 to 52"},
           Row{"lowpass.spc --method window --quantize floating --optimize 5", "--optimize: needs --quantize fixed"},
           Row{"hilbert.spc --quantize fixed --optimize 5", "--optimize: has no meaning for a filter of type HILBERT"},
           Row{"lowpass.spc --impulse-path z-first", "--impulse-path: needs --mapping impulse-invariant"},
           Row{"lowpass.spc --realization parallel --structure canonic", "--structure: needs --realization cascade"},
           Row{"lowpass.spc --quantize fixed --structure float-5",
               "--structure: float-5 exists in floating point only"},
           Row{"lowpass.spc --order 201", "--order: 201 is outside 1 to 200"},
           Row{"bandpass.spc --order 7", "--order: 7 is odd"},
           Row{"hilbert.spc --method iir",
               "--method: a filter of type HILBERT TRANSFORMER cannot have method iir, only "
               "window, equiripple, linear-programming, least-squares"},
       }) {
    const Outcome outcome = shop.run(std::string("design ") + row.arguments);
    EXPECT_EQ(outcome.status, 2) << row.arguments;
    EXPECT_TRUE(outcome.is_one_line()) << outcome.err;
    EXPECT_NE(outcome.err.find(row.says), std::string::npos) << row.arguments << "\n" << outcome.err;
  }
}

Complex polynomial(const Json &coefficients, Complex x) {
  Complex sum = 0, power = 1;
  for (const double c : coefficients) {
    sum += c * power;
    power *= x;
  }
  return sum;
}

/// The value of a form at z, by the conventions that docs/command-line.md states.
Complex value(const Json &iir, const std::string &form, Complex z) {
  const Complex delay = 1.0 / z;
  const Json &f = iir[form];
  if (form == "cascade" || form == "parallel") {
    const bool sum = form == "parallel";
    Complex result = sum ? f["direct"].get<double>() : f["gain"].get<double>();
    for (const Json &section : f["sections"]) {
      const Complex term = polynomial(section["numerator"], delay) / polynomial(section["denominator"], delay);
      result = sum ? result + term : result * term;
    }
    return sum ? result * f["scale"].get<double>() : result;
  }
  const double gain = f["gain"];
  if (form == "ratio") return gain * polynomial(f["numerator"], delay) / polynomial(f["denominator"], delay);
  if (form == "pole_zero") {
    Complex result = gain;
    for (const Json &zero : f["zeros"]) result *= z - Complex(zero[0], zero[1]);
    for (const Json &pole : f["poles"]) result /= z - Complex(pole[0], pole[1]);
    return result;
  }
  // Lattice: forward A_m and backward B_m = z^-m A_m(1/z) polynomials, evaluated side by side.
  Complex forward = 1, backward = 1;
  Complex sum = f["gamma"][0].get<double>();
  for (std::size_t m = 0; m < f["kappa"].size(); m++) {
    const double k = f["kappa"][m];
    const Complex next = forward + k * delay * backward;
    backward = k * forward + delay * backward;
    forward = next;
    sum += f["gamma"][m + 1].get<double>() * backward;
  }
  return gain * sum / forward;
}

TEST_F(Methods, EveryFormInTheObjectIsTheSameFilter) {
  for (const std::string arguments :
       {"lowpass.spc", "lowpass.spc --prototype butterworth --order 6", "lowpass.spc --realization parallel",
        "lowpass.spc --realization lattice --quantize fixed --bits 14",
        "bandpass.spc --prototype tschebyscheff --order 8",
        "bandpass.spc --mapping matched-z --order 4 --prototype butterworth"}) {
    const Json result = design(arguments + " --frequency-points 41");
    const Json &iir = result["iir"];
    const double sampling = result["sampling_frequency"];
    for (std::size_t i = 0; i < 41; i++) {
      const double w = 2 * std::numbers::pi * result["responses"]["frequency"][i].get<double>() / sampling;
      const Complex z = std::polar(1.0, w);
      const double magnitude = result["responses"]["magnitude"][i];
      for (const char *form : {"cascade", "parallel", "ratio", "pole_zero", "lattice"})
        EXPECT_NEAR(std::abs(value(iir, form, z)), magnitude, 1e-8) << arguments << ", " << form << ", point " << i;
    }
  }
}

TEST_F(Methods, IirOptionsReachTheDesign) {
  const Json plain = design("lowpass.spc");
  EXPECT_EQ(plain["method"], "iir");
  EXPECT_EQ(plain["iir"]["prototype"], "elliptic");
  EXPECT_EQ(plain["iir"]["mapping"], "bilinear");
  EXPECT_EQ(plain["iir"]["realization"], "cascade");
  EXPECT_FALSE(plain.contains("quantization"));
  EXPECT_EQ(plain["responses"]["impulse"].size(), 200u);
  EXPECT_EQ(design("lowpass.spc --time-points 77")["responses"]["impulse"].size(), 77u);

  // The estimate is the order of the design.
  const Json estimates = Json::parse(shop.run("estimate lowpass.spc --json -").out);
  for (const auto &[prototype, order] : estimates["orders"].items()) {
    const Json designed = design("lowpass.spc --prototype " + prototype);
    EXPECT_EQ(designed["iir"]["order"], order) << prototype;
    EXPECT_EQ(designed["iir"]["prototype"], prototype);
  }
  EXPECT_EQ(design("lowpass.spc --mapping impulse-invariant --impulse-path z-first --order 4")["iir"]["mapping"],
            "impulse-invariant");

  const Json quantized = design("lowpass.spc --quantize fixed --bits 14 --structure canonic");
  const std::size_t sections = quantized["iir"]["cascade"]["sections"].size();
  EXPECT_EQ(quantized["quantization"]["structure"], "canonic");
  for (const char *key : {"section_noise_gains", "section_shifts"})
    EXPECT_EQ(quantized["quantization"][key].size(), sections) << key;
  for (const char *key : {"node_peaks", "node_peak_frequencies", "scaled_node_peaks"})
    EXPECT_EQ(quantized["quantization"][key].size(), sections + 1) << key;
}

TEST_F(Methods, JsonHasEveryFormThatExists) {
  const Json designed = design("lowpass.spc --realization ladder-1 --order 4")["iir"];
  for (const char *ladder : {"ladder_1", "ladder_2"}) EXPECT_EQ(designed[ladder]["alpha"].size(), 9u) << ladder;

  const std::string start = "DIGITAL SYSTEM ANALYSIS - Z DOMAIN INPUT\nINPUT OPTION - PRODUCT OF 2ND ORDER SECTIONS\n"
                            "SAMPLING FREQUENCY           8.00000e+03 HERTZ\nINITIAL GAIN  5.00000000e-01\n"
                            "NUMBER OF SECTIONS   1\nNUMERATOR COEFFICIENTS\n";
  const std::string rest = " 0.00000000e+00  0.00000000e+00\n";
  shop.write("gain.inp", start + " 3.00000000e+00 " + rest + "DENOMINATOR COEFFICIENTS\n 1.00000000e+00 " + rest);
  const Json forms = Json::parse(shop.run("analyze gain.inp --json -").out)["iir"];
  EXPECT_EQ(forms["cascade"], Json::parse(R"({"gain": 1.5, "sections": []})"));
  EXPECT_EQ(forms["pole_zero"], Json::parse(R"({"gain": 1.5, "poles": [], "zeros": []})"));
  EXPECT_EQ(forms["lattice"], Json::parse(R"({"gain": 1.5, "kappa": [], "gamma": [1.0]})"));
  EXPECT_EQ(forms["ladder_1"], Json::parse(R"({"gain": 1.5, "lead": [], "alpha": [1.0]})"));

  EXPECT_EQ(shop.run("design hilbert.spc --json -").out.find("-0.0,"), std::string::npos) << "the tap in the middle";

  std::string huge = example("lattice.inp");
  shop.write("huge.inp", huge.replace(huge.find(" 2.50000000e-01"), 15, " 1.00000000e308"));
  const Outcome refused = shop.run("analyze huge.inp --report a.rep --detail");
  EXPECT_EQ(refused.status, 1);
  EXPECT_TRUE(refused.is_one_line()) << refused.err;
}

// 0.005 dB, less than what compensation sections used to leave.
TEST_F(Methods, CompensationKeepsASmallRipple) {
  std::string tight = example("lowpass.spc");
  shop.write("tight.spc", tight.replace(tight.find("-.1000E+00"), 10, "-.5000E-02"));
  const Json result = design("tight.spc --compensation sinc");
  EXPECT_EQ(result["attained"][0]["quantity"], "ripple");
  EXPECT_EQ(result["attained"][0]["met"], true) << result["attained"][0];
}

TEST_F(Methods, JsonSaysWhatQuantizationDid) {
  std::string narrow = example("lowpass.spc");
  for (const auto &[from, to] : {std::pair{"0.120000E+04", "0.200000E+02"}, {"0.168000E+04", "0.280000E+02"}})
    narrow.replace(narrow.find(from), 12, to);
  shop.write("narrow.spc", narrow);
  std::string exact = example("lowpass.spc"); // more digits than its columns hold
  shop.write("exact.spc", exact.replace(exact.find("0.800000E+04"), 12, "8000.125    "));
  struct Row {
    const char *arguments, *type, *note;
    int notes; // that begin so
  };
  const char *const truncated = "Fixed point exists for sections only", *const shifted =
                                                                            "Section 3 is shifted down by 8";
  for (const Row &row : {Row{"lowpass.spc --quantize fixed --realization lattice", "floating", truncated, 1},
                         Row{"lowpass.spc --quantize fixed --realization ladder-1", "floating", truncated, 1},
                         Row{"lowpass.spc --quantize fixed --realization parallel", "fixed", truncated, 0},
                         Row{"narrow.spc --quantize fixed --structure canonic", "fixed", shifted, 1},
                         Row{"narrow.spc --quantize fixed --structure canonic", "fixed", "The quantized filter is", 1},
                         Row{"narrow.spc --quantize fixed", "fixed", shifted, 0},
                         Row{"exact.spc --quantize fixed --spc a.spc", "fixed",
                             "The columns of the specification file do not hold every digit; it has sampling frequency "
                             "8000.125 Hz as 8000.13.",
                             1},
                         Row{"lowpass.spc --quantize fixed --spc a.spc", "fixed", "The columns", 0}}) {
    const Json result = design(row.arguments), notes = result.value("notes", Json::array());
    EXPECT_EQ(result["quantization"]["type"], row.type) << row.arguments;
    const auto begins = [&](const Json &note) { return note.get<std::string>().starts_with(row.note); };
    EXPECT_EQ(std::count_if(notes.begin(), notes.end(), begins), row.notes) << row.arguments << notes;
  }
}

} // namespace
} // namespace brisel
