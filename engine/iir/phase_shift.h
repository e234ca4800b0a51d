// phase_shift.h - all-pass filters of third order that shift the phase by one angle at two frequencies.
//
// H(z) = gain (z^-1 - p) / (1 - p z^-1) (a2 + a1 z^-1 + z^-2) / (1 + a1 z^-1 + a2 z^-2), |H| = 1 everywhere. The real
// zero 1 / p is the user's; it decides how the phase runs around the two frequencies. Everything else follows.
#pragma once

#include "engine/iir/allpass_delay.h"

#include <optional>
#include <string>
#include <variant>

namespace brisel {

/// Frequencies in radians per second, the passbands being the centres of narrow ones.
struct PhaseShiftSpec {
  double sampling_frequency = 0;
  double first_passband = 0;
  double second_passband = 0;
  double degrees = 0; // positive values lead, whole turns do not count
  double real_zero = 0;
};
enum class PhaseShiftField { sampling_frequency, first_passband, second_passband, degrees, real_zero };

struct PhaseShiftComplaint {
  PhaseShiftField field;
  std::string reason; // what is said of the field, without a full stop
};

struct PhaseShiftFilter {
  double gain; // 1 or -1
  double p;    // real pole
  AllpassSection pair;
};

inline constexpr double max_phase_shift = 3600;   // degrees; more turns are a slip of the pen
inline constexpr double max_real_zero = 1e6;      // further out the first section is a delay and no choice is left
inline constexpr double phase_shift_error = 1e-9; // radians, of the coefficients as they are rounded
inline constexpr double phase_band_tolerance = 5; // degrees, of the bands that the user is told

/// The filter, or what makes it impossible.
std::variant<PhaseShiftFilter, PhaseShiftComplaint> design_phase_shift(const PhaseShiftSpec &wanted);

/// Lag of the filter without its gain at `w` radians per sample, radians: rises from 0 to 3 pi between 0 and pi.
double phase_lag(const PhaseShiftFilter &filter, double w);

/// Where the phase is within phase_band_tolerance of the shift, around each of the two frequencies, radians per second.
std::array<FrequencyBand, 2> phase_shift_bands(const PhaseShiftSpec &wanted, const PhaseShiftFilter &filter);

struct ZeroRange {
  double low, high;
};
/// The real zeros, up to max_real_zero, for which there is a filter with these frequencies and this shift; the ends are
/// rounded inwards to few digits and are among them. Empty when there are none.
std::vector<ZeroRange> working_zeros(const PhaseShiftSpec &wanted);
/// One from the middle of them, as few digits as work; nothing when there are none.
std::optional<double> middle_zero(const PhaseShiftSpec &wanted);
/// They read as "from 2.45 to 1000000"; empty when there are none.
std::string working_zeros_text(const PhaseShiftSpec &wanted);

} // namespace brisel
