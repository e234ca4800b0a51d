#include "engine/core/trace.h"

#include "engine/core/front_end.h"
#include "engine/files/text_file.h"

#include <cmath>
#include <cstdarg>
#include <cstdlib>
#include <fcntl.h>
#include <span>
#include <sys/stat.h>
#include <unistd.h>

namespace brisel {

std::uint8_t trace_on;
std::FILE *trace_file;
std::FILE *report_file;

namespace {

struct OpenFile {
  SystemFile place;
  std::FILE **stream;
  bool complained = false;
  char *memory = nullptr; // of a stream kept in memory
  std::size_t memory_size = 0;
};
OpenFile trace_place{SystemFiles{}.trace, &trace_file};
OpenFile report_place{SystemFiles{}.report, &report_file};

// A link or a device under the name of a system file is somebody else's: it is not written.
std::FILE *open_named(const std::string &path, bool append) {
  // Appending from the start, so that two sessions in one folder mix their lines and do not overwrite them.
  const int mode = O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_APPEND;
  const int descriptor = ::open(path.c_str(), mode, 0666);
  if (descriptor < 0) return nullptr;
  struct stat information;
  const bool regular = fstat(descriptor, &information) == 0 && S_ISREG(information.st_mode);
  if (!regular || (!append && ftruncate(descriptor, 0) != 0)) {
    ::close(descriptor);
    return nullptr;
  }
  return fdopen(descriptor, append ? "a" : "w");
}

void open(OpenFile &file, bool append) {
  using Kind = SystemFile::Kind;
  if (file.place.kind == Kind::memory) {
    *file.stream = open_memstream(&file.memory, &file.memory_size);
  } else if (file.place.kind == Kind::named) {
    *file.stream = open_named(file.place.path, append);
    if (!*file.stream && !file.complained) {
      file.complained = true;
      front_end->show_text(formatf("The File %s cannot be opened for write\n", file.place.path.c_str()));
    }
  }
  if (!*file.stream) *file.stream = std::fopen("/dev/null", "w");
}

void close(OpenFile &file) {
  if (*file.stream) std::fclose(*file.stream);
  *file.stream = nullptr;
  std::free(file.memory);
  file.memory = nullptr;
}

void reopen(OpenFile &file) {
  if (*file.stream && file.place.kind == SystemFile::Kind::memory) return; // nothing could be lost
  const bool was_open = *file.stream != nullptr;
  close(file);
  open(file, was_open);
}

std::string text(OpenFile &file) {
  if (!*file.stream || file.place.kind != SystemFile::Kind::memory) return {};
  std::fflush(*file.stream);
  return std::string(file.memory, file.memory_size);
}

void write(std::FILE *stream, const char *format, va_list arguments) {
  if (!stream) return;
  const CLocale c_locale;
  std::vfprintf(stream, format, arguments);
}

// Every dump: all that was written before is on disk, then title and sampling rate, and all is on disk again.
template <class Entry, class Body> void dump_entry(const char *title, const Entry &entry, Body body) {
  if (!trace_on) return;
  reopen_system_files();
  trace("\n %s: id = %p\n", title, static_cast<const void *>(&entry));
  trace(" sample rate = %18.12e, %18.12e (Hertz)\n", entry.sample_rate, entry.sample_rate * inverse_two_pi);
  body();
  trace("\n");
  reopen_system_files();
}

void dump_places(const char *kind, std::span<const std::complex<double>> places) {
  int number = 1;
  for (const auto &place : places) {
    const double radius = std::abs(place);
    const double angle = radius == 0 ? 0.0 : std::atan2(place.imag(), place.real());
    trace(" %s %d : % 20.12e, % 20.12e, %20.12e, % 20.12e\n", kind, number++, place.real(), place.imag(), radius,
          angle);
  }
}

void dump_triples(std::span<const Triple> triples) {
  int number = 1;
  for (const Triple &t : triples) trace(" %d: % 20.12e % 20.12e % 20.12e\n", number++, t[0], t[1], t[2]);
}

} // namespace

void choose_system_files(const SystemFiles &files) {
  close_system_files();
  trace_place = {files.trace, &trace_file};
  report_place = {files.report, &report_file};
}

void reopen_system_files() {
  reopen(trace_place);
  reopen(report_place);
}

void trim_system_files() {
  close_system_files();
  reopen_system_files();
  trace(" System files have been trimmed.\n");
}

void close_system_files() {
  close(trace_place);
  close(report_place);
}

void delete_system_files() {
  close_system_files();
  for (const OpenFile *file : {&trace_place, &report_place})
    if (file->place.kind == SystemFile::Kind::named) ::unlink(file->place.path.c_str());
}

std::string trace_text() {
  return text(trace_place);
}
std::string report_text() {
  return text(report_place);
}

void trace(const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  write(trace_file, format, arguments);
  va_end(arguments);
}

void report(const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  write(report_file, format, arguments);
  va_end(arguments);
}

void dump(const FirEntry &entry) {
  dump_entry("Fir Filter Entry", entry, [&] {
    trace(" gain = % 20.12e, shift = %x\n", entry.gain, static_cast<unsigned>(entry.shift));
    trace(" length = %d, fir type = %d\n", entry.length, entry.fir_type);
    const bool half = entry.fir_type == 0 || entry.fir_type == 1;
    const bool full = entry.fir_type == 2 || entry.fir_type == 3;
    const int count = half ? entry.unique_count : full ? entry.length : 0;
    if (entry.has_window) trace("  Coefficent,         Window,             Product\n");
    for (int i = 0; i < count; i++) {
      const double h = entry.coeff[i];
      if (entry.has_window)
        trace("% 20.12e%20.12e% 20.12e /* coeff %d */\n", h, entry.window[i], h * entry.window[i], i);
      else
        trace(" h =% 20.12e /* coeff %d */\n", h, i);
    }
  });
}

void dump(const RatioEntry &entry) {
  dump_entry("Ratio Entry", entry, [&] {
    trace(" gain = % 20.12e\n", entry.gain);
    for (int i = 0; i <= entry.numerator_order; i++) trace(" Numerator %d: % 20.12e\n", i, entry.numerator[i]);
    for (int i = 0; i <= entry.denominator_order; i++) trace(" Denominator %d: % 20.12e\n", i, entry.denominator[i]);
  });
}

void dump(const PoleZeroEntry &entry) {
  dump_entry("Pole / Zero Entry", entry, [&] {
    trace(" gain = % 20.12e\n", entry.gain);
    trace("\t    x position            y position            radius                angle\n");
    dump_places("Zero", std::span(entry.zeros).first(entry.real_zeros + entry.complex_zeros));
    dump_places("Pole", std::span(entry.poles).first(entry.real_poles + entry.complex_poles));
  });
}

void dump(const SectionEntry &entry) {
  dump_entry("Second Order Section Entry", entry, [&] {
    trace(" gain =% 18.12e, pars =% 18.12e, order = %d, sections = %d\n", entry.gain, entry.pars, entry.order,
          entry.section_count);
    trace(" Numerators\n");
    dump_triples(std::span(entry.numerators).first(entry.section_count));
    trace(" Denominators\n");
    dump_triples(std::span(entry.denominators).first(entry.section_count));
  });
}

void dump(const LatticeEntry &entry) {
  dump_entry("Lattice Structure", entry, [&] {
    trace(" order = %d, lead = %d\n", entry.order, entry.lead);
    trace(" gain = % 20.12e\n", entry.gain);
    for (int i = 0; i <= entry.order + entry.lead; i++) trace(" gamma %d: % 20.12e\n", i, entry.gamma[i]);
    for (int i = 1; i <= entry.order; i++) trace(" kappa %d: % 20.12e\n", i, entry.kappa[i]);
  });
}

void dump(const LadderEntry &entry) {
  dump_entry("Ladder Structure", entry, [&] {
    trace(" order = %d, lead = %d, form = %d\n", entry.order, entry.lead, entry.form + 1);
    trace(" gain = % 20.12e\n", entry.gain);
    for (int i = 0; i < entry.alpha_count; i++) trace(" alpha %d: % 20.12e\n", i, entry.alpha[i]);
  });
}

} // namespace brisel
