// analog_prototype.h - the normalized analog lowpass from which an IIR design starts.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

namespace brisel {

struct PrototypeEdge {
  double wp;              // passband edge of the prototype, 0 for an unknown family
  bool approximate_poles; // Bessel beyond the orders whose poles are refined
};

/// Order of the lowpass prototype behind a filter of `order`: half of it for band pass and band stop.
int prototype_order(FilterType band, int order);

/// Prototype of the family for a filter of `order` into `out`, as sections in s, highest power first. An unknown family
/// leaves `out` alone.
PrototypeEdge design_analog_prototype(AnalogPrototype family, const FilterSpec &spec, ZTransform method, int order,
                                      SectionEntry &out);

} // namespace brisel
