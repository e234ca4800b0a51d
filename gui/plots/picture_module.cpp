#include "gui/plots/picture_module.h"

#include "gui/plots/pictures.h"

#include <QFontInfo>
#include <QGuiApplication>
#include <QHash>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <optional>
#include <string_view>
#include <time.h>
#include <unistd.h>

namespace {

/// Sends standard error to the null device: the font library reports a missing cache folder there by itself, the
/// toolkit whatever it misses. Where they give up, for want of memory or of their own parts, they abort the process: it
/// ends with one line then.
class QuietErrors {
public:
  QuietErrors() : ends_before(std::signal(SIGABRT, end_with_one_line)) {
    kept = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    quiet = kept >= 0 && null >= 0 && dup2(null, STDERR_FILENO) >= 0;
    if (null >= 0) close(null);
  }
  ~QuietErrors() {
    std::signal(SIGABRT, ends_before);
    if (kept < 0) return;
    dup2(kept, STDERR_FILENO);
    close(kept);
  }
  QuietErrors(const QuietErrors &) = delete;
  QuietErrors &operator=(const QuietErrors &) = delete;
  bool are_quiet() const { return quiet; }

private:
  static void end_with_one_line(int) {
    constexpr std::string_view line = "brisel: plots cannot be drawn: the toolkit cannot go on\n";
    [[maybe_unused]] const ssize_t written = write(kept, line.data(), line.size());
    _exit(1);
  }
  static inline int kept = -1;
  void (*ends_before)(int);
  bool quiet = false;
};

/// The toolkit takes over the user's locale when it starts.
class KeptLocale {
public:
  KeptLocale() : kept(std::setlocale(LC_ALL, nullptr)) {}
  ~KeptLocale() { std::setlocale(LC_ALL, kept.c_str()); }
  KeptLocale(const KeptLocale &) = delete;
  KeptLocale &operator=(const KeptLocale &) = delete;

private:
  std::string kept;
};

/// A document holds the date as long as its time zone makes it, and everything after it moves along: for the same bytes
/// everywhere the zone is the same everywhere.
class UniversalTime {
public:
  UniversalTime() {
    if (const char *zone = std::getenv("TZ")) kept = zone;
    setenv("TZ", "UTC0", 1);
    tzset();
  }
  ~UniversalTime() {
    if (kept)
      setenv("TZ", kept->c_str(), 1);
    else
      unsetenv("TZ");
    tzset();
  }
  UniversalTime(const UniversalTime &) = delete;
  UniversalTime &operator=(const UniversalTime &) = delete;

private:
  std::optional<std::string> kept;
};

std::string stem(brisel::PlotKind kind) {
  return std::string(brisel::plot_kinds[static_cast<std::size_t>(brisel::code(kind))].file_stem);
}

bool draw(const brisel::PictureJob &job, brisel::PictureResult &result) {
  // Without fonts the toolkit still lists generic families, but what it draws with is an empty box without a name.
  if (QFontInfo(brisel::mono_plot_style(*job.display).label_font).family().isEmpty()) {
    result.error = "no fonts are installed, so plots cannot be drawn: install fontconfig and fonts-liberation";
    return false;
  }
  std::vector<brisel::PlotData> plots;
  for (const brisel::PlotDescription &plot : job.plots)
    plots.push_back(brisel::plot_data_of(plot, *job.state, job.grid, job.problem));
  const auto keep = [&](std::string name, const QByteArray &bytes) {
    if (bytes.isEmpty()) result.error = name + " cannot be drawn: not enough memory";
    result.pictures.push_back({std::move(name), bytes.toStdString()});
    return result.error.empty();
  };
  const QSize size(job.size.width, job.size.height);
  for (const brisel::PlotData &plot : plots) {
    if (job.png && !keep(stem(plot.kind) + ".png", brisel::plot_png(plot, *job.display, size, job.size.scale)))
      return false;
    if (job.svg && !keep(stem(plot.kind) + ".svg", brisel::plot_svg(plot, *job.display, size / job.size.scale)))
      return false;
  }
  return !job.pdf || keep("plots.pdf", brisel::plot_pdf(plots, *job.display));
}

} // namespace

extern "C" [[gnu::visibility("default")]] int brisel_render_pictures(const brisel::PictureJob *job,
                                                                     brisel::PictureResult *result) {
  const KeptLocale kept_locale;
  const QuietErrors errors;
  if (!errors.are_quiet()) {
    result->error = std::string("plots cannot be drawn: ") + std::strerror(errno);
    return 0;
  }
  const UniversalTime zone;
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  // The user's screen has no say in a picture's size and letters.
  for (const char *name : {"QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_AUTO_SCREEN_SCALE_FACTOR", "QT_FONT_DPI",
                           "QT_USE_PHYSICAL_DPI", "QT_ENABLE_HIGHDPI_SCALING"})
    unsetenv(name);
  // The document writer lists its fonts in the order of a hash table, which is another one in every process otherwise.
  QHashSeed::setDeterministicGlobalSeed();
  try {
    static int count = 1;
    static char name[] = "brisel";
    static char *arguments[] = {name, nullptr};
    const QGuiApplication application(count, arguments);
    return draw(*job, *result);
  } catch (const std::exception &failure) {
    result->error = std::string("plots cannot be drawn: ") + failure.what();
    return 0;
  }
}
