#include "engine/core/system_analysis.h"

#include "engine/analysis/form_conversions.h"
#include "engine/analysis/plot_arrays.h"
#include "engine/core/design_driver.h"
#include "engine/core/start_up.h"
#include "engine/files/design_report.h"
#include "engine/files/spec_file.h"
#include "engine/files/system_file.h"
#include "tests/support/engine_in_memory.h"
#include "tests/support/scripted_front_end.h"
#include "tests/support/source_folder.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace brisel;

namespace {

struct Engine {
  ScriptedFrontEnd front;
  Engine() {
    test::start_engine_in_memory();
    report_off = true;
  }
  ~Engine() { program_exit(ExitMode::discard); }
};

// The cascade 0.5 (z + 1)^2 / (z^2 - z + 0.5) in the forms that a file can hold, at 8000 Hz.
const char *const z_systems[] = {
    "RATIO OF TWO POLYNOMIALS N(z)/D(z)\nSAMPLING FREQUENCY           8.00000e+03 HERTZ\nINITIAL GAIN  5.00000000e-01\n"
    "NUMERATOR COEFFICIENTS   - HIGHEST ORDER FIRST    3\n 1 2 1\nDENOMINATOR COEFFICIENTS - HIGHEST ORDER FIRST    "
    "3\n 1 -1 0.5\n",
    "z PLANE POLES AND ZEROES\nSAMPLING FREQUENCY           8.00000e+03 HERTZ\nINITIAL GAIN  5.00000000e-01\n"
    "ZEROES OF TRANSFER FUNCTION H(s)     2\n-1 0\n-1 0\nPOLES OF TRANSFER FUNCTION H(s)      2\n0.5 0.5\n0.5 -0.5\n",
    "PRODUCT OF 2ND ORDER SECTIONS\nSAMPLING FREQUENCY           8.00000e+03 HERTZ\nINITIAL GAIN  5.00000000e-01\n"
    "NUMBER OF SECTIONS   1\nNUMERATOR COEFFICIENTS \n 1 2 1\nDENOMINATOR COEFFICIENTS\n 1 -1 0.5\n",
};

std::complex<double> exact(double w) {
  const std::complex<double> z = std::polar(1.0, w);
  return 0.5 * (z + 1.0) * (z + 1.0) / (z * z - z + 0.5);
}

void analyse(const std::string &text) {
  ASSERT_EQ(read_system_text(text, design_state, z_entries, s_entries), 0) << text;
  analyze_system();
}

} // namespace

TEST(SystemAnalysis, KeepsTheGainOfAnEnteredDigitalSystemInEveryForm) {
  const struct {
    const char *system;
    RealizationForm realization;
  } rows[] = {{z_systems[0], RealizationForm::ratio},
              {z_systems[1], RealizationForm::cascade},
              {z_systems[2], RealizationForm::cascade}};
  for (const auto &row : rows) {
    Engine engine;
    analyse(std::string("DIGITAL SYSTEM ANALYSIS - Z DOMAIN INPUT\nINPUT OPTION - ") + row.system);
    ASSERT_TRUE(design_record.valid);
    EXPECT_EQ(design_record.realization, code(row.realization));
    for (int i = 0; i < plot_arrays.frequency_count; i++)
      ASSERT_NEAR(plot_arrays.magnitude[i], std::abs(exact(plot_arrays.frequency[i])), 1e-12) << row.system << i;
    EXPECT_NEAR(plot_arrays.impulse[1], 0.5 * 3, 1e-12);
    EXPECT_EQ(engine.front.announced.back(), "Ready");
  }
}

TEST(SystemAnalysis, SetsTheMaximumGainToOneOnRequest) {
  Engine engine;
  design_state.SDomainAnalysisMaximumGainOption = 1;
  analyse(std::string("DIGITAL SYSTEM ANALYSIS - Z DOMAIN INPUT\nINPUT OPTION - ") + z_systems[2]);
  const auto &magnitude = plot_arrays.magnitude;
  EXPECT_NEAR(*std::max_element(magnitude.begin(), magnitude.begin() + plot_arrays.frequency_count), 1, 1e-9);
}

TEST(SystemAnalysis, MapsAnAnalogSystemOrShowsItAsItIs) {
  // 2 / (1 + s / w0), w0 = 2 pi 1000.
  const std::string text =
      "DIGITAL SYSTEM ANALYSIS - S DOMAIN INPUT\nINPUT OPTION - RATIO OF TWO POLYNOMIALS N(s)/D(s)\n"
      "SAMPLING FREQUENCY           8.00000e+03 HERTZ\nINITIAL GAIN  2.00000000e+00\n"
      "NUMERATOR COEFFICIENTS   - HIGHEST ORDER FIRST    1\n 6283.185307179586\n"
      "DENOMINATOR COEFFICIENTS - HIGHEST ORDER FIRST    2\n 1 6283.185307179586\n";
  const double w0 = two_pi * 1000, fs = 8000;
  const auto analog = [&](double w) { return std::abs(2 * w0 / std::complex<double>(w0, w)); };
  const struct {
    ZTransform method;
    double tolerance;
    std::function<double(double)> expected; // of radians per sample
  } rows[] = {
      {ZTransform::s_domain_only, 1e-12, [&](double w) { return analog(w * fs); }},
      {ZTransform::bilinear, 1e-9, [&](double w) { return analog(2 * fs * std::tan(w / 2)); }},
      {ZTransform::impulse_invariant, 1e-9,
       [&](double w) { return std::abs(2 * w0 / fs / (1.0 - std::exp(-w0 / fs) * std::polar(1.0, -w))); }},
  };
  for (const auto &row : rows) {
    Engine engine;
    design_state.SDomainAnalysisRealizationMethod = static_cast<std::uint8_t>(row.method);
    analyse(text);
    ASSERT_TRUE(design_record.valid);
    for (int i = 0; i + 1 < plot_arrays.frequency_count; i++) // the bilinear map has no value at the last point
      ASSERT_NEAR(plot_arrays.magnitude[i], row.expected(plot_arrays.frequency[i]), row.tolerance * 2)
          << code(row.method) << " point " << i;
  }
  Engine engine;
  design_state.SDomainAnalysisRealizationMethod = code(ZTransform::matched_z);
  analyse(text);
  EXPECT_NEAR(plot_arrays.magnitude[0], 2, 1e-9) << "matched Z keeps the peak";
}

TEST(SystemAnalysis, TakesFirSystemsFromOneTap) {
  Engine engine;
  analyse("DIGITAL SYSTEM ANALYSIS - Z DOMAIN INPUT\nINPUT OPTION - NONSYMMETRIC FIR FILTER\n"
          "SAMPLING FREQUENCY           1.00000e+00 HERTZ\nNUMBER OF TAPS     1 GAIN=  2.000000000e+00\nH(   0) =  "
          "3.000000000e+00\n");
  ASSERT_TRUE(design_record.valid);
  EXPECT_EQ(plot_arrays.time_count, 1);
  EXPECT_DOUBLE_EQ(plot_arrays.magnitude[500], 6);
}

TEST(SystemAnalysis, SetsTheMaximumGainOfEveryKindOfSystem) {
  const std::string z = "DIGITAL SYSTEM ANALYSIS - Z DOMAIN INPUT\nINPUT OPTION - ",
                    s = "DIGITAL SYSTEM ANALYSIS - S DOMAIN INPUT\nINPUT OPTION - ",
                    rate = "SAMPLING FREQUENCY           8.00000e+03 HERTZ\n";
  const std::string systems[] = {
      z + "SYMMETRIC FIR FILTER\n" + rate + "NUMBER OF TAPS     3 GAIN=  2.000000000e+00\nH(   0) =  1\nH(   1) =  5\n",
      z + "ANTISYMMETRIC FIR FILTER\n" + rate + "NUMBER OF TAPS     2 GAIN= -2.000000000e+00\n-H(   0) = 3\n",
      z + "LATTICE FIR FILTER\n" + rate + "NUMBER OF TAPS     1 GAIN=  1.000000000e+00\nH(   0) =  0.5\n",
      s + "PRODUCT OF 2ND ORDER SECTIONS\n" + rate +
          "INITIAL GAIN  3.00000000e+00\nNUMBER OF SECTIONS   1\n\n0 0 1000\n\n0 1 500\n",
  };
  for (const std::string &system : systems) {
    Engine engine;
    design_state.SDomainAnalysisMaximumGainOption = 1;
    design_state.SDomainAnalysisRealizationMethod = code(ZTransform::s_domain_only);
    analyse(system);
    ASSERT_TRUE(design_record.valid) << system;
    const auto &magnitude = plot_arrays.magnitude;
    EXPECT_NEAR(*std::max_element(magnitude.begin(), magnitude.begin() + plot_arrays.frequency_count), 1, 1e-12)
        << system;
    if (is_fir_result()) {
      EXPECT_EQ(design_record.fir.gain < 0, system.find("GAIN= -") != system.npos) << system;
    }
  }
}

// 2000 (s^2 + w^2) over poles at 680 and 955 Hz, w = 2 pi 2500, at 8000 Hz.
const char *const notch = "DIGITAL SYSTEM ANALYSIS - S DOMAIN INPUT\n"
                          "INPUT OPTION - RATIO OF TWO POLYNOMIALS N(s)/D(s)\n"
                          "SAMPLING FREQUENCY           8.00000e+03 HERTZ\nINITIAL GAIN  1.00000000e+00\n"
                          "NUMERATOR COEFFICIENTS   - HIGHEST ORDER FIRST    3\n 2000 0 493480220054.4679\n"
                          "DENOMINATOR COEFFICIENTS - HIGHEST ORDER FIRST    4\n 1 9000 36250000 109500000000\n";

TEST(SystemAnalysis, PrewarpsTheBilinearMap) {
  // SciPy 1.10: signal.bilinear_zpk with the sampling frequency w / (2 tan(w / (2 fs))); for every root on its own with
  // roots r tan(|r| / (2 fs)) / (|r| / (2 fs)) and the gain from the largest magnitudes on 1001 points.
  const struct {
    const char *name;
    double frequency; // hertz
    bool every_root;
    std::array<double, 4> numerator, denominator;
  } rows[] = {
      {"plain",
       0,
       false,
       {0.14182667607792762, 0.13660211018596566, 0.1366021101859657, 0.14182667607792765},
       {1, -1.9301079060582553, 1.3728048522462797, -0.3191339304605402}},
      {"at 1000 Hz",
       1000,
       false,
       {0.1533095700549799, 0.16401148605521598, 0.164011486055216, 0.15330957005497992},
       {1, -1.8749849949102528, 1.31478840898746, -0.298980522978426}},
      {"at the notch",
       2500,
       false,
       {0.2706226117118749, 0.47774819156288534, 0.4777481915628854, 0.27062261171187496},
       {1, -1.4221539616594203, 0.9194725678377362, -0.16520153388900957}},
      {"near half the sampling frequency",
       3900,
       false,
       {3.2240799190490774, 9.62397246682237, 9.62397246682237, 3.224079919049077},
       {1, 2.293612135717243, 1.8741333511996352, 0.534050366613547}},
      {"every root",
       0,
       true,
       {0.10520527382286933, 0.18572590440175887, 0.18572590440175887, 0.10520527382286933},
       {1, -1.8956407166708316, 1.3322489614404431, -0.303164793323693}},
  };
  for (const auto &row : rows) {
    Engine engine;
    ASSERT_EQ(read_system_text(notch, design_state, z_entries, s_entries), 0);
    design_state.prewarp_frequency = row.frequency * two_pi;
    design_state.PrewarpOption = row.every_root;
    analyze_system();
    ASSERT_TRUE(design_record.valid) << row.name;
    const RatioEntry &ratio = design_record.z_quantized.ratio;
    ASSERT_EQ(ratio.denominator_order, 3);
    for (std::size_t i = 0; i < 4; i++) {
      EXPECT_NEAR(ratio.gain * ratio.numerator[i], row.numerator[i], 1e-9 * row.numerator[1]) << row.name << i;
      EXPECT_NEAR(ratio.denominator[i], row.denominator[i], 1e-9) << row.name << i;
    }
    // The analog response, by its own formula, at the frequency that the map keeps.
    if (row.frequency > 0) {
      plot_settings.autoreset = 0;
      plot_settings.frequency_range = {0, two_pi * 2 * row.frequency}; // the middle of 1001 points
      analyze_system();
      const std::complex<double> s(0, two_pi * row.frequency);
      const double analog =
          std::abs((2000.0 * s * s + 493480220054.4679) / (((s + 9000.0) * s + 36250000.0) * s + 109500000000.0));
      EXPECT_NEAR(plot_arrays.magnitude[500], analog, 1e-9) << row.name;
    }
  }
}

TEST(SystemAnalysis, RefusesFrequenciesThatCannotBePrewarped) {
  const struct {
    double frequency;
    bool every_root;
    double rate;
    bool valid;
    ZTransform method = ZTransform::bilinear;
  } rows[] = {{4000, true, 8000, true},   {4000, false, 8000, true, ZTransform::matched_z},
              {4000, false, 8000, false}, {-1, false, 8000, false},
              {3999, false, 8000, true},  {0, true, 5000, false},
              {0, true, 5001, true},      {0, false, 5000, true}};
  for (const auto &row : rows) {
    Engine engine;
    ASSERT_EQ(read_system_text(notch, design_state, z_entries, s_entries), 0);
    s_entries.ratio.sample_rate = row.rate * two_pi;
    design_state.prewarp_frequency = row.frequency * two_pi;
    design_state.PrewarpOption = row.every_root;
    design_state.SDomainAnalysisRealizationMethod = static_cast<std::uint8_t>(row.method);
    analyze_system();
    EXPECT_EQ(design_record.valid != 0, row.valid) << row.frequency << row.every_root;
    if (row.valid) continue;
    ASSERT_FALSE(engine.front.posted.empty());
    EXPECT_EQ(engine.front.posted.back().number, Message::prewarp_impossible);
  }
}

TEST(Report, IsWrittenOnlyOnRequestAndInItsOrder) {
  Engine engine;
  ASSERT_EQ(load_filter_spec(source_file("examples/lowpass.spc")), success);
  design_state.DesignOrAnalysisType = code(DesignMethod::window);
  design_filter();
  EXPECT_EQ(report_text(), "");
  EXPECT_EQ(trace_text().find(" detail output\n"), std::string::npos);

  report_off = false;
  quantization_settings.quant = 1;
  design_filter();
  EXPECT_NE(trace_text().find(" detail output\n"), std::string::npos);
  std::string text = report_text();
  std::size_t at = 0;
  for (const char *line :
       {"FILTER TYPE:LOW PASS                       1H\n", "                FIR DESIGN: Kaiser Window\n",
        "                FILTER LENGTH: 63\n", "\n                IMPULSE COEFFICIENTS PRIOR TO QUANTIZATION\n",
        "        COEFFICENT                        WINDOW                     PRODUCT\n",
        " H(   0) = ", "  WIN(   0) = ", "         COEFFICIENTS ARE QUANTIZED TO   16 BITS\n",
        "\n                IMPULSE COEFFICIENTS AFTER QUANTIZATION\n", "                    H(   0) = "}) {
    const std::size_t found = text.find(line, at);
    ASSERT_NE(found, text.npos) << line << text;
    at = found + 1;
  }
  EXPECT_EQ(text.find("Frequency     Magnitude"), text.npos) << "tables only on request";
}

TEST(Report, OfAnIirDesignShowsPrototypeSectionsAndRoots) {
  Engine engine;
  ASSERT_EQ(load_filter_spec(source_file("examples/lowpass.spc")), success);
  design_state.DesignOrAnalysisType = code(DesignMethod::iir);
  report_off = false;
  plot_settings.detout = 1;
  design_filter();
  ASSERT_TRUE(design_record.valid);
  const std::string text = report_text();
  std::size_t at = 0;
  for (const char *line :
       {"                FILTER ORDER:     7\n", "FILTER DESIGN METHOD:      Bilinear Transformation\n",
        "FILTER REALIZATION METHOD: Cascaded Second Order Sections\n", "ANALOG FILTER TYPE:        Elliptic\n",
        "NORMALIZED ANALOG TRANSFER FUNCTION T(s) - PRODUCT OF SECTIONS\n",
        "NORMALIZED ANALOG TRANSFER FUNCTION H(s) - SUM OF SECTIONS\n",
        "UNNORMALIZED ANALOG TRANSFER FUNCTION T(s) - PRODUCT OF SECTIONS\n\n",
        "UNNORMALIZED ANALOG TRANSFER FUNCTION T(s) - SUM OF SECTIONS\n\n",
        "DIGITAL TRANSFER FUNCTION Hd(z) - PRODUCT OF SECTIONS\n\n", "ZEROS OF THIS TRANSFER FUNCTION\n\n",
        "POLES OF THIS TRANSFER FUNCTION\n\n",
        "\n   Frequency     Magnitude     Log Magnitude Phase         Group Delay\n",
        "\n   Sample    Impulse       Step Response\n", "     1      "}) {
    const std::size_t found = text.find(line, at);
    ASSERT_NE(found, text.npos) << line << text.substr(0, 3000);
    at = found + 1;
  }
}
