// windows.h - half windows, index 0 at the centre.
#pragma once

#include <span>

namespace brisel {

/// Fills the (length + 1) / 2 values of `half` with window `code` (0 to 19) of a filter of `length` taps, at least 3:
/// value k belongs to the distance k from the centre when the length is odd, k + 1/2 when it is even. `attenuation` in
/// dB shapes codes 14 to 17; where no window of that attenuation exists, values are not finite.
void make_window(int code, int length, double attenuation, std::span<double> half);

/// Kaiser's shape parameter for an attenuation in dB; 0, a rectangular window, up to 21 dB. [Kaiser74]
double kaiser_beta(double attenuation);

/// Modified Bessel function of order 0, x >= 0; infinite when it is beyond the range of a double.
double bessel_i0(double x);

} // namespace brisel
