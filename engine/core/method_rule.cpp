#include "engine/core/method_rule.h"

#include "engine/core/design_state.h"

namespace brisel {

std::int8_t ruled_method(int method, int filter_type) {
  const std::int8_t ruled = method == 0 || is_fir_method(method) ? static_cast<std::int8_t>(method) : 0;
  if (filter_type == code(FilterType::arbitrary_group_delay)) return code(DesignMethod::iir);
  if (filter_type >= code(FilterType::differentiator) && !is_fir_method(ruled)) return code(DesignMethod::window);
  return ruled;
}

void apply_method_rule() {
  design_state.DesignOrAnalysisType = ruled_method(design_state.DesignOrAnalysisType, design_state.filter_type);
}

} // namespace brisel
