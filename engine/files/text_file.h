// text_file.h - text in and out: formatting in the C locale, bounded line reading, and saving that leaves a target
// either as it was or complete.
#pragma once

#include "engine/core/status.h"

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brisel {

/// Makes the C locale the calling thread's locale for its lifetime; a toolkit may have set the user's.
class CLocale {
public:
  CLocale();
  ~CLocale();
  CLocale(const CLocale &) = delete;
  CLocale &operator=(const CLocale &) = delete;

private:
  void *previous;
};

/// Appends printf-formatted text, numbers in the C locale whatever the user's is.
[[gnu::format(printf, 2, 3)]] void appendf(std::string &out, const char *format, ...);
[[gnu::format(printf, 1, 2)]] std::string formatf(const char *format, ...);
/// The smallest number of digits that reads back to the same double.
std::string shortest(double value);

/// A decimal number at the start of `text` after blanks; what follows it is left alone. "nan", "inf", hexadecimal
/// floats and values beyond the range of a double are no numbers. `used`, if given, receives the characters consumed.
std::optional<double> parse_number(std::string_view text, std::size_t *used = nullptr);
std::optional<long long> parse_integer(std::string_view text, std::size_t *used = nullptr);
/// The same from column `column` on (counted from 0); a line shorter than that holds no number.
std::optional<double> number_at(std::string_view line, std::size_t column);
std::optional<long long> integer_at(std::string_view line, std::size_t column);

/// Control characters as \xNN, so that foreign bytes can stand in a one-line message.
std::string escaped(std::string_view text);

/// Reads a regular file line by line. A line longer than the buffer ends the reading with `too_long()` set; a line may
/// end with a line feed, a carriage return and a line feed, or the end of the file.
class LineReader {
public:
  /// `capacity` is the size of the line buffer that the format states, its terminator included.
  explicit LineReader(std::size_t capacity) : capacity(capacity) {}
  ~LineReader();
  LineReader(const LineReader &) = delete;
  LineReader &operator=(const LineReader &) = delete;

  /// False when the file cannot be opened or is no regular file.
  bool open(const std::string &path);
  /// Reads `content`, which must outlive the reader, in place of a file.
  void open_text(std::string_view content);
  /// Advances to the next line; false at the end of the file, on a read error and on a line that is too long.
  bool next();
  const std::string &line() const { return text; } // without its end; the last line read after a failure
  int line_number() const { return number; }       // of line(), from 1; one beyond the last after the end
  bool too_long() const { return overflow; }

private:
  std::size_t capacity;
  std::FILE *file = nullptr;
  std::string text;
  int number = 0;
  bool overflow = false;
};

/// "cannot be opened for reading: " and why, of a file that `open` or `read_file` did not take.
std::string unreadable(const std::string &path);

/// The whole of a regular file of at most `limit` bytes; nothing when it cannot be read or is larger.
std::optional<std::string> read_file(const std::string &path, std::size_t limit);

/// Files that belong together: all of them are written beside their targets first, then all are renamed, and those
/// renamed before a failure are taken back, so that a failure leaves every old file untouched and no new one. Links are
/// followed; a target that is no regular file (a device, a pipe) is written through. On a file system that cannot
/// exchange two names a file already replaced when a later renaming fails stays replaced, whole.
class FileSet {
public:
  void add(std::string path, std::string content);
  /// Written through like a device.
  void add_standard_output(std::string content);
  /// False, with `why` saying which file failed and how, when something could not be written.
  [[nodiscard]] bool commit(std::string &why);

private:
  struct File {
    std::string path; // empty: standard output
    std::string content;
  };
  std::vector<File> files;
};

/// Writes a file that must not exist yet; `errno` is EEXIST when it does. A failure leaves none behind.
[[nodiscard]] bool save_new_file(const std::string &path, std::string_view content, std::string &why);
/// A FileSet of one.
[[nodiscard]] bool save_file(const std::string &path, std::string content, std::string &why);

} // namespace brisel
