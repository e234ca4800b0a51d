#include "batch/json_output.h"

#include "batch/job.h"
#include "batch/units.h"
#include "engine/analysis/plot_arrays.h"
#include "engine/core/code_tables.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <span>

namespace brisel {

namespace {

using Json = nlohmann::ordered_json;

/// Values that must be finite: a coefficient that is not would be a filter that only looks like one.
Json coefficients(std::span<const double> values) {
  for (const double value : values)
    if (!std::isfinite(value)) throw JobFailure(exit_failed, "the design has coefficients that are not finite");
  return Json(std::vector<double>(values.begin(), values.end()));
}

template <std::size_t size> Json response(const std::array<double, size> &values, int count) {
  return Json(std::vector<double>(values.begin(), values.begin() + count)); // what is not finite is shown as null
}

std::span<const double> taps(const FirEntry &entry) {
  return {entry.coeff.data(), static_cast<std::size_t>(entry.length)};
}

Json fir_json() {
  const FirEntry &fir = design_record.fir;
  Json out{{"length", fir.length}, {"symmetry", fir_symmetries[static_cast<std::size_t>(fir.fir_type)]}};
  if (design_record.selections.DesignOrAnalysisType == code(DesignMethod::window))
    out["window"] = windows[static_cast<std::size_t>(design_record.spec.window_type)].option;
  out["gain"] = coefficients({&fir.gain, 1})[0];
  out["shift"] = fir.shift;
  out["coefficients"] = coefficients(taps(fir));
  out["unquantized"] = coefficients(taps(design_record.fir_unquantized));
  return out;
}

Json responses_json() {
  const int points = plot_arrays.frequency_count, samples = plot_arrays.time_count;
  std::vector<double> frequency(static_cast<std::size_t>(points)), time(static_cast<std::size_t>(samples));
  const double unit = design_record.selections.unit_factor;
  const double low = in_user_unit(plot_state.frequency[0], unit), high = in_user_unit(plot_state.frequency[1], unit);
  for (int i = 0; i < points; i++)
    frequency[i] = plot_state.log_axis ? plot_arrays.frequency[i] / plot_state.factor / unit
                                       : low + (high - low) * i / (points - 1); // 20, where the radians say 20.000...4
  for (int i = 0; i < samples; i++) time[i] = i * plot_state.factor;
  return Json{{"frequency", frequency},
              {"magnitude", response(plot_arrays.magnitude, points)},
              {"log_magnitude", response(plot_arrays.log_magnitude, points)},
              {"phase", response(plot_arrays.phase, points)},
              {"group_delay", response(plot_arrays.group_delay, points)},
              {"time", time},
              {"impulse", response(plot_arrays.impulse, samples)},
              {"step", response(plot_arrays.step, samples)}};
}

bool holds_object(const Json &value) {
  return value.is_object() || (value.is_array() && !value.empty() && holds_object(value.front()));
}

/// Objects indented, one key a line; lists of plain values on one line.
void write(const Json &value, int indent, std::string &out) {
  if (!holds_object(value)) {
    out += value.dump(-1, ' ', false, Json::error_handler_t::replace);
    return;
  }
  const std::string inner(static_cast<std::size_t>(indent) + 2, ' ');
  out += value.is_object() ? "{\n" : "[\n";
  bool first = true;
  for (const auto &[key, item] : value.items()) {
    if (!first) out += ",\n";
    first = false;
    out += inner;
    if (value.is_object()) out += Json(key).dump() + ": ";
    write(item, indent + 2, out);
  }
  out += "\n" + std::string(static_cast<std::size_t>(indent), ' ') + (value.is_object() ? "}" : "]");
}

std::string text_of(const Json &value) {
  std::string out;
  write(value, 0, out);
  return out + "\n";
}

} // namespace

std::string design_json() {
  const DesignState &chosen = design_record.selections;
  Json out{{"version", BRISEL_VERSION},
           {"filter_type", filter_types[static_cast<std::size_t>(chosen.filter_type)].file_name},
           {"method", design_methods[static_cast<std::size_t>(chosen.DesignOrAnalysisType)].option},
           {"unit", unit_row(chosen.FrequencyMode).option},
           {"sampling_frequency", in_user_unit(design_record.loaded.sampling_frequency, chosen.unit_factor)}};
  out["fir"] = fir_json();
  out["responses"] = responses_json();
  if (!design_notes.empty()) out["notes"] = design_notes;
  return text_of(out);
}

std::string estimate_json(const std::vector<Estimate> &lengths, const std::vector<Estimate> &orders,
                          double transition_width) {
  Json out = Json::object();
  if (transition_width != 0) out["transition_width"] = transition_width;
  const auto list = [&](const char *key, const std::vector<Estimate> &estimates) {
    for (const Estimate &estimate : estimates) out[key][estimate.name] = estimate.value;
  };
  list("lengths", lengths);
  list("orders", orders);
  return text_of(out);
}

} // namespace brisel
