#include "codegen/coefficient_table.h"

#include "engine/files/text_file.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace brisel {

namespace {

// What both triples have in front of them is a delay that cancels.
bool with_leading_one(Triple &b, Triple &a) {
  for (int places = 0; places < 2 && a[0] == 0 && b[0] == 0; places++)
    for (Triple *t : {&b, &a}) *t = {(*t)[1], (*t)[2], 0};
  if (a[0] == 0) return false;
  const double lead = a[0];
  for (Triple *t : {&b, &a})
    for (double &c : *t) c /= lead;
  return true;
}

void append(std::vector<double> &values, std::span<const double> more, double factor = 1) {
  for (const double value : more) values.push_back(value * factor);
}

bool append_sections(const SectionEntry &entry, double scale, CoefficientTable &table) {
  table.reals.push_back(scale * entry.gain);
  for (int i = 0; i < entry.section_count; i++) {
    Triple b = entry.numerators[i], a = entry.denominators[i];
    if (!with_leading_one(b, a)) return false;
    append(table.reals, b, scale);
    append(table.reals, std::span(a).subspan(1));
  }
  return true;
}

std::string in_hertz(double rate) {
  return formatf("sampling frequency %.10g Hz", rate * inverse_two_pi);
}

std::string sections_title(const char *form, int sections, double rate) {
  return formatf("IIR filter, %s, sections: %d, ", form, sections) + in_hertz(rate);
}

bool iir_reals(const IirForms &forms, RealizationForm form, CoefficientTable &table) {
  switch (form) {
  case RealizationForm::cascade:
    table.title =
        sections_title("cascaded second-order sections", forms.cascade.section_count, forms.cascade.sample_rate);
    table.order = "gain, then b0 b1 b2 a1 a2 of every section; a0 is 1";
    return append_sections(forms.cascade, 1, table);
  case RealizationForm::parallel:
    table.title =
        sections_title("sum of second-order sections", forms.parallel.section_count, forms.parallel.sample_rate);
    table.order = "direct term, then b0 b1 b2 a1 a2 of every section; a0 is 1";
    return append_sections(forms.parallel, forms.parallel.pars, table);
  case RealizationForm::ratio: {
    const RatioEntry &r = forms.ratio;
    if (r.denominator[0] == 0) return false;
    table.title = formatf("IIR filter, ratio of polynomials, numerator order %d, denominator order %d, ",
                          r.numerator_order, r.denominator_order) +
                  in_hertz(r.sample_rate);
    table.order = "b0 b1 ... of the numerator, then a0 a1 ... of the denominator, in powers of z^-1";
    append(table.reals, std::span(r.numerator).first(r.numerator_order + 1), r.gain / r.denominator[0]);
    append(table.reals, std::span(r.denominator).first(r.denominator_order + 1), 1 / r.denominator[0]);
    return true;
  }
  case RealizationForm::lattice: {
    const LatticeEntry &l = forms.lattice;
    table.title =
        formatf("IIR filter, lattice of order %d, leading taps: %d, ", l.order, l.lead) + in_hertz(l.sample_rate);
    table.order = "gamma 0 and on, then kappa 1 and on";
    append(table.reals, std::span(l.gamma).first(l.order + l.lead + 1), l.gain);
    append(table.reals, std::span(l.kappa).subspan(1, l.order));
    return true;
  }
  case RealizationForm::ladder_1:
  case RealizationForm::ladder_2: {
    const LadderEntry &l = form == RealizationForm::ladder_1 ? forms.ladder_1 : forms.ladder_2;
    table.title = formatf("IIR filter, ladder form %d of order %d, leading taps: %d, ",
                          form == RealizationForm::ladder_1 ? 1 : 2, l.order, l.lead) +
                  in_hertz(l.sample_rate);
    table.order = "gain, leading taps, then A0 B1 A1 B2 A2 ... of the continued fraction";
    table.reals.push_back(l.gain);
    append(table.reals, std::span(l.alpha).first(l.alpha_count));
    return true;
  }
  case RealizationForm::nonlinear:
    break;
  }
  return false;
}

void fir_reals(const FirEntry &fir, CoefficientTable &table) {
  const auto taps = std::span(fir.coeff).first(fir.length);
  if (fir.fir_type == code(FirSymmetry::lattice)) {
    table.title = formatf("lattice FIR filter, reflection coefficients: %d, ", fir.length) + in_hertz(fir.sample_rate);
    table.order = "gain, then k1 and on";
    table.reals.push_back(fir.gain);
    append(table.reals, taps);
    return;
  }
  table.title = formatf("FIR filter, taps: %d, ", fir.length) + in_hertz(fir.sample_rate);
  table.order = "tap 0 and on";
  append(table.reals, taps, fir.gain);
}

} // namespace

std::optional<CoefficientTable> real_coefficients(CoefficientStage stage) {
  const DesignRecord &design = design_record;
  const bool quantized = stage == CoefficientStage::quantized;
  CoefficientTable table;
  if (is_fir_result())
    fir_reals(quantized ? design.fir : design.fir_unquantized, table);
  else if (!iir_reals(quantized ? design.z_quantized : design.z, RealizationForm{design.realization}, table))
    return std::nullopt;
  if (!std::ranges::all_of(table.reals, [](double v) { return std::isfinite(v); })) return std::nullopt;
  return table;
}

std::optional<CoefficientTable> word_coefficients(const CoefficientFile &image) {
  CoefficientTable table;
  table.bits = image.bits;
  if (image.variant == CoefficientVariant::fir) {
    if (image.quantization != QuantizationType::fir_fixed_point) return std::nullopt;
    table.title = formatf("FIR filter, taps: %d, ", image.count) + in_hertz(image.sampling_frequency);
    table.order = "tap 0 and on";
    table.remarks = {formatf("a tap is its word / 2^%d, times the gain %s", image.bits - 1,
                             shortest(image.gain_multiplier).c_str())};
    table.words = image.integers;
    return table;
  }
  if (image.section_integers.empty()) return std::nullopt;
  const bool parallel = image.scaling == ScalingCode::parallel_1 || image.scaling == ScalingCode::parallel_2;
  // Sections with leading coefficients of their own carry them and, in a sum, a scale that is no word.
  const bool block = image.quantization == QuantizationType::block_floating_point;
  if (block && parallel) return std::nullopt;
  table.title = sections_title(parallel ? "sum of second-order sections" : "cascaded second-order sections",
                               image.section_count, image.sampling_frequency);
  table.order = std::string(parallel ? "shift and word of the scale, shift and word of the direct term"
                                     : "shift and word of the gain") +
                ", then shift b0 b1 b2" + (block ? " a0" : "") + " a1 a2 of every section";
  table.remarks = {formatf("a coefficient is its word * 2^shift / 2^%d", image.bits - 1)};
  table.words = {image.shift, image.gain_word};
  if (parallel) table.words.insert(table.words.end(), {image.direct_shift, image.direct_word});
  for (const SectionIntegers &s : image.section_integers) {
    table.words.push_back(s.shift);
    table.words.insert(table.words.end(), s.b.begin(), s.b.end());
    if (block) table.words.push_back(s.a0);
    table.words.insert(table.words.end(), s.a.begin(), s.a.end());
  }
  return table;
}

bool words_fit(const CoefficientTable &table) {
  const std::int64_t limit = std::int64_t{1} << (table.bits - 1);
  return std::ranges::all_of(table.words, [&](std::int64_t word) { return word >= -limit && word < limit; });
}

std::optional<SectionMatrix> section_matrix(const SectionEntry &cascade, int delay) {
  SectionMatrix rows;
  for (int i = 0; i < std::max<int>(cascade.section_count, 1); i++) {
    Triple b{1, 0, 0}, a{1, 0, 0};
    if (i < cascade.section_count) {
      b = cascade.numerators[i];
      a = cascade.denominators[i];
    }
    if (!with_leading_one(b, a)) return std::nullopt;
    if (i == 0)
      for (double &c : b) c *= cascade.gain;
    for (; delay > 0 && b[2] == 0; delay--) b = {0, b[0], b[1]};
    rows.push_back({b[0], b[1], b[2], 1, a[1], a[2]});
    for (const double value : rows.back())
      if (!std::isfinite(value)) return std::nullopt;
  }
  if (delay != 0) return std::nullopt;
  return rows;
}

} // namespace brisel
