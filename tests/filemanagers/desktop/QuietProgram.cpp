#include "tests/filemanagers/desktop/QuietProgram.h"

#include <chrono>
#include <csignal>

#include "tests/support/bus/PrivateBus.h"
#include "tests/support/files/TemporaryDirectory.h"

QuietProgram::QuietProgram(const std::vector<std::string> &arguments, const CommandOptions &options,
                           std::string errorPath)
    : errorPath_(std::move(errorPath)) {
  const platform::ObjectHandle<GSubprocessLauncher> launcher = launcherFor(options);
  g_subprocess_launcher_set_stdout_file_path(launcher.get(), "/dev/null");
  g_subprocess_launcher_set_stderr_file_path(launcher.get(), errorPath_.c_str());
  process_ = spawn(launcher.get(), arguments);
}

QuietProgram::~QuietProgram() {
  using std::chrono::steady_clock;
  const auto end = steady_clock::now() + std::chrono::seconds(5);
  g_subprocess_send_signal(process_.get(), SIGTERM);
  turnMainLoopUntil([&] { return !isRunning() || steady_clock::now() >= end; });
  g_subprocess_force_exit(process_.get());
  g_subprocess_wait(process_.get(), nullptr, nullptr);
}

std::string QuietProgram::processIdentifier() const {
  const char *identifier = g_subprocess_get_identifier(process_.get());
  return identifier == nullptr ? "" : identifier;
}

std::string QuietProgram::errors() const {
  return readFileForTest(errorPath_);
}
