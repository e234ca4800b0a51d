#include "batch/summary.h"

#include "batch/attained.h"
#include "batch/units.h"
#include "engine/core/code_tables.h"
#include "engine/core/design_state.h"
#include "engine/files/text_file.h"

#include <algorithm>
#include <vector>

namespace brisel {

namespace {

/// Decibels with so many digits, and no minus sign before a zero.
std::string decibels(double value, int digits) {
  const std::string text = formatf("%.*f dB", digits, value);
  return text.find_first_of("123456789") == text.npos ? formatf("%.*f dB", digits, 0.0) : text;
}

std::string figure(const Requirement &wanted, double value) {
  switch (wanted.measure) {
  case Measure::ripple_db:
    return decibels(value, 4);
  case Measure::attenuation_db:
  case Measure::peak_db:
    return decibels(value, 2);
  case Measure::error:
  case Measure::relative_error:
    break;
  }
  return formatf("%.3g", value);
}

std::string asked(const Requirement &wanted) {
  if (wanted.asked == 0) return "";
  const bool db = wanted.measure != Measure::error && wanted.measure != Measure::relative_error;
  return formatf(db ? "%g dB" : "%g", wanted.asked);
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

std::string fir_heading() {
  const DesignState &chosen = design_record.selections;
  std::string out(filter_types[static_cast<std::size_t>(chosen.filter_type)].dialog_name);
  appendf(out, ", %s", std::string(design_methods[static_cast<std::size_t>(chosen.DesignOrAnalysisType)].name).c_str());
  if (chosen.DesignOrAnalysisType == code(DesignMethod::window))
    appendf(out, ", %s window",
            std::string(windows[static_cast<std::size_t>(design_record.spec.window_type)].name).c_str());
  const FirEntry &fir = design_record.fir;
  appendf(out, "\n%d taps, %s, sampling frequency %.10g %s\n", fir.length,
          std::string(fir_symmetries[static_cast<std::size_t>(fir.fir_type)]).c_str(),
          in_user_unit(design_record.loaded.sampling_frequency, chosen.unit_factor),
          chosen.FrequencyMode ? "rad/s" : "Hz");
  return out;
}

Sampler sampler_of(const FirEntry &entry) {
  return fir_sampler({entry.coeff.data(), static_cast<std::size_t>(entry.length)}, entry.gain);
}

std::string attained_table() {
  const DesignState &chosen = design_record.selections;
  const auto compensation =
      make_compensation(chosen.CompensationOption != 0, chosen.CompensationType, chosen.CompensationRateChange,
                        chosen.CompensationDifferentialDelay, chosen.CompensationNumberOfStages);
  const std::vector<Requirement> wanted = requirements(design_record.spec, compensation.value_or(Compensation{}));
  if (wanted.empty()) return "";
  const std::vector<double> exact = attained(wanted, sampler_of(design_record.fir_unquantized));
  const bool quantized = design_record.quantization.quant != 0;
  const std::vector<double> rounded = quantized ? attained(wanted, sampler_of(design_record.fir)) : exact;
  std::vector<Column> columns{{""}, {"asked"}, {"attained"}};
  if (quantized) columns.push_back({"quantized"});
  columns.push_back({""});
  for (std::size_t i = 0; i < wanted.size(); i++) {
    columns[0].push_back(wanted[i].name + (wanted[i].bands.empty() ? "" : ", " + shown_bands(wanted[i])));
    columns[1].push_back(asked(wanted[i]));
    columns[2].push_back(figure(wanted[i], exact[i]));
    if (quantized) columns[3].push_back(figure(wanted[i], rounded[i]));
    columns.back().push_back(missed(wanted[i], rounded[i]) ? "missed" : "");
  }
  return table(columns);
}

} // namespace

std::string design_summary() {
  std::string out = fir_heading() + attained_table();
  for (const std::string &note : design_notes) out += "Note: " + note + "\n";
  return out;
}

} // namespace brisel
