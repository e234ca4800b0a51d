#include "engine/fir/run_selections.h"

#include "engine/core/design_state.h"
#include "engine/core/front_end.h"
#include "engine/files/text_file.h"

namespace brisel {

std::optional<Compensation> selected_compensation() {
  const DesignState &s = design_record.selections;
  auto compensation = make_compensation(s.CompensationOption, s.CompensationType, s.CompensationRateChange,
                                        s.CompensationDifferentialDelay, s.CompensationNumberOfStages);
  if (!compensation)
    post_message(Message::setting_out_of_limits,
                 formatf("rate change %d, differential delay %d and number of stages %d of the comb must be at most %d",
                         s.CompensationRateChange, s.CompensationDifferentialDelay, s.CompensationNumberOfStages,
                         max_compensation_setting));
  return compensation;
}

std::string in_users_unit(double w) {
  const int mode = design_record.selections.FrequencyMode;
  const double rate = design_record.loaded.sampling_frequency;
  return formatf("%.6g %s", w / two_pi * rate / unit_row(mode).factor, mode ? "rad/s" : "Hz");
}

} // namespace brisel
