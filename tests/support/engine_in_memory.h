// engine_in_memory.h - the engine as tests start it: start values, no settings read, trace and report in memory.
#pragma once

#include "engine/core/start_up.h"

namespace brisel::test {

inline void start_engine_in_memory() {
  program_start({.read_setup = false, .files = {{SystemFile::Kind::memory, ""}, {SystemFile::Kind::memory, ""}}});
}

} // namespace brisel::test
