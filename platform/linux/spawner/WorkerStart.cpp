#include "platform/linux/spawner/WorkerStart.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>
#include <vector>

#include <glib.h>

#include "platform/linux/EndWithParent.h"
#include "platform/linux/confinement/CoreFiles.h"
#include "platform/linux/spawner/ForkedProcess.h"
#include "platform/linux/spawner/Messages.h"
#include "platform/linux/worker/WorkerDescriptor.h"

namespace platform {

namespace {

// Whole names, and beginnings of names. Where the user's directories are and the user's language;
// and the settings of a build with sanitizers.
constexpr std::array<std::string_view, 8> keptVariables = {
    "HOME",         "LANG",          "LANGUAGE",     "TMPDIR",
    "ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS"};
constexpr std::array<std::string_view, 2> keptBeginnings = {"LC_", "XDG_"};

bool isKept(std::string_view variable) {
  const std::string_view name = variable.substr(0, variable.find('='));
  return std::find(keptVariables.begin(), keptVariables.end(), name) != keptVariables.end() ||
         std::any_of(keptBeginnings.begin(), keptBeginnings.end(),
                     [name](std::string_view beginning) { return name.starts_with(beginning); });
}

std::vector<char *> environmentOfWorker() {
  std::vector<char *> variables;
  for (char **variable = environ; *variable != nullptr; ++variable) {
    if (isKept(*variable)) {
      variables.push_back(*variable);
    }
  }
  variables.push_back(nullptr);
  return variables;
}

// Above those with a meaning, so that none of them is in the way of another.
int movedUp(int file) {
  return fcntl(file, F_DUPFD_CLOEXEC, workerDescriptor + 1);
}

[[noreturn]] void giveUp(int answer) {
  sendMessage(answer, spawnerWords.failed, {g_strerror(errno)}, {});
  std::_Exit(EXIT_FAILURE);
}

}  // namespace

void becomeWorker(const std::string &program, const WorkerFiles &files, pid_t spawner) {
  const int answer = movedUp(files.answer);
  const int socket = movedUp(files.socket);
  const int nothing = movedUp(open("/dev/null", O_RDONLY | O_CLOEXEC));

  setsid();
  endWithParent(spawner);
  restoreSignals();
  const bool isPrepared = dup2(nothing, STDIN_FILENO) >= 0 &&
                          dup2(STDERR_FILENO, STDOUT_FILENO) >= 0 &&
                          dup2(socket, workerDescriptor) >= 0 && forbidCoreFiles();
  if (!isPrepared) {
    giveUp(answer);
  }
  closeWhenAProgramIsRun(workerDescriptor + 1);

  std::string name = program;
  const std::array<char *, 2> arguments = {name.data(), nullptr};
  execve(program.c_str(), arguments.data(), environmentOfWorker().data());
  giveUp(answer);
}

}  // namespace platform
