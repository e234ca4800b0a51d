#include "engine/core/design_driver.h"

#include "engine/analysis/plot_arrays.h"
#include "engine/core/front_end.h"
#include "engine/core/method_rule.h"
#include "engine/core/spec_check.h"
#include "engine/core/trace.h"
#include "engine/files/design_report.h"
#include "engine/fir/equiripple_design.h"
#include "engine/fir/fir_quantize.h"
#include "engine/fir/least_squares_design.h"
#include "engine/fir/lp_fir_design.h"
#include "engine/fir/minimum_phase_design.h"
#include "engine/fir/window_design.h"
#include "engine/iir/delay_design.h"
#include "engine/iir/design_iir_sections.h"
#include "engine/iir/iir_quantize.h"

#include <cstring>
#include <memory>

namespace brisel {

namespace {

constexpr int runs_between_trims = 5;

// The parameter page of each filter type.
constexpr std::array<Page, filter_type_count> parameter_pages{
    Page::low_high_parameters,       Page::low_high_parameters,
    Page::band_pass_stop_parameters, Page::band_pass_stop_parameters,
    Page::differentiator_parameters, Page::multiband_parameters,
    Page::hilbert_parameters,        Page::arbitrary_magnitude_parameters,
    Page::group_delay_parameters,    Page::halfband_parameters,
    Page::raised_cosine_parameters,  Page::raised_cosine_parameters,
};

Page method_page(FilterType type, int method) {
  switch (type) {
  case FilterType::differentiator:
  case FilterType::hilbert:
  case FilterType::arbitrary_magnitude:
    return Page::fir;
  case FilterType::arbitrary_group_delay:
    return Page::group_delay;
  default:
    return method == code(DesignMethod::iir)      ? Page::iir
           : method == code(DesignMethod::window) ? Page::window
                                                  : Page::optimisation;
  }
}

// Runs a page and keeps its answer in `status`.
PageResult ask(Page page) {
  status = 0;
  const PageResult answer = front_end->run_page(page);
  status = static_cast<int>(answer);
  return answer;
}

bool is_group_delay_design() {
  return design_state.filter_type == code(FilterType::arbitrary_group_delay) &&
         design_state.DesignOrAnalysisType == code(DesignMethod::iir);
}

// A digital filter with a peak of 1 is shown up to 1, others need room above.
void reset_plot_ranges(PlotSettings &plot, double sampling_frequency, bool peak_is_one) {
  plot.frequency_range = {0, sampling_frequency / 2};
  const std::size_t row = peak_is_one ? 0 : 1;
  plot.magnitude_range = default_magnitude_ranges[row];
  plot.log_magnitude_range = default_log_magnitude_ranges[row];
}

struct Refusal {
  Message number;
  std::string detail;
};
// What was asked for beside the specification and cannot be done, found before any work is.
std::optional<Refusal> refused_option() {
  if (is_group_delay_design()) {
    if (design_state.CompensationOption)
      return Refusal{Message::iir_compensation_refused,
                     "a group delay filter is all-pass: it has no passband whose gain could make up for a droop"};
    if (const auto reason = group_delay_refusal(*current_spec, design_state))
      return Refusal{Message::group_delay_refused, *reason};
    return std::nullopt;
  }
  if (is_fir_method(design_state.DesignOrAnalysisType)) {
    const FilterType type{design_state.filter_type};
    const bool raised_cosine = type == FilterType::raised_cosine || type == FilterType::root_raised_cosine;
    if (raised_cosine && design_state.CompensationOption &&
        design_state.DesignOrAnalysisType == code(DesignMethod::window))
      return Refusal{Message::fir_compensation_refused, {}};
    if (const auto reason = minimum_phase_refusal(*current_spec, design_state))
      return Refusal{Message::minimum_phase_refused, *reason};
    return std::nullopt;
  }
  if (!design_state.PhaseEqualizationOption) return std::nullopt;
  if (const auto reason = equalizer_refusal(design_state)) return Refusal{Message::phase_equalizer_refused, *reason};
  return std::nullopt;
}

template <class... Entries> void set_sample_rate(double rate, Entries &...entries) {
  ((entries.sample_rate = rate), ...);
}

void restore_sample_rate(double rate) {
  DesignRecord &r = design_record;
  set_sample_rate(rate, r.fir_designed);
  for (IirForms *forms : {&r.s_normalized, &r.s_unnormalized, &r.z})
    set_sample_rate(rate, forms->cascade, forms->parallel, forms->pole_zero, forms->ratio, forms->lattice,
                    forms->ladder_1, forms->ladder_2);
}

// Designs the filter of the record's specification by the record's method.
void design_by_method(DesignRecord &r) {
  switch (DesignMethod{r.selections.DesignOrAnalysisType}) {
  case DesignMethod::iir:
    r.realization = r.selections.RealizationType;
    r.valid = is_group_delay_design() ? design_group_delay_filter() : design_iir_sections();
    break;
  case DesignMethod::window:
    r.valid = fir_window_design(r.spec, r.fir_designed);
    break;
  case DesignMethod::equiripple:
    equiripple_design();
    break;
  case DesignMethod::linear_programming:
    lp_fir_design();
    break;
  case DesignMethod::least_squares:
    least_squares_design();
    break;
  case DesignMethod::z_analysis:
  case DesignMethod::s_analysis:
    break;
  }
}

// A linear phase filter and the minimum phase filter made of it. The record keeps the specification asked for.
void design_minimum_phase(DesignRecord &r) {
  const FilterSpec asked = r.spec;
  const MinimumPhaseType type{r.selections.MinimumPhaseType};
  r.spec = linear_phase_spec(asked, type);
  design_by_method(r);
  if (r.valid && type == MinimumPhaseType::spectral_factor && !r.fir_designed.odd_length) {
    r.valid = 0; // an estimate: taps of even length have no spectral factor
    design_notes.clear();
    r.spec.length = r.fir_designed.length + 1;
    design_by_method(r);
  }
  r.spec = asked;
  if (r.valid) r.valid = convert_to_minimum_phase();
}

// The design that stood when a run started, for a run that ends without a result: the one copy of the record there is,
// some megabytes, hence on the heap and only while a run lasts.
struct SetAside {
  std::unique_ptr<DesignRecord> record;
  std::vector<std::string> notes;
  PlotSettings plot;

  SetAside() {
    if (!design_record.valid) return;
    record = std::make_unique_for_overwrite<DesignRecord>();
    std::memcpy(record.get(), &design_record, sizeof design_record);
    notes = design_notes;
    plot = plot_settings;
  }
  void put_back() {
    const std::uint8_t runs = design_record.design_counter;
    std::memcpy(&design_record, record.get(), sizeof design_record);
    design_record.design_counter = runs;
    design_notes = notes;
    plot_settings = plot;
    if (is_fir_result())
      fir_plot_array();
    else
      iir_plot_array();
    front_end->refresh_plots();
  }
};

// The pages of a run, forwards and backwards.
PageResult ask_pages() {
  constexpr std::array stages{GetFilterParameters, GetOptionalFilterCompensationData, GetOptionalPhaseEqualizationData};
  PageResult answer = PageResult::next;
  for (std::size_t stage = 0; stage < stages.size();) {
    answer = stages[stage](answer);
    if (answer == PageResult::cancelled || (answer == PageResult::back && stage == 0)) break;
    answer == PageResult::back ? stage-- : stage++;
  }
  return answer;
}

} // namespace

void SetFilterDesignType() {
  trace(" entering SetFilterDesignType\n");
  const int type = design_state.filter_type;
  current_spec = &spec[type];
  current_spec->type = type;
  trace(" filter pointer %p, type = %d\n", static_cast<void *>(current_spec), type);
  reopen_system_files();
  apply_frequency_mode();
  apply_method_rule();
  design_state.analog_type = code(AnalogPrototype::elliptic);
  design_state.order = 0; // belonged to the prototype before
  const FilterType filter_type{static_cast<std::int8_t>(type)};
  const bool windowless = filter_type == FilterType::arbitrary_magnitude || filter_type == FilterType::raised_cosine ||
                          filter_type == FilterType::root_raised_cosine;
  current_spec->window_type = windowless ? rectangular_window : kaiser_window;
  const bool odd_response = filter_type == FilterType::differentiator || filter_type == FilterType::hilbert;
  design_state.symmetry = static_cast<std::uint8_t>(odd_response ? FirSymmetry::antisymmetric : FirSymmetry::symmetric);
}

PageResult GetFilterParameters(PageResult way) {
  trace(" entering GetFilterParameters\n");
  reopen_system_files();
  const FilterType type{design_state.filter_type};
  const Page pages[] = {parameter_pages[design_state.filter_type],
                        method_page(type, design_state.DesignOrAnalysisType)};
  for (int page = way == PageResult::back; page < 2;) {
    const PageResult answer = ask(pages[page]);
    if (answer == PageResult::cancelled || (answer == PageResult::back && page == 0)) return answer;
    page += answer == PageResult::back ? -1 : 1;
  }
  current_spec->sampling_period = two_pi / current_spec->sampling_frequency;
  return PageResult::next;
}

PageResult GetOptionalFilterCompensationData(PageResult way) {
  if (!design_state.CompensationOption || is_group_delay_design()) return way;
  trace(" entering GetOptionalFilterCompensationData\n");
  reopen_system_files();
  return ask(Page::compensation);
}

PageResult GetOptionalPhaseEqualizationData(PageResult way) {
  trace(" entering GetOptionalPhaseEqualizationData\n");
  reopen_system_files();
  const bool wanted = design_state.PhaseEqualizationOption && !is_fir_method(design_state.DesignOrAnalysisType) &&
                      !is_group_delay_design();
  return wanted ? ask(Page::phase_equalization) : way;
}

void refuse_run(Message number, std::string_view detail) {
  post_message(number, detail);
  if (design_record.valid) front_end->wants_previous_design(RunEnd::refused);
}

PageResult design_filter() {
  SetFilterDesignType();
  if (const PageResult answer = ask_pages(); answer != PageResult::next) return answer;

  // Whoever filled it in: these types have no edges of their own.
  const FilterType type{design_state.filter_type};
  if (type == FilterType::raised_cosine || type == FilterType::root_raised_cosine)
    derive_raised_cosine_edges(*current_spec);
  if (const auto complaint = check_spec(*current_spec)) {
    refuse_run(Message::impossible_specification, complaint->reason);
  } else if (const auto refused = refused_option()) {
    refuse_run(refused->number, refused->detail);
  } else {
    run_with_progress([] {
      filter_dsgn_dsgn();
      filter_dsgn_quan();
    });
  }
  return PageResult::next;
}

void run_with_progress(const std::function<void()> &stages) {
  SetAside previous;
  const auto end = [&] {
    const bool ended = stop_asked || !design_record.valid;
    if (ended && previous.record && front_end->wants_previous_design(stop_asked ? RunEnd::stopped : RunEnd::failed))
      previous.put_back();
    front_end->announce("Ready");
  };
  stop_asked = false;
  front_end->announce("Working...");
  try {
    stages();
  } catch (...) { // there is not enough memory: whoever runs the engine says so
    design_record.valid = 0;
    end();
    throw;
  }
  end();
}

// A run that does not fill a form leaves none of an earlier filter behind. Of the taps, 800 kB an entry, the counts do.
static void clear_results(DesignRecord &r) {
  for (FirEntry *fir : {&r.fir_designed, &r.fir, &r.fir_unquantized})
    fir->length = fir->unique_count = fir->has_window = fir->shift = 0;
  r.wp = 0;
  for (IirForms *forms : {&r.s_normalized, &r.s_unnormalized, &r.z, &r.z_quantized}) *forms = {};
  r.z_normalized = {};
  r.delay = {};
  r.compensation = {};
  r.optimum = {};
  r.noise = {};
}

void begin_record(double sampling_frequency) {
  DesignRecord &r = design_record;
  r.valid = 0;
  status = 0;
  design_notes.clear();
  clear_results(r);
  r.loaded = *current_spec;
  r.loaded.sampling_frequency = sampling_frequency;
  r.loaded.sampling_period = two_pi / sampling_frequency;
  r.spec = r.loaded;
  r.selections = design_state;
  r.quantization = quantization_settings;
  if (plot_settings.autoreset || plot_settings.frequency_range[0] == plot_settings.frequency_range[1])
    reset_plot_ranges(plot_settings, sampling_frequency, r.selections.DesignOrAnalysisType == code(DesignMethod::iir));
  r.plot = plot_settings;
  const std::uint8_t runs = r.design_counter++;
  if (runs != 0 && runs % runs_between_trims == 0) trim_system_files();
  trace("\n design counter = %d\n", r.design_counter);
}

void filter_dsgn_dsgn() {
  DesignRecord &r = design_record;
  begin_record(current_spec->sampling_frequency);
  const bool fir = is_fir_method(r.selections.DesignOrAnalysisType);
  trace(" entering filter_dsgn_dsgn \n");
  reopen_system_files();
  r.spec = normalised(r.loaded);

  if (fir && r.selections.MinimumPhaseType)
    design_minimum_phase(r);
  else
    design_by_method(r);
  if (!r.valid) return;
  if (fir) {
    r.fir_designed.gain_option = static_cast<std::int8_t>(r.selections.GainOption);
    if (GainMode{r.selections.gain_specification_mode} == GainMode::maximum) set_maximum_gain();
  }
  restore_sample_rate(r.loaded.sampling_frequency);
}

void filter_dsgn_quan() {
  DesignRecord &r = design_record;
  if (!r.valid) return;
  r.valid = 0;
  trace(" entering filter_dsgn_quan \n");
  reopen_system_files();
  bool quantized = true;
  if (is_fir_result())
    fir_quantize();
  else if (RealizationForm{r.realization} != RealizationForm::nonlinear)
    quantized = quantize_iir();
  else if (r.quantization.quant) {
    r.quantization.quant = 0;
    design_notes.push_back("The analog system was not quantized: there are words for digital filters only.");
  }
  r.finished = std::time(nullptr);
  r.valid = quantized && !stop_asked;
  filter_dsgn_plot();
}

void filter_dsgn_plot() {
  if (!design_record.valid) return;
  trace(" entering filter_dsgn_plot \n");
  reopen_system_files();
  if (is_fir_result())
    fir_plot_array();
  else
    iir_plot_array();
  front_end->refresh_plots();
  detail_output();
}

} // namespace brisel
