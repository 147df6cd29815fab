// The running extension, asked over the session bus as a file manager asks it.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "FinderSync1.h"
#include "companion/badges/BusCall.h"
#include "companion/badges/MainLoopWait.h"
#include "companion/badges/NameOwnerWatch.h"
#include "platform/Result.h"
#include "platform/linux/GLibHandles.h"

namespace companion {

// Each a path and its badge, empty for none.
using Badges = std::vector<std::pair<std::string, std::string>>;
using BadgesHandler = std::function<void(Badges badges)>;

// One process of the extension. On the thread that may iterate the default main context: that runs
// in every wait, and all handlers are called from it, in the order in which the extension spoke.
// What fails says so in a whole message.
class BadgeClient {
 public:
  struct Limits {
    std::chrono::seconds patience;  // a wait ends when the extension was silent for so long
    StopCondition shouldStop;       // a wait fails when this holds
  };

  // What the extension says unasked.
  struct News {
    BadgesHandler badgesChanged;
    std::function<void()> directoriesChanged;
  };

  // Starts the extension if it is not running.
  static platform::Result<std::unique_ptr<BadgeClient>> connect(GDBusConnection *connection,
                                                                Limits limits);

  ~BadgeClient();
  BadgeClient(const BadgeClient &) = delete;
  BadgeClient &operator=(const BadgeClient &) = delete;

  // No news is lost if this is called before the first wait.
  void setNews(News news) { news_ = std::move(news); }

  // The process has left the bus, or another one has its name, or the bus is gone.
  bool hasEnded() const { return hasEnded_; }

  // The folders inside which it gives badges, absolute and standardised, in the order of their
  // names. Waits the first time only.
  platform::Result<std::vector<std::string>> directoryPaths();

  // Waits until all are answered; none on success, else why not. Absolute paths without a trailing
  // slash. Asks in their order, and the extension answers in the order in which it is asked.
  std::optional<std::string> ask(const std::vector<std::string> &paths, BadgesHandler onAnswers);

 private:
  BadgeClient(platform::ObjectHandle<GDBusConnection> connection,
              platform::ObjectHandle<HalvernFinderSync1> proxy, Limits limits);

  const char *processName() const;
  std::optional<std::string> askChunk(const std::vector<std::string> &urls);
  void takeAnswers(GVariant *badges);
  void takeDirectories(GVariant *urls);

  const platform::ObjectHandle<GDBusConnection> connection_;
  const platform::ObjectHandle<HalvernFinderSync1> proxy_;  // of the one process that answers
  const Limits limits_;
  News news_{[](const Badges &) {}, [] {}};
  guint propertiesSubscription_ = 0;
  gulong answersHandler_ = 0;
  gulong changesHandler_ = 0;
  gulong closedHandler_ = 0;

  bool hasEnded_ = false;
  const NameOwnerWatch ownerWatch_;
  std::optional<std::vector<std::string>> directoryPaths_;

  // While something is asked.
  MonotonicTime lastAnswer_ = 0;
  std::unordered_map<std::string, std::string> waiting_;  // paths by the text of their URL
  BadgesHandler onAnswers_;
};

}  // namespace companion
