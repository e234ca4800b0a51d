// design_report.h - the readable report of a run: specification, design before and after quantization, and on request
// the tables of the responses.
#pragma once

#include "engine/core/design_state.h"

#include <string>

namespace brisel {

/// Set at start-up; while it is set no report is written. Asking for a report clears it.
extern bool report_off;

/// Writes the report of the current design record to the report file.
void detail_output();

/// The design part of the report for FIR and for IIR results.
std::string format_fir_report(const DesignRecord &record);
std::string format_iir_report(const DesignRecord &record);
/// False when a response in `plot_arrays` is not finite: no table can hold it, and the report says so instead.
bool fits_response_tables();
/// The tables of the frequency and time responses in `plot_arrays`.
std::string format_response_tables(const DesignRecord &record);

} // namespace brisel
