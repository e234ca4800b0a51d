#include "engine/iir/order_estimate.h"

#include "engine/iir/prototype_sections.h"
#include "engine/iir/selectivity.h"

#include <algorithm>

namespace brisel {

static int truncated(double order) {
  if (!(order >= 0)) return 0; // also what is not a number
  return static_cast<int>(std::min<double>(order, max_order_estimate));
}

void estimate_iir_orders(std::array<int, analog_prototypes.size()> &orders, double k, double ap_db, double as_db,
                         FilterType band) {
  const double d = discrimination(ap_db, as_db);
  const double k_complement = std::sqrt((1 - k) * (1 + k));
  const int butterworth = truncated(1 - 0.5 * std::log(d) / std::log(k));
  const int tschebyscheff =
      truncated(1 + std::log(std::sqrt(d) + std::sqrt(d - 1)) / (std::log1p(k_complement) - std::log(k)));
  const int elliptic = truncated(1 - std::log(16 * d) / std::log(nome(k)));
  // Kept: a Bessel filter is offered the Butterworth order, which says nothing of its attenuation.
  orders = {butterworth, tschebyscheff, tschebyscheff, elliptic, butterworth};
  if (band == FilterType::band_pass || band == FilterType::band_stop) {
    for (int &order : orders) order = std::min(2 * order, max_order_estimate);
  }
}

} // namespace brisel
