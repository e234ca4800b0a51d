// peak_gain.h - the largest magnitude of a FIR filter.
#pragma once

#include <span>

namespace brisel {

/// Between the points of any grid too: good to about 1e-12. At least one tap.
double peak_gain(std::span<const double> taps);

} // namespace brisel
