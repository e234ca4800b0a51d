#include "gui/plots/plot_axis.h"

#include "engine/files/text_file.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace brisel {

namespace {

constexpr int short_digits = 4; // a step with more significant digits is not worth writing out

/// Significant decimal digits of a positive number, up to short_digits + 1.
int significant_digits(double value) {
  double scaled = value / std::pow(10.0, std::floor(std::log10(value)));
  for (int digits = 1; digits <= short_digits; digits++, scaled *= 10)
    if (std::abs(scaled - std::round(scaled)) < 1e-6 * scaled) return digits;
  return short_digits + 1;
}

/// Decimals that write every tick exactly; if the step has too many digits for that, those that are off by less than a
/// hundredth of a step.
int label_decimals(std::span<const double> ticks, double step) {
  constexpr int most = 12;
  for (const double tolerance : {1e-6, 1e-2}) {
    if (tolerance == 1e-6 && significant_digits(step) > short_digits) continue;
    double power = 1;
    for (int decimals = 0; decimals <= most; decimals++, power *= 10)
      if (std::all_of(ticks.begin(), ticks.end(), [&](double tick) {
            return std::abs(tick * power - std::round(tick * power)) <= tolerance * step * power;
          }))
        return decimals;
  }
  return most;
}

std::size_t length_without_sign(const std::string &label) {
  return label.size() - (label.find('-') == label.find_first_not_of(' ') ? 1 : 0);
}

void fill_with_blanks(std::vector<std::string> &labels) {
  std::size_t longest = 0;
  for (const std::string &label : labels) longest = std::max(longest, length_without_sign(label));
  for (std::string &label : labels) label.insert(0, longest - length_without_sign(label), ' ');
}

void cut_to_slots(std::vector<std::string> &labels) {
  for (std::string &label : labels)
    if (label.size() >= label_capacity) label.resize(label_capacity - 1);
}

/// 0 and the shortest text of a tick between `low` and `high` of a logarithmic axis.
std::string ratio_label(double value) {
  if (value >= 1e6 || value < 1e-3) {
    const double exponent = std::floor(std::log10(value) + 1e-9);
    return formatf("%.4ge%d", value / std::pow(10.0, exponent), static_cast<int>(exponent));
  }
  return formatf("%.6g", value);
}

std::vector<double> equal_steps(const Range &range, int count) {
  std::vector<double> ticks;
  const double step = (range[1] - range[0]) / (count - 1);
  for (int i = 0; i < count; i++) {
    const double tick = range[0] + i * step;
    ticks.push_back(std::abs(tick) < 1e-9 * step ? 0.0 : tick);
  }
  return ticks;
}

/// The smallest step of 1, 2, 2.5 or 5 times a power of ten with which `intervals` steps from a multiple of it cover
/// the range; the covering range.
Range covering_range(const Range &range, int intervals) {
  const double span = range[1] - range[0];
  for (double power = std::pow(10.0, std::floor(std::log10(span / intervals))); power < 100 * span; power *= 10)
    for (const double digit : {1.0, 2.0, 2.5, 5.0}) {
      const double step = digit * power;
      const double first = std::floor(range[0] / step + 1e-9);
      if ((first + intervals) * step >= range[1] - 1e-9 * step) return {first * step, (first + intervals) * step};
    }
  return range;
}

} // namespace

bool is_usable(const Range &range) {
  return std::isfinite(range[0]) && std::isfinite(range[1]) && std::isfinite(range[1] - range[0]) &&
         range[1] - range[0] > 1e-12 * std::max(std::abs(range[0]), std::abs(range[1])) && range[1] - range[0] > 1e-290;
}

int starting_label_count(double cell) {
  const int rounded = 2 * static_cast<int>(std::ceil(std::clamp(cell, 2.0, 20.0) / 2));
  return rounded / 2 + 2;
}

int fewer_labels(int count) {
  switch (count) {
  case 9:
    return 5;
  case 6:
  case 5:
    return 3;
  case 3:
    return 2;
  default:
    return 0;
  }
}

Axis linear_axis(const Range &range, bool widen, int most_labels, std::span<const int> counts) {
  Axis axis{.range = range};
  int best_count = 2;
  double best_cost = std::numeric_limits<double>::infinity();
  for (const int count : counts) {
    if (count > most_labels) continue;
    const Range candidate = widen ? covering_range(range, count - 1) : range;
    const int digits = significant_digits((candidate[1] - candidate[0]) / (count - 1));
    // Halves and quarters of a range whose ends are no round numbers, such as -pi and pi, at least mean something.
    if (digits > short_digits && count != 3 && count != 5 && count != 9) continue;
    const double unused = 1 - (range[1] - range[0]) / (candidate[1] - candidate[0]);
    const double cost = 8.0 / count + (widen ? 12 * unused + 0.8 * digits : digits);
    if (cost >= best_cost) continue;
    best_cost = cost;
    best_count = count;
    axis.range = candidate;
  }
  return with_label_count(axis, best_count);
}

Axis with_label_count(const Axis &axis, int count) {
  Axis other{.range = axis.range};
  other.ticks = equal_steps(axis.range, count);
  other.labels = tick_labels(other.ticks);
  return other;
}

Axis logarithmic_axis(const Range &range) {
  Axis axis{.range = range, .logarithmic = true};
  const double low = range[0] * (1 - 1e-9), high = range[1] * (1 + 1e-9);
  const int first = static_cast<int>(std::floor(std::log10(low))), last = static_cast<int>(std::ceil(std::log10(high)));
  const auto multiples = [&](std::initializer_list<int> digits) {
    std::vector<double> values;
    for (int decade = first; decade <= last; decade++)
      for (const int digit : digits) {
        const double value = digit * std::pow(10.0, decade);
        if (value >= low && value <= high) values.push_back(value);
      }
    return values;
  };
  axis.ticks = multiples({1});
  if (axis.ticks.size() < 3) axis.ticks = multiples({1, 2, 5});
  if (axis.ticks.size() < 3) {
    static constexpr std::array counts{5, 6, 7, 8, 9};
    const Axis inner = linear_axis(range, true, 9, counts);
    axis.ticks = inner.ticks;
    std::erase_if(axis.ticks, [&](double tick) { return tick < low || tick > high; });
    axis.labels = tick_labels(axis.ticks);
    return axis;
  }
  if (last - first <= 12) axis.minor_ticks = multiples({2, 3, 4, 5, 6, 7, 8, 9});
  for (const double tick : axis.ticks) axis.labels.push_back(ratio_label(tick));
  fill_with_blanks(axis.labels);
  cut_to_slots(axis.labels);
  return axis;
}

std::vector<std::string> tick_labels(std::span<const double> ticks) {
  double largest = 0, step = std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < ticks.size(); i++) {
    largest = std::max(largest, std::abs(ticks[i]));
    if (i > 0) step = std::min(step, std::abs(ticks[i] - ticks[i - 1]));
  }
  if (!std::isfinite(step) || step == 0) step = largest > 0 ? largest : 1;
  int exponent = 0;
  if (largest >= 999999.5 || (largest > 0 && largest < 1e-3 * (1 - 1e-9)))
    exponent = 3 * static_cast<int>(std::floor((std::log10(largest) + 1e-9) / 3));
  // In two factors: 10^-exponent alone overflows for the smallest doubles.
  const double half = std::pow(10.0, -(exponent / 2)), rest = std::pow(10.0, -(exponent - exponent / 2));
  std::vector<double> mantissas;
  for (const double tick : ticks) mantissas.push_back(tick * half * rest);
  const int decimals = label_decimals(mantissas, step * half * rest);
  std::vector<std::string> labels;
  for (const double mantissa : mantissas) {
    std::string label = formatf("%.*f", decimals, mantissa);
    if (label.find_first_of("123456789") == std::string::npos) {
      if (label.starts_with('-')) label.erase(0, 1);
      if (exponent != 0) label.assign(1, '0');
    } else if (exponent != 0) {
      appendf(label, "e%d", exponent);
    }
    labels.push_back(std::move(label));
  }
  fill_with_blanks(labels);
  cut_to_slots(labels);
  return labels;
}

void equalize_labels(std::vector<std::string> &labels) {
  std::size_t longest = 0;
  for (const std::string &label : labels) {
    if (label.find('e') != std::string::npos) return;
    longest = std::max(longest, length_without_sign(label));
  }
  for (std::string &label : labels) {
    const std::size_t missing = longest - length_without_sign(label);
    if (missing == 0) continue;
    if (label.find('.') == std::string::npos) {
      label += '.';
      label.append(missing - 1, '0');
    } else {
      label.append(missing, '0');
    }
  }
}

AxisMap::AxisMap(const Range &range, bool logarithmic, double start, double end)
    : low(logarithmic ? std::log(range[0]) : range[0]), high(logarithmic ? std::log(range[1]) : range[1]), start(start),
      end(end), logarithmic(logarithmic) {}

double AxisMap::position(double value) const {
  if (logarithmic) value = value > 0 ? std::log(value) : std::numeric_limits<double>::quiet_NaN();
  return start + (value - low) / (high - low) * (end - start);
}

double AxisMap::value(double position) const {
  const double value = low + (position - start) / (end - start) * (high - low);
  return logarithmic ? std::exp(value) : value;
}

} // namespace brisel
