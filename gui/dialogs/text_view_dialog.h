// text_view_dialog.h - numbers of a result as text that can be copied and saved.
#pragma once

#include "ui_cTextViewDialog.h"

#include <functional>

namespace brisel {

class TextViewDialog : public QDialog, private Ui::cTextViewDialog {
public:
  /// `name` is the object name: the dialogs of all views are of this class.
  TextViewDialog(QWidget *parent, const QString &name, const QString &caption, const std::string &text,
                 const QString &help_page);

  /// A further button, left of the others.
  void add_button(const QString &label, const char *button_name, std::function<void()> action);

protected:
  bool eventFilter(QObject *object, QEvent *event) override;

private:
  void copy();
  void save();
};

} // namespace brisel
