#include "platform/linux/worker/BarredRoots.h"

#include <memory>
#include <system_error>
#include <thread>

#include "scanner/AdministrativeFiles.h"

BarredRoots::BarredRoots(std::chrono::milliseconds patience, StateOfDatabase stateOfDatabase)
    : patience_(patience), stateOfDatabase_(std::move(stateOfDatabase)) {}

void BarredRoots::bar(const std::string &root, const std::optional<ScanDatabase> &database) {
  Entry entry;
  if (database) {
    entry.databasePath = database->path;
    entry.state = database->state;
  } else {
    entry.databasePath = databaseOfWorkingCopy(root);
    entry.state = stateNow(entry);
  }
  entries_.insert_or_assign(root, std::move(entry));
}

bool BarredRoots::isBarred(const std::string &root) {
  const auto found = entries_.find(root);
  if (found == entries_.end()) {
    return false;
  }
  const bool didNotAnswer = found->second.check.valid();
  const std::optional<std::string> state = stateNow(found->second);
  if (!state || (!didNotAnswer && state == found->second.state)) {
    return true;
  }
  entries_.erase(found);
  return false;
}

// The look is left to a thread of its own, which may stay behind for as long as the file system
// takes; there is one for each entry at the most.
std::optional<std::string> BarredRoots::stateNow(Entry &entry) const {
  std::chrono::milliseconds patience{0};
  if (!entry.check.valid()) {
    patience = patience_;
    auto look = std::make_shared<std::packaged_task<std::string()>>(
        [stateOfDatabase = stateOfDatabase_, path = entry.databasePath] {
          return stateOfDatabase(path);
        });
    try {
      std::thread([look] { (*look)(); }).detach();
    } catch (const std::system_error &) {
      return std::nullopt;  // no thread is to be had; perhaps the next time
    }
    entry.check = look->get_future();
  }
  if (entry.check.wait_for(patience) != std::future_status::ready) {
    return std::nullopt;
  }
  return entry.check.get();  // after which the future is not valid
}
