#include "gui/main_window/current_plot.h"

#include "engine/core/problem_description.h"

namespace brisel {

PlotData current_plot(PlotKind kind) {
  return plot_data_of(setup_plot_labels(kind), plot_state, design_record.plot.sgrid != 0,
                      problem_description(design_record));
}

} // namespace brisel
