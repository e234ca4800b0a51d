#include "gui/dialogs/method_pages.h"

#include "engine/core/design_state.h"
#include "engine/core/spec_check.h"
#include "engine/fir/compensation.h"
#include "engine/fir/length_estimate.h"
#include "engine/fir/optimal_length.h"
#include "engine/iir/order_estimate.h"
#include "engine/iir/selectivity.h"

#include <utility>

namespace brisel {

namespace {

/// The current specification as the length and order estimates want it: with a sampling frequency of 2 pi.
FilterSpec normalised_spec() {
  FilterSpec spec = *current_spec;
  spec.sampling_period = two_pi / spec.sampling_frequency;
  return normalised(spec);
}

// Entered in radians per second, used in radians per sample.
double entered_width() {
  return design_state.transition_width * two_pi / current_spec->sampling_frequency;
}

QString method_name() {
  const std::string_view name = design_methods[static_cast<std::size_t>(design_state.DesignOrAnalysisType)].name;
  return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

} // namespace

// --- windows

cFirWinLengthEstDialogImpl::cFirWinLengthEstDialogImpl(QWidget *parent) : SequencePage(parent, "window-length") {
  setupUi(this);
  fir_length_estimate(normalised_spec(), lengths, entered_width());
  window = current_spec->window_type < offered_window_count ? current_spec->window_type : kaiser_window;
  for (int i = 0; i < offered_window_count; i++) {
    const int estimate = lengths[static_cast<std::size_t>(i)];
    findChild<QLabel *>(QString("pLength%1_Label").arg(i))->setText(QString::fromStdString(length_text(estimate)));
    auto *button = findChild<QRadioButton *>(QString("pWindow%1_Button").arg(i));
    button->setChecked(i == window);
    connect(button, &QRadioButton::clicked, this, [this, i, estimate] {
      window = i;
      pLength_Edit->setText(QString::number(estimate));
    });
  }
  const int given = current_spec->length;
  pLength_Edit->setText(QString::number(given ? given : lengths[static_cast<std::size_t>(window)]));
  begin(longest_whole_number);
}

void cFirWinLengthEstDialogImpl::read() {
  for (int i = 0; i < offered_window_count; i++) // arrow keys choose as well
    if (findChild<QRadioButton *>(QString("pWindow%1_Button").arg(i))->isChecked() && window != i) {
      window = i;
      pLength_Edit->setText(QString::number(lengths[static_cast<std::size_t>(i)]));
    }
  length = estimated_or_own(pLength_Edit, min_taps, max_taps, lengths[static_cast<std::size_t>(window)]);
}

void cFirWinLengthEstDialogImpl::store() {
  current_spec->window_type = window;
  current_spec->length = length;
}

// --- any FIR method

cFirLengthDialogImpl::cFirLengthDialogImpl(QWidget *parent) : SequencePage(parent, "fir-length") {
  setupUi(this);
  windowed = design_state.DesignOrAnalysisType == code(DesignMethod::window);
  pDesignMethod_Label->setText("Design Method: " + method_name());
  fir_length_estimate(normalised_spec(), lengths, entered_width());
  pWindow_Box->setCurrentIndex(current_spec->window_type < offered_window_count ? current_spec->window_type
                                                                                : rectangular_window);
  pWindow_Box->setEnabled(windowed);
  pLength_Edit->setText(QString::number(current_spec->length ? current_spec->length : estimate()));
  connect(pWindow_Box, &QComboBox::currentIndexChanged, this,
          [this] { pLength_Edit->setText(QString::number(estimate())); });
  begin(longest_whole_number);
}

int cFirLengthDialogImpl::estimate() const {
  if (windowed) return lengths[static_cast<std::size_t>(pWindow_Box->currentIndex())];
  return optimal_length(normalised_spec(), FirSymmetry{static_cast<std::int8_t>(design_state.symmetry)},
                        entered_width());
}

void cFirLengthDialogImpl::read() {
  length = estimated_or_own(pLength_Edit, min_taps, max_taps, estimate());
}

void cFirLengthDialogImpl::store() {
  if (windowed) current_spec->window_type = pWindow_Box->currentIndex();
  current_spec->length = length;
}

// --- equiripple, linear programming, least squares

cEqLpLsEstDialogImpl::cEqLpLsEstDialogImpl(QWidget *parent) : SequencePage(parent, "optimal-length") {
  setupUi(this);
  setWindowTitle(method_name());
  pDesignType_Label->setText("Design Type: " + method_name());
  pSymmetric_Button->setChecked(design_state.symmetry != code(FirSymmetry::antisymmetric));
  pAntiSymmetric_Button->setChecked(!pSymmetric_Button->isChecked());
  const int rolloff = design_state.rolloff_db;
  const auto *offered = findChild<QRadioButton *>(QString("pRolloff%1_Button").arg(rolloff));
  for (int db = 0; db <= steepest_rolloff; db += rolloff_step)
    findChild<QRadioButton *>(QString("pRolloff%1_Button").arg(db))->setChecked(db == (offered ? rolloff : 0));
  const bool band_pass = current_spec->type == code(FilterType::band_pass);
  pTransition_Box->setEnabled(band_pass);
  pTransition_Box->setCurrentIndex(band_pass && current_spec->split_transition != 0);
  for (const NameRow &row : optima) pOptimum_Box->addItem(QString::fromUtf8(row.name.data(), row.name.size()));
  pOptimum_Box->setEnabled(design_state.DesignOrAnalysisType == code(DesignMethod::equiripple));
  pOptimum_Box->setCurrentIndex(pOptimum_Box->isEnabled() ? design_state.optimum : code(Optimum::grid));
  if (current_spec->length) pLength_Edit->setText(QString::number(current_spec->length));
  begin(longest_whole_number);
}

FirSymmetry cEqLpLsEstDialogImpl::symmetry() const {
  return pSymmetric_Button->isChecked() ? FirSymmetry::symmetric : FirSymmetry::antisymmetric;
}

void cEqLpLsEstDialogImpl::read() {
  const int taps = optimal_length(normalised_spec(), symmetry(), entered_width());
  pEstimate_Label->setText(QString::fromStdString(length_text(taps)));
  const QString estimate = QString::number(taps), before = std::exchange(last_estimate, estimate);
  // The length follows the estimate until the user enters an own one.
  if (before != estimate && (pLength_Edit->text().isEmpty() || pLength_Edit->text() == before))
    pLength_Edit->setText(estimate);
  length = estimated_or_own(pLength_Edit, min_taps, max_taps, estimate.toInt());
}

void cEqLpLsEstDialogImpl::store() {
  design_state.symmetry = static_cast<std::uint8_t>(symmetry());
  for (int db = 0; db <= steepest_rolloff; db += rolloff_step)
    if (findChild<QRadioButton *>(QString("pRolloff%1_Button").arg(db))->isChecked())
      design_state.rolloff_db = static_cast<std::int16_t>(db);
  if (pTransition_Box->isEnabled()) current_spec->split_transition = pTransition_Box->currentIndex();
  if (pOptimum_Box->isEnabled()) design_state.optimum = static_cast<std::uint8_t>(pOptimum_Box->currentIndex());
  current_spec->length = length;
}

// --- analog prototypes

cIirOrderEstDialogImpl::cIirOrderEstDialogImpl(QWidget *parent) : SequencePage(parent, "iir-order") {
  setupUi(this);
  const FilterSpec spec = normalised_spec();
  const double k = iir_selectivity(spec, ZTransform{design_state.ZTransformMethod});
  estimate_iir_orders(orders, k, spec.passband_ripple, spec.stopband_ripple,
                      FilterType{static_cast<std::int8_t>(spec.type)});
  prototype = design_state.analog_type;
  for (std::size_t i = 0; i < orders.size(); i++) {
    findChild<QLabel *>(QString("pOrder%1_Label").arg(i))->setText(QString::number(orders[i]));
    findChild<QRadioButton *>(QString("pPrototype%1_Button").arg(i))->setChecked(static_cast<int>(i) == prototype);
  }
  order = design_state.order;
  pOrder_Edit->setText(QString::number(order ? order : orders[static_cast<std::size_t>(prototype)]));
  begin(longest_whole_number);
}

void cIirOrderEstDialogImpl::read() {
  for (std::size_t i = 0; i < orders.size(); i++)
    if (findChild<QRadioButton *>(QString("pPrototype%1_Button").arg(i))->isChecked() &&
        prototype != static_cast<int>(i)) {
      prototype = static_cast<int>(i);
      pOrder_Edit->setText(QString::number(orders[i]));
    }
  order = estimated_or_own(pOrder_Edit, 1, max_order, orders[static_cast<std::size_t>(prototype)]);
  const bool band_filter =
      current_spec->type == code(FilterType::band_pass) || current_spec->type == code(FilterType::band_stop);
  if (band_filter && order % 2) mark(pOrder_Edit, "the order of a bandpass or bandstop filter is even");
}

void cIirOrderEstDialogImpl::store() {
  design_state.analog_type = static_cast<std::int8_t>(prototype);
  design_state.order = static_cast<std::int16_t>(order);
}

// --- compensation

cCompSpecDialogImpl::cCompSpecDialogImpl(QWidget *parent) : SequencePage(parent, "compensation") {
  setupUi(this);
  pComb_Button->setChecked(design_state.CompensationType == 1);
  pSinc_Button->setChecked(!pComb_Button->isChecked());
  const auto start = [](QLineEdit *edit, int &value, int stored) {
    if (stored) value = stored;
    edit->setText(QString::number(value));
  };
  start(pRate_Edit, rate, design_state.CompensationRateChange);
  start(pDelay_Edit, delay, design_state.CompensationDifferentialDelay);
  start(pStages_Edit, stages, design_state.CompensationNumberOfStages);
  begin(longest_whole_number);
}

void cCompSpecDialogImpl::read() {
  const bool comb = pComb_Button->isChecked();
  for (QLineEdit *edit : {pRate_Edit, pDelay_Edit, pStages_Edit}) edit->setEnabled(comb);
  if (!comb) return;
  rate = whole_number_in(pRate_Edit, 1, max_compensation_setting).value_or(rate);
  delay = whole_number_in(pDelay_Edit, 1, max_compensation_setting).value_or(delay);
  stages = whole_number_in(pStages_Edit, 1, max_compensation_setting).value_or(stages);
}

void cCompSpecDialogImpl::store() {
  design_state.CompensationType = pComb_Button->isChecked();
  if (!pComb_Button->isChecked()) return;
  design_state.CompensationRateChange = static_cast<std::uint8_t>(rate);
  design_state.CompensationDifferentialDelay = static_cast<std::uint8_t>(delay);
  design_state.CompensationNumberOfStages = static_cast<std::uint8_t>(stages);
}

} // namespace brisel
