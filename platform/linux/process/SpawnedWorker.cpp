#include "platform/linux/process/SpawnedWorker.h"

#include <utility>

namespace {

class SpawnedWorker final : public WorkerProcess {
 public:
  explicit SpawnedWorker(platform::StartedWorker worker)
      : life_(std::move(worker.life)), socket_(std::move(worker.socket)) {}

  const MessageSocket &socket() const override { return socket_; }

 private:
  const platform::FileDescriptor life_;
  const MessageSocket socket_;
};

}  // namespace

StartWorker startsWorkerWith(const platform::Spawner &spawner) {
  return [&spawner]() -> platform::Result<std::unique_ptr<WorkerProcess>> {
    platform::Result<platform::StartedWorker> worker = spawner.startWorker();
    if (!worker) {
      return platform::Result<std::unique_ptr<WorkerProcess>>::failure(worker.reason());
    }
    return std::unique_ptr<WorkerProcess>(std::make_unique<SpawnedWorker>(std::move(*worker)));
  };
}
