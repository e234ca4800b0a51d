#include "gui/dialogs/spec_pages.h"

#include "engine/core/design_state.h"

#include <QComboBox>

#include <algorithm>

namespace brisel {

namespace {

constexpr auto hz = FieldUnit::frequency;

QString caption(int type) {
  const std::string_view name = filter_types[static_cast<std::size_t>(type)].dialog_name;
  return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

} // namespace

cLowHighSpecDialogImpl::cLowHighSpecDialogImpl(QWidget *parent) : SpecPage(parent, "low-high") {
  setupUi(this);
  bind({{SamplingFrequency_Edit, SpecField::sampling_frequency, 0, hz},
        {PassbandFrequency_Edit, SpecField::passband_edge, 0, hz},
        {StopbandFrequency_Edit, SpecField::stopband_edge, 0, hz},
        {PassbandRipple_Edit, SpecField::passband_ripple},
        {StopbandRipple_Edit, SpecField::stopband_ripple}});
  begin();
}

cBandPassStopSpecDialogImpl::cBandPassStopSpecDialogImpl(QWidget *parent) : SpecPage(parent, "band-pass-stop") {
  setupUi(this);
  bind({{pSamplingFrequency_Edit, SpecField::sampling_frequency, 0, hz},
        {pPassbandFreq0_Edit, SpecField::passband_edge, 0, hz},
        {pPassbandFreq1_Edit, SpecField::passband_edge, 1, hz},
        {pStopbandFreq0_Edit, SpecField::stopband_edge, 0, hz},
        {pStopbandFreq1_Edit, SpecField::stopband_edge, 1, hz},
        {pPassbandRipple_Edit, SpecField::passband_ripple},
        {pStopbandRipple_Edit, SpecField::stopband_ripple}});
  begin();
}

cDifferSpecDialogImpl::cDifferSpecDialogImpl(QWidget *parent) : SpecPage(parent, "differentiator") {
  setupUi(this);
  bind({{pSampFreq_Edit, SpecField::sampling_frequency, 0, hz},
        {pEdge1Freq_Edit, SpecField::passband_edge, 0, hz},
        {pEdge2Freq_Edit, SpecField::passband_edge, 1, hz},
        {pRipple_Edit, SpecField::passband_ripple},
        {pSlope_Edit, SpecField::slope}});
  begin();
}

cHilbertSpecDialogImpl::cHilbertSpecDialogImpl(QWidget *parent) : SpecPage(parent, "hilbert") {
  setupUi(this);
  bind({{pSampFreq_Edit, SpecField::sampling_frequency, 0, hz},
        {pEdge1Freq_Edit, SpecField::passband_edge, 0, hz},
        {pEdge2Freq_Edit, SpecField::passband_edge, 1, hz},
        {pRipple_Edit, SpecField::passband_ripple}});
  begin();
}

cHalfbandSpecDialogImpl::cHalfbandSpecDialogImpl(QWidget *parent) : SpecPage(parent, "halfband") {
  setupUi(this);
  bind({{pSampFreq_Edit, SpecField::sampling_frequency, 0, hz},
        {pPassFreq_Edit, SpecField::passband_edge, 0, hz},
        {pRipple_Edit, SpecField::stopband_ripple}});
  begin();
}

cRaiseCosSpecDialogImpl::cRaiseCosSpecDialogImpl(QWidget *parent) : SpecPage(parent, "raised-cosine") {
  setupUi(this);
  setWindowTitle(caption(typed.type));
  bind({{pSampFreq_Edit, SpecField::sampling_frequency, 0, hz},
        {pSymbol_Edit, SpecField::symbol_rate, 0, hz},
        {pRolloff_Edit, SpecField::rolloff},
        {pPassRipple_Edit, SpecField::passband_ripple},
        {pStopRipple_Edit, SpecField::stopband_ripple}});
  begin();
}

cMBandArbMagSpecDialogImpl::cMBandArbMagSpecDialogImpl(QWidget *parent)
    : SpecPage(parent, current_spec->type == code(FilterType::multiband) ? "multiband" : "arbitrary-magnitude", false) {
  setupUi(this);
  setWindowTitle(caption(typed.type));
  bind({{pSampFreq_Edit, SpecField::sampling_frequency, 0, hz}});
  pNumBands_Edit->setText(QString::number(typed.band_count));
  begin();
}

void cMBandArbMagSpecDialogImpl::read_more(FilterSpec &spec) {
  const int most = spec.type == code(FilterType::multiband) ? max_bands : max_arbitrary_bands;
  spec.band_count = whole_number_in(pNumBands_Edit, 1, most).value_or(0);
}

QWidget *cMBandArbMagSpecDialogImpl::widget_of(const SpecComplaint &complaint) {
  return complaint.field == SpecField::band_count ? pNumBands_Edit : nullptr;
}

cMBandSpecDialogImpl::cMBandSpecDialogImpl(QWidget *parent) : SpecPage(parent, "multiband") {
  setupUi(this);
  pSampFreq_Label->setText(sampling_frequency_text(typed.sampling_frequency));
  pUnit_Label->setText(frequency_unit());
  std::vector<SpecRow> rows;
  for (int i = 0; i < max_bands; i++) {
    const SpecRow row[] = {{findChild<QLineEdit *>(QString("pLE%1_Edit").arg(i + 1)), SpecField::band_lower, i, hz},
                           {findChild<QLineEdit *>(QString("pRE%1_Edit").arg(i + 1)), SpecField::band_upper, i, hz},
                           {findChild<QLineEdit *>(QString("pDV%1_Edit").arg(i + 1)), SpecField::band_value, i},
                           {findChild<QLineEdit *>(QString("pR%1_Edit").arg(i + 1)), SpecField::band_ripple, i}};
    for (const SpecRow &field : row) {
      field.edit->setEnabled(i < typed.band_count);
      if (i < typed.band_count) rows.push_back(field);
    }
  }
  bind(rows, false);
  begin();
}

cArbMagSpec1DialogImpl::cArbMagSpec1DialogImpl(QWidget *parent) : SpecPage(parent, "arbitrary-magnitude", false) {
  setupUi(this);
  pSampFreq_Label->setText(sampling_frequency_text(typed.sampling_frequency));
  pUnit_Label->setText(frequency_unit());
  std::vector<SpecRow> rows;
  for (int i = 0; i < max_arbitrary_bands; i++) {
    const auto edit = [&](const char *name) { return findChild<QLineEdit *>(QString(name).arg(i + 1)); };
    const auto box = [&](const char *name) { return findChild<QComboBox *>(QString(name).arg(i + 1)); };
    const auto at = static_cast<std::size_t>(i);
    const SpecRow row[] = {{edit("pLE%1_Edit"), SpecField::band_lower, i, hz},
                           {edit("pRE%1_Edit"), SpecField::band_upper, i, hz},
                           {edit("pGV%1_Edit"), SpecField::band_value, i},
                           {edit("pR%1_Edit"), SpecField::band_ripple, i}};
    boxes[at] = {box("pGT%1_Box"), box("pUT%1_Box"), box("pRT%1_Box"), row[2].edit};
    boxes[at].gain_type->setCurrentIndex(!typed.fixed_gain[at]);
    boxes[at].unit_type->setCurrentIndex(typed.list_flag[at] != 0);
    boxes[at].ripple_type->setCurrentIndex(typed.proportional[at] != 0);
    const bool used = i < typed.band_count;
    for (const SpecRow &field : row) {
      field.edit->setEnabled(used);
      if (used) rows.push_back(field);
    }
    for (QComboBox *choice : {boxes[at].gain_type, boxes[at].unit_type, boxes[at].ripple_type})
      choice->setEnabled(used);
  }
  bind(rows, false);
  begin(longest_shown_number); // there are eight columns
}

void cArbMagSpec1DialogImpl::read_more(FilterSpec &spec) {
  for (int i = 0; i < spec.band_count; i++) {
    const auto at = static_cast<std::size_t>(i);
    spec.fixed_gain[at] = boxes[at].gain_type->currentIndex() == 0;
    spec.list_flag[at] = boxes[at].unit_type->currentIndex() == 1;
    spec.proportional[at] = boxes[at].ripple_type->currentIndex() == 1;
    boxes[at].gain_value->setEnabled(spec.fixed_gain[at]);
  }
}

cArbMagSpec2DialogImpl::cArbMagSpec2DialogImpl(QWidget *parent) : SpecPage(parent, "arbitrary-magnitude") {
  setupUi(this);
  entered = typed;
  for (int i = 0; i < typed.band_count; i++) {
    const auto at = static_cast<std::size_t>(i);
    if (typed.fixed_gain[at]) continue;
    pBand_Box->addItem(QString::number(i + 1), i);
    if (entered.point_count[at]) continue;
    // A band without points begins with its two edges.
    const auto slot = static_cast<std::size_t>(i * max_points_per_band);
    entered.point_count[at] = 2;
    entered.function_frequency[slot] = entered.band_lower[at];
    entered.function_frequency[slot + 1] = entered.band_upper[at];
    entered.function_value[slot] = entered.function_value[slot + 1] = entered.list_flag[at] ? 0 : 1;
  }
  points.set_up(pPoints_Table, {"Frequency (" + frequency_unit() + ")", "Value"}, max_points_per_band, pAdd_Button,
                pDelete_Button, pPaste_Button);
  show_band();
  connect(pBand_Box, &QComboBox::currentIndexChanged, this, &cArbMagSpec2DialogImpl::show_band);
  begin();
}

void cArbMagSpec2DialogImpl::show_band() {
  band = pBand_Box->currentData().toInt();
  const auto at = static_cast<std::size_t>(band);
  pValueUnit_Label->setText(entered.list_flag[at] ? "Value Unit: Decibel" : "Value Unit: Linear");
  const double unit = design_state.unit_factor_inverse;
  pLeftEdge_Label->setText(QString::asprintf("Left Edge: %g", entered.band_lower[at] * unit));
  pRightEdge_Label->setText(QString::asprintf("Right Edge: %g", entered.band_upper[at] * unit));
  std::vector<std::vector<double>> rows;
  const auto slot = at * max_points_per_band;
  for (std::size_t i = slot; i < slot + entered.point_count[at]; i++)
    rows.push_back({entered.function_frequency[i] * unit, entered.function_value[i]});
  points.show(rows);
}

void cArbMagSpec2DialogImpl::read_more(FilterSpec &spec) {
  QString why;
  if (const auto rows = points.rows(why)) {
    const auto at = static_cast<std::size_t>(band);
    entered.point_count[at] = static_cast<std::uint8_t>(rows->size());
    for (std::size_t i = 0; i < rows->size(); i++) {
      entered.function_frequency[at * max_points_per_band + i] = (*rows)[i][0] * design_state.unit_factor;
      entered.function_value[at * max_points_per_band + i] = (*rows)[i][1];
    }
  } else {
    mark(pPoints_Table, why);
  }
  spec = entered;
}

cArbGDSpec1DialogImpl::cArbGDSpec1DialogImpl(QWidget *parent) : SpecPage(parent, "group-delay", false) {
  setupUi(this);
  bind({{pSampFreq_Edit, SpecField::sampling_frequency, 0, hz}, {pRipple_Edit, SpecField::passband_ripple}});
  pNumValues_Edit->setText(QString::number(typed.band_count));
  begin();
}

void cArbGDSpec1DialogImpl::read_more(FilterSpec &spec) {
  spec.band_count = whole_number_in(pNumValues_Edit, 1, max_function_points).value_or(0);
}

QWidget *cArbGDSpec1DialogImpl::widget_of(const SpecComplaint &complaint) {
  return complaint.field == SpecField::band_count ? pNumValues_Edit : nullptr;
}

cArbGDSpec2DialogImpl::cArbGDSpec2DialogImpl(QWidget *parent) : SpecPage(parent, "group-delay") {
  setupUi(this);
  pSampFreq_Label->setText(sampling_frequency_text(typed.sampling_frequency));
  pUnit_Label->setText(frequency_unit());
  pNumValues_Label->setText(QString::asprintf("Number of Group Values: %d", typed.band_count));
  points.set_up(pPoints_Table, {"Frequency (" + frequency_unit() + ")", "Group Delay (samples)"}, max_function_points,
                pAdd_Button, pDelete_Button, pPaste_Button);
  std::vector<std::vector<double>> rows;
  for (std::size_t i = 0; i < static_cast<std::size_t>(typed.band_count); i++)
    rows.push_back({typed.function_frequency[i] * design_state.unit_factor_inverse, typed.function_value[i]});
  points.show(rows);
  begin();
}

void cArbGDSpec2DialogImpl::read_more(FilterSpec &spec) {
  QString why;
  const auto rows = points.rows(why);
  if (!rows) return mark(pPoints_Table, why);
  spec.band_count = static_cast<std::int32_t>(rows->size());
  for (std::size_t i = 0; i < rows->size(); i++) {
    spec.function_frequency[i] = (*rows)[i][0] * design_state.unit_factor;
    spec.function_value[i] = (*rows)[i][1];
  }
  pNumValues_Label->setText(QString::asprintf("Number of Group Values: %d", spec.band_count));
}

} // namespace brisel
