#include "gui/main_window/icons.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

// In a static library the linker drops resources that nothing asks for.
static void register_icons() {
  Q_INIT_RESOURCE(main_window);
}

namespace brisel {

namespace {

constexpr int scales[] = {1, 2, 3};

QPixmap rendered(const QByteArray &drawing, int size) {
  QSvgRenderer renderer(drawing);
  QPixmap pixmap(size, size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  renderer.render(&painter);
  return pixmap;
}

QByteArray drawing_of(const QString &name) {
  register_icons();
  QFile file(":/icons/" + name + ".svg");
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

QIcon command_icon(const QString &name, const QPalette &palette) {
  const QByteArray drawing = drawing_of(name);
  QIcon icon;
  for (const auto &[mode, group] :
       {std::pair{QIcon::Normal, QPalette::Active}, {QIcon::Disabled, QPalette::Disabled}}) {
    QByteArray coloured = drawing;
    coloured.replace("#000000", palette.color(group, QPalette::WindowText).name().toLatin1());
    for (const int scale : scales) icon.addPixmap(rendered(coloured, scale * tool_icon_size), mode);
  }
  return icon;
}

QIcon application_icon() {
  QIcon icon;
  for (const int size : {16, 24, 32, 48, 64, 128, 256}) icon.addPixmap(rendered(drawing_of("brisel"), size));
  return icon;
}

} // namespace brisel
