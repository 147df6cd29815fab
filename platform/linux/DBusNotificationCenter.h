#pragma once

#include <vector>

#include "platform/DistributedNotifications.h"
#include "platform/Queues.h"
#include "platform/linux/GLibHandles.h"

namespace platform {

// A notification "a.b.c" is the D-Bus signal "c" of the interface "a.b", without arguments. A
// posting on a lost connection goes nowhere.
//
// Handlers run on the main queue, before any message is answered that reached this process after
// the notification did. For one thread; the main queue must outlive it.
class DBusNotificationCenter final : public DistributedNotificationCenter {
 public:
  DBusNotificationCenter(GDBusConnection *connection, Queue &mainQueue);
  ~DBusNotificationCenter() override;
  DBusNotificationCenter(const DBusNotificationCenter &) = delete;
  DBusNotificationCenter &operator=(const DBusNotificationCenter &) = delete;

  void addObserver(const std::string &name, std::function<void()> handler) override;
  void postNotification(const std::string &name) override;

 private:
  const ObjectHandle<GDBusConnection> connection_;
  Queue &mainQueue_;
  std::vector<guint> filters_;
};

}  // namespace platform
