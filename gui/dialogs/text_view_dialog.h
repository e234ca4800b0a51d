// text_view_dialog.h - numbers of a result as text that can be copied and saved.
#pragma once

#include "ui_cTextViewDialog.h"

namespace brisel {

class TextViewDialog : public QDialog, private Ui::cTextViewDialog {
public:
  /// `name` is the object name: the dialogs of all views are of this class.
  TextViewDialog(QWidget *parent, const QString &name, const QString &caption, const std::string &text);

private:
  void copy();
  void save();
};

} // namespace brisel
