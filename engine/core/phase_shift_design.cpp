#include "engine/core/phase_shift_design.h"

#include "engine/core/design_state.h"
#include "engine/core/system_analysis.h"
#include "engine/files/system_lists.h"
#include "engine/files/text_file.h"

namespace brisel {

PhaseShiftSpec last_phase_shift;

std::string phase_shift_bands_text(const PhaseShiftSpec &wanted, const PhaseShiftFilter &filter) {
  std::string text;
  for (const FrequencyBand &band : phase_shift_bands(wanted, filter))
    appendf(text, "%sfrom %.6g to %.6g %s", text.empty() ? "" : " and ", band.low * design_state.unit_factor_inverse,
            band.high * design_state.unit_factor_inverse, design_state.FrequencyMode ? "rad/s" : "Hz");
  return text;
}

std::optional<PhaseShiftComplaint> phase_shift_design(const PhaseShiftSpec &wanted) {
  const auto outcome = design_phase_shift(wanted);
  if (const auto *complaint = std::get_if<PhaseShiftComplaint>(&outcome)) return *complaint;
  const auto &filter = std::get<PhaseShiftFilter>(outcome);
  const auto [a1, a2] = filter.pair;
  const SystemLists sections{.sample_rate = wanted.sampling_frequency,
                             .gain = filter.gain,
                             .first = {{-filter.p, 1, 0, 1, -filter.p, 0}, {a2, a1, 1, 1, a1, a2}},
                             .second = {}};
  if (const auto wrong = enter_lists(Domain::z, InputOption::product, sections, z_entries))
    return PhaseShiftComplaint{PhaseShiftField::real_zero, wrong->reason};
  last_phase_shift = wanted;
  design_state.DesignOrAnalysisType = code(DesignMethod::z_analysis);
  design_state.z_input_option = code(InputOption::product);
  z_path[code(InputOption::product)].clear(); // no system analysis file holds this system
  // The largest gain of an all-pass filter is 1; setting it would lose the sign.
  design_state.SDomainAnalysisMaximumGainOption = 0;
  analyze_system(formatf("Before any quantization the phase is within %g degrees of %g %s.", phase_band_tolerance,
                         wanted.degrees, phase_shift_bands_text(wanted, filter).c_str()));
  return std::nullopt;
}

} // namespace brisel
