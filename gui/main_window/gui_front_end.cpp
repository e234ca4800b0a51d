#include "gui/main_window/gui_front_end.h"

#include "engine/core/messages.h"
#include "gui/dialogs/design_pages.h"
#include "gui/main_window/brisel_app.h"

#include <QCoreApplication>
#include <QMessageBox>

#include <cstdio>

namespace brisel {

namespace {

constexpr int progress_shows_after_ms = 300; // shorter runs would only flicker
constexpr int events_every_ms = 30;

QString text_of(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Names of files and values are data: no markup is made of them.
void show_box(QMessageBox::Icon icon, const QString &text, QWidget *parent) {
  QMessageBox box(icon, "Brisel", QString(), QMessageBox::Ok, parent);
  box.setTextFormat(Qt::PlainText);
  box.setText(text.trimmed());
  box.exec();
}

} // namespace

GuiFrontEnd::GuiFrontEnd(cBriselApp &app) : window(app) {
  front_end = this;
}

GuiFrontEnd::~GuiFrontEnd() {
  front_end = nullptr;
}

PageResult GuiFrontEnd::run_page(Page page) {
  const bool first = page <= Page::raised_cosine_parameters; // those of the filter types
  return way = run_design_page(page, &window, way, !first || command_has_page);
}

void GuiFrontEnd::announce(std::string_view text) {
  window.show_state(text_of(text));
  if (text == "Working...") {
    window.run_begins();
    since_start.start();
    since_events.start();
    stop_pressed = shows_progress = false;
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); // the text shows before the work starts
  } else if (text == "Ready") {
    window.run_ends();
  }
}

void GuiFrontEnd::post_message(Message number, std::string_view detail) {
  QString text = QString::fromStdString(message_text(number));
  if (!detail.empty()) text = text_of(detail) + "\n\n" + text;
  show_box(number == Message::about ? QMessageBox::Information : QMessageBox::Warning, text, &window);
}

void GuiFrontEnd::show_text(std::string_view text) {
  show_box(QMessageBox::Information, text_of(text), &window);
}

void GuiFrontEnd::reader_complaint(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
}

bool GuiFrontEnd::progress(double fraction) {
  if (since_events.elapsed() < events_every_ms) return !stop_pressed;
  since_events.restart();
  shows_progress = shows_progress || since_start.elapsed() > progress_shows_after_ms;
  if (shows_progress) window.show_progress(fraction);
  // Once the bar shows, everything but the Stop button is disabled: no command can start inside another.
  QCoreApplication::processEvents(shows_progress ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
  return !stop_pressed;
}

void GuiFrontEnd::refresh_plots() {
  window.refresh_plots();
}

bool GuiFrontEnd::wants_previous_design(RunEnd end) {
  window.show_run_end(end);
  return true;
}

} // namespace brisel
