#include "engine/iir/form_notes.h"

#include "engine/analysis/form_digits.h"
#include "engine/core/design_state.h"
#include "engine/files/text_file.h"

#include <algorithm>

namespace brisel {

static void note(std::string text) {
  if (std::find(design_notes.begin(), design_notes.end(), text) == design_notes.end())
    design_notes.push_back(std::move(text));
}

void note_dropped_delay(int delay) {
  if (delay != 0)
    note(formatf("A delay of %d sample%s was dropped from the cascaded sections.", delay, delay == 1 ? "" : "s"));
}

void note_forms(const FormReport &found, RealizationForm chosen, std::string_view prefix) {
  constexpr double enough = 9;
  const struct {
    const char *name;
    double digits;
    bool wanted = true;
  } rows[] = {{"cascaded form", found.cascade},
              {"parallel form", found.parallel},
              {"pole/zero form", found.pole_zero},
              {"ratio form", found.ratio},
              {"lattice form", found.lattice},
              {"ladder form I", found.ladder_1, chosen == RealizationForm::ladder_1},
              {"ladder form II", found.ladder_2, chosen == RealizationForm::ladder_2}};
  for (const auto &row : rows) {
    if (!row.wanted) continue;
    const std::string subject = std::string(prefix) + (prefix.empty() ? "The " : "the ") + row.name;
    if (row.digits < 0)
      note(subject + " does not exist for this filter.");
    else if (row.digits < enough)
      note(subject + " keeps " + digits_text(row.digits) + ".");
  }
  note_dropped_delay(found.dropped_delay);
}

} // namespace brisel
