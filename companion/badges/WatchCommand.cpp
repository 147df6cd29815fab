#include "companion/PathText.h"
#include "companion/SessionBus.h"
#include "companion/badges/BadgeCommands.h"
#include "companion/badges/BadgeWatch.h"
#include "companion/badges/Interruption.h"
#include "companion/badges/NameOwnerWatch.h"
#include "companion/badges/ReachFailure.h"
#include "companion/badges/RestartDelay.h"

namespace companion {

using platform::ErrorHandle;
using platform::ObjectHandle;
using platform::Result;

namespace {

using Failure = std::optional<std::string>;

// A watch over one extension process after another.
class WatchSession {
 public:
  WatchSession(GDBusConnection *bus, std::vector<Target> targets, std::chrono::seconds patience,
               Output &output)
      : bus_(bus),
        patience_(patience),
        output_(output),
        watch_(std::move(targets),
               [this](const std::string &badge, const std::string &name) { print(badge, name); }),
        ownerWatch_(bus, [this](const std::string &owner) { isThereNewOwner_ = !owner.empty(); }) {
    output_.letInterrupt(interruption_.descriptor());
  }

  ExitStatus run(bool coversEverything) {
    Failure failure = reach();
    if (!failure) {
      printNotes(coversEverything);
      failure = ask(printUnreadable);
    }
    if (failure && !hasToEnd()) {
      printError(*failure);
      return exitFailed;
    }
    while (!isOver()) {
      failure = follow();
      if (failure && !isOver()) {
        printError(*failure);
        reachAgain();
      }
    }
    if (!hasToEnd()) {
      printError("the session bus has ended");
      return exitFailed;
    }
    return exitDone;
  }

 private:
  using Unreadable = decltype(ItemsBeneath::unreadable);

  bool hasToEnd() const { return interruption_.isThere() || !isOutputOpen_; }
  bool isOver() const { return hasToEnd() || g_dbus_connection_is_closed(bus_) != FALSE; }

  void print(const std::string &badge, const std::string &name) {
    output_.writeLine(badgeLine(badge, name));
    isOutputOpen_ = output_.flush();
  }

  void printNotes(bool coversEverything) const {
    for (const Target &target : watch_.targetsOutside()) {
      printError(coversEverything ? nothingListedMessage : outsideMessage(target));
    }
  }

  static void printUnreadable(const Unreadable &unreadable) {
    for (const auto &[place, reason] : unreadable) {
      printError(unreadableMessage(place, reason));
    }
  }

  // Afterwards everything is to be asked.
  Failure reach() {
    auto client = BadgeClient::connect(bus_, {patience_, [this] { return hasToEnd(); }});
    if (!client) {
      return client.reason();
    }
    client_ = std::move(*client);
    client_->setNews({[this](Badges badges) { watch_.takeChanges(std::move(badges)); },
                      [this] { watch_.setDirectories(*client_->directoryPaths()); }});
    const Result<std::vector<std::string>> directories = client_->directoryPaths();
    if (!directories) {
      return directories.reason();
    }
    watch_.start(*directories);
    return std::nullopt;
  }

  Failure ask(const std::function<void(const Unreadable &)> &reportUnreadable) {
    const BadgeWatch::Questions questions = watch_.takeQuestions();
    reportUnreadable(questions.unreadable);
    return client_->ask(questions.paths,
                        [this](const Badges &badges) { watch_.takeAnswers(badges); });
  }

  // Returns when it has to end, or with the reason why nothing comes from this process any more.
  // There must be one.
  Failure follow() {
    MainLoopWait wait;
    while (!hasToEnd()) {
      if (client_->hasEnded()) {
        return "the extension has ended; starting it again";
      }
      if (!watch_.hasQuestions()) {
        wait.turnBefore(noDeadline);
      } else if (Failure failure = ask([](const Unreadable &) {})) {
        return client_->hasEnded() ? std::nullopt : failure;
      }
    }
    return std::nullopt;
  }

  // Returns when there is a process that has answered everything, or when all is over.
  void reachAgain() {
    RestartDelay delay;
    MainLoopWait wait;
    for (Failure failure = endedMessage; failure && !isOver();) {
      client_.reset();
      isThereNewOwner_ = false;
      const MonotonicTime restart = timeAfter(delay.next());
      while (!isThereNewOwner_ && !isOver() && wait.turnBefore(restart)) {
      }
      failure = isOver() ? std::nullopt : reach();
      if (!failure && !isOver()) {
        failure = ask([](const Unreadable &) {});
      }
    }
  }

  GDBusConnection *const bus_;
  const std::chrono::seconds patience_;
  Output &output_;
  const Interruption interruption_;
  bool isOutputOpen_ = true;
  BadgeWatch watch_;
  std::unique_ptr<BadgeClient> client_;  // none while no process is known
  bool isThereNewOwner_ = false;         // since the last process was lost
  const NameOwnerWatch ownerWatch_;
};

}  // namespace

ExitStatus watchBadges(const Options &options, Output &output) {
  const Result<std::vector<Target>> targets = namedTargets(options.paths);
  if (!targets) {
    printError(targets.reason());
    return exitFailed;
  }
  ErrorHandle error;
  const ObjectHandle<GDBusConnection> bus = connectToSessionBus(error);
  if (bus == nullptr) {
    printError(notReachable(error));
    return exitFailed;
  }
  output.letReaderGo();
  return WatchSession(bus.get(), *targets, options.timeout, output).run(options.paths.empty());
}

}  // namespace companion
