// records.h - the plain records in which the engine keeps a specification and a filter.
//
// Every record is a fixed-capacity value without pointers and is copied by copying it whole. A FIR entry is 800 kB: it
// lives in static storage or behind a unique_ptr, never on the stack. Frequencies are in radians per second.
#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <numbers>
#include <type_traits>

namespace brisel {

inline constexpr double two_pi = 6.283185307179586;
inline constexpr double inverse_two_pi = 0.15915494309189535;

inline constexpr int filter_type_count = 12;
inline constexpr int max_bands = 10;          // multiband
inline constexpr int max_arbitrary_bands = 5; // arbitrary magnitude: its flags and points hold no more
inline constexpr int max_points_per_band = 50;
inline constexpr int max_function_points = 250;
inline constexpr int min_taps = 3; // of a design; an entered FIR system may have one tap
inline constexpr int max_taps = 50000;
inline constexpr int max_order = 200;
inline constexpr int max_sections = 100;
inline constexpr int max_lead = 321; // leading coefficients of ladder and lattice systems
inline constexpr int max_gammas = max_order + max_lead + 1;
inline constexpr int max_alphas = 2 * max_order + max_lead + 1;

/// What one filter type has to do. Frequencies in radians per second, ripples in dB and not negative.
struct FilterSpec {
  std::int32_t type;             // filter type code this record belongs to
  std::int32_t length;           // number of taps asked for, 0 = the method's own estimate
  std::int32_t split_transition; // bandpass: nonzero asks for the five-band form of the optimal methods
  std::int32_t window_type;      // window code of the window method
  std::int32_t band_count;       // bands (multiband, arbitrary magnitude) or function points (group delay)
  std::uint8_t unit;             // just read: 'H' or 'R'; else 0 hertz, 1 radians
  std::array<std::uint8_t, max_arbitrary_bands> fixed_gain;
  std::array<std::uint8_t, max_arbitrary_bands> list_flag; // function values in dB ("D"), else linear ("L")
  std::array<std::uint8_t, max_arbitrary_bands> proportional;
  std::array<std::uint8_t, max_arbitrary_bands> point_count;
  double sampling_frequency;
  std::array<double, 2> passband_edge;
  std::array<double, 2> stopband_edge;
  double passband_ripple;
  double stopband_ripple;
  double symbol_rate;
  double rolloff;
  double slope;           // of a differentiator, per radian per sample
  double sampling_period; // 2 pi / sampling_frequency
  std::array<double, max_bands> band_lower;
  std::array<double, max_bands> band_upper;
  std::array<double, max_bands> band_ripple;
  std::array<double, max_bands> band_value;
  std::array<double, max_function_points> function_frequency;
  std::array<double, max_function_points> function_value;
};

/// FIR entry. Designed entries of fir_type 0 and 1 hold the half response, centre first, in `unique_count` places, with
/// the window beside it; unfolded entries and types 2 and 3 hold all `length` taps in order.
struct FirEntry {
  std::int32_t length;
  std::int32_t shift;        // power of two that goes with the quantized gain
  std::int32_t unique_count; // half length (length + 1) / 2
  std::int32_t has_window;   // window code of the values in `window`, 0 = none
  std::int8_t fir_type;      // FirSymmetry
  std::int8_t odd_length;
  std::int8_t gain_option; // FirScaling
  double sample_rate;
  double gain;
  std::array<double, max_taps> coeff;
  std::array<double, max_taps> window;
};

/// N/D in powers of z^-1 (index 0 first) for a digital system, in descending powers of s for an analog one.
struct RatioEntry {
  std::int16_t numerator_order;
  std::int16_t denominator_order;
  double sample_rate;
  double gain;
  std::array<double, max_order + 1> numerator;
  std::array<double, max_order + 1> denominator;
};

/// Poles and zeros, each complex value stored and counted singly, conjugates next to each other.
struct PoleZeroEntry {
  std::int16_t real_zeros;
  std::int16_t complex_zeros;
  std::int16_t real_poles;
  std::int16_t complex_poles;
  double sample_rate;
  double gain;
  std::array<std::complex<double>, max_order> poles;
  std::array<std::complex<double>, max_order> zeros;
};

using Triple = std::array<double, 3>; // digital: (1, z^-1, z^-2); analog: (s^2, s, 1)

/// Second-order sections. Cascade: gain * product. Parallel: pars * (gain + sum), gain being the direct term.
struct SectionEntry {
  std::int16_t section_count;
  std::int16_t order;
  std::int8_t keep_gain; // an entered system whose gain the quantization stage leaves alone
  double sample_rate;
  double gain;
  double pars;
  std::array<Triple, max_sections> numerators;
  std::array<Triple, max_sections> denominators;
  std::array<std::int32_t, max_sections> shift; // quantized: stored coefficient = true coefficient / 2^shift
};

/// Gray-Markel lattice: kappa[1..order] reflection coefficients, gamma[0..order+lead] taps.
struct LatticeEntry {
  std::int16_t order;
  std::int16_t lead;
  double sample_rate;
  double gain;
  std::array<double, max_order + 2> kappa;
  std::array<double, max_gammas> gamma;
};

/// Continued-fraction ladder; form 0 is "ladder structure form 1", 1 is form 2.
struct LadderEntry {
  std::int16_t order;
  std::int16_t alpha_count;
  std::int16_t lead;
  std::int8_t form;
  double sample_rate;
  double gain;
  std::array<double, max_alphas> alpha;
};

/// One IIR system in all its forms.
struct IirForms {
  SectionEntry cascade;
  SectionEntry parallel;
  PoleZeroEntry pole_zero;
  RatioEntry ratio;
  LatticeEntry lattice;
  LadderEntry ladder_1;
  LadderEntry ladder_2;
};

/// What scaling and noise analysis found; node arrays have one entry more than there are sections.
struct QuantizationResult {
  double input_noise_power;
  double input_noise_db;
  double output_noise_power;
  double output_noise_db;
  double standard_deviation;
  std::int32_t noise_floor_bits;
  double noise_floor_db;
  std::int32_t unstable;                          // nonzero: poles of the final form lie on or outside the unit circle
  std::int32_t node_count;                        // 0: no scaling was done
  std::array<double, max_sections + 1> node_peak; // before scaling
  std::array<double, max_sections + 1> node_peak_frequency; // radians per second
  std::array<double, max_sections + 1> scale_factor;
  std::array<double, max_sections + 1> scaled_node_peak; // after scaling
  std::array<double, max_sections + 1> scaled_node_peak_frequency;
  std::array<double, max_sections> section_noise_gain;
};

static_assert(std::is_trivially_copyable_v<FilterSpec>);
static_assert(std::is_trivially_copyable_v<FirEntry>);
static_assert(std::is_trivially_copyable_v<IirForms>);
static_assert(std::is_trivially_copyable_v<QuantizationResult>);

} // namespace brisel
