#include "engine/iir/iir_quantize.h"

#include "engine/analysis/form_conversions.h"
#include "engine/analysis/pole_zero_form.h"
#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/core/trace.h"
#include "engine/files/text_file.h"
#include "engine/iir/cascade_gain.h"
#include "engine/iir/form_notes.h"
#include "engine/iir/iir_scaling.h"
#include "engine/iir/noise.h"
#include "engine/iir/pole_grid.h"
#include "engine/iir/reorder.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace brisel {

void truncate_significands(std::span<double> values, int bits) {
  constexpr int significand_bits = 53; // the leading one, which is not stored, included
  if (bits >= significand_bits) return;
  const std::uint64_t mask = ~std::uint64_t{0} << (significand_bits - bits);
  for (double &v : values) v = std::bit_cast<double>(std::bit_cast<std::uint64_t>(v) & mask);
}

void quantize_section_coefficients(SectionEntry &entry, bool fixed_point, int bits) {
  const auto numerators = std::span(entry.numerators).first(entry.section_count);
  const auto denominators = std::span(entry.denominators).first(entry.section_count);
  entry.shift = {};
  if (!fixed_point) {
    truncate_significands({&entry.gain, 1}, bits);
    for (Triple &t : numerators) truncate_significands(t, bits);
    for (Triple &t : denominators) truncate_significands(t, bits);
    return;
  }
  const double full = std::ldexp(1.0, bits - 1);
  entry.gain = std::trunc(full * entry.gain) / full;
  for (std::size_t k = 0; k < numerators.size(); k++) {
    double largest = 1, scale = full;
    for (const Triple &t : {numerators[k], denominators[k]})
      for (const double c : t) largest = std::max(largest, std::fabs(c));
    for (; largest > 1; largest /= 2, scale /= 2) entry.shift[k]++;
    for (Triple *t : {&numerators[k], &denominators[k]})
      for (double &c : *t) c = std::trunc(scale * c) / full;
  }
}

bool in_fixed_point(const QuantizationSettings &settings, RealizationForm form) {
  return settings.qtype != 0 && (form == RealizationForm::cascade || form == RealizationForm::parallel);
}

namespace {

// Headings of the listing, by form code.
constexpr std::array<const char *, 6> form_headings{" Cascaded form\n", " Parallel form\n", " Ratio form\n",
                                                    " Lattice form\n",  " Ladder form I\n", " Ladder form II\n"};

// Calls `action` with the entry of a form.
template <class Action> auto with_form(IirForms &forms, RealizationForm form, Action action) {
  switch (form) {
  case RealizationForm::cascade:
    return action(forms.cascade);
  case RealizationForm::parallel:
    return action(forms.parallel);
  case RealizationForm::ratio:
    return action(forms.ratio);
  case RealizationForm::lattice:
    return action(forms.lattice);
  case RealizationForm::ladder_1:
    return action(forms.ladder_1);
  default:
    return action(forms.ladder_2);
  }
}

bool refuse(Message number) {
  post_message(number);
  return false;
}

// Sets the gain of the chosen form and returns the factor by which its response grew.
double set_gain(IirForms &z, RealizationForm form) {
  const Places poles = std::span(z.pole_zero.poles).first(static_cast<std::size_t>(pole_count(z.pole_zero)));
  double peak = z.parallel.pars; // which regain_parallel() resets and does not count
  switch (form) {
  case RealizationForm::cascade:
    peak = compute_cas_gain(z.cascade);
    break;
  case RealizationForm::parallel:
    peak *= regain_parallel(z.parallel);
    break;
  case RealizationForm::ratio:
    peak = regain_ratio(z.ratio, poles);
    break;
  case RealizationForm::lattice:
    peak = regain_lattice(z.lattice, poles);
    break;
  case RealizationForm::ladder_1:
    peak = regain_ladder(z.ladder_1, poles);
    break;
  default:
    peak = regain_ladder(z.ladder_2, poles);
    break;
  }
  return 1 / peak;
}

// Whoever sets the gain on the same even steps elsewhere finds another one.
void note_missed_peak(const SectionEntry &cascade) {
  if (const double ratio = missed_by_grid(cascade); ratio > noticeable_miss)
    design_notes.push_back(
        formatf("The gain is set near the poles, where this filter reaches %.2f dB above its largest "
                "gain on %d even steps of frequency.",
                20 * std::log10(ratio), gain_grid_points - 1));
}

void scale_other_forms(IirForms &z, RealizationForm form, double factor) {
  const auto chosen = [&](RealizationForm f) { return f == form; };
  if (!chosen(RealizationForm::cascade)) z.cascade.gain *= factor;
  if (!chosen(RealizationForm::parallel)) z.parallel.pars *= factor;
  if (!chosen(RealizationForm::ratio)) z.ratio.gain *= factor;
  if (!chosen(RealizationForm::lattice)) z.lattice.gain *= factor;
  if (!chosen(RealizationForm::ladder_1)) z.ladder_1.gain *= factor;
  if (!chosen(RealizationForm::ladder_2)) z.ladder_2.gain *= factor;
  z.pole_zero.gain *= factor;
}

bool scale_and_estimate_cascade(SectionEntry &cascade, SectionStructure structure, int bits,
                                QuantizationResult &noise) {
  const int n = cascade.section_count;
  if (is_scaled(structure) && n > 0) {
    const double last_peak = scale_cascade(cascade, structure, noise);
    if (last_peak == 0) return false;
    for (int j = 0; j < n; j++)
      trace(" Scaling by % g in section %d\n", noise.scale_factor[j + 1] / noise.scale_factor[j], j + 1);
    trace("\n For cascade gain scaler: %20.12e\n", last_peak);
    store_peaks(cascade_node_peaks(cascade, structure), n, cascade.sample_rate, noise.scaled_node_peak,
                noise.scaled_node_peak_frequency);
  }
  const auto gains = std::span(noise.section_noise_gain).first(n);
  cascade_noise_gains(cascade, structure, gains);
  double sum = 0;
  for (const double gain : gains) sum += gain;
  store_noise(sum, bits, noise);
  return true;
}

bool scale_and_estimate_parallel(SectionEntry &parallel, bool scaled, int bits, QuantizationResult &noise) {
  const int n = parallel.section_count;
  if (scaled) {
    const double largest = scale_parallel(parallel, noise);
    if (largest == 0) return false;
    trace("\n For parallel scaler: %20.12e\n", largest);
    store_peaks(parallel_node_peaks(parallel), n, parallel.sample_rate, noise.scaled_node_peak,
                noise.scaled_node_peak_frequency);
  }
  const auto gains = std::span(noise.section_noise_gain).first(n);
  parallel_noise_gains(parallel, gains);
  // Kept: the scaler's square and the last section alone, not all of the sections, so that the estimate is too low.
  store_noise(parallel.pars * parallel.pars + (n > 0 ? gains[n - 1] : 0), bits, noise);
  return true;
}

// Something that the filter cannot do without was truncated to nothing.
bool has_vanished(const SectionEntry &entry, bool cascade) {
  const Triple zero{};
  bool silent = entry.gain == 0;
  for (int k = 0; k < entry.section_count; k++) {
    if (entry.denominators[k][0] == 0) return true;
    const bool no_numerator = entry.numerators[k] == zero;
    silent = cascade ? silent || no_numerator : silent && no_numerator;
  }
  return silent;
}

// False when nothing is left of the filter. Kept: ratio, lattice and ladders are truncated the floating-point way
// whatever the arithmetic asked for, so that their words are not those of a fixed-point machine. The user is told.
bool quantize_coefficients(IirForms &z, RealizationForm form, const QuantizationSettings &settings) {
  const bool fixed_point = in_fixed_point(settings, form);
  const int bits = settings.ibit;
  auto truncate = [&](auto &...arrays) { (truncate_significands(arrays, bits), ...); };
  auto gain_of = [](double &gain) { return std::span(&gain, 1); };
  switch (form) {
  case RealizationForm::cascade:
    quantize_section_coefficients(z.cascade, fixed_point, bits);
    return !has_vanished(z.cascade, true);
  case RealizationForm::parallel:
    quantize_section_coefficients(z.parallel, fixed_point, bits);
    return !has_vanished(z.parallel, false);
  case RealizationForm::ratio:
    truncate_significands(gain_of(z.ratio.gain), bits);
    truncate(z.ratio.numerator, z.ratio.denominator);
    return true;
  case RealizationForm::lattice:
    truncate_significands(gain_of(z.lattice.gain), bits);
    truncate(z.lattice.kappa, z.lattice.gamma);
    return true;
  default:
    with_form(z, form, [&](auto &entry) {
      truncate_significands(gain_of(entry.gain), bits);
      if constexpr (requires { entry.alpha; }) truncate(entry.alpha);
    });
    return true;
  }
}

} // namespace

// Numerator and denominator of a section share its shift, so that scaling can leave few bits for the poles.
static void note_shifted_denominators(const SectionEntry &cascade, const QuantizationSettings &settings) {
  constexpr int noticeable = 3;
  int worst = 0, lost = 0;
  for (int k = 0; k < cascade.section_count; k++) {
    double largest = 0;
    for (const double a : cascade.denominators[k])
      largest = std::max(largest, std::ldexp(std::fabs(a), cascade.shift[k]));
    const int needed = largest > 1 ? static_cast<int>(std::ceil(std::log2(largest))) : 0;
    if (cascade.shift[k] - needed <= lost) continue;
    worst = k;
    lost = cascade.shift[k] - needed;
  }
  if (lost < noticeable) return;
  const bool canonic = settings.rtype1 == code(SectionStructure::canonic);
  design_notes.push_back(formatf("Section %d is shifted down by %d bits for its numerator, which costs its denominator "
                                 "%d of %d bits.%s",
                                 worst + 1, cascade.shift[worst], lost, settings.ibit,
                                 canonic ? " The scaling of canonic sections does this where poles lie near the unit "
                                           "circle; transposed sections keep the bits."
                                         : ""));
}

void set_realization_codes(QuantizationSettings &settings, int cascade_structure) {
  settings.rtype1 = cascade_structure;
  settings.rtype2 = settings.qtype ? 0 : 1;
  settings.rtype3 = settings.rtype4 = 0;
}

bool quantize_iir() {
  DesignRecord &r = design_record;
  const QuantizationSettings &settings = r.quantization;
  const RealizationForm form{r.realization};
  IirForms &z = r.z_quantized;
  z = r.z;
  r.noise = {};
  trace("\n IIR quantization\n");
  if (form < RealizationForm::cascade || form > RealizationForm::ladder_2 || !form_exists(z, form))
    return refuse(Message::form_does_not_exist);

  const bool entered_product = r.selections.DesignOrAnalysisType == code(DesignMethod::z_analysis) &&
                               r.selections.z_input_option == code(InputOption::product);
  if (entered_product) {
    PoleZeroEntry work{};
    int dropped_delay = 0;
    if (!reorder_sections(z.cascade, work, dropped_delay)) return refuse(Message::scaling_impossible);
    restore_delay(z.cascade, dropped_delay);
  }

  cancel_delays(z.cascade);
  cancel_delays(z.parallel);
  if (form == RealizationForm::ratio) normalize_ratio(z.ratio);
  if (!z.cascade.keep_gain && !z.parallel.keep_gain) {
    const double factor = set_gain(z, form);
    if (!std::isfinite(factor)) return refuse(Message::scaling_impossible);
    scale_other_forms(z, form, factor);
    note_missed_peak(z.cascade);
  }
  with_form(z, form, [](const auto &entry) { dump(entry); });

  bool scaled = true;
  if (form == RealizationForm::cascade)
    scaled =
        scale_and_estimate_cascade(z.cascade, static_cast<SectionStructure>(settings.rtype1), settings.ibit, r.noise);
  if (form == RealizationForm::parallel)
    scaled = scale_and_estimate_parallel(z.parallel, !settings.rtype3, settings.ibit, r.noise);
  if (!scaled) return refuse(Message::scaling_impossible);

  if (settings.quant) {
    if (!quantize_coefficients(z, form, settings)) return refuse(Message::quantized_to_zero);
    FormReport found;
    if (!derive_forms(Domain::z, form, z, found)) return refuse(Message::quantized_to_zero);
    note_forms(found, form, "After quantization ");
    if (settings.qtype && !in_fixed_point(settings, form))
      design_notes.push_back(
          formatf("Fixed point exists for sections only: the coefficients of this form are truncated "
                  "to %d significant bits.",
                  settings.ibit));
    if (in_fixed_point(settings, form) && form == RealizationForm::cascade)
      note_shifted_denominators(z.cascade, settings);
  } else if (form == RealizationForm::cascade) {
    normalize_sections(z.cascade);
  }

  trace("\n After quantization\n");
  trace("%s", form_headings[r.realization]);
  with_form(z, form, [](const auto &entry) { dump(entry); });
  const bool of_sections = form == RealizationForm::cascade || form == RealizationForm::parallel;
  if (of_sections && trace_on >= 2) dump(z.pole_zero);

  r.noise.unstable = !is_stable(z, form);
  if (r.noise.unstable) {
    design_notes.push_back(settings.quant
                               ? "The quantized filter is unstable: it has poles on or outside the unit circle. Choose "
                                 "more bits, another structure or realization, or a lower order."
                               : "The filter is unstable: it has poles on or outside the unit circle.");
    if (settings.quant) post_message(Message::quantized_unstable);
  }
  return true;
}

} // namespace brisel
