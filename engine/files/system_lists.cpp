#include "engine/files/system_lists.h"

#include "engine/files/entered_fir.h"
#include "engine/files/text_file.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>

namespace brisel {

namespace {

NumberRows column(std::span<const double> values) {
  NumberRows rows;
  for (const double value : values) rows.push_back({value});
  return rows;
}

NumberRows without_leading_zeros(std::span<const double> values) {
  const auto first = std::ranges::find_if(values, [](double value) { return value != 0; });
  if (first == values.end()) return column(values.last(std::min<std::size_t>(values.size(), 1)));
  return column(values.subspan(static_cast<std::size_t>(first - values.begin())));
}

NumberRows upper_half(std::span<const std::complex<double>> values) {
  std::vector<std::complex<double>> pairs(values.begin(), values.end());
  arrange_pairs(pairs);
  NumberRows rows;
  for (const auto &value : pairs)
    if (value.imag() >= 0) rows.push_back({value.real(), value.imag()});
  return rows;
}

struct Lister {
  Domain domain;
  InputOption option;
  SystemLists lists{};

  void operator()(const RatioEntry *entry) {
    const auto numerator = std::span(entry->numerator).first(entry->numerator_order + 1);
    lists.first = domain == Domain::z ? without_leading_zeros(numerator) : column(numerator);
    lists.second = column(std::span(entry->denominator).first(entry->denominator_order + 1));
  }
  void operator()(const PoleZeroEntry *entry) {
    lists.first = upper_half(std::span(entry->zeros).first(entry->real_zeros + entry->complex_zeros));
    lists.second = upper_half(std::span(entry->poles).first(entry->real_poles + entry->complex_poles));
  }
  void operator()(const SectionEntry *entry) {
    const double scale = option == InputOption::sum ? entry->pars : 1;
    lists.gain *= scale;
    for (int i = 0; i < entry->section_count; i++) {
      std::vector<double> row;
      for (const double b : entry->numerators[i]) row.push_back(std::ldexp(b, entry->shift[i]) * scale);
      for (const double a : entry->denominators[i]) row.push_back(std::ldexp(a, entry->shift[i]));
      lists.first.push_back(std::move(row));
    }
  }
  void operator()(const LadderEntry *) {}
  void operator()(const LatticeEntry *entry) {
    lists.first = column(std::span(entry->gamma).first(entry->order + entry->lead + 1));
    lists.second = column(std::span(entry->kappa).subspan(1, entry->order));
  }
  void operator()(const FirEntry *entry) {
    lists.taps = entry->length;
    if (!is_half_response(option)) {
      lists.first = column(std::span(entry->coeff).first(entry->length));
      return;
    }
    for (int i = entry->unique_count - 1; i >= 0; i--) lists.first.push_back({entry->coeff[i]});
  }
};

std::optional<SystemComplaint> too_many(SystemPart part, const char *things, int most) {
  return SystemComplaint{part, formatf("more than %d %s", most, things)};
}

void take_column(const NumberRows &rows, std::span<double> values) {
  for (std::size_t i = 0; i < rows.size(); i++) values[i] = rows[i][0];
}

bool take_places(const NumberRows &rows, std::span<std::complex<double>> values, std::int16_t &real,
                 std::int16_t &complex) {
  std::size_t count = 0;
  for (const auto &row : rows) {
    const bool pair = row[1] != 0;
    if (count + (pair ? 2 : 1) > values.size()) return false;
    values[count++] = {row[0], row[1]};
    if (pair) values[count++] = {row[0], -row[1]};
    (pair ? complex : real) += pair ? 2 : 1;
  }
  return true;
}

/// Fills an entry whose capacity the lists may exceed.
struct Enterer {
  Domain domain;
  InputOption option;
  const SystemLists &lists;

  template <class Entry> void start(Entry &entry) const {
    entry = {};
    entry.sample_rate = lists.sample_rate;
    entry.gain = lists.gain;
  }

  std::optional<SystemComplaint> operator()(RatioEntry &entry) const {
    const auto over = [](const NumberRows &rows) { return rows.size() > max_ratio_order + 1; };
    if (over(lists.first)) return too_many(SystemPart::first_list, "coefficients", max_ratio_order + 1);
    if (over(lists.second)) return too_many(SystemPart::second_list, "coefficients", max_ratio_order + 1);
    start(entry);
    take_column(lists.first, entry.numerator);
    take_column(lists.second, entry.denominator);
    entry.numerator_order = static_cast<std::int16_t>(static_cast<int>(lists.first.size()) - 1);
    entry.denominator_order = static_cast<std::int16_t>(static_cast<int>(lists.second.size()) - 1);
    if (domain == Domain::z) align_digital_ratio(entry);
    return std::nullopt;
  }
  std::optional<SystemComplaint> operator()(PoleZeroEntry &entry) const {
    start(entry);
    if (!take_places(lists.first, entry.zeros, entry.real_zeros, entry.complex_zeros))
      return too_many(SystemPart::first_list, "zeros", max_order);
    if (!take_places(lists.second, entry.poles, entry.real_poles, entry.complex_poles))
      return too_many(SystemPart::second_list, "poles", max_order);
    return std::nullopt;
  }
  std::optional<SystemComplaint> operator()(SectionEntry &entry) const {
    if (lists.first.size() > max_sections) return too_many(SystemPart::first_list, "sections", max_sections);
    start(entry);
    entry.pars = 1;
    entry.keep_gain = 1;
    for (const auto &row : lists.first) {
      std::copy_n(row.begin(), 3, entry.numerators[entry.section_count].begin());
      std::copy_n(row.begin() + 3, 3, entry.denominators[entry.section_count++].begin());
    }
    entry.order = order_of_sections(domain, entry);
    return std::nullopt;
  }
  std::optional<SystemComplaint> operator()(LatticeEntry &entry) const {
    if (lists.second.size() > max_order) return too_many(SystemPart::second_list, "kappa coefficients", max_order);
    if (lists.second.size() < min_lattice_order)
      return SystemComplaint{SystemPart::second_list,
                             formatf("a lattice has an order of at least %d", min_lattice_order)};
    const int lead = static_cast<int>(lists.first.size()) - 1 - static_cast<int>(lists.second.size());
    if (lead < 0)
      return SystemComplaint{
          SystemPart::first_list,
          formatf("%zu gamma coefficients are needed, one more than kappa coefficients", lists.second.size() + 1)};
    if (lead > max_lead) return too_many(SystemPart::first_list, "gamma coefficients beyond the order", max_lead);
    start(entry);
    entry.order = static_cast<std::int16_t>(lists.second.size());
    entry.lead = static_cast<std::int16_t>(lead);
    take_column(lists.first, entry.gamma);
    take_column(lists.second, std::span(entry.kappa).subspan(1));
    return std::nullopt;
  }
  std::optional<SystemComplaint> operator()(FirEntry &entry) const {
    if (lists.taps > max_taps) return too_many(SystemPart::first_list, "taps", max_taps);
    clear_entered_fir(option, entry);
    entry.sample_rate = lists.sample_rate;
    entry.gain = lists.gain;
    entry.length = lists.taps;
    entry.odd_length = lists.taps & 1;
    entry.unique_count = (lists.taps + 1) / 2;
    take_column(lists.first, entry.coeff);
    if (is_half_response(option)) std::reverse(entry.coeff.begin(), entry.coeff.begin() + entry.unique_count);
    return std::nullopt;
  }
};

NumberRows rows(std::initializer_list<double> values) {
  return column(std::span(values.begin(), values.size()));
}

} // namespace

void align_digital_ratio(RatioEntry &entry) {
  const std::int16_t order = std::max(entry.numerator_order, entry.denominator_order);
  std::rotate(entry.numerator.begin(), entry.numerator.begin() + entry.numerator_order + 1,
              entry.numerator.begin() + order + 1);
  std::rotate(entry.denominator.begin(), entry.denominator.begin() + entry.denominator_order + 1,
              entry.denominator.begin() + order + 1);
  // A power that both lack in front is a delay that cancels; the recursion would divide by its coefficient.
  std::int16_t shared = 0;
  while (shared < order && entry.numerator[shared] == 0 && entry.denominator[shared] == 0) shared++;
  for (auto *list : {&entry.numerator, &entry.denominator})
    std::rotate(list->begin(), list->begin() + shared, list->begin() + order + 1);
  entry.numerator_order = entry.denominator_order = static_cast<std::int16_t>(order - shared);
}

std::int16_t order_of_sections(Domain domain, const SectionEntry &entry) {
  std::int16_t order = 0;
  for (int i = 0; i < entry.section_count; i++) {
    const auto has = [&](int power) {
      const int place = domain == Domain::z ? power : 2 - power;
      return entry.denominators[i][place] != 0 || entry.numerators[i][place] != 0;
    };
    order += has(2) ? 2 : has(1) ? 1 : 0;
  }
  return order;
}

SystemLists lists_of(Domain domain, InputOption option, SystemEntry entry) {
  Lister lister{domain, option};
  std::visit(
      [&](const auto *system) {
        lister.lists.sample_rate = system->sample_rate;
        lister.lists.gain = system->gain;
      },
      entry);
  std::visit(lister, entry);
  return std::move(lister.lists);
}

std::optional<SystemComplaint> enter_lists(Domain domain, InputOption option, const SystemLists &lists,
                                           SystemEntries &entries) {
  const Enterer enter{domain, option, lists};
  std::optional<SystemComplaint> misfit;
  switch (option) {
  case InputOption::ratio:
    misfit = enter(entries.ratio);
    break;
  case InputOption::pole_zero:
    misfit = enter(entries.pole_zero);
    break;
  case InputOption::product:
    misfit = enter(entries.product);
    break;
  case InputOption::sum:
    misfit = enter(entries.sum);
    break;
  case InputOption::lattice:
    misfit = enter(entries.lattice);
    break;
  case InputOption::ladder_1:
  case InputOption::ladder_2:
    return SystemComplaint{SystemPart::first_list, "a ladder is not entered as lists"};
  default:
    misfit = enter(entries.fir[static_cast<std::size_t>(code(option) - code(InputOption::symmetric_fir))]);
  }
  return misfit ? misfit : check_system(domain, option, system_entry(entries, option));
}

std::vector<double> to_coordinates(const std::vector<double> &row, Coordinates coordinates, double sample_rate) {
  if (coordinates == Coordinates::real_and_imaginary || row[1] == 0) return row;
  const double radius = std::hypot(row[0], row[1]), angle = std::atan2(row[1], row[0]);
  return {radius, coordinates == Coordinates::radius_and_radians ? angle : angle / two_pi * (sample_rate / two_pi)};
}

std::vector<double> from_coordinates(const std::vector<double> &row, Coordinates coordinates, double sample_rate) {
  if (coordinates == Coordinates::real_and_imaginary || row[1] == 0) return row;
  const double turns = coordinates == Coordinates::radius_and_radians ? row[1] / two_pi : row[1] * two_pi / sample_rate;
  const double halves = 2 * turns, nearest = std::round(halves);
  if (std::fabs(halves - nearest) < 1e-9) return {std::fmod(nearest, 2) == 0 ? row[0] : -row[0], 0};
  const std::complex<double> value = row[0] * std::exp(std::complex<double>(0, two_pi * turns));
  return {value.real(), value.imag()};
}

std::vector<double> neutral_section(Domain domain, InputOption option) {
  const double through = option == InputOption::product ? 1 : 0;
  if (domain == Domain::z) return {through, 0, 0, 1, 0, 0};
  return {0, 0, through, 0, 0, 1};
}

SystemLists example_lists(Domain domain, InputOption option, double unit_factor) {
  SystemLists lists;
  lists.sample_rate = 8000 * unit_factor;
  if (domain == Domain::s) { // lowpass filters with a corner at 1000
    const double w = 1000 * unit_factor, root = std::numbers::sqrt2 * w;
    switch (option) {
    case InputOption::ratio:
      lists.first = rows({w * w});
      lists.second = rows({1, root, w * w});
      break;
    case InputOption::pole_zero:
      lists.gain = w * w;
      lists.second = {{-root / 2, root / 2}};
      break;
    case InputOption::sum:
      lists.gain = 0;
      lists.first = {{0, 0, w, 0, 1, w}};
      break;
    default:
      lists.first = {{0, 0, w * w, 1, root, w * w}};
    }
    return lists;
  }
  switch (option) { // a gain of 1 at frequency 0, but for the antisymmetric filter
  case InputOption::ratio:
    lists.gain = 0.1;
    lists.first = rows({1, 2, 1});
    lists.second = rows({1, -1.2, 0.6});
    break;
  case InputOption::pole_zero:
    lists.gain = 0.1025;
    lists.first = {{-1, 0}, {-1, 0}};
    lists.second = {{0.6, 0.5}};
    break;
  case InputOption::product:
    lists.gain = 0.025;
    lists.first = {{1, 2, 1, 1, -1.2, 0.6}, {1, 1, 0, 1, -0.5, 0}};
    break;
  case InputOption::sum:
    lists.gain = 0.05;
    lists.first = {{0.2, 0.1, 0, 1, -1.2, 0.6}, {0.1, 0, 0, 1, -0.5, 0}};
    break;
  case InputOption::lattice:
    lists.first = rows({0.25, 0.5, 0.25});
    lists.second = rows({-0.7, 0.5});
    break;
  case InputOption::symmetric_fir:
    lists.taps = 7;
    lists.gain = 0.0625;
    lists.first = rows({1, 2, 3, 4});
    break;
  case InputOption::antisymmetric_fir:
    lists.taps = 7;
    lists.first = rows({0.1, 0.2, 0.3, 0});
    break;
  case InputOption::nonsymmetric_fir:
    lists.taps = 5;
    lists.first = rows({0.5, 0.25, 0.125, 0.0625, 0.0625});
    break;
  default:
    lists.taps = 3;
    lists.first = rows({0.5, 0.25, 0.125});
  }
  return lists;
}

} // namespace brisel
