// trace.h - the trace file "SFIL.STA", the report file "SFIL.OUT", and the dumps of records into the trace.
#pragma once

#include "engine/core/records.h"

#include <cstdint>
#include <cstdio>
#include <string>

namespace brisel {

extern std::uint8_t trace_on; // dumps are written: 0 no, 1 low level, 2 high level
extern std::FILE *trace_file; // never null once the system files are open
extern std::FILE *report_file;

/// Where a system file goes.
struct SystemFile {
  enum class Kind { named, null_device, memory } kind;
  std::string path; // of a named one
};
struct SystemFiles {
  SystemFile trace{SystemFile::Kind::named, "SFIL.STA"};
  SystemFile report{SystemFile::Kind::named, "SFIL.OUT"};
};
/// Says where the system files go from the next reopening on.
void choose_system_files(const SystemFiles &files);

/// Closes both files if open and reopens them for appending (for writing when they were not open), so that what was
/// written so far is on disk. A file that cannot be opened, or is a link, is replaced by the null device; the first
/// time the front end is told.
void reopen_system_files();
/// Empties both files and writes a line about it to the trace.
void trim_system_files();
/// Closes both files.
void close_system_files();
/// Closes both and deletes the named ones.
void delete_system_files();
/// What a system file kept in memory holds so far.
std::string trace_text();
std::string report_text();

/// Writes to the trace file, numbers in the C locale.
[[gnu::format(printf, 1, 2)]] void trace(const char *format, ...);
/// Writes to the report file, numbers in the C locale.
[[gnu::format(printf, 1, 2)]] void report(const char *format, ...);

/// Dumps, one an entry kind; nothing is written unless `trace_on` is set.
void dump(const FirEntry &entry);
void dump(const RatioEntry &entry);
void dump(const PoleZeroEntry &entry);
void dump(const SectionEntry &entry);
void dump(const LatticeEntry &entry);
void dump(const LadderEntry &entry);

} // namespace brisel
