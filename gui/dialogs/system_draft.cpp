#include "gui/dialogs/system_draft.h"

#include "engine/core/system_analysis.h"

namespace brisel {

namespace {

QString text_of(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

SystemDraft::SystemDraft(Domain domain, InputOption option)
    : domain(domain), option(option), mapping{static_cast<std::int8_t>(design_state.SDomainAnalysisRealizationMethod)},
      maximum_gain(design_state.SDomainAnalysisMaximumGainOption != 0), prewarp{design_state.prewarp_frequency,
                                                                                design_state.PrewarpOption != 0},
      scratch(std::make_unique<SystemEntries>()) {}

SystemLists &SystemDraft::lists() {
  const auto [place, fresh] = lists_of_option.try_emplace(option);
  if (!fresh) return place->second;
  const SystemEntry entry = system_entry(domain == Domain::z ? z_entries : s_entries, option);
  place->second = lists_of(domain, option, entry);
  if (!(place->second.sample_rate > 0)) place->second = example_lists(domain, option, design_state.unit_factor);
  return place->second;
}

std::optional<SystemComplaint> SystemDraft::check(const SystemLists &typed) {
  return enter_lists(domain, option, typed, *scratch);
}

QString SystemDraft::form_text() const {
  return text_of(input_options[static_cast<std::size_t>(code(option))].name);
}

QString SystemDraft::domain_text() const {
  if (domain == Domain::z) return "Z Domain: " + form_text();
  return "S Domain: " + text_of(z_transforms[static_cast<std::size_t>(code(mapping))].name);
}

double SystemDraft::highest_root() {
  return check(lists()) ? 0 : highest_root_frequency(option, *scratch);
}

void SystemDraft::use() const {
  const bool digital = domain == Domain::z;
  const auto complaint = enter_lists(domain, option, lists_of_option.at(option), digital ? z_entries : s_entries);
  if (complaint) return; // the pages have seen to it
  const auto place = static_cast<std::size_t>(code(option));
  design_state.DesignOrAnalysisType = code(digital ? DesignMethod::z_analysis : DesignMethod::s_analysis);
  (digital ? design_state.z_input_option : design_state.s_input_option) = code(option);
  (digital ? z_path[place] : s_path[place]).clear(); // no system analysis file holds this system
  design_state.SDomainAnalysisMaximumGainOption = maximum_gain;
  if (digital) return;
  design_state.SDomainAnalysisRealizationMethod = static_cast<std::uint8_t>(mapping);
  design_state.PrewarpOption = prewarp.every_root;
  design_state.prewarp_frequency = prewarp.frequency;
}

} // namespace brisel
