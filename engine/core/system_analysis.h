// system_analysis.h - an entered system, from its entry to quantized and analysed results.
#pragma once

namespace brisel {

/// Analyses the system that the design state selects: the entry of `z_input_option` for the z domain, of
/// `s_input_option` for the s domain. An analog system is mapped by `SDomainAnalysisRealizationMethod`, or only its
/// analog response is computed. Afterwards `design_record.valid` tells whether there is a result.
void analyze_system();

/// Sampling frequency of that system, radians per second.
double entered_sample_rate();

/// The stage that brings the entry into the design record in every form. False after a message.
bool SystemAnalysisConv();

} // namespace brisel
