#include "gui/dialogs/result_texts.h"

#include "engine/analysis/form_digits.h"
#include "engine/files/text_file.h"

#include <span>

namespace brisel {

namespace {

void append_sections(std::string &out, const char *title, const SectionEntry &s, bool analog) {
  appendf(out, "%s, gain %.16e\n", title, s.gain);
  const char *powers = analog ? "s^2, s, 1" : "1, z^-1, z^-2";
  for (int i = 0; i < s.section_count; i++) {
    const auto at = static_cast<std::size_t>(i);
    for (const auto &[name, triple] : {std::pair{"numerator  ", s.numerators[at]}, {"denominator", s.denominators[at]}})
      appendf(out, "  %3d %s (%s) % .16e % .16e % .16e\n", i + 1, name, powers, triple[0], triple[1], triple[2]);
    if (s.shift[at]) appendf(out, "      stored divided by 2^%d\n", s.shift[at]);
  }
  out += "\n";
}

void append_polynomial(std::string &out, const char *name, std::span<const double> values) {
  appendf(out, "  %s\n", name);
  for (const double value : values) appendf(out, "    % .16e\n", value);
}

void append_ratio(std::string &out, const RatioEntry &ratio, bool analog) {
  appendf(out, "Ratio of Two Polynomials (%s), gain %.16e\n", analog ? "descending powers of s" : "1, z^-1, ...",
          ratio.gain);
  append_polynomial(out, "numerator", std::span(ratio.numerator).first(std::size_t(ratio.numerator_order) + 1));
  append_polynomial(out, "denominator", std::span(ratio.denominator).first(std::size_t(ratio.denominator_order) + 1));
  out += "\n";
}

void append_places(std::string &out, const char *name, std::span<const std::complex<double>> places) {
  if (!places.empty()) appendf(out, "%s\n", name);
  for (const auto &place : places) appendf(out, "  % .16e % .16e i\n", place.real(), place.imag());
}

void append_list(std::string &out, const char *name, int first, std::span<const double> values) {
  for (std::size_t i = 0; i < values.size(); i++)
    appendf(out, "  %s %4d  % .16e\n", name, first + static_cast<int>(i), values[i]);
}

void append_lattice(std::string &out, const LatticeEntry &lattice) {
  appendf(out, "Lattice Structure, gain %.16e\n", lattice.gain);
  append_list(out, "gamma", 0, std::span(lattice.gamma).first(std::size_t(lattice.order + lattice.lead + 1)));
  append_list(out, "kappa", 1, std::span(lattice.kappa).subspan(1, std::size_t(lattice.order)));
  out += "\n";
}

std::string in_unit(const DesignRecord &r, double frequency) {
  return formatf("%14.6g", frequency * r.selections.unit_factor_inverse);
}

} // namespace

std::string iir_data_text(const DesignRecord &r, IirView view) {
  const bool analog = view <= IirView::denormalized_s;
  const IirForms &forms = view == IirView::normalized_s     ? r.s_normalized
                          : view == IirView::denormalized_s ? r.s_unnormalized
                          : view == IirView::unquantized_z  ? r.z
                                                            : r.z_quantized;
  std::string out;
  if (forms.cascade.section_count > 0) append_sections(out, "Cascaded Second Order Sections", forms.cascade, analog);
  if (forms.parallel.section_count > 0) append_sections(out, "Sum of Second Order Sections", forms.parallel, analog);
  if (forms.ratio.denominator_order > 0) append_ratio(out, forms.ratio, analog);
  if (!analog && forms.lattice.order > 0) append_lattice(out, forms.lattice);
  const PoleZeroEntry &pz = forms.pole_zero;
  append_places(out, "Zeros", std::span(pz.zeros).first(std::size_t(pz.real_zeros + pz.complex_zeros)));
  append_places(out, "Poles", std::span(pz.poles).first(std::size_t(pz.real_poles + pz.complex_poles)));
  return out.empty() ? "This design has no such data.\n" : out;
}

namespace {

void append_system(std::string &out, const ConvertibleSystem &system) {
  const bool analog = system.domain == Domain::s;
  const IirForms &iir = system.iir;
  switch (system.option) {
  case InputOption::ratio:
    return append_ratio(out, iir.ratio, analog);
  case InputOption::pole_zero: {
    const PoleZeroEntry &pz = iir.pole_zero;
    appendf(out, "Gain %.16e\n", pz.gain);
    append_places(out, "Zeros", std::span(pz.zeros).first(std::size_t(pz.real_zeros + pz.complex_zeros)));
    append_places(out, "Poles", std::span(pz.poles).first(std::size_t(pz.real_poles + pz.complex_poles)));
    return;
  }
  case InputOption::product:
    return append_sections(out, "Product of sections", iir.cascade, analog);
  case InputOption::sum:
    return append_sections(out, "Sum of sections, the gain being the direct term", iir.parallel, analog);
  case InputOption::lattice:
    return append_lattice(out, iir.lattice);
  case InputOption::ladder_1:
  case InputOption::ladder_2: {
    const LadderEntry &ladder = system.option == InputOption::ladder_1 ? iir.ladder_1 : iir.ladder_2;
    appendf(out, "Gain %.16e\nLeading coefficients: %d\n", ladder.gain, ladder.lead);
    append_list(out, "alpha", 0, std::span(ladder.alpha).first(std::size_t(ladder.alpha_count)));
    return;
  }
  default:
    appendf(out, "Gain %.16e\n", system.gain);
    const bool lattice = system.option == InputOption::lattice_fir;
    append_list(out, lattice ? "k" : "tap", lattice ? 1 : 0, system.taps);
  }
}

} // namespace

std::string conversion_text(const Conversion &conversion) {
  const ConvertibleSystem &system = conversion.system;
  const bool radians = design_state.FrequencyMode != 0;
  std::string out;
  appendf(out, "%s, %s domain\nSampling frequency %.10g %s\n\n",
          input_options[static_cast<std::size_t>(code(system.option))].name.data(),
          system.domain == Domain::s ? "s" : "z", system.sample_rate * (radians ? 1 : inverse_two_pi),
          radians ? "rad/s" : "Hz");
  out += "The conversion keeps " + digits_text(conversion.digits) + " of the response.\n";
  for (const std::string &note : conversion.notes) out += note + "\n";
  out += "\n";
  append_system(out, system);
  return out;
}

std::string quantization_analysis_text(const DesignRecord &r) {
  const QuantizationResult &n = r.noise;
  if (n.node_count == 0)
    return "The filter was not scaled: its realization is neither cascaded nor parallel sections, or quantization is "
           "off.\n";
  std::string out;
  const char *unit = r.selections.FrequencyMode ? "rad/s" : "Hz";
  appendf(out, "Node peaks\n  node   before scaling    at (%s)   scale factor    after scaling    at (%s)\n", unit,
          unit);
  for (std::size_t i = 0; i < static_cast<std::size_t>(n.node_count); i++)
    appendf(out, "  %4zu   %14.6g %s %14.6g %14.6g %s\n", i + 1, n.node_peak[i],
            in_unit(r, n.node_peak_frequency[i]).c_str(), n.scale_factor[i], n.scaled_node_peak[i],
            in_unit(r, n.scaled_node_peak_frequency[i]).c_str());
  appendf(out, "\nNoise gain of the sections\n");
  for (int i = 0; i + 1 < n.node_count; i++)
    appendf(out, "  %4d   %14.6g\n", i + 1, n.section_noise_gain[static_cast<std::size_t>(i)]);
  appendf(out, "\nInput noise power      %14.6g   %8.2f dB\n", n.input_noise_power, n.input_noise_db);
  appendf(out, "Output noise power     %14.6g   %8.2f dB\n", n.output_noise_power, n.output_noise_db);
  appendf(out, "Standard deviation     %14.6g\n", n.standard_deviation);
  appendf(out, "Noise floor            %14.2f dB, %d bits\n", n.noise_floor_db, n.noise_floor_bits);
  appendf(out, "Word length            %14d bits, %s\n", r.quantization.ibit,
          r.quantization.qtype ? "fixed point" : "floating point");
  if (n.unstable) out += "The quantized filter is unstable: poles lie on or outside the unit circle.\n";
  return out;
}

std::string fir_coefficients_text(const DesignRecord &r) {
  std::string out;
  appendf(out, "Filter length %d, gain %.16e\n\n   n   before quantization      %s\n", r.fir.length, r.fir.gain,
          r.quantization.quant ? "after quantization" : "(not quantized)");
  for (std::size_t i = 0; i < static_cast<std::size_t>(r.fir.length); i++)
    appendf(out, "%5zu  % .16e  % .16e\n", i, r.fir_unquantized.coeff[i], r.fir.coeff[i]);
  return out;
}

} // namespace brisel
