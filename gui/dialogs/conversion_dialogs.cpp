#include "gui/dialogs/conversion_dialogs.h"

#include "engine/analysis/form_digits.h"
#include "engine/core/front_end.h"
#include "engine/files/system_file.h"
#include "gui/dialogs/design_dialogs.h"
#include "gui/dialogs/result_texts.h"
#include "gui/main_window/file_dialogs.h"
#include "gui/plots/plot_style.h"

#include <QApplication>
#include <QClipboard>
#include <QFileInfo>
#include <QPlainTextEdit>

namespace brisel {

namespace {

// Targets of the conversion dialogs in their order.
constexpr std::array iir_targets{InputOption::ratio,   InputOption::pole_zero, InputOption::product, InputOption::sum,
                                 InputOption::lattice, InputOption::ladder_1,  InputOption::ladder_2};
constexpr std::array fir_targets{InputOption::symmetric_fir, InputOption::antisymmetric_fir,
                                 InputOption::nonsymmetric_fir, InputOption::lattice_fir};
constexpr QSize least_text(880, 260); // a section in one line

QString text_of(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString described(const ConvertibleSystem &system) {
  const InputOptionRow &row = input_options[static_cast<std::size_t>(code(system.option))];
  const char *domain = system.is_fir() ? "" : system.domain == Domain::z ? "Z domain, " : "S domain, ";
  return QString::fromStdString(system.name) + "\n" + domain + text_of(row.name);
}

class WaitCursor {
public:
  WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
  ~WaitCursor() { QApplication::restoreOverrideCursor(); }
  WaitCursor(const WaitCursor &) = delete;
  WaitCursor &operator=(const WaitCursor &) = delete;
};

} // namespace

cIirFilterOutputDialogImpl::cIirFilterOutputDialogImpl(QWidget *parent) : SequencePage(parent, "iir-filter-output") {
  setupUi(this);
  const bool analog = current_iir_system(Domain::s) != nullptr, digital = current_iir_system(Domain::z) != nullptr;
  choose_button(*this, "Domain", digital ? 1 : 0);
  pDomain0_Button->setEnabled(analog);
  pDomain1_Button->setEnabled(digital);
  if (!analog) pDomain0_Button->setToolTip("The system was entered in the z domain: there is no analog one.");
  if (!digital) pDomain1_Button->setToolTip("Only the analog response was computed: there is no digital system.");
  int form = 2;
  if (const SystemPointer runs_as = current_iir_system(domain()))
    for (std::size_t i = 0; i < output_forms.size(); i++)
      if (output_forms[i].option == runs_as->option) form = static_cast<int>(i);
  choose_button(*this, "Form", form);
  connect(pAllForms_Button, &QPushButton::clicked, this, &cIirFilterOutputDialogImpl::accept_all);
  begin();
}

Domain cIirFilterOutputDialogImpl::domain() const {
  return pDomain0_Button->isChecked() ? Domain::s : Domain::z;
}

void cIirFilterOutputDialogImpl::read() {
  const int form = chosen_button(*this, "Form");
  const InputOption option = output_forms[static_cast<std::size_t>(form)].option;
  if (const std::pair now{chosen_button(*this, "Domain"), form}; looked_at != now) {
    looked_at = now;
    chosen = current_iir_result(domain(), option);
    digits = chosen ? file_digits(*chosen) : -1;
  }
  pDigits_Label->setText(chosen && digits >= 0
                             ? QString::fromStdString("The file keeps " + digits_text(digits) + " of the response.")
                             : "");
  QWidget *const choice = findChild<QRadioButton *>(QString("pForm%1_Button").arg(form));
  if (!chosen)
    mark(choice, QString("The filter does not exist in this form: ") + why_no_form(domain(), option) + ".");
  else if (digits < 0)
    mark(choice, text_of(why_no_file));
}

void cIirFilterOutputDialogImpl::accept_all() {
  all = true;
  QDialog::accept();
}

void ConversionPage::begin_conversion() {
  const auto on_click = [this](const char *name, void (ConversionPage::*action)()) {
    connect(findChild<QPushButton *>(name), &QPushButton::clicked, this, action);
  };
  on_click("pLoad_Button", &ConversionPage::load);
  on_click("pCurrent_Button", &ConversionPage::use_current);
  on_click("pCopy_Button", &ConversionPage::copy);
  on_click("pSave_Button", &ConversionPage::save);
  connect(findChild<QPushButton *>("pConvert_Button"), &QPushButton::clicked, this, [this] { run(); });
  auto *text = findChild<QPlainTextEdit *>("pText_Edit");
  text->setFont(plot_style(display_settings).text_font);
  text->setLineWrapMode(QPlainTextEdit::NoWrap);
  text->setMinimumSize(least_text);
  findChild<QLabel *>("pSource_Label")->setTextFormat(Qt::PlainText);
  findChild<QPushButton *>("pOk_Button")->setToolTip("Makes the converted system the entered one and analyses it");
  findChild<QPushButton *>("pSave_Button")->setToolTip("The converted system as a system analysis file");
  begin();
  use_current();
}

void ConversionPage::use_current() {
  set_source(current(), false);
}

void ConversionPage::set_source(SystemPointer system, bool from_file) {
  source = std::move(system);
  loaded = from_file;
  converted_by.clear();
  findChild<QLabel *>("pSource_Label")->setText(source ? described(*source) : "None");
  show_source(source.get());
  check();
}

QList<bool> ConversionPage::choices() const {
  QList<bool> all;
  for (const QRadioButton *button : findChildren<QRadioButton *>()) all.append(button->isChecked());
  return all;
}

void ConversionPage::read() {
  if (converted_by != choices()) {
    converted_by.clear();
    result.reset();
    refused.clear();
    findChild<QPlainTextEdit *>("pText_Edit")->clear();
  }
  findChild<QPushButton *>("pConvert_Button")->setEnabled(source != nullptr);
  findChild<QPushButton *>("pCurrent_Button")->setEnabled(loaded && current());
  findChild<QPushButton *>("pCopy_Button")->setEnabled(result != nullptr);
  findChild<QPushButton *>("pSave_Button")->setEnabled(result && result->file_digits >= 0);
  QWidget *const text = findChild<QPlainTextEdit *>("pText_Edit");
  if (!source) mark(text, QString("There is no %1 to convert: design or analyse one first, or load a file.").arg(kind));
  if (!refused.isEmpty()) mark(text, refused);
}

bool ConversionPage::run() {
  check();
  if (!source) return false;
  if (converted_by.isEmpty() || converted_by != choices()) {
    const WaitCursor wait;
    ConversionOutcome outcome = convert(*source);
    converted_by = choices();
    if (auto *made = std::get_if<std::unique_ptr<Conversion>>(&outcome)) {
      result = std::move(*made);
      findChild<QPlainTextEdit *>("pText_Edit")->setPlainText(QString::fromStdString(conversion_text(*result)));
    } else {
      refused = "The conversion is refused: " + QString::fromStdString(std::get<std::string>(outcome)) + ".";
    }
    check();
  }
  return result != nullptr;
}

void ConversionPage::accept() {
  if (run()) SequencePage::accept();
}

void ConversionPage::store() {
  enter_system(result->system);
}

void ConversionPage::load() {
  const QString path = files.open(this, FileCommand::load_system);
  if (path.isEmpty()) return;
  std::string why;
  SystemPointer system = read_convertible_system(path.toStdString(), why);
  if (!system) return post_message(Message::system_file_refused, why);
  if (const QString unsuited = refusal(*system); !unsuited.isEmpty())
    return post_message(Message::system_file_refused, (path + ": " + unsuited).toStdString());
  system->name = QFileInfo(path).fileName().toStdString();
  set_source(std::move(system), true);
}

void ConversionPage::copy() {
  QApplication::clipboard()->setText(findChild<QPlainTextEdit *>("pText_Edit")->toPlainText());
}

void ConversionPage::save() {
  const SavingOutcome outcome = save_system(result->system, design_state.FrequencyMode);
  if (const auto *refused = std::get_if<SavingRefusal>(&outcome)) return post_message(refused->number, refused->reason);
  const auto &saved = std::get<SavedFilter>(outcome);
  const QString path = files.save(this, FileCommand::create_system);
  // A failure is told by the engine.
  if (path.isEmpty() || write_system_file(path.toStdString(), saved.text) != success) return;
  if (!saved.note.empty()) front_end->show_text(saved.note);
}

cIirFormConversionDialogImpl::cIirFormConversionDialogImpl(QWidget *parent, FileDialogs &files)
    : ConversionPage(parent, "iir-form-conversion", "IIR system", files) {
  setupUi(this);
  choose_button(*this, "Domain", current_iir_system(Domain::z) ? 1 : 0);
  choose_button(*this, "Form", 0);
  begin_conversion();
  for (QRadioButton *button : {pDomain0_Button, pDomain1_Button})
    connect(button, &QRadioButton::clicked, this, [this] {
      if (!is_loaded()) use_current();
    });
}

SystemPointer cIirFormConversionDialogImpl::current() const {
  return current_iir_system(pDomain0_Button->isChecked() ? Domain::s : Domain::z);
}

// The domain is the user's choice only where the current result has both.
void cIirFormConversionDialogImpl::show_source(const ConvertibleSystem *source) {
  if (source) choose_button(*this, "Domain", source->domain == Domain::s ? 0 : 1);
  const bool both = !is_loaded() && current_iir_system(Domain::s) && current_iir_system(Domain::z);
  pDomain0_Button->setEnabled(both);
  pDomain1_Button->setEnabled(both);
}

QString cIirFormConversionDialogImpl::refusal(const ConvertibleSystem &system) const {
  return system.is_fir() ? "a FIR filter; use the FIR form conversion" : "";
}

ConversionOutcome cIirFormConversionDialogImpl::convert(const ConvertibleSystem &source) {
  return convert_iir_form(source, iir_targets[static_cast<std::size_t>(chosen_button(*this, "Form"))]);
}

cFirFormConversionDialogImpl::cFirFormConversionDialogImpl(QWidget *parent, FileDialogs &files)
    : ConversionPage(parent, "fir-form-conversion", "FIR filter", files) {
  setupUi(this);
  choose_button(*this, "Form", 2);
  begin_conversion();
}

QString cFirFormConversionDialogImpl::refusal(const ConvertibleSystem &system) const {
  return system.is_fir() ? "" : "no FIR filter; use the IIR form conversion";
}

ConversionOutcome cFirFormConversionDialogImpl::convert(const ConvertibleSystem &source) {
  return convert_fir_form(source, fir_targets[static_cast<std::size_t>(chosen_button(*this, "Form"))]);
}

cDomainConversionDialogImpl::cDomainConversionDialogImpl(QWidget *parent, FileDialogs &files)
    : ConversionPage(parent, "domain-conversion", "analog system", files) {
  setupUi(this);
  choose_button(*this, "Method", 0);
  choose_button(*this, "Form", 2);
  choose_button(*this, "Padding", 0);
  const auto padding_counts = [this] {
    for (int i = 0; i < 3; i++)
      findChild<QRadioButton *>(QString("pPadding%1_Button").arg(i))->setEnabled(pMethod2_Button->isChecked());
  };
  connect(pMethod2_Button, &QRadioButton::toggled, this, padding_counts);
  padding_counts();
  begin_conversion();
}

QString cDomainConversionDialogImpl::refusal(const ConvertibleSystem &system) const {
  return system.domain == Domain::s ? "" : "a system of the z domain; only those of the s domain are converted";
}

ConversionOutcome cDomainConversionDialogImpl::convert(const ConvertibleSystem &source) {
  return convert_domain(source, ZTransform{static_cast<std::int8_t>(chosen_button(*this, "Method"))},
                        MatchedPadding{chosen_button(*this, "Padding")},
                        iir_targets[static_cast<std::size_t>(chosen_button(*this, "Form"))]);
}

} // namespace brisel
