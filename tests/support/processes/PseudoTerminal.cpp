#include "tests/support/processes/PseudoTerminal.h"

#include <algorithm>
#include <csignal>
#include <poll.h>
#include <pty.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

using platform::Handle;

PseudoTerminal::PseudoTerminal(const std::vector<std::string> &arguments,
                               const CommandOptions &options) {
  char **environment = g_get_environ();
  for (const auto &[name, value] : options.environment) {
    environment = g_environ_setenv(environment, name.c_str(), value.c_str(), TRUE);
  }
  for (const std::string &name : options.unset) {
    environment = g_environ_unsetenv(environment, name.c_str());
  }
  const Handle<char *, g_strfreev> owner(environment);
  std::vector<char *> argv;
  for (const std::string &argument : arguments) {
    argv.push_back(const_cast<char *>(argument.c_str()));
  }
  argv.push_back(nullptr);

  process_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
  if (process_ < 0) {
    throw std::runtime_error("There is no terminal");
  }
  if (process_ == 0) {
    // The test may itself have been started in the background, where these are ignored.
    for (const int signal : {SIGINT, SIGQUIT}) {
      std::signal(signal, SIG_DFL);
    }
    const bool isThere = options.directory.empty() || chdir(options.directory.c_str()) == 0;
    if (isThere) {
      execve(argv.front(), argv.data(), environment);
    }
    _exit(126);
  }
}

PseudoTerminal::~PseudoTerminal() {
  if (process_ > 0) {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  close(terminal_);
}

bool PseudoTerminal::readMore(int patience) {
  pollfd readable{terminal_, POLLIN, 0};
  char buffer[4096];
  if (poll(&readable, 1, patience) != 1) {
    return false;
  }
  const ssize_t size = read(terminal_, buffer, sizeof buffer);
  if (size <= 0) {
    return false;
  }
  std::copy_if(buffer, buffer + size, std::back_inserter(output_),
               [](char character) { return character != '\r'; });
  return true;
}

bool PseudoTerminal::hasShown(std::string_view text) {
  const std::size_t found = output_.find(text, seen_);
  if (found == std::string::npos) {
    return false;
  }
  seen_ = found + text.size();
  return true;
}

bool PseudoTerminal::waitFor(std::string_view text) {
  while (!hasShown(text)) {
    if (!readMore()) {
      return false;
    }
  }
  return true;
}

bool PseudoTerminal::typeUntil(std::string_view keys, std::string_view text) {
  constexpr int pause = 20;  // milliseconds
  for (int i = 0; i < longPatience / pause; ++i) {
    type(keys);
    while (readMore(pause)) {
    }
    if (hasShown(text)) {
      return true;
    }
  }
  return false;
}

void PseudoTerminal::type(std::string_view keys) const {
  if (write(terminal_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
    throw std::runtime_error("The terminal takes no keys");
  }
}

CommandResult PseudoTerminal::waitForEnd() {
  while (readMore()) {
  }
  // Its streams are closed when it ends, and only a broken program keeps them open without a word.
  pollfd closed{terminal_, 0, 0};
  if (poll(&closed, 1, 0) == 0) {
    kill(process_, SIGKILL);
  }
  int status = 0;
  waitpid(process_, &status, 0);
  process_ = -1;
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), output_, ""};
}
