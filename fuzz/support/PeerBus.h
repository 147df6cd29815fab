// Two ends of a connection that speak D-Bus with each other without a bus in between.
#pragma once

#include "platform/linux/GLibHandles.h"

class PeerBus {
 public:
  PeerBus();

  GDBusConnection *service() const { return service_.get(); }

  // Has the client's end call a method, in the name of a client of a bus, and waits for the answer.
  // `arguments` may be floating.
  platform::ObjectHandle<GDBusMessage> call(const char *path, const char *interface,
                                            const char *method, GVariant *arguments) const;

 private:
  platform::ObjectHandle<GDBusConnection> service_;
  platform::ObjectHandle<GDBusConnection> client_;
};
