#include "gui/main_window/text_viewer.h"

#include "engine/core/front_end.h"
#include "engine/files/text_file.h"
#include "gui/main_window/icons.h"
#include "gui/plots/plot_style.h"

#include <QFileInfo>
#include <QTextBrowser>

namespace brisel {

namespace {

constexpr double width_fraction = 0.7, height_fraction = 0.8; // of the main window
constexpr std::size_t largest_text = 16 << 20;

} // namespace

void show_text_file(const QString &path, QWidget *main_window) {
  const auto text = read_file(path.toStdString(), largest_text);
  if (!text) return post_message(Message::cannot_read_file, path.toStdString() + ": " + unreadable(path.toStdString()));
  auto *viewer = new QTextBrowser(main_window);
  viewer->setWindowFlag(Qt::Window);
  viewer->setAttribute(Qt::WA_DeleteOnClose);
  viewer->setSearchPaths({QFileInfo(path).path()});
  viewer->setFont(plot_style(display_settings).text_font);
  viewer->setLineWrapMode(QTextEdit::NoWrap);
  viewer->setPlainText(QString::fromUtf8(text->data(), static_cast<qsizetype>(text->size())));
  viewer->setWindowTitle(path);
  viewer->setWindowIcon(application_icon());
  viewer->resize(static_cast<int>(main_window->width() * width_fraction),
                 static_cast<int>(main_window->height() * height_fraction));
  viewer->show();
}

} // namespace brisel
