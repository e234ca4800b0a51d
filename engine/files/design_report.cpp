#include "engine/files/design_report.h"

#include "engine/analysis/plot_arrays.h"
#include "engine/core/trace.h"
#include "engine/files/spec_file.h"
#include "engine/files/system_file.h"
#include "engine/files/text_file.h"
#include "engine/iir/iir_quantize.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace brisel {

bool report_off = true;

namespace {

const std::string heading(16, ' ');
const std::string indent(19, ' ');
const std::string quantization_indent(9, ' ');
const std::string separator = "\n" + std::string(76, '-') + "\n\n";

void append_quantized(std::string &out, const DesignRecord &r) {
  appendf(out, "%sCOEFFICIENTS ARE QUANTIZED TO %4d BITS\n", quantization_indent.c_str(), r.quantization.ibit);
}

void append_taps(std::string &out, std::span<const double> taps) {
  int i = 0;
  for (const double h : taps) appendf(out, "%s H(%4d) = % 15.8e\n", indent.c_str(), i++, h);
}

void append_triples(std::string &out, const char *what, std::span<const Triple> triples) {
  appendf(out, "%s%s COEFFICIENTS\n", heading.c_str(), what);
  for (const Triple &t : triples) appendf(out, "%s% 12.6e % 12.6e % 12.6e\n", indent.c_str(), t[0], t[1], t[2]);
}

void append_sections(std::string &out, const SectionEntry &s) {
  append_triples(out, "NUMERATOR", std::span(s.numerators).first(s.section_count));
  append_triples(out, "DENOMINATOR", std::span(s.denominators).first(s.section_count));
  appendf(out, "INITIAL GAIN % 15.9e\n", s.gain);
}

// A sum is this factor times all of it; without it the filter could not be computed from the listing.
void append_sum(std::string &out, const SectionEntry &s) {
  append_sections(out, s);
  if (s.pars != 1) appendf(out, "SCALE OF SUM % 15.9e\n", s.pars);
}

void append_titled_sections(std::string &out, const char *format, const SectionEntry &s) {
  appendf(out, "\n%s%s\n", heading.c_str(), format);
  append_sections(out, s);
}

void append_polynomial(std::string &out, std::span<const double> values) {
  for (const double v : values) appendf(out, "%s% 15.9e\n", indent.c_str(), v);
}

void append_ratio(std::string &out, const RatioEntry &ratio) {
  appendf(out, "\n%sNUMERATOR POLYNOMIAL COEFFICIENTS - HIGHEST ORDER FIRST (in z)\n\n", heading.c_str());
  append_polynomial(out, std::span(ratio.numerator).first(ratio.numerator_order + 1));
  appendf(out, "%sINITIAL GAIN FOR NUMERATOR POLYNOMIAL% 15.9g\n", heading.c_str(), ratio.gain);
  appendf(out, "\n%sDENOMINATOR POLYNOMIAL COEFFICIENTS - HIGHEST ORDER FIRST (in z)\n\n", heading.c_str());
  append_polynomial(out, std::span(ratio.denominator).first(ratio.denominator_order + 1));
}

void append_lattice(std::string &out, const LatticeEntry &lattice) {
  appendf(out, "%sLATTICE GAMMA COEFFICIENTS\n", heading.c_str());
  append_polynomial(out, std::span(lattice.gamma).first(lattice.order + lattice.lead + 1));
  appendf(out, "%sLATTICE KAPPA COEFFICIENTS\n", heading.c_str());
  append_polynomial(out, std::span(lattice.kappa).subspan(1, lattice.order));
  appendf(out, "INITIAL GAIN % 15.9e\n", lattice.gain);
}

void append_ladder(std::string &out, const LadderEntry &ladder) {
  appendf(out, "%sLADDER COEFFICIENTS\n", heading.c_str());
  append_polynomial(out, std::span(ladder.alpha).first(ladder.alpha_count));
  appendf(out, "INITIAL GAIN % 15.9e\n", ladder.gain);
}

void append_places(std::string &out, const char *what, std::span<const std::complex<double>> places) {
  appendf(out, "\n%s%s OF THIS TRANSFER FUNCTION\n\n", heading.c_str(), what);
  out += "REAL PART     IMAGINARY PART      RADIUS         ANGLE\n";
  for (const auto &p : places)
    appendf(out, "% 15.9e % 15.9e  % 15.9e % 15.9e\n", p.real(), p.imag(), std::abs(p), p == 0.0 ? 0.0 : std::arg(p));
}

// The chosen realization of one set of forms.
void append_form(std::string &out, const IirForms &forms, RealizationForm form) {
  switch (form) {
  case RealizationForm::cascade:
    return append_sections(out, forms.cascade);
  case RealizationForm::parallel:
    return append_sum(out, forms.parallel);
  case RealizationForm::ratio:
    return append_ratio(out, forms.ratio);
  case RealizationForm::lattice:
    return append_lattice(out, forms.lattice);
  case RealizationForm::ladder_1:
    return append_ladder(out, forms.ladder_1);
  case RealizationForm::ladder_2:
    return append_ladder(out, forms.ladder_2);
  case RealizationForm::nonlinear:
    return;
  }
}

void append_analog_functions(std::string &out, const DesignRecord &r) {
  append_titled_sections(out, "NORMALIZED ANALOG TRANSFER FUNCTION T(s) - PRODUCT OF SECTIONS", r.s_normalized.cascade);
  append_titled_sections(out, "NORMALIZED ANALOG TRANSFER FUNCTION H(s) - SUM OF SECTIONS", r.s_normalized.parallel);
  append_titled_sections(out, "UNNORMALIZED ANALOG TRANSFER FUNCTION T(s) - PRODUCT OF SECTIONS\n",
                         r.s_unnormalized.cascade);
  const bool digital_first = r.selections.ZTransformMethod == code(ZTransform::impulse_invariant) &&
                             r.selections.ImpulseInvariantDesignPath != 0;
  if (digital_first) {
    append_titled_sections(out, "NORMALIZED DIGITAL TRANSFER FUNCTION H(z) - SUM OF SECTIONS\n", r.z_normalized);
  } else {
    append_titled_sections(out, "UNNORMALIZED ANALOG TRANSFER FUNCTION T(s) - SUM OF SECTIONS\n",
                           r.s_unnormalized.parallel);
  }
}

void append_compensation(std::string &out, const DesignRecord &r) {
  if (!r.selections.CompensationOption) return;
  appendf(out, "%sCOMPENSATION TYPE:   ", heading.c_str());
  if (r.selections.CompensationType) {
    out += "COMB FILTER COMPENSATION\n";
    appendf(out, "%sDIFFERENTIAL DELAY%3d\n", heading.c_str(), r.selections.CompensationDifferentialDelay);
    appendf(out, "%sRATE CHANGE       %3d\n", heading.c_str(), r.selections.CompensationRateChange);
    appendf(out, "%sNUMBER OF STAGES  %3d\n", heading.c_str(), r.selections.CompensationNumberOfStages);
  } else {
    out += "SIN(X)/X\n";
  }
}

} // namespace

std::string format_fir_report(const DesignRecord &r) {
  std::string out;
  const int method = r.selections.DesignOrAnalysisType;
  const bool windowed = method == code(DesignMethod::window);
  if (windowed)
    appendf(out, "%sFIR DESIGN: %s Window\n", heading.c_str(), windows[r.spec.window_type].name.data());
  else if (is_fir_method(method))
    appendf(out, "%sFILTER DESIGN METHOD: %s\n", heading.c_str(), design_methods[method].name.data());
  appendf(out, "%sFILTER LENGTH: %d\n", heading.c_str(), r.fir.length);
  const bool designed_here = is_fir_method(method); // settings of designs say nothing of an entered system
  if (designed_here) append_compensation(out, r);
  appendf(out, "\n%sIMPULSE COEFFICIENTS PRIOR TO QUANTIZATION\n", heading.c_str());
  const FirEntry &designed = r.fir_designed;
  const bool all_stored = designed.fir_type > 1 || (designed_here && r.selections.MinimumPhaseType);
  const int stored = all_stored ? designed.length : designed.unique_count;
  if (windowed) {
    appendf(out, "        COEFFICENT%24sWINDOW%21sPRODUCT\n", "", "");
    for (int i = 0; i < stored; i++) {
      const double h = designed.coeff[i], w = designed.has_window ? designed.window[i] : 1.0;
      appendf(out, " H(%4d) = % 15.8e  WIN(%4d) = % 15.8e  H * WIN = % 15.8e\n", i, h, i, w, h * w);
    }
  } else {
    append_taps(out, std::span(designed.coeff).first(stored));
  }
  if (r.quantization.quant) append_quantized(out, r);
  appendf(out, "\n%sIMPULSE COEFFICIENTS AFTER QUANTIZATION\n", heading.c_str());
  append_taps(out, std::span(r.fir.coeff).first(r.fir.length));
  return out;
}

std::string format_iir_report(const DesignRecord &r) {
  std::string out;
  const RealizationForm form{r.realization};
  const bool designed = r.selections.DesignOrAnalysisType == code(DesignMethod::iir);
  const bool analog = form == RealizationForm::nonlinear;
  const auto &mapping = z_transforms[designed ? r.selections.ZTransformMethod : code(ZTransform::s_domain_only)];
  appendf(out, "%sFILTER ORDER:%6d\n", heading.c_str(), analog ? r.s_unnormalized.cascade.order : r.z.cascade.order);
  if (designed) appendf(out, "%sFILTER DESIGN METHOD:      %s\n", heading.c_str(), mapping.name.data());
  appendf(out, "%sFILTER REALIZATION METHOD: %s\n", heading.c_str(),
          realization_names[realization_forms[r.realization].report_code].data());
  if (designed && r.selections.CompensationOption) {
    append_compensation(out, r);
    appendf(out, "%sCOMPENSATION:              %d SECTION%s, RESIDUAL %.6g dB\n", heading.c_str(),
            r.compensation.sections, r.compensation.sections == 1 ? "" : "S", r.compensation.residual);
  }
  if (designed && r.delay.sections > 0) {
    const bool filter = r.selections.filter_type != code(FilterType::arbitrary_group_delay);
    appendf(out, "%s%s%d ALL-PASS SECTIONS, DELAY RIPPLE %.6g SAMPLES\n", heading.c_str(),
            filter ? "PHASE EQUALIZER:           " : "GROUP DELAY:               ", r.delay.sections, r.delay.attained);
  }
  if (designed && r.selections.filter_type != code(FilterType::arbitrary_group_delay)) {
    appendf(out, "%sANALOG FILTER TYPE:        %s\n", heading.c_str(),
            analog_prototypes[r.selections.analog_type].name.data());
    append_analog_functions(out, r);
  }
  if (form == RealizationForm::cascade)
    appendf(out, "\n%sDIGITAL TRANSFER FUNCTION Hd(z) - PRODUCT OF SECTIONS\n\n", heading.c_str());
  else if (form == RealizationForm::parallel)
    appendf(out, "\n%sDIGITAL TRANSFER FUNCTION Hd(z) - SUM OF SECTIONS\n\n", heading.c_str());
  else if (!analog)
    appendf(out, "\n%sPRIOR TO QUANTIZATION\n", heading.c_str());
  append_form(out, r.z, form);
  if (r.quantization.quant) {
    append_quantized(out, r);
    if (r.quantization.qtype && !in_fixed_point(r.quantization, form))
      appendf(out, "%sTHEIR SIGNIFICANDS ARE TRUNCATED: FIXED POINT IS FOR SECTIONS ONLY\n",
              quantization_indent.c_str());
    appendf(out, "\n%sAFTER QUANTIZATION\n", heading.c_str());
    append_form(out, r.z_quantized, form);
  }
  const PoleZeroEntry &pz = analog ? r.s_unnormalized.pole_zero : r.z_quantized.pole_zero;
  append_places(out, "ZEROS", std::span(pz.zeros).first(pz.real_zeros + pz.complex_zeros));
  append_places(out, "POLES", std::span(pz.poles).first(pz.real_poles + pz.complex_poles));
  return out;
}

bool fits_response_tables() {
  const PlotArrays &p = plot_arrays;
  const auto finite = [](std::span<const double> values) {
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
  };
  for (const auto *over_frequency : {&p.frequency, &p.magnitude, &p.log_magnitude, &p.phase, &p.group_delay})
    if (!finite(std::span(*over_frequency).first(p.frequency_count))) return false;
  return finite(std::span(p.impulse).first(p.time_count)) && finite(std::span(p.step).first(p.time_count));
}

std::string format_response_tables(const DesignRecord &r) {
  std::string out = "\n   Frequency     Magnitude     Log Magnitude Phase         Group Delay\n";
  const PlotArrays &p = plot_arrays;
  // Radians per sample back to the user's unit.
  const double unit = r.selections.unit_factor_inverse / r.loaded.sampling_period;
  for (int i = 0; i < p.frequency_count; i++)
    appendf(out, "  % 12.6e % 12.6e % 12.6e % 12.6e % 12.6e\n", p.frequency[i] * unit, p.magnitude[i],
            p.log_magnitude[i], p.phase[i], p.group_delay[i]);
  out += "\n   Sample    Impulse       Step Response\n";
  for (int i = 0; i < p.time_count; i++) appendf(out, "  %4d      % 12.6e % 12.6e \n", i + 1, p.impulse[i], p.step[i]);
  return out;
}

void detail_output() {
  if (report_off) return;
  trace(" detail output\n");
  DesignRecord &r = design_record;
  const int method = r.selections.DesignOrAnalysisType;
  std::string out;
  if (method <= code(DesignMethod::least_squares)) {
    r.loaded.unit = r.selections.FrequencyMode;
    out += format_filter_spec_body(r.loaded).value_or("");
  } else {
    out += format_analysis_input().value_or("");
  }
  out += separator;
  out += is_fir_result() ? format_fir_report(r) : format_iir_report(r);
  out += separator;
  if (r.plot.detout && fits_response_tables())
    out += format_response_tables(r);
  else if (r.plot.detout)
    out += "\n   The responses hold values that are not finite: there are no tables of them.\n";
  report("%s", out.c_str());
  reopen_system_files();
}

} // namespace brisel
