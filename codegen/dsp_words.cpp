#include "codegen/dsp_words.h"

#include "engine/files/text_file.h"

#include <algorithm>
#include <unistd.h>

namespace brisel {

SectionWords section_words(const SectionIntegers &s) {
  SectionWords w{s.b[0], s.b[1], s.b[2], s.a[0], s.a[1], static_cast<int>(std::max<std::int64_t>(s.shift, 1))};
  if (s.shift == 0) {
    for (std::int64_t *word : {&w.b0, &w.b1, &w.b2, &w.a1, &w.a2}) *word >>= 1;
  } else {
    for (std::int64_t *word : {&w.a1, &w.a2}) *word *= std::int64_t{1} << (w.exponent - 1);
  }
  return w;
}

int final_shift(const CoefficientFile &image, int start) {
  for (const SectionIntegers &s : image.section_integers) start += std::max(0, static_cast<int>(s.shift) - 1);
  return start;
}

std::int64_t gain_word(const CoefficientFile &image) {
  const std::int64_t half = image.gain_word >> 1;
  return image.shift < 0 ? half >> std::min<std::int64_t>(-image.shift, 63) : half;
}

std::optional<std::string> misfit(const CoefficientFile &image) {
  constexpr std::int64_t lowest = -32768, highest = 32767;
  if (image.variant == CoefficientVariant::fir && image.quantization != QuantizationType::fir_fixed_point)
    return "the taps are not quantized in fixed point";
  const auto fits = [](std::int64_t word) { return word >= lowest && word <= highest; };
  if (image.variant == CoefficientVariant::fir) {
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
  // Kept: with a shift of 1 the transposed listing carries the gain word as it is.
  const int largest_shift = image.scaling == ScalingCode::cascade_1 ? 1 : 0;
  if (image.shift > largest_shift || !fits(image.gain_word))
    return formatf("the overall gain %g is too large for its 16-bit word; lower the gain of the system",
                   image.gain_multiplier);
  return std::nullopt;
}

std::optional<std::string> gain_note(const CoefficientFile &image, bool has_gain_word) {
  if (has_gain_word || image.gain_multiplier == 1) return std::nullopt;
  return formatf("The generated file carries no gain: the caller multiplies the samples by %s.",
                 shortest(image.gain_multiplier).c_str());
}

int load_design_through(const std::string &path) {
  if (const Status status = write_new_coefficient_file(path); status != success) return status;
  if (const int status = load_coefficient_file(path); status != success) return status;
  ::unlink(path.c_str());
  return success;
}

} // namespace brisel
