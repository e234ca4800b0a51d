// coefficient_image.cpp - the current design as the image of a coefficient file, and an image as an entered system.
#include "engine/files/coefficient_file.h"

#include "engine/analysis/form_digits.h"
#include "engine/core/front_end.h"
#include "engine/files/entered_fir.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace brisel {

namespace {

constexpr int unquantized_bits = 52;
constexpr int longest_gain = 53; // bits of a double
constexpr double max_word = 0x1p62;
constexpr int longest_shift = 31;

bool is_block(const CoefficientFile &image) {
  return image.quantization == QuantizationType::block_floating_point;
}
bool is_floating(ScalingCode scaling) {
  return scaling == ScalingCode::floating_cascade || scaling == ScalingCode::floating_sum;
}

/// `value` = word * 2^shift / 2^(bits - 1), the word at least half scale and cut towards zero. A gain above 1 that was
/// quantized may have more digits than such a word; a longer one keeps them. False when it is not finite.
bool gain_word(double value, int bits, std::int64_t &word, std::int64_t &shift) {
  if (!std::isfinite(value)) return false;
  int exponent = 0;
  const double half_scale = std::ldexp(std::frexp(value, &exponent), bits - 1);
  const double quantized = std::ldexp(value, bits - 1);
  const bool longer =
      half_scale != std::trunc(half_scale) && quantized == std::trunc(quantized) && bits - 1 + exponent <= longest_gain;
  word = static_cast<std::int64_t>(longer ? quantized : half_scale);
  shift = value == 0 || longer ? 0 : exponent;
  return true;
}

/// An integer of `bits` for a fixed-point coefficient. False when there is none.
bool integer_of(double value, int bits, std::int64_t &word) {
  const double scaled = std::trunc(std::ldexp(value, bits - 1));
  if (!(std::fabs(scaled) < max_word)) return false;
  word = static_cast<std::int64_t>(scaled);
  return true;
}

bool fir_image(const FirEntry &fir, bool fixed, CoefficientFile &image) {
  image.variant = CoefficientVariant::fir;
  image.count = fir.length;
  image.sampling_frequency = fir.sample_rate;
  image.quantization = fixed ? QuantizationType::fir_fixed_point : QuantizationType::floating_point;
  image.reals.assign(fir.coeff.begin(), fir.coeff.begin() + fir.length);
  if (!fixed) {
    // A floating-point file has no place for the gain of an entered filter: its taps take it.
    for (double &tap : image.reals) tap *= fir.gain;
    return true;
  }
  image.shift = fir.shift;
  image.gain_multiplier = fir.gain;
  image.integers.resize(fir.length);
  for (int tap = 0; tap < fir.length; tap++)
    if (!integer_of(image.reals[tap], image.bits, image.integers[tap])) return false;
  return true;
}

/// Sections whose leading denominator coefficient is not 1 in fixed point need block floating point, which keeps it.
bool sections_image(const SectionEntry &entry, bool parallel, CoefficientFile &image) {
  image.sampling_frequency = entry.sample_rate;
  image.section_count = entry.section_count;
  image.count = (entry.order + 1) / 2 == entry.section_count ? entry.order : 2 * entry.section_count;
  const bool integers = !is_floating(image.scaling);
  image.section_reals.resize(entry.section_count);
  if (integers) image.section_integers.resize(entry.section_count);
  bool leading_ones = true;
  for (int i = 0; i < entry.section_count; i++) {
    const Triple &b = entry.numerators[i], &a = entry.denominators[i];
    if (a[0] == 0 || entry.shift[i] < 0 || entry.shift[i] > longest_shift) return false;
    SectionReals &reals = image.section_reals[i];
    // Without integers the scale of a sum goes into its sections.
    const double scale = parallel && !integers ? entry.pars / a[0] : 1 / a[0];
    reals = {{b[0] * scale, b[1] * scale, b[2] * scale}, {a[1] / a[0], a[2] / a[0]}};
    leading_ones = leading_ones && std::ldexp(a[0], entry.shift[i]) == 1;
    if (!integers) continue;
    SectionIntegers &words = image.section_integers[i];
    words.shift = entry.shift[i];
    const int bits = image.bits;
    if (!integer_of(b[0], bits, words.b[0]) || !integer_of(b[1], bits, words.b[1]) ||
        !integer_of(b[2], bits, words.b[2]) || !integer_of(a[0], bits, words.a0) ||
        !integer_of(a[1], bits, words.a[0]) || !integer_of(a[2], bits, words.a[1]) || words.a0 == 0)
      return false;
  }
  if (!integers) {
    (parallel ? image.direct_term : image.gain_multiplier) = parallel ? entry.pars * entry.gain : entry.gain;
    return true;
  }
  if (!leading_ones) image.quantization = QuantizationType::block_floating_point;
  if (parallel && !leading_ones) {
    image.section_scale.assign(entry.section_count, entry.pars);
    image.direct_term = entry.pars * entry.gain;
    return gain_word(image.direct_term, image.bits, image.gain_word, image.shift);
  }
  image.gain_multiplier = parallel ? entry.pars : entry.gain;
  if (!gain_word(image.gain_multiplier, image.bits, image.gain_word, image.shift)) return false;
  if (!parallel) return true;
  image.direct_term = entry.gain;
  return gain_word(image.direct_term, image.bits, image.direct_word, image.direct_shift);
}

template <class Entry> void start_lists(const Entry &entry, int order, CoefficientFile &image) {
  image.sampling_frequency = entry.sample_rate;
  image.gain_multiplier = entry.gain;
  image.count = order;
  image.section_count = (order + 1) / 2;
}

void append(std::vector<double> &values, std::span<const double> more) {
  values.insert(values.end(), more.begin(), more.end());
}

void ratio_image(const RatioEntry &entry, CoefficientFile &image) {
  start_lists(entry, std::max(entry.numerator_order, entry.denominator_order), image);
  image.first_count = entry.numerator_order + 1;
  append(image.reals, std::span(entry.numerator).first(entry.numerator_order + 1));
  append(image.reals, std::span(entry.denominator).first(entry.denominator_order + 1));
}

void lattice_image(const LatticeEntry &entry, CoefficientFile &image) {
  start_lists(entry, entry.order, image);
  image.lead = entry.lead;
  image.first_count = entry.order + 1;
  append(image.reals, std::span(entry.gamma).first(entry.order + entry.lead + 1));
  append(image.reals, std::span(entry.kappa).subspan(1, entry.order));
}

void ladder_image(const LadderEntry &entry, CoefficientFile &image) {
  start_lists(entry, entry.order, image);
  image.lead = image.first_count = entry.lead;
  append(image.reals, std::span(entry.alpha).first(entry.lead + 2 * entry.order + 1));
}

bool iir_image(const DesignRecord &record, RealizationForm form, bool fixed, CoefficientFile &image) {
  const IirForms &forms = record.z_quantized;
  image.variant = CoefficientVariant::iir;
  switch (form) {
  case RealizationForm::cascade: {
    const bool floating = !fixed || record.quantization.rtype1 > code(SectionStructure::canonic);
    image.scaling = floating                                                        ? ScalingCode::floating_cascade
                    : record.quantization.rtype1 == code(SectionStructure::canonic) ? ScalingCode::cascade_2
                                                                                    : ScalingCode::cascade_1;
    image.quantization = fixed ? QuantizationType::fractional_fixed_point : QuantizationType::floating_point;
    return sections_image(forms.cascade, false, image);
  }
  case RealizationForm::parallel:
    image.scaling = fixed && record.quantization.rtype2 == 0 ? ScalingCode::parallel_1 : ScalingCode::floating_sum;
    image.quantization = fixed ? QuantizationType::fractional_fixed_point : QuantizationType::floating_point;
    return sections_image(forms.parallel, true, image);
  case RealizationForm::ratio:
    image.scaling = ScalingCode::ratio;
    ratio_image(forms.ratio, image);
    return true;
  case RealizationForm::lattice:
    image.scaling = ScalingCode::lattice;
    lattice_image(forms.lattice, image);
    return true;
  case RealizationForm::ladder_1:
    image.scaling = ScalingCode::ladder_1;
    ladder_image(forms.ladder_1, image);
    return true;
  case RealizationForm::ladder_2:
    image.scaling = ScalingCode::ladder_2;
    ladder_image(forms.ladder_2, image);
    return true;
  case RealizationForm::nonlinear:
    break;
  }
  return false;
}

void set_header(const DesignRecord &record, CoefficientFile &image) {
  const int method = record.selections.DesignOrAnalysisType;
  image.analog_type = record.selections.analog_type;
  image.system_analysis = method >= code(DesignMethod::z_analysis);
  if (image.system_analysis) {
    const bool entered_in_z = method == code(DesignMethod::z_analysis);
    image.z_transform = entered_in_z ? ZTransform::s_domain_only
                                     : static_cast<ZTransform>(record.selections.SDomainAnalysisRealizationMethod);
    return;
  }
  image.z_transform = static_cast<ZTransform>(record.selections.ZTransformMethod);
  image.filter_type = static_cast<std::int8_t>(record.loaded.type);
  image.passband_ripple = record.loaded.passband_ripple;
  image.stopband_ripple = record.loaded.stopband_ripple;
  image.passband_edge = record.loaded.passband_edge;
  image.stopband_edge = record.loaded.stopband_edge;
}

} // namespace

bool image_of_design(CoefficientFile &image) {
  const DesignRecord &record = design_record;
  const bool quantized = record.quantization.quant != 0;
  const bool fixed = quantized && record.quantization.qtype != 0;
  image = {};
  image.unit = record.selections.FrequencyMode != 0;
  image.bits = quantized ? record.quantization.ibit : unquantized_bits;
  set_header(record, image);
  if (!is_fir_result()) return iir_image(record, static_cast<RealizationForm>(record.realization), fixed, image);
  return record.fir.fir_type != code(FirSymmetry::lattice) && fir_image(record.fir, fixed, image);
}

bool image_in_form(RealizationForm form, CoefficientFile &image) {
  image = {};
  image.bits = unquantized_bits;
  set_header(design_record, image);
  return form_exists(design_record.z_quantized, form) && iir_image(design_record, form, false, image);
}

bool lengthen_gain_words(CoefficientFile &image) {
  if (image.section_integers.empty()) return false;
  // Of two gains the scale of a sum stands in `gain_multiplier`; a sum in block floating point has its direct term
  // there.
  const bool block_sum = !image.section_scale.empty();
  const auto lengthen = [&](double value, std::int64_t &word, std::int64_t &shift) {
    int exponent = 0;
    word = static_cast<std::int64_t>(std::ldexp(std::frexp(value, &exponent), longest_gain));
    shift = value == 0 ? 0 : exponent + image.bits - 1 - longest_gain;
  };
  lengthen(block_sum ? image.direct_term : image.gain_multiplier, image.gain_word, image.shift);
  if (!block_sum) lengthen(image.direct_term, image.direct_word, image.direct_shift);
  return true;
}

namespace {

InputOption fir_system(const CoefficientFile &image, SystemEntries &entries) {
  const bool fixed = image.quantization == QuantizationType::fir_fixed_point;
  std::vector<double> taps = image.reals;
  for (std::size_t i = 0; i < image.integers.size(); i++)
    taps[i] = std::ldexp(static_cast<double>(image.integers[i]), 1 - image.bits);
  const InputOption option = entered_option(taps);
  FirEntry &fir = entries.fir[code(option) - code(InputOption::symmetric_fir)];
  clear_entered_fir(option, fir);
  enter_taps(taps, option, fir);
  fir.shift = static_cast<std::int32_t>(image.shift);
  fir.sample_rate = image.sampling_frequency;
  fir.gain = fixed ? image.gain_multiplier : 1;
  return option;
}

bool section_system(const CoefficientFile &image, bool parallel, SectionEntry &entry) {
  entry = {};
  entry.section_count = static_cast<std::int16_t>(image.section_count);
  entry.order = static_cast<std::int16_t>(image.count);
  entry.keep_gain = 1;
  entry.sample_rate = image.sampling_frequency;
  entry.gain = parallel ? image.direct_term : image.gain_multiplier;
  entry.pars = parallel ? image.gain_multiplier : 1;
  const bool integers = !image.section_integers.empty() && image.quantization != QuantizationType::floating_point;
  for (int i = 0; i < image.section_count; i++) {
    Triple &b = entry.numerators[i], &a = entry.denominators[i];
    if (integers) {
      const SectionIntegers &words = image.section_integers[i];
      const auto value = [&](std::int64_t word) {
        return std::ldexp(static_cast<double>(word), static_cast<int>(words.shift) - (image.bits - 1));
      };
      b = {value(words.b[0]), value(words.b[1]), value(words.b[2])};
      a = {is_block(image) ? value(words.a0) : 1, value(words.a[0]), value(words.a[1])};
      if (!image.section_scale.empty())
        for (double &coefficient : b) coefficient *= image.section_scale[i];
    } else {
      const SectionReals &reals = image.section_reals[i];
      b = reals.b;
      a = {1, reals.a[0], reals.a[1]};
    }
    if (a[0] == 0) return false;
  }
  return true;
}

bool ratio_system(const CoefficientFile &image, RatioEntry &entry) {
  const int numerators = image.first_count, denominators = static_cast<int>(image.reals.size()) - numerators;
  if (numerators < 1 || denominators < 1 || numerators > max_order + 1 || denominators > max_order + 1) return false;
  if (image.reals[numerators] == 0) return false;
  entry = {};
  entry.numerator_order = static_cast<std::int16_t>(numerators - 1);
  entry.denominator_order = static_cast<std::int16_t>(denominators - 1);
  entry.sample_rate = image.sampling_frequency;
  entry.gain = image.gain_multiplier;
  std::copy_n(image.reals.begin(), numerators, entry.numerator.begin());
  std::copy_n(image.reals.begin() + numerators, denominators, entry.denominator.begin());
  return true;
}

void lattice_system(const CoefficientFile &image, LatticeEntry &entry) {
  entry = {};
  entry.order = static_cast<std::int16_t>(image.count);
  entry.lead = static_cast<std::int16_t>(image.lead);
  entry.sample_rate = image.sampling_frequency;
  entry.gain = image.gain_multiplier;
  const int gammas = image.count + image.lead + 1;
  std::copy_n(image.reals.begin(), gammas, entry.gamma.begin());
  std::copy_n(image.reals.begin() + gammas, image.count, entry.kappa.begin() + 1);
}

void ladder_system(const CoefficientFile &image, std::int8_t form, LadderEntry &entry) {
  entry = {};
  entry.order = static_cast<std::int16_t>(image.count);
  entry.lead = static_cast<std::int16_t>(image.lead);
  entry.alpha_count = static_cast<std::int16_t>(image.reals.size());
  entry.form = form;
  entry.sample_rate = image.sampling_frequency;
  entry.gain = image.gain_multiplier;
  std::ranges::copy(image.reals, entry.alpha.begin());
}

} // namespace

std::optional<InputOption> coefficients_to_system(const CoefficientFile &image, SystemEntries &entries) {
  if (image.variant == CoefficientVariant::fir) return fir_system(image, entries);
  const auto when = [](bool exists, InputOption option) { return exists ? std::optional(option) : std::nullopt; };
  switch (image.scaling) {
  case ScalingCode::cascade_1:
  case ScalingCode::cascade_2:
  case ScalingCode::floating_cascade:
    return when(section_system(image, false, entries.product), InputOption::product);
  case ScalingCode::parallel_1:
  case ScalingCode::parallel_2:
  case ScalingCode::floating_sum:
    return when(section_system(image, true, entries.sum), InputOption::sum);
  case ScalingCode::ratio:
    return when(ratio_system(image, entries.ratio), InputOption::ratio);
  case ScalingCode::ladder_1:
    ladder_system(image, 0, entries.ladder_1);
    return InputOption::ladder_1;
  case ScalingCode::ladder_2:
    ladder_system(image, 1, entries.ladder_2);
    return InputOption::ladder_2;
  case ScalingCode::lattice:
    lattice_system(image, entries.lattice);
    return InputOption::lattice;
  }
  return std::nullopt;
}

Status analyze_coefficient_file() {
  const auto option = coefficients_to_system(coefficient_file, z_entries);
  if (!option) {
    post_message(Message::unsupported_form, coefficient_file.path);
    return form_not_supported;
  }
  design_state.DesignOrAnalysisType = code(DesignMethod::z_analysis);
  design_state.z_input_option = code(*option);
  design_state.FrequencyMode = coefficient_file.unit;
  design_state.unit_factor = unit_row(coefficient_file.unit).factor;
  design_state.unit_factor_inverse = 1 / design_state.unit_factor;
  z_path[code(*option)].clear(); // no system analysis file holds this system
  return success;
}

} // namespace brisel
