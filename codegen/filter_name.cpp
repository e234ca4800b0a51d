#include "codegen/filter_name.h"

#include <algorithm>
#include <array>

namespace brisel {

namespace {

constexpr std::size_t longest_name = 13;

// Keywords of C and C++, and the types of the generated DSP sources, which use the name as it stands. "filter" would
// make the variable FIR_filter, which is the name of its own type.
constexpr std::array<std::string_view, 64> reserved{
    "filter",   "auto",     "break",   "case",      "char",       "const",     "continue",      "default",
    "do",       "double",   "else",    "enum",      "extern",     "float",     "for",           "goto",
    "if",       "inline",   "int",     "long",      "register",   "restrict",  "return",        "short",
    "signed",   "sizeof",   "static",  "struct",    "switch",     "typedef",   "union",         "unsigned",
    "void",     "volatile", "while",   "_Bool",     "_Complex",   "class",     "new",           "delete",
    "this",     "template", "private", "public",    "namespace",  "asm",       "bool",          "true",
    "false",    "nullptr",  "typeof",  "constexpr", "alignas",    "alignof",   "static_assert", "thread_local",
    "_Alignas", "_Alignof", "_Atomic", "_Generic",  "_Imaginary", "_Noreturn", "Frac16",        "Int16"};

bool is_letter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

} // namespace

std::string filter_name(std::string_view path) {
  // Kept: the search for the separator runs from the third-last character down to position 1, so the separator before a
  // name of one character is not seen.
  std::size_t start = 0;
  for (std::size_t i = path.size() >= 3 ? path.size() - 3 : 0; i >= 1; i--)
    if (path[i] == '\\' || path[i] == '/') {
      start = i + 1;
      break;
    }
  if (start == 0 && path.size() > 1 && path[0] == '/') start = 1; // a file in the root folder
  std::string name(path.substr(start, longest_name));
  if (const std::size_t point = name.find('.', 1); point != name.npos) name.resize(point);
  for (char &c : name)
    if (!is_letter(c) && !is_digit(c)) c = '_';
  if (name.empty() || is_digit(name[0])) name.insert(0, "_");
  if (std::find(reserved.begin(), reserved.end(), name) != reserved.end()) name += '_';
  return name;
}

std::string comment_text(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '/' && !out.empty() && out.back() == '*') out += ' ';
    out += static_cast<unsigned char>(c) < 0x20 || c == 0x7f ? ' ' : c;
  }
  return out;
}

} // namespace brisel
