// spec_file.h - filter specification files (.spc): one filter type and what it has to do, in fixed columns.
#pragma once

#include "engine/core/spec_check.h"
#include "engine/core/status.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brisel {

/// The text of a specification file. Frequencies are in hertz when `spec.unit` is 0, else in radians per second.
/// Nothing when a value is not finite or a count is beyond what the format holds.
std::optional<std::string> format_filter_spec(const FilterSpec &spec);
/// The same without the first line, which only names the kind of file.
std::optional<std::string> format_filter_spec_body(const FilterSpec &spec);

/// What the columns of the file change: six digits of a frequency and four of a ripple are not always the value. One
/// sentence, empty when the file holds everything.
std::string changed_by_columns(const FilterSpec &spec);

/// Where a reader stands and what it found.
struct SpecReading {
  struct Place {
    SpecField field;
    int index;
    int line;
  };
  std::vector<Place> places; // of the fields that were read
  int line = 0;              // of the error
  std::string last_line;
  std::string reason;

  /// The line that a field came from; the type line for what no line holds.
  int line_of(SpecField field, int index) const;
};

/// Reads a specification, `spec` being cleared first; its unit becomes 'H' or 'R'. Returns success, cannot_open or
/// format_error; an error is told to the front end with the last line read. What was read is not checked for sense.
Status read_filter_spec(const std::string &path, FilterSpec &spec, SpecReading *reading = nullptr);
/// The same from memory.
Status read_filter_spec_text(std::string_view text, FilterSpec &spec, SpecReading *reading = nullptr);

/// Writes a specification file. When that fails nothing is written, no message shown, and `why`, if given, says why.
bool write_filter_spec(const std::string &path, const FilterSpec &spec, std::string *why = nullptr);

/// Reads and checks a file; on success it becomes the specification of its type, which is selected. A file that is
/// malformed or asks for the impossible is refused with a message and format_error, and the state stays as it was.
Status load_filter_spec(const std::string &path);

} // namespace brisel
