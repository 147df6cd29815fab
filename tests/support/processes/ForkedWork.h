// Work that would change this process for good, done in a fork of it.
#pragma once

#include <functional>
#include <string>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

// How a fork ends that does the work: "exited 0", "killed by 31". What the work answers is the exit
// status. While this process has one thread.
inline std::string endOfFork(const std::function<int()> &work) {
  const pid_t process = fork();
  if (process == 0) {
    // Not by a function, which does more in a build with sanitizers than the work may leave it.
    syscall(SYS_exit_group, work());
  }
  int status = 0;
  if (process < 0 || waitpid(process, &status, 0) != process) {
    return "not forked";
  }
  return WIFEXITED(status) ? "exited " + std::to_string(WEXITSTATUS(status))
                           : "killed by " + std::to_string(WTERMSIG(status));
}
