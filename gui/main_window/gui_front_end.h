// gui_front_end.h - the engine's front end in the workstation: dialogs, status bar, message boxes.
#pragma once

#include "engine/core/front_end.h"

#include <QElapsedTimer>

namespace brisel {

class cBriselApp;

class GuiFrontEnd : public FrontEnd {
public:
  explicit GuiFrontEnd(cBriselApp &window);
  ~GuiFrontEnd();

  /// The run that is going on, if any, ends at its next report.
  void stop() { stop_pressed = true; }

  /// The pages of a run come next. `page_before` says that a page of the command led to them.
  void begin_pages(bool page_before) {
    way = PageResult::next;
    command_has_page = page_before;
  }

  PageResult run_page(Page page) override;
  void announce(std::string_view text) override;
  void post_message(Message number, std::string_view detail) override;
  void show_text(std::string_view text) override;
  void reader_complaint(std::string_view text) override;
  bool progress(double fraction) override;
  void refresh_plots() override;
  bool wants_previous_design(RunEnd end) override;

private:
  cBriselApp &window;
  QElapsedTimer since_start; // of the run
  QElapsedTimer since_events;
  bool shows_progress = false;
  bool stop_pressed = false;
  PageResult way = PageResult::next; // on which the last page was left
  bool command_has_page = false;
};

} // namespace brisel
