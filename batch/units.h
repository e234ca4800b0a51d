// units.h - radians per second as the user reads them.
#pragma once

#include "engine/files/text_file.h"

namespace brisel {

/// `radians` in the unit of which one is `factor` radians per second. Of the doubles that stand for it the shortest
/// decimal is taken: 8000 Hz come back as 8000, not as 8000.000000000001.
inline double in_user_unit(double radians, double factor) {
  const double value = radians / factor;
  const double short_value = parse_number(formatf("%.15g", value)).value_or(value);
  return short_value * factor == radians ? short_value : value;
}

} // namespace brisel
