// file_dialogs.h - the file dialogs of the commands: title, filter, the name chosen last, and the extension rule.
#pragma once

#include <QStringList>

#include <array>

class QWidget;

namespace brisel {

enum class FileCommand {
  load_specification,
  load_system,
  load_coefficients,
  create_specification,
  create_system,
  create_coefficients,
  c_code,
  adsp218x,
  dsp56800,
  dspic30,
  plot_data,
  matlab_fir,
  matlab_iir,
  cocentric,
  data_file,
  picture,
  view_file,
  count,
};

struct FileCommandRow {
  const char *title;
  const char *filter; // several are separated by ";;"
};
const FileCommandRow &file_command(FileCommand command);

/// The extension that a dialog filter asks for: ".spc" from "Filter Specification (*.spc)"; empty when it asks for
/// none.
QString extension_of_filter(QString filter);
/// The name with that extension, unless it already ends with it.
QString with_extension(const QString &name, const QString &filter);

/// Asks before files are replaced, once for all of them; true also when there is none yet.
bool may_replace(QWidget *parent, const QString &title, const QStringList &paths);

/// Asks for file names and remembers the last one of each command for the life of the process.
class FileDialogs {
public:
  /// Empty when the dialog was cancelled.
  QString open(QWidget *parent, FileCommand command);
  /// The same for a file to be written. `suggestion` is offered the first time.
  QString save(QWidget *parent, FileCommand command, const QString &suggestion = {});
  /// Kept as if chosen: the name of a file that came another way.
  void remember(FileCommand command, const QString &name) { last[static_cast<std::size_t>(command)] = name; }

private:
  std::array<QString, static_cast<std::size_t>(FileCommand::count)> last;
};

} // namespace brisel
