// compensation.h - the gain by which a filter undoes the droop of what stands before or behind it.
#pragma once

#include <optional>

namespace brisel {

enum class CompensationCurve { sinc, comb, none };

/// Numbers of the comb are 1 to `max_compensation_setting`; only the comb reads them.
struct Compensation {
  bool on = false;
  CompensationCurve type = CompensationCurve::none;
  int rate_change = 1;        // R
  int differential_delay = 1; // D
  int stages = 1;
};
inline constexpr int max_compensation_setting = 127;
constexpr bool is_active(const Compensation &compensation) {
  return compensation.on && compensation.type != CompensationCurve::none;
}

/// From the selections as they are stored: a setting of 0 counts as 1, a type beyond the comb as no curve. Nothing when
/// a comb setting is above the limit.
std::optional<Compensation> make_compensation(bool on, int type, int rate_change, int differential_delay, int stages);

/// Gain at `w` radians per sample (0 to pi) of the filter being designed; 1 when compensation is off.
/// sinc: (w/2) / sin(w/2), the inverse of a zero-order hold. comb: |R D sin(w/(2R)) / sin(D w/2)|^stages, the inverse
/// of a comb (CIC) decimator seen at its output rate [Hogenauer81]. Infinite at a null of the comb. [Hogenauer81] E. B.
/// Hogenauer, An economical class of digital filters for decimation and interpolation, IEEE Trans. ASSP-29 (1981).
double compensation_factor(const Compensation &compensation, double w);
/// The same in dB, also where the factor is beyond the range of a double.
double compensation_db(const Compensation &compensation, double w);

/// The lowest null of the comb in [lower, upper], radians per sample. No finite gain undoes it, so a band of nonzero
/// gain must not contain one.
std::optional<double> comb_null(const Compensation &compensation, double lower, double upper);

} // namespace brisel
