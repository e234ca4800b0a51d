// front_end.h - what the engine asks of whoever runs it: the workstation, a batch job or a test.
#pragma once

#include "engine/core/message_numbers.h"

#include <string_view>

namespace brisel {

/// The pages that a design run opens, in the order of a run: the parameters of the filter type, then the method.
enum class Page {
  low_high_parameters,
  band_pass_stop_parameters,
  differentiator_parameters,
  multiband_parameters,
  hilbert_parameters,
  arbitrary_magnitude_parameters,
  group_delay_parameters,
  halfband_parameters,
  raised_cosine_parameters,
  fir, // types 4, 6 and 7: any FIR method
  iir,
  window,
  optimisation, // equiripple, linear programming, least squares
  group_delay,  // type 8
  compensation,
  phase_equalization,
};

/// What a page answers; the numbers are those of `status`.
enum class PageResult : int { cancelled = 0, next = 1, back = 3 };

/// How a run ends that has no result.
enum class RunEnd { stopped, failed, refused };

class FrontEnd {
public:
  /// Runs a page; it has filled the design state when it answers `next`.
  virtual PageResult run_page(Page page) = 0;
  /// Status bar text: "Working...", "Ready".
  virtual void announce(std::string_view text) = 0;
  /// Shows a message of the message file; `detail` says which file, line, value. Texts are data, never formats.
  virtual void post_message(Message number, std::string_view detail) = 0;
  /// Shows a text of the engine's own that is no numbered message.
  virtual void show_text(std::string_view text) = 0;
  /// Several lines that a reader has for standard error.
  virtual void reader_complaint(std::string_view text) = 0;
  /// A line that a reader has for standard output.
  virtual void reader_note(std::string_view) {}
  /// Progress of a long operation, 0 to 1. False asks the engine to stop.
  virtual bool progress(double fraction) = 0;
  /// The response arrays are new.
  virtual void refresh_plots() = 0;
  /// A run ended without a result while there was a design before it. True asks for that design.
  virtual bool wants_previous_design(RunEnd) { return false; }

protected:
  ~FrontEnd() = default; // never owned through this class
};

/// Installed at start-up, before anything else of the engine is called.
extern FrontEnd *front_end;

void post_message(Message number, std::string_view detail = {});

/// Reports progress, 0 to 1, and remembers when the front end asks to stop; false from then on.
bool go_on(double fraction);
extern bool stop_asked; // cleared when a run starts

} // namespace brisel
