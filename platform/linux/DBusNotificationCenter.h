#pragma once

#include <vector>

#include "platform/DistributedNotifications.h"
#include "platform/linux/GLibHandles.h"

namespace platform {

// A notification "a.b.c" is the D-Bus signal "c" of the interface "a.b", without arguments. Made on
// the main thread and used there. A posting on a lost connection goes nowhere.
class DBusNotificationCenter final : public DistributedNotificationCenter {
 public:
  explicit DBusNotificationCenter(GDBusConnection *connection);
  ~DBusNotificationCenter() override;
  DBusNotificationCenter(const DBusNotificationCenter &) = delete;
  DBusNotificationCenter &operator=(const DBusNotificationCenter &) = delete;

  void addObserver(const std::string &name, std::function<void()> handler) override;
  void postNotification(const std::string &name) override;

 private:
  const ObjectHandle<GDBusConnection> connection_;
  std::vector<guint> subscriptions_;
};

}  // namespace platform
