#include "codegen/dsp_checks.h"

#include "codegen/dsp_words.h"

namespace brisel {

const char *dsp_refusal(const DesignRecord &r, bool canonic_only) {
  const QuantizationSettings &q = r.quantization;
  const int method = r.selections.DesignOrAnalysisType;
  const bool digital = method == code(DesignMethod::iir) || method == code(DesignMethod::z_analysis);
  if (digital && !is_fir_result()) {
    const bool fixed = q.quant && q.qtype;
    if (r.realization == code(RealizationForm::parallel))
      return "Only cascaded 2nd order sections supported for IIR designs.";
    if (canonic_only && !(fixed && q.rtype1 == code(SectionStructure::canonic)))
      return "IIR output requires canonic fixed point quantization";
    if (!fixed) return "IIR output requires fixed point quantization";
  }
  if (q.ibit != dsp_word_bits) return "The number of quantized bits must be 16";
  return nullptr;
}

} // namespace brisel
