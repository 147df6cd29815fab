#include "platform/linux/worker/program/ScanProcess.h"

#include <cstdlib>
#include <mutex>
#include <system_error>

#include <svn_error.h>

#include "platform/linux/worker/DatabaseState.h"
#include "platform/linux/worker/WorkerExitStatus.h"
#include "platform/linux/worker/program/Heartbeat.h"
#include "platform/linux/worker/program/MemoryLimit.h"
#include "scanner/AdministrativeFiles.h"
#include "scanner/SVNError.h"

namespace {

// The messages of the scan and those of the heartbeat, one after another.
class Sender {
 public:
  explicit Sender(const MessageSocket &socket) : socket_(socket) {}

  // Ends the process if nobody listens any more.
  void send(const ScanMessage &message) {
    const std::lock_guard guard(mutex_);
    if (!socket_.send(encode(message))) {
      _Exit(EXIT_FAILURE);
    }
  }

 private:
  const MessageSocket &socket_;
  std::mutex mutex_;
};

// Gathers reports into messages.
class ReportSender {
 public:
  explicit ReportSender(Sender &sender) : sender_(sender) {}

  void add(ScanReport report) {
    // What the encoding adds to a path, its own end included.
    constexpr std::size_t overhead = 16;
    const std::size_t size = report.path.size() + overhead;
    if (size_ + size > greatestSize) {
      send();
    }
    size_ += size;
    reports_.push_back(std::move(report));
  }

  void send() {
    if (!reports_.empty()) {
      sender_.send(std::move(reports_));
      reports_.clear();
      size_ = 0;
    }
  }

 private:
  static constexpr std::size_t greatestSize = greatestScanMessage / 2;  // bytes

  Sender &sender_;
  ScanReports reports_;
  std::size_t size_ = 0;
};

ScanEnd endFrom(svn_error_t *error) {
  if (error == nullptr) {
    return {};
  }
  char message[1024];
  return {error->apr_err, svn_err_best_message(error, message, sizeof message)};
}

}  // namespace

int runScan(const MessageSocket &receiver, const ScanRequest &request,
            ScanConfinement &confinement) {
  limitMemory();
  Sender sender(receiver);
  const std::string database = databaseOfWorkingCopy(topOfWorkingCopy(request.targetPath));
  sender.send(ScanDatabase{database, stateOfDatabase(database)});
  if (!confinement.apply(request, database)) {
    return workerExitWithoutConfinement;
  }

  SVNError error;
  try {
    const Heartbeat heartbeat([&sender] { sender.send(ScanBeat()); });
    ReportSender reports(sender);
    error.reset(KTRWorkingCopyStatusScanner::scanLocalTarget(
        request.targetPath, request.configDir, request.options,
        [&reports](const char *path, const svn_client_status_t *status,
                   const svn_wc_status2_t *) -> svn_error_t * {
          reports.add({path, status->node_status, status->conflicted != FALSE,
                       status->lock != nullptr, status->switched != FALSE});
          return SVN_NO_ERROR;
        }));
    reports.send();
  } catch (const std::system_error &) {  // no thread is to be had
    return workerExitWithoutProcess;
  }
  sender.send(endFrom(error.get()));
  return EXIT_SUCCESS;
}
