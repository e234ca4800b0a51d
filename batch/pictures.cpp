#include "batch/pictures.h"

#ifdef BRISEL_PICTURES
#include "engine/core/messages.h"
#include "engine/core/problem_description.h"
#include "gui/plots/picture_module.h"
#endif

namespace brisel {

static bool wants_pictures(const Job &job) {
  return !job.plots.empty() || !job.pdf.empty();
}

#ifdef BRISEL_PICTURES

void refuse_missing_pictures(const Job &) {}

void add_pictures(const Job &job, Outputs &outputs) {
  if (!wants_pictures(job)) return;
  PictureJob drawing;
  for (int kind = 0; kind < plot_kind_count; kind++)
    drawing.plots.push_back(setup_plot_labels(PlotKind{static_cast<std::int8_t>(kind)}));
  drawing.state = &plot_state;
  drawing.display = &display_settings;
  drawing.grid = design_record.plot.sgrid != 0;
  drawing.problem = problem_description(design_record);
  drawing.png = !job.plots.empty();
  drawing.pdf = !job.pdf.empty();
  PictureResult drawn;
  if (!render_pictures(program_directory, drawing, drawn)) throw JobFailure(exit_failed, drawn.error);
  for (Picture &picture : drawn.pictures)
    outputs.add(picture.name.ends_with(".pdf") ? job.pdf : job.plots + "/" + picture.name, std::move(picture.bytes));
}

#else

void refuse_missing_pictures(const Job &job) {
  if (wants_pictures(job))
    throw JobFailure(exit_usage, std::string(job.plots.empty() ? "--pdf" : "--plots") +
                                     ": this program was built without the toolkit that draws pictures");
}

void add_pictures(const Job &, Outputs &) {}

#endif

} // namespace brisel
