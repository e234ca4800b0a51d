#include "batch/front_end.h"

#include "engine/core/messages.h"

#include <algorithm>

namespace brisel {

PageResult BatchFrontEnd::run_page(Page page) {
  // The parameter pages have nothing to ask: the specification was loaded before the run.
  switch (page) {
  case Page::fir:
  case Page::window:
  case Page::optimisation:
    current_spec->length = job.length.value_or(0);
    if (job.window) current_spec->window_type = *job.window;
    if (job.split) current_spec->split_transition = 1;
    design_state.optimum = static_cast<std::uint8_t>(job.optimum.value_or(code(Optimum::grid)));
    design_state.rolloff_db = static_cast<std::int16_t>(job.stopband_slope.value_or(0) * rolloff_step);
    if (job.symmetry) design_state.symmetry = static_cast<std::uint8_t>(*job.symmetry);
    break;
  case Page::iir:
    if (job.prototype) design_state.analog_type = static_cast<std::int8_t>(*job.prototype);
    design_state.order = static_cast<std::int16_t>(job.order.value_or(0));
    break;
  case Page::phase_equalization:
    design_state.delay_sections = static_cast<std::int16_t>(job.phase_equalizer.value_or(0));
    design_state.delay_ripple = job.delay_ripple.value_or(0);
    break;
  case Page::group_delay:
    design_state.delay_sections = static_cast<std::int16_t>(job.delay_sections.value_or(job.order.value_or(0) / 2));
    break;
  default:
    break;
  }
  return PageResult::next;
}

void BatchFrontEnd::post_message(Message number, std::string_view detail) {
  posted.push_back({number, std::string(detail)});
}

std::string one_line(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

std::string BatchFrontEnd::line(const Posted &message) const {
  std::string text = message_text(message.number);
  if (!message.detail.empty()) {
    // The first line says what happened, the detail why. The detail of a reader begins with file and line.
    text.resize(std::min(text.find('\n'), text.size()));
    while (!text.empty() && text.back() == '.') text.pop_back();
    return message.detail.starts_with(job.input) ? message.detail + " (" + text + ")" : text + ": " + message.detail;
  }
  return one_line(std::move(text));
}

std::string BatchFrontEnd::failure(const std::string &otherwise) const {
  if (posted.empty()) return otherwise;
  // A detail that does not say which file is about the one that the job works on.
  const std::string text = line(posted.front());
  return text.find(job.input) == text.npos ? job.input + ": " + text : text;
}

void BatchFrontEnd::messages_to_notes() {
  for (const Posted &message : posted)
    if (message.number != Message::quantized_unstable) design_notes.push_back(line(message)); // has a note already
  posted.clear();
}

} // namespace brisel
