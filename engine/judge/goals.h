// goals.h - what a specification asks of a filter, band by band.
//
// Frequencies are radians per sample: of a specification whose sampling frequency is 2 pi.
#pragma once

#include "engine/core/spec_bands.h"
#include "engine/fir/compensation.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brisel {

enum class Quantity : std::int8_t {
  ripple,         // largest over smallest gain, both over the desired gain
  attenuation,    // largest passband gain, over the desired one, over the largest gain here
  gain,           // largest gain
  error,          // largest distance of the gain from the desired one
  relative_error, // the same over the desired gain
  delay_ripple,   // half the range of the distance of the group delay from the desired one
};
struct QuantityRow {
  std::string_view name;
  std::string_view unit; // empty: linear
};
inline constexpr std::array quantities{
    QuantityRow{"ripple", "dB"}, QuantityRow{"attenuation", "dB"},  QuantityRow{"gain", "dB"},
    QuantityRow{"error", ""},    QuantityRow{"relative error", ""}, QuantityRow{"delay ripple", "samples"},
};
constexpr const QuantityRow &quantity_row(Quantity quantity) {
  return quantities[static_cast<std::size_t>(quantity)];
}
constexpr bool is_in_decibels(Quantity quantity) {
  return quantity_row(quantity).unit == "dB";
}

/// One thing that a specification asks for, or that its user wants to know.
struct Goal {
  std::string band; // "passband", "lower stopband", "band 2", "gap", "passbands" for several at once, ...
  std::vector<FrequencyBand> bands;
  Quantity quantity;
  std::optional<double> asked;                // in the unit of the quantity
  std::function<double(double)> desired = {}; // gain, not negative, or delay at w; empty: 1, or 0 for a delay
  std::vector<double> kinks = {};             // where the desired curve has a corner inside the bands
  bool in_percent = false;                    // as its user asks for it; `asked` is a fraction all the same
};

struct Goals {
  std::vector<Goal> goals;                    // bands that pass, bands that stop, then the gaps, each by frequency
  std::vector<FrequencyBand> passbands;       // whose largest gain attenuations refer to
  std::function<double(double)> desired = {}; // gain in these
};

/// A differentiator's and a Hilbert transformer's percent become fractions. Bands of an arbitrary magnitude whose
/// ripple is proportional are judged absolutely when they ask for gains of 0 or below.
Goals goals_of(const FilterSpec &spec, const Compensation &compensation);

/// What a phase equalizer is there for; `ripple` in samples, 0 when none is asked for.
Goal equalizer_goal(const FilterSpec &spec, double ripple);

} // namespace brisel
