// The two ends of a connection that speak D-Bus with each other, of which one is the extension's
// and the other one stands for the bus and for a client of it.
#pragma once

#include "platform/linux/GLibHandles.h"

class PeerBus {
 public:
  PeerBus();

  // The extension's, guarded as that is.
  GDBusConnection *service() const { return service_.get(); }

  // Has the client call a method and waits for the answer. `arguments` may be floating.
  platform::ObjectHandle<GDBusMessage> call(const char *path, const char *interface,
                                            const char *method, GVariant *arguments) const;

 private:
  platform::ObjectHandle<GDBusConnection> bus_;
  platform::ObjectHandle<GDBusConnection> service_;
};
