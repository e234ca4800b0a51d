// The program is killed at every system call of its exit, before the call and after it: the setup file is the old one
// or the new one, never a mix, and the next start reads it.
#include "engine/core/setup_file.h"
#include "engine/core/start_up.h"
#include "tests/support/scripted_front_end.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace brisel;
namespace fs = std::filesystem;

namespace {

constexpr int old_bits = 16, new_bits = 24;
const fs::path setup(setup_file_name);

/// What the setup file says, less the line with the time; empty when there is none.
std::string settings() {
  std::ifstream in(setup, std::ios::binary);
  std::string text(std::istreambuf_iterator<char>(in), {});
  const std::size_t second = text.find('\n') + 1;
  return text.empty() ? text : text.erase(second, text.find('\n', second) + 1 - second);
}

/// Runs the exit in a child that is killed at its `stop`-th stop at a system call. False when it ended before that.
bool killed_at(int stop, ExitMode mode) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    std::raise(SIGSTOP);
    program_exit(mode);
    ::_exit(0);
  }
  int state = 0;
  ::waitpid(child, &state, 0);
  EXPECT_TRUE(WIFSTOPPED(state)) << "this process may not trace its children";
  for (int i = 0; WIFSTOPPED(state) && i < stop; i++) {
    ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
    ::waitpid(child, &state, 0);
  }
  if (!WIFSTOPPED(state)) return false;
  ::kill(child, SIGKILL);
  ::waitpid(child, &state, 0);
  return true;
}

} // namespace

TEST(Exit, KilledAtAnySystemCallLeavesTheOldSetupFileOrTheNewOne) {
  const fs::path folder = fs::temp_directory_path() / ("brisel_exit_" + std::to_string(::getpid()));
  const fs::path home = fs::current_path();
  fs::create_directories(folder);
  fs::current_path(folder);
  ScriptedFrontEnd front;
  for (const ExitMode mode : {ExitMode::save, ExitMode::defaults}) {
    program_start({.read_setup = false, .files = {}});
    quantization_settings.ibit = new_bits;
    program_exit(ExitMode::save);
    const std::string after = mode == ExitMode::save ? settings() : "";
    fs::remove(setup);
    program_start();
    program_exit(ExitMode::save);
    const std::string before = settings();
    fs::copy_file(setup, "kept");

    int olds = 0, news = 0;
    for (int stop = 1;; stop++) {
      fs::copy_file("kept", setup, fs::copy_options::overwrite_existing);
      program_start();
      quantization_settings.ibit = new_bits;
      const bool killed = killed_at(stop, mode);
      const std::string now = settings();
      EXPECT_TRUE(now == before || now == after) << "stop " << stop << "\n" << now;
      (now == before ? olds : news)++;
      program_start();
      EXPECT_EQ(quantization_settings.ibit, now == after && mode == ExitMode::save ? new_bits : old_bits);
      program_exit(ExitMode::discard);
      // Of a file that was being written beside the target something may stay; it is never taken for the setup file.
      for (const auto &entry : fs::directory_iterator("."))
        if (entry.path().filename().string().starts_with("system.brisel.")) fs::remove(entry);
      if (!killed) break;
    }
    EXPECT_GE(olds, mode == ExitMode::save ? 10 : 1);
    EXPECT_GE(news, 2);
    fs::remove("kept");
  }
  fs::current_path(home);
  fs::remove_all(folder);
}
