// quiet_front_end.h - a front end for fuzz targets: says nothing and answers every page with "cancelled".
#pragma once

#include "engine/core/front_end.h"

namespace brisel {

class QuietFrontEnd : public FrontEnd {
public:
  QuietFrontEnd() { front_end = this; }

  PageResult run_page(Page) override { return PageResult::cancelled; }
  void announce(std::string_view) override {}
  void post_message(Message, std::string_view) override {}
  void show_text(std::string_view) override {}
  void reader_complaint(std::string_view) override {}
  bool progress(double) override { return true; }
  void refresh_plots() override {}
};

} // namespace brisel
