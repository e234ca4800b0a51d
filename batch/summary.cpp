#include "batch/summary.h"

#include "batch/units.h"
#include "engine/core/code_tables.h"
#include "engine/core/design_state.h"
#include "engine/core/problem_description.h"
#include "engine/files/text_file.h"
#include "engine/fir/run_selections.h"
#include "engine/judge/design_judgement.h"
#include "engine/judge/judgement_text.h"

#include <algorithm>
#include <vector>

namespace brisel {

namespace {

std::string unit_word() {
  return design_record.selections.FrequencyMode ? " rad/s" : " Hz";
}

/// A frequency, radians per sample, in the user's unit.
std::string shown_frequency(double w) {
  return formatf("%.6g", w * design_record.loaded.sampling_frequency / two_pi / design_record.selections.unit_factor);
}

/// "0 to 1000 Hz" and so on.
std::string shown_bands(const Goal &goal) {
  std::string out;
  for (const FrequencyBand band : goal.bands)
    out += (out.empty() ? "" : ", ") + shown_frequency(band.low) + " to " + shown_frequency(band.high);
  return out + unit_word();
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
  const GainRange range = delivered_gain_range();
  const auto text = [](const Figure &figure) {
    const std::string at = formatf("%.6g", figure.worst_at / design_record.selections.unit_factor) + unit_word();
    return (figure.trouble == Trouble::none ? decibel_text(figure.value, 2) : gain_trouble_text(figure)) + " at " + at;
  };
  return "  largest gain " + text(range.largest) + ", smallest " + text(range.smallest) + "\n";
}

std::string attained_table(std::span<const Judgement> judgements) {
  const bool quantized = design_record.quantization.quant != 0;
  std::vector<Column> columns{{""}, {"asked"}, {"attained"}};
  if (quantized) columns.push_back({"quantized"});
  columns.push_back({""});
  const auto text = [](const Judgement &judgement, const Figure &figure) {
    return figure_text(judgement, figure, in_users_unit(figure.worst_at));
  };
  for (const Judgement &judgement : judgements) {
    columns[0].push_back(goal_text(judgement.goal) + ", " + shown_bands(judgement.goal));
    columns[1].push_back(asked_text(judgement.goal));
    columns[2].push_back(text(judgement, judgement.attained));
    if (judgement.quantized) columns[3].push_back(text(judgement, *judgement.quantized));
    columns.back().push_back(judgement.met == false ? "missed" : "");
  }
  if (const CompensationResult &compensation = design_record.compensation; compensation.sections > 0) {
    const std::vector<std::string> row{"compensation residual", "", decibel_text(compensation.residual, 4)};
    for (std::size_t i = 0; i < columns.size(); i++) columns[i].push_back(i < row.size() ? row[i] : "");
  }
  return table(columns);
}

} // namespace

std::string design_summary(std::span<const Judgement> judgements) {
  std::string out = heading();
  if (!is_design())
    out += gain_line();
  else if (!judgements.empty())
    out += attained_table(judgements);
  for (const std::string &note : design_notes) out += "Note: " + note + "\n";
  return out;
}

} // namespace brisel
