// current_plot.h - the plots of the current design.
#pragma once

#include "gui/plots/plotted_data.h"

namespace brisel {

/// What window, page and picture show of a plot kind: the engine's response arrays, grid and problem line included.
PlotData current_plot(PlotKind kind);

} // namespace brisel
