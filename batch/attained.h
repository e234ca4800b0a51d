// attained.h - what a finished filter does in the bands of its specification, measured on a grid much denser than the
// one it was designed on.
//
// Frequencies are radians per sample throughout. Ripple and attenuation are those of the specification: the passband
// ripple is the ratio of the largest to the smallest passband gain, the attenuation that of the largest passband gain
// to the largest stopband gain, both in dB.
#pragma once

#include "engine/core/spec_bands.h"
#include "engine/fir/compensation.h"

#include <complex>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace brisel {

using Band = FrequencyBand;

enum class Measure {
  ripple_db,      // gain over desired gain, largest over smallest
  attenuation_db, // below the largest gain of the ripple requirements, or below 1 where there is none
  error,          // distance from the desired gain
  relative_error, // the same over the desired gain
  percent_error,  // that in percent
  peak_db,        // largest gain
};

/// One thing that a specification asks for, or that its user wants to know.
struct Requirement {
  std::string name;
  Measure measure;
  std::vector<Band> bands;
  std::function<double(double)> desired; // gain at w; not read by attenuation and peak
  double asked = 0;                      // in the unit of the measure; 0: the specification names no figure
};

/// The requirements of a specification whose sampling frequency is 2 pi. Types without bands have none.
std::vector<Requirement> requirements(const FilterSpec &spec, const Compensation &compensation);

/// A gain (not negative) over frequency, at points close enough that a parabola through three neighbours finds every
/// peak; the first and the last point are the band's edges.
struct Samples {
  std::vector<double> w;
  std::vector<double> gain;
};
using Sampler = std::function<Samples(Band)>;

/// Samples a FIR filter of these taps; with 16 points between neighbouring extrema of its gain, more at band edges.
Sampler fir_sampler(std::span<const double> taps, double gain);

/// Samples an IIR filter whose values at points of the z plane are those of `values`; the points lie closer and closer
/// towards the band's edges, where the extrema of such a filter are.
using PlaneValues = std::function<std::vector<std::complex<double>>(std::span<const std::complex<double>>)>;
Sampler iir_sampler(PlaneValues values);

/// One figure a requirement, in its unit.
std::vector<double> attained(const std::vector<Requirement> &requirements, const Sampler &sampler);

} // namespace brisel
