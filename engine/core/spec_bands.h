// spec_bands.h - the bands that lowpass, highpass, bandpass and bandstop specifications pass and stop.
#pragma once

#include "engine/core/records.h"

#include <vector>

namespace brisel {

struct FrequencyBand {
  double low, high;
};

/// Ascending, in radians per sample: of a specification whose sampling frequency is 2 pi.
std::vector<FrequencyBand> passbands(const FilterSpec &spec);
std::vector<FrequencyBand> stopbands(const FilterSpec &spec);

/// What lies between passbands and stopbands.
std::vector<FrequencyBand> transition_bands(const FilterSpec &spec);

/// Linear gain that a value of an arbitrary-magnitude band stands for: the value itself, or dB below 1 where the band's
/// list is in dB.
double linear_gain(const FilterSpec &spec, int band, double value);

} // namespace brisel
