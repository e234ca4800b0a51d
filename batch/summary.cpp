#include "batch/summary.h"

#include "batch/attained.h"
#include "batch/units.h"
#include "engine/analysis/form_conversions.h"
#include "engine/analysis/plot_arrays.h"
#include "engine/core/code_tables.h"
#include "engine/core/design_state.h"
#include "engine/core/problem_description.h"
#include "engine/files/text_file.h"
#include "engine/fir/run_selections.h"
#include "engine/iir/delay_design.h"

#include <algorithm>
#include <vector>

namespace brisel {

namespace {

/// Decibels with so many digits, and no minus sign before a zero.
std::string decibels(double value, int digits) {
  const std::string text = formatf("%.*f dB", digits, value);
  return text.find_first_of("123456789") == text.npos ? formatf("%.*f dB", digits, 0.0) : text;
}

const char *unit_of(Measure measure) {
  switch (measure) {
  case Measure::ripple_db:
  case Measure::attenuation_db:
  case Measure::peak_db:
    return " dB";
  case Measure::percent_error:
    return " %";
  case Measure::error:
  case Measure::relative_error:
    break;
  }
  return "";
}

std::string figure(Measure measure, double value) {
  if (measure == Measure::ripple_db) return decibels(value, 4);
  if (measure == Measure::attenuation_db || measure == Measure::peak_db) return decibels(value, 2);
  return formatf("%.3g%s", value, unit_of(measure));
}

std::string asked(const Requirement &wanted) {
  return wanted.asked == 0 ? "" : formatf("%g%s", wanted.asked, unit_of(wanted.measure));
}

/// "0 to 1000 Hz" and so on, in the user's unit.
std::string shown_bands(const Requirement &wanted) {
  const DesignState &chosen = design_record.selections;
  std::string out;
  for (const Band band : wanted.bands) {
    const auto shown = [&](double w) {
      return w * design_record.loaded.sampling_frequency / two_pi / chosen.unit_factor;
    };
    appendf(out, "%s%.6g to %.6g", out.empty() ? "" : ", ", shown(band.low), shown(band.high));
  }
  return out.empty() ? out : out + (chosen.FrequencyMode ? " rad/s" : " Hz");
}

/// Worse than asked for by more than the last digit shown.
bool missed(const Requirement &wanted, double value) {
  if (wanted.asked == 0) return false;
  return wanted.measure == Measure::attenuation_db ? value < wanted.asked - 0.005 : value > wanted.asked * (1 + 5e-4);
}

using Column = std::vector<std::string>;

std::string table(const std::vector<Column> &columns) {
  std::string out;
  for (std::size_t row = 0; row < columns.front().size(); row++) {
    std::string line = " ";
    for (const Column &column : columns) {
      std::size_t width = 0;
      for (const std::string &cell : column) width = std::max(width, cell.size());
      const std::string padding(width - column[row].size(), ' ');
      line += " ";
      line += &column == &columns.front() ? column[row] + padding : " " + padding + column[row];
    }
    out += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  }
  return out;
}

template <class Row> std::string name_of(const Row &row) {
  return std::string(row.name);
}

std::string sampling_words() {
  const DesignState &chosen = design_record.selections;
  return formatf("sampling frequency %.10g %s",
                 in_user_unit(design_record.loaded.sampling_frequency, chosen.unit_factor),
                 chosen.FrequencyMode ? "rad/s" : "Hz");
}

std::string fir_heading() {
  const DesignState &chosen = design_record.selections;
  const FirEntry &fir = design_record.fir;
  std::string out = ", " + name_of(design_methods[static_cast<std::size_t>(chosen.DesignOrAnalysisType)]);
  if (chosen.DesignOrAnalysisType == code(DesignMethod::window))
    out += ", " + name_of(windows[static_cast<std::size_t>(design_record.spec.window_type)]) + " window";
  const auto kind = chosen.MinimumPhaseType ? "minimum phase" : fir_symmetries[static_cast<std::size_t>(fir.fir_type)];
  return out + formatf("\n%d taps, %s, ", fir.length, std::string(kind).c_str());
}

std::string iir_heading() {
  const DesignState &chosen = design_record.selections;
  const bool all_pass = chosen.filter_type == code(FilterType::arbitrary_group_delay);
  std::string out = all_pass ? std::string(", all-pass sections")
                             : ", " + name_of(analog_prototypes[static_cast<std::size_t>(chosen.analog_type)]) + ", " +
                                   name_of(z_transforms[static_cast<std::size_t>(chosen.ZTransformMethod)]);
  if (design_record.compensation.sections > 0) out += ", compensation";
  if (!all_pass && design_record.delay.sections > 0) out += ", phase equalizer";
  const auto report_code = realization_forms[static_cast<std::size_t>(design_record.realization)].report_code;
  return out + formatf("\nOrder %d, %s, ", design_record.z.cascade.order,
                       std::string(realization_names[static_cast<std::size_t>(report_code)]).c_str());
}

bool is_design() {
  return design_record.selections.DesignOrAnalysisType <= code(DesignMethod::least_squares);
}

std::string heading() {
  if (!is_design()) return problem_description(design_record) + "\n" + sampling_words() + "\n";
  return std::string(filter_types[static_cast<std::size_t>(design_record.selections.filter_type)].dialog_name) +
         (is_fir_result() ? fir_heading() : iir_heading()) + sampling_words() + "\n";
}

/// Nothing was asked of an entered system: where its gain is largest and smallest says what it does.
std::string gain_line() {
  const DesignState &chosen = design_record.selections;
  const auto *first = plot_arrays.log_magnitude.begin(), *last = first + plot_arrays.frequency_count;
  const auto [smallest, largest] = std::minmax_element(first, last);
  const auto at = [&](const double *value) {
    return formatf("%s at %.6g %s", decibels(*value, 2).c_str(),
                   plot_arrays.frequency[static_cast<std::size_t>(value - first)] / plot_state.factor /
                       chosen.unit_factor,
                   chosen.FrequencyMode ? "rad/s" : "Hz");
  };
  return "  largest gain " + at(largest) + ", smallest " + at(smallest) + "\n";
}

Sampler sampler_of(const FirEntry &entry) {
  return fir_sampler({entry.coeff.data(), static_cast<std::size_t>(entry.length)}, entry.gain);
}

/// The form that was realized.
Sampler sampler_of(const IirForms &forms) {
  return iir_sampler([&forms](std::span<const std::complex<double>> z) {
    switch (RealizationForm{design_record.realization}) {
    case RealizationForm::parallel:
      return parallel_values(forms.parallel, z);
    case RealizationForm::ratio:
      return ratio_values(Domain::z, forms.ratio, z);
    case RealizationForm::lattice:
      return lattice_values(forms.lattice, z);
    case RealizationForm::ladder_1:
      return ladder_values(forms.ladder_1, z);
    case RealizationForm::ladder_2:
      return ladder_values(forms.ladder_2, z);
    case RealizationForm::cascade:
    case RealizationForm::nonlinear:
      break;
    }
    return cascade_values(forms.cascade, z);
  });
}

std::string attained_table() {
  const std::vector<Requirement> wanted =
      requirements(design_record.spec, selected_compensation().value_or(Compensation{}));
  const DelayResult &delay = design_record.delay;
  if (wanted.empty() && delay.sections == 0) return "";
  const bool fir = is_fir_result(), quantized = design_record.quantization.quant != 0;
  const std::vector<double> exact =
      attained(wanted, fir ? sampler_of(design_record.fir_unquantized) : sampler_of(design_record.z));
  const std::vector<double> rounded =
      quantized ? attained(wanted, fir ? sampler_of(design_record.fir) : sampler_of(design_record.z_quantized)) : exact;
  std::vector<Column> columns{{""}, {"asked"}, {"attained"}};
  if (quantized) columns.push_back({"quantized"});
  columns.push_back({""});
  for (std::size_t i = 0; i < wanted.size(); i++) {
    columns[0].push_back(wanted[i].name + (wanted[i].bands.empty() ? "" : ", " + shown_bands(wanted[i])));
    columns[1].push_back(asked(wanted[i]));
    columns[2].push_back(figure(wanted[i].measure, exact[i]));
    if (quantized) columns[3].push_back(figure(wanted[i].measure, rounded[i]));
    columns.back().push_back(missed(wanted[i], rounded[i]) ? "missed" : "");
  }
  if (const CompensationResult &compensation = design_record.compensation; compensation.sections > 0) {
    const std::vector<std::string> row{"compensation residual", "", decibels(compensation.residual, 4)};
    for (std::size_t i = 0; i < columns.size(); i++) columns[i].push_back(i < row.size() ? row[i] : "");
  }
  if (delay.sections > 0) {
    const auto samples = [](double value) { return formatf("%.4g samples", value); };
    const double rounded_delay = delay_ripple(design_record.z_quantized.cascade);
    columns[0].push_back("delay ripple");
    columns[1].push_back(delay.asked > 0 ? samples(delay.asked) : "");
    columns[2].push_back(samples(delay_ripple(design_record.z.cascade)));
    if (quantized) columns[3].push_back(samples(rounded_delay));
    columns.back().push_back(delay.asked > 0 && rounded_delay > delay.asked * (1 + 5e-4) ? "missed" : "");
  }
  return table(columns);
}

} // namespace

std::string design_summary() {
  std::string out = heading() + (is_design() ? attained_table() : gain_line());
  for (const std::string &note : design_notes) out += "Note: " + note + "\n";
  return out;
}

} // namespace brisel
