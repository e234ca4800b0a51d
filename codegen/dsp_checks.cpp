#include "codegen/dsp_checks.h"

#include "codegen/dsp_words.h"
#include "engine/files/text_file.h"

#include <array>
#include <cmath>

namespace brisel {

namespace {

constexpr const char *only_cascades = "Only cascaded 2nd order sections supported for IIR designs.";

constexpr std::array family_names{"ADSP-218x", "DSP56800", "dsPIC30"}; // index = DspFamily

bool is_cascade(const DesignRecord &r) {
  return r.realization == code(RealizationForm::cascade);
}

bool is_fir(const CoefficientFile &image) {
  return image.variant == CoefficientVariant::fir;
}

bool is_transposed(const CoefficientFile &image) {
  return image.scaling == ScalingCode::cascade_1;
}

bool fits(std::int64_t word) {
  return word >= -32768 && word <= 32767;
}

/// The gain word of a file and the gain that it stands for; nothing where the file has none.
struct GainWord {
  std::int64_t word;
  double gain;
};
std::optional<GainWord> gain_word_in(const CoefficientFile &image, DspFamily family) {
  if (is_fir(image) || family == DspFamily::dspic30) return std::nullopt;
  if (!is_transposed(image)) {
    const std::int64_t word = gain_word(image);
    return GainWord{word, std::ldexp(static_cast<double>(word), 2 - dsp_word_bits)};
  }
  // Kept: the listing of transposed sections for the DSP56800 has no gain.
  if (family == DspFamily::dsp56800) return std::nullopt;
  const std::int64_t word = closing_gain(image);
  return GainWord{word, std::ldexp(static_cast<double>(word), 1 - dsp_word_bits)};
}

} // namespace

const char *dsp_refusal(const DesignRecord &r, DspFamily family) {
  const QuantizationSettings &q = r.quantization;
  if (!is_fir_result()) {
    const bool fixed = q.quant && q.qtype;
    if (!is_cascade(r)) return only_cascades;
    if (family == DspFamily::dsp56800 && !(fixed && q.rtype1 == code(SectionStructure::canonic)))
      return "IIR output requires canonic fixed point quantization";
    if (!fixed) return "IIR output requires fixed point quantization";
  }
  if (q.ibit != dsp_word_bits) return "The number of quantized bits must be 16";
  if (!q.quant) return "The taps are not quantized: these outputs require fixed point quantization";
  return nullptr;
}

const char *performance_audio_refusal(const DesignRecord &r) {
  const QuantizationSettings &q = r.quantization;
  if (is_fir_result()) return nullptr;
  if (!is_cascade(r)) return only_cascades;
  if (!(q.quant && !q.qtype && q.rtype1 == code(SectionStructure::float_4_multiplies)))
    return "IIR output requires 4 multiply floating point quantization";
  return nullptr;
}

std::optional<std::string> misfit(const CoefficientFile &image, DspFamily family) {
  if (is_fir(image)) {
    if (image.quantization != QuantizationType::fir_fixed_point) return "the taps are not quantized in fixed point";
    for (std::size_t i = 0; i < image.integers.size(); i++)
      if (!fits(image.integers[i]))
        return formatf("tap %zu is %lld and does not fit 16 bits; choose another FIR scaling", i,
                       static_cast<long long>(image.integers[i]));
    return std::nullopt;
  }
  if (image.scaling != ScalingCode::cascade_1 && image.scaling != ScalingCode::cascade_2)
    return "the sections are neither transposed nor canonic; choose one of these structures";
  if (image.quantization != QuantizationType::fractional_fixed_point)
    return "a section's leading denominator coefficient is not 1; enter the sections normalized";
  for (std::size_t k = 0; k < image.section_integers.size(); k++) {
    const SectionWords w = section_words(image.section_integers[k]);
    const struct {
      const char *name;
      std::int64_t word;
    } words[] = {{"b0", w.b0}, {"b1", w.b1}, {"b2", w.b2}, {"-a1", -w.a1}, {"-a2", -w.a2}};
    for (const auto &[name, word] : words)
      if (!fits(word))
        return formatf("%s of section %zu is %lld and does not fit 16 bits; choose another structure or a lower order",
                       name, k + 1, static_cast<long long>(word));
  }
  const auto gain = gain_word_in(image, family);
  if (!gain) return std::nullopt;
  // Kept: with a shift of 1 the closing word of transposed sections may be half of the gain; `gain_note` says so.
  if (image.shift > (is_transposed(image) ? 1 : 0) || !fits(gain->word))
    return formatf("the overall gain %g is too large for its 16-bit word; lower the gain of the system",
                   image.gain_multiplier);
  if (gain->word == 0)
    return formatf("the overall gain %g is too small for its 16-bit word; raise the gain of the system",
                   image.gain_multiplier);
  return std::nullopt;
}

std::optional<std::string> gain_note(const CoefficientFile &image, DspFamily family) {
  constexpr double audible = 0.0058; // 0.05 dB; the rest is the rounding of the word
  const double gain = image.gain_multiplier;
  const char *name = family_names[static_cast<std::size_t>(family)];
  const auto held = gain_word_in(image, family);
  if (!held && gain != 1)
    return formatf("The %s file carries no gain: the caller multiplies the samples by %s.", name,
                   shortest(gain).c_str());
  if (!held || std::fabs(gain / held->gain - 1) <= audible) return std::nullopt;
  return formatf("The gain word of the %s file stands for %.6g, the gain is %.6g: the caller multiplies the "
                 "samples by %.6g.",
                 name, held->gain, gain, gain / held->gain);
}

} // namespace brisel
