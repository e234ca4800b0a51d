// phase_shift.cpp - the pair of poles of a third-order all-pass filter from its phase at two frequencies.
//
// The phase of a stable all-pass filter falls with the frequency [Oppenheim99, 5.5], here by 540 degrees from 0 to half
// the sampling frequency. Two frequencies can share an angle modulo 360 degrees in one way only: lags of theta and
// theta + 360 with theta between 0 and 180. A shift of which the lag is 180 or more takes the gain -1 for the rest.
//
// In t = tan(w / 2), a section of first order lags 2 atan(k t), k = (1 + p) / (1 - p) > 0, and one of second order lags
// 2 b with cot b = (A - B t^2) / (2 t), where
//   a1 = 2 (A - B) / (A + B + 2),   a2 = (A + B - 2) / (A + B + 2),
// and the section is stable exactly for A > 0 and B > 0. What the pair has to lag is left by the first section:
//   b1 = theta / 2 - atan(k t1),  b2 = theta / 2 + pi - atan(k t2),  cot b = (1 + T k t) / (T - k t),  T = tan(theta /
//   2),
// and the two equations for A and B give
//   A = 2 t1 t2 (t2 cot b1 - t1 cot b2) / (t2^2 - t1^2),   B = 2 (t1 cot b1 - t2 cot b2) / (t2^2 - t1^2).
// b1 is below a right angle and b2 above one, so that both differences are sums of positive terms: nothing cancels but
// what is near to each other in the task itself, and there is a stable filter exactly for k t1 < T < k t2.
//
// [Oppenheim99] A. V. Oppenheim, R. W. Schafer, J. R. Buck, Discrete-Time Signal Processing, 2nd ed.
#include "engine/iir/phase_shift.h"

#include "engine/core/spec_check.h"
#include "engine/files/text_file.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace brisel {

namespace {

constexpr double pi = std::numbers::pi;
// With a2 = 0 the pair's numerator would begin with a delay, which cascaded sections drop. This turns no phase by more
// than itself.
constexpr double smallest_a2 = 1e-13;

// Sampling frequency 2 pi.
struct Task {
  double w1, w2;
  double theta; // lag at w1, radians
  double gain;
};

double turn_remainder(double degrees) {
  const double rest = std::fmod(degrees, 360);
  return rest < 0 ? rest + 360 : rest;
}

Task task_of(const PhaseShiftSpec &wanted) {
  const double period = two_pi / wanted.sampling_frequency;
  const double lag = turn_remainder(-wanted.degrees);
  const bool negative = lag >= 180;
  return {wanted.first_passband * period, wanted.second_passband * period, (negative ? lag - 180 : lag) * pi / 180,
          negative ? -1.0 : 1.0};
}

// What is wrong beside the real zero.
std::optional<PhaseShiftComplaint> wrong_task(const PhaseShiftSpec &wanted) {
  const auto complain = [](PhaseShiftField field, const char *reason) { return PhaseShiftComplaint{field, reason}; };
  const double rate = wanted.sampling_frequency;
  if (!(rate > 0)) return complain(PhaseShiftField::sampling_frequency, "is not above zero");
  if (!(rate >= min_sampling_frequency && rate <= max_sampling_frequency))
    return complain(PhaseShiftField::sampling_frequency, "is beyond all limits");
  if (!(wanted.first_passband > 0)) return complain(PhaseShiftField::first_passband, "is not above zero");
  const char *const too_high = "is not below half the sampling frequency";
  if (!(wanted.first_passband < rate / 2)) return complain(PhaseShiftField::first_passband, too_high);
  if (!(wanted.second_passband > wanted.first_passband))
    return complain(PhaseShiftField::second_passband, "is not above the first passband");
  if (!(wanted.second_passband < rate / 2)) return complain(PhaseShiftField::second_passband, too_high);
  if (!(std::abs(wanted.degrees) <= max_phase_shift))
    return PhaseShiftComplaint{PhaseShiftField::degrees,
                               formatf("is beyond %g degrees, %g turns", max_phase_shift, max_phase_shift / 360)};
  const double rest = turn_remainder(wanted.degrees);
  if (rest == 0) return complain(PhaseShiftField::degrees, "is no shift and needs no filter");
  if (rest == 180) return complain(PhaseShiftField::degrees, "is a change of sign and needs no filter");
  return std::nullopt;
}

bool holds(const PhaseShiftFilter &filter, const Task &task) {
  const auto error = [&](double w, double lag) { return std::abs(phase_lag(filter, w) - lag); };
  const auto [a1, a2] = filter.pair;
  return std::abs(filter.p) < 1 && std::abs(a2) < 1 && std::abs(a1) < 1 + a2 &&
         error(task.w1, task.theta) <= phase_shift_error && error(task.w2, task.theta + two_pi) <= phase_shift_error;
}

// Nothing when there is no stable filter, or none whose rounded coefficients have the phase.
std::optional<PhaseShiftFilter> solve(const Task &task, double real_zero) {
  const double k = (real_zero + 1) / (real_zero - 1);
  const double t1 = std::tan(task.w1 / 2), t2 = std::tan(task.w2 / 2), T = std::tan(task.theta / 2);
  if (!(std::abs(real_zero) > 1 && k * t1 < T && T < k * t2)) return std::nullopt;
  const double cot_b1 = (1 + T * k * t1) / (T - k * t1), cot_b2 = (1 + T * k * t2) / (T - k * t2);
  const double scale = 2 / ((t2 - t1) * (t2 + t1));
  const double A = scale * t1 * t2 * (t2 * cot_b1 - t1 * cot_b2), B = scale * (t1 * cot_b1 - t2 * cot_b2);
  const double a2 = (A + B - 2) / (A + B + 2);
  const PhaseShiftFilter filter{
      task.gain,
      1 / real_zero,
      {.a1 = 2 * (A - B) / (A + B + 2), .a2 = std::abs(a2) < smallest_a2 ? std::copysign(smallest_a2, a2) : a2}};
  return holds(filter, task) ? std::optional(filter) : std::nullopt;
}

// Rounded to some digits, not below `value`.
double rounded_up(double value, int digits) {
  const double unit = std::pow(10, std::floor(std::log10(std::abs(value))) + 1 - digits);
  return parse_number(formatf("%.*g", digits, std::ceil(value / unit) * unit)).value_or(value);
}

// Zeros (k + 1) / (k - 1) of all k between the two.
std::vector<ZeroRange> zeros_between(double k_low, double k_high, int digits) {
  const auto zero = [](double k) { return (k + 1) / (k - 1); };
  std::vector<ZeroRange> ranges;
  const auto add = [&](double low, double high) {
    const ZeroRange range{std::max(rounded_up(low, digits), -max_real_zero),
                          std::min(-rounded_up(-high, digits), max_real_zero)};
    if (range.low < range.high) ranges.push_back(range);
  };
  if (k_low < 1) add(k_high < 1 ? zero(k_high) : -max_real_zero, zero(k_low));
  if (k_high > 1) add(zero(k_high), k_low > 1 ? zero(k_low) : max_real_zero);
  return ranges;
}

// The frequency between `low` and `high` at which the filter lags by `lag`; the nearer end when that is beyond.
double frequency_of(const PhaseShiftFilter &filter, double lag, double low, double high) {
  for (int halvings = 0; halvings < 60; halvings++) {
    const double middle = (low + high) / 2;
    (phase_lag(filter, middle) < lag ? low : high) = middle;
  }
  return (low + high) / 2;
}

} // namespace

// 1 - p z^-1 and the pair's denominator turn by less than half a turn, so that their arguments need no unwrapping.
double phase_lag(const PhaseShiftFilter &filter, double w) {
  const std::complex<double> x = std::polar(1.0, -w);
  const auto [a1, a2] = filter.pair;
  return 3 * w + 2 * std::arg(1.0 - filter.p * x) + 2 * std::arg(1.0 + x * (a1 + a2 * x));
}

std::vector<ZeroRange> working_zeros(const PhaseShiftSpec &wanted) {
  if (wrong_task(wanted)) return {};
  const Task task = task_of(wanted);
  const double T = std::tan(task.theta / 2);
  const double low = T / std::tan(task.w2 / 2), high = T / std::tan(task.w1 / 2);
  // At the very ends the poles reach the unit circle and their coefficients hold no phase. How far inside they do
  // depends on the task.
  for (const double inside : {0.001, 0.01, 0.05, 0.2, 0.4}) {
    const double step = std::pow(high / low, inside);
    for (int digits = 4; digits <= 12; digits += 4) {
      const auto ranges = zeros_between(low * step, high / step, digits);
      const auto work = [&](const ZeroRange &range) { return solve(task, range.low) && solve(task, range.high); };
      if (!ranges.empty() && std::ranges::all_of(ranges, work)) return ranges;
    }
  }
  return {};
}

std::optional<double> middle_zero(const PhaseShiftSpec &wanted) {
  const auto ranges = working_zeros(wanted);
  if (ranges.empty()) return std::nullopt;
  const Task task = task_of(wanted);
  // The mean of the logarithms of the two ends of k.
  const double k = std::tan(task.theta / 2) / std::sqrt(std::tan(task.w1 / 2) * std::tan(task.w2 / 2));
  const double exact = std::clamp((k + 1) / (k - 1), -max_real_zero, max_real_zero); // infinite at k = 1
  for (const int digits : {3, 6, 12})
    if (const auto zero = parse_number(formatf("%.*g", digits, exact)); zero && solve(task, *zero)) return zero;
  return ranges.front().low;
}

std::string working_zeros_text(const PhaseShiftSpec &wanted) {
  std::string text;
  for (const ZeroRange &range : working_zeros(wanted))
    appendf(text, "%sfrom %.12g to %.12g", text.empty() ? "" : " or ", range.low, range.high);
  return text;
}

std::variant<PhaseShiftFilter, PhaseShiftComplaint> design_phase_shift(const PhaseShiftSpec &wanted) {
  if (auto complaint = wrong_task(wanted)) return std::move(*complaint);
  const double r = wanted.real_zero;
  if (std::abs(r) <= max_real_zero)
    if (const auto filter = solve(task_of(wanted), r)) return *filter;
  if (working_zeros(wanted).empty())
    return PhaseShiftComplaint{PhaseShiftField::degrees, "has no filter: it is too small, or the passbands too near"};
  return PhaseShiftComplaint{PhaseShiftField::real_zero,
                             std::abs(r) > 1 ? "gives no stable filter" : "is not above 1 or below -1"};
}

std::array<FrequencyBand, 2> phase_shift_bands(const PhaseShiftSpec &wanted, const PhaseShiftFilter &filter) {
  const Task task = task_of(wanted);
  const double tolerance = phase_band_tolerance * pi / 180, to_rate = wanted.sampling_frequency * inverse_two_pi;
  const auto band = [&](double w, double lag) {
    return FrequencyBand{to_rate * frequency_of(filter, lag - tolerance, 0, w),
                         to_rate * frequency_of(filter, lag + tolerance, w, pi)};
  };
  return {band(task.w1, task.theta), band(task.w2, task.theta + two_pi)};
}

} // namespace brisel
