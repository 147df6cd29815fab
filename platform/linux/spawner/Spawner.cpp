#include "platform/linux/spawner/Spawner.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <glib.h>

#include "platform/linux/spawner/SpawnerProcess.h"

namespace platform {

namespace {

struct Pipe {
  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

Result<Pipe> makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    return Result<Pipe>::failure(g_strerror(errno));
  }
  return Pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

// Nobody waits for ever for a spawner that was stopped.
void limitSending(int socket) {
  const timeval limit{systemCallPatience.count(), 0};
  setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

bool becomesReadable(int file, std::chrono::steady_clock::time_point deadline) {
  using std::chrono::ceil;
  using std::chrono::milliseconds;
  pollfd readable{file, POLLIN, 0};
  int count = 0;
  do {
    const auto left = ceil<milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    count = poll(&readable, 1, static_cast<int>(std::max<milliseconds::rep>(left, 0)));
  } while (count < 0 && errno == EINTR);
  return count == 1;
}

}  // namespace

Spawner::Programs Spawner::programsBesideThisOne(const std::string &launchOption) {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  return {program.parent_path() / "halvern-status-worker", {program, launchOption}};
}

Result<Spawner> Spawner::start(const Programs &programs) {
  Result<PacketSockets> sockets = makePacketSockets();
  if (!sockets) {
    return Result<Spawner>::failure(sockets.reason());
  }
  // The spawner heeds no signal from its first moment on.
  sigset_t all;
  sigset_t earlier;
  sigfillset(&all);
  sigprocmask(SIG_SETMASK, &all, &earlier);
  const pid_t process = fork();
  if (process != 0) {
    sigprocmask(SIG_SETMASK, &earlier, nullptr);
  }
  if (process < 0) {
    return Result<Spawner>::failure(g_strerror(errno));
  }
  if (process == 0) {
    close((*sockets).one.release());
    runSpawner(std::move((*sockets).other), programs);
  }
  limitSending((*sockets).one);
  return Spawner(std::move((*sockets).one), process);
}

Spawner::Spawner(Spawner &&other) noexcept
    : socket_(std::move(other.socket_)), process_(std::exchange(other.process_, -1)) {}

Spawner::~Spawner() {
  if (process_ > 0) {
    shutdown(socket_, SHUT_RDWR);
    while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
}

bool Spawner::hasEnded() const {
  return becomesReadable(socket_, std::chrono::steady_clock::now());
}

Result<Spawner::Answer> Spawner::ask(const std::string &word, const std::vector<std::string> &texts,
                                     const std::vector<int> &files,
                                     std::chrono::milliseconds patience) const {
  using Failure = Result<Answer>;
  const auto deadline = std::chrono::steady_clock::now() + patience;
  Result<PacketSockets> sockets = makePacketSockets();
  if (!sockets) {
    return Failure::failure(sockets.reason());
  }
  auto &[ours, theirs] = *sockets;
  std::vector<int> all = {theirs};
  all.insert(all.end(), files.begin(), files.end());
  const Outcome sent = sendMessage(socket_, word, texts, all);
  if (!sent) {
    return Failure::failure(sent.reason());
  }
  close(theirs.release());
  if (!becomesReadable(ours, deadline)) {
    return Failure::failure(g_strerror(ETIMEDOUT));
  }
  Answer answer;
  answer.reception = receiveMessage(ours, answer.message);
  return answer;
}

Result<StartedWorker> Spawner::startWorker() const {
  using Failure = Result<StartedWorker>;
  Result<PacketSockets> sockets = makePacketSockets();
  Result<Pipe> life = makePipe();
  if (!sockets || !life) {
    return Failure::failure("There are no more open files to be had");
  }
  // The answer ends without a word when the program runs, because that closes what it inherits.
  const Result<Answer> answer = ask(spawnerWords.startWorker, {}, {sockets->other, life->readEnd});
  if (!answer) {
    return Failure::failure(answer.reason());
  }
  if (answer->reception != Reception::end) {
    return Failure::failure(answer->message.texts.empty() ? g_strerror(EPROTO)
                                                          : answer->message.texts.front());
  }
  if (hasEnded()) {
    return Failure::failure("The spawner has ended");
  }
  return StartedWorker{std::move(sockets->one), std::move(life->writeEnd)};
}

std::optional<std::string> Spawner::pathOfDesktopEntry(const std::string &name) const {
  const Result<Answer> answer = ask(spawnerWords.findApplication, {name}, {});
  if (!answer || answer->reception != Reception::message || answer->message.texts.size() != 1) {
    return std::nullopt;
  }
  return answer->message.texts.front();
}

void Spawner::launch(const ApplicationLaunch &launch) const {
  // A service manager may not answer, and the caller has others to serve.
  constexpr std::chrono::milliseconds patience{500};
  ask(spawnerWords.launch, argumentsOfLaunch(launch), {}, patience);
}

}  // namespace platform
