// fault_shim.cpp - stands in front of the C library (LD_PRELOAD) and lets one call on a file of one folder fail.
//
// BRISEL_FAULT_FOLDER  real path of the folder whose files count
// BRISEL_FAULT_CALL    "open" (for writing), "write", "close" or "rename"
// BRISEL_FAULT_AT      the call that fails, from 1
// BRISEL_FAULT_MARK    is made when it failed, so that a test knows a fault that was reached from one that was not
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

template <class Function> Function *next(const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

bool in_folder(const char *path) {
  const char *const folder = std::getenv("BRISEL_FAULT_FOLDER");
  return folder && std::strncmp(path, folder, std::strlen(folder)) == 0;
}

/// A file of the folder that is open for writing.
bool counts(int descriptor) {
  const int mode = fcntl(descriptor, F_GETFL);
  struct stat information;
  if (mode < 0 || (mode & O_ACCMODE) == O_RDONLY) return false;
  if (fstat(descriptor, &information) != 0 || !S_ISREG(information.st_mode)) return false;
  char link[64], path[PATH_MAX];
  std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
  const ssize_t length = readlink(link, path, sizeof path - 1);
  if (length < 0) return false;
  path[length] = '\0';
  return in_folder(path);
}

/// Counts a call of this kind and says whether it is the one that fails.
bool fails(const char *call) {
  static int count = 0;
  const char *const wanted = std::getenv("BRISEL_FAULT_CALL"), *const at = std::getenv("BRISEL_FAULT_AT");
  if (!wanted || !at || std::strcmp(call, wanted) != 0 || ++count != std::atoi(at)) return false;
  const int mark = next<int(const char *, mode_t)>("creat")(std::getenv("BRISEL_FAULT_MARK"), 0600);
  syscall(SYS_close, mark);
  return true;
}

int failure(int error) {
  errno = error;
  return -1;
}

} // namespace

extern "C" {

ssize_t write(int descriptor, const void *data, size_t size) {
  const auto real = next<ssize_t(int, const void *, size_t)>("write");
  if (!counts(descriptor) || !fails("write")) return real(descriptor, data, size);
  // What a disk does that becomes full: some of it is written.
  if (real(descriptor, data, size / 2) < 0) return -1;
  return failure(ENOSPC);
}

int close(int descriptor) {
  const bool fault = counts(descriptor) && fails("close");
  const int result = next<int(int)>("close")(descriptor);
  return fault ? failure(EIO) : result;
}

static bool rename_fails(const char *from) {
  char path[PATH_MAX];
  return realpath(from, path) && in_folder(path) && fails("rename");
}

int rename(const char *from, const char *to) noexcept {
  return rename_fails(from) ? failure(EIO) : next<int(const char *, const char *)>("rename")(from, to);
}

int renameat2(int from_folder, const char *from, int to_folder, const char *to, unsigned flags) noexcept {
  const auto real = next<int(int, const char *, int, const char *, unsigned)>("renameat2");
  return rename_fails(from) ? failure(EIO) : real(from_folder, from, to_folder, to, flags);
}

/// The one way in which files are made beside their targets.
int mkostemp(char *name, int flags) {
  const int descriptor = next<int(char *, int)>("mkostemp")(name, flags);
  if (descriptor < 0 || !counts(descriptor) || !fails("open")) return descriptor;
  unlink(name);
  syscall(SYS_close, descriptor);
  return failure(ENOSPC);
}

} // extern "C"
