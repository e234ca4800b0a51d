#include "engine/core/spec_check.h"

#include "engine/core/code_tables.h"
#include "engine/core/method_rule.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <numbers>

using namespace brisel;

namespace {

/// A possible specification of each type at 8000 Hz.
FilterSpec possible(FilterType type) {
  FilterSpec spec{};
  spec.type = code(type);
  spec.sampling_frequency = two_pi * 8000;
  const auto hz = [](double frequency) { return two_pi * frequency; };
  switch (type) {
  case FilterType::low_pass:
    spec.passband_edge[0] = hz(1000), spec.stopband_edge[0] = hz(1500);
    break;
  case FilterType::high_pass:
    spec.passband_edge[0] = hz(1500), spec.stopband_edge[0] = hz(1000);
    break;
  case FilterType::band_pass:
    spec.passband_edge = {hz(1000), hz(2000)}, spec.stopband_edge = {hz(800), hz(2200)};
    break;
  case FilterType::band_stop:
    spec.passband_edge = {hz(800), hz(2200)}, spec.stopband_edge = {hz(1000), hz(2000)};
    break;
  case FilterType::differentiator:
    spec.passband_edge = {0, hz(4000)}, spec.slope = 1;
    break;
  case FilterType::hilbert:
    spec.passband_edge = {hz(200), hz(3800)};
    break;
  case FilterType::half_band:
    spec.passband_edge[0] = hz(1800);
    break;
  case FilterType::multiband:
  case FilterType::arbitrary_magnitude:
    spec.band_count = 2;
    spec.band_lower = {0, hz(2000)};
    spec.band_upper = {hz(1000), hz(4000)};
    spec.band_ripple = {0.01, 0.01};
    spec.fixed_gain = {1, 0};
    spec.point_count = {0, 2};
    spec.function_frequency[50] = hz(2000), spec.function_frequency[51] = hz(4000);
    break;
  case FilterType::arbitrary_group_delay:
    spec.band_count = 2, spec.function_frequency[1] = hz(4000);
    break;
  case FilterType::raised_cosine:
  case FilterType::root_raised_cosine:
    spec.symbol_rate = hz(2000), spec.rolloff = 0.25;
    break;
  }
  spec.passband_ripple = 0.1;
  spec.stopband_ripple = 60;
  return spec;
}

} // namespace

TEST(SpecCheck, AcceptsAPossibleSpecificationOfEachType) {
  for (int type = 0; type < filter_type_count; type++) {
    const auto complaint = check_spec(possible(static_cast<FilterType>(type)));
    EXPECT_FALSE(complaint) << filter_types[type].file_name << ": " << complaint->reason;
  }
}

TEST(SpecCheck, BandsMayTouch) {
  FilterSpec spec = possible(FilterType::multiband);
  spec.band_lower[1] = std::nextafter(spec.band_upper[0], 0); // as rounding leaves it
  settle_edges(spec);
  EXPECT_FALSE(check_spec(spec));
}

TEST(Normalised, HalfTheSamplingFrequencyIsPiAtEveryRate) {
  FilterSpec spec = possible(FilterType::hilbert);
  for (int rate = 1; rate <= 1'000'000; rate++) {
    spec.sampling_frequency = two_pi * rate;
    spec.sampling_period = two_pi / spec.sampling_frequency;
    spec.passband_edge = {spec.sampling_frequency / 8, spec.sampling_frequency / 2};
    ASSERT_EQ(normalised(spec).passband_edge[1], std::numbers::pi) << rate;
  }
}

TEST(SpecCheck, NamesTheFieldAndTheReason) {
  struct Row {
    FilterType type;
    std::function<void(FilterSpec &)> change;
    SpecField field;
    int index;
    const char *reason;
  };
  using enum FilterType;
  const double hz = two_pi;
  const Row rows[] = {
      {low_pass, [](auto &s) { s.sampling_frequency = 0; }, SpecField::sampling_frequency, 0,
       "the sampling frequency, 0 Hz, is not above zero"},
      {low_pass, [=](auto &s) { s.sampling_frequency = -8000 * hz; }, SpecField::sampling_frequency, 0,
       "the sampling frequency, -8000 Hz, is not above zero"},
      {low_pass, [](auto &s) { s.sampling_frequency = NAN; }, SpecField::sampling_frequency, 0,
       "the sampling frequency is not a finite number"},
      {low_pass, [](auto &s) { s.sampling_frequency = 1e200; }, SpecField::sampling_frequency, 0,
       "the sampling frequency, 1.591549431e+199 Hz, is too large"},
      {low_pass, [](auto &s) { s.sampling_frequency = 1e-200; }, SpecField::sampling_frequency, 0,
       "the sampling frequency, 1.591549431e-201 Hz, is too small"},
      {low_pass, [=](auto &s) { s.stopband_edge[0] = 4500 * hz; }, SpecField::stopband_edge, 0,
       "the stopband edge, 4500 Hz, is above half the sampling frequency, 4000 Hz"},
      {low_pass, [=](auto &s) { s.stopband_edge[0] = 4000 * hz; }, SpecField::stopband_edge, 0,
       "the stopband edge, 4000 Hz, is not below half the sampling frequency, 4000 Hz"},
      {low_pass, [](auto &s) { s.passband_edge[0] = 0; }, SpecField::passband_edge, 0, "the passband edge is zero"},
      {low_pass, [=](auto &s) { s.passband_edge[0] = -hz; }, SpecField::passband_edge, 0,
       "the passband edge, -1 Hz, is below zero"},
      {low_pass, [=](auto &s) { s.stopband_edge[0] = 1000 * hz; }, SpecField::stopband_edge, 0,
       "the stopband edge, 1000 Hz, is not above the passband edge, 1000 Hz"},
      {high_pass, [=](auto &s) { s.stopband_edge[0] = 2000 * hz; }, SpecField::passband_edge, 0,
       "the passband edge, 1500 Hz, is not above the stopband edge, 2000 Hz"},
      {band_pass, [=](auto &s) { s.stopband_edge[1] = 1900 * hz; }, SpecField::stopband_edge, 1,
       "the upper stopband edge, 1900 Hz, is not above the upper passband edge, 2000 Hz"},
      {band_stop, [=](auto &s) { s.stopband_edge[0] = 700 * hz; }, SpecField::stopband_edge, 0,
       "the lower stopband edge, 700 Hz, is not above the lower passband edge, 800 Hz"},
      {band_stop,
       [](auto &s) {
         s.unit = 1, s.sampling_frequency = 8, s.passband_edge = {1, 5}, s.stopband_edge = {2, 3};
       },
       SpecField::passband_edge, 1, "the upper passband edge, 5 rad/s, is above half the sampling frequency, 4 rad/s"},
      {low_pass, [](auto &s) { s.passband_ripple = 0; }, SpecField::passband_ripple, 0,
       "the passband ripple, 0 dB, is not above zero"},
      {low_pass, [](auto &s) { s.stopband_ripple = 401; }, SpecField::stopband_ripple, 0,
       "the stopband ripple, 401 dB, is beyond 400 dB"},
      {half_band, [](auto &s) { s.stopband_ripple = 0; }, SpecField::stopband_ripple, 0,
       "the stopband ripple, 0 dB, is not above zero"},
      {half_band, [=](auto &s) { s.passband_edge[0] = 2000 * hz; }, SpecField::passband_edge, 0,
       "the passband edge, 2000 Hz, is not below a quarter of the sampling frequency, 2000 Hz"},
      {hilbert, [](auto &s) { s.passband_ripple = 0; }, SpecField::passband_ripple, 0,
       "the ripple, 0, is not above zero"},
      {hilbert,
       [=](auto &s) {
         s.passband_edge = {hz, hz};
       },
       SpecField::passband_edge, 1, "the upper passband edge, 1 Hz, is not above the lower passband edge, 1 Hz"},
      {differentiator, [](auto &s) { s.slope = 0; }, SpecField::slope, 0, "the slope is zero"},
      {raised_cosine, [](auto &s) { s.rolloff = 1.5; }, SpecField::rolloff, 0,
       "the rolloff factor, 1.5, is not between 0 and 1"},
      {raised_cosine, [](auto &s) { s.rolloff = -0.1; }, SpecField::rolloff, 0,
       "the rolloff factor, -0.1, is not between 0 and 1"},
      {root_raised_cosine, [](auto &s) { s.rolloff = 0; }, SpecField::rolloff, 0,
       "the rolloff factor is 0, which leaves a transition band of no width"},
      {raised_cosine, [](auto &s) { s.symbol_rate = 0; }, SpecField::symbol_rate, 0,
       "the symbol rate, 0 Hz, is not above zero"},
      {raised_cosine, [](auto &s) { s.symbol_rate = 1e-310; }, SpecField::symbol_rate, 0,
       "the symbol rate, 1.591549431e-311 Hz, is too small"},
      {raised_cosine, [=](auto &s) { s.symbol_rate = 8000 * hz; }, SpecField::symbol_rate, 0,
       "the symbol rate, 8000 Hz, puts the stopband edge, 5000 Hz, above half the sampling frequency, 4000 Hz"},
      {multiband, [](auto &s) { s.band_count = 0; }, SpecField::band_count, 0,
       "the number of bands, 0, is not 1 to 10"},
      {arbitrary_magnitude, [](auto &s) { s.band_count = 6; }, SpecField::band_count, 0,
       "the number of bands, 6, is not 1 to 5"},
      {low_pass, [=](auto &s) { s.stopband_edge[0] = std::nextafter(4000 * hz, 0); }, SpecField::stopband_edge, 0,
       "the stopband edge, 4000 Hz, is not below half the sampling frequency, 4000 Hz"},
      {multiband, [=](auto &s) { s.band_lower[1] = 999 * hz; }, SpecField::band_lower, 1,
       "the lower edge of band 2, 999 Hz, is not above the upper edge of band 1, 1000 Hz"},
      {multiband, [=](auto &s) { s.band_upper[1] = 2000 * hz; }, SpecField::band_upper, 1,
       "the upper edge of band 2, 2000 Hz, is not above the lower edge of band 2, 2000 Hz"},
      {multiband, [](auto &s) { s.band_value[0] = -2, s.band_ripple[1] = 2.5; }, SpecField::band_ripple, 1,
       "the ripple of band 2, 2.5, is above the largest desired value, 2"},
      {arbitrary_magnitude, [](auto &s) { s.function_value[51] = 3, s.band_ripple[0] = 1e300; }, SpecField::band_ripple,
       0, "the ripple of band 1, 1e+300, is above the largest desired value, 3"},
      {arbitrary_magnitude, [](auto &s) { s.band_value[0] = 3, s.band_ripple[0] = 2, s.proportional[0] = 1; },
       SpecField::band_ripple, 0, "the ripple of band 1, 2, is above 1, which is 100 %"},
      {hilbert, [](auto &s) { s.passband_ripple = 1e11; }, SpecField::passband_ripple, 0,
       "the ripple, 1e+11 %, is above 100 %"},
      {multiband, [](auto &s) { s.band_ripple[1] = -1; }, SpecField::band_ripple, 1,
       "the ripple of band 2, -1, is not above zero"},
      {multiband, [](auto &s) { s.band_value[1] = INFINITY; }, SpecField::band_value, 1,
       "the desired value of band 2 is not a finite number"},
      {arbitrary_magnitude, [](auto &s) { s.function_frequency[51] = 0; }, SpecField::function_frequency, 51,
       "the frequency of function point 2 of band 2, 0 Hz, is not above the frequency of function point 1 of band 2, "
       "2000 Hz"},
      {arbitrary_magnitude, [](auto &s) { s.list_flag[1] = 1, s.function_value[50] = -500; }, SpecField::function_value,
       50, "the value of function point 1 of band 2, -500 dB, is beyond 400 dB"},
      {arbitrary_magnitude, [](auto &s) { s.point_count[1] = 0; }, SpecField::point_count, 1,
       "the number of function points of band 2, 0, is not 1 to 50"},
      {arbitrary_group_delay, [](auto &s) { s.band_count = 0; }, SpecField::band_count, 0,
       "the number of function points, 0, is not 1 to 250"},
      {arbitrary_group_delay, [=](auto &s) { s.function_frequency[1] = 4001 * hz; }, SpecField::function_frequency, 1,
       "the frequency of function point 2, 4001 Hz, is above half the sampling frequency, 4000 Hz"},
  };
  for (const Row &row : rows) {
    FilterSpec spec = possible(row.type);
    row.change(spec);
    const auto complaint = check_spec(spec);
    ASSERT_TRUE(complaint) << row.reason;
    EXPECT_EQ(complaint->reason, row.reason);
    EXPECT_EQ(complaint->field, row.field) << row.reason;
    EXPECT_EQ(complaint->index, row.index) << row.reason;
  }
}

TEST(MethodRule, TiesTheMethodToTheType) {
  struct Row {
    int method, type, ruled;
  };
  for (const Row row : {Row{2, 8, 0}, Row{0, 6, 1}, Row{3, 2, 3}, Row{7, 0, 0}, Row{7, 4, 1}, Row{7, 11, 1},
                        Row{7, 8, 0}, Row{-1, 3, 0}, Row{4, 9, 4}, Row{6, 1, 0}})
    EXPECT_EQ(ruled_method(row.method, row.type), row.ruled) << row.method << " for type " << row.type;
}
