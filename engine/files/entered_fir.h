// entered_fir.h - taps as the entry of an entered FIR system.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

#include <span>

namespace brisel {

/// The FIR type that belongs to an input option 7 to 10.
FirSymmetry symmetry_of(InputOption option);

/// Options 7 and 8, whose entry holds half the taps.
bool is_half_response(InputOption option);

/// What an entered FIR system has beside its taps, gain and sampling rate: no taps yet, no window, no scaling.
void clear_entered_fir(InputOption option, FirEntry &entry);

/// The option that the taps are entered by: symmetric or antisymmetric when they mirror each other to the last digit.
InputOption entered_option(std::span<const double> taps);

/// Fills an entry cleared for `option`: for the first two options the half response, centre first, else all taps.
void enter_taps(std::span<const double> taps, InputOption option, FirEntry &entry);

} // namespace brisel
