// plot_arrays.cpp - the entry points that fill the shared response arrays, and what the plots read of them.
#include "engine/analysis/plot_arrays.h"

#include "engine/analysis/analog_response.h"
#include "engine/analysis/fir_lattice.h"
#include "engine/analysis/fir_response.h"
#include "engine/analysis/fir_zeros.h"
#include "engine/analysis/frequency_grid.h"
#include "engine/analysis/lattice_response.h"
#include "engine/analysis/ratio_response.h"
#include "engine/analysis/section_response.h"
#include "engine/core/trace.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace brisel {

PlotArrays plot_arrays;
PlotState plot_state;

static FrequencyGrid grid; // of plot_arrays.frequency

// Finding the zeros of a FIR filter takes longer than all its responses together, so they wait until a plot wants them.
static struct {
  bool wanted;
  std::vector<std::complex<double>> zeros;
} fir_roots;

// Decades are counted by multiplication, which must neither reach infinity nor zero.
bool is_plottable(const Range &range, bool log_axis) {
  constexpr double smallest = 1e-290, largest = 1e290;
  if (!(range[0] < range[1]) || !(std::fabs(range[0]) <= largest) || !(range[1] <= largest)) return false;
  if (range[0] > 0 && range[0] < smallest) return false;
  return !log_axis || (range[0] >= 0 && range[1] >= smallest);
}

void init_plot_array() {
  const DesignRecord &record = design_record;
  PlotArrays &arrays = plot_arrays;
  plot_state = {};
  fir_roots.wanted = false;
  PlotState &state = plot_state;

  arrays.frequency_count = std::clamp(record.plot.nfpts, 2, max_frequency_points);
  arrays.time_count = std::clamp(record.plot.dnimp, 1, max_time_points);
  state.sampling_frequency = record.loaded.sampling_frequency;
  state.factor = two_pi / state.sampling_frequency;
  state.log_axis = record.plot.PlotType0Linear1Log != 0;
  state.radians = record.selections.FrequencyMode != 0;
  state.fir_design = is_fir_result();
  state.magnitude = record.plot.magnitude_range;
  state.log_magnitude = record.plot.log_magnitude_range;
  state.time = {0, (arrays.time_count - 1) * state.factor};
  state.frequency = record.plot.frequency_range;
  if (!is_plottable(state.frequency, state.log_axis)) state.frequency = {0, state.sampling_frequency / 2};

  const auto [start, end] = state.frequency;
  const std::span points(arrays.frequency.data(), arrays.frequency_count);
  const double unit = unit_row(record.selections.FrequencyMode).factor;
  // The decades are those of the unit that the axis shows.
  const LogarithmicAxis axis = logarithmic_axis(start / unit, end / unit);
  state.log_range = {axis.low * unit, axis.high * unit};
  state.log_ratio = axis.ratio;
  state.decades = static_cast<std::int8_t>(axis.decades);
  grid = state.log_axis ? logarithmic_grid(state.log_range[0] * state.factor, end * state.factor, points)
                        : linear_grid(start, end, state.sampling_frequency, points);
}

void log_magnitude(std::span<const double> magnitude, std::span<double> log_magnitude) {
  std::transform(magnitude.begin(), magnitude.end(), log_magnitude.begin(),
                 [](double m) { return m > 1e-30 ? 20 * std::log10(m) : -600.0; });
}

Range plot_range(std::span<const double> values) {
  if (values.empty()) return {-1, 1};
  const auto [lowest, highest] = std::minmax_element(values.begin(), values.end());
  const double m = *lowest;
  if (m != *highest) return {m, *highest};
  if (m == 0) return {-1, 1};
  return m < 0 ? Range{2 * m, m / 2} : Range{m / 2, 2 * m};
}

// Views of the arrays as far as they are filled.
static FrequencyResponse frequency_response() {
  const std::size_t count = plot_arrays.frequency_count;
  return {std::span(plot_arrays.magnitude).first(count), std::span(plot_arrays.phase).first(count),
          std::span(plot_arrays.group_delay).first(count)};
}
static TimeResponse time_samples() {
  const std::size_t count = std::max(plot_arrays.time_count, min_time_samples);
  return {std::span(plot_arrays.impulse).first(count), std::span(plot_arrays.step).first(count)};
}

static void set_common_ranges() {
  const FrequencyResponse response = frequency_response();
  log_magnitude(response.magnitude, plot_arrays.log_magnitude);
  plot_state.phase = {-std::numbers::pi, std::numbers::pi};
  plot_state.group_delay = plot_range(response.group_delay);
}

// A range that spans zero becomes symmetric.
static void make_symmetric(Range &range, double margin) {
  const double reach = margin * std::max(std::abs(range[0]), range[1]);
  range = {-reach, reach};
}

static void set_fir_time_ranges() {
  const double margin = 1.2;
  const std::size_t count = plot_arrays.time_count;
  Range &impulse = plot_state.impulse = plot_range(std::span(plot_arrays.impulse).first(count));
  if (impulse[0] < 0 && impulse[1] > 0) make_symmetric(impulse, margin);
  Range &step = plot_state.step = plot_range(std::span(plot_arrays.step).first(count));
  if (step[1] <= 0)
    step = {step[0] * margin, 0};
  else if (step[0] >= 0)
    step = {0, step[1] * margin};
  else
    make_symmetric(step, margin);
}

static void set_iir_time_ranges() {
  const std::size_t count = plot_arrays.time_count;
  Range &impulse = plot_state.impulse = plot_range(std::span(plot_arrays.impulse).first(count));
  if (impulse[0] < 0 && impulse[1] > 0) make_symmetric(impulse, 1);
  Range &step = plot_state.step = plot_range(std::span(plot_arrays.step).first(count));
  if (step[1] <= 0)
    step[1] = 0;
  else if (step[0] < 0)
    make_symmetric(step, 1);
  else
    step[0] = 0;
}

// Ideal response in dB of a raised cosine or, as its square root, of a root raised cosine filter.
static void set_ideal_response() {
  const FilterSpec &spec = design_record.loaded;
  const double pass = spec.passband_edge[0] * plot_state.factor;
  const double stop = spec.stopband_edge[0] * plot_state.factor;
  const bool root = design_record.selections.filter_type == code(FilterType::root_raised_cosine);
  const std::span ideal(plot_arrays.ideal_log_magnitude.data(), plot_arrays.frequency_count);
  for (std::size_t i = 0; i < ideal.size(); ++i) {
    const double w = std::abs(plot_arrays.frequency[i]);
    double value = 0;
    if (w <= pass)
      value = 1;
    else if (w < stop)
      value = 0.5 + 0.5 * std::cos(std::numbers::pi * (w - pass) / (stop - pass));
    ideal[i] = root ? std::sqrt(value) : value;
  }
  log_magnitude(ideal, ideal);
  plot_state.ideal = ideal.data();
}

// All taps of the working FIR entry in order. Those of a lattice are worked out into `storage`.
static std::span<const double> fir_taps(std::vector<double> &storage) {
  const FirEntry &fir = design_record.fir;
  const std::span<const double> coefficients(fir.coeff.data(), fir.length);
  if (fir.fir_type != code(FirSymmetry::lattice)) return coefficients;
  storage = lattice_fir_taps(coefficients);
  return storage;
}

static void find_fir_roots() {
  fir_roots.wanted = false;
  std::vector<double> storage;
  std::optional<FirZeros> found = fir_zeros(fir_taps(storage));
  plot_state.poles_zeros_computed = found.has_value();
  if (!found) return;
  fir_roots.zeros = std::move(found->zeros);
  plot_state.zeros = fir_roots.zeros;
  plot_state.origin_poles = found->origin_poles;
}

void fir_plot_array() {
  trace(" entering fir plot array\n");
  init_plot_array();
  trace(" after init_plot_array\n");
  const FirEntry &fir = design_record.fir;
  const FirSymmetry symmetry{fir.fir_type};
  plot_state.fir_design = true;
  std::vector<double> lattice_taps;
  const std::span<const double> taps = fir_taps(lattice_taps);
  fir_roots.wanted = design_record.plot.cpanz != 0 && taps.size() <= max_fir_zero_taps;
  plot_state.poles_zeros_computed = fir_roots.wanted;
  plot_state.origin_poles = static_cast<int>(taps.size()) - 1;

  const bool linear_phase = symmetry == FirSymmetry::symmetric || symmetry == FirSymmetry::antisymmetric;
  const FrequencyResponse response = frequency_response();
  fir_frequency_response(taps, fir.gain, linear_phase ? GroupDelay::constant : GroupDelay::computed, plot_state.factor,
                         grid, response);
  if (symmetry == FirSymmetry::antisymmetric && std::abs(response.phase[1]) > 1) {
    response.phase[0] = std::copysign(std::numbers::pi / 2, response.phase[1]);
  }
  trace(" after computing frequency responses\n");

  plot_arrays.time_count = static_cast<std::int32_t>(std::min<std::size_t>(taps.size(), max_time_points));
  plot_state.time[1] = (plot_arrays.time_count - 1) * plot_state.factor;
  fir_time_response(taps, fir.gain, time_samples());
  trace(" after computing time responses\n");

  set_common_ranges();
  set_fir_time_ranges();
  if (design_record.selections.DesignOrAnalysisType == code(DesignMethod::z_analysis)) return;
  const int type = design_record.selections.filter_type;
  if (type == code(FilterType::raised_cosine) || type == code(FilterType::root_raised_cosine)) set_ideal_response();
  trace(" leaving fir plot array\n");
}

// Adds a note to those of the design, once however often its responses are computed.
static void note(const char *sentence) {
  if (std::find(design_notes.begin(), design_notes.end(), sentence) == design_notes.end())
    design_notes.push_back(sentence);
}

static void respond_from_ratio(const RatioEntry &ratio) {
  if (ratio.denominator[0] == 0) note("The ladder has no ratio of polynomials to run: its time responses are 0.");
  ratio_time_response(ratio, time_samples());
}

static void analog_response() {
  const IirForms &forms = design_record.s_unnormalized;
  const std::span points = grid.points;
  const FrequencyResponse out = frequency_response();
  const InputOption option{design_record.selections.s_input_option};
  if (option == InputOption::pole_zero)
    analog_pole_zero_response(forms.pole_zero, points, out);
  else if (option == InputOption::product)
    cascade_frequency_response(forms.cascade, Plane::s, points, out);
  else if (option == InputOption::sum)
    parallel_frequency_response(forms.parallel, Plane::s, points, out);
  else
    analog_ratio_response(forms.ratio, points, out);

  const TimeResponse time = time_samples();
  std::optional<double> direct;
  if (option != InputOption::sum) direct = analog_time_response(forms.cascade, Connection::cascade, time);
  if (!direct) direct = analog_time_response(forms.parallel, Connection::parallel, time);
  if (!direct) {
    std::fill(time.impulse.begin(), time.impulse.end(), 0);
    std::fill(time.step.begin(), time.step.end(), 0);
    note("The analog system has more zeros than poles: its time responses do not exist and are shown as 0.");
  } else if (*direct != 0) {
    note("The impulse response leaves out the impulse at time 0 that the analog system passes on unchanged.");
  }
}

void iir_plot_array() {
  trace(" entering iir plot array\n");
  init_plot_array();
  plot_state.fir_design = false;
  plot_state.s_plane = RealizationForm{design_record.realization} == RealizationForm::nonlinear;
  const IirForms &forms = design_record.z_quantized;
  const std::span points = grid.points;
  const FrequencyResponse frequency = frequency_response();
  const RealizationForm form{design_record.realization};
  switch (form) {
  case RealizationForm::cascade:
    cascade_frequency_response(forms.cascade, Plane::z, points, frequency);
    cascade_time_response(forms.cascade, time_samples());
    break;
  case RealizationForm::parallel:
    parallel_frequency_response(forms.parallel, Plane::z, points, frequency);
    parallel_time_response(forms.parallel, time_samples());
    break;
  case RealizationForm::ratio:
    ratio_frequency_response(forms.ratio, points, frequency);
    ratio_time_response(forms.ratio, time_samples());
    break;
  case RealizationForm::lattice:
    lattice_frequency_response(forms.lattice, points, frequency);
    lattice_time_response(forms.lattice, time_samples());
    break;
  case RealizationForm::ladder_1:
    ladder_frequency_response(forms.ladder_1, points, frequency);
    respond_from_ratio(forms.ratio);
    break;
  case RealizationForm::ladder_2:
    ladder_frequency_response(forms.ladder_2, points, frequency);
    respond_from_ratio(forms.ratio);
    break;
  case RealizationForm::nonlinear:
    analog_response();
    break;
  }

  const PoleZeroEntry &roots =
      form == RealizationForm::nonlinear ? design_record.s_unnormalized.pole_zero : forms.pole_zero;
  plot_state.poles = std::span(roots.poles).first(roots.real_poles + roots.complex_poles);
  plot_state.zeros = std::span(roots.zeros).first(roots.real_zeros + roots.complex_zeros);
  plot_state.poles_zeros_computed = design_record.plot.cpanz != 0;
  set_common_ranges();
  set_iir_time_ranges();
}

// The impulse response between its samples, for the plot only; empty when it is not asked for or too long.
static std::vector<double> interpolated_impulse;

PlotDescription setup_plot_labels(PlotKind kind) {
  const PlotArrays &arrays = plot_arrays;
  const PlotState &state = plot_state;
  PlotDescription d{};
  d.kind = kind;
  d.title = plot_kinds[code(kind)].title;
  d.y_label = plot_kinds[code(kind)].y_label;
  if (kind <= PlotKind::group_delay) {
    const Range range = state.log_axis ? state.log_range : state.frequency;
    d.x = arrays.frequency.data();
    d.count = arrays.frequency_count;
    d.x_range = {range[0] * state.factor, range[1] * state.factor};
    d.x_scale = 1 / (state.factor * unit_row(state.radians).factor);
    d.x_label = state.radians ? "Frequency (Radians)" : "Frequency (Hertz)";
  } else if (kind <= PlotKind::step) {
    const bool milliseconds = state.time[1] < 1;
    d.count = arrays.time_count;
    d.x_range = state.time;
    d.x_step = state.factor;
    d.x_scale = milliseconds ? 1000 : 1;
    d.x_label = milliseconds ? "Time (Milliseconds)" : "Time (Seconds)";
  }
  switch (kind) {
  case PlotKind::magnitude:
    d.y = arrays.magnitude.data();
    d.y_range = state.magnitude;
    break;
  case PlotKind::log_magnitude:
    d.y = arrays.log_magnitude.data();
    d.y_range = state.log_magnitude;
    break;
  case PlotKind::phase:
    d.y = arrays.phase.data();
    d.y_range = state.phase;
    break;
  case PlotKind::group_delay:
    d.y = arrays.group_delay.data();
    d.y_range = state.group_delay;
    break;
  case PlotKind::impulse:
    d.y = arrays.impulse.data();
    d.y_range = state.impulse;
    d.samples_as_marks = true;
    if (design_record.plot.sinc && arrays.time_count <= design_record.plot.ninterp) {
      interpolated_impulse = interpolate_impulse(std::span(arrays.impulse).first(arrays.time_count));
      const int points = static_cast<int>(interpolated_impulse.size());
      if (points > d.count) {
        d.y = interpolated_impulse.data();
        d.x_step *= static_cast<double>(d.count - 1) / (points - 1);
        d.count = points;
        d.samples_as_marks = false;
      }
    }
    break;
  case PlotKind::step:
    d.y = arrays.step.data();
    d.y_range = state.step;
    break;
  case PlotKind::pole_zero:
    if (fir_roots.wanted) find_fir_roots();
    break;
  }
  return d;
}

} // namespace brisel
