// design_pages.h - the dialogs behind the pages of a design run.
#pragma once

#include "engine/core/front_end.h"

class QWidget;

namespace brisel {

/// Runs the dialog of a page, which may be two dialogs in sequence.
PageResult run_design_page(Page page, QWidget *parent);

} // namespace brisel
