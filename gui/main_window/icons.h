// icons.h - icons of the commands, drawn in the colours of the palette.
#pragma once

#include <QIcon>
#include <QPalette>
#include <QString>

namespace brisel {

inline constexpr int tool_icon_size = 20;

/// The icon of the command, crisp at once and twice its size. In the drawings black stands for the text colour of the
/// palette, so they are readable on light and on dark ones.
QIcon command_icon(const QString &name, const QPalette &palette);
QIcon application_icon();

} // namespace brisel
