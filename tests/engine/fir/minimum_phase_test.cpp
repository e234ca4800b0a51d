// minimum_phase_test.cpp - minimum phase filters against zeros reflected in 80-digit arithmetic, against the magnitude
// of the filter they are made of, and through whole design runs.
#include "engine/fir/minimum_phase.h"

#include "engine/analysis/plot_arrays.h"
#include "engine/core/design_driver.h"
#include "engine/core/design_state.h"
#include "engine/core/start_up.h"
#include "engine/files/spec_file.h"
#include "engine/fir/minimum_phase_design.h"
#include "engine/fir/peak_gain.h"
#include "engine/fir/windows.h"
#include "tests/support/engine_in_memory.h"
#include "tests/support/scripted_front_end.h"
#include "tests/support/source_folder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace brisel {
namespace {

using Taps = std::vector<double>;

bool always(double) {
  return true;
}

std::complex<long double> response(std::span<const double> taps, long double w) {
  std::complex<long double> sum = 0;
  for (std::size_t n = 0; n < taps.size(); n++)
    sum += static_cast<long double>(taps[n]) * std::polar(1.0L, -w * static_cast<long double>(n));
  return sum;
}

// At points that no transform of a power of two has.
constexpr int places = 233;
long double place(int i) {
  return std::numbers::pi_v<long double> * static_cast<long double>(i) / (places - 1);
}

// An ideal lowpass of cutoff 0.3 pi times a window.
Taps windowed_lowpass(int length, int window, double attenuation) {
  const int half = (length + 1) / 2;
  Taps shape(static_cast<std::size_t>(half)), taps(static_cast<std::size_t>(length));
  make_window(window, length, attenuation, shape);
  for (int k = 0; k < half; k++) {
    const double t = length % 2 ? k : k + 0.5, x = 0.3 * std::numbers::pi * t;
    const double h = (t == 0 ? 0.3 : 0.3 * std::sin(x) / x) * shape[static_cast<std::size_t>(k)];
    taps[static_cast<std::size_t>(length / 2 + k)] = taps[static_cast<std::size_t>((length - 1) / 2 - k)] = h;
  }
  return taps;
}

// Zeros computed and reflected, or halved, with mpmath.polyroots at 80 digits.
TEST(MinimumPhase, HasTheZerosOfTheFilterReflectedIntoTheCircle) {
  const struct {
    const char *name;
    Taps taps;
    bool symmetric;
    Taps expected;
  } rows[] = {
      {"symmetric, odd length",
       {-1, 0, 3, 8, 11, 8, 3, 0, -1},
       true,
       {3.9943818624853361, 8.77883646651302499, 10.4152206538879108, 7.74977441183966262, 2.28566405898092359,
        -0.97838907374651068, -0.945618202821703588, -0.55022180460617693, 0.250351627467533127}},
      {"symmetric, even length: a zero at -1",
       {1, -2, -3, 7, 16, 16, 7, -3, -2, 1},
       true,
       {7.66591122297763425, 17.410156582055272, 14.5759159960818873, 4.52698742065612995, -4.23017381794752374,
        -4.4165531381843431, 1.80639856861818839, 1.34896149905854833, -0.818051969730186222, 0.130447636414392841}},
      {"antisymmetric, odd length: zeros at 1 and -1",
       {2, -1, -6, 0, 6, 1, -2},
       false,
       {3.32988685934023955, 1.87912981833328238, -5.86101573348951438, -3.75825963666656475, 3.7323708889583101,
        1.87912981833328238, -1.20124201480903527}},
      {"antisymmetric, even length: a zero at 1",
       {1, -3, 9, -9, 3, -1},
       false,
       {6.37424761370853066, -9.83181939465007294, 5.92644290679226745, -3.0112993449091829, 0.699309479499201888,
        -0.156881260440744164}},
      {"real zeros off the circle",
       {-3, 1, 20, 1, -3},
       true,
       {19.4658551899675507, 2.36439042678182476, -5.92820323027550917, -0.36439042678182476, 0.462348040307958485}},
  };
  for (const auto &row : rows) {
    const auto found = minimum_phase(row.taps, row.symmetric, always);
    ASSERT_TRUE(found) << row.name;
    ASSERT_EQ(found->taps.size(), row.expected.size()) << row.name;
    // Zeros on the circle are taken inside it by 1e-11 of the peak, which is up to 46.
    for (std::size_t n = 0; n < row.expected.size(); n++)
      EXPECT_NEAR(found->taps[n], row.expected[n], 2e-9) << row.name << ", tap " << n;
  }
}

TEST(MinimumPhase, SpectralFactorIsTheRootOfTheRaisedResponse) {
  const struct {
    Taps taps;
    double divisor, raise;
    Taps expected;
  } rows[] = {
      {{-1, 0, 3, 8, 11, 8, 3, 0, -1},
       32,
       0.03125,
       {0.385943217137252846, 0.409131664653604348, 0.184939556915527745, 0.0832342992637265827,
        -0.0785168101354496597}},
      {{2, -3, -8, 20, 41, 20, -8, -3, 2},
       64,
       0.0820606957617941721,
       {0.479168552814853713, 0.63671718699263368, -0.0129082292265124485, -0.170495020054820661,
        0.0602712351025953863}},
  };
  for (auto row : rows) {
    for (double &h : row.taps) h /= row.divisor;
    const auto found = spectral_factor(row.taps, always);
    ASSERT_TRUE(found);
    EXPECT_NEAR(found->raise, row.raise, 1e-12);
    ASSERT_EQ(found->taps.size(), row.expected.size());
    // The double zero is lifted by 1e-15 of the peak, which moves it by the root of that.
    for (std::size_t n = 0; n < row.expected.size(); n++) EXPECT_NEAR(found->taps[n], row.expected[n], 1e-7) << n;
  }
}

TEST(MinimumPhase, KeepsTheMagnitudeAndBringsTheEnergyForward) {
  struct Row {
    const char *name;
    Taps taps;
  };
  std::vector<Row> rows{{"fourfold zero at -1", {1, 4, 6, 4, 1}},
                        {"double zeros on the circle", {1, 2, 3, 4, 5, 4, 3, 2, 1}},
                        {"a delay", {0, 0, 1, 0, 0}}};
  for (const int length : {3, 20, 101, 500, 1001})
    for (const int window : {0, 2, 4, 10, 13}) rows.push_back({"windowed", windowed_lowpass(length, window, 60)});
  rows.push_back({"stopband of 80 dB", windowed_lowpass(301, 14, 80)});
  rows.push_back({"stopband of 150 dB", windowed_lowpass(201, 15, 150)});
  rows.push_back({"stopband below the rounding of the taps", windowed_lowpass(201, 15, 300)});
  for (const Row &row : rows) {
    const auto found = minimum_phase(row.taps, true, always);
    ASSERT_TRUE(found) << row.name << " " << row.taps.size();
    ASSERT_EQ(found->taps.size(), row.taps.size());
    long double peak = 0, worst = 0, energy = 0, before = 0;
    for (int i = 0; i < places; i++) {
      const long double wanted = std::abs(response(row.taps, place(i)));
      peak = std::max(peak, wanted);
      worst = std::max(worst, std::abs(wanted - std::abs(response(found->taps, place(i)))));
    }
    EXPECT_LT(worst, 1e-10L * peak) << row.name << " " << row.taps.size();
    for (std::size_t n = 0; n < row.taps.size(); n++) {
      energy += static_cast<long double>(found->taps[n]) * found->taps[n];
      before += static_cast<long double>(row.taps[n]) * row.taps[n];
      ASSERT_GE(energy, before - 1e-10L * peak * peak) << row.name << " " << row.taps.size() << ", tap " << n;
    }
  }
}

TEST(MinimumPhase, SpectralFactorsHaveTheSquareThatTheyTell) {
  for (const int length : {5, 21, 101, 401})
    for (const int window : {2, 3, 8, 14}) {
      const Taps taps = windowed_lowpass(length, window, 70);
      const auto found = spectral_factor(taps, always);
      ASSERT_TRUE(found) << length << " " << window;
      ASSERT_EQ(static_cast<int>(found->taps.size()), (length + 1) / 2);
      long double worst = 0;
      for (int i = 0; i < places; i++) {
        const long double a =
            (response(taps, place(i)) * std::polar(1.0L, place(i) * static_cast<long double>(length / 2))).real();
        worst = std::max(
            worst, std::abs((a + found->raise) / (1 + found->raise) - std::norm(response(found->taps, place(i)))));
      }
      EXPECT_LT(worst, 1e-10L) << length << " " << window;
    }
}

TEST(MinimumPhase, EndsWhenItIsToldTo) {
  int asked = 0;
  EXPECT_FALSE(minimum_phase(windowed_lowpass(101, 3, 60), true, [&](double) { return ++asked < 2; }));
  EXPECT_LE(asked, 3);
}

TEST(PeakGain, LiesBetweenTheGridPoints) {
  // 1 + 2 r cos(w + a) + ... : a two-tap comb has its peak where both taps add up.
  const Taps taps{1, -1.7, 0.9}; // |H|^2 is largest at pi: 1 + 1.7 + 0.9
  EXPECT_NEAR(peak_gain(taps), 3.6, 1e-13);
  // H = 1 + b z^-1 + c z^-2 with c > 0, b small: d|H|^2/dcos w = 2 b (1 + c) + 8 c cos w = 0 only for a minimum; with
  // c < 0 it is a maximum: cos w = -b (1 + c) / (4 c), |H|^2 = (1 - c)^2 + b^2 - b^2 (1 + c)^2 / (4 c).
  const double b = 0.3, c = -0.8;
  EXPECT_NEAR(peak_gain(Taps{1, b, c}), std::sqrt((1 - c) * (1 - c) + b * b - b * b * (1 + c) * (1 + c) / (4 * c)),
              1e-13);
}

class MinimumPhaseRun : public testing::Test {
protected:
  void SetUp() override { test::start_engine_in_memory(); }
  void TearDown() override { program_exit(ExitMode::discard); }

  void run(const char *file, DesignMethod method, MinimumPhaseType type, int length) {
    ASSERT_EQ(load_filter_spec(source_file("examples/") + file), success);
    design_state.DesignOrAnalysisType = code(method);
    design_state.MinimumPhaseType = code(type);
    front.posted.clear();
    front.answer = [length](Page page) {
      if (page == Page::window || page == Page::fir || page == Page::optimisation) current_spec->length = length;
      return PageResult::next;
    };
    design_record.valid = 0;
    design_filter();
  }
  std::span<const double> taps() const {
    return {design_record.fir.coeff.data(), static_cast<std::size_t>(design_record.fir.length)};
  }

  ScriptedFrontEnd front;
};

TEST_F(MinimumPhaseRun, GivesAFilterWithoutSymmetryAndWithLessDelay) {
  run("lowpass.spc", DesignMethod::window, MinimumPhaseType::none, 63);
  ASSERT_TRUE(design_record.valid);
  const Taps linear(taps().begin(), taps().end());
  const double delay = plot_arrays.group_delay[100];
  run("lowpass.spc", DesignMethod::window, MinimumPhaseType::dft, 63);
  ASSERT_TRUE(design_record.valid);
  EXPECT_EQ(design_record.fir.length, 63);
  EXPECT_EQ(design_record.fir.fir_type, code(FirSymmetry::nonsymmetric));
  EXPECT_LT(plot_arrays.group_delay[100], delay / 3);
  for (int i = 0; i < places; i += 10)
    EXPECT_NEAR(std::abs(response(taps(), place(i))), std::abs(response(linear, place(i))), 1e-10);
}

TEST_F(MinimumPhaseRun, MakesTheSpectralFactorForTheSpecificationOfTheUser) {
  const struct {
    const char *file;
    DesignMethod method;
    int asked, expected; // taps; 0 is the estimate
  } rows[] = {{"lowpass.spc", DesignMethod::window, 40, 40},
              {"highpass.spc", DesignMethod::equiripple, 120, 120},
              {"bandpass.spc", DesignMethod::window, 0, 182},
              {"halfband.spc", DesignMethod::equiripple, 0, 4},
              {"multiband.spc", DesignMethod::equiripple, 0, 94}};
  for (const auto &row : rows) {
    run(row.file, row.method, MinimumPhaseType::spectral_factor, row.asked);
    ASSERT_TRUE(design_record.valid) << row.file;
    EXPECT_EQ(design_record.fir.length, row.expected) << row.file;
    EXPECT_EQ(design_record.spec.stopband_ripple, design_record.loaded.stopband_ripple) << row.file;
  }
  // 70 dB of a root: the linear phase filter has 146 dB.
  run("highpass.spc", DesignMethod::equiripple, MinimumPhaseType::spectral_factor, 0);
  const double edge = design_record.spec.stopband_edge[0];
  for (int i = 0; i <= 300; i++) EXPECT_LT(std::abs(response(taps(), edge * i / 300.0)), 3.2e-4) << i;
}

TEST_F(MinimumPhaseRun, ScalesToAMaximumGainOfOne) {
  for (const char *file : {"lowpass.spc", "multiband.spc"})
    for (const MinimumPhaseType type : {MinimumPhaseType::none, MinimumPhaseType::dft}) {
      design_state.gain_specification_mode = code(GainMode::maximum);
      run(file, DesignMethod::equiripple, type, 0);
      ASSERT_TRUE(design_record.valid) << file;
      EXPECT_NEAR(peak_gain(taps()), 1, 1e-13) << file;
    }
}

TEST_F(MinimumPhaseRun, RefusesBeforeItStartsWhatCannotBeDone) {
  const struct {
    const char *name, *file;
    DesignMethod method;
    MinimumPhaseType type;
    int length;
    void (*prepare)();
  } rows[] = {
      {"Hilbert transformer", "hilbert.spc", DesignMethod::window, MinimumPhaseType::dft, 0, [] {}},
      {"root of a differentiator", "differentiator.spc", DesignMethod::window, MinimumPhaseType::spectral_factor, 0,
       [] {}},
      {"root of an arbitrary magnitude", "arbitrary-magnitude.spc", DesignMethod::window,
       MinimumPhaseType::spectral_factor, 0, [] {}},
      {"root of a root raised cosine", "root-raised-cosine.spc", DesignMethod::window,
       MinimumPhaseType::spectral_factor, 0, [] {}},
      {"too long", "lowpass.spc", DesignMethod::window, MinimumPhaseType::dft, max_minimum_phase_taps + 1, [] {}},
      {"too long for a root", "lowpass.spc", DesignMethod::window, MinimumPhaseType::spectral_factor, 2501, [] {}},
      {"root of antisymmetric taps", "bandpass.spc", DesignMethod::least_squares, MinimumPhaseType::spectral_factor, 0,
       [] { design_state.symmetry = code(FirSymmetry::antisymmetric); }},
      {"root of a compensated response", "lowpass.spc", DesignMethod::window, MinimumPhaseType::spectral_factor, 0,
       [] { design_state.CompensationOption = 1; }},
      {"too much attenuation for a root", "lowpass.spc", DesignMethod::window, MinimumPhaseType::spectral_factor, 0,
       [] { current_spec->stopband_ripple = 121; }},
  };
  for (const auto &row : rows) {
    ASSERT_EQ(load_filter_spec(source_file("examples/") + row.file), success);
    design_state.DesignOrAnalysisType = code(row.method);
    design_state.MinimumPhaseType = code(row.type);
    design_state.CompensationOption = 0;
    front.posted.clear();
    front.announced.clear();
    front.answer = [&](Page page) {
      if (page == Page::window || page == Page::fir || page == Page::optimisation) {
        current_spec->length = row.length;
        row.prepare();
      }
      return PageResult::next;
    };
    design_filter();
    EXPECT_FALSE(design_record.valid) << row.name;
    ASSERT_EQ(front.posted.size(), 1u) << row.name;
    EXPECT_EQ(front.posted[0].number, Message::minimum_phase_refused) << row.name;
    EXPECT_TRUE(front.announced.empty()) << row.name << ": work was started";
  }
}

} // namespace
} // namespace brisel
