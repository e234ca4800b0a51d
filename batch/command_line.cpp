// command_line.cpp - every option is one row of a table: parsing, limits, help and the check for options that would do
// nothing all read it.
#include "batch/command_line.h"

#include "engine/analysis/plot_arrays.h"
#include "engine/core/code_tables.h"
#include "engine/core/design_state.h"
#include "engine/files/saved_filter.h"
#include "engine/files/text_file.h"
#include "engine/fir/compensation.h"
#include "engine/iir/allpass_delay.h"
#include "engine/iir/iir_quantize.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>
#include <variant>
#include <vector>

namespace brisel {

namespace {

using Names = std::vector<std::string_view>;

// What the value of an option is, and where it goes.
struct Number {
  std::optional<int> Job::*place;
  int low, high;
};
struct Positive { // any number above zero
  std::optional<double> Job::*place;
};
struct AnyNumber {
  std::optional<double> Job::*place;
};
struct Choice {
  std::optional<int> Job::*place;
  Names (*names)(); // the index is the code; an empty name is not offered
};
struct FrequencyRange {
  std::optional<Range> Job::*place;
};
struct Frequency {
  std::optional<double> Job::*place;
};
struct OutputPath {
  std::string Job::*place;
};
struct Switch {
  bool Job::*place;
};
using Value = std::variant<Number, Positive, AnyNumber, Choice, FrequencyRange, Frequency, OutputPath, Switch>;

template <class Table> Names options_of(const Table &table) {
  Names names;
  for (const auto &row : table) names.push_back(row.option);
  return names;
}

Names methods() {
  return options_of(design_methods);
}
Names window_names() {
  return options_of(windows);
}
Names scalings() {
  return options_of(fir_scalings);
}
Names optimal_symmetries() {
  return {fir_symmetries[0], fir_symmetries[1]};
}
Names optimum_names() {
  return options_of(optima);
}
Names stopband_slopes() { // the index is in steps
  static const std::vector<std::string> texts = [] {
    std::vector<std::string> slopes;
    for (int db = 0; db <= steepest_rolloff; db += rolloff_step) slopes.push_back(std::to_string(db));
    return slopes;
  }();
  return {texts.begin(), texts.end()};
}
Names minimum_phases() {
  return options_of(minimum_phase_types);
}
Names delay_method_names() {
  return options_of(delay_methods);
}
Names gains() {
  return options_of(gain_modes);
}
Names prototypes() {
  return options_of(analog_prototypes);
}
Names mappings() {
  return options_of(z_transforms);
}
Names coefficient_spaces() {
  return {"x-data", "program"};
}
Names plot_scripts() {
  return {"", "matlab", "octave"};
}
Names dataset_formats() {
  return {"integer", "real"};
}
Names coefficient_stages() {
  return {"unquantized", "quantized"};
}
Names number_notations() {
  return {"decimal", "word", "hexadecimal"};
}
Names data_layouts() {
  return {"lines", "commas", "c-array"};
}
Names trace_levels() {
  return {"low", "high"};
}
Names impulse_paths() {
  return {"s-first", "z-first"};
}
Names realizations() {
  Names names = options_of(realization_forms);
  names.pop_back(); // a nonlinear system is not designed
  return names;
}
Names structures() {
  return options_of(section_structures);
}
Names quantizations() {
  return {"off", "fixed", "floating"};
}
Names compensations() { // index - 1 is the curve
  return {"none", "sinc", "comb"};
}

constexpr unsigned for_design = static_cast<unsigned>(Command::design);
constexpr unsigned for_analyze = static_cast<unsigned>(Command::analyze);
constexpr unsigned for_estimate = static_cast<unsigned>(Command::estimate);
constexpr unsigned for_phase_shift = static_cast<unsigned>(Command::phase_shift);
constexpr unsigned for_files = for_design | for_analyze; // only with what a file says
constexpr unsigned for_results = for_files | for_phase_shift;

constexpr unsigned method_bit(DesignMethod method) {
  return 1u << code(method);
}
constexpr unsigned with_window = method_bit(DesignMethod::window);
constexpr unsigned with_equiripple = method_bit(DesignMethod::equiripple);
constexpr unsigned with_optimal =
    with_equiripple | method_bit(DesignMethod::linear_programming) | method_bit(DesignMethod::least_squares);
constexpr unsigned with_fir = with_window | with_optimal;
constexpr unsigned with_iir = method_bit(DesignMethod::iir);
constexpr unsigned with_digital = method_bit(DesignMethod::z_analysis),
                   with_analog = method_bit(DesignMethod::s_analysis);
constexpr unsigned with_any = ~0u;

enum class Group { design, quantization, response, output, code };

struct OptionRow {
  const char *name;
  const char *value_name;
  Value value;
  Group group;
  unsigned commands;
  unsigned methods;
  const char *help;

  bool place_is(bool Job::*place) const {
    const auto *flag = std::get_if<Switch>(&value);
    return flag && flag->place == place;
  }
  bool place_is(std::optional<double> Job::*place) const {
    const auto *frequency = std::get_if<Frequency>(&value);
    return frequency && frequency->place == place;
  }
  bool place_is(std::optional<int> Job::*place) const {
    const auto *number = std::get_if<Number>(&value);
    const auto *choice = std::get_if<Choice>(&value);
    return (number && number->place == place) || (choice && choice->place == place);
  }
};

const std::vector<OptionRow> &option_rows() {
  static const std::vector<OptionRow> rows{
      {"--method", "METHOD", Choice{&Job::method, methods}, Group::design, for_design, with_any,
       "design method; default: iir for lowpass, highpass, bandpass and bandstop, else window"},
      {"--length", "N", Number{&Job::length, min_taps, max_taps}, Group::design, for_design, with_fir,
       "number of taps; default: the method's own estimate"},
      {"--window", "WINDOW", Choice{&Job::window, window_names}, Group::design, for_design, with_window,
       "window of the window method; default: kaiser, rectangular for arbitrary magnitude and raised cosine filters"},
      {"--symmetry", "SYMMETRY", Choice{&Job::symmetry, optimal_symmetries}, Group::design, for_design, with_optimal,
       "of the taps of equiripple, linear-programming and least-squares filters; default: symmetric, antisymmetric for "
       "differentiator "
       "and Hilbert transformer"},
      {"--optimum", "OPTIMUM", Choice{&Job::optimum, optimum_names}, Group::design, for_design, with_equiripple,
       "where an equiripple filter is the best of its length: on the points of the design grid, or between them too; "
       "default: grid"},
      {"--split", "", Switch{&Job::split}, Group::design, for_design, with_equiripple,
       "give the two transitions of a bandpass a curve to follow, so that the gain in them stays bounded"},
      {"--stopband-slope", "DB", Choice{&Job::stopband_slope, stopband_slopes}, Group::design, for_design, with_optimal,
       "by how much the attenuation of stopbands grows, dB per octave; default: 0"},
      {"--minimum-phase", "TYPE", Choice{&Job::minimum_phase, minimum_phases}, Group::design, for_design, with_fir,
       "minimum phase filter: dft keeps length and magnitude of the linear phase filter, spectral takes the root of a "
       "linear phase filter of twice the length; default: none"},
      {"--gain", "MODE", Choice{&Job::gain, gains}, Group::design, for_design, with_fir,
       "of FIR filters: nominal as the specification says, or maximum, scaled to a largest gain of 1; default: "
       "nominal"},
      {"--compensation", "CURVE", Choice{&Job::compensation, compensations}, Group::design, for_design,
       with_fir | with_iir,
       "make up for the droop of a zero-order hold (sinc) or of a comb decimator (comb); default: none"},
      {"--rate-change", "N", Number{&Job::rate_change, 1, max_compensation_setting}, Group::design, for_design,
       with_fir | with_iir, "rate change of the comb; default: 1"},
      {"--differential-delay", "N", Number{&Job::differential_delay, 1, max_compensation_setting}, Group::design,
       for_design, with_fir | with_iir, "differential delay of the comb; default: 1"},
      {"--stages", "N", Number{&Job::stages, 1, max_compensation_setting}, Group::design, for_design,
       with_fir | with_iir, "number of stages of the comb; default: 1"},
      {"--prototype", "PROTOTYPE", Choice{&Job::prototype, prototypes}, Group::design, for_design, with_iir,
       "analog prototype of IIR filters; default: elliptic"},
      {"--order", "N", Number{&Job::order, 1, max_order}, Group::design, for_design, with_iir,
       "order of IIR filters, even for bandpass and bandstop; default: the prototype's estimate"},
      {"--mapping", "MAPPING", Choice{&Job::mapping, mappings}, Group::design, for_files, with_iir | with_analog,
       "from the s plane to the z plane, s-domain (of an entered system) for its analog response only; default: "
       "bilinear"},
      {"--prewarp", "FREQUENCY", Frequency{&Job::prewarp}, Group::design, for_analyze, with_analog,
       "frequency at which the bilinear mapping is exact, in the unit of the file, below half the sampling frequency; "
       "default: 0, no prewarping"},
      {"--prewarp-all", "", Switch{&Job::prewarp_all}, Group::design, for_analyze, with_analog,
       "prewarp every pole and zero to its own frequency; the largest magnitude stays as it was"},
      {"--impulse-path", "PATH", Choice{&Job::impulse_path, impulse_paths}, Group::design, for_design, with_iir,
       "where the impulse-invariant mapping transforms the band: denormalized in s first, or normalized in z first; "
       "default: s-first"},
      {"--realization", "FORM", Choice{&Job::realization, realizations}, Group::design, for_design, with_iir,
       "form in which IIR filters run; default: cascade"},
      {"--phase-equalizer", "N", Number{&Job::phase_equalizer, 1, max_delay_sections}, Group::design, for_design,
       with_iir,
       "all-pass sections behind an IIR filter that make its group delay constant in the passbands; default: none, or "
       "with --delay-ripple as few as keep it"},
      {"--delay-ripple", "SAMPLES", Positive{&Job::delay_ripple}, Group::design, for_design, with_iir,
       "largest distance of the equalized delay from its middle, in samples; equalizes with as few sections as it "
       "takes "
       "unless --phase-equalizer says how many"},
      {"--sections", "N", Number{&Job::delay_sections, 1, max_delay_sections}, Group::design, for_design, with_iir,
       "all-pass sections of an arbitrary group delay filter; default: as few as keep the ripple of the specification"},
      {"--delay-method", "METHOD", Choice{&Job::delay_method, delay_method_names}, Group::design, for_design, with_iir,
       "what is made smallest by the sections of a phase equalizer or group delay filter; default: minimax"},
      {"--sampling-frequency", "FS", Positive{&Job::sampling_frequency}, Group::design, for_phase_shift, with_digital,
       "sampling frequency of the filter"},
      {"--first-passband", "F", Positive{&Job::first_passband}, Group::design, for_phase_shift, with_digital,
       "centre of the lower of the two narrow passbands"},
      {"--second-passband", "F", Positive{&Job::second_passband}, Group::design, for_phase_shift, with_digital,
       "centre of the upper one, below half the sampling frequency"},
      {"--phase-shift", "DEGREES", AnyNumber{&Job::phase_shift}, Group::design, for_phase_shift, with_digital,
       "phase of the filter at both, positive when its output leads; whole turns do not count"},
      {"--real-zero", "ZERO", AnyNumber{&Job::real_zero}, Group::design, for_phase_shift, with_digital,
       "real zero of the filter, above 1 or below -1; default: one from the middle of those that work, with a note; a "
       "value "
       "that does not work is refused with those that do"},
      {"--radians", "", Switch{&Job::radians}, Group::design, for_phase_shift, with_digital,
       "frequencies are in radians per second; default: hertz"},
      {"--structure", "STRUCTURE", Choice{&Job::structure, structures}, Group::quantization, for_results,
       with_iir | with_digital | with_analog, "arithmetic of cascaded sections; default: transposed"},
      {"--quantize", "ARITHMETIC", Choice{&Job::quantize, quantizations}, Group::quantization, for_results, with_any,
       "round the coefficients; default: off"},
      {"--bits", "N", Number{&Job::bits, min_quantized_bits, max_quantized_bits}, Group::quantization, for_results,
       with_any, "word length, at most 32 for fixed point; mantissa length of floating point; default: 16"},
      {"--scaling", "SCALING", Choice{&Job::scaling, scalings}, Group::quantization, for_files, with_fir | with_digital,
       "of fixed-point taps before rounding: none, by a power of two until the largest is at least a half, or until it "
       "is just below one; default: half"},
      {"--optimize", "N", Number{&Job::optimize, 1, max_searches}, Group::quantization, for_design, with_fir,
       "searches for better fixed-point taps near the rounded ones, of symmetric lowpass, highpass, bandpass and "
       "bandstop "
       "filters; default: none"},
      {"--frequency-points", "N", Number{&Job::frequency_points, 2, max_frequency_points}, Group::response, for_results,
       with_any, "points of the frequency responses; default: 1001"},
      {"--time-points", "N", Number{&Job::time_points, 1, max_time_points}, Group::response, for_results, with_any,
       "points of the time responses, default: 200; those of a FIR filter end with its last tap"},
      {"--frequency-range", "LO:HI", FrequencyRange{&Job::frequency_range}, Group::response, for_results, with_any,
       "range of the frequency responses in the unit of the file; default: 0 to half the sampling frequency"},
      {"--log-frequency", "", Switch{&Job::log_frequency}, Group::response, for_results, with_any,
       "logarithmic frequency axis"},
      {"--unity-gain", "", Switch{&Job::unity_gain}, Group::response, for_analyze, with_any,
       "set the maximum gain of the system to 1; default: it keeps its gain"},
      {"--json", "FILE", OutputPath{&Job::json}, Group::output, for_results | for_estimate, with_any,
       "all results, machine readable; - is standard output"},
      {"--report", "FILE", OutputPath{&Job::report}, Group::output, for_results, with_any, "design report"},
      {"--detail", "", Switch{&Job::detail}, Group::output, for_results, with_any,
       "with the tables of the responses in the report"},
      {"--trace", "FILE", OutputPath{&Job::trace}, Group::output, for_results, with_any,
       "trace of the stages; it holds times and addresses"},
      {"--trace-level", "LEVEL", Choice{&Job::trace_level, trace_levels}, Group::output, for_results, with_any,
       "how much the trace tells; default: low"},
      {"--spc", "FILE", OutputPath{&Job::spc}, Group::output, for_design, with_any, "specification file"},
      {"--flt", "FILE", OutputPath{&Job::flt}, Group::output, for_results, with_any, "filter coefficient file"},
      {"--inp", "FILE", OutputPath{&Job::inp}, Group::output, for_results, with_any, "system analysis file"},
      {"--digits", "N", Number{&Job::digits, min_file_digits, max_file_digits}, Group::output, for_results, with_any,
       "significant digits of the reals in the system analysis file, and of those of IIR filters in the coefficient "
       "file; default: 9 (10 for taps, poles and zeros) and 8, more where these do not hold the response to 0.05 dB"},
      {"--plot-data", "BASE", OutputPath{&Job::plot_data}, Group::output, for_results, with_any,
       "tables of the responses: BASE.gdl .imp .lmn .mag .pha .stp"},
      {"--plots", "DIR", OutputPath{&Job::plots}, Group::output, for_results, with_any,
       "one PNG picture a plot, in a folder that is made if need be"},
      {"--pdf", "FILE", OutputPath{&Job::pdf}, Group::output, for_results, with_any, "the plots as pages of one PDF"},
      {"--matlab", "FILE", OutputPath{&Job::matlab}, Group::output, for_design, with_any,
       "taps as a row vector, or second-order sections as a matrix, for MatLab and Octave"},
      {"--cocentric", "FILE", OutputPath{&Job::cocentric}, Group::output, for_results, with_any,
       "coefficients as a dataset, one number a line"},
      {"--cocentric-format", "FORMAT", Choice{&Job::cocentric_format, dataset_formats}, Group::output, for_results,
       with_any, "numbers of the dataset: the words of a fixed-point filter, or reals; default: real"},
      {"--cocentric-comments", "", Switch{&Job::cocentric_comments}, Group::output, for_results, with_any,
       "with lines in front that say what the numbers are"},
      {"--data", "FILE", OutputPath{&Job::data}, Group::output, for_results, with_any, "coefficients as numbers"},
      {"--data-stage", "STAGE", Choice{&Job::data_stage, coefficient_stages}, Group::output, for_results, with_any,
       "which coefficients; default: quantized, which without quantization are the filter's own"},
      {"--data-notation", "NOTATION", Choice{&Job::data_notation, number_notations}, Group::output, for_results,
       with_any, "how the numbers are written, words being those of a fixed-point filter; default: decimal"},
      {"--data-layout", "LAYOUT", Choice{&Job::data_layout, data_layouts}, Group::output, for_results, with_any,
       "one number a line, numbers between commas, or an array for a C program; default: lines"},
      {"--c", "FILE", OutputPath{&Job::c}, Group::code, for_results, with_any, "C source"},
      {"--c-support", "", Switch{&Job::c_support}, Group::code, for_results, with_any,
       "brisel_cgen.h and brisel_filt.c beside the C source, which includes them, unless they are there"},
      {"--dspic30", "BASE", OutputPath{&Job::dspic30}, Group::code, for_results, with_any,
       "dsPIC30 assembly BASE.s; with the options below also BASE.h and so on"},
      {"--dspic30-header", "", Switch{&Job::dspic30_header}, Group::code, for_results, with_any,
       "C header with a calling example"},
      {"--dspic30-space", "SPACE", Choice{&Job::dspic30_space, coefficient_spaces}, Group::code, for_results, with_any,
       "where the coefficients lie; default: x-data"},
      {"--dspic30-sim", "", Switch{&Job::dspic30_simulation}, Group::code, for_results, with_any,
       "files that simulate the impulse response, the C header among them"},
      {"--dspic30-script", "LANGUAGE", Choice{&Job::dspic30_script, plot_scripts}, Group::code, for_results, with_any,
       "script that plots the simulated response"},
      {"--adsp218x", "FILE", OutputPath{&Job::adsp218x}, Group::code, for_results, with_any,
       "ADSP-218x assembly include file"},
      {"--dsp56800", "FILE", OutputPath{&Job::dsp56800}, Group::code, for_results, with_any,
       "DSP56800 C coefficient file"},
  };
  return rows;
}

[[noreturn]] void refuse(const OptionRow &row, const std::string &reason) {
  throw JobFailure(exit_usage, std::string(row.name) + ": " + reason);
}

std::string quoted(const std::string &text) {
  return "'" + text + "'";
}

std::string listed(const Names &names) {
  std::string out;
  for (const std::string_view name : names)
    if (!name.empty()) out += (out.empty() ? "" : ", ") + std::string(name);
  return out;
}

int read_number(const OptionRow &row, const Number &number, const std::string &text) {
  std::size_t used = 0;
  const auto value = parse_integer(text, &used);
  if (!value || used != text.size()) refuse(row, quoted(text) + " is no whole number");
  if (*value < number.low || *value > number.high)
    refuse(row, formatf("%lld is outside %d to %d", *value, number.low, number.high));
  return static_cast<int>(*value);
}

double read_any_number(const OptionRow &row, const std::string &text) {
  std::size_t used = 0;
  const auto value = parse_number(text, &used);
  if (!value || used != text.size()) refuse(row, quoted(text) + " is no number");
  return *value;
}

double read_positive(const OptionRow &row, const std::string &text) {
  const double value = read_any_number(row, text);
  if (!(value > 0)) refuse(row, quoted(text) + " is not above zero");
  return value;
}

int read_choice(const OptionRow &row, const Choice &choice, const std::string &text) {
  const Names names = choice.names();
  const auto found = std::find(names.begin(), names.end(), text);
  if (text.empty() || found == names.end()) refuse(row, quoted(text) + " is none of " + listed(names));
  return static_cast<int>(found - names.begin());
}

Range read_range(const OptionRow &row, const std::string &text) {
  const std::size_t colon = text.find(':');
  const auto bound = [&](const std::string &part) {
    std::size_t used = 0;
    const auto value = parse_number(part, &used);
    if (!value || used != part.size()) refuse(row, quoted(text) + " is not of the form LO:HI, two numbers");
    return *value;
  };
  if (colon == text.npos) refuse(row, quoted(text) + " is not of the form LO:HI, two numbers");
  const Range range{bound(text.substr(0, colon)), bound(text.substr(colon + 1))};
  if (range[0] < 0) refuse(row, quoted(text) + " begins below zero");
  if (range[0] >= range[1]) refuse(row, quoted(text) + " does not ascend");
  return range;
}

double read_frequency(const OptionRow &row, const std::string &text) {
  const double value = read_any_number(row, text);
  if (value < 0) refuse(row, quoted(text) + " is below zero");
  return value;
}

std::string read_path(const OptionRow &row, const std::string &text) {
  if (text.empty()) refuse(row, "the name is empty");
  if (text == standard_output && row.value_name != std::string_view("DIR") &&
      std::get<OutputPath>(row.value).place == &Job::json)
    return text;
  // "--json --spc x" forgot a name.
  if (text[0] == '-') refuse(row, quoted(text) + " looks like an option; write ./" + text + " for a file of that name");
  return text;
}

void take(const OptionRow &row, const std::string &text, Job &job) {
  if (const auto *number = std::get_if<Number>(&row.value)) job.*number->place = read_number(row, *number, text);
  if (const auto *number = std::get_if<Positive>(&row.value)) job.*number->place = read_positive(row, text);
  if (const auto *number = std::get_if<AnyNumber>(&row.value)) job.*number->place = read_any_number(row, text);
  if (const auto *choice = std::get_if<Choice>(&row.value)) job.*choice->place = read_choice(row, *choice, text);
  if (const auto *range = std::get_if<FrequencyRange>(&row.value)) job.*range->place = read_range(row, text);
  if (const auto *frequency = std::get_if<Frequency>(&row.value)) job.*frequency->place = read_frequency(row, text);
  if (const auto *path = std::get_if<OutputPath>(&row.value)) job.*path->place = read_path(row, text);
}

bool given(const OptionRow &row, const Job &job) {
  if (const auto *number = std::get_if<Number>(&row.value)) return (job.*number->place).has_value();
  if (const auto *number = std::get_if<Positive>(&row.value)) return (job.*number->place).has_value();
  if (const auto *number = std::get_if<AnyNumber>(&row.value)) return (job.*number->place).has_value();
  if (const auto *choice = std::get_if<Choice>(&row.value)) return (job.*choice->place).has_value();
  if (const auto *range = std::get_if<FrequencyRange>(&row.value)) return (job.*range->place).has_value();
  if (const auto *frequency = std::get_if<Frequency>(&row.value)) return (job.*frequency->place).has_value();
  if (const auto *path = std::get_if<OutputPath>(&row.value)) return !(job.*path->place).empty();
  return job.*std::get<Switch>(row.value).place;
}

/// A file of the kind that was read may take its place, anything else would be a slip that costs the only copy.
void refuse_to_replace_input(const Job &job) {
  for (const OptionRow &row : option_rows()) {
    const auto *output = std::get_if<OutputPath>(&row.value);
    if (!output || row.value_name != std::string_view("FILE")) continue;
    if (output->place == &Job::spc || output->place == &Job::flt || output->place == &Job::inp) continue;
    std::error_code error;
    if (std::filesystem::is_regular_file(job.input, error) &&
        std::filesystem::equivalent(job.input, job.*output->place, error))
      refuse(row, quoted(job.*output->place) + " is the file to read");
  }
}

struct CommandRow {
  Command command;
  const char *name;
  const char *argument; // a file to read, "" for none
  const char *input;
  const char *help;

  std::string usage() const { return formatf(*argument ? "brisel %s %s" : "brisel %s", name, argument); }
};
constexpr std::array commands{
    CommandRow{Command::design, "design", "FILE.spc", "filter specification file",
               "design the filter that a specification asks for"},
    CommandRow{Command::analyze, "analyze", "FILE", "system analysis file (.inp) or coefficient file (.flt)",
               "analyse a system that a file describes"},
    CommandRow{Command::estimate, "estimate", "FILE.spc", "filter specification file",
               "tell the length that each window, or the order that each analog prototype needs"},
    CommandRow{Command::phase_shift, "phase-shift", "", "",
               "design an all-pass filter of one phase in two narrow bands"},
};

constexpr std::size_t help_width = 100;
constexpr std::size_t help_column = 28;

/// `text` wrapped at the help's width, every line after the first set in.
std::string wrapped(std::string_view text) {
  std::string out;
  std::size_t column = help_column;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find(' ', start), text.size());
    const std::string_view word = text.substr(start, end - start);
    if (column + word.size() > help_width) {
      out += "\n" + std::string(help_column, ' ');
      column = help_column;
    } else if (start > 0) {
      out += " ";
      column++;
    }
    out += word;
    column += word.size();
    start = end + 1;
  }
  return out + "\n";
}

std::string help_row(const std::string &left, const std::string &right) {
  const bool fits = left.size() + 4 <= help_column;
  return "  " + left + (fits ? std::string(help_column - 2 - left.size(), ' ') : "\n" + std::string(help_column, ' ')) +
         wrapped(right);
}

std::string option_help(const OptionRow &row) {
  std::string left = row.name, right = row.help;
  if (*row.value_name) left += std::string(" ") + row.value_name;
  if (const auto *number = std::get_if<Number>(&row.value)) right += formatf(" (%d to %d)", number->low, number->high);
  if (const auto *choice = std::get_if<Choice>(&row.value)) right += "; one of: " + listed(choice->names());
  return help_row(left, right);
}

std::string command_help(const CommandRow &command) {
  std::string text = "Usage: " + command.usage() + " [options]\n\n";
  std::string summary = command.help;
  summary[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(summary[0])));
  text += summary + ".";
  if (command.command != Command::estimate)
    text +=
        "\nA short summary goes to standard output, unless that carries the JSON object. Files are written only when\n"
        "the whole job has succeeded.";
  text += "\n\n";
  if (*command.argument) text += help_row(command.argument, command.input);
  text += help_row("-h, --help", "this text");
  constexpr std::array headings{"Design:", "Quantization:", "Responses:", "Outputs:", "Generated code:"};
  for (std::size_t group = 0; group < headings.size(); group++) {
    std::string rows;
    for (const OptionRow &row : option_rows())
      if (row.group == static_cast<Group>(group) && row.commands & static_cast<unsigned>(command.command))
        rows += option_help(row);
    if (!rows.empty()) text += formatf("\n%s\n", headings[group]) + rows;
  }
  return text +
         "\nExit status: 0 done; 1 the job failed, with one line on standard error; 2 the command line is wrong.\n";
}

std::string program_help() {
  std::string text = "Brisel " BRISEL_VERSION ", design and analysis of digital filters.\n\nUsage:\n";
#ifdef BRISEL_PICTURES
  text += help_row("brisel [FILE]", "open the workstation, on a .spc, .inp or .flt file if one is named");
#endif
  for (const CommandRow &row : commands) text += help_row(row.usage(), row.help);
  text += help_row("brisel COMMAND --help", "the options of a command");
  text += help_row("brisel --version", "the version");
  return text + help_row("brisel --help", "this text");
}

/// Characters to insert, drop, change or swap with their neighbour that make `b` of `a`.
std::size_t edit_distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before, last(b.size() + 1), now(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); j++) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); i++) {
    now[0] = i;
    for (std::size_t j = 1; j <= b.size(); j++) {
      now[j] = std::min({last[j] + 1, now[j - 1] + 1, last[j - 1] + (a[i - 1] != b[j - 1])});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) now[j] = std::min(now[j], before[j - 2] + 1);
    }
    before = std::exchange(last, now);
  }
  return last[b.size()];
}

/// What the user may have meant: the name that is nearest to `typed`, if one is near.
std::string suggestion(std::string_view typed, const Names &names) {
  constexpr std::size_t longest = 40; // no name is
  if (typed.size() > longest) return "";
  const auto distance = [&](std::string_view name) { return edit_distance(typed, name); };
  const auto nearest = std::ranges::min_element(names, {}, distance);
  if (nearest == names.end() || distance(*nearest) > std::max<std::size_t>(1, typed.size() / 3)) return "";
  return "; did you mean " + std::string(*nearest) + "?";
}

/// The first argument that the parser does not know, and what it may have been meant to be.
std::string unexpected_argument(const std::string &argument, const CommandRow *command) {
  const std::string typed = argument.substr(0, argument.find('='));
  Names names{"--help"};
  if (!command) {
    names.push_back("--version");
    for (const CommandRow &row : commands) names.push_back(row.name);
  } else {
    for (const OptionRow &row : option_rows())
      if (row.commands & static_cast<unsigned>(command->command)) names.push_back(row.name);
  }
  const std::string meant = suggestion(typed, names);
  if (!meant.empty() || !command) return argument + meant;
  const auto elsewhere = std::ranges::find(option_rows(), typed, &OptionRow::name);
  if (elsewhere == option_rows().end()) return argument;
  std::string owners;
  for (const CommandRow &row : commands)
    if (elsewhere->commands & static_cast<unsigned>(row.command))
      owners += std::string(owners.empty() ? "" : ", ") + row.name;
  return argument + "; it is an option of " + owners;
}

/// The parser's own refusals in our words.
std::string parser_complaint(const CLI::ParseError &error) {
  const std::string text = error.what();
  const std::string subject = text.substr(0, text.find(':'));
  if (dynamic_cast<const CLI::ArgumentMismatch *>(&error))
    return subject + (text.find("At Most") != text.npos ? ": is given more than once" : ": a value is missing");
  return text;
}

} // namespace

std::optional<ExitStatus> read_command_line(int argc, const char *const *argv, Job &job, std::string &answer) {
  if (argc < 2) {
    answer = program_help();
    return exit_usage;
  }
  CLI::App app;
  app.require_subcommand(0, 1);
  app.set_help_flag("-h,--help");
  app.set_version_flag("--version", "brisel " BRISEL_VERSION);
  std::vector<CLI::App *> parsers;
  for (const CommandRow &command : commands) {
    CLI::App *const parser = app.add_subcommand(command.name);
    parser->set_help_flag("-h,--help");
    parsers.push_back(parser);
    if (*command.argument) parser->add_option(command.argument, job.input)->required();
    for (const OptionRow &row : option_rows()) {
      if (!(row.commands & static_cast<unsigned>(command.command))) continue;
      if (const auto *flag = std::get_if<Switch>(&row.value))
        parser->add_flag(row.name, job.*flag->place);
      else
        parser->add_option(row.name, [&row, &job](const CLI::results_t &values) {
          take(row, values.front(), job);
          return true;
        });
    }
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp &) {
    answer = program_help();
    for (std::size_t i = 0; i < commands.size(); i++)
      if (parsers[i]->parsed()) answer = command_help(commands[i]);
    return exit_done;
  } catch (const CLI::CallForVersion &version) {
    answer = std::string(version.what()) + "\n";
    return exit_done;
  } catch (const CLI::ExtrasError &) {
    const CommandRow *command = nullptr;
    for (std::size_t i = 0; i < commands.size(); i++)
      if (parsers[i]->parsed()) command = &commands[i];
    throw JobFailure(exit_usage, "unexpected argument: " + unexpected_argument(app.remaining(true).front(), command));
  } catch (const CLI::ParseError &error) {
    throw JobFailure(exit_usage, parser_complaint(error));
  }
  for (std::size_t i = 0; i < commands.size(); i++)
    if (parsers[i]->parsed()) job.command = commands[i].command;
  if (job.command == Command::none) throw JobFailure(exit_usage, "a command is missing; brisel --help lists them");
  if (job.input.empty() && !job.has(Command::phase_shift))
    throw JobFailure(exit_usage, "the name of the file to read is empty");
  refuse_to_replace_input(job);
  return std::nullopt;
}

void refuse_unused_options(const Job &job, int method) {
  const auto subject = [](int code_of_method) {
    if (code_of_method == code(DesignMethod::z_analysis)) return std::string("a digital system");
    if (code_of_method == code(DesignMethod::s_analysis)) return std::string("an analog system");
    return "method " + std::string(design_methods[static_cast<std::size_t>(code_of_method)].option);
  };
  for (const OptionRow &row : option_rows()) {
    if (row.methods >> method & 1 || !given(row, job)) continue;
    std::string usable;
    for (int other = 0; other <= code(DesignMethod::s_analysis); other++)
      if (other != 5 && row.methods >> other & 1) usable += (usable.empty() ? "" : ", ") + subject(other);
    refuse(row, "has no meaning for " + subject(method) + ", only for " + usable);
  }
  // Options that another one must switch on.
  const bool comb = job.compensation == static_cast<int>(CompensationCurve::comb) + 1;
  const bool fixed = job.quantize == static_cast<int>(Quantize::fixed);
  const bool floating = job.quantize == static_cast<int>(Quantize::floating);
  for (const OptionRow &row : option_rows()) {
    const auto needs = [&](auto member, bool met, const char *what) {
      if (row.place_is(member) && given(row, job) && !met) refuse(row, std::string("needs ") + what);
    };
    needs(&Job::rate_change, comb, "--compensation comb");
    needs(&Job::differential_delay, comb, "--compensation comb");
    needs(&Job::stages, comb, "--compensation comb");
    needs(&Job::impulse_path, job.mapping == code(ZTransform::impulse_invariant), "--mapping impulse-invariant");
    const bool bilinear = job.mapping.value_or(code(ZTransform::bilinear)) == code(ZTransform::bilinear);
    needs(&Job::prewarp, bilinear, "--mapping bilinear");
    needs(&Job::prewarp_all, bilinear, "--mapping bilinear");
    if (row.place_is(&Job::prewarp) && job.prewarp && job.prewarp_all) refuse(row, "cannot go with --prewarp-all");
    needs(&Job::structure, job.realization.value_or(code(RealizationForm::cascade)) == code(RealizationForm::cascade),
          "--realization cascade");
    if (row.place_is(&Job::structure) && fixed &&
        is_floating_only(static_cast<SectionStructure>(job.structure.value_or(code(SectionStructure::transposed)))))
      refuse(row, std::string(section_structures[static_cast<std::size_t>(*job.structure)].option) +
                      " exists in floating point only; use --quantize floating");
    needs(&Job::detail, !job.report.empty(), "--report");
    needs(&Job::trace_level, !job.trace.empty(), "--trace");
    needs(&Job::cocentric_format, !job.cocentric.empty(), "--cocentric");
    needs(&Job::cocentric_comments, !job.cocentric.empty(), "--cocentric");
    needs(&Job::digits, !job.flt.empty() || !job.inp.empty(), "--flt or --inp");
    needs(&Job::data_stage, !job.data.empty(), "--data");
    needs(&Job::data_notation, !job.data.empty(), "--data");
    needs(&Job::data_layout, !job.data.empty(), "--data");
    needs(&Job::c_support, !job.c.empty(), "--c");
    needs(&Job::dspic30_header, !job.dspic30.empty(), "--dspic30");
    needs(&Job::dspic30_space, !job.dspic30.empty(), "--dspic30");
    needs(&Job::dspic30_simulation, !job.dspic30.empty(), "--dspic30");
    needs(&Job::dspic30_script, !job.dspic30.empty(), "--dspic30");
    if (!fixed && ((row.place_is(&Job::cocentric_format) && job.cocentric_format == 0) ||
                   (row.place_is(&Job::data_notation) && job.data_notation.value_or(0) > 0)))
      refuse(row, "words need --quantize fixed");
    if (row.place_is(&Job::mapping) && method == code(DesignMethod::iir) &&
        job.mapping == code(ZTransform::s_domain_only))
      refuse(row, "s-domain is for the analysis of an entered system");
    needs(&Job::bits, fixed || floating, "--quantize fixed or floating");
    needs(&Job::optimize, fixed, "--quantize fixed");
    needs(&Job::scaling, fixed, "--quantize fixed");
    if (row.place_is(&Job::bits) && fixed && job.bits.value_or(min_quantized_bits) > max_fixed_bits)
      refuse(row, formatf("%d is outside %d to %d for fixed point", *job.bits, min_quantized_bits, max_fixed_bits));
  }
}

} // namespace brisel
