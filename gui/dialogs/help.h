// help.h - the help pages of the dialogs, compiled in from docs/help.
#pragma once

#include <QString>

class QWidget;

namespace brisel {

/// Opens the page `name` beside the dialog that asks; the dialog stays usable.
void show_help(const QString &name, QWidget *dialog);

} // namespace brisel
