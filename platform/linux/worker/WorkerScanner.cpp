#include "platform/linux/worker/WorkerScanner.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <utility>

#include <svn_error_codes.h>

#include "platform/linux/Patience.h"
#include "platform/linux/worker/WorkerExitStatus.h"
#include "scanner/AdministrativeFiles.h"
#include "scanner/SVNError.h"
#include "scanner/TargetPath.h"

namespace {

// How often a scan may be ended from outside before the root is held responsible after all: the
// kernel, too, ends processes, whichever take the memory.
constexpr int greatestAttemptCount = 3;

svn_error_t *workerError(const std::string &message) {
  return svn_error_create(SVN_ERR_EXTERNAL_PROGRAM, nullptr, message.c_str());
}

// Signals by which people and systems end processes. What goes wrong in a process brings others.
bool comesFromOutside(const ScanExit &exit) {
  return exit.isSignal && (exit.number == SIGKILL || exit.number == SIGTERM ||
                           exit.number == SIGINT || exit.number == SIGHUP);
}

// The exit statuses that are not the root's fault.
struct Lack {
  int exitStatus;
  const char *reason;
};
constexpr Lack lacks[] = {
    {workerExitWithoutMemory, "There is not enough memory"},
    {workerExitWithoutProcess, "There are no more processes to be had"},
    {workerExitWithoutConfinement, "The scan cannot be confined"},
};

// What was not to be had, if it is that by which the scan ended; else null.
const char *whatWasLacking(const ScanExit &exit) {
  for (const Lack &lack : lacks) {
    if (!exit.isSignal && exit.number == lack.exitStatus) {
      return lack.reason;
    }
  }
  return nullptr;
}

std::string textOf(const ScanExit &exit) {
  return exit.isSignal ? "The scan was ended by signal " + std::to_string(exit.number) + " (" +
                             strsignal(exit.number) + ")"
                       : "The scan ended with status " + std::to_string(exit.number);
}

// A path with ".." in it leads elsewhere.
bool isPathBelow(const std::string &root, const std::string &path) {
  return path.starts_with(root) &&
         (path.size() == root.size() || root == "/" || path[root.size()] == '/') &&
         path.find("/../") == std::string::npos && !path.ends_with("/..");
}

// Whether it is where the database of a working copy can be that the target is in.
bool isDatabaseAbove(const std::string &target, const std::string &path) {
  const std::string top = std::filesystem::path(path).parent_path().parent_path();
  return path == databaseOfWorkingCopy(top) && isPathBelow(top, target);
}

// About what the reports of a scan take with all folders above them: whoever receives them may keep
// one entry for each. Those that a report shares with the one before it are counted once.
class ReportSize {
 public:
  void add(const std::string &path) {
    constexpr std::uint64_t perEntry = 100;  // besides the path
    const auto differs =
        std::mismatch(path.begin(), path.end(), latest_.begin(), latest_.end()).first;
    const auto entries = static_cast<std::uint64_t>(std::count(differs, path.end(), '/')) + 1;
    bytes_ += entries * (path.size() + perEntry);
    latest_ = path;
  }

  std::uint64_t bytes() const { return bytes_; }

 private:
  std::string latest_;
  std::uint64_t bytes_ = 0;
};

}  // namespace

// One attempt to have one root scanned by one worker.
class WorkerScanner::OneScan {
 public:
  enum class Result {
    done,     // also with an error that the library returned
    refused,  // the block did not want more
    failed,   // for a reason that is not the root's
    endedFromOutside,
    endedByRoot,
  };

  OneScan(const MessageSocket &worker, const ScanRequest &request,
          const KTRWorkingCopyEntryBlock &entryBlock, const ScanBounds &bounds)
      : worker_(worker), request_(request), entryBlock_(entryBlock), bounds_(bounds) {}

  Result run() {
    auto sockets = MessageSocket::makePair();
    if (!sockets) {
      return end(Result::failed, "There are no more descriptors to be had");
    }
    const MessageSocket scan = std::move(sockets->first);
    if (!worker_.send(encode(request_), &sockets->second)) {
      return end(Result::endedFromOutside, workerIsGone);
    }
    sockets.reset();  // so that the end of the scan is the end of the connection
    const auto deadline = std::chrono::steady_clock::now() + bounds_.duration;
    std::string bytes;
    for (;;) {
      switch (scan.receiveWithin(bounds_.silence, &bytes)) {
        case MessageSocket::Reception::message:
          if (const std::optional<Result> result = take(bytes)) {
            return *result;
          }
          if (std::chrono::steady_clock::now() > deadline) {
            return end(Result::endedByRoot, "The scan takes too long");
          }
          break;
        case MessageSocket::Reception::end:
          return resultAfterExit();
        case MessageSocket::Reception::silence:
          return end(Result::endedByRoot, "The scan hangs");
        case MessageSocket::Reception::failure:
          return end(Result::endedByRoot, notUnderstood);
      }
    }
  }

  // Whether the worker can be given another scan.
  bool isWorkerIdle() const { return isWorkerIdle_; }
  SVNError takeError() { return std::move(error_); }

  // None if the scan has not begun.
  const std::optional<ScanDatabase> &database() const { return database_; }

 private:
  std::optional<Result> take(const std::string &bytes) {
    const std::optional<ScanMessage> message = decodeScanMessage(bytes);
    // The database comes first, and once.
    if (!message || isAtEnd_ ||
        std::holds_alternative<ScanDatabase>(*message) == database_.has_value()) {
      return end(Result::endedByRoot, notUnderstood);
    }
    return std::visit([this](const auto &contents) { return this->take(contents); }, *message);
  }

  std::optional<Result> take(const ScanReports &reports) {
    for (const ScanReport &report : reports) {
      if (!isPathBelow(request_.targetPath, report.path)) {
        return end(Result::endedByRoot, notUnderstood);
      }
      size_.add(report.path);
      if (size_.bytes() > bounds_.reports) {
        return end(Result::endedByRoot, "The scan reports too much");
      }
      if (svn_error_t *error = deliver(report)) {
        error_.reset(error);
        return Result::refused;
      }
    }
    return std::nullopt;
  }

  std::optional<Result> take(const ScanDatabase &database) {
    if (!isDatabaseAbove(request_.targetPath, database.path)) {
      return end(Result::endedByRoot, notUnderstood);
    }
    database_ = database;
    return std::nullopt;
  }

  static std::optional<Result> take(const ScanBeat & /*beat*/) { return std::nullopt; }

  std::optional<Result> take(const ScanEnd &scanEnd) {
    isAtEnd_ = true;
    if (scanEnd.error != 0) {
      error_.reset(svn_error_create(scanEnd.error, nullptr, scanEnd.message.c_str()));
    }
    return std::nullopt;
  }

  // Only the worker knows how the process of the scan has ended.
  Result resultAfterExit() {
    std::string bytes;
    const MessageSocket::Reception reception = worker_.receiveWithin(bounds_.silence, &bytes);
    const std::optional<ScanExit> exit =
        reception == MessageSocket::Reception::message ? decodeScanExit(bytes) : std::nullopt;
    isWorkerIdle_ = exit.has_value();
    if (isAtEnd_) {
      return Result::done;
    }
    if (!exit) {
      return end(Result::endedFromOutside, workerIsGone);
    }
    if (const char *lack = whatWasLacking(*exit)) {
      return end(Result::failed, lack);
    }
    return end(comesFromOutside(*exit) ? Result::endedFromOutside : Result::endedByRoot,
               textOf(*exit));
  }

  svn_error_t *deliver(const ScanReport &report) const {
    svn_lock_t lock{};  // that there is one is all that is known of it
    svn_client_status_t status{};
    status.node_status = report.status;
    status.conflicted = report.isConflicted ? TRUE : FALSE;
    status.switched = report.isSwitched ? TRUE : FALSE;
    status.lock = report.isLocked ? &lock : nullptr;
    return withoutExceptions([&] { return entryBlock_(report.path.c_str(), &status, nullptr); });
  }

  Result end(Result result, const std::string &reason) {
    error_.reset(workerError(reason));
    return result;
  }

  static constexpr const char *workerIsGone = "The status worker has ended";
  static constexpr const char *notUnderstood = "The scan sent what is not understood";

  const MessageSocket &worker_;
  const ScanRequest &request_;
  const KTRWorkingCopyEntryBlock &entryBlock_;
  const ScanBounds &bounds_;
  std::optional<ScanDatabase> database_;
  ReportSize size_;
  SVNError error_;
  bool isAtEnd_ = false;
  bool isWorkerIdle_ = false;
};

WorkerScanner::WorkerScanner(StartWorker startWorker, ScanBounds bounds)
    : startWorker_(std::move(startWorker)),
      bounds_(bounds),
      barredRoots_(platform::systemCallPatience) {}

svn_error_t *WorkerScanner::scan(const std::string &targetPath,
                                 const std::optional<std::string> &configDir,
                                 KTRWorkingCopyScanOptions options,
                                 const KTRWorkingCopyEntryBlock &entryBlock) {
  SVN_ERR(checkTargetPath(targetPath));
  {
    platform::LockGuard guard(barredLock_);
    if (barredRoots_.isBarred(targetPath)) {
      return workerError("An earlier scan failed; the next one is when the database has changed");
    }
  }
  const ScanRequest request{targetPath, configDir, options};
  for (int attempt = 1;; ++attempt) {
    std::unique_ptr<WorkerProcess> worker = takeIdleWorker();
    if (worker == nullptr) {
      auto started = startWorker_();
      if (!started) {
        return workerError("The status worker cannot be started: " + started.reason());
      }
      worker = std::move(*started);
    }
    OneScan attempted(worker->socket(), request, entryBlock, bounds_);
    const OneScan::Result result = attempted.run();
    if (attempted.isWorkerIdle()) {
      keepIdle(std::move(worker));
    }
    if (result == OneScan::Result::endedFromOutside && attempt < greatestAttemptCount) {
      continue;
    }
    // A worker that ends before it has begun to scan says nothing about the root.
    if (result == OneScan::Result::endedByRoot ||
        (result == OneScan::Result::endedFromOutside && attempted.database())) {
      worker.reset();  // what hangs there is ended before anything else is looked at
      platform::LockGuard guard(barredLock_);
      barredRoots_.bar(targetPath, attempted.database());
    }
    return attempted.takeError().release();
  }
}

std::unique_ptr<WorkerProcess> WorkerScanner::takeIdleWorker() {
  platform::LockGuard guard(lock_);
  return std::move(idleWorker_);
}

void WorkerScanner::keepIdle(std::unique_ptr<WorkerProcess> worker) {
  platform::LockGuard guard(lock_);
  idleWorker_ = std::move(worker);  // the one there may have been is ended
}
