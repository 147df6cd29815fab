#include "tests/platform/worker/StartedWorker.h"

#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/worker/WorkerDescriptor.h"

namespace {

class ChildWorker final : public WorkerProcess {
 public:
  ChildWorker(pid_t process, MessageSocket socket)
      : process_(process), socket_(std::move(socket)) {}
  ~ChildWorker() override {
    kill(-process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  ChildWorker(const ChildWorker &) = delete;
  ChildWorker &operator=(const ChildWorker &) = delete;

  const MessageSocket &socket() const override { return socket_; }

 private:
  const pid_t process_;
  const MessageSocket socket_;
};

// In the child: only calls that are safe there.
[[noreturn]] void runProgram(const std::string &program, int socket) {
  setpgid(0, 0);
  if (socket == workerDescriptor) {
    fcntl(socket, F_SETFD, 0);
  } else {
    dup2(socket, workerDescriptor);
  }
  execl(program.c_str(), program.c_str(), nullptr);
  _exit(127);
}

}  // namespace

StartWorker startsWorker(const std::string &program) {
  return [program]() -> platform::Result<std::unique_ptr<WorkerProcess>> {
    using Started = platform::Result<std::unique_ptr<WorkerProcess>>;
    auto sockets = MessageSocket::makePair();
    if (!sockets) {
      return Started::failure("no descriptors");
    }
    const pid_t process = fork();
    if (process == 0) {
      runProgram(program, sockets->second.descriptor());
    }
    if (process < 0) {
      return Started::failure(std::strerror(errno));
    }
    setpgid(process, process);  // whichever of the two comes first
    return std::unique_ptr<WorkerProcess>(
        std::make_unique<ChildWorker>(process, std::move(sockets->first)));
  };
}
