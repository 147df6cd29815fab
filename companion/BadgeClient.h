// The running extension, asked over the session bus as a file manager asks it.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "FinderSync1.h"
#include "platform/Result.h"
#include "platform/linux/GLibHandles.h"

namespace companion {

// The badge of each path that was asked for; empty for none.
using BadgesByPath = std::unordered_map<std::string, std::string>;

// On the thread that may iterate the default main context. What fails says so in a whole message.
class BadgeClient {
 public:
  // Starts the extension if it is not running. Each wait for it ends when it has been silent for
  // `patience`.
  static platform::Result<std::unique_ptr<BadgeClient>> connect(std::chrono::seconds patience);

  ~BadgeClient();
  BadgeClient(const BadgeClient &) = delete;
  BadgeClient &operator=(const BadgeClient &) = delete;

  // The folders inside which it gives badges, absolute and standardised, in the order of their
  // names.
  platform::Result<std::vector<std::string>> directoryPaths();

  // Absolute paths without a trailing slash; one that is named twice has one badge.
  platform::Result<BadgesByPath> badgesOfPaths(const std::vector<std::string> &paths);

 private:
  BadgeClient(platform::ObjectHandle<GDBusConnection> connection,
              platform::ObjectHandle<HalvernFinderSync1> proxy, std::chrono::seconds patience);

  // None on success, else why not all of `waiting_` could be asked and answered.
  std::optional<std::string> askForWaiting();
  void takeAnswers(GVariant *badges);

  const platform::ObjectHandle<GDBusConnection> connection_;
  const platform::ObjectHandle<HalvernFinderSync1> proxy_;  // of the one process that answers
  const std::chrono::seconds patience_;
  guint ownerSubscription_ = 0;
  gulong answersHandler_ = 0;
  gulong closedHandler_ = 0;

  // What may end a wait.
  bool hasEnded_ = false;
  gint64 lastAnswer_ = 0;  // monotonic, microseconds

  std::unordered_map<std::string, std::string> waiting_;  // paths by the text of their URL
  BadgesByPath answers_;
};

}  // namespace companion
