// fir_quantize.cpp - the quantization stage of FIR designs and entered FIR systems.
#include "engine/fir/fir_quantize.h"

#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/core/spec_bands.h"
#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "engine/fir/fir_rounding.h"
#include "engine/fir/run_selections.h"
#include "engine/fir/tap_search.h"
#include "engine/fir/unfold.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <utility>

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
  if (FirSymmetry{entry.fir_type} == FirSymmetry::antisymmetric && entry.length % 2 == 0)
    design_notes.push_back(
        "Rounding to fixed point breaks the symmetry of antisymmetric taps of even length, and with it "
        "the response: an odd length or floating point avoids it.");
  if (*lowest == 0 && *highest == 0) design_notes.push_back(formatf("All coefficients are zero at %d bits.", bits));
}

// Better words than the rounded ones, for the types whose specification says what better is.
static void optimize_taps(FirEntry &entry) {
  const DesignRecord &r = design_record;
  const QuantizationSettings &settings = r.quantization;
  const DesignState &chosen = r.selections;
  TapGoal goal{passbands(r.spec), stopbands(r.spec), {}, r.spec.passband_ripple, r.spec.stopband_ripple};
  if (!is_fir_method(chosen.DesignOrAnalysisType) || goal.pass.empty() ||
      FirSymmetry{entry.fir_type} != FirSymmetry::symmetric || entry.length > most_searched_taps) {
    design_notes.push_back(formatf("The coefficients were not optimized: that is for symmetric lowpass, highpass, "
                                   "bandpass and bandstop designs of at most %d taps.",
                                   most_searched_taps));
    return;
  }
  const Compensation compensation = selected_compensation().value_or(Compensation{});
  goal.desired = [compensation](double w) { return compensation_factor(compensation, w); };
  const double quantum = std::ldexp(1, 1 - settings.ibit);
  const double ripple = std::pow(10, goal.ripple_db / 20) - 1;
  const std::span taps(entry.coeff.data(), static_cast<std::size_t>(entry.length));
  const std::vector<double> rounded(taps.begin(), taps.end());
  const auto tell = [&](const TapFigures &found, int step) {
    trace("pbmin_gbl = %g, sbmax_gbl = %g at step = %d\n", found.passband_low * entry.gain, found.stopband * entry.gain,
          step);
  };
  if (!search_taps(taps, goal, {settings.op_num, settings.op_steps, quantum, std::max(ripple / 2, quantum)}, tell,
                   go_on))
    return;
  const auto told = [&](std::span<const double> h) {
    const TapFigures f = tap_figures(h, goal);
    return formatf("%.4f dB and %.2f dB", 20 * std::log10(f.passband_high / f.passband_low),
                   20 * std::log10(f.passband_high / std::max(f.stopband, 1e-30)));
  };
  const int changed =
      std::inner_product(taps.begin(), taps.end(), rounded.begin(), 0, std::plus<>(), std::not_equal_to<>());
  design_notes.push_back(changed == 0
                             ? "Optimization found no better taps than the rounded ones."
                             : formatf("Optimization changed %d taps: passband ripple and stopband attenuation "
                                       "are %s, where rounding gave %s.",
                                       changed, told(taps).c_str(), told(rounded).c_str()));
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
    // Scaling to 1 replaces the gain; an entered system has one of its own, which stays in the product.
    const bool entered = !is_fir_method(design_record.selections.DesignOrAnalysisType);
    const double own_gain = entered ? std::exchange(working.gain, 1) : 1;
    fir_fixed_quantize(working, settings.ibit, FirScaling{working.gain_option});
    working.gain *= own_gain;
    if (settings.optimize) optimize_taps(working);
    note_word_length(working, settings.ibit);
  } else {
    fir_float_quantize({working.coeff.data(), static_cast<std::size_t>(working.length)}, settings.ibit);
  }
  dump(working);
}

} // namespace brisel
