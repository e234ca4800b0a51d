// design_commands.cpp - the commands that design and analyse, and those that show a result as numbers.
#include "engine/core/design_driver.h"
#include "engine/core/method_rule.h"
#include "gui/dialogs/cPlotControlDialogImpl.h"
#include "gui/main_window/brisel_app.h"
#include "gui/main_window/brisel_mdi_child.h"

#include <new>

namespace brisel {

namespace {

// Filter menu position to filter type; the last four are not in the order of their codes.
constexpr std::array<FilterType, filter_type_count> filter_of_position{
    FilterType::low_pass,      FilterType::high_pass,           FilterType::band_pass,
    FilterType::band_stop,     FilterType::differentiator,      FilterType::multiband,
    FilterType::hilbert,       FilterType::arbitrary_magnitude, FilterType::half_band,
    FilterType::raised_cosine, FilterType::root_raised_cosine,  FilterType::arbitrary_group_delay,
};

// Z domain menu position to input option; there is a separator between the IIR and the FIR forms.
constexpr InputOption no_option{-1};
constexpr std::array option_of_position{
    InputOption::ratio,         InputOption::pole_zero,         InputOption::product,
    InputOption::sum,           InputOption::lattice,           no_option,
    InputOption::symmetric_fir, InputOption::antisymmetric_fir, InputOption::nonsymmetric_fir,
    InputOption::lattice_fir,
};

} // namespace

void cBriselApp::start_design() {
  try {
    design_filter();
  } catch (const std::bad_alloc &) {
    design_record.valid = 0;
    front.announce("Ready");
    front.show_text("There is not enough memory for this design.");
  }
}

void cBriselApp::start_analysis() {
  post_message(Message::command_not_available);
}

void cBriselApp::design_by(DesignMethod method) {
  if (ruled_method(code(method), design_state.filter_type) != code(method))
    return post_message(Message::method_not_available, filter_types[design_state.filter_type].dialog_name);
  design_state.DesignOrAnalysisType = code(method);
  start_design();
}

void cBriselApp::Design_IIR() {
  design_by(DesignMethod::iir);
}

void cBriselApp::Design_FIR(int position) {
  design_by(DesignMethod{static_cast<std::int8_t>(position)});
}

void cBriselApp::Design_PoleZeroDesign() {
  post_message(Message::command_not_available);
}

void cBriselApp::FilterMenuActivated(int position) {
  design_state.filter_type = code(filter_of_position[static_cast<std::size_t>(position)]);
  start_design();
}

void cBriselApp::Filter_Special_PhaseShift() {
  post_message(Message::command_not_available);
}

void cBriselApp::Filter_StartDesign() {
  start_design();
}

void cBriselApp::Analysis_ZDomain(int position) {
  const InputOption option = option_of_position[static_cast<std::size_t>(position)];
  if (option != no_option) design_state.z_input_option = code(option);
  design_state.DesignOrAnalysisType = code(DesignMethod::z_analysis);
  start_analysis();
}

void cBriselApp::Analysis_SDomain() {
  design_state.DesignOrAnalysisType = code(DesignMethod::s_analysis);
  start_analysis();
}

void cBriselApp::Analysis_IIRFilterOutput() {
  post_message(Message::command_not_available);
}

void cBriselApp::Analysis_FIRFilterOutput() {
  post_message(Message::command_not_available);
}

void cBriselApp::Analysis_IIRFormConversion() {
  post_message(Message::command_not_available);
}

void cBriselApp::Analysis_FIRFormConversion() {
  post_message(Message::command_not_available);
}

void cBriselApp::Analysis_DomainConversion() {
  post_message(Message::command_not_available);
}

void cBriselApp::Toolbar_FIRWindow() {
  Design_FIR(1);
}
void cBriselApp::Toolbar_FIREQ() {
  Design_FIR(2);
}
void cBriselApp::Toolbar_FIRLP() {
  Design_FIR(3);
}
void cBriselApp::Toolbar_Lowpass() {
  FilterMenuActivated(0);
}
void cBriselApp::Toolbar_Highpass() {
  FilterMenuActivated(1);
}
void cBriselApp::Toolbar_Bandpass() {
  FilterMenuActivated(2);
}
void cBriselApp::Toolbar_Bandstop() {
  FilterMenuActivated(3);
}

// --- results as numbers

bool cBriselApp::is_iir_design() const {
  return has_result() && design_record.selections.DesignOrAnalysisType == code(DesignMethod::iir);
}

void cBriselApp::View_IirData(int) {
  post_message(is_iir_design() ? Message::command_not_available : Message::needs_iir_design);
}

void cBriselApp::View_IIRQuantizationAnalysis() {
  post_message(is_iir_design() ? Message::command_not_available : Message::needs_iir_for_quantization);
}

void cBriselApp::View_FIRCoefficients() {
  const bool fir = has_result() && is_fir_method(design_record.selections.DesignOrAnalysisType);
  post_message(fir ? Message::command_not_available : Message::needs_fir_design);
}

void cBriselApp::Output_PlotControl() {
  cPlotControlDialogImpl(this).exec();
}

void cBriselApp::Output_SnaptoGrid() {
  snap = !snap;
  update_status();
  for (cBriselMdiChild *plot : plots) plot->update();
}

void cBriselApp::Output_Quantization() {
  post_message(Message::command_not_available);
}

} // namespace brisel
