// code_tables.h - the fixed codes of the system and their texts. File formats, dialogs, reports and command-line
// options all read these tables; the index of a row is its code.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <type_traits>

namespace brisel {

/// The number of a scoped code.
template <class Code> constexpr std::underlying_type_t<Code> code(Code c) {
  return static_cast<std::underlying_type_t<Code>>(c);
}

enum class FilterType : std::int8_t {
  low_pass,
  high_pass,
  band_pass,
  band_stop,
  differentiator,
  multiband,
  hilbert,
  arbitrary_magnitude,
  arbitrary_group_delay,
  half_band,
  raised_cosine,
  root_raised_cosine,
};
struct FilterTypeRow {
  std::string_view file_name;   // specification files, coefficient files, reports, JSON
  std::string_view dialog_name; // dialogs and trace
};
inline constexpr std::array filter_types{
    FilterTypeRow{"LOW PASS", "Lowpass Filter"},
    FilterTypeRow{"HIGH PASS", "Highpass Filter"},
    FilterTypeRow{"BAND PASS", "Bandpass Filter"},
    FilterTypeRow{"BAND STOP", "Bandstop Filter"},
    FilterTypeRow{"DIFFERENTIATOR", "Differentiator Filter"},
    FilterTypeRow{"MULTIBAND", "Multiband Filter"},
    FilterTypeRow{"HILBERT TRANSFORMER", "Hilbert Transformer"},
    FilterTypeRow{"ARBITRARY MAGNITUDE", "Arbitrary Magnitude Filter"},
    FilterTypeRow{"ARBITRARY GROUP DELAY", "Group Delay Filter"},
    FilterTypeRow{"HALF BAND", "Halfband Filter"},
    FilterTypeRow{"RAISED COSINE", "Raised Cosine Filter"},
    FilterTypeRow{"ROOT RAISED COSINE", "Root Raised Cosine Filter"},
};

enum class DesignMethod : std::int8_t {
  iir,
  window,
  equiripple,
  linear_programming,
  least_squares,
  z_analysis = 6,
  s_analysis = 7,
};
struct NameRow {
  std::string_view name;   // dialogs and reports
  std::string_view option; // command line and JSON
};
inline constexpr std::array design_methods{
    NameRow{"", "iir"},
    NameRow{"FIR (Window) Design", "window"},
    NameRow{"FIR (Equiripple) Design", "equiripple"},
    NameRow{"Linear Programming Design", "linear-programming"},
    NameRow{"Least Squares Design", "least-squares"},
};
constexpr bool is_fir_method(int method) {
  return method >= 1 && method <= 4;
}

enum class AnalogPrototype : std::int8_t { butterworth, tschebyscheff, inverse_tschebyscheff, elliptic, bessel };
struct PrototypeRow {
  std::string_view name;
  std::string_view file_name;
  std::string_view option;
};
inline constexpr std::array analog_prototypes{
    PrototypeRow{"Butterworth", "BUTTERWORTH", "butterworth"},
    PrototypeRow{"Tschebyscheff", "TSCHEBYSCHEFF", "tschebyscheff"},
    PrototypeRow{"Inverse Tschebyscheff", "INVERSE TSCHEBYSCHEFF", "inverse-tschebyscheff"},
    PrototypeRow{"Elliptic", "ELLIPTIC", "elliptic"},
    PrototypeRow{"Bessel", "BESSEL", "bessel"},
};

enum class ZTransform : std::int8_t { bilinear, impulse_invariant, matched_z, s_domain_only };
struct ZTransformRow {
  std::string_view name;      // reports
  std::string_view file_name; // coefficient files; the last row stands for a system entered in z
  std::string_view option;
};
inline constexpr std::array z_transforms{
    ZTransformRow{"Bilinear Transformation", "BILINEAR TRANSFORMATION", "bilinear"},
    ZTransformRow{"Impulse Invariant", "INVARIANT IMPULSE", "impulse-invariant"},
    ZTransformRow{"Matched Z Transformation", "MATCHED Z TRANSFORM", "matched-z"},
    ZTransformRow{"S Domain Response Only", "Z DOMAIN", "s-domain"},
};

/// The form code that quantization and responses work with (kept in the design record).
enum class RealizationForm : std::int8_t { cascade, parallel, ratio, lattice, ladder_1, ladder_2, nonlinear };
/// Names of the reports, in their own numbering, which differs from the form codes.
inline constexpr std::array<std::string_view, 8> realization_names{
    "Cascaded Second Order Sections",
    "Sum of Second Order Sections",
    "Ratio of Two Polynomials",
    "Ladder Structure I",
    "Ladder Structure II",
    "Lattice Structure",
    "Nonlinear System",
    "Nonlinear System II",
};
struct RealizationRow {
  std::int8_t report_code; // index into realization_names
  std::string_view option;
};
inline constexpr std::array realization_forms{
    RealizationRow{0, "cascade"},   RealizationRow{1, "parallel"}, RealizationRow{2, "ratio"},
    RealizationRow{5, "lattice"},   RealizationRow{3, "ladder-1"}, RealizationRow{4, "ladder-2"},
    RealizationRow{6, "nonlinear"},
};

/// Arithmetic structure of quantized cascades.
enum class SectionStructure : std::int8_t { transposed, canonic, float_4_multiplies, float_5_multiplies };
inline constexpr std::array section_structures{
    NameRow{"Transposed Canonic Second Order Sections", "transposed"},
    NameRow{"Canonic Second Order Sections", "canonic"},
    NameRow{"Second Order Sections (floating point - 4 multiplies)", "float-4"},
    NameRow{"Second Order Sections (floating point - 5 multiplies)", "float-5"},
};

enum class FirSymmetry : std::int8_t { antisymmetric, symmetric, nonsymmetric, lattice };
inline constexpr std::array<std::string_view, 3> fir_symmetries{"antisymmetric", "symmetric", "nonsymmetric"};

/// Slopes that stopbands of the optimal FIR methods can be given, dB per octave.
inline constexpr int rolloff_step = 3;
inline constexpr int steepest_rolloff = 18;

/// Where an equiripple filter is the optimum: on the design grid, or between its points too.
enum class Optimum : std::uint8_t { grid, true_optimum };
inline constexpr std::array optima{
    NameRow{"On the design grid", "grid"},
    NameRow{"Between its points too", "true"},
};

enum class FirScaling : std::int8_t { none, half, one };
inline constexpr std::array fir_scalings{
    NameRow{"No Scaling - Gain Factor = 1", "none"},
    NameRow{"Center Tap(s) Scaled to be > 1/2 - Gain Factor < 1", "half"},
    NameRow{"Center Tap(s) Scaled to be 1 - Gain Factor < 1", "one"},
};

enum class MinimumPhaseType : std::uint8_t { none, dft, spectral_factor };
inline constexpr std::array minimum_phase_types{
    NameRow{"Not selected", "none"},
    NameRow{"DFT Method", "dft"},
    NameRow{"Spectral factor", "spectral"},
};

/// How the sections of a phase equalizer or a group delay filter are found.
enum class DelayMethod : std::uint8_t { least_squares, least_p, minimax };
inline constexpr std::array delay_methods{
    NameRow{"Least Squares", "least-squares"},
    NameRow{"Least p-th", "least-p"},
    NameRow{"Minimax", "minimax"},
};
inline constexpr int max_delay_norm = 64; // p of the second

/// Gain specification mode of FIR designs. It has nothing to do with FirScaling, which fits fixed-point taps to their
/// words and makes up for it in the gain.
enum class GainMode : std::uint8_t { nominal, maximum };
inline constexpr std::array gain_modes{
    NameRow{"Nominal Gain of 1", "nominal"},
    NameRow{"Maximum Gain of 1", "maximum"},
};

/// Frequency unit flag: 0 hertz, nonzero radians per second.
struct UnitRow {
  std::string_view file_word;
  std::string_view dialog_word;
  std::string_view option;
  double factor; // user's unit -> radians per second
};
inline constexpr std::array units{
    UnitRow{"HERTZ", "Hertz", "hertz", 6.283185307179586},
    UnitRow{"RADIAN/SEC.", "Radians/Sec.", "radians", 1.0},
};
constexpr const UnitRow &unit_row(int frequency_mode) {
  return units[frequency_mode ? 1 : 0];
}

enum class WindowForm {
  flat,
  triangle,
  cosine_sum,
  kaiser,
  dolph_tschebyscheff,
  taylor,
  gaussian,
  exponential,
  cauchy
};
struct WindowRow {
  std::string_view name;
  std::string_view option; // empty: not offered
  WindowForm form;
  std::array<double, 4> cosine; // a0 .. a3, all added: the argument counts from the centre
  int cosine_terms;
  double length_factor; // length = factor * fs / transition width; 0: the attenuation formula of the form
};
// Cosine-sum coefficients: F. J. Harris 1978, A. H. Nuttall 1981.
inline constexpr std::array windows{
    WindowRow{"Rectangular", "rectangular", WindowForm::flat, {}, 0, 0.94},
    WindowRow{"Triangular", "triangular", WindowForm::triangle, {}, 0, 3.97},
    WindowRow{"Hanning", "hanning", WindowForm::cosine_sum, {0.5, 0.5}, 2, 3.13},
    WindowRow{"Hamming", "hamming", WindowForm::cosine_sum, {0.53836, 0.46164}, 2, 3.31},
    WindowRow{"Blackman", "blackman", WindowForm::cosine_sum, {0.42, 0.5, 0.08}, 3, 5.51},
    WindowRow{
        "Exact Blackman", "exact-blackman", WindowForm::cosine_sum, {0.42659071, 0.49656062, 0.07684867}, 3, 5.77},
    WindowRow{"3 Term Cosine", "3-term-cosine", WindowForm::cosine_sum, {0.44959, 0.49364, 0.05677}, 3, 5.34},
    WindowRow{"3 Term Cosine with C3D", "3-term-cosine-c3d", WindowForm::cosine_sum, {0.375, 0.5, 0.125}, 3, 5.17},
    WindowRow{"Minimum 3 Term Cosine",
              "minimum-3-term-cosine",
              WindowForm::cosine_sum,
              {0.4243801, 0.4973406, 0.0782793},
              3,
              5.91},
    WindowRow{"4 Term Cosine", "4-term-cosine", WindowForm::cosine_sum, {0.40217, 0.49703, 0.09892, 0.00188}, 4, 5.13},
    WindowRow{"4 Term Cosine with C5D",
              "4-term-cosine-c5d",
              WindowForm::cosine_sum,
              {0.3125, 0.46875, 0.1875, 0.03125},
              4,
              6.37},
    WindowRow{"Minimum 4 term cosine",
              "minimum-4-term-cosine",
              WindowForm::cosine_sum,
              {0.3635819, 0.4891775, 0.1365995, 0.0106411},
              4,
              5.93},
    WindowRow{"Good 4 Term Blackman",
              "good-4-term-blackman",
              WindowForm::cosine_sum,
              {0.3780294, 0.4940071, 0.1221416, 0.0058219},
              4,
              5.77},
    WindowRow{"Harris Flattop",
              "harris-flattop",
              WindowForm::cosine_sum,
              {0.3066923, 0.4748398, 0.1924696, 0.0259983},
              4,
              6.73},
    WindowRow{"Kaiser", "kaiser", WindowForm::kaiser, {}, 0, 0},
    WindowRow{"Dolph-Tschebyscheff", "dolph-tschebyscheff", WindowForm::dolph_tschebyscheff, {}, 0, 0},
    WindowRow{"Taylor", "taylor", WindowForm::taylor, {}, 0, 0},
    WindowRow{"Gaussian", "gaussian", WindowForm::gaussian, {}, 0, 0},
    WindowRow{"Exponential", "", WindowForm::exponential, {}, 0, 0},
    WindowRow{"Cauchy", "", WindowForm::cauchy, {}, 0, 0},
};
inline constexpr int offered_window_count = 18;
inline constexpr int kaiser_window = 14;
inline constexpr int rectangular_window = 0;

/// System analysis input options; the header text selects them in files. Those of the s domain are the first seven.
struct InputOptionRow {
  std::string_view z_header;
  std::string_view s_header; // empty: z domain only
  std::string_view name;     // dialogs and trace
};
enum class InputOption : std::int8_t {
  ratio,
  pole_zero,
  product,
  sum,
  ladder_1,
  ladder_2,
  lattice,
  symmetric_fir,
  antisymmetric_fir,
  nonsymmetric_fir,
  lattice_fir,
};
inline constexpr std::array input_options{
    InputOptionRow{"RATIO OF TWO POLYNOMIALS N(z)/D(z)", "RATIO OF TWO POLYNOMIALS N(s)/D(s)",
                   "Ratio of Two Polynomials"},
    InputOptionRow{"z PLANE POLES AND ZEROES", "s PLANE POLES AND ZEROES", "Poles and Zeros of Transfer Function"},
    InputOptionRow{"PRODUCT OF 2ND ORDER SECTIONS", "PRODUCT OF 2ND ORDER SECTIONS",
                   "Product of Second Order Sections"},
    InputOptionRow{"SUM OF 2ND ORDER SECTIONS", "SUM OF 2ND ORDER SECTIONS", "Sum of Second Order Sections"},
    InputOptionRow{"LADDER STRUCTURE FORM 1", "LADDER STRUCTURE FORM 1", "Ladder Structure Form I"},
    InputOptionRow{"LADDER STRUCTURE FORM 2", "LADDER STRUCTURE FORM 2", "Ladder Structure Form II"},
    InputOptionRow{"LATTICE STRUCTURE", "LATTICE STRUCTURE", "Lattice Structure"},
    InputOptionRow{"SYMMETRIC FIR FILTER", "", "Symmetric FIR Filter"},
    InputOptionRow{"ANTISYMMETRIC FIR FILTER", "", "Antisymmetric FIR Filter"},
    InputOptionRow{"NONSYMMETRIC FIR FILTER", "", "Non-symmetric FIR Filter"},
    InputOptionRow{"LATTICE FIR FILTER", "", "Lattice FIR Filter"},
};
inline constexpr int z_option_count = 11;
inline constexpr int s_option_count = 7;
constexpr bool is_fir_option(int option) {
  return option >= 7 && option <= 10;
}

/// Plot kinds.
enum class PlotKind : std::int8_t { magnitude, log_magnitude, phase, group_delay, impulse, step, pole_zero };
struct PlotKindRow {
  std::string_view caption; // of the window
  std::string_view title;
  std::string_view y_label;
  std::string_view file_stem; // picture files
};
inline constexpr std::array plot_kinds{
    PlotKindRow{"Magnitude", "Magnitude vs Frequency", "Magnitude", "magnitude"},
    PlotKindRow{"Log Magnitude(dB)", "Log Magnitude vs Frequency", "Log Magnitude (dB)", "log-magnitude"},
    PlotKindRow{"Phase", "Phase vs Frequency", "Phase", "phase"},
    PlotKindRow{"Group Delay", "Group Delay vs Frequency", "Group Delay (Seconds)", "group-delay"},
    PlotKindRow{"Impulse Response", "Impulse Response vs Time", "Impulse Response", "impulse-response"},
    PlotKindRow{"Step Response", "Step Response vs Time", "Step Response", "step-response"},
    PlotKindRow{"Pole/Zero Plot", "Pole / Zero Plot", "", "pole-zero"},
};
inline constexpr int plot_kind_count = 7;

static_assert(filter_types.size() == 12 && windows.size() == 20 && input_options.size() == z_option_count);

} // namespace brisel
