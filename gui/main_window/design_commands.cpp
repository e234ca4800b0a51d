// design_commands.cpp - the commands that design and analyse, and those that show a result as numbers.
#include "engine/core/design_driver.h"
#include "engine/core/system_analysis.h"
#include "gui/dialogs/cPlotControlDialogImpl.h"
#include "gui/dialogs/design_dialogs.h"
#include "gui/dialogs/option_dialogs.h"
#include "gui/dialogs/phase_shift_dialog.h"
#include "gui/dialogs/result_texts.h"
#include "gui/dialogs/system_pages.h"
#include "gui/dialogs/text_view_dialog.h"
#include "gui/main_window/brisel_app.h"
#include "gui/main_window/brisel_mdi_child.h"

#include <memory>
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

/// What a command may change before its run: a cancelled one leaves no trace in selections and specifications.
class SelectionsBefore {
public:
  void put_back() const {
    design_state = selections;
    spec = *specifications;
    current_spec = current;
  }

private:
  DesignState selections = design_state;
  std::unique_ptr<std::array<FilterSpec, filter_type_count>> specifications =
      std::make_unique<std::array<FilterSpec, filter_type_count>>(spec);
  FilterSpec *current = current_spec;
};

void cBriselApp::guarded(const std::function<void()> &run) {
  try {
    run();
  } catch (const std::bad_alloc &) {
    front.show_text("There is not enough memory for this design.");
  }
}

bool cBriselApp::start_design(const SelectionsBefore &before, bool page_before) {
  PageResult answer = PageResult::next;
  front.begin_pages(page_before);
  guarded([&] { answer = design_filter(); });
  if (answer == PageResult::cancelled) before.put_back();
  return answer != PageResult::back;
}

void cBriselApp::start_design_from(const std::function<std::unique_ptr<QDialog>()> &page, DesignMethod method) {
  const SelectionsBefore before;
  do {
    if (page()->exec() != QDialog::Accepted) return before.put_back();
    design_state.DesignOrAnalysisType = code(method);
  } while (!start_design(before, true));
}

void cBriselApp::start_analysis() {
  guarded([] { analyze_system(); });
}

void cBriselApp::Design_IIR() {
  start_design_from([this] { return std::make_unique<cIirDesignDialogImpl>(this); }, DesignMethod::iir);
}

void cBriselApp::Design_FIR(int position) {
  start_design_from([this] { return std::make_unique<cFirDesignDialogImpl>(this); },
                    DesignMethod{static_cast<std::int8_t>(position)});
}

void cBriselApp::Design_PoleZeroDesign() {
  post_message(Message::command_not_available);
}

void cBriselApp::Design_LeastSquares() {
  Design_FIR(code(DesignMethod::least_squares));
}

void cBriselApp::FilterMenuActivated(int position) {
  const SelectionsBefore before;
  design_state.filter_type = code(filter_of_position[static_cast<std::size_t>(position)]);
  start_design(before);
}

void cBriselApp::Filter_Special_PhaseShift() {
  cPhaseShiftSpecDialogImpl dialog(this);
  // What is impossible was marked while it was typed, and OK stayed disabled.
  if (dialog.exec() == QDialog::Accepted) guarded([&] { static_cast<void>(phase_shift_design(dialog.wanted())); });
}

void cBriselApp::Filter_StartDesign() {
  start_design(SelectionsBefore());
}

void cBriselApp::Analysis_ZDomain(int position) {
  const InputOption option = option_of_position[static_cast<std::size_t>(position)];
  if (option != no_option && enter_system(Domain::z, option, this)) start_analysis();
}

void cBriselApp::Analysis_SDomain() {
  const InputOption chosen{design_state.s_input_option};
  if (enter_system(Domain::s, chosen <= InputOption::sum ? chosen : InputOption::ratio, this)) start_analysis();
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

void cBriselApp::add_dataset_button(TextViewDialog &dialog) {
  dialog.add_button("Create &Data File ...", "pDataset_Button", [this] { Output_CreateCoefficientDataset(); });
}

void cBriselApp::View_IirData(int position) {
  if (!is_iir_design()) return post_message(Message::needs_iir_design);
  constexpr int first_position = 3; // behind the bars and a separator
  constexpr std::array captions{"IIR Normalized S Domain Data", "IIR Denormalized S Domain Data",
                                "IIR Unquantized Z Domain Data", "IIR Quantized Z Domain Data"};
  const int view = position - first_position;
  TextViewDialog dialog(this, "cIirViewDataDialog", captions[static_cast<std::size_t>(view)],
                        iir_data_text(design_record, IirView{view}), "iir-data");
  if (IirView{view} >= IirView::unquantized_z) add_dataset_button(dialog);
  dialog.exec();
}

void cBriselApp::View_IIRQuantizationAnalysis() {
  if (!is_iir_design()) return post_message(Message::needs_iir_for_quantization);
  TextViewDialog(this, "cIirQuantAnalysisDialog", "IIR Quantization Analysis",
                 quantization_analysis_text(design_record), "iir-quantization-analysis")
      .exec();
}

void cBriselApp::View_FIRCoefficients() {
  if (!has_result() || !is_fir_method(design_record.selections.DesignOrAnalysisType))
    return post_message(Message::needs_fir_design);
  TextViewDialog dialog(this, "cFirCoeffView", "FIR Coefficients - View Only", fir_coefficients_text(design_record),
                        "fir-coefficients");
  add_dataset_button(dialog);
  dialog.exec();
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
  cQuantizationDialogImpl(this).exec();
}

} // namespace brisel
