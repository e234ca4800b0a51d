#include "engine/files/plot_data.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

namespace brisel {
namespace {

std::unique_ptr<PlotArrays> three_points() {
  auto arrays = std::make_unique<PlotArrays>();
  arrays->frequency_count = 3;
  arrays->time_count = 2;
  for (int i = 0; i < 3; i++) {
    arrays->frequency[i] = i * two_pi / 4;
    arrays->group_delay[i] = 10 + i;
    arrays->log_magnitude[i] = -20 - i;
    arrays->magnitude[i] = 30 + i;
    arrays->phase[i] = -40 - i;
    arrays->impulse[i] = 50 + i;
    arrays->step[i] = 60 + i;
  }
  return arrays;
}

TEST(PlotData, EachFileHoldsItsResponse) {
  const auto arrays = three_points();
  // Sampling interval 1/8 ms: the frequencies 0, pi/2 and pi are 0, 2000 and 4000 Hz.
  const auto over_frequency = [](const char *first, const char *second, const char *third) {
    return std::string("0.00000000e+00\t") + first + "\n2.00000000e+03\t" + second + "\n4.00000000e+03\t" + third +
           "\n";
  };
  const std::string expected[] = {
      over_frequency("1.00000000e+01", "1.10000000e+01", "1.20000000e+01"),
      "0.00000000e+00\t5.00000000e+01\n1.25000000e-04\t5.10000000e+01\n",
      over_frequency("-2.00000000e+01", "-2.10000000e+01", "-2.20000000e+01"),
      over_frequency("3.00000000e+01", "3.10000000e+01", "3.20000000e+01"),
      over_frequency("-4.00000000e+01", "-4.10000000e+01", "-4.20000000e+01"),
      "0.00000000e+00\t6.00000000e+01\n1.25000000e-04\t6.10000000e+01\n",
  };
  const std::string_view extensions[] = {"gdl", "imp", "lmn", "mag", "pha", "stp"};
  ASSERT_EQ(plot_data_files.size(), std::size(expected));
  for (std::size_t i = 0; i < plot_data_files.size(); i++) {
    EXPECT_EQ(plot_data_files[i].extension, extensions[i]);
    EXPECT_EQ(plot_data_text(i, *arrays, 1.0 / 8000, false), expected[i]) << extensions[i];
  }
}

TEST(PlotData, RadiansAreAnglesOverTheSamplingInterval) {
  const auto arrays = three_points();
  EXPECT_EQ(plot_data_text(3, *arrays, 0.5, true),
            "0.00000000e+00\t3.00000000e+01\n3.14159265e+00\t3.10000000e+01\n6.28318531e+00\t3.20000000e+01\n");
}

TEST(PlotData, ValueThatIsNotFiniteMakesNoFile) {
  const auto arrays = three_points();
  arrays->phase[1] = std::numeric_limits<double>::quiet_NaN();
  arrays->step[1] = std::numeric_limits<double>::infinity();
  EXPECT_FALSE(plot_data_text(4, *arrays, 1, false));
  EXPECT_FALSE(plot_data_text(5, *arrays, 1, false));
  EXPECT_TRUE(plot_data_text(0, *arrays, 1, false));
}

} // namespace
} // namespace brisel
