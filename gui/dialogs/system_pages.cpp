#include "gui/dialogs/system_pages.h"

#include "engine/files/entered_fir.h"
#include "gui/dialogs/design_dialogs.h"

#include <algorithm>

namespace brisel {

namespace {

// The forms of the dialog of the s domain.
constexpr std::array analog_options{InputOption::ratio, InputOption::pole_zero, InputOption::product, InputOption::sum};

int size_of(const NumberRows &rows) {
  return static_cast<int>(rows.size());
}

void set_count(NumberRows &rows, int count, const std::vector<double> &filling = {0}) {
  rows.resize(static_cast<std::size_t>(std::max(count, 0)), filling);
}

int complex_rows(const NumberRows &rows) {
  return static_cast<int>(std::count_if(rows.begin(), rows.end(), [](const auto &row) { return row[1] != 0; }));
}

/// Brings a list of poles or zeros to so many real values and so many conjugate pairs.
void resize_places(NumberRows &rows, int real, int pairs, const SystemDraft &draft, double sample_rate) {
  // Something to type over, inside the region of stability.
  const double inside = draft.domain == Domain::z ? 0.5 : sample_rate / 16;
  const std::vector<double> new_real{draft.domain == Domain::z ? 0 : -inside, 0};
  const std::vector<double> new_pair{draft.domain == Domain::z ? inside : -inside, inside};
  NumberRows kept;
  int missing_real = real, missing_pairs = pairs;
  for (const auto &row : rows) {
    int &missing = row[1] == 0 ? missing_real : missing_pairs;
    if (missing <= 0) continue;
    missing--;
    kept.push_back(row);
  }
  kept.insert(kept.end(), static_cast<std::size_t>(missing_real), new_real);
  kept.insert(kept.end(), static_cast<std::size_t>(missing_pairs), new_pair);
  rows = std::move(kept);
}

} // namespace

// --- what the pages share

void SystemFirstPage::bind(QLabel *domain, QLineEdit *sampling_frequency, QLineEdit *gain, QCheckBox *maximum_gain) {
  domain->setText(draft.domain_text());
  if (draft.domain == Domain::z) delete findChild<QPushButton *>("pPrev_Button");
  sampling_edit = sampling_frequency;
  gain_edit = gain;
  maximum_gain_box = maximum_gain;
  sampling_edit->setText(shown_frequency(typed.sample_rate));
  add_unit(sampling_edit, frequency_unit());
  gain_edit->setText(shown(typed.gain));
  maximum_gain_box->setChecked(draft.maximum_gain);
}

// Fields that were not touched keep all their digits.
void SystemFirstPage::read() {
  typed = draft.lists();
  if (const auto rate = number_in(sampling_edit); rate && sampling_edit->text() != shown_frequency(typed.sample_rate))
    typed.sample_rate = *rate * design_state.unit_factor;
  if (const auto gain = number_in(gain_edit); gain && gain_edit->text() != shown(typed.gain)) typed.gain = *gain;
  read_counts();
  if (!is_right()) return;
  const auto complaint = draft.check(typed);
  if (!complaint) return;
  QWidget *field = complaint->part == SystemPart::sampling_frequency ? sampling_edit
                   : complaint->part == SystemPart::gain             ? gain_edit
                                                                     : field_of(complaint->part);
  if (field) mark(field, QString::fromStdString(complaint->reason));
}

void SystemFirstPage::store() {
  SystemPage::store();
  draft.maximum_gain = maximum_gain_box->isChecked();
}

void SystemListPage::bind(QLabel *domain, QTableWidget *first, const QStringList &columns, int most, Buttons buttons) {
  domain->setText(draft.domain_text());
  tables[0] = first;
  values[0].set_up(first, columns, most, buttons.add, buttons.remove, buttons.paste);
  values[0].show(shown_rows(typed.first));
  first->setCurrentCell(0, 0); // to be typed over at once
}

void SystemListPage::bind_second(QTableWidget *second, const QStringList &columns, int most, Buttons buttons) {
  tables[1] = second;
  values[1].set_up(second, columns, most, buttons.add, buttons.remove, buttons.paste);
  values[1].show(shown_rows(typed.second));
}

void SystemListPage::read() {
  typed = draft.lists();
  NumberRows *const lists[] = {&typed.first, &typed.second};
  for (std::size_t i = 0; i < tables.size() && tables[i]; i++) {
    QString why;
    if (const auto rows = values[i].rows(why))
      *lists[i] = entered_rows(*rows);
    else
      mark(tables[i], why);
  }
  if (!is_right()) return;
  show_counts();
  if (const auto complaint = draft.check(typed))
    mark(tables[complaint->part == SystemPart::second_list ? 1 : 0], QString::fromStdString(complaint->reason));
}

// --- form of an analog system

cSDomainSpecDialogImpl::cSDomainSpecDialogImpl(QWidget *parent, SystemDraft &draft)
    : SequencePage(parent, "s-domain"), draft(draft) {
  setupUi(this);
  const auto chosen = std::find(analog_options.begin(), analog_options.end(), draft.option);
  choose_button(*this, "Form", static_cast<int>(chosen - analog_options.begin()));
  choose_button(*this, "Method", code(draft.mapping));
  begin();
}

void cSDomainSpecDialogImpl::store() {
  draft.option = analog_options[static_cast<std::size_t>(chosen_button(*this, "Form"))];
  draft.mapping = ZTransform{static_cast<std::int8_t>(chosen_button(*this, "Method"))};
}

// --- ratio of two polynomials

cRatioSpec1DialogImpl::cRatioSpec1DialogImpl(QWidget *parent, SystemDraft &draft)
    : SystemFirstPage(parent, "ratio", draft) {
  setupUi(this);
  bind(pDomain_Label, pSampFreq_Edit, pGain_Edit, pMaximumGain_Box);
  pOrderNum_Edit->setText(QString::number(size_of(typed.first) - 1));
  pOrderDen_Edit->setText(QString::number(size_of(typed.second) - 1));
  begin();
}

void cRatioSpec1DialogImpl::read_counts() {
  if (const auto order = whole_number_in(pOrderNum_Edit, 0, max_ratio_order)) set_count(typed.first, *order + 1);
  if (const auto order = whole_number_in(pOrderDen_Edit, 0, max_ratio_order)) set_count(typed.second, *order + 1);
}

cRatioSpec2DialogImpl::cRatioSpec2DialogImpl(QWidget *parent, SystemDraft &draft)
    : SystemListPage(parent, "ratio", draft) {
  setupUi(this);
  bind(pDomain_Label, pNumerator_Table, {"Numerator"}, max_ratio_order + 1,
       {pNumeratorAdd_Button, pNumeratorDelete_Button, pNumeratorPaste_Button});
  bind_second(pDenominator_Table, {"Denominator"}, max_ratio_order + 1,
              {pDenominatorAdd_Button, pDenominatorDelete_Button, pDenominatorPaste_Button});
  begin();
}

void cRatioSpec2DialogImpl::show_counts() {
  pNumOrder_Label->setText(QString("Numerator Order: %1").arg(size_of(typed.first) - 1));
  pDenOrder_Label->setText(QString("Denominator Order: %1").arg(size_of(typed.second) - 1));
  for (std::size_t i = 0; i < tables.size(); i++) {
    QStringList powers;
    for (int power = size_of(i == 0 ? typed.first : typed.second) - 1; power >= 0; power--)
      powers.append(QString(draft.domain == Domain::z ? "z^%1" : "s^%1").arg(power));
    tables[i]->setVerticalHeaderLabels(powers);
  }
}

// --- poles and zeros

cPoleZeroSpec1DialogImpl::cPoleZeroSpec1DialogImpl(QWidget *parent, SystemDraft &draft)
    : SystemFirstPage(parent, "poles-and-zeros", draft) {
  setupUi(this);
  bind(pDomain_Label, pSampFreq_Edit, pGain_Edit, pMaximumGain_Box);
  const auto show = [](const NumberRows &rows, QLineEdit *real, QLineEdit *complex) {
    const int pairs = complex_rows(rows);
    real->setText(QString::number(size_of(rows) - pairs));
    complex->setText(QString::number(2 * pairs));
  };
  show(typed.first, pRealZeros_Edit, pComplexZeros_Edit);
  show(typed.second, pRealPoles_Edit, pComplexPoles_Edit);
  choose_button(*this, "Coordinates", static_cast<int>(draft.coordinates));
  if (draft.domain == Domain::s) {
    pCoordinates2_Button->setEnabled(false);
    pCoordinates2_Button->setToolTip("The angle of an analog pole is no frequency.");
  }
  begin();
}

void cPoleZeroSpec1DialogImpl::read_counts() {
  const auto read = [&](NumberRows &rows, QLineEdit *real_edit, QLineEdit *complex_edit) {
    const auto real = whole_number_in(real_edit, 0, max_order);
    const auto complex = whole_number_in(complex_edit, 0, max_order);
    if (complex && *complex % 2) mark(complex_edit, "conjugate pairs: an even number");
    if (real && complex && *complex % 2 == 0) resize_places(rows, *real, *complex / 2, draft, typed.sample_rate);
  };
  read(typed.first, pRealZeros_Edit, pComplexZeros_Edit);
  read(typed.second, pRealPoles_Edit, pComplexPoles_Edit);
}

QWidget *cPoleZeroSpec1DialogImpl::field_of(SystemPart part) {
  return part == SystemPart::first_list ? pRealZeros_Edit : pRealPoles_Edit;
}

void cPoleZeroSpec1DialogImpl::store() {
  SystemFirstPage::store();
  draft.coordinates = Coordinates{chosen_button(*this, "Coordinates")};
}

cPoleZeroSpec2DialogImpl::cPoleZeroSpec2DialogImpl(QWidget *parent, SystemDraft &draft)
    : SystemListPage(parent, "poles-and-zeros", draft) {
  setupUi(this);
  const QString unit = draft.domain == Domain::s ? " (rad/s)" : "";
  const QStringList names[] = {
      {"Real" + unit, "Imaginary" + unit}, {"Radius" + unit, "Angle (rad)"}, {"Radius", "Angle (Hz)"}};
  const QStringList &columns = names[static_cast<std::size_t>(draft.coordinates)];
  bind(pDomain_Label, pZeros_Table, columns, max_order, {pZerosAdd_Button, pZerosDelete_Button, pZerosPaste_Button});
  bind_second(pPoles_Table, columns, max_order, {pPolesAdd_Button, pPolesDelete_Button, pPolesPaste_Button});
  begin();
}

NumberRows cPoleZeroSpec2DialogImpl::shown_rows(const NumberRows &rows) {
  NumberRows all;
  for (const auto &row : rows) {
    all.push_back(to_coordinates(row, draft.coordinates, typed.sample_rate));
    places[all.back()] = row;
  }
  return all;
}

NumberRows cPoleZeroSpec2DialogImpl::entered_rows(const NumberRows &rows) {
  NumberRows all;
  for (const auto &row : rows) {
    const auto known = places.find(row);
    all.push_back(known != places.end() ? known->second : from_coordinates(row, draft.coordinates, typed.sample_rate));
  }
  return all;
}

void cPoleZeroSpec2DialogImpl::show_counts() {
  const int zero_pairs = complex_rows(typed.first), pole_pairs = complex_rows(typed.second);
  pRealZeros_Label->setText(QString("Real Zeros: %1").arg(size_of(typed.first) - zero_pairs));
  pComplexZeros_Label->setText(QString("Complex Zeros: %1").arg(2 * zero_pairs));
  pRealPoles_Label->setText(QString("Real Poles: %1").arg(size_of(typed.second) - pole_pairs));
  pComplexPoles_Label->setText(QString("Complex Poles: %1").arg(2 * pole_pairs));
}

// --- products and sums of second-order sections

cSosAnalysisSpec1DialogImpl::cSosAnalysisSpec1DialogImpl(QWidget *parent, SystemDraft &draft)
    : SystemFirstPage(parent, "sections", draft) {
  setupUi(this);
  bind(pDomain_Label, pSampFreq_Edit, pGain_Edit, pMaximumGain_Box);
  pOrder_Edit->setText(QString::number(size_of(typed.first)));
  begin();
}

void cSosAnalysisSpec1DialogImpl::read_counts() {
  if (const auto count = whole_number_in(pOrder_Edit, 1, max_sections))
    set_count(typed.first, *count, neutral_section(draft.domain, draft.option));
}

cSosAnalysisSpec2DialogImpl::cSosAnalysisSpec2DialogImpl(QWidget *parent, SystemDraft &draft)
    : SystemListPage(parent, "sections", draft) {
  setupUi(this);
  pForm_Label->setText("Form: " + draft.form_text());
  const bool digital = draft.domain == Domain::z;
  QStringList columns;
  for (const char *letter : {"b", "a"})
    for (int place = 0; place < 3; place++) columns.append(letter + QString::number(digital ? place : 2 - place));
  bind(pDomain_Label, pSections_Table, columns, max_sections,
       {pSectionsAdd_Button, pSectionsDelete_Button, pSectionsPaste_Button});
  values[0].set_new_row(neutral_section(draft.domain, draft.option));
  begin();
}

void cSosAnalysisSpec2DialogImpl::show_counts() {
  pNumSections_Label->setText(QString("Number of Sections: %1").arg(size_of(typed.first)));
}

// --- lattice

cLatticeSpec1DialogImpl::cLatticeSpec1DialogImpl(QWidget *parent, SystemDraft &draft)
    : SystemFirstPage(parent, "lattice", draft) {
  setupUi(this);
  bind(pDomain_Label, pSampFreq_Edit, pGain_Edit, pMaximumGain_Box);
  pLatticeOrder_Edit->setText(QString::number(size_of(typed.second)));
  begin();
}

void cLatticeSpec1DialogImpl::read_counts() {
  const auto order = whole_number_in(pLatticeOrder_Edit, min_lattice_order, max_order);
  if (!order) return;
  set_count(typed.first, size_of(typed.first) + *order - size_of(typed.second)); // taps beyond the order stay
  set_count(typed.second, *order);
}

cLatticeSpec2DialogImpl::cLatticeSpec2DialogImpl(QWidget *parent, SystemDraft &draft)
    : SystemListPage(parent, "lattice", draft) {
  setupUi(this);
  bind(pDomain_Label, pGamma_Table, {"Gamma"}, max_gammas, {pGammaAdd_Button, pGammaDelete_Button, pGammaPaste_Button});
  bind_second(pKappa_Table, {"Kappa"}, max_order, {pKappaAdd_Button, pKappaDelete_Button, pKappaPaste_Button});
  begin();
}

void cLatticeSpec2DialogImpl::show_counts() {
  pOrder_Label->setText(QString("Order of Lattice: %1").arg(size_of(typed.second)));
  QStringList from_zero;
  for (int i = 0; i < size_of(typed.first); i++) from_zero.append(QString::number(i));
  pGamma_Table->setVerticalHeaderLabels(from_zero);
}

// --- FIR systems

cFirAnalysisSpec1DialogImpl::cFirAnalysisSpec1DialogImpl(QWidget *parent, SystemDraft &draft)
    : SystemFirstPage(parent, "fir-analysis", draft) {
  setupUi(this);
  bind(pDomain_Label, pSampFreq_Edit, pGain_Edit, pMaximumGain_Box);
  pNumTaps_Edit->setText(QString::number(typed.taps));
  begin();
}

void cFirAnalysisSpec1DialogImpl::read_counts() {
  const auto taps = whole_number_in(pNumTaps_Edit, 1, max_taps);
  if (!taps) return;
  typed.taps = *taps;
  set_count(typed.first, is_half_response(draft.option) ? (*taps + 1) / 2 : *taps);
}

cFirAnalysisSpec2DialogImpl::cFirAnalysisSpec2DialogImpl(QWidget *parent, SystemDraft &draft)
    : SystemListPage(parent, "fir-analysis", draft) {
  setupUi(this);
  const bool half = is_half_response(draft.option);
  bind(pDomain_Label, pTaps_Table, {draft.option == InputOption::lattice_fir ? "Reflection Coefficient" : "Tap"},
       half ? max_taps / 2 : max_taps, {pTapsAdd_Button, pTapsDelete_Button, pTapsPaste_Button});
  begin();
}

// A half response grows and shrinks on both sides and stays odd or even.
void cFirAnalysisSpec2DialogImpl::show_counts() {
  const bool half = is_half_response(draft.option);
  const int rows = size_of(typed.first);
  typed.taps = half ? std::max(2 * rows - typed.taps % 2, 0) : rows;
  pNumTaps_Label->setText(QString("Number of Taps: %1").arg(typed.taps));
  if (named_taps == typed.taps) return;
  named_taps = typed.taps;
  QStringList names;
  for (int i = 0; i < rows; i++) {
    const int mirrored = typed.taps - 1 - i;
    const char *sign = draft.option == InputOption::antisymmetric_fir ? "-" : "";
    names.append(draft.option == InputOption::lattice_fir ? QString("k%1").arg(i + 1)
                 : half && mirrored != i                  ? QString("H(%1) = %2H(%3)").arg(i).arg(sign).arg(mirrored)
                                                          : QString("H(%1)").arg(i));
  }
  pTaps_Table->setVerticalHeaderLabels(names);
}

// --- prewarping

cPrewarpSpecDialogImpl::cPrewarpSpecDialogImpl(QWidget *parent, SystemDraft &draft)
    : SequencePage(parent, "prewarp"), draft(draft), typed(draft.prewarp), highest_root(draft.highest_root()) {
  setupUi(this);
  pForm_Label->setText("Form: " + draft.form_text());
  pSampFreq_Label->setText(sampling_frequency_text(draft.lists().sample_rate));
  pUnit_Label->setText(frequency_unit());
  pPrewarpFreq_Edit->setText(shown_frequency(typed.frequency));
  add_unit(pPrewarpFreq_Edit, frequency_unit());
  pPrewarpAll_Box->setChecked(typed.every_root);
  begin();
}

void cPrewarpSpecDialogImpl::read() {
  const double rate = draft.lists().sample_rate;
  const QString half = shown_frequency(rate / 2) + " " + frequency_unit();
  typed.every_root = pPrewarpAll_Box->isChecked();
  pPrewarpFreq_Edit->setEnabled(!typed.every_root);
  if (typed.every_root) {
    if (!can_prewarp(highest_root, rate))
      mark(pPrewarpAll_Box, QString("a pole or zero at %1 %2 is not below half the sampling frequency, %3")
                                .arg(highest_root * design_state.unit_factor_inverse, 0, 'g', 6)
                                .arg(frequency_unit(), half));
    return;
  }
  const auto frequency = number_in(pPrewarpFreq_Edit);
  if (!frequency) return;
  const double given = pPrewarpFreq_Edit->text() == shown_frequency(draft.prewarp.frequency)
                           ? draft.prewarp.frequency
                           : *frequency * design_state.unit_factor;
  if (!can_prewarp(given, rate))
    return mark(pPrewarpFreq_Edit, *frequency < 0 ? "below zero" : "not below half the sampling frequency, " + half);
  typed.frequency = given;
}

// --- the sequence

namespace {

template <class Dialog> PageResult run(QWidget *parent, SystemDraft &draft) {
  return PageResult{Dialog(parent, draft).exec()};
}

using Pages = std::array<PageResult (*)(QWidget *, SystemDraft &), 2>;
Pages pages_of(InputOption option) {
  switch (option) {
  case InputOption::ratio:
    return {run<cRatioSpec1DialogImpl>, run<cRatioSpec2DialogImpl>};
  case InputOption::pole_zero:
    return {run<cPoleZeroSpec1DialogImpl>, run<cPoleZeroSpec2DialogImpl>};
  case InputOption::product:
  case InputOption::sum:
    return {run<cSosAnalysisSpec1DialogImpl>, run<cSosAnalysisSpec2DialogImpl>};
  case InputOption::lattice:
    return {run<cLatticeSpec1DialogImpl>, run<cLatticeSpec2DialogImpl>};
  default:
    return {run<cFirAnalysisSpec1DialogImpl>, run<cFirAnalysisSpec2DialogImpl>};
  }
}

} // namespace

bool enter_system(Domain domain, InputOption option, QWidget *parent) {
  SystemDraft draft(domain, option);
  const auto is_asked = [&](int page) {
    switch (page) {
    case 0:
      return domain == Domain::s;
    case 3:
      return domain == Domain::s && draft.mapping == ZTransform::bilinear;
    default:
      return true;
    }
  };
  const auto ask = [&](int page) {
    if (page == 0) return run<cSDomainSpecDialogImpl>(parent, draft);
    if (page == 3) return run<cPrewarpSpecDialogImpl>(parent, draft);
    return pages_of(draft.option)[static_cast<std::size_t>(page - 1)](parent, draft);
  };
  for (int page = 0; page <= 3;) {
    const PageResult result = is_asked(page) ? ask(page) : PageResult::next;
    if (result == PageResult::cancelled) return false;
    page += result == PageResult::back ? -1 : 1;
  }
  draft.use();
  return true;
}

} // namespace brisel
