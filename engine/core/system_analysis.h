// system_analysis.h - an entered system, from its entry to quantized and analysed results.
#pragma once

#include "engine/core/design_state.h"

namespace brisel {

/// Copies the entry of an option 0 to 6, which is all that is read, into the form that it is.
void copy_entry(const SystemEntries &entries, InputOption option, IirForms &forms);

/// Analyses the system that the design state selects: the entry of `z_input_option` for the z domain, of
/// `s_input_option` for the s domain. An analog system is mapped by `SDomainAnalysisRealizationMethod`, or only its
/// analog response is computed. Afterwards `design_record.valid` tells whether there is a result. `note` is what there
/// is to know of the system beforehand, a sentence for the design notes.
void analyze_system(const std::string &note = {});

/// The largest |root| of an entered analog system, radians per second: what prewarping of every pole and zero has to
/// place below half the sampling frequency. 0 for a system without poles and zeros.
double highest_root_frequency(InputOption option, const SystemEntries &entries);

/// Sampling frequency of that system, radians per second.
double entered_sample_rate();

/// The stage that brings the entry into the design record in every form. False after a message.
bool SystemAnalysisConv();

} // namespace brisel
