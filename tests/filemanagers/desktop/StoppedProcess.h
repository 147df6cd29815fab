// A process that does nothing more until the end of the object.
#pragma once

#include <csignal>
#include <stdexcept>
#include <sys/types.h>

class StoppedProcess {
 public:
  explicit StoppedProcess(pid_t process) : process_(process) {
    if (process <= 0 || kill(process, SIGSTOP) != 0) {
      throw std::runtime_error("There is nothing to stop");
    }
  }
  ~StoppedProcess() { kill(process_, SIGCONT); }
  StoppedProcess(const StoppedProcess &) = delete;
  StoppedProcess &operator=(const StoppedProcess &) = delete;

 private:
  const pid_t process_;
};
