// front_end.h - the front end of a batch job: the command line answers the pages, messages become one line.
#pragma once

#include "batch/job.h"
#include "engine/core/front_end.h"

#include <vector>

namespace brisel {

/// Lines of a message as one.
std::string one_line(std::string text);

class BatchFrontEnd final : public FrontEnd {
public:
  explicit BatchFrontEnd(const Job &job) : job(job) {}

  PageResult run_page(Page page) override;
  void announce(std::string_view) override {}
  void post_message(Message number, std::string_view detail) override;
  void show_text(std::string_view) override {}
  void reader_complaint(std::string_view) override {} // what the posted detail says in fewer words
  bool progress(double) override { return true; }
  void refresh_plots() override {}

  /// What went wrong, in one line; `otherwise` when the engine gave no message.
  std::string failure(const std::string &otherwise) const;
  /// Moves messages that came with a valid result to the design notes.
  void messages_to_notes();

private:
  struct Posted {
    Message number;
    std::string detail;
  };
  std::string line(const Posted &message) const;

  const Job &job;
  std::vector<Posted> posted;
};

} // namespace brisel
