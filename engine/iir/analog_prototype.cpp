#include "engine/iir/analog_prototype.h"

#include "engine/iir/bessel_prototype.h"
#include "engine/iir/butterworth_prototype.h"
#include "engine/iir/elliptic_prototype.h"
#include "engine/iir/inverse_tschebyscheff_prototype.h"
#include "engine/iir/selectivity.h"
#include "engine/iir/tschebyscheff_prototype.h"

namespace brisel {

int prototype_order(FilterType band, int order) {
  return band == FilterType::band_pass || band == FilterType::band_stop ? order / 2 : order;
}

PrototypeEdge design_analog_prototype(AnalogPrototype family, const FilterSpec &spec, ZTransform method, int order,
                                      SectionEntry &out) {
  const int n = prototype_order(static_cast<FilterType>(spec.type), order);
  const double ap = spec.passband_ripple, as = spec.stopband_ripple, fs = spec.sampling_frequency;
  switch (family) {
  case AnalogPrototype::butterworth:
    return {butterworth_prototype(n, ap, fs, out), false};
  case AnalogPrototype::tschebyscheff:
    return {tschebyscheff_prototype(n, ap, fs, out), false};
  case AnalogPrototype::inverse_tschebyscheff:
    return {inverse_tschebyscheff_prototype(n, ap, as, fs, out), false};
  case AnalogPrototype::elliptic:
    return {elliptic_prototype(n, iir_selectivity(spec, method), ap, fs, out), false};
  case AnalogPrototype::bessel:
    return {1, !bessel_prototype(n, fs, out)};
  }
  return {0, false};
}

} // namespace brisel
