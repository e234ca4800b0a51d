#include "gui/dialogs/cPlotControlDialogImpl.h"

#include "engine/analysis/plot_arrays.h"
#include "engine/files/text_file.h"
#include "gui/dialogs/help.h"
#include "gui/main_window/brisel_app.h"

#include <cmath>

namespace brisel {

namespace {

QString shown(double value) {
  return QString::fromStdString(formatf("%.10g", value));
}

std::optional<double> typed(const QLineEdit *edit) {
  const std::string text = edit->text().trimmed().toStdString();
  std::size_t used = 0;
  const auto value = parse_number(text, &used);
  return used == text.size() ? value : std::nullopt;
}

} // namespace

cPlotControlDialogImpl::cPlotControlDialogImpl(cBriselApp *app) : QDialog(app), window(app) {
  setupUi(this);
  show_settings(plot_settings);
  connect(pAccept_Button, &QPushButton::clicked, this, &cPlotControlDialogImpl::accept);
  connect(pDefault_Button, &QPushButton::clicked, this, &cPlotControlDialogImpl::Default);
  connect(pHelp_Button, &QPushButton::clicked, this, &cPlotControlDialogImpl::Help);
  for (QLineEdit *edit : findChildren<QLineEdit *>())
    connect(edit, &QLineEdit::textChanged, this, &cPlotControlDialogImpl::check);
  check();
}

void cPlotControlDialogImpl::show_settings(const PlotSettings &p) {
  pLogFreq_Box->setChecked(p.PlotType0Linear1Log);
  pPoleZero_Box->setChecked(p.cpanz);
  pDetail_Box->setChecked(p.detout);
  pGrid_Box->setChecked(p.sgrid);
  pAutoRange_Box->setChecked(p.autoreset);
  pSinc_Box->setChecked(p.sinc);
  const double unit = design_state.unit_factor_inverse;
  pFreqMin_Edit->setText(shown(p.frequency_range[0] * unit));
  pFreqMax_Edit->setText(shown(p.frequency_range[1] * unit));
  pMagMin_Edit->setText(shown(p.magnitude_range[0]));
  pMagMax_Edit->setText(shown(p.magnitude_range[1]));
  pLogMin_Edit->setText(shown(p.log_magnitude_range[0]));
  pLogMax_Edit->setText(shown(p.log_magnitude_range[1]));
  pNumTimePoints_Edit->setText(QString::number(p.dnimp));
  pNumFreqPoints_Edit->setText(QString::number(p.nfpts));
  pMaxInterpPoints_Edit->setText(QString::number(p.ninterp));
}

std::optional<PlotSettings> cPlotControlDialogImpl::typed_settings() {
  PlotSettings p = plot_settings;
  p.PlotType0Linear1Log = pLogFreq_Box->isChecked();
  p.cpanz = pPoleZero_Box->isChecked();
  p.detout = pDetail_Box->isChecked();
  p.sgrid = pGrid_Box->isChecked();
  p.autoreset = pAutoRange_Box->isChecked();
  p.sinc = pSinc_Box->isChecked();

  const auto wrong = [this](const QString &reason) {
    pProblem_Label->setText(reason);
    return std::nullopt;
  };
  const double unit = design_state.unit_factor;
  const struct {
    const char *name;
    const QLineEdit *low, *high;
    Range &range;
    double factor;
  } ranges[] = {{"Frequency range", pFreqMin_Edit, pFreqMax_Edit, p.frequency_range, unit},
                {"Magnitude range", pMagMin_Edit, pMagMax_Edit, p.magnitude_range, 1},
                {"Log magnitude range", pLogMin_Edit, pLogMax_Edit, p.log_magnitude_range, 1}};
  for (const auto &row : ranges) {
    const auto low = typed(row.low), high = typed(row.high);
    if (!low || !high) return wrong(QString(row.name) + ": two numbers are needed");
    if (*low > *high) return wrong(QString(row.name) + ": the first value is above the second");
    row.range = {*low * row.factor, *high * row.factor};
    if (!std::isfinite(row.range[0]) || !std::isfinite(row.range[1])) return wrong(QString(row.name) + ": too large");
  }
  if (p.frequency_range[0] < 0) return wrong("Frequency range: below 0");
  const struct {
    const char *name;
    const QLineEdit *edit;
    std::int32_t &count;
    int lowest, highest;
  } counts[] = {{"Points in time domain", pNumTimePoints_Edit, p.dnimp, 1, max_time_points},
                {"Points in frequency domain", pNumFreqPoints_Edit, p.nfpts, 2, max_frequency_points},
                {"Points for interpolation", pMaxInterpPoints_Edit, p.ninterp, 0, max_interpolated_points}};
  for (const auto &row : counts) {
    bool good = false;
    row.count = row.edit->text().trimmed().toInt(&good);
    if (!good || row.count < row.lowest || row.count > row.highest)
      return wrong(QString("%1: a whole number from %2 to %3").arg(row.name).arg(row.lowest).arg(row.highest));
  }
  pProblem_Label->clear();
  return p;
}

void cPlotControlDialogImpl::check() {
  pAccept_Button->setEnabled(typed_settings().has_value());
}

void cPlotControlDialogImpl::Default() {
  PlotSettings p = plot_settings;
  p.PlotType0Linear1Log = p.detout = p.sinc = 0;
  p.cpanz = p.sgrid = p.autoreset = 1;
  const double half_sampling = window->has_result() ? design_record.loaded.sampling_frequency / 2 : 0;
  p.frequency_range = {0, half_sampling};
  p.magnitude_range = default_magnitude_ranges.front();
  p.log_magnitude_range = default_log_magnitude_ranges.front();
  p.nfpts = default_frequency_points;
  p.dnimp = default_time_points;
  p.ninterp = max_interpolated_points;
  show_settings(p);
}

void cPlotControlDialogImpl::Help() {
  show_help("plot-control", this);
}

void cPlotControlDialogImpl::accept() {
  const auto settings = typed_settings();
  if (!settings) return;
  plot_settings = *settings;
  window->recompute_responses();
  QDialog::accept();
}

} // namespace brisel
