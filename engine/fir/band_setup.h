// band_setup.h - the bands, desired values and weights that the optimal FIR methods approximate.
//
// Frequencies are radians per sample. The weighted error of a filter with amplitude A is
// (A(w) - band_desired(w)) * band_weight(w); the methods make its largest magnitude as small as possible.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/message_numbers.h"
#include "engine/core/records.h"
#include "engine/fir/compensation.h"
#include "engine/fir/desired_response.h"

#include <array>
#include <span>
#include <string>

namespace brisel {

/// How far from each other neighbouring bands are kept: a grid must not hold the same point twice.
inline constexpr double band_offset = 1e-7;

enum class BandShape {
  constant,            // `value`
  slope,               // `value` times w
  table,               // arbitrary magnitude
  raised_cosine,       // from `value` = 1 at the lower edge of the transition down to 0
  root_raised_cosine,  //
  rising_transition,   // half a cosine period up from 0, between a lower stopband and a passband
  falling_transition,  // half a cosine period down to 0
  ramp,                // straight from `value` to `end_value`, whatever the compensation
  half_band_prototype, // the lowpass of a halfband filter: the gain it needs at w for a gain of `value` at w / 2
};

/// Stopbands whose weight grows away from the passband.
enum class StopSide { none, below_passband, above_passband };

struct PlanBand {
  double lower = 0;
  double upper = 0;
  double value = 0;
  double weight = 1;
  BandShape shape = BandShape::constant;
  StopSide side = StopSide::none;
  bool relative = false; // weighted by 1 / w
  int table = 0;         // of an arbitrary magnitude
  double end_value = 0;  // of a ramp
  double tolerance = 0;  // above 0: the band may deviate by this, and takes the weight that makes it so
};
/// Bands of a specification, and the gaps between and beside them.
inline constexpr int max_plan_bands = 2 * max_bands + 1;

struct BandPlan {
  FirSymmetry symmetry = FirSymmetry::symmetric;
  int length = 0; // taps of the filter that is computed; a halfband filter is folded out of a shorter one
  int band_count = 0;
  std::array<PlanBand, max_plan_bands> bands;
  double allowed_deviation = 0; // weighted error at which the specification is just met; 0 where it says none
  double weight_exponent = 0;   // of the frequency ratio, in stopbands with a side
  Compensation compensation;
  std::array<double, 2> curve_edges{}; // of the raised cosines
  std::array<MagnitudeTable, max_arbitrary_bands> tables;

  bool odd_length() const { return length % 2 != 0; }
  bool symmetric() const { return symmetry == FirSymmetry::symmetric; }
  int half_length() const { return (length + 1) / 2; }
};

/// Largest deviations from 1 and from 0 that ripple and attenuation (dB, positive) allow a filter whose passband gain
/// is centred on 1.
struct BandDeviations {
  double passband = 0;
  double stopband = 0;
};
BandDeviations band_deviations(double passband_ripple_db, double stopband_attenuation_db);

struct PlanOptions {
  FirSymmetry symmetry = FirSymmetry::symmetric;
  int rolloff_db = 0; // stopband rolloff, dB per octave
  Compensation compensation = {};
};
struct PlanRefusal {
  Message number = Message::impossible_specification;
  std::string reason;
};

/// Fills `plan` from a specification whose sampling frequency is 2 pi and whose `length` is the number of taps. False,
/// with the reason, when its bands are out of order, without width, without a positive ripple, or cannot be
/// compensated.
bool plan_bands(const FilterSpec &spec, const PlanOptions &options, BandPlan &plan, PlanRefusal &refusal);

/// Desired amplitude at `w` in `band`, compensation included.
double band_desired(const BandPlan &plan, double w, int band);
/// Frequencies inside a band at which the desired amplitude has a kink, ascending.
std::span<const double> kinks(const BandPlan &plan, int band);
double band_weight(const BandPlan &plan, double w, int band);

} // namespace brisel
