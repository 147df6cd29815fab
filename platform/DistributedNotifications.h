// Notifications between the processes of one user. They carry a name and nothing else: no object,
// no user information.
#pragma once

#include <functional>
#include <string>

namespace platform {

class DistributedNotificationCenter {
 public:
  virtual ~DistributedNotificationCenter() = default;

  // Calls `handler` on the main thread after every posting of `name`, from any sender, for the rest
  // of the centre's life; postings that arrive while a call is waiting for its turn are covered by
  // it. Blocks until no later posting can be missed; if the system refuses, that is logged.
  virtual void addObserver(const std::string &name, std::function<void()> handler) = 0;

  // Delivered immediately, also to receivers that have suspended delivery. Does not wait for them.
  virtual void postNotification(const std::string &name) = 0;
};

}  // namespace platform
