#include "engine/files/text_file.h"

#include <cerrno>
#include <charconv>
#include <climits>
#include <clocale>
#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <locale.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brisel {

CLocale::CLocale() {
  static const locale_t c_locale = newlocale(LC_ALL_MASK, "C", nullptr);
  previous = uselocale(c_locale);
}

CLocale::~CLocale() {
  uselocale(static_cast<locale_t>(previous));
}

static void vappendf(std::string &out, const char *format, va_list arguments) {
  const CLocale c_locale;
  va_list again;
  va_copy(again, arguments);
  char small[256];
  const int length = std::vsnprintf(small, sizeof small, format, arguments);
  if (length >= 0 && static_cast<std::size_t>(length) < sizeof small) {
    out.append(small, static_cast<std::size_t>(length));
  } else if (length >= 0) {
    const std::size_t start = out.size();
    out.resize(start + static_cast<std::size_t>(length) + 1);
    std::vsnprintf(out.data() + start, static_cast<std::size_t>(length) + 1, format, again);
    out.resize(start + static_cast<std::size_t>(length));
  }
  va_end(again);
}

void appendf(std::string &out, const char *format, ...) {
  va_list arguments;
  va_start(arguments, format);
  vappendf(out, format, arguments);
  va_end(arguments);
}

std::string formatf(const char *format, ...) {
  std::string out;
  va_list arguments;
  va_start(arguments, format);
  vappendf(out, format, arguments);
  va_end(arguments);
  return out;
}

std::string shortest(double value) {
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  return std::string(digits, end);
}

static std::string_view without_lead(std::string_view text) {
  std::size_t start = 0;
  while (start < text.size() && std::strchr(" \t\r\n\v\f", text[start]) && text[start] != '\0') start++;
  // from_chars takes no plus sign; one before a digit or a point is part of the number.
  if (start + 1 < text.size() && text[start] == '+' && text[start + 1] != '-') start++;
  return text.substr(start);
}

std::optional<double> parse_number(std::string_view text, std::size_t *used) {
  const std::string_view number = without_lead(text);
  double value = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error != std::errc{}) return std::nullopt;
  const std::string_view taken = number.substr(0, static_cast<std::size_t>(end - number.data()));
  if (taken.find_first_of("nN") != taken.npos) return std::nullopt; // "nan", "inf"
  // "0x1p3" would read as 0: what follows the zero shows that no decimal number was meant.
  if (end < number.data() + number.size() && (*end == 'x' || *end == 'X')) return std::nullopt;
  if (used) *used = static_cast<std::size_t>(end - text.data());
  return value;
}

std::optional<long long> parse_integer(std::string_view text, std::size_t *used) {
  const std::string_view number = without_lead(text);
  long long value = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error != std::errc{}) return std::nullopt;
  if (used) *used = static_cast<std::size_t>(end - text.data());
  return value;
}

std::optional<double> number_at(std::string_view line, std::size_t column) {
  return column < line.size() ? parse_number(line.substr(column)) : std::nullopt;
}

std::optional<long long> integer_at(std::string_view line, std::size_t column) {
  return column < line.size() ? parse_integer(line.substr(column)) : std::nullopt;
}

std::string escaped(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
      appendf(out, "\\x%02X", static_cast<unsigned char>(c));
    else
      out += c;
  }
  return out;
}

LineReader::~LineReader() {
  if (file) std::fclose(file);
}

static std::FILE *open_regular(const std::string &path) {
  // A FIFO would block the opening itself, so the kind is asked of the descriptor, opened without waiting.
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return nullptr;
  struct stat information;
  if (fstat(descriptor, &information) != 0 || !S_ISREG(information.st_mode)) {
    ::close(descriptor);
    errno = S_ISDIR(information.st_mode) ? EISDIR : EINVAL;
    return nullptr;
  }
  return fdopen(descriptor, "r");
}

std::string unreadable(const std::string &path) {
  std::FILE *const file = open_regular(path);
  const std::string why = file              ? "it is too large, or reading failed"
                          : errno == EINVAL ? "it is no regular file"
                                            : std::strerror(errno);
  if (file) std::fclose(file);
  return "cannot be opened for reading: " + why;
}

bool LineReader::open(const std::string &path) {
  file = open_regular(path);
  return file != nullptr;
}

void LineReader::open_text(std::string_view content) {
  // A stream opened for reading leaves its memory alone. One of no size would not open everywhere.
  static char end_of_file[] = "\n";
  file = content.empty() ? fmemopen(end_of_file, 1, "r")
                         : fmemopen(const_cast<char *>(content.data()), content.size(), "r");
  if (content.empty() && file) std::getc(file);
}

bool LineReader::next() {
  if (overflow || !file) return false;
  std::string read;
  int c = 0;
  number++;
  while ((c = std::getc(file)) != EOF && c != '\n') {
    if (read.size() + 3 > capacity) { // room for the line feed and the terminator of the stated buffer
      overflow = true;
      text = read;
      return false;
    }
    read += static_cast<char>(c);
  }
  if (c == EOF && read.empty()) return false;
  if (!read.empty() && read.back() == '\r') read.pop_back();
  text = std::move(read);
  return true;
}

std::optional<std::string> read_file(const std::string &path, std::size_t limit) {
  std::FILE *file = open_regular(path);
  if (!file) return std::nullopt;
  std::string content(limit + 1, '\0');
  content.resize(std::fread(content.data(), 1, content.size(), file));
  const bool good = !std::ferror(file) && content.size() <= limit;
  std::fclose(file);
  if (!good) return std::nullopt;
  return content;
}

void FileSet::add(std::string path, std::string content) {
  files.push_back({std::move(path), std::move(content)});
}

namespace {

struct Pending {
  std::string temporary; // holds the new file, and after an exchange the old one
  std::string target;
  bool had_old;
  bool placed = false;
  bool exchanged = false;
};

std::string system_error(const std::string &path, const char *what) {
  return path + ": " + what + ": " + std::strerror(errno);
}

/// False with the first failure in `errno`.
bool write_and_close(int descriptor, std::string_view content) {
  int error = 0;
  while (!content.empty() && error == 0) {
    const ssize_t written = ::write(descriptor, content.data(), content.size());
    if (written >= 0)
      content.remove_prefix(static_cast<std::size_t>(written));
    else if (errno != EINTR)
      error = errno;
  }
  if (::close(descriptor) != 0 && error == 0) error = errno;
  errno = error;
  return error == 0;
}

/// Gives the new file its name. `undoable` keeps the old one beside it, where the file system can exchange two names.
bool place(Pending &p, bool undoable) {
  const auto exchange = [&] {
    return ::renameat2(AT_FDCWD, p.temporary.c_str(), AT_FDCWD, p.target.c_str(), RENAME_EXCHANGE) == 0;
  };
  p.exchanged = undoable && p.had_old && exchange();
  if (undoable && p.had_old && !p.exchanged && errno != EINVAL && errno != ENOSYS && errno != ENOENT) return false;
  p.placed = p.exchanged || ::rename(p.temporary.c_str(), p.target.c_str()) == 0;
  return p.placed;
}

/// As it was before: the old file under its name, or none, and nothing beside it.
void withdraw(const Pending &p) {
  if (p.exchanged)
    ::renameat2(AT_FDCWD, p.temporary.c_str(), AT_FDCWD, p.target.c_str(), RENAME_EXCHANGE);
  else if (p.placed && !p.had_old)
    ::unlink(p.target.c_str());
  ::unlink(p.temporary.c_str());
}

/// The files of a set on their way; all are withdrawn unless the set is complete, also when memory runs out.
struct PendingFiles {
  std::vector<Pending> files;
  bool complete = false;

  ~PendingFiles() {
    if (!complete)
      for (const Pending &p : files) withdraw(p);
  }
};

/// Where a file of this name is or comes to be: links are followed, also one to a file that does not exist yet.
std::string resolved(std::string path) {
  for (int links = 0; links < 40; links++) {
    char target[4096];
    const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
    if (length <= 0 || static_cast<std::size_t>(length) == sizeof target) break;
    const std::string link(target, static_cast<std::size_t>(length));
    path = link[0] == '/' ? link : path.substr(0, path.rfind('/') + 1) + link;
  }
  return path;
}

/// Beside `target`, under its name and six characters; the name is cut where the file system allows no longer ones.
std::string temporary_name(const std::string &target) {
  constexpr std::size_t longest = NAME_MAX - 7;
  const std::size_t start = target.rfind('/') + 1; // 0 without a folder
  return target.substr(0, start) + target.substr(start, longest) + ".XXXXXX";
}

mode_t default_mode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

} // namespace

void FileSet::add_standard_output(std::string content) {
  files.push_back({{}, std::move(content)});
}

bool FileSet::commit(std::string &why) {
  PendingFiles set;
  std::vector<Pending> &pending = set.files;
  pending.reserve(files.size());
  const auto give_up = [&](std::string reason) {
    why = std::move(reason);
    return false;
  };

  std::vector<const File *> through;
  for (const File &file : files) {
    if (file.path.empty()) {
      through.push_back(&file);
      continue;
    }
    std::string target = resolved(file.path);
    struct stat information, of_target;
    const bool exists = ::stat(file.path.c_str(), &information) == 0;
    if (!exists && errno != ENOENT) return give_up(system_error(file.path, "cannot be written"));
    if (exists && S_ISDIR(information.st_mode)) {
      errno = EISDIR;
      return give_up(system_error(file.path, "cannot be written"));
    }
    // A link of the system's own, to a pipe or to a file without a name, cannot be followed by name.
    const bool named = ::stat(target.c_str(), &of_target) == 0 && of_target.st_ino == information.st_ino &&
                       of_target.st_dev == information.st_dev;
    if (exists && (!S_ISREG(information.st_mode) || !named)) {
      through.push_back(&file);
      continue;
    }
    if (exists && ::access(target.c_str(), W_OK) != 0) return give_up(system_error(file.path, "cannot be written"));
    std::string name = temporary_name(target);
    const int descriptor = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0) return give_up(system_error(file.path, "cannot be written"));
    pending.push_back({std::move(name), std::move(target), exists});
    const bool same_mode = ::fchmod(descriptor, exists ? information.st_mode & 07777 : default_mode()) == 0;
    const int mode_error = errno;
    if (!write_and_close(descriptor, file.content)) return give_up(system_error(file.path, "cannot be written"));
    errno = mode_error;
    if (!same_mode) return give_up(system_error(file.path, "cannot be given its permissions"));
  }
  // Nothing but standard output and devices can fail from here on without being undone, so they come last.
  for (Pending &p : pending)
    if (!place(p, files.size() > 1)) return give_up(system_error(p.target, "cannot be replaced"));
  for (const File *file : through) {
    const bool standard = file->path.empty();
    const int descriptor = standard ? ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)
                                    : ::open(file->path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (descriptor < 0 || !write_and_close(descriptor, file->content))
      return give_up(system_error(standard ? "standard output" : file->path, "cannot be written"));
  }
  set.complete = true;
  for (const Pending &p : pending)
    if (p.exchanged) ::unlink(p.temporary.c_str());
  files.clear();
  return true;
}

bool save_new_file(const std::string &path, std::string_view content, std::string &why) {
  const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (descriptor >= 0 && write_and_close(descriptor, content)) return true;
  const int error = errno;
  why = system_error(path, "cannot be written");
  if (descriptor >= 0) ::unlink(path.c_str());
  errno = error;
  return false;
}

bool save_file(const std::string &path, std::string content, std::string &why) {
  FileSet files;
  files.add(path, std::move(content));
  return files.commit(why);
}

} // namespace brisel
