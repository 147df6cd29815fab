// The one who starts programs for the extension, which cannot: a process of its own that was forked
// before the extension gave up that right. It keeps the environment with which the extension was
// started, and ends with it.
#pragma once

#include <string>
#include <sys/types.h>

#include "platform/Result.h"
#include "platform/linux/FileDescriptor.h"

namespace platform {

// A status worker that has been started. When this goes, the worker and all that it has started
// are killed.
struct StartedWorker {
  FileDescriptor requests;  // written by the extension
  FileDescriptor reports;   // read by it; at its end when the worker has ended
  FileDescriptor life;      // to be closed, no more
};

class Spawner {
 public:
  // The path of the program that is started as status worker.
  struct Programs {
    std::string worker;
  };

  // Forks: to be called first of all, while there is one thread and nothing has been restricted.
  static Result<Spawner> start(const Programs &programs);

  // The programs beside the one that runs, wherever it is installed.
  static Programs programsBesideThisOne();

  // Ends it and its workers, not what was launched.
  ~Spawner();
  Spawner(Spawner &&other) noexcept;
  Spawner &operator=(Spawner &&other) = delete;

  // Starts the program with the requests as its descriptor 3, open for reading, and the reports as
  // its descriptor 4, for writing. It has no input, says what it says on our standard error, is in
  // a session of its own, leaves no core files, inherits no other open file, and of the environment
  // what tells of the language and the user's directories. Fails if it cannot be run. From any
  // thread; waits for some milliseconds, 5 s at the most.
  Result<StartedWorker> startWorker() const;

  // Readable when the spawner has ended. Then nothing can be started any more.
  int endDescriptor() const { return socket_; }

  pid_t process() const { return process_; }

 private:
  Spawner(FileDescriptor socket, pid_t process) : socket_(std::move(socket)), process_(process) {}

  FileDescriptor socket_;
  pid_t process_;
};

}  // namespace platform
