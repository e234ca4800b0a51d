// messages.h - the numbered messages of the message file: blocks of ".MESSAGE number", at most 40 lines of text and
// ".END_OF_MESSAGE", in ascending order of number.
#pragma once

#include "engine/core/message_numbers.h"

#include <string>

namespace brisel {

inline constexpr int max_message_lines = 40;

/// Folder of the executable; the message file is looked for there, then in ../share/brisel.
extern std::string program_directory;
std::string find_program_directory();

/// The text of message `number` in the file `path`, each line ended with a line feed. A missing file or number gives a
/// text that says so.
std::string get_message(int number, const std::string &path);
/// The same from the program's own message file.
std::string message_text(Message number);
/// The path of the program's own message file.
std::string message_file_path();

} // namespace brisel
