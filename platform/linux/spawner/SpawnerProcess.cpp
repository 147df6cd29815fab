#include "platform/linux/spawner/SpawnerProcess.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <glib.h>

#include "platform/linux/spawner/DesktopRequests.h"
#include "platform/linux/spawner/Messages.h"
#include "platform/linux/spawner/WorkerStart.h"

namespace platform {

namespace {

struct Worker {
  pid_t process;
  FileDescriptor life;  // at its end when the worker is no longer wanted
};

// The whole session of the worker; and the worker itself, which may not have made its own yet.
void killWithAllItStarted(pid_t process) {
  kill(-process, SIGKILL);
  kill(process, SIGKILL);
}

class SpawnerProcess {
 public:
  SpawnerProcess(FileDescriptor socket, const Spawner::Programs &programs)
      : socket_(std::move(socket)), programs_(programs), endedProcesses_(openEndedProcesses()) {}

  void run() {
    bool isWanted = true;
    while (isWanted) {
      std::vector<pollfd> files = {{socket_, POLLIN, 0}, {endedProcesses_, POLLIN, 0}};
      for (const Worker &worker : workers_) {
        files.push_back({worker.life, POLLIN, 0});
      }
      if (poll(files.data(), files.size(), -1) < 0) {
        continue;
      }
      for (std::size_t i = 0; i < workers_.size(); ++i) {
        if (files[2 + i].revents != 0) {
          killWithAllItStarted(workers_[i].process);
        }
      }
      if (files[1].revents != 0) {
        takeEndedProcesses();
      }
      if (files[0].revents != 0) {
        isWanted = heed();
      }
    }
    for (const Worker &worker : workers_) {
      killWithAllItStarted(worker.process);
    }
  }

 private:
  // A signal to the terminal's programs or to the service is meant for the extension, and comes
  // here as its end. So all are blocked, and this tells of processes that have ended.
  static FileDescriptor openEndedProcesses() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGCHLD);
    return FileDescriptor(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
  }

  // False once nobody is left to ask.
  bool heed() {
    Message message;
    switch (receiveMessage(socket_, message)) {
      case Reception::end:
        return false;
      case Reception::message:
        answer(message);
        return true;
      case Reception::nothingOfOurs:
        return true;
    }
    return true;
  }

  void answer(Message &message) {
    if (message.word == spawnerWords.startWorker && message.files.size() == 3) {
      startWorker(message);
    } else if (message.word == spawnerWords.findApplication && message.texts.size() == 1 &&
               message.files.size() == 1) {
      inProcessOfItsOwn([&] { findApplication(message.texts[0], message.files[0]); });
    } else if (message.word == spawnerWords.launch && message.texts.size() >= 2 &&
               message.files.size() == 1) {
      inProcessOfItsOwn([&] {
        carryOutLaunch(
            {message.texts[0], message.texts[1], {message.texts.begin() + 2, message.texts.end()}},
            programs_.launcher, message.files[0]);
      });
    }
  }

  // Nobody waits for it: what was asked is not answered if there is no process to be had.
  template <typename Work>
  static void inProcessOfItsOwn(const Work &work) {
    if (fork() == 0) {
      work();
    }
  }

  void startWorker(Message &message) {
    const int answer = message.files[0];
    const pid_t self = getpid();
    const pid_t process = fork();
    if (process == 0) {
      becomeWorker(programs_.worker, {message.files[1], answer}, self);
    }
    if (process < 0) {
      sendMessage(answer, spawnerWords.failed, {g_strerror(errno)}, {});
      return;
    }
    workers_.push_back({process, std::move(message.files[2])});
  }

  void takeEndedProcesses() {
    std::array<signalfd_siginfo, 16> told{};
    while (read(endedProcesses_, told.data(), sizeof told) > 0) {
    }
    for (siginfo_t ended{};
         waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) == 0 && ended.si_pid != 0;
         ended = siginfo_t()) {
      takeEnded(ended.si_pid);
    }
  }

  // Its number is its own until it is waited for.
  void takeEnded(pid_t process) {
    const auto isEnded = [process](const Worker &worker) { return worker.process == process; };
    if (std::any_of(workers_.begin(), workers_.end(), isEnded)) {
      killWithAllItStarted(process);
    }
    waitpid(process, nullptr, 0);
    std::vector<Worker> left;
    for (Worker &worker : workers_) {
      if (!isEnded(worker)) {
        left.push_back(std::move(worker));
      }
    }
    workers_.swap(left);
  }

  const FileDescriptor socket_;
  const Spawner::Programs programs_;
  const FileDescriptor endedProcesses_;
  std::vector<Worker> workers_;
};

}  // namespace

void runSpawner(FileDescriptor socket, const Spawner::Programs &programs) {
  prctl(PR_SET_NAME, "halvern-spawner");
  SpawnerProcess(std::move(socket), programs).run();
  // What is left belongs to the process that this one is a copy of.
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace platform
