// dialog_rules.h - what every dialog owes to those who use the keyboard.
#pragma once

#include <QAbstractButton>
#include <QDialog>
#include <QGridLayout>
#include <QKeySequence>
#include <QLabel>
#include <QPushButton>

#include <map>

namespace brisel {

inline QChar mnemonic_of(const QString &text) {
  const QKeySequence keys = QKeySequence::mnemonic(text);
  return keys.isEmpty() ? QChar() : QChar(keys[0].key() & 0xFFFF).toLower();
}

/// Letters that two widgets share, and widgets without a letter though one in their text is free.
inline QStringList mnemonic_faults(const QDialog &dialog) {
  QStringList faults, without;
  std::map<QChar, QString> taken;
  const auto look_at = [&](const QString &text) {
    if (text.isEmpty()) return;
    const QChar letter = mnemonic_of(text);
    if (letter.isNull())
      without.append(text);
    else if (const auto [place, free] = taken.try_emplace(letter, text); !free)
      faults.append("\"" + text + "\" and \"" + place->second + "\" share a letter");
  };
  for (const QLabel *label : dialog.findChildren<QLabel *>())
    if (label->isVisible() && label->buddy()) look_at(label->text());
  for (const QAbstractButton *button : dialog.findChildren<QAbstractButton *>())
    if (button->isVisible()) look_at(button->text());
  for (const QString &text : without)
    for (const QChar letter : text)
      if (letter.isLetterOrNumber() && letter.unicode() < 128 && !taken.contains(letter.toLower())) {
        faults.append("\"" + text + "\" has no letter");
        break;
      }
  return faults;
}

/// Steps of the Tab key that lead back to the left in a row, or up without going to the right.
inline QStringList tab_order_faults(const QDialog &dialog) {
  QStringList faults;
  const QWidget *before = nullptr;
  for (QWidget *widget = dialog.nextInFocusChain(); widget && widget != &dialog; widget = widget->nextInFocusChain()) {
    if (widget->window() != &dialog || !widget->isVisible() || !(widget->focusPolicy() & Qt::TabFocus)) continue;
    if (widget->parentWidget() && widget->parentWidget()->focusProxy() == widget) continue;
    const auto place = [&](const QWidget *w) { return QRect(w->mapTo(&dialog, QPoint()), w->size()); };
    if (before) {
      const QRect a = place(before), b = place(widget);
      const bool one_row = b.center().y() >= a.top() && b.center().y() <= a.bottom() && a.height() < 60;
      if (one_row ? b.left() < a.left() : b.bottom() < a.top() && b.left() <= a.left())
        faults.append(before->objectName() + " -> " + widget->objectName());
    }
    before = widget;
  }
  return faults;
}

/// Enter has exactly one meaning: to go on; and every label that names a field leads to it.
inline QStringList other_faults(const QDialog &dialog) {
  QStringList faults, defaults;
  for (const QPushButton *button : dialog.findChildren<QPushButton *>())
    if (button->isDefault()) defaults.append(button->objectName());
  if (defaults.size() != 1 || !QRegularExpression("^p(Next|Ok|OK|Accept|Close)_Button$").match(defaults[0]).hasMatch())
    faults.append("Enter presses " + defaults.join(" and "));
  for (const QGridLayout *grid : dialog.findChildren<QGridLayout *>())
    for (int row = 0; row < grid->rowCount(); row++)
      for (int column = 0; column + 1 < grid->columnCount(); column++) {
        const QLayoutItem *left = grid->itemAtPosition(row, column), *right = grid->itemAtPosition(row, column + 1);
        const auto *label = left ? qobject_cast<QLabel *>(left->widget()) : nullptr;
        if (label && label->text().endsWith(':') && !label->buddy() && right && right->widget() &&
            right->widget()->focusPolicy() & Qt::TabFocus)
          faults.append("\"" + label->text() + "\" leads nowhere");
      }
  return faults;
}

/// Texts that have less room than they need.
inline QStringList clipped_texts(const QDialog &dialog) {
  QStringList faults;
  for (const QWidget *widget : dialog.findChildren<QWidget *>()) {
    const auto *label = qobject_cast<const QLabel *>(widget);
    const auto *button = qobject_cast<const QAbstractButton *>(widget);
    if (!widget->isVisible() || (label ? label->wordWrap() || label->text().isEmpty() : !button)) continue;
    const QSize need = widget->minimumSizeHint();
    if (widget->width() < need.width() || widget->height() < need.height())
      faults.append((label ? label->text() : button->text()) + " is clipped");
    if (!widget->parentWidget()->rect().contains(widget->geometry()))
      faults.append((label ? label->text() : button->text()) + " stands outside");
  }
  return faults;
}

inline QStringList all_faults(const QDialog &dialog) {
  return mnemonic_faults(dialog) + tab_order_faults(dialog) + other_faults(dialog) + clipped_texts(dialog);
}

} // namespace brisel
