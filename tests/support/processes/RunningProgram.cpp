#include "tests/support/processes/RunningProgram.h"

#include <algorithm>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

using platform::ErrorHandle;
using platform::ErrorOut;
using platform::ObjectHandle;

RunningProgram::RunningProgram(const std::vector<std::string> &arguments,
                               const CommandOptions &options) {
  int output[2] = {};
  int errors[2] = {};
  if (pipe2(output, O_CLOEXEC) != 0 || pipe2(errors, O_CLOEXEC) != 0) {
    throw std::runtime_error("There are no pipes");
  }
  output_.descriptor = output[0];
  errors_.descriptor = errors[0];
  const ObjectHandle<GSubprocessLauncher> launcher = launcherFor(options);
  g_subprocess_launcher_take_stdout_fd(launcher.get(), output[1]);
  g_subprocess_launcher_take_stderr_fd(launcher.get(), errors[1]);
  process_ = spawn(launcher.get(), arguments);
}

RunningProgram::~RunningProgram() {
  g_subprocess_force_exit(process_.get());
  closeOutput();
  close(errors_.descriptor);
}

std::string RunningProgram::read(Stream &stream, std::size_t count) {
  constexpr int patience = 30'000;  // milliseconds
  const auto lineCount = [&stream] {
    return static_cast<std::size_t>(std::count(stream.held.begin(), stream.held.end(), '\n'));
  };
  pollfd readable{stream.descriptor, POLLIN, 0};
  char buffer[4096];
  while (lineCount() < count && poll(&readable, 1, patience) == 1) {
    const ssize_t size = ::read(stream.descriptor, buffer, sizeof buffer);
    if (size <= 0) {
      break;
    }
    stream.held.append(buffer, static_cast<std::size_t>(size));
  }
  std::size_t end = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t newline = stream.held.find('\n', end);
    end = newline == std::string::npos ? stream.held.size() : newline + 1;
  }
  std::string lines = stream.held.substr(0, end);
  stream.held.erase(0, end);
  return lines;
}

std::string RunningProgram::processIdentifier() const {
  const char *identifier = g_subprocess_get_identifier(process_.get());
  return identifier == nullptr ? "" : identifier;
}

void RunningProgram::closeOutput() {
  if (output_.descriptor >= 0) {
    close(output_.descriptor);
    output_.descriptor = -1;
  }
}

void RunningProgram::sendSignal(int signal) const {
  g_subprocess_send_signal(process_.get(), signal);
}

CommandResult RunningProgram::waitForEnd() {
  constexpr std::size_t all = 1'000'000;  // lines
  CommandResult result;
  if (output_.descriptor >= 0) {
    result.output = read(output_, all);
  }
  result.errors = read(errors_, all);
  ErrorHandle error;
  if (g_subprocess_wait(process_.get(), nullptr, ErrorOut(error)) == FALSE) {
    throw std::runtime_error(error->message);
  }
  result.status = g_subprocess_get_if_exited(process_.get()) != FALSE
                      ? g_subprocess_get_exit_status(process_.get())
                      : 128 + g_subprocess_get_term_sig(process_.get());
  return result;
}
