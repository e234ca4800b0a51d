// help.h - the help pages of the dialogs, compiled in from docs/help.
#pragma once

#include <QString>

class QDialog;
class QWidget;

namespace brisel {

/// Opens the page `name` beside the dialog that asks; the dialog stays usable.
void show_help(const QString &name, QWidget *dialog);
/// The Help button of a dialog, and F1, open the page `name`.
void offer_help(const QString &name, QDialog *dialog);

} // namespace brisel
