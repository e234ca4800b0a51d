// command_table.h - menus and tool bar as data: every command of the main window stands here once.
#pragma once

#include <span>
#include <variant>

namespace brisel {

class cBriselApp;

using Slot = void (cBriselApp::*)();
using IndexSlot = void (cBriselApp::*)(int); // receives the item's position in its menu, separators counted

struct CommandRow {
  const char *text;                                                                  // null: a separator
  std::variant<std::monostate, Slot, IndexSlot, std::span<const CommandRow>> action; // the last: a sub-menu
  const char *icon = nullptr;
  const char *shortcut = nullptr;
  bool toggle = false;
};

struct MenuRow {
  const char *title;
  std::span<const CommandRow> rows;
};
/// The menu bar, the Window menu left out: that one is rebuilt each time it shows.
std::span<const MenuRow> menu_table();

struct ToolRow {
  int group;
  Slot slot;
  const char *tip;
  const char *status;
  const char *icon;
};
std::span<const ToolRow> tool_table();

} // namespace brisel
