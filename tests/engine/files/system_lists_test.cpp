// system_lists_test.cpp - entered systems as lists of numbers, and what is wrong with them.
#include "engine/files/system_lists.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <memory>

namespace brisel {
namespace {

constexpr auto z = Domain::z;
constexpr auto s = Domain::s;

struct Form {
  Domain domain;
  InputOption option;
};
const Form forms[] = {{z, InputOption::ratio},
                      {z, InputOption::pole_zero},
                      {z, InputOption::product},
                      {z, InputOption::sum},
                      {z, InputOption::lattice},
                      {z, InputOption::symmetric_fir},
                      {z, InputOption::antisymmetric_fir},
                      {z, InputOption::nonsymmetric_fir},
                      {z, InputOption::lattice_fir},
                      {s, InputOption::ratio},
                      {s, InputOption::pole_zero},
                      {s, InputOption::product},
                      {s, InputOption::sum}};

void expect_same(const SystemLists &a, const SystemLists &b, const std::string &what) {
  EXPECT_EQ(a.sample_rate, b.sample_rate) << what;
  EXPECT_EQ(a.gain, b.gain) << what;
  EXPECT_EQ(a.taps, b.taps) << what;
  EXPECT_EQ(a.first, b.first) << what;
  EXPECT_EQ(a.second, b.second) << what;
}

TEST(SystemLists, OfAnEntryAreTheListsThatMadeItAndThoseOfItsFile) {
  const auto entries = std::make_unique<SystemEntries>(), digital = std::make_unique<SystemEntries>(),
             analog = std::make_unique<SystemEntries>();
  for (const auto &[domain, option] : forms) {
    for (const double unit : {1.0, two_pi}) {
      const std::string what(input_options[static_cast<std::size_t>(code(option))].name);
      const SystemLists lists = example_lists(domain, option, unit);
      const auto complaint = enter_lists(domain, option, lists, *entries);
      EXPECT_FALSE(complaint) << what << complaint->reason;
      expect_same(lists_of(domain, option, system_entry(*entries, option)), lists, what);

      const auto text = format_system_file(domain, option, system_entry(*entries, option), unit == 1.0);
      ASSERT_TRUE(text);
      DesignState state{};
      ASSERT_EQ(read_system_text(*text, state, *digital, *analog), 0) << *text;
      SystemLists read = lists_of(domain, option, system_entry(domain == z ? *digital : *analog, option));
      // Nine digits of a file.
      for (auto [got, expected] : {std::pair(&read.first, &lists.first), std::pair(&read.second, &lists.second)}) {
        ASSERT_EQ(got->size(), expected->size()) << what;
        for (std::size_t r = 0; r < got->size(); r++)
          for (std::size_t c = 0; c < (*got)[r].size(); c++)
            EXPECT_NEAR((*got)[r][c], (*expected)[r][c], 1e-8 * std::abs((*expected)[r][c])) << what << r << c;
      }
      EXPECT_EQ(read.taps, lists.taps);
    }
  }
}

TEST(SystemLists, OfADigitalRatioBeginWithItsOwnHighestPower) {
  const auto entries = std::make_unique<SystemEntries>();
  SystemLists lists = example_lists(z, InputOption::ratio, 1);
  lists.first = {{3}, {1}};
  lists.second = {{1}, {0}, {0.5}, {0.25}};
  ASSERT_FALSE(enter_lists(z, InputOption::ratio, lists, *entries));
  EXPECT_EQ(entries->ratio.numerator[2], 3) << "3 z + 1 over z^3 is 3 z^-2 + z^-3";
  expect_same(lists_of(z, InputOption::ratio, &entries->ratio), lists, "ratio");

  lists.first = {{0}, {2}, {1}};
  lists.second = {{0}, {1}, {-0.5}};
  ASSERT_FALSE(enter_lists(z, InputOption::ratio, lists, *entries));
  EXPECT_EQ(entries->ratio.denominator_order, 1) << "a power that both lack does not count";
  EXPECT_EQ(entries->ratio.denominator[0], 1);
}

TEST(SystemLists, ConjugatesAreEnteredOnce) {
  const auto entries = std::make_unique<SystemEntries>();
  SystemLists lists = example_lists(z, InputOption::pole_zero, 1);
  lists.first = {{0.25, 0}, {-1, 0}};
  lists.second = {{0.5, 0.5}, {-0.5, 0}, {0.1, 0.2}};
  ASSERT_FALSE(enter_lists(z, InputOption::pole_zero, lists, *entries));
  const PoleZeroEntry &entry = entries->pole_zero;
  EXPECT_EQ(entry.real_zeros, 2);
  EXPECT_EQ(entry.complex_zeros, 0);
  EXPECT_EQ(entry.real_poles, 1);
  EXPECT_EQ(entry.complex_poles, 4);
  EXPECT_EQ(entry.poles[1], std::conj(entry.poles[0]));
}

TEST(SystemLists, PolesAreWrittenInThreeKindsOfCoordinates) {
  const double rate = 8000 * two_pi, third = two_pi / 6, half_root = std::sqrt(0.5);
  const struct {
    std::vector<double> place;
    Coordinates coordinates;
    std::vector<double> written;
  } rows[] = {
      {{0.5, 0.25}, Coordinates::real_and_imaginary, {0.5, 0.25}},
      {{0.25, 0.25 * std::sqrt(3)}, Coordinates::radius_and_radians, {0.5, third}},
      {{-0.5 * half_root, 0.5 * half_root}, Coordinates::radius_and_hertz, {0.5, 3000}},
      {{-0.5, 0}, Coordinates::radius_and_radians, {-0.5, 0}},
      {{0.75, 0}, Coordinates::radius_and_hertz, {0.75, 0}},
  };
  for (const auto &row : rows) {
    const auto written = to_coordinates(row.place, row.coordinates, rate);
    const auto back = from_coordinates(row.written, row.coordinates, rate);
    for (std::size_t i = 0; i < 2; i++) {
      EXPECT_NEAR(written[i], row.written[i], 1e-12 * (1 + row.written[i]));
      EXPECT_NEAR(back[i], row.place[i], 1e-15);
    }
  }
  using Row = std::vector<double>;
  EXPECT_EQ(from_coordinates({0.5, 3.141592654}, Coordinates::radius_and_radians, rate), (Row{-0.5, 0}));
  EXPECT_EQ(from_coordinates({0.5, 4000}, Coordinates::radius_and_hertz, rate), (Row{-0.5, 0}));
}

TEST(SystemCheck, SaysWhatIsWrong) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  using Change = void (*)(SystemLists &);
  static double not_a_number;
  not_a_number = nan;
  const struct {
    Domain domain;
    InputOption option;
    Change change;
    SystemPart part;
    const char *reason;
  } rows[] = {
      {z, InputOption::ratio, [](SystemLists &l) { l.sample_rate = 0; }, SystemPart::sampling_frequency,
       "is not above zero"},
      {z, InputOption::ratio, [](SystemLists &l) { l.sample_rate = not_a_number; }, SystemPart::sampling_frequency,
       "is not above zero"},
      {z, InputOption::product, [](SystemLists &l) { l.sample_rate = 1e31; }, SystemPart::sampling_frequency,
       "is beyond all limits"},
      {z, InputOption::product, [](SystemLists &l) { l.gain = 0; }, SystemPart::gain, "is 0"},
      {z, InputOption::sum, [](SystemLists &l) { l.gain = not_a_number; }, SystemPart::gain, "is not finite"},
      {z, InputOption::ratio,
       [](SystemLists &l) {
         l.first = {{0}, {0}};
       },
       SystemPart::first_list, "the numerator is 0"},
      {z, InputOption::ratio,
       [](SystemLists &l) {
         l.second = {{0}, {0}, {0}};
       },
       SystemPart::second_list, "the denominator is 0"},
      {z, InputOption::ratio,
       [](SystemLists &l) {
         l.second = {{1}, {0.5}};
       },
       SystemPart::first_list, "answer before its input"},
      {z, InputOption::ratio, [](SystemLists &l) { l.first[1][0] = not_a_number; }, SystemPart::first_list,
       "not finite"},
      {z, InputOption::ratio, [](SystemLists &l) { l.first.assign(162, {1}); }, SystemPart::first_list,
       "more than 161 coefficients"},
      {s, InputOption::ratio,
       [](SystemLists &l) {
         l.first = {{1}, {0}, {0}, {0}};
       },
       SystemPart::first_list, "higher order"},
      {z, InputOption::pole_zero,
       [](SystemLists &l) {
         l.first.push_back({0, 0});
       },
       SystemPart::first_list, "more zeros than poles"},
      {s, InputOption::pole_zero,
       [](SystemLists &l) {
         l.second.assign(101, {-1, 1});
       },
       SystemPart::second_list, "more than 200 poles"},
      {z, InputOption::product, [](SystemLists &l) { l.first[1] = {1, 1, 0, 0, 0, 0}; }, SystemPart::first_list,
       "section 2: the denominator is 0"},
      {z, InputOption::product, [](SystemLists &l) { l.first[0] = {0, 0, 0, 1, 0, 0}; }, SystemPart::first_list,
       "section 1: the numerator is 0"},
      {z, InputOption::product, [](SystemLists &l) { l.first[0] = {1, 0, 0, 0, 1, 0}; }, SystemPart::first_list,
       "more zeros than poles"},
      {z, InputOption::sum, [](SystemLists &l) { l.first[0] = {1, 0, 0, 0, 1, 0}; }, SystemPart::first_list,
       "section 1: the numerator has a higher order"},
      {s, InputOption::product, [](SystemLists &l) { l.first.clear(); }, SystemPart::first_list, "no sections"},
      {z, InputOption::sum, [](SystemLists &l) { l.first.assign(101, l.first[0]); }, SystemPart::first_list,
       "more than 100 sections"},
      {z, InputOption::lattice, [](SystemLists &l) { l.second = {{0.5}}; }, SystemPart::second_list,
       "order of at least 2"},
      {z, InputOption::lattice, [](SystemLists &l) { l.first.pop_back(); }, SystemPart::first_list,
       "3 gamma coefficients are needed"},
      {z, InputOption::lattice,
       [](SystemLists &l) {
         l.first = {{0}, {0}, {0}};
       },
       SystemPart::first_list, "every gamma coefficient is 0"},
      {z, InputOption::symmetric_fir, [](SystemLists &l) { l.first.assign(4, {0}); }, SystemPart::first_list,
       "every tap is 0"},
      {z, InputOption::antisymmetric_fir, [](SystemLists &l) { l.first[3][0] = 1; }, SystemPart::first_list,
       "must be 0"},
      {z, InputOption::nonsymmetric_fir, [](SystemLists &l) { l.taps = 0, l.first.clear(); }, SystemPart::first_list,
       "there are no taps"},
      {z, InputOption::nonsymmetric_fir,
       [](SystemLists &l) {
         l.taps = 50001;
         l.first.assign(50001, {1});
       },
       SystemPart::first_list, "more than 50000 taps"},
  };
  const auto entries = std::make_unique<SystemEntries>();
  for (const auto &row : rows) {
    SystemLists lists = example_lists(row.domain, row.option, two_pi);
    row.change(lists);
    const auto complaint = enter_lists(row.domain, row.option, lists, *entries);
    ASSERT_TRUE(complaint) << row.reason;
    EXPECT_EQ(complaint->part, row.part) << row.reason;
    EXPECT_NE(complaint->reason.find(row.reason), std::string::npos) << row.reason << ": " << complaint->reason;
  }
}

TEST(SystemCheck, LetsUnstableAndUnusualSystemsThrough) {
  const auto entries = std::make_unique<SystemEntries>();
  const struct {
    Domain domain;
    InputOption option;
    void (*change)(SystemLists &);
  } rows[] = {
      {z, InputOption::ratio, [](SystemLists &l) { l.second[2][0] = 1.5; }},
      {z, InputOption::pole_zero, [](SystemLists &l) { l.first.clear(), l.second.clear(); }},
      {z, InputOption::sum, [](SystemLists &l) { l.gain = 0, l.first[0] = {0, 0, 0, 1, 0, 0}; }},
      {z, InputOption::product, [](SystemLists &l) { l.first[0] = {0, 1, 1, 0, 1, 0.5}; }},
      {z, InputOption::lattice, [](SystemLists &l) { l.second[0][0] = 1, l.first.push_back({1}); }},
      {z, InputOption::lattice_fir, [](SystemLists &l) { l.first.assign(3, {0}); }},
      {s, InputOption::ratio,
       [](SystemLists &l) {
         l.first = {{0}, {1}, {0}, {1}};
       }},
      {s, InputOption::product,
       [](SystemLists &l) {
         l.first = {{1, 0, 0, 0, 1, 1}, {0, 0, 1, 0, 1, 1}};
       }},
  };
  for (const auto &row : rows) {
    SystemLists lists = example_lists(row.domain, row.option, 1);
    row.change(lists);
    const auto complaint = enter_lists(row.domain, row.option, lists, *entries);
    EXPECT_FALSE(complaint) << complaint->reason;
  }
}

} // namespace
} // namespace brisel
