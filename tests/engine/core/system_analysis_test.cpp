#include "engine/core/system_analysis.h"

#include "engine/analysis/form_conversions.h"
#include "engine/analysis/plot_arrays.h"
#include "engine/core/design_driver.h"
#include "engine/core/start_up.h"
#include "engine/files/design_report.h"
#include "engine/files/spec_file.h"
#include "engine/files/system_file.h"
#include "tests/support/scripted_front_end.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace brisel;

namespace {

struct Engine {
  ScriptedFrontEnd front;
  Engine() {
    StartOptions options;
    options.read_setup = false;
    options.files = {{SystemFile::Kind::memory, ""}, {SystemFile::Kind::memory, ""}};
    program_start(options);
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

TEST(Report, IsWrittenOnlyOnRequestAndInItsOrder) {
  Engine engine;
  ASSERT_EQ(load_filter_spec(BRISEL_SOURCE_DIR "/examples/lowpass.spc"), success);
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
  ASSERT_EQ(load_filter_spec(BRISEL_SOURCE_DIR "/examples/lowpass.spc"), success);
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
