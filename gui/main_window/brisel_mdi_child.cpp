#include "gui/main_window/brisel_mdi_child.h"

#include "engine/files/text_file.h"
#include "gui/main_window/brisel_app.h"
#include "gui/main_window/current_plot.h"
#include "gui/plots/pictures.h"

#include <QApplication>
#include <QClipboard>
#include <QFileInfo>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>

#include <algorithm>
#include <cmath>
#include <limits>

namespace brisel {

namespace {

constexpr double wheel_zoom = 0.8; // of the range, a notch towards the plot
constexpr int page_step = 10;      // points that a page key goes on by
constexpr QSize picture_size(1200, 800);
constexpr double picture_scale = 1.5;

std::int16_t device_place(double position) {
  using Limits = std::numeric_limits<std::int16_t>;
  return static_cast<std::int16_t>(std::clamp<double>(position, Limits::min(), Limits::max()));
}

} // namespace

cBriselMdiChild::cBriselMdiChild(cBriselApp &main_window, PlotKind plot_kind, const QString &caption)
    : app(main_window), kind(plot_kind) {
  setWindowTitle(caption);
  setAccessibleName(caption);
  setFocusPolicy(Qt::StrongFocus);
  setMinimumSize(120, 80);
  setAttribute(Qt::WA_OpaquePaintEvent);
}

PlotData cBriselMdiChild::data() const {
  PlotData plot = current_plot(kind);
  if (zoom) {
    plot.x_range = zoom->x;
    plot.y_range = zoom->y;
    plot.round_x = plot.round_y = false;
  }
  return plot;
}

void cBriselMdiChild::responses_changed() {
  zoom_start.reset();
  dragging = false;
  zoom_back();
}

void cBriselMdiChild::paintEvent(QPaintEvent *) {
  if (app.is_printing()) return;
  QPainter painter(this);
  if (!app.has_result()) {
    painter.fillRect(rect(), app.style_of_plots().background);
    return;
  }
  PlotOverlay overlay;
  overlay.cursor = cursor;
  overlay.zoom_rectangle = dragging;
  draw_plot(painter, rect(), data(), app.style_of_plots(), layout, overlay);
}

// --- cursor and zoom

void cBriselMdiChild::move_cursor_to(const QPointF &position) {
  layout.mouse_x = device_place(position.x());
  layout.mouse_y = device_place(position.y());
  cursor = cursor_at(layout, data(), position, app.snap_to_grid());
  update();
}

void cBriselMdiChild::move_cursor_by(int step) {
  const PlotData plot = data();
  // The first key puts the cursor on the curve, near where it was or at the middle.
  if (!cursor || cursor->index < 0) {
    const QPointF middle((layout.left + layout.right) / 2, (layout.top + layout.bottom) / 2);
    const QPointF at =
        cursor ? QPointF(layout.x_map().position(cursor->x), layout.y_map().position(cursor->y)) : middle;
    cursor = cursor_at(layout, plot, at, true);
  } else if (const auto moved = cursor_moved(layout, plot, *cursor, step)) {
    cursor = moved;
  }
  update();
}

void cBriselMdiChild::zoom_back() {
  zoom.reset();
  cursor.reset();
  update();
}

void cBriselMdiChild::mousePressEvent(QMouseEvent *event) {
  if (!app.has_result()) return;
  if (event->button() == Qt::LeftButton) {
    move_cursor_to(event->position());
  } else if (event->button() == Qt::RightButton) {
    zoom_start = event->position();
    layout.zoom_start_x = layout.zoom_x = device_place(zoom_start->x());
    layout.zoom_start_y = layout.zoom_y = device_place(zoom_start->y());
  }
}

void cBriselMdiChild::mouseMoveEvent(QMouseEvent *event) {
  if (!app.has_result()) return;
  if (event->buttons() & Qt::LeftButton) move_cursor_to(event->position());
  if ((event->buttons() & Qt::RightButton) && zoom_start) {
    layout.zoom_x = device_place(event->position().x());
    layout.zoom_y = device_place(event->position().y());
    const QPointF way = event->position() - *zoom_start;
    dragging = dragging || way.manhattanLength() >= QApplication::startDragDistance();
    cursor.reset();
    update();
  }
}

void cBriselMdiChild::mouseReleaseEvent(QMouseEvent *event) {
  if (event->button() != Qt::RightButton || !zoom_start) return;
  const QPointF start = *zoom_start;
  const bool dragged = dragging;
  zoom_start.reset();
  dragging = false;
  if (!dragged) return show_menu(event->globalPosition().toPoint());
  if (const auto ranges = zoom_ranges(layout, start, event->position())) zoom = ranges;
  update();
}

void cBriselMdiChild::mouseDoubleClickEvent(QMouseEvent *event) {
  if (event->button() == Qt::LeftButton) zoom_back();
}

// The plane of poles and zeros is drawn between round values, with one scale. The wheel goes on from the range before
// that, or small steps would never leave it.
void cBriselMdiChild::wheelEvent(QWheelEvent *event) {
  event->accept();
  if (!app.has_result() || event->angleDelta().y() == 0) return;
  QPointF at = event->position();
  PlotLayout exact = layout;
  if (zoom) {
    exact.x_axis.range = zoom->x;
    exact.y_axis.range = zoom->y;
    at = {exact.x_map().position(layout.x_map().value(at.x())), exact.y_map().position(layout.y_map().value(at.y()))};
  }
  const double notches = event->angleDelta().y() / 120.0;
  if (const auto ranges = zoom_about(exact, at, std::pow(wheel_zoom, notches))) {
    zoom = ranges;
    update();
  }
}

void cBriselMdiChild::keyPressEvent(QKeyEvent *event) {
  if (!app.has_result()) return QWidget::keyPressEvent(event);
  if (event->matches(QKeySequence::Copy)) return copy();
  const int step = event->modifiers() & Qt::ControlModifier ? page_step : 1;
  switch (event->key()) {
  case Qt::Key_Escape:
    return zoom_back();
  case Qt::Key_Left:
  case Qt::Key_Down:
    return move_cursor_by(-step);
  case Qt::Key_Right:
  case Qt::Key_Up:
    return move_cursor_by(step);
  case Qt::Key_PageDown:
    return move_cursor_by(page_step);
  case Qt::Key_PageUp:
    return move_cursor_by(-page_step);
  default:
    QWidget::keyPressEvent(event);
  }
}

// --- out of the window

void cBriselMdiChild::contextMenuEvent(QContextMenuEvent *event) {
  // The mouse's menu comes when the button is let go without a drag.
  if (event->reason() != QContextMenuEvent::Mouse && app.has_result()) show_menu(mapToGlobal(rect().center()));
  event->accept();
}

void cBriselMdiChild::closeEvent(QCloseEvent *event) {
  event->ignore(); // the window only hides, until it is selected again
  app.select_plot(kind, false);
}

void cBriselMdiChild::show_menu(const QPoint &place) {
  QMenu menu(this);
  menu.addAction("&Copy", QKeySequence::Copy, this, &cBriselMdiChild::copy);
  menu.addAction("&Save picture as ...", this, &cBriselMdiChild::save_picture);
  menu.addAction("&Zoom back", Qt::Key_Escape, this, &cBriselMdiChild::zoom_back)->setEnabled(is_zoomed());
  menu.exec(place);
}

QString cBriselMdiChild::data_as_text() const {
  const PlotData plot = data();
  std::string text;
  const auto add_root = [&](const char *name, const std::complex<double> &root) {
    text += name + std::string("\t") + shortest(root.real()) + "\t" + shortest(root.imag()) + "\n";
  };
  if (kind == PlotKind::pole_zero) {
    text = "Root\tReal\tImaginary\n";
    for (const auto &pole : plot.poles) add_root("pole", pole);
    for (int i = 0; i < plot.origin_poles; i++) add_root("pole", 0);
    for (const auto &zero : plot.zeros) add_root("zero", zero);
    for (int i = 0; i < plot.origin_zeros; i++) add_root("zero", 0);
  } else {
    text = plot.x_label + "\t" + plot.y_label + "\n";
    for (std::size_t i = 0; i < plot.curve.y.size(); i++)
      text += shortest(plot.curve.x_value(i)) + "\t" + shortest(plot.curve.y[i]) + "\n";
  }
  return QString::fromStdString(text);
}

void cBriselMdiChild::copy() {
  if (!app.has_result()) return;
  auto *content = new QMimeData;
  content->setText(data_as_text());
  content->setImageData(QImage::fromData(picture("png")));
  QApplication::clipboard()->setMimeData(content);
}

QByteArray cBriselMdiChild::picture(const QString &extension) const {
  const PlotData plot = data();
  if (extension == "svg") return plot_svg(plot, display_settings, picture_size / picture_scale);
  if (extension == "pdf") return plot_pdf({&plot, 1}, display_settings);
  return plot_png(plot, display_settings, picture_size, picture_scale);
}

void cBriselMdiChild::save_picture() {
  const std::string_view stem = plot_kinds[static_cast<std::size_t>(kind)].file_stem;
  const QString suggestion = QString::fromLatin1(stem.data(), static_cast<qsizetype>(stem.size())) + ".png";
  const QString path = app.file_dialogs().save(this, FileCommand::picture, suggestion);
  if (path.isEmpty()) return;
  const QByteArray bytes = picture(QFileInfo(path).suffix().toLower());
  std::string why = path.toStdString() + ": cannot be drawn: not enough memory";
  if (bytes.isEmpty() || !save_file(path.toStdString(), bytes.toStdString(), why))
    post_message(Message::write_failed, why);
}

} // namespace brisel
