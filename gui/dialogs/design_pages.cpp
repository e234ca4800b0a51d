#include "gui/dialogs/design_pages.h"

#include "engine/core/design_state.h"
#include "gui/dialogs/delay_pages.h"
#include "gui/dialogs/method_pages.h"
#include "gui/dialogs/spec_pages.h"

#include <QPushButton>

#include <algorithm>
#include <span>
#include <vector>

namespace brisel {

namespace {

// The first page of a sequence has no Prev.
template <class Dialog> PageResult run(QWidget *parent, bool page_before) {
  Dialog dialog(parent);
  if (!page_before) delete dialog.template findChild<QPushButton *>("pPrev_Button");
  return PageResult{dialog.exec()};
}

struct PageDialog {
  PageResult (*run)(QWidget *parent, bool page_before);
  bool (*is_needed)() = [] { return true; };
};

bool has_function_points() {
  const auto bands = std::span(current_spec->fixed_gain).first(static_cast<std::size_t>(current_spec->band_count));
  return std::find(bands.begin(), bands.end(), 0) != bands.end();
}

std::vector<PageDialog> dialogs_of(Page page) {
  switch (page) {
  case Page::low_high_parameters:
    return {{run<cLowHighSpecDialogImpl>}};
  case Page::band_pass_stop_parameters:
    return {{run<cBandPassStopSpecDialogImpl>}};
  case Page::differentiator_parameters:
    return {{run<cDifferSpecDialogImpl>}};
  case Page::multiband_parameters:
    return {{run<cMBandArbMagSpecDialogImpl>}, {run<cMBandSpecDialogImpl>}};
  case Page::hilbert_parameters:
    return {{run<cHilbertSpecDialogImpl>}};
  case Page::arbitrary_magnitude_parameters:
    return {{run<cMBandArbMagSpecDialogImpl>},
            {run<cArbMagSpec1DialogImpl>},
            {run<cArbMagSpec2DialogImpl>, has_function_points}};
  case Page::group_delay_parameters:
    return {{run<cArbGDSpec1DialogImpl>}, {run<cArbGDSpec2DialogImpl>}};
  case Page::halfband_parameters:
    return {{run<cHalfbandSpecDialogImpl>}};
  case Page::raised_cosine_parameters:
    return {{run<cRaiseCosSpecDialogImpl>}};
  case Page::fir:
    return {{run<cFirLengthDialogImpl>}};
  case Page::iir:
    return {{run<cIirOrderEstDialogImpl>}};
  case Page::window:
    return {{run<cFirWinLengthEstDialogImpl>}};
  case Page::optimisation:
    return {{run<cEqLpLsEstDialogImpl>}};
  case Page::compensation:
    return {{run<cCompSpecDialogImpl>}};
  case Page::group_delay:
    return {{run<cArbGDOrderDialogImpl>}};
  case Page::phase_equalization:
    return {{run<cPhaseEQDialogImpl>}};
  }
  return {};
}

} // namespace

PageResult run_design_page(Page page, QWidget *parent, PageResult way, bool page_before) {
  const std::vector<PageDialog> dialogs = dialogs_of(page);
  const auto count = static_cast<int>(dialogs.size());
  for (int at = way == PageResult::back ? count - 1 : 0; at < count; at += way == PageResult::back ? -1 : 1) {
    const PageDialog &dialog = dialogs[static_cast<std::size_t>(at)];
    if (dialog.is_needed()) way = dialog.run(parent, at > 0 || page_before);
    if (way == PageResult::cancelled || (way == PageResult::back && at == 0)) break;
  }
  return way;
}

} // namespace brisel
