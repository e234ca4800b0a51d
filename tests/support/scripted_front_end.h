// scripted_front_end.h - a front end for tests: answers pages as told and keeps what the engine says.
#pragma once

#include "engine/core/front_end.h"

#include <functional>
#include <string>
#include <vector>

namespace brisel {

class ScriptedFrontEnd : public FrontEnd {
public:
  ScriptedFrontEnd() { front_end = this; }
  ~ScriptedFrontEnd() { front_end = nullptr; }

  struct Posted {
    Message number;
    std::string detail;
  };
  std::function<PageResult(Page)> answer = [](Page) { return PageResult::next; };
  std::function<bool(double)> go_on = [](double) { return true; };
  bool keeps_previous = false; // after a run that was stopped or failed
  std::vector<Page> pages;
  std::vector<std::string> announced;
  std::vector<Posted> posted;
  std::vector<std::string> shown;
  std::vector<std::string> complaints;
  int refreshes = 0;

  PageResult run_page(Page page) override {
    pages.push_back(page);
    return answer(page);
  }
  void announce(std::string_view text) override { announced.emplace_back(text); }
  void post_message(Message number, std::string_view detail) override {
    posted.push_back({number, std::string(detail)});
  }
  void show_text(std::string_view text) override { shown.emplace_back(text); }
  void reader_complaint(std::string_view text) override { complaints.emplace_back(text); }
  bool wants_previous_design(RunEnd) override { return keeps_previous; }
  bool progress(double fraction) override { return go_on(fraction); }
  void refresh_plots() override { refreshes++; }
};

} // namespace brisel
