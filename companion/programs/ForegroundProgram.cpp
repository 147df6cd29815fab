#include "companion/programs/ForegroundProgram.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <glib.h>

#include "companion/programs/ProgramArguments.h"
#include "companion/programs/ProgramEnd.h"

namespace companion {

using platform::Outcome;

namespace {

constexpr std::array<int, 2> interruptingSignals = {SIGINT, SIGQUIT};

// Takes no notice of the keys that interrupt for the life of the object: they are meant for the
// program in the foreground.
class IgnoredInterruptions {
 public:
  IgnoredInterruptions() {
    struct sigaction ignored {};
    ignored.sa_handler = SIG_IGN;
    for (std::size_t i = 0; i < interruptingSignals.size(); ++i) {
      sigaction(interruptingSignals[i], &ignored, &earlier_[i]);
    }
  }
  ~IgnoredInterruptions() {
    for (std::size_t i = 0; i < interruptingSignals.size(); ++i) {
      sigaction(interruptingSignals[i], &earlier_[i], nullptr);
    }
  }
  IgnoredInterruptions(const IgnoredInterruptions &) = delete;
  IgnoredInterruptions &operator=(const IgnoredInterruptions &) = delete;

 private:
  std::array<struct sigaction, interruptingSignals.size()> earlier_{};
};

// The attributes of a process with the usual signal handling.
class SpawnAttributes {
 public:
  SpawnAttributes() {
    posix_spawnattr_init(&attributes_);
    sigset_t usual;
    sigemptyset(&usual);
    for (const int signal : {SIGINT, SIGQUIT, SIGPIPE}) {
      sigaddset(&usual, signal);
    }
    posix_spawnattr_setsigdefault(&attributes_, &usual);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF);
  }
  ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
  SpawnAttributes(const SpawnAttributes &) = delete;
  SpawnAttributes &operator=(const SpawnAttributes &) = delete;

  const posix_spawnattr_t *get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_{};
};

}  // namespace

Outcome runInForeground(const std::vector<std::string> &arguments) {
  const std::vector<const char *> pointers = argumentPointers(arguments);
  auto *const argv = const_cast<char *const *>(pointers.data());  // C does not say it only reads
  const IgnoredInterruptions ignored;
  pid_t process = 0;
  const int error = posix_spawnp(&process, arguments.front().c_str(), nullptr,
                                 SpawnAttributes().get(), argv, environ);
  if (error != 0) {
    return Outcome::failure(g_strerror(error));
  }
  int status = 0;
  while (waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) {
      return Outcome::failure(g_strerror(errno));
    }
  }
  if (WIFSIGNALED(status)) {
    return Outcome::failure(endedBySignal(WTERMSIG(status)));
  }
  if (WEXITSTATUS(status) != 0) {
    return Outcome::failure(endedWithStatus(WEXITSTATUS(status)));
  }
  return platform::Done();
}

}  // namespace companion
