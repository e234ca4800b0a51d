// brisel_mdi_child.h - the plot window: one class for all seven plot kinds. It owns no data; it draws from the engine's
// response arrays.
#pragma once

#include "gui/plots/plot_painter.h"

#include <QWidget>

namespace brisel {

class cBriselApp;

class cBriselMdiChild : public QWidget {
  Q_OBJECT

public:
  cBriselMdiChild(cBriselApp &app, PlotKind kind, const QString &caption);

  /// Forgets zoom and cursor and draws the new responses.
  void responses_changed();

  const PlotLayout &last_layout() const { return layout; }
  const std::optional<PlotCursor> &cursor_place() const { return cursor; }
  bool is_zoomed() const { return zoom.has_value(); }
  /// The plot as it is shown: zoomed ranges included.
  PlotData data() const;

  void zoom_back();
  /// Puts the plot on the clipboard, as a picture and as text.
  void copy();
  /// Asks for a name and writes the plot as PNG, SVG or PDF by its extension.
  void save_picture();

  QSize sizeHint() const override { return {500, 300}; }

protected:
  void paintEvent(QPaintEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void mouseMoveEvent(QMouseEvent *event) override;
  void mouseReleaseEvent(QMouseEvent *event) override;
  void mouseDoubleClickEvent(QMouseEvent *event) override;
  void wheelEvent(QWheelEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void contextMenuEvent(QContextMenuEvent *event) override;
  void closeEvent(QCloseEvent *event) override;

private:
  void move_cursor_to(const QPointF &position);
  void move_cursor_by(int step);
  void show_menu(const QPoint &place);
  /// Horizontal and vertical values as lines of text, a tab between them.
  QString data_as_text() const;
  /// The bytes of a picture file with this extension.
  QByteArray picture(const QString &extension) const;

  cBriselApp &app;
  PlotKind kind;
  PlotLayout layout;
  std::optional<ZoomRanges> zoom;
  std::optional<PlotCursor> cursor;
  std::optional<QPointF> zoom_start; // of a drag with the right button
  bool dragging = false;             // far enough to be meant
};

} // namespace brisel
