#include "engine/core/problem_description.h"

#include "engine/files/text_file.h"
#include "engine/iir/iir_quantize.h"

namespace brisel {

static std::string arithmetic_description(const QuantizationSettings &q, bool fixed) {
  if (!q.quant) return "52 Bit Floating Point";
  return formatf(fixed ? "%d Bit Fixed Point" : "%d Bit Floating Point", q.ibit);
}

std::string problem_description(const DesignRecord &r) {
  const auto text = [](std::string_view name) { return std::string(name); };
  std::string out;
  const int method = r.selections.DesignOrAnalysisType;
  if (method == code(DesignMethod::z_analysis) || method == code(DesignMethod::s_analysis)) {
    const int option =
        method == code(DesignMethod::z_analysis) ? r.selections.z_input_option : r.selections.s_input_option;
    out = text(input_options[option].name);
    if (method == code(DesignMethod::s_analysis))
      out += ", " + text(z_transforms[r.selections.SDomainAnalysisRealizationMethod].name);
  } else {
    out = text(filter_types[r.selections.filter_type].dialog_name);
    if (r.selections.filter_type == code(FilterType::arbitrary_group_delay))
      out += ", all-pass sections";
    else if (is_fir_method(method))
      out += ", " + text(design_methods[method].name);
    else
      out += ", " + text(analog_prototypes[r.selections.analog_type].name) + ", " +
             text(z_transforms[r.selections.ZTransformMethod].name);
    if (method == code(DesignMethod::window)) out += ", " + text(windows[r.spec.window_type].name);
  }
  const bool fir =
      is_fir_method(method) || (method == code(DesignMethod::z_analysis) && is_fir_option(r.selections.z_input_option));
  const bool analog_only = method == code(DesignMethod::s_analysis) &&
                           r.selections.SDomainAnalysisRealizationMethod == code(ZTransform::s_domain_only);
  out += fir ? formatf(r.fir.length == 1 ? ", %d tap" : ", %d taps", r.fir.length)
             : formatf(", order %d", (analog_only ? r.s_unnormalized : r.z).cascade.order);
  return out + ", " +
         arithmetic_description(r.quantization, fir ? r.quantization.qtype != 0
                                                    : in_fixed_point(r.quantization, RealizationForm{r.realization}));
}

} // namespace brisel
