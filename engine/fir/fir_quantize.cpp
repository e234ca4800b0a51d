// fir_quantize.cpp - the quantization stage of FIR designs and entered FIR systems.
#include "engine/fir/fir_quantize.h"

#include "engine/core/design_state.h"
#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "engine/fir/fir_rounding.h"
#include "engine/fir/unfold.h"

#include <algorithm>
#include <cmath>

namespace brisel {

// What a word of `bits` bits cannot hold, or holds as nothing.
static void note_word_length(const FirEntry &entry, int bits) {
  const auto taps = entry.coeff.begin();
  const auto [lowest, highest] = std::minmax_element(taps, taps + entry.length);
  if (*lowest < -1 || *highest >= 1)
    design_notes.push_back(
        formatf("A coefficient of %.6g does not fit a %d bit fixed-point word, which holds -1 to below "
                "1: choose another scaling.",
                -*lowest > *highest ? *lowest : *highest, bits));
  if (*lowest == 0 && *highest == 0) design_notes.push_back(formatf("All coefficients are zero at %d bits.", bits));
}

void fir_quantize() {
  FirEntry &working = design_record.fir;
  const QuantizationSettings &settings = design_record.quantization;
  fir_entry_unfold(design_record.fir_designed, working);
  design_record.fir_unquantized = working;
  design_record.selections.symmetry = static_cast<std::uint8_t>(working.fir_type);
  trace(" FIR Before quantization\n");
  dump(working);
  if (!settings.quant) return;
  trace(" FIR After quantization\n");
  if (settings.qtype) {
    fir_fixed_quantize(working, settings.ibit, FirScaling{working.gain_option});
    note_word_length(working, settings.ibit);
  } else {
    fir_float_quantize({working.coeff.data(), static_cast<std::size_t>(working.length)}, settings.ibit);
  }
  dump(working);
}

} // namespace brisel
