// design_pages.h - the dialogs behind the pages of a design run.
#pragma once

#include "engine/core/front_end.h"

class QWidget;

namespace brisel {

/// Runs the dialogs of a page, which may be several in sequence: from the first when the page is entered forwards,
/// `way` being `next`, from the last when it is entered backwards. The first has a Prev when there is a page before it.
PageResult run_design_page(Page page, QWidget *parent, PageResult way, bool page_before);

} // namespace brisel
