#include "gui/main_window/recent_files.h"

#include <QFileInfo>
#include <QSettings>

namespace brisel {

namespace {

const char *const key = "recent_files";

struct UserSettings : QSettings {
  UserSettings() : QSettings(QSettings::IniFormat, QSettings::UserScope, "brisel", "brisel") {}
};

} // namespace

QStringList recent_files() {
  QStringList existing;
  for (const QString &path : UserSettings().value(key).toStringList())
    if (existing.size() < most_recent_files && QFileInfo(path).isFile()) existing.append(path);
  return existing;
}

void remember_recent_file(const QString &path) {
  const QString full = QFileInfo(path).absoluteFilePath();
  QStringList files = recent_files();
  files.removeAll(full);
  files.prepend(full);
  UserSettings().setValue(key, files.mid(0, most_recent_files));
}

} // namespace brisel
