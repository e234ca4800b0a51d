// plot_axis.h - axes of a plot as numbers: tick values, label texts, and the map between values and device positions.
#pragma once

#include "engine/core/design_state.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace brisel {

inline constexpr std::size_t label_capacity = 20; // characters of a label slot, terminator included

struct Axis {
  Range range{0, 1}; // in the unit of the label
  bool logarithmic = false;
  std::vector<double> ticks = {};       // labelled, ascending
  std::vector<double> minor_ticks = {}; // between them; logarithmic axes only
  std::vector<std::string> labels = {}; // one a tick, equally long
};

/// Both ends finite, ascending, and further apart than the digits of a double can tell.
bool is_usable(const Range &range);

/// The number of labels to start with for a character cell of `cell` pixels (96 to the inch): half of the rounded cell
/// plus 2. The cell is rounded up to an even number of pixels from 2 to 20, which keeps the count within 3 and 12.
int starting_label_count(double cell);
/// The next smaller number of horizontal labels, 0 when there is none.
int fewer_labels(int count);

/// An axis with equal steps from end to end and at most `most_labels` labels; `counts` lists the label counts to choose
/// from, all at least 2. The count with the roundest step is taken. When `widen` is set the ends move outwards to
/// multiples of the step.
Axis linear_axis(const Range &range, bool widen, int most_labels, std::span<const int> counts);
/// The same range with another number of labels.
Axis with_label_count(const Axis &axis, int count);
/// An axis with equal ratios: labels at the decades, at 1, 2 and 5 or at round values where decades are too few.
/// `range` has positive ends.
Axis logarithmic_axis(const Range &range);

/// Texts for tick values that lie equal steps apart: as many digits as tell neighbours apart, a common exponent (a
/// multiple of 3) from a million up and below a thousandth. Texts are filled with leading blanks to equal length.
std::vector<std::string> tick_labels(std::span<const double> ticks);
/// Makes the labels of one axis equally long: unless one of them has an exponent, a shorter label gets a decimal point
/// if it has none and is filled with zeros. A leading minus does not count.
void equalize_labels(std::vector<std::string> &labels);

/// Map between values of an axis and positions of the device.
class AxisMap {
public:
  AxisMap() = default;
  AxisMap(const Range &range, bool logarithmic, double start, double end);
  /// Not a number for values that a logarithmic axis does not have.
  double position(double value) const;
  double value(double position) const;

private:
  double low = 0, high = 1; // logarithms on a logarithmic axis
  double start = 0, end = 1;
  bool logarithmic = false;
};

} // namespace brisel
