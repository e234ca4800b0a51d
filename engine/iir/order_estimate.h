// order_estimate.h - the order that each analog prototype needs for a specification.
#pragma once

#include "engine/core/code_tables.h"

#include <array>

namespace brisel {

/// No estimate exceeds this: the orders that specifications with hardly any transition would need are of no use.
inline constexpr int max_order_estimate = 1000000;

/// Orders by prototype code, for selectivity k, passband ripple and stopband attenuation in dB; doubled for band pass
/// and band stop. 0 where the specification asks for nothing sensible.
void estimate_iir_orders(std::array<int, analog_prototypes.size()> &orders, double k, double ap_db, double as_db,
                         FilterType band);

} // namespace brisel
