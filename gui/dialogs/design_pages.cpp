#include "gui/dialogs/design_pages.h"

#include "engine/core/design_state.h"
#include "gui/dialogs/delay_pages.h"
#include "gui/dialogs/method_pages.h"
#include "gui/dialogs/spec_pages.h"

#include <algorithm>
#include <span>

namespace brisel {

namespace {

template <class Dialog> PageResult run(QWidget *parent) {
  return PageResult{Dialog(parent).exec()};
}

// Prev on the second leads to the first, with its values.
template <class First, class Second> PageResult run_both(QWidget *parent) {
  for (;;) {
    const PageResult first = run<First>(parent);
    if (first != PageResult::next) return first;
    const PageResult second = run<Second>(parent);
    if (second != PageResult::back) return second;
  }
}

bool has_function_points() {
  const auto bands = std::span(current_spec->fixed_gain).first(static_cast<std::size_t>(current_spec->band_count));
  return std::find(bands.begin(), bands.end(), 0) != bands.end();
}

PageResult run_arbitrary_magnitude(QWidget *parent) {
  for (;;) {
    const PageResult bands = run_both<cMBandArbMagSpecDialogImpl, cArbMagSpec1DialogImpl>(parent);
    if (bands != PageResult::next || !has_function_points()) return bands;
    const PageResult points = run<cArbMagSpec2DialogImpl>(parent);
    if (points != PageResult::back) return points;
  }
}

} // namespace

PageResult run_design_page(Page page, QWidget *parent) {
  switch (page) {
  case Page::low_high_parameters:
    return run<cLowHighSpecDialogImpl>(parent);
  case Page::band_pass_stop_parameters:
    return run<cBandPassStopSpecDialogImpl>(parent);
  case Page::differentiator_parameters:
    return run<cDifferSpecDialogImpl>(parent);
  case Page::multiband_parameters:
    return run_both<cMBandArbMagSpecDialogImpl, cMBandSpecDialogImpl>(parent);
  case Page::hilbert_parameters:
    return run<cHilbertSpecDialogImpl>(parent);
  case Page::arbitrary_magnitude_parameters:
    return run_arbitrary_magnitude(parent);
  case Page::group_delay_parameters:
    return run_both<cArbGDSpec1DialogImpl, cArbGDSpec2DialogImpl>(parent);
  case Page::halfband_parameters:
    return run<cHalfbandSpecDialogImpl>(parent);
  case Page::raised_cosine_parameters:
    return run<cRaiseCosSpecDialogImpl>(parent);
  case Page::fir:
    return run<cFirLengthDialogImpl>(parent);
  case Page::iir:
    return run<cIirOrderEstDialogImpl>(parent);
  case Page::window:
    return run<cFirWinLengthEstDialogImpl>(parent);
  case Page::optimisation:
    return run<cEqLpLsEstDialogImpl>(parent);
  case Page::compensation:
    return run<cCompSpecDialogImpl>(parent);
  case Page::group_delay:
    return run<cArbGDOrderDialogImpl>(parent);
  case Page::phase_equalization:
    return run<cPhaseEQDialogImpl>(parent);
  }
  return PageResult::next;
}

} // namespace brisel
