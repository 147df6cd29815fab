// The one who starts programs for the extension, which cannot: a process of its own that was forked
// before the extension gave up that right. It keeps the environment with which the extension was
// started, and ends with it.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

#include "platform/Result.h"
#include "platform/linux/Patience.h"
#include "platform/linux/desktop/ApplicationUnit.h"
#include "platform/linux/files/FileDescriptor.h"
#include "platform/linux/spawner/Messages.h"

namespace platform {

// A status worker that has been started. When this goes, the worker and all that it has started
// are killed.
struct StartedWorker {
  FileDescriptor socket;  // for packets; at its end when the worker has ended
  FileDescriptor life;    // to be closed, no more
};

class Spawner {
 public:
  struct Programs {
    // The path of the program that is started as status worker.
    std::string worker;
    // What a service manager runs to launch an application.
    Launcher launcher = {};
  };

  // Forks: to be called first of all, while there is one thread and nothing has been restricted.
  static Result<Spawner> start(const Programs &programs);

  // The programs in the directory of the one that runs, and that itself, which launches when it is
  // given the option.
  static Programs programsBesideThisOne(const std::string &launchOption);

  // Ends it and its workers, not what was launched.
  ~Spawner();
  Spawner(Spawner &&other) noexcept;
  Spawner &operator=(Spawner &&other) = delete;

  // Starts the program with the other end of the socket as its descriptor `workerDescriptor`. It
  // has no input, says what it says on our standard error, is in a session of its own, leaves no
  // core files, inherits no other open file, and of the environment what tells of the language and
  // the user's directories. Fails if it cannot be run. From any thread; waits for some
  // milliseconds, 5 s at the most.
  Result<StartedWorker> startWorker() const;

  // The path of the installed desktop entry of that name. None also if it takes longer than 5 s to
  // find out. From any thread.
  std::optional<std::string> pathOfDesktopEntry(const std::string &name) const;

  // Launches it as a part of the session, not of the extension, with the environment of the
  // extension's start. From any thread; waits until it is on its way, so that what is launched
  // later starts later, but for half a second at the most. How it went is told to nobody.
  void launch(const ApplicationLaunch &launch) const;

  // When it has ended, nothing can be started any more, and the descriptor is readable.
  bool hasEnded() const;
  int endDescriptor() const { return socket_; }

  pid_t process() const { return process_; }

 private:
  // The answer to a request: `end` if there was none before the request was done.
  struct Answer {
    Reception reception = Reception::end;
    Message message;
  };

  // Sends a request with those open files behind the one for the answer, and waits for the answer,
  // for so long at the most.
  Result<Answer> ask(const std::string &word, const std::vector<std::string> &texts,
                     const std::vector<int> &files,
                     std::chrono::milliseconds patience = systemCallPatience) const;

  Spawner(FileDescriptor socket, pid_t process) : socket_(std::move(socket)), process_(process) {}

  FileDescriptor socket_;
  pid_t process_;
};

}  // namespace platform
