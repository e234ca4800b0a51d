// brisel_app.h - the main window. Every command of the workstation is a slot here: it checks what the command needs,
// asks through dialogs, and calls one entry point of the engine.
#pragma once

#include "codegen/data_files.h"
#include "codegen/dsp_checks.h"
#include "engine/core/code_tables.h"
#include "engine/core/start_up.h"
#include "engine/core/system_conversion.h"
#include "gui/main_window/command_table.h"
#include "gui/main_window/file_dialogs.h"
#include "gui/main_window/gui_front_end.h"
#include "gui/plots/plot_style.h"

#include <QMainWindow>

#include <array>
#include <functional>
#include <memory>
#include <optional>

class QDialog;
class QLabel;
class QMdiArea;
class QMdiSubWindow;
class QMenu;
class QProgressBar;
class QPushButton;
class QToolButton;

namespace brisel {

class SelectionsBefore;
class TextViewDialog;
class cBriselMdiChild;

class cBriselApp : public QMainWindow {
  Q_OBJECT

public:
  cBriselApp();
  ~cBriselApp() override;

  /// The first time the plot windows are refreshed and tiled.
  void setVisible(bool visible) override;

  /// Loads a .spc, .inp or .flt file by its extension and goes on as the load command does.
  void load_file(const QString &path);

  /// Writes the display settings into pens, fonts and colours of every plot window.
  void display_settings_changed();
  /// The plot windows whose flags are set are shown, the others hidden.
  void show_selected_plots();
  /// Shows or hides one plot window and keeps that as the selection.
  void select_plot(PlotKind kind, bool on);
  /// The responses are new: every plot window forgets its zoom and draws again.
  void refresh_plots();
  /// Computes the responses of the current result again, after the plot settings changed.
  void recompute_responses();

  /// A long run begins or ends. Until its end no command starts and the window stays open.
  void run_begins();
  void run_ends();
  /// The run takes its time: commands are disabled, progress bar and Stop button show.
  void show_progress(double fraction);
  /// The run has no result; the design before it is shown again, which a label says until the next run.
  void show_run_end(RunEnd end);
  /// A text of the status bar that status tips cover only while they show.
  void show_state(const QString &text);

  /// A design or analysis to show, which there is none of while a run works on it.
  bool has_result() const;
  const PlotStyle &style_of_plots() const { return pens_and_fonts; }
  cBriselMdiChild *plot_window(PlotKind kind) const { return plots[static_cast<std::size_t>(kind)]; }
  QMdiArea *workspace_area() const { return workspace; }
  FileDialogs &file_dialogs() { return files; }
  bool snap_to_grid() const { return snap; }
  /// While a job prints, the plot windows do not paint.
  bool is_printing() const { return printing; }

  ExitMode exit_mode = ExitMode::save; // chosen in the system settings

public Q_SLOTS:
  void File_LoadSpecifications();
  void File_LoadSystemAnalysis();
  void File_LoadFilterCoefficients();
  void File_Print();
  void File_SystemSettings();
  void File_UserInformation();
  void quit();
  void File_AboutBrisel();

  void View_ToolBar();
  void View_StatusBar();
  void View_IirData(int position);
  void View_IIRQuantizationAnalysis();
  void View_FIRCoefficients();
  void View_ViewFilterFile();

  void Design_IIR();
  void Design_FIR(int position);
  void Design_PoleZeroDesign();
  void Design_LeastSquares();

  void FilterMenuActivated(int position);
  void Filter_Special_PhaseShift();
  void Filter_StartDesign();

  void Analysis_ZDomain(int position);
  void Analysis_SDomain();
  void Analysis_IIRFilterOutput();
  void Analysis_FIRFilterOutput();
  void Analysis_IIRFormConversion();
  void Analysis_FIRFormConversion();
  void Analysis_DomainConversion();

  void Output_PlotControl();
  void Output_SnaptoGrid();
  void Output_Quantization();
  void Output_CreateSpecficationFile();
  void Output_CreateFilterCoefficientFile();
  void Output_CreateSystemAnalysisFile();
  void Output_CreateMatlabFile();
  void Output_CreateCOSSAPDataset();
  void Output_CreatePlotDataFiles();
  void Output_CreateCoefficientDataset();

  void Codegen_CCode();
  void Codegen_ADSP218X();
  void Codegen_DSP56800();
  void Codegen_dsPIC30();
  void Codegen_PA();

  void MyCascade();
  void tile();
  void Window_SelectPlots();
  void Window_DisplayControl();
  void WindowMenuAboutToShow();
  void WindowMenuActivated(int index);

  void Toolbar_FIRWindow();
  void Toolbar_FIREQ();
  void Toolbar_FIRLP();
  void Toolbar_Lowpass();
  void Toolbar_Highpass();
  void Toolbar_Bandpass();
  void Toolbar_Bandstop();

protected:
  void closeEvent(QCloseEvent *event) override;
  void changeEvent(QEvent *event) override;
  void dragEnterEvent(QDragEnterEvent *event) override;
  void dropEvent(QDropEvent *event) override;

private:
  void build_menu(QMenu &menu, std::span<const CommandRow> rows);
  void build_menus();
  void build_tool_bar();
  void build_status_bar();
  void build_plot_windows();
  void set_icons();
  void rebuild_recent_files();
  void restore_place();
  /// Ends the engine's session, once.
  void leave_engine();

  void load_specification(const QString &path);
  void load_system(const QString &path);
  void load_coefficients(const QString &path);
  /// A file was loaded or written: the next dialog of the command begins there.
  void remember(FileCommand command, const QString &path);
  /// Runs the pages and the design. When a page is cancelled, the selections are those before the command again. False
  /// when the first page was left backwards, to the page of the command.
  bool start_design(const SelectionsBefore &before, bool page_before = false);
  /// The page of the command, then the design by that method.
  void start_design_from(const std::function<std::unique_ptr<QDialog>()> &page, DesignMethod method);
  void start_analysis();
  /// Runs what needs memory and tells when there is not enough.
  void guarded(const std::function<void()> &run);
  /// False, after message 209, when there is neither a design nor an analysis.
  bool needs_result() const;
  bool is_iir_design() const;
  /// Shows a text file that was just written, when the user wants that.
  void written(FileCommand command, const QString &path);
  /// The files that a C source includes, beside it where they are not yet. The user is asked the first time.
  void bring_c_support(const std::string &source);
  /// A design that does not suit is refused with `caption`.
  void write_dsp_code(FileCommand command, const QString &caption, DspFamily family);
  /// Asks for a name and saves a system, unless the file would not hold it.
  void write_system(const ConvertibleSystem &system);
  void write_saved(const SavedFilter &saved);
  void write_all_forms(Domain domain);
  /// Asks for the form of the IIR result and writes it.
  void write_iir_form();
  void add_dataset_button(TextViewDialog &dialog);
  /// Asks for a name and saves a text of numbers; a refusal is told instead.
  void save_numbers(FileCommand command, const DataText &text);
  void update_status();
  QList<QMdiSubWindow *> visible_plots() const;

  GuiFrontEnd front;
  FileDialogs files;
  PlotStyle pens_and_fonts;
  QMdiArea *workspace = nullptr;
  QToolBar *tool_bar = nullptr;
  QMenu *recent_menu = nullptr;
  QMenu *window_menu = nullptr;
  QAction *snap_action = nullptr;
  QString state; // of the status bar
  QLabel *run_end_label = nullptr;
  QLabel *design_label = nullptr;
  QLabel *snap_label = nullptr;
  QToolButton *notes_button = nullptr;
  QProgressBar *progress_bar = nullptr;
  QPushButton *stop_button = nullptr;
  std::array<cBriselMdiChild *, plot_kind_count> plots{};
  std::array<QMdiSubWindow *, plot_kind_count> plot_frames{};
  bool snap = false;
  bool printing = false;
  bool shown_before = false;
  bool running = false;         // the engine works
  bool close_after_run = false; // the user asked for it meanwhile
  bool left_engine = false;
  std::optional<bool> c_support_wanted; // the answer, once it was asked for
};

} // namespace brisel
