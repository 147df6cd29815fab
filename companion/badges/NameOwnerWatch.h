// Who has the extension's name on the bus.
#pragma once

#include <functional>
#include <string>

#include "platform/linux/GLibHandles.h"

namespace companion {

// Calls the handler from the default main context whenever the name gets another owner (a process's
// own name on the bus) or has none any more ("").
class NameOwnerWatch {
 public:
  using Handler = std::function<void(const std::string &owner)>;

  NameOwnerWatch(GDBusConnection *connection, Handler handler);
  ~NameOwnerWatch();
  NameOwnerWatch(const NameOwnerWatch &) = delete;
  NameOwnerWatch &operator=(const NameOwnerWatch &) = delete;

 private:
  const platform::ObjectHandle<GDBusConnection> connection_;
  const Handler handler_;
  guint subscription_ = 0;
};

}  // namespace companion
