// response_departure.h - how far the response of a filter that was written and read again is from the filter's own.
#pragma once

#include "engine/analysis/fir_lattice.h"
#include "engine/analysis/form_digits.h"

namespace brisel {

/// Largest departure of `changed` from `source` in dB, wherever the source is above -100 dB of its own peak:
/// 20 log10(1 + |difference| / |source|). The difference is taken of the complex values, so that all-pass filters and
/// poles that crossed the unit circle show as well. Both are compared at the same frequencies in hertz; the rates are
/// the sampling frequencies. Infinite when `changed` has no finite response.
double response_departure(const FormOfSystem &source, double source_rate, const FormOfSystem &changed,
                          double changed_rate);
/// The same of FIR filters, their constant delay left out.
double response_departure(const FirForm &source, double source_rate, const FirForm &changed, double changed_rate);

} // namespace brisel
