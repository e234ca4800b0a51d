#include "gui/dialogs/cPlotControlDialogImpl.h"

#include "engine/analysis/plot_arrays.h"
#include "engine/files/design_report.h"
#include "gui/main_window/brisel_app.h"

#include <cmath>

namespace brisel {

cPlotControlDialogImpl::cPlotControlDialogImpl(cBriselApp *app)
    : SequencePage(app, "plot-control"), window(app), offered(plot_settings) {
  setupUi(this);
  add_unit(pFreqMin_Edit, frequency_unit());
  add_unit(pLogMin_Edit, "dB");
  connect(pDefault_Button, &QPushButton::clicked, this, &cPlotControlDialogImpl::Default);
  show_settings();
  begin();
}

void cPlotControlDialogImpl::show_settings() {
  const PlotSettings &p = offered;
  pLogFreq_Box->setChecked(p.PlotType0Linear1Log);
  pPoleZero_Box->setChecked(p.cpanz);
  pDetail_Box->setChecked(p.detout);
  pGrid_Box->setChecked(p.sgrid);
  pAutoRange_Box->setChecked(p.autoreset);
  pSinc_Box->setChecked(p.sinc);
  pFreqMin_Edit->setText(shown_frequency(p.frequency_range[0]));
  pFreqMax_Edit->setText(shown_frequency(p.frequency_range[1]));
  pMagMin_Edit->setText(shown(p.magnitude_range[0]));
  pMagMax_Edit->setText(shown(p.magnitude_range[1]));
  pLogMin_Edit->setText(shown(p.log_magnitude_range[0]));
  pLogMax_Edit->setText(shown(p.log_magnitude_range[1]));
  pNumTimePoints_Edit->setText(QString::number(p.dnimp));
  pNumFreqPoints_Edit->setText(QString::number(p.nfpts));
  pMaxInterpPoints_Edit->setText(QString::number(p.ninterp));
}

// A field that was not touched keeps its value to the last bit.
void cPlotControlDialogImpl::read_range(QLineEdit *low, QLineEdit *high, double factor, Range &range) {
  const std::array<QLineEdit *, 2> edits{low, high};
  for (std::size_t end = 0; end < edits.size(); end++) {
    const auto value = number_in(edits[end]);
    if (!value) return;
    if (edits[end]->isModified()) range[end] = *value * factor;
    if (!std::isfinite(range[end])) return mark(edits[end], "too large");
  }
  if (range[0] > range[1]) mark(low, "the range begins above its end");
}

void cPlotControlDialogImpl::read_count(QLineEdit *edit, int lowest, int highest, std::int32_t &count) {
  if (const auto value = whole_number_in(edit, lowest, highest)) count = *value;
}

void cPlotControlDialogImpl::read() {
  PlotSettings &p = typed;
  p = offered;
  p.PlotType0Linear1Log = pLogFreq_Box->isChecked();
  p.cpanz = pPoleZero_Box->isChecked();
  p.detout = pDetail_Box->isChecked();
  p.sgrid = pGrid_Box->isChecked();
  p.autoreset = pAutoRange_Box->isChecked();
  p.sinc = pSinc_Box->isChecked();
  read_range(pFreqMin_Edit, pFreqMax_Edit, design_state.unit_factor, p.frequency_range);
  if (p.frequency_range[0] < 0) mark(pFreqMin_Edit, "frequencies begin at 0");
  if (p.frequency_range[0] < p.frequency_range[1] && !is_plottable(p.frequency_range, p.PlotType0Linear1Log))
    mark(pFreqMin_Edit, "there is no axis for this range");
  read_range(pMagMin_Edit, pMagMax_Edit, 1, p.magnitude_range);
  read_range(pLogMin_Edit, pLogMax_Edit, 1, p.log_magnitude_range);
  read_count(pNumTimePoints_Edit, 1, max_time_points, p.dnimp);
  read_count(pNumFreqPoints_Edit, 2, max_frequency_points, p.nfpts);
  read_count(pMaxInterpPoints_Edit, 0, max_interpolated_points, p.ninterp);
}

void cPlotControlDialogImpl::Default() {
  offered = {};
  offered.cpanz = offered.sgrid = offered.autoreset = 1;
  offered.frequency_range = {0, window->has_result() ? design_record.loaded.sampling_frequency / 2 : 0};
  offered.magnitude_range = default_magnitude_ranges.front();
  offered.log_magnitude_range = default_log_magnitude_ranges.front();
  offered.nfpts = default_frequency_points;
  offered.dnimp = default_time_points;
  offered.ninterp = max_interpolated_points;
  show_settings();
  check();
}

void cPlotControlDialogImpl::store() {
  plot_settings = typed;
  report_off = !plot_settings.detout;
  window->recompute_responses();
}

} // namespace brisel
