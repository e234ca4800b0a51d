// text_viewer.h - a read-only window on a text file.
#pragma once

#include <QString>

class QWidget;

namespace brisel {

/// Opens a viewer on the file; a file that cannot be read is told. The window deletes itself when it is closed, and
/// closes with the main window.
void show_text_file(const QString &path, QWidget *main_window);

} // namespace brisel
