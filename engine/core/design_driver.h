// design_driver.h - one design run, from the parameter pages to quantized and analysed results.
#pragma once

#include "engine/core/records.h"

#include <functional>

namespace brisel {

/// One design run. Asks the front end for every page, then designs, quantizes and computes the responses. Afterwards
/// `design_record.valid` tells whether there is a result; a cancelled page leaves everything as it was.
void design_filter();

/// Points `current_spec` at the specification of the filter type, derives the unit factors, makes type and method fit
/// each other, and resets prototype, window and symmetry to the type's own.
void SetFilterDesignType();

/// Runs the stages of a run between "Working..." and "Ready". When the user stops them, the design that stood before is
/// put back.
void run_with_progress(const std::function<void()> &stages);

/// Fills the design record with what a run starts from; `sampling_frequency` in radians per second.
void begin_record(double sampling_frequency);

// The stages of a run, in their order. Those that return a bool answer whether the run goes on.
bool GetFilterParameters();
bool GetOptionalFilterCompensationData();
bool GetOptionalPhaseEqualizationData();
void filter_dsgn_dsgn();
void filter_dsgn_quan();
void filter_dsgn_plot();

} // namespace brisel
