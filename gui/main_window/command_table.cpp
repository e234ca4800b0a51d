#include "gui/main_window/command_table.h"

#include "gui/main_window/brisel_app.h"

namespace brisel {

namespace {

using App = cBriselApp;
constexpr CommandRow separator{nullptr, {}};

constexpr CommandRow file_rows[]{
    {"Load &Specifications ...", &App::File_LoadSpecifications, "load-spc", "Ctrl+O"},
    {"Load System &Analysis ...", &App::File_LoadSystemAnalysis, "load-inp"},
    {"Load Filter &Coefficients ...", &App::File_LoadFilterCoefficients, "load-flt"},
    {"&Print ...", &App::File_Print, "print", "Ctrl+P"},
    {"S&ystem Settings ...", &App::File_SystemSettings},
    {"&User Information ...", &App::File_UserInformation},
    {"E&xit ...", &App::quit, nullptr, "Ctrl+Q"},
    {"About Brisel ...", &App::File_AboutBrisel, "about"},
};

constexpr CommandRow view_rows[]{
    {"Tool&bar", &App::View_ToolBar, nullptr, nullptr, true},
    {"&Status Bar", &App::View_StatusBar, nullptr, nullptr, true},
    separator,
    {"IIR &Normalized S Domain Data ...", &App::View_IirData},
    {"IIR &Denormalized S Domain Data ...", &App::View_IirData},
    {"IIR &Unquantized Z Domain Data ...", &App::View_IirData},
    {"IIR &Quantized Z Domain Data ...", &App::View_IirData},
    {"IIR Quantization &Analysis ...", &App::View_IIRQuantizationAnalysis},
    {"&FIR Coefficients ...", &App::View_FIRCoefficients},
    {"&View Filter File ...", &App::View_ViewFilterFile},
};

constexpr CommandRow design_rows[]{
    {"&IIR Design ...", &App::Design_IIR, "iir"},
    {"&FIR Window Design ...", &App::Design_FIR, "fir-window"},
    {"&Equiripple Design ...", &App::Design_FIR, "fir-equiripple"},
    {"&Linear Programming ...", &App::Design_FIR, "fir-lp"},
    {"&Pole/Zero Design ...", &App::Design_PoleZeroDesign, "pole-zero"},
    separator,
    {"Least &Squares Design ...", &App::Design_LeastSquares},
};

constexpr CommandRow special_rows[]{
    {"&Phase Shift Filter ...", &App::Filter_Special_PhaseShift},
};
constexpr CommandRow filter_rows[]{
    {"&Lowpass ...", &App::FilterMenuActivated, "lowpass"},
    {"&Highpass ...", &App::FilterMenuActivated, "highpass"},
    {"&Bandpass ...", &App::FilterMenuActivated, "bandpass"},
    {"Band&stop ...", &App::FilterMenuActivated, "bandstop"},
    {"&Differentiator ...", &App::FilterMenuActivated},
    {"&Multi-band ...", &App::FilterMenuActivated},
    {"&Hilbert Transform ...", &App::FilterMenuActivated},
    {"Arbitrary &Magnitude ...", &App::FilterMenuActivated},
    {"Hal&fband ...", &App::FilterMenuActivated},
    {"Raised &Cosine ...", &App::FilterMenuActivated},
    {"&Root Raised Cosine ...", &App::FilterMenuActivated},
    {"Arbitrary &Group Delay ...", &App::FilterMenuActivated},
    {"Special Designs", std::span<const CommandRow>(special_rows)},
    {"&Start Design ...", &App::Filter_StartDesign, "start", "F5"},
};

constexpr CommandRow z_domain_rows[]{
    {"&Ratio of 2 Polynomials ...", &App::Analysis_ZDomain},
    {"Poles and &Zeros ...", &App::Analysis_ZDomain},
    {"&Product of Second Order Sections ...", &App::Analysis_ZDomain},
    {"&Sum of Second Order Sections ...", &App::Analysis_ZDomain},
    {"&Lattice IIR Structure ...", &App::Analysis_ZDomain},
    separator,
    {"Symmetric &FIR Filter ...", &App::Analysis_ZDomain},
    // Kept: two accelerators in one text; the toolkit takes the first and does not show the second ampersand.
    {"&Anti-symmetric &FIR Filter ...", &App::Analysis_ZDomain},
    {"&Non-symmetric &FIR Filter ...", &App::Analysis_ZDomain},
    {"La&ttice FIR Filter ...", &App::Analysis_ZDomain},
};
constexpr CommandRow analysis_rows[]{
    {"&Z Domain", std::span<const CommandRow>(z_domain_rows)},
    {"&S Domain ...", &App::Analysis_SDomain},
    {"IIR Filter Output ...", &App::Analysis_IIRFilterOutput},
    {"FIR Filter Output", &App::Analysis_FIRFilterOutput},
    {"IIR Form Conversion ...", &App::Analysis_IIRFormConversion},
    {"FIR Form Conversion ...", &App::Analysis_FIRFormConversion},
    {"Domain Conversion ...", &App::Analysis_DomainConversion},
};

constexpr CommandRow output_rows[]{
    {"&Plot Control ...", &App::Output_PlotControl},
    {"Snap to &Grid", &App::Output_SnaptoGrid, nullptr, "Ctrl+G", true},
    {"&Quantization ...", &App::Output_Quantization, "quantization"},
    {"Create &Specification File ...", &App::Output_CreateSpecficationFile, "save-spc", "Ctrl+S"},
    {"Create &Filter Coefficient File ...", &App::Output_CreateFilterCoefficientFile, "save-flt"},
    {"Create System &Analysis File ...", &App::Output_CreateSystemAnalysisFile, "save-inp"},
    {"Create &Matlab File ...", &App::Output_CreateMatlabFile, "save-matlab"},
    {"Create C&oCentric Dataset ...", &App::Output_CreateCOSSAPDataset},
    {"Create &Plot Data Files ...", &App::Output_CreatePlotDataFiles},
};

constexpr CommandRow analog_devices_rows[]{{"&ADSP218X", &App::Codegen_ADSP218X}};
constexpr CommandRow freescale_rows[]{{"&DSP56800/DSP56800E", &App::Codegen_DSP56800}};
constexpr CommandRow microchip_rows[]{{"&dsPIC30", &App::Codegen_dsPIC30}};
constexpr CommandRow texas_rows[]{{"&Performance Audio", &App::Codegen_PA}};
constexpr CommandRow codegen_rows[]{
    {"&C Code ...", &App::Codegen_CCode, "save-c"},
    {"&AnalogDevices", std::span<const CommandRow>(analog_devices_rows)},
    {"&Freescale", std::span<const CommandRow>(freescale_rows)},
    {"&Microchip", std::span<const CommandRow>(microchip_rows)},
    {"&Texas Instruments", std::span<const CommandRow>(texas_rows)},
};

constexpr MenuRow menus[]{
    {"&File", file_rows},         {"&View", view_rows},     {"&Design", design_rows},   {"F&ilter", filter_rows},
    {"&Analysis", analysis_rows}, {"&Output", output_rows}, {"&Codegen", codegen_rows},
};

constexpr ToolRow tools[]{
    {1, &App::File_LoadSpecifications, "Load spc file", "Load filter specification file", "load-spc"},
    {1, &App::File_LoadSystemAnalysis, "Load inp file", "Load system analysis file", "load-inp"},
    {1, &App::File_LoadFilterCoefficients, "Load flt file", "Load filter coefficient file", "load-flt"},
    {2, &App::File_AboutBrisel, "About", "Display program information, version number and copyright", "about"},
    {2, &App::File_Print, "Print", "Print filter plots", "print"},
    {3, &App::MyCascade, "Cascade Windows", "Arrange windows so they overlap", "cascade"},
    {3, &App::tile, "Tile Windows", "Arrange windows as non-overlapping tiles", "tile"},
    {4, &App::Design_IIR, "IIR Design", "IIR Design", "iir"},
    {4, &App::Toolbar_FIRWindow, "Window FIR design", "FIR design with window functions", "fir-window"},
    {4, &App::Toolbar_FIREQ, "Equiripple FIR design", "Equiripple FIR design", "fir-equiripple"},
    {4, &App::Toolbar_FIRLP, "Linear programming FIR design", "Linear programming FIR design", "fir-lp"},
    {4, &App::Design_PoleZeroDesign, "Graphical pole-zero design", "Graphical pole-zero design", "pole-zero"},
    {5, &App::Toolbar_Lowpass, "Lowpass", "Lowpass filter", "lowpass"},
    {5, &App::Toolbar_Highpass, "Highpass", "Highpass filter", "highpass"},
    {5, &App::Toolbar_Bandpass, "Bandpass", "Bandpass filter", "bandpass"},
    {5, &App::Toolbar_Bandstop, "Bandstop", "Bandstop filter", "bandstop"},
    {6, &App::Output_Quantization, "Quantization", "Quantization selection", "quantization"},
    {6, &App::Filter_StartDesign, "Start Design", "Start Design", "start"},
    {7, &App::Output_CreateSpecficationFile, "Save spc file", "Create filter specification file", "save-spc"},
    {7, &App::Output_CreateSystemAnalysisFile, "Save inp file", "Create system analysis file", "save-inp"},
    {7, &App::Output_CreateFilterCoefficientFile, "Save flt file", "Create filter coefficient file", "save-flt"},
    {7, &App::Codegen_CCode, "Save C file", "Create C code for filter", "save-c"},
    {7, &App::Output_CreateMatlabFile, "Save MatLab file", "Create MatLab file", "save-matlab"},
};

} // namespace

std::span<const MenuRow> menu_table() {
  return menus;
}
std::span<const ToolRow> tool_table() {
  return tools;
}

} // namespace brisel
