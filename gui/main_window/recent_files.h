// recent_files.h - the files loaded or written last, kept for the user, not for the folder.
#pragma once

#include <QStringList>

namespace brisel {

inline constexpr int most_recent_files = 10;

/// Newest first; files that no longer exist are left out.
QStringList recent_files();
void remember_recent_file(const QString &path);

} // namespace brisel
