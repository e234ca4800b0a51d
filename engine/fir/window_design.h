// window_design.h - FIR design by the window method.
#pragma once

#include "engine/core/records.h"

namespace brisel {

/// Attenuation in dB that shapes the window: the stopband's; that of the smallest deviation for a multiband filter; 60
/// for types that have none (differentiator, Hilbert transformer, arbitrary magnitude).
double window_attenuation(const FilterSpec &spec);

/// Designs `spec` (a design run's, sampling frequency 2 pi) into `entry`: ideal half response, window beside it. Takes
/// compensation and transition width from the design record's selections; a length of 0 is estimated for the window.
/// False, after a message, when there is no result; `entry` then holds nothing of use.
bool fir_window_design(const FilterSpec &spec, FirEntry &entry);

} // namespace brisel
