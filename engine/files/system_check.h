// system_check.h - whether an entered system is one that can be analysed. Loaded files, converted coefficient files and
// the entry pages all ask here, before any number is computed.
#pragma once

#include "engine/files/system_file.h"

namespace brisel {

/// What a complaint is about. Lists: numerator, zeros, sections, gammas or taps first; denominator, poles or kappas
/// second.
enum class SystemPart { sampling_frequency, gain, first_list, second_list };

struct SystemComplaint {
  SystemPart part;
  std::string reason; // a sentence without its full stop
};

/// What makes an analysis of the system impossible, or nothing. An unstable system is none: it can be looked at.
std::optional<SystemComplaint> check_system(Domain domain, InputOption option, SystemEntry entry);

} // namespace brisel
