#include "gui/main_window/brisel_app.h"

#include "engine/core/design_driver.h"
#include "engine/core/problem_description.h"
#include "engine/files/design_report.h"
#include "gui/dialogs/cDisplayControlDialogImpl.h"
#include "gui/dialogs/cSelectPlotsDialogImpl.h"
#include "gui/main_window/brisel_mdi_child.h"
#include "gui/main_window/icons.h"
#include "gui/main_window/recent_files.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

#include <algorithm>

namespace brisel {

namespace {

constexpr QSize first_size(1120, 760);
constexpr QSize plot_window_size(500, 300);
constexpr int progress_steps = 1000;

QString text_of(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

cBriselApp::cBriselApp() : front(*this) {
  program_start();
  report_off = !plot_settings.detout;
  pens_and_fonts = plot_style(display_settings);
  setWindowTitle("Brisel");
  setWindowIcon(application_icon());
  setAcceptDrops(true);
  workspace = new QMdiArea(this);
  workspace->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  workspace->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  setCentralWidget(workspace);
  build_menus();
  build_tool_bar();
  set_icons();
  build_status_bar();
  build_plot_windows();
  restore_place();
  update_status();
  show_state("Ready");
}

cBriselApp::~cBriselApp() {
  leave_engine();
}

// --- construction

void cBriselApp::build_menu(QMenu &menu, std::span<const CommandRow> rows) {
  for (std::size_t position = 0; position < rows.size(); position++) {
    const CommandRow &row = rows[position];
    if (!row.text) {
      menu.addSeparator();
      continue;
    }
    if (const auto *sub_rows = std::get_if<std::span<const CommandRow>>(&row.action)) {
      build_menu(*menu.addMenu(row.text), *sub_rows);
      continue;
    }
    QAction *action = menu.addAction(row.text);
    action->setMenuRole(QAction::NoRole);
    if (row.icon) action->setProperty("icon_name", row.icon);
    if (row.shortcut) action->setShortcut(QKeySequence(row.shortcut));
    if (const auto *index_slot = std::get_if<IndexSlot>(&row.action)) {
      connect(action, &QAction::triggered, this,
              [this, slot = *index_slot, position] { (this->*slot)(static_cast<int>(position)); });
      continue;
    }
    const Slot slot = std::get<Slot>(row.action);
    connect(action, &QAction::triggered, this, [this, slot] { (this->*slot)(); });
    action->setCheckable(row.toggle);
    if (slot == &cBriselApp::Output_SnaptoGrid) snap_action = action;
  }
}

void cBriselApp::build_menus() {
  for (const MenuRow &row : menu_table()) build_menu(*menuBar()->addMenu(row.title), row.rows);
  QMenu *file_menu = menuBar()->actions().first()->menu();
  recent_menu = file_menu->addMenu("&Recent Files");
  connect(recent_menu, &QMenu::aboutToShow, this, &cBriselApp::rebuild_recent_files);
  QMenu *view_menu = menuBar()->actions().at(1)->menu();
  connect(view_menu, &QMenu::aboutToShow, this, [this, view_menu] {
    view_menu->actions().at(0)->setChecked(tool_bar->isVisible());
    view_menu->actions().at(1)->setChecked(statusBar()->isVisible());
  });
  window_menu = menuBar()->addMenu("&Window");
  connect(window_menu, &QMenu::aboutToShow, this, &cBriselApp::WindowMenuAboutToShow);
}

void cBriselApp::build_tool_bar() {
  tool_bar = addToolBar("Tool Bar");
  tool_bar->setIconSize({tool_icon_size, tool_icon_size});
  tool_bar->setMovable(false);
  tool_bar->setContextMenuPolicy(Qt::PreventContextMenu);
  int group = 1;
  for (const ToolRow &row : tool_table()) {
    if (row.group != group) tool_bar->addSeparator();
    group = row.group;
    QAction *action = tool_bar->addAction(row.tip);
    action->setStatusTip(row.status);
    action->setProperty("icon_name", row.icon);
    connect(action, &QAction::triggered, this, [this, slot = row.slot] { (this->*slot)(); });
    qobject_cast<QToolButton *>(tool_bar->widgetForAction(action))->setAutoRaise(false);
  }
}

void cBriselApp::set_icons() {
  for (QAction *action : findChildren<QAction *>()) {
    const QString name = action->property("icon_name").toString();
    if (!name.isEmpty()) action->setIcon(command_icon(name, palette()));
  }
}

void cBriselApp::build_status_bar() {
  progress_bar = new QProgressBar(this);
  progress_bar->setRange(0, progress_steps);
  progress_bar->setMaximumWidth(200);
  stop_button = new QPushButton("Stop", this);
  stop_button->setObjectName("Stop_Button");
  connect(stop_button, &QPushButton::clicked, this, [this] { front.stop(); });
  notes_button = new QToolButton(this);
  connect(notes_button, &QToolButton::clicked, this, [this] {
    std::string text;
    for (const std::string &note : design_notes) text += note + "\n\n";
    front.show_text(text);
  });
  run_end_label = new QLabel(this);
  run_end_label->setObjectName("RunEnd_Label");
  design_label = new QLabel(this);
  snap_label = new QLabel(this);
  for (QWidget *widget : std::initializer_list<QWidget *>{progress_bar, stop_button, run_end_label, notes_button}) {
    statusBar()->addPermanentWidget(widget);
    widget->hide();
  }
  statusBar()->addPermanentWidget(design_label);
  statusBar()->addPermanentWidget(snap_label);
  // A status tip takes the place of the state and leaves it empty.
  connect(statusBar(), &QStatusBar::messageChanged, this, [this](const QString &text) {
    if (text.isEmpty()) statusBar()->showMessage(state);
  });
}

void cBriselApp::build_plot_windows() {
  for (std::size_t kind = 0; kind < plots.size(); kind++) {
    plots[kind] = new cBriselMdiChild(*this, static_cast<PlotKind>(kind), text_of(plot_kinds[kind].caption));
    plot_frames[kind] = workspace->addSubWindow(plots[kind]);
    plot_frames[kind]->setAttribute(Qt::WA_DeleteOnClose, false);
    plot_frames[kind]->resize(plot_window_size);
    plot_frames[kind]->hide();
  }
}

void cBriselApp::restore_place() {
  const WorkplaceSettings &w = workplace_settings;
  const QRect place(w.pos_x, w.pos_y, w.pos_w, w.pos_h);
  const QRect least = place.isEmpty() ? QRect() : QRect(place.topLeft(), QSize(64, 32)); // enough to be grasped
  const QScreen *screen = place.isEmpty() ? nullptr : QGuiApplication::screenAt(least.center());
  if (screen) {
    resize(place.size().boundedTo(screen->availableSize()));
    move(place.topLeft());
  } else {
    resize(first_size.boundedTo(QGuiApplication::primaryScreen()->availableSize() * 0.95));
  }
}

void cBriselApp::setVisible(bool visible) {
  const bool first = visible && !shown_before;
  if (first) refresh_plots();
  QMainWindow::setVisible(visible);
  if (!first) return;
  shown_before = true;
  tile();
  workspace->setActiveSubWindow(plot_frames.front());
}

void cBriselApp::changeEvent(QEvent *event) {
  if (event->type() == QEvent::PaletteChange && tool_bar) set_icons();
  QMainWindow::changeEvent(event);
}

// --- leaving

void cBriselApp::quit() {
  if (isVisible())
    close();
  else
    QApplication::quit();
}

void cBriselApp::closeEvent(QCloseEvent *event) {
  if (running) { // the run ends first, then the window closes
    close_after_run = true;
    front.stop();
    return event->ignore();
  }
  const QPoint corner = pos();
  workplace_settings.pos_x = corner.x();
  workplace_settings.pos_y = corner.y();
  const QSize size = isMaximized() ? normalGeometry().size() : this->size();
  workplace_settings.pos_w = size.width();
  workplace_settings.pos_h = size.height();
  leave_engine(); // here, while there still is a window to tell that the setup file cannot be written
  event->accept();
}

void cBriselApp::leave_engine() {
  if (!left_engine) program_exit(exit_mode);
  left_engine = true;
}

// --- what the window shows of the engine's state

bool cBriselApp::has_result() const {
  return design_record.valid != 0 && !running;
}

void cBriselApp::show_state(const QString &text) {
  state = text;
  statusBar()->showMessage(state);
}

void cBriselApp::show_run_end(RunEnd end) {
  constexpr std::array ends{"Stopped", "Failed", "Refused"};
  run_end_label->setText(QString(ends[static_cast<std::size_t>(end)]) + ": the previous design is shown");
  run_end_label->show();
}

void cBriselApp::update_status() {
  snap_label->setText(snap ? "Snap On" : "Snap Off");
  snap_action->setChecked(snap);
  design_label->setText(has_result() ? text_of(problem_description(design_record)) : QString());
  const auto notes = has_result() ? design_notes.size() : 0;
  notes_button->setVisible(notes > 0);
  notes_button->setText(notes == 1 ? QString("1 note") : QString("%1 notes").arg(notes));
}

void cBriselApp::show_selected_plots() {
  const auto selected = plot_selection();
  for (std::size_t kind = 0; kind < plots.size(); kind++) plot_frames[kind]->setVisible(selected[kind]);
}

void cBriselApp::select_plot(PlotKind kind, bool on) {
  plot_selection()[static_cast<std::size_t>(kind)] = on;
  show_selected_plots();
}

void cBriselApp::refresh_plots() {
  show_selected_plots();
  for (cBriselMdiChild *plot : plots) plot->responses_changed();
  update_status();
}

void cBriselApp::recompute_responses() {
  if (!has_result()) return;
  const bool is_previous = !run_end_label->isHidden();
  front.announce("Working...");
  design_record.plot = plot_settings;
  filter_dsgn_plot();
  front.announce("Ready");
  run_end_label->setVisible(is_previous);
}

void cBriselApp::display_settings_changed() {
  pens_and_fonts = plot_style(display_settings);
  for (cBriselMdiChild *plot : plots) plot->update();
}

void cBriselApp::run_begins() {
  running = true;
  run_end_label->hide();
}

void cBriselApp::show_progress(double fraction) {
  for (QWidget *widget : std::initializer_list<QWidget *>{menuBar(), tool_bar, workspace}) widget->setEnabled(false);
  progress_bar->setValue(static_cast<int>(progress_steps * fraction));
  progress_bar->show();
  stop_button->show();
}

void cBriselApp::run_ends() {
  running = false;
  progress_bar->hide();
  stop_button->hide();
  for (QWidget *widget : std::initializer_list<QWidget *>{menuBar(), tool_bar, workspace}) widget->setEnabled(true);
  // A run that failed leaves nothing to draw.
  for (cBriselMdiChild *plot : plots) plot->update();
  update_status();
  if (close_after_run) QTimer::singleShot(0, this, &cBriselApp::close);
  close_after_run = false;
}

// --- files that come by themselves

void cBriselApp::dragEnterEvent(QDragEnterEvent *event) {
  if (event->mimeData()->hasUrls() && !running) event->acceptProposedAction();
}

void cBriselApp::dropEvent(QDropEvent *event) {
  const QList<QUrl> urls = event->mimeData()->urls();
  event->acceptProposedAction();
  // After the other program has got its answer: loading may ask something.
  if (!urls.isEmpty()) QTimer::singleShot(0, this, [this, path = urls.first().toLocalFile()] { load_file(path); });
}

void cBriselApp::rebuild_recent_files() {
  recent_menu->clear();
  const QStringList recent = recent_files();
  for (const QString &path : recent)
    recent_menu->addAction(QString(path).replace('&', "&&"), this, [this, path] { load_file(path); });
  if (recent.isEmpty()) recent_menu->addAction("No files yet")->setEnabled(false);
}

// --- view and windows

void cBriselApp::View_ToolBar() {
  tool_bar->setVisible(!tool_bar->isVisible());
}

void cBriselApp::View_StatusBar() {
  statusBar()->setVisible(!statusBar()->isVisible());
}

void cBriselApp::MyCascade() {
  workspace->cascadeSubWindows();
  for (QMdiSubWindow *window : visible_plots()) window->resize(plot_window_size);
}

// The area puts its newest window first; the plots are easier to find in their own order.
void cBriselApp::tile() {
  workspace->tileSubWindows();
  const QList<QMdiSubWindow *> windows = visible_plots();
  QList<QRect> places;
  for (const QMdiSubWindow *window : windows) places.append(window->geometry());
  std::sort(places.begin(), places.end(),
            [](const QRect &a, const QRect &b) { return std::pair(a.top(), a.left()) < std::pair(b.top(), b.left()); });
  for (int i = 0; i < windows.size(); i++) windows[i]->setGeometry(places[i]);
}

void cBriselApp::Window_SelectPlots() {
  cSelectPlotsDialogImpl selection(this);
  if (selection.exec() != QDialog::Accepted) return;
  const auto selected = plot_selection();
  for (std::size_t kind = 0; kind < plots.size(); kind++) selected[kind] = (selection.mask() >> kind & 1) != 0;
  show_selected_plots();
}

void cBriselApp::Window_DisplayControl() {
  cDisplayControlDialogImpl(this).exec();
}

QList<QMdiSubWindow *> cBriselApp::visible_plots() const {
  QList<QMdiSubWindow *> windows;
  for (QMdiSubWindow *window : plot_frames)
    if (!window->isHidden()) windows.append(window);
  return windows;
}

void cBriselApp::WindowMenuAboutToShow() {
  window_menu->clear();
  const QList<QMdiSubWindow *> windows = visible_plots();
  window_menu->addAction("&Cascade", this, &cBriselApp::MyCascade)->setEnabled(!windows.isEmpty());
  window_menu->addAction("&Tile", this, &cBriselApp::tile)->setEnabled(!windows.isEmpty());
  window_menu->addSeparator();
  window_menu->addAction("Select &Plots ...", this, &cBriselApp::Window_SelectPlots);
  window_menu->addAction("&Display Control ...", this, &cBriselApp::Window_DisplayControl);
  window_menu->addSeparator();
  for (int index = 0; index < windows.size(); index++) {
    QAction *action = window_menu->addAction(windows[index]->windowTitle());
    action->setCheckable(true);
    action->setChecked(windows[index] == workspace->activeSubWindow());
    connect(action, &QAction::triggered, this, [this, index] { WindowMenuActivated(index); });
  }
}

void cBriselApp::WindowMenuActivated(int index) {
  const QList<QMdiSubWindow *> windows = visible_plots();
  if (index < 0 || index >= windows.size()) return;
  if (windows[index]->isMinimized()) windows[index]->showNormal();
  workspace->setActiveSubWindow(windows[index]);
  windows[index]->widget()->setFocus();
}

} // namespace brisel
