// design_driver.h - one design run, from the parameter pages to quantized and analysed results.
#pragma once

#include "engine/core/front_end.h"
#include "engine/core/records.h"

#include <functional>

namespace brisel {

/// One design run. Asks the front end for every page, then designs, quantizes and computes the responses. Afterwards
/// `design_record.valid` tells whether there is a result. Nothing is designed, and the record stays as it was, when a
/// page was cancelled or the first one left backwards, which is what the run then returns.
PageResult design_filter();

/// Points `current_spec` at the specification of the filter type, derives the unit factors, makes type and method fit
/// each other, and resets prototype, window and symmetry to the type's own.
void SetFilterDesignType();

/// Runs the stages of a run between "Working..." and "Ready". When they end without a result, the design that stood
/// before is put back if the front end wants it, with its notes, plots and plot settings.
void run_with_progress(const std::function<void()> &stages);
/// Tells why a run does not start. The design before it, if any, has not been touched.
void refuse_run(Message number, std::string_view detail = {});

/// Fills the design record with what a run starts from; `sampling_frequency` in radians per second.
void begin_record(double sampling_frequency);

// The stages of a run, in their order. Those with pages are told which way they are entered, `next` or `back`, and
// answer which way they are left or `cancelled`; a stage that is not wanted is passed over.
PageResult GetFilterParameters(PageResult way);
PageResult GetOptionalFilterCompensationData(PageResult way);
PageResult GetOptionalPhaseEqualizationData(PageResult way);
void filter_dsgn_dsgn();
void filter_dsgn_quan();
void filter_dsgn_plot();

} // namespace brisel
