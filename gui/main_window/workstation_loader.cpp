#include "gui/main_window/workstation_loader.h"

#include "gui/main_window/workstation.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <dlfcn.h>
#include <string_view>
#include <unistd.h>

namespace brisel {

static constexpr std::array<std::string_view, 3> loadable_extensions{".spc", ".inp", ".flt"};

bool wants_workstation(int argc, const char *const *argv) {
  if (argc != 2) return argc < 2;
  const std::string_view name = argv[1];
  if (name.size() < 4) return false;
  const std::string_view extension = name.substr(name.size() - 4);
  return std::any_of(loadable_extensions.begin(), loadable_extensions.end(), [&](std::string_view loadable) {
    return std::equal(loadable.begin(), loadable.end(), extension.begin(),
                      [](char a, char b) { return a == std::tolower(static_cast<unsigned char>(b)); });
  });
}

int run_workstation(const std::string &program_folder, int argc, char **argv) {
  for (const char *folder : {"/", "/../lib/brisel/"}) {
    const std::string path = program_folder + folder + "brisel_workstation.so";
    if (access(path.c_str(), F_OK) != 0) continue;
    void *module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    void *entry = module ? dlsym(module, "brisel_workstation") : nullptr;
    if (entry) return reinterpret_cast<decltype(&brisel_workstation)>(entry)(argc, argv);
    std::fprintf(stderr, "brisel: the workstation cannot be opened: %s\n", dlerror());
    return 1;
  }
  std::fprintf(stderr,
               "brisel: the workstation cannot be opened: brisel_workstation.so is neither in %s nor in "
               "%s/../lib/brisel\n",
               program_folder.c_str(), program_folder.c_str());
  return 1;
}

} // namespace brisel
