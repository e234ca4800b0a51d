#include "gui/main_window/file_dialogs.h"

#include <QDir>
#include <QFileDialog>
#include <QMessageBox>

namespace brisel {

namespace {

constexpr std::array<FileCommandRow, static_cast<std::size_t>(FileCommand::count)> rows{{
    {"Load Filter Specification File", "Filter Specification (*.spc)"},
    {"Load System Analysis File", "System Analysis (*.inp)"},
    {"Load Filter Coefficient File", "Filter Coefficient (*.flt)"},
    {"Create Filter Specification File", "Filter Specification (*.spc)"},
    {"Create System Analysis File", "System Analysis (*.inp)"},
    {"Create Filter Coefficient File", "Filter Coefficient (*.flt)"},
    {"Create C Code File", "C Code (*.c)"},
    {"Create ADSP218X Filter Coefficients", "ADSP 218x assembly file (*.dsp)"},
    {"Create DSP56800 Filter Coefficients", "C Filter Coefficients (*.h)"},
    {"dsPIC30 code base file name", "dsPIC30 code base file name (*)"},
    {"Plot data base file name", "Plot data base file name (*)"},
    {"Create MatLab FIR row vector", "MatLab FIR row vector (*.dat)"},
    {"Create MatLab IIR second order section matrix", "MatLab IIR second order section matrix (*.dat)"},
    {"Create CoCentric Dataset", "CoCentric (*.abl)"},
    {"Create Data File", "Data (*.dat)"},
    {"Save Picture", "PNG picture (*.png);;SVG picture (*.svg);;PDF document (*.pdf)"},
    {"Read Text Filter File",
     "Specification File (*.spc);;System Analysis File (*.inp);;Filter Coefficient File (*.flt);;"
     "Coefficient Dataset (*.dat);;C code (*.c);;Assembly code (*.asm);;Assembly code (*.dsp);;All Files (*)"},
}};

/// The rule for the filter that is chosen, unless the name already has the extension of another filter of the dialog.
QString named_for(const QString &name, const QString &chosen_filter, const QStringList &filters) {
  for (const QString &filter : filters) {
    const QString extension = extension_of_filter(filter);
    if (!extension.isEmpty() && name.endsWith(extension)) return name;
  }
  return with_extension(name, chosen_filter);
}

} // namespace

const FileCommandRow &file_command(FileCommand command) {
  return rows[static_cast<std::size_t>(command)];
}

QString extension_of_filter(QString filter) {
  filter.remove(' ');
  QString extension;
  // ".spc)", ".dd)", ".c)": the point stands 5, 4 or 3 characters from the end. A later match replaces an earlier one.
  for (const int from_end : {5, 4, 3})
    if (filter.size() >= from_end && filter[filter.size() - from_end] == '.')
      extension = filter.mid(filter.size() - from_end, from_end - 1);
  return extension;
}

QString with_extension(const QString &name, const QString &filter) {
  const QString extension = extension_of_filter(filter);
  return extension.isEmpty() || name.endsWith(extension) ? name : name + extension;
}

bool may_replace(QWidget *parent, const QString &title, const QStringList &paths) {
  QStringList present;
  for (const QString &path : paths)
    if (QFileInfo::exists(path)) present.append(QFileInfo(path).fileName());
  if (present.isEmpty()) return true;
  QMessageBox box(QMessageBox::Question, title, QString(), QMessageBox::Yes | QMessageBox::No, parent);
  box.setTextFormat(Qt::PlainText); // a name is no markup
  box.setText(present.size() == 1 ? present[0] + " exists already. Replace it?"
                                  : "These files exist already. Replace them?\n\n" + present.join('\n'));
  box.setDefaultButton(QMessageBox::No);
  return box.exec() == QMessageBox::Yes;
}

QString FileDialogs::open(QWidget *parent, FileCommand command) {
  QString &name = last[static_cast<std::size_t>(command)];
  const FileCommandRow &row = file_command(command);
  const QString chosen = QFileDialog::getOpenFileName(parent, row.title, name, row.filter);
  if (!chosen.isEmpty()) name = chosen;
  return QDir::toNativeSeparators(chosen);
}

QString FileDialogs::save(QWidget *parent, FileCommand command, const QString &suggestion) {
  QString &name = last[static_cast<std::size_t>(command)];
  const FileCommandRow &row = file_command(command);
  QFileDialog dialog(parent, row.title, name.isEmpty() ? QString() : QFileInfo(name).absolutePath(), row.filter);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setOption(QFileDialog::DontConfirmOverwrite); // it would ask before the extension is there
  dialog.selectFile(name.isEmpty() ? suggestion : QFileInfo(name).fileName());
  while (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty()) {
    const QString chosen = named_for(dialog.selectedFiles().first(), dialog.selectedNameFilter(), dialog.nameFilters());
    if (!may_replace(parent, row.title, {chosen})) continue;
    name = chosen;
    return QDir::toNativeSeparators(chosen);
  }
  return {};
}

} // namespace brisel
