#include "engine/core/design_state.h"

#include "engine/core/front_end.h"

namespace brisel {

DesignState design_state;
QuantizationSettings quantization_settings;
PlotSettings plot_settings;
DisplaySettings display_settings;
WorkplaceSettings workplace_settings;
WorkplaceNames workplace_names;

std::array<FilterSpec, filter_type_count> spec;
FilterSpec *current_spec = &spec[0];
std::array<std::string, filter_type_count> spec_path;
SystemEntries z_entries;
SystemEntries s_entries;
std::array<std::string, z_option_count> z_path;
std::array<std::string, s_option_count> s_path;

int status;
DesignRecord design_record;
std::vector<std::string> design_notes;

FrontEnd *front_end;

void post_message(Message number, std::string_view detail) {
  front_end->post_message(number, detail);
}

bool stop_asked;

bool go_on(double fraction) {
  if (!stop_asked && !front_end->progress(fraction)) stop_asked = true;
  return !stop_asked;
}

void apply_frequency_mode() {
  design_state.unit_factor = unit_row(design_state.FrequencyMode).factor;
  design_state.unit_factor_inverse = design_state.FrequencyMode ? 1.0 : inverse_two_pi;
}

bool is_fir_result() {
  const int method = design_record.selections.DesignOrAnalysisType;
  return is_fir_method(method) ||
         (method == code(DesignMethod::z_analysis) && is_fir_option(design_record.selections.z_input_option));
}

} // namespace brisel
