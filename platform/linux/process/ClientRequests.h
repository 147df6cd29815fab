// What the clients on the bus ask for, taken in turn: a little for one, then a little for the next,
// so that nobody waits for all that another one has asked. The calls of one client are taken in
// their order. Confined to the main thread.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/FinderSync.h"
#include "platform/ThreadSafety.h"
#include "platform/linux/GLibHandles.h"
#include "platform/linux/process/BadgeAnswers.h"
#include "platform/linux/process/ClientWatches.h"
#include "platform/linux/process/MenuRequest.h"
#include "platform/linux/process/RequestArguments.h"
#include "platform/linux/process/SpareMemory.h"
#include "platform/linux/process/guard/CallGate.h"
#include "platform/linux/process/guard/MainLoopWork.h"
#include "platform/linux/process/guard/Turns.h"

class ClientRequests {
 public:
  // Calls are taken as soon as this is made, and dealt with when the main loop turns. `skeleton`
  // has the properties; what is asked for is noted in `answers`, and the selection of a menu call
  // is in `menuRequest` while it is dealt with.
  ClientRequests(GDBusConnection *connection, GDBusInterfaceSkeleton *skeleton,
                 BadgeAnswers &answers, MenuRequest &menuRequest, SpareMemory &spareMemory);
  ClientRequests(const ClientRequests &) = delete;
  ClientRequests &operator=(const ClientRequests &) = delete;

  void setPrincipalObject(platform::FIFinderSync &principalObject) {
    principalObject_ = &principalObject;
  }

  // To be called when there are fewer badges awaited.
  void takeOnMore();

  void send(platform::ObjectHandle<GDBusMessage> message) { gate_.send(std::move(message)); }

 private:
  using Call = std::shared_ptr<IncomingCall>;
  using Observe = void (platform::FIFinderSync::*)(const platform::FileURL &);
  using UseURLs = std::function<void(const URLArguments &)>;

  // Badges that are looked up at the same time, for all clients together. The look-ups have one
  // queue, in which whoever asks next stands behind them: that takes some hundredths of a second.
  static constexpr std::size_t greatestAwaitedCount = 10'000;

  // A slice of the work; whether there is more.
  bool work();
  bool takeStep();
  bool canAskForBadges() const;
  void takeIncomingCalls();
  Turns::Step firstStep(const Call &call);

  // The methods. Each gives the steps in which a call is dealt with.
  Turns::Step requestBadges(const Call &call);
  Turns::Step observe(const Call &call, Observe method);
  Turns::Step menu(const Call &call);
  Turns::Step performAction(const Call &call);
  Turns::Step property(const Call &call);

  // Checks the urls of that argument, some in a step; in the last one, if all are valid, uses them.
  Turns::Step withURLs(const Call &call, std::size_t argument, UseURLs use);
  // The client has its next turn when all is answered that has been asked for up to now.
  void holdUntilAnswered(const std::string &client);
  // Has the badges looked up that a call asks for, some in a step.
  Turns::Step askingStep(const Call &call);

  void clientLeft(const std::string &client);
  void answer(const Call &call, GVariant *values);
  void refuse(const Call &call, const platform::ErrorHandle &error);

  GDBusInterfaceSkeleton *const skeleton_;
  BadgeAnswers &answers_;
  MenuRequest &menuRequest_;
  SpareMemory &spareMemory_;
  platform::FIFinderSync *principalObject_ = nullptr;
  platform::Lock lock_;
  std::vector<Call> incoming_ KTR_GUARDED_BY(lock_);
  MainLoopWork work_;
  CallGate gate_;
  ClientWatches watches_;
  Turns calls_;
  // What calls have asked the principal object for, and it has not been told yet. By itself, so
  // that a menu does not wait for badges.
  Turns requests_;
};
