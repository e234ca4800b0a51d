#include "gui/dialogs/cDisplayControlDialogImpl.h"

#include "engine/core/display_defaults.h"
#include "gui/dialogs/help.h"
#include "gui/main_window/brisel_app.h"

namespace brisel {

namespace {

// A check box shows one bit of a style.
struct StyleBit {
  QCheckBox *box;
  int bit;
};

void show_value(QComboBox *box, std::int32_t value) {
  box->setCurrentIndex(value);
}
void show_value(QSpinBox *box, std::int32_t value) {
  box->setValue(value);
}
void show_value(StyleBit style, std::int32_t value) {
  style.box->setChecked(value >> style.bit & 1);
}

void take_value(QComboBox *box, std::int32_t &value) {
  value = box->currentIndex();
}
void take_value(QSpinBox *box, std::int32_t &value) {
  value = box->value();
}
void take_value(StyleBit style, std::int32_t &value) {
  value = (value & ~(1 << style.bit)) | static_cast<int>(style.box->isChecked()) << style.bit;
}

} // namespace

template <class Settings, class Visit> void cDisplayControlDialogImpl::each_field(Settings &s, Visit visit) const {
  visit(pBackgroundColor_Box, s.back_color);
  visit(pOutlineColor_Box, s.outline_color);
  visit(pGridColor_Box, s.grid_color);
  visit(pCursorColor_Box, s.mark_color);
  visit(pZoomColor_Box, s.zoom_color);
  visit(pRefCurveColor_Box, s.ref_curve_color);
  visit(pFunctionColor_Box, s.funct_color);
  visit(pAxisLabelsColor_Box, s.labels_color);
  visit(pProblemColor_Box, s.desc_color);
  visit(pTitle_Color_Box, s.titles_color);
  visit(pAxisFont_Box, s.label_font);
  visit(pTitlesFont_Box, s.titles_font);
  visit(pProblemFont_Box, s.desc_font);
  visit(pTextFont_Box, s.text_font);
  visit(pAxisSize_Box, s.label_size);
  visit(pTitlesSize_Box, s.title_size);
  visit(pProblemSize_Box, s.desc_size);
  visit(pTextSize_Box, s.text_size);
  visit(StyleBit{pAxisBold_Box, 0}, s.label_style);
  visit(StyleBit{pAxisItalic_Box, 1}, s.label_style);
  visit(StyleBit{pTitlesBold_Box, 0}, s.title_style);
  visit(StyleBit{pTitlesItalic_Box, 1}, s.title_style);
  visit(StyleBit{pProblemBold_Box, 0}, s.desc_style);
  visit(StyleBit{pProblemItalic_Box, 1}, s.desc_style);
  visit(StyleBit{pTextBold_Box, 0}, s.text_style);
  visit(StyleBit{pTextItalic_Box, 1}, s.text_style);
  visit(pFunctionLine_Box, s.func_line);
  visit(pOutlineLine_Box, s.line_line);
  visit(pGridLine_Box, s.grid_line);
  visit(pZoomLine_Box, s.zoom_line);
  visit(pRefCurveLine_Box, s.ref_curve_line);
}

cDisplayControlDialogImpl::cDisplayControlDialogImpl(cBriselApp *app) : QDialog(app), window(app) {
  setupUi(this);
  for (QComboBox *box : pColor_Tab->findChildren<QComboBox *>())
    for (int color = 0; color < box->count(); color++) {
      QPixmap swatch(12, 12);
      swatch.fill(display_color(color));
      box->setItemIcon(color, swatch);
    }
  show_settings(display_settings);
  offer_help("display-control", this);
  connect(pColorDefault_Button, &QPushButton::clicked, this, &cDisplayControlDialogImpl::ColorDefault);
  connect(pColorMono_Button, &QPushButton::clicked, this, &cDisplayControlDialogImpl::ColorMono);
  connect(pFontDefault_Button, &QPushButton::clicked, this, &cDisplayControlDialogImpl::FontDefault);
  connect(pLineDefault_Button, &QPushButton::clicked, this, &cDisplayControlDialogImpl::LineDefault);
  connect(pApply_Button, &QPushButton::clicked, this, &cDisplayControlDialogImpl::Apply);
}

void cDisplayControlDialogImpl::show_settings(const DisplaySettings &settings) {
  each_field(settings, [](auto widget, std::int32_t value) { show_value(widget, value); });
}

DisplaySettings cDisplayControlDialogImpl::shown_settings() const {
  DisplaySettings settings = display_settings;
  each_field(settings, [](auto widget, std::int32_t &value) { take_value(widget, value); });
  return settings;
}

void cDisplayControlDialogImpl::ColorDefault() {
  DisplaySettings settings = shown_settings();
  set_color_defaults(settings);
  show_settings(settings);
}

void cDisplayControlDialogImpl::ColorMono() {
  DisplaySettings settings = shown_settings();
  set_color_mono(settings);
  show_settings(settings);
}

void cDisplayControlDialogImpl::FontDefault() {
  DisplaySettings settings = shown_settings();
  set_font_defaults(settings);
  show_settings(settings);
}

void cDisplayControlDialogImpl::LineDefault() {
  DisplaySettings settings = shown_settings();
  set_line_defaults(settings);
  show_settings(settings);
}

void cDisplayControlDialogImpl::Apply() {
  display_settings = shown_settings();
  window->display_settings_changed();
}

void cDisplayControlDialogImpl::accept() {
  Apply();
  QDialog::accept();
}

} // namespace brisel
