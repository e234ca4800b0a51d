// design_state.h - the engine's one global block of selections and the working record of a design run. Names of fields
// are the keys of the setup file. Written by entry points, driver, start-up, readers and front ends; kernels take what
// they need as arguments and do not include this header.
#pragma once

#include "engine/core/code_tables.h"
#include "engine/core/records.h"

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace brisel {

struct DesignState {
  std::int8_t DesignOrAnalysisType;        // DesignMethod
  std::int8_t filter_type;                 // FilterType
  std::uint8_t FrequencyMode;              // 0 hertz, else radians per second
  std::int8_t ZTransformMethod;            // ZTransform
  std::uint8_t ImpulseInvariantDesignPath; // 0 denormalized s domain first, 1 normalized z domain first
  std::int8_t RealizationType;             // RealizationForm
  std::uint8_t PhaseEqualizationOption;
  std::uint8_t gain_specification_mode; // GainMode
  std::uint8_t GroupDelayDesignMethod;  // DelayMethod
  std::uint8_t CompensationOption;
  std::uint8_t CompensationType; // 0 sin(x)/x, 1 comb
  std::uint8_t CompensationDifferentialDelay;
  std::uint8_t CompensationRateChange;
  std::uint8_t CompensationNumberOfStages;
  std::uint8_t GainOption;       // FirScaling
  std::uint8_t MinimumPhaseType; // MinimumPhaseType
  std::int8_t analog_type;       // AnalogPrototype
  std::uint8_t symmetry;         // FirSymmetry of the optimal FIR methods
  std::int8_t z_input_option;
  std::int8_t s_input_option;
  std::uint8_t SDomainAnalysisRealizationMethod; // ZTransform; 3 computes the analog response only
  std::uint8_t SDomainAnalysisMaximumGainOption; // set the maximum gain of an entered system to 1
  std::uint8_t PrewarpOption;                    // prewarp every pole and zero of an entered analog system
  std::uint8_t FileReadingMode;
  std::uint8_t board;
  std::int8_t fleng; // width of floating values in coefficient files, 14 to 22
  std::uint8_t cconven;
  std::uint8_t COSSAPDataFormat;
  std::uint8_t COSSAPDataCommentSwitch;
  std::uint8_t fview; // open a viewer on every text file written
  std::int16_t rtf_ind;
  std::uint16_t zgtype; // plot selection masks, a bit a plot kind
  std::uint16_t sgtype;
  double unit_factor; // user's frequency unit -> radians per second
  double unit_factor_inverse;
  // Filled by the method page of a run.
  std::int16_t order;          // IIR order, 0 = the prototype's estimate
  std::int16_t delay_sections; // of phase equalizer or group delay filter, 0 = as few as keep the ripple
  double delay_ripple;         // of the equalized passbands, samples; 0 = none is asked for
  std::int16_t rolloff_db;     // stopband rolloff of the optimal FIR methods, dB per octave
  std::uint8_t optimum;        // Optimum of equiripple designs
  double transition_width;     // radians per second, for types that have no transition of their own
  // Filled by the last page of an analog system.
  double prewarp_frequency; // radians per second, 0 = none
};

/// Word lengths that can be asked for. Words of fixed-point filters fit 32 bits; of a double's 53 bits one is the
/// sign's place.
inline constexpr int min_quantized_bits = 2;
inline constexpr int max_quantized_bits = 52;
inline constexpr int max_fixed_bits = 32;
/// Searches for better words of the taps.
inline constexpr int max_searches = 1000;

struct QuantizationSettings {
  std::uint8_t quant;    // quantize at all
  std::uint8_t qtype;    // 1 fixed point, 0 floating point
  std::uint8_t optimize; // search for better fixed-point taps than the rounded ones; for the session only
  std::int32_t ibit;     // word length
  std::int32_t op_num;   // number of searches
  std::int32_t op_steps; // most steps of a search
  std::int32_t rtype1;   // cascade: SectionStructure
  std::int32_t rtype2;   // parallel: 0 transposed fixed point, 1 floating point
  std::int32_t rtype3;   // parallel form is not scaled
  std::int32_t rtype4;
};

using Range = std::array<double, 2>; // lowest, highest

struct PlotSettings {
  std::uint8_t sgrid;               // grid lines
  std::uint8_t PlotType0Linear1Log; // frequency axis
  std::uint8_t detout;              // tables in the report
  std::uint8_t cpanz;               // compute poles and zeros
  std::uint8_t sinc;                // interpolate short impulse responses
  std::uint8_t autoreset;           // new ranges for every design
  std::int32_t nfpts;               // frequency points
  std::int32_t dnimp;               // time points
  std::int32_t ninterp;             // most points for which the impulse response is interpolated
  Range frequency_range;            // radians per second
  Range magnitude_range;
  Range log_magnitude_range;
};

/// Colours, fonts and lines are indices into the tables of display_defaults.h. The colours stand in the order in which
/// their start values are listed there.
struct DisplaySettings {
  std::int32_t back_color, titles_color, desc_color, mark_color, outline_color, grid_color, funct_color, zoom_color,
      ref_curve_color, labels_color;
  std::int32_t label_font, titles_font, desc_font, text_font;
  std::int32_t line_line, grid_line, func_line, zoom_line, ref_curve_line;
  std::int32_t label_size, title_size, desc_size, text_size;     // points
  std::int32_t label_style, title_style, desc_style, text_style; // bit 0 bold, bit 1 italic
};

/// Settings of the front end and of stages that have no other home; kept for the setup file.
struct WorkplaceSettings {
  std::int32_t pos_x, pos_y, pos_w, pos_h; // main window
  std::int32_t show_dt, bell, fas;
  std::int32_t hk_src, hk_gain, hk_attn, soni_in, soni_out, soni_lgain, soni_rgain, soni_lattn, soni_rattn;
  std::int32_t lpnorm; // p of DelayMethod::least_p, 0 = its start value
  std::int32_t dispage, print_file, paper_lay, ps_type;
  std::int32_t pp_width, pp_height, ppm_left, ppm_right, ppm_top, ppm_bottom, pp_eps, pp_value;
};
struct WorkplaceNames {
  std::string pp_comd;  // print command
  std::string pp_pname; // printer
  std::string dir_name; // working directory
  std::string user_name;
  std::string co_name; // company
};

/// Entered systems, one entry an input option.
struct SystemEntries {
  RatioEntry ratio;
  PoleZeroEntry pole_zero;
  SectionEntry product;
  SectionEntry sum;
  LadderEntry ladder_1;
  LadderEntry ladder_2;
  LatticeEntry lattice;
  std::array<FirEntry, 4> fir; // z domain only: options 7 to 10
};

/// What the all-pass sections of a design attain; delays in samples.
struct DelayResult {
  std::int32_t sections; // 0: the design has none
  double asked;          // largest distance from the delay wanted, 0: none was asked for
  double before;         // the same without the sections
  double attained;
  double constant; // mean of the largest and the smallest: delay of an equalized filter, or above the function points
};

/// What the sections attain that compensate an IIR design; gains in dB.
struct CompensationResult {
  std::int32_t sections; // 0: the design has none
  double droop;          // largest over smallest gain of the droop in the passbands
  double residual;       // the same of droop and sections together
};

/// What proves an equiripple design. The bound is the largest of the alternating peaks of the error over the smallest.
struct OptimumResult {
  std::int32_t needed; // alternations that make an optimum; 0: no equiripple design
  std::int32_t alternations;
  std::uint8_t exchange; // Optimum
  std::uint8_t gap_bounded;
  double bound;
};

/// Everything that belongs to one design or analysis. Its specification copies have the run's frequencies: `loaded` as
/// the user gave them, `spec` with a sampling frequency of 2 pi. Result entries carry the true sampling rate.
struct DesignRecord {
  std::uint8_t valid;
  std::uint8_t design_counter;
  std::time_t finished;
  FilterSpec loaded;
  FilterSpec spec;
  DesignState selections;
  QuantizationSettings quantization;
  PlotSettings plot;
  FirEntry fir_designed;    // centre-first half response and window
  FirEntry fir;             // all taps, quantized: what analysis, files and generators use
  FirEntry fir_unquantized; // all taps before quantization
  double wp;                // passband edge of the normalized prototype
  IirForms s_normalized;
  IirForms s_unnormalized;
  SectionEntry z_normalized; // impulse invariance: parallel form of the digitized prototype
  IirForms z;                // before quantization
  IirForms z_quantized;      // scaled and quantized: what analysis, files and generators use
  std::int8_t realization;   // RealizationForm
  DelayResult delay;
  CompensationResult compensation;
  OptimumResult optimum;
  QuantizationResult noise;
};
static_assert(std::is_trivially_copyable_v<DesignRecord>);

extern DesignState design_state;
extern QuantizationSettings quantization_settings;
extern PlotSettings plot_settings;
extern DisplaySettings display_settings;
extern WorkplaceSettings workplace_settings;
extern WorkplaceNames workplace_names;

extern std::array<FilterSpec, filter_type_count> spec;
extern FilterSpec *current_spec;
extern std::array<std::string, filter_type_count> spec_path;
extern SystemEntries z_entries;
extern SystemEntries s_entries;
extern std::array<std::string, z_option_count> z_path;
extern std::array<std::string, s_option_count> s_path;

extern int status; // of the last page: PageResult
extern DesignRecord design_record;

/// What the user should know of the current design beyond its numbers, a sentence each: a length that was raised, a
/// response that misses its mask, digits that a form lost. Cleared when a run starts; shown by summary and JSON.
extern std::vector<std::string> design_notes;

/// Unit factors from `FrequencyMode`.
void apply_frequency_mode();

/// True when the design record holds a finished FIR result (methods 1 to 4, or an entered FIR system).
bool is_fir_result();

} // namespace brisel
