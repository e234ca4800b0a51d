// judged_filter.h - the gain of a finished filter at any frequency, and at frequencies so close that no peak is missed.
//
// Frequencies are radians per sample.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"
#include "engine/core/spec_bands.h"

#include <functional>
#include <span>
#include <vector>

namespace brisel {

/// Why a filter, or a quantity of it, has no figure.
enum class Trouble : std::int8_t {
  none,
  pole_on_circle,
  pole_on_axis, // of an analog system
  unstable,
  zero,
  gain_at_zero, // a gain at frequency 0, where the desired one is 0
  no_gain,
  no_number,
};

struct GainSamples {
  std::vector<double> w; // ascending
  std::vector<double> gain;
};

struct JudgedFilter {
  std::function<double(double)> gain;
  std::function<double(double)> delay; // in samples; IIR filters only
  /// From the band's lower to its upper edge, both included, with several samples between neighbouring extrema.
  std::function<GainSamples(FrequencyBand)> samples;
  double slope_at_zero = 0;        // of the gain, where its value at 0 is 0
  Trouble trouble = Trouble::none; // its response does not say what it does
  double trouble_at = 0;
};

/// All taps in order; they are copied.
JudgedFilter judged_fir(std::span<const double> taps, double gain);

/// The form named, `forms` outliving the result. Delays are those of the cascade.
JudgedFilter judged_iir(const IirForms &forms, int realization);

/// An analog system in the form that was entered, its frequencies in radians per second.
JudgedFilter judged_analog(const IirForms &forms, InputOption option);

} // namespace brisel
