#include "gui/plots/picture_module.h"

#include "engine/files/text_file.h"

#include <dlfcn.h>
#include <unistd.h>

namespace brisel {

bool render_pictures(const std::string &program_folder, const PictureJob &job, PictureResult &result) {
  for (const char *folder : {"/", "/../lib/brisel/"}) {
    const std::string path = program_folder + folder + "brisel_pictures.so";
    if (access(path.c_str(), F_OK) != 0) continue;
    // Stays loaded: the toolkit cannot be unloaded.
    void *module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    void *entry = module ? dlsym(module, "brisel_render_pictures") : nullptr;
    if (!entry) {
      const char *why = dlerror();
      result.error = escaped(formatf("plots cannot be drawn: %s", why ? why : path.c_str()));
      return false;
    }
    return reinterpret_cast<decltype(&brisel_render_pictures)>(entry)(&job, &result) != 0;
  }
  result.error = escaped("plots cannot be drawn: brisel_pictures.so is neither in " + program_folder + " nor in " +
                         program_folder + "/../lib/brisel");
  return false;
}

} // namespace brisel
