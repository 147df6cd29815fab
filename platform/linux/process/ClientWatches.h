// Tells when a client has left the bus. Confined to the main thread.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "platform/linux/GLibHandles.h"

class ClientWatches {
 public:
  using Left = std::function<void(const std::string &client)>;

  // `left` is called on the main loop, after the last message of the client has been seen.
  ClientWatches(GDBusConnection *connection, Left left);
  ~ClientWatches();
  ClientWatches(const ClientWatches &) = delete;
  ClientWatches &operator=(const ClientWatches &) = delete;

  // By its unique name, which no other client ever has. Once is enough.
  void watch(const std::string &client);

 private:
  static void vanished(GDBusConnection *connection, const char *name, gpointer self);

  const platform::ObjectHandle<GDBusConnection> connection_;
  const Left left_;
  std::map<std::string, guint> watches_;
};
